// tools/qibosl/main.cpp
// Dispatch of the subcommands and the usage text.
#include <vum-qib-osl/osl.h>

#include <iostream>

#include "tools/qibosl/commands.h"

namespace {

struct Command {
    const char* name;
    const char* synopsis;
    int (*run)(const qibosl::Args&);
};

constexpr Command kCommands[] = {
    {"version", "version                 the versions of every registered component", qibosl::cmdVersion},
    {"demo", "demo [INSTALLATION]     run the demonstration on an installation directory", qibosl::cmdDemo},
    {"ini", "ini check FILE | get FILE GROUP KEY [-default=TEXT] | set FILE GROUP KEY VALUE | dump FILE\n"
            "                          check, read, change (through a backup file) or print an INI file",
     qibosl::cmdIni},
    {"env", "env [NAME]              the environment, or one variable with its status", qibosl::cmdEnv},
    {"dirs", "dirs [VARIABLE...]      the installation directories (root from DECOLLATOR_DIR) and temp", qibosl::cmdDirs},
    {"log", "log -config=INI -process=NAME -severity=S [-category=C] [-at=A] TEXT...\n"
            "                          log one message through the channels the INI configures",
     qibosl::cmdLog},
};

void printUsage(std::ostream& out) {
    out << "usage: qibosl COMMAND [ARGUMENTS]\n\ncommands:\n";
    for (const Command& c : kCommands) out << "  " << c.synopsis << "\n";
}

}  // namespace

int main(int argc, char** argv) {
    InitOSL();
    if (argc < 2) {
        printUsage(std::cerr);
        return 2;
    }
    const std::string name = argv[1];
    if (name == "help" || name == "-h" || name == "--help") {
        printUsage(std::cout);
        return 0;
    }
    for (const Command& c : kCommands) {
        if (name != c.name) continue;
        try {
            return c.run(qibosl::Args(argv + 2, argv + argc));
        } catch (const qibosl::UsageError& e) {
            std::cerr << "qibosl " << name << ": " << e.what() << "\n\n";
            printUsage(std::cerr);
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
    printUsage(std::cerr);
    return 2;
}
