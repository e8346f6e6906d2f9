// tools/qibosl/main.cpp
// Dispatch of the subcommands and the usage text, which comes from qibosl's own catalog.
#include <vum-qib-osl/osl.h>

#include <filesystem>
#include <iostream>
#include <system_error>

#include "tools/qibosl/commands.h"

namespace {

// One entry per subcommand. `usageSet` names the set of its line in qibosl.msg ("SET_x4_1", see the
// README); while the catalog has no line for it, the text of `usageSet` itself is shown.
struct Command {
    const char* name;
    const char* usageSet;
    int (*run)(const qibosl::Args&);
};

constexpr Command kCommands[] = {
    {"version", "version", qibosl::cmdVersion},
    {"demo", "demo", qibosl::cmdDemo},
    {"catalog", "catalog", qibosl::cmdCatalog},
    {"usage", "usage", qibosl::cmdUsage},
    {"convert", "convert", qibosl::cmdConvert},
    {"encodings", "encodings", qibosl::cmdEncodings},
    {"env", "env", qibosl::cmdEnv},
    {"dirs", "dirs", qibosl::cmdDirs},
    {"match", "match", qibosl::cmdMatch},
    {"autoedit", "autoedit", qibosl::cmdAutoEdit},
    {"ini", "ini", qibosl::cmdIni},
    {"log", "log", qibosl::cmdLog},
    {"remote-ini", "remote-ini", qibosl::cmdRemoteIni},
};

// The compiled catalog sits next to the program in the build tree and under share/ once installed.
std::filesystem::path findCatalog() {
    std::error_code ec;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", ec);
    if (ec) return {};
    const std::filesystem::path dir = program.parent_path();
    for (const std::filesystem::path& candidate :
         {dir / "qibosl.cat", dir.parent_path() / "share" / "vum-qib-osl" / "qibosl.cat"}) {
        if (std::filesystem::is_regular_file(candidate, ec)) return candidate;
    }
    return {};
}

// The line list of `qibosl NAME ...` from the program's arguments.
class ProgramLine : public QIBCommandLine {
public:
    ProgramLine(int argc, char** argv) { Init(argc, argv); }
    /// Takes the first element (the subcommand) off the queue; empty when there is none.
    std::string takeFirst() {
        if (m_Pending.empty()) return {};
        std::string first = m_Pending.front();
        m_Pending.pop_front();
        return first;
    }
    qibosl::Args rest() const { return qibosl::Args(m_Pending.begin(), m_Pending.end()); }
};

}  // namespace

namespace {

// Loaded only when a usage is shown: a catalog that `qibosl usage` reads must not meet our keys first.
bool catalogLoaded() {
    static const bool loaded = [] {
        const std::filesystem::path catalog = findCatalog();
        return !catalog.empty() && SingleMapFileMT::Instance()->AppendMap(catalog.string());
    }();
    return loaded;
}

void printMissingCatalog(std::ostream& out) {
    out << "usage: qibosl COMMAND [ARGUMENTS]\n\ncommands:";
    for (const Command& c : kCommands) out << " " << c.name;
    out << "\n(the usage texts are missing: no readable qibosl.cat beside the program or in "
           "../share/vum-qib-osl)\n";
}

const Command* findCommand(const std::string& name) {
    for (const Command& c : kCommands) {
        if (name == c.name) return &c;
    }
    return nullptr;
}

bool isHelpOption(const qibosl::Args& args) {
    return !args.empty() && (args.front() == "-help" || args.front() == "--help" || args.front() == "-h");
}

}  // namespace

void qibosl::printUsage(std::ostream& out, const std::vector<std::string>& sets) {
    std::vector<std::string> shown = sets;
    if (shown.empty()) {
        for (const Command& c : kCommands) shown.emplace_back(c.usageSet);
    }
    if (!catalogLoaded()) return printMissingCatalog(out);
    DisplayUsage(out, shown, "");
}

void qibosl::printCommandUsage(std::ostream& out, const std::string& name) {
    const Command* command = findCommand(name);
    if (command == nullptr || !catalogLoaded()) return printUsage(out, {});
    Message message;
    message.PrintCode(false);
    const std::string key = std::string(command->usageSet) + "_x4_1";
    const std::string text = message.HasEntry(key) ? message[key].Text() : command->usageSet;
    // The entry's further lines start with a tab, aligned under the first one after "usage: qibosl ".
    constexpr std::string_view kLead = "usage: qibosl ";
    out << kLead;
    for (char c : text) {
        if (c == '\t') {
            out << std::string(kLead.size(), ' ');
        } else {
            out << c;
        }
    }
    out << "\n";
}

int main(int argc, char** argv) {
    InitOSL();
    ProgramLine line(argc, argv);
    const std::string name = line.takeFirst();
    if (name.empty()) {
        qibosl::printUsage(std::cerr, {});
        return 2;
    }
    if (name == "help" || name == "-h" || name == "--help") {
        const qibosl::Args topics = line.rest();
        if (topics.empty()) {
            qibosl::printUsage(std::cout, {});
            return 0;
        }
        if (topics.size() == 1 && findCommand(topics.front()) != nullptr) {
            qibosl::printCommandUsage(std::cout, topics.front());
            return 0;
        }
        std::cerr << "qibosl help: no command '" << topics.front() << "'\n\n";
        qibosl::printUsage(std::cerr, {});
        return 2;
    }
    if (const Command* command = findCommand(name)) {
        const Command& c = *command;
        const qibosl::Args args = line.rest();
        if (isHelpOption(args)) {
            qibosl::printCommandUsage(std::cout, name);
            return 0;
        }
        try {
            return c.run(args);
        } catch (const qibosl::UsageError& e) {
            std::cerr << "qibosl " << name << ": " << e.what() << "\n";
            qibosl::printCommandUsage(std::cerr, name);
            return 2;
        } catch (const QIBError& e) {
            std::cerr << "qibosl " << name << ": " << e << "\n";
            return 1;
        } catch (const std::exception& e) {
            std::cerr << "qibosl " << name << ": " << e.what() << "\n";
            return 1;
        }
    }
    std::cerr << "qibosl: unknown command '" << name << "'\n\n";
    qibosl::printUsage(std::cerr, {});
    return 2;
}
