// tools/qibosl/cmd_log.cpp
// qibosl log -config=INI -process=NAME -severity=S [-category=C] [-at=A] TEXT...: one message
// through the channels of a logging configuration, so that shell scripts log like programs do.
#include <vum-qib-osl/osl.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <unistd.h>

#include "tools/qibosl/commands.h"

namespace qibosl {

int cmdLog(const Args& args) {
    std::map<std::string, std::string> options;
    std::size_t i = 0;
    for (; i < args.size(); ++i) {
        const std::string& arg = args[i];
        if (arg == "--") {
            ++i;
            break;
        }
        if (arg.size() < 2 || arg[0] != '-' || arg.find('=') == std::string::npos) break;
        const std::string name = arg.substr(1, arg.find('=') - 1);
        if (name != "config" && name != "process" && name != "severity" && name != "category" && name != "at") {
            throw UsageError("log: unknown option -" + name);
        }
        options[name] = arg.substr(arg.find('=') + 1);
    }
    for (const char* required : {"config", "process", "severity"}) {
        if (options.count(required) == 0) throw UsageError(std::string("log: -") + required + "= is required");
    }
    const LogSeverity severity = StringToSev(options["severity"]);
    if (severity == SevNone) {
        throw UsageError("log: -severity= takes info, warning, error, fatal or system, not '" + options["severity"] + "'");
    }
    if (i >= args.size()) throw UsageError("log: no text to log");
    std::string text = args[i];
    for (++i; i < args.size(); ++i) text += " " + args[i];

    CLog* log = CLog::Instance();
    if (!log->Load(options["config"], options["process"])) {
        std::cerr << "qibosl log: cannot load the logging configuration " << options["config"] << "\n";
        return 1;
    }
    OslLogPrint(severity, options["category"].c_str(), options["at"].c_str(), text);
    return 0;
}

namespace {

// Catches what is written to standard error (file descriptor 2) while it lives, so that the demo
// can show a long log as a summary instead of letting it run through its own lines.
class StderrCapture {
public:
    StderrCapture() {
        std::cout.flush();
        std::fflush(nullptr);
        char name[] = "/tmp/qibosl-demo-stderr-XXXXXX";
        file_ = ::mkstemp(name);
        if (file_ < 0) return;
        ::unlink(name);
        saved_ = ::dup(2);
        if (saved_ < 0 || ::dup2(file_, 2) < 0) restore();
    }
    StderrCapture(const StderrCapture&) = delete;
    StderrCapture& operator=(const StderrCapture&) = delete;
    ~StderrCapture() { restore(); }

    /// Puts standard error back and returns the lines written meanwhile.
    std::vector<std::string> lines() {
        restore();
        std::vector<std::string> result;
        if (file_ < 0) return result;
        std::string text;
        char buffer[4096];
        ::lseek(file_, 0, SEEK_SET);
        for (ssize_t n; (n = ::read(file_, buffer, sizeof buffer)) > 0;) text.append(buffer, static_cast<size_t>(n));
        ::close(file_);
        file_ = -1;
        std::istringstream in(text);
        for (std::string line; std::getline(in, line);) {
            if (!line.empty() && line.back() == '\r') line.pop_back();
            result.push_back(line);
        }
        return result;
    }

private:
    void restore() {
        if (saved_ < 0) return;
        std::cerr.flush();
        std::fflush(stderr);
        ::dup2(saved_, 2);
        ::close(saved_);
        saved_ = -1;
    }
    int file_ = -1;
    int saved_ = -1;
};

}  // namespace

void demoLogging(const std::string& installation) {
    std::cout << "\n== logging configured from config/logging.ini\n";
    // The configuration writes under %QIBOSL_LOG_DIR%: a temporary directory unless the caller
    // chose one, so that the demo leaves the installation as it was.
    std::filesystem::path dir;
    bool temporary = false;
    if (const char* given = std::getenv("QIBOSL_LOG_DIR"); given != nullptr && *given != '\0') {
        dir = given;
    } else {
        dir = std::filesystem::temp_directory_path() / ("qibosl-demo-log-" + std::to_string(::getpid()));
        temporary = true;
        ::setenv("QIBOSL_LOG_DIR", dir.c_str(), 1);
    }
    std::filesystem::create_directories(dir);
    CLog* log = CLog::Instance();
    log->DeleteChannels();
    const std::string config = installation + "/config/logging.ini";
    if (!log->Load(config, "qibosl")) {
        std::cout << "cannot load " << config << "\n";
        return;
    }
    std::cout << "the screen channel writes to standard error; the journal and the private file to "
              << dir.string() << "\n";
    StderrCapture screen;
    for (int i = 1; i <= 100; ++i) OSL_LOG(SevInfo, "report", "demo") << "report " << i << " rendered";
    OSL_LOG(SevInfo, "noise", "demo") << "in the journal, not on the screen (category noise)";
    OSL_LOG(SevError, "", "demo") << "an error: in the journal and in this process's private file";
    const std::vector<std::string> shown = screen.lines();
    std::cout << "the screen channel wrote " << shown.size() << " lines; the first two and the last:\n";
    for (std::size_t i = 0; i < shown.size(); ++i) {
        if (i < 2 || i + 1 == shown.size()) std::cout << "  " << shown[i] << "\n";
        if (i == 2 && shown.size() > 3) std::cout << "  ... (" << shown.size() - 3 << " more)\n";
    }

    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(dir)) names.insert(entry.path().filename().string());
    std::cout << "files (maxsize 2000, purgecount 3: the three newest backups stay):\n";
    for (const std::string& name : names) {
        std::cout << "  " << name << "  " << std::filesystem::file_size(dir / name) << " bytes\n";
    }
    std::ifstream journal(dir / "journal.log");
    std::string header;
    std::getline(journal, header);
    if (!header.empty() && header.back() == '\r') header.pop_back();
    std::cout << "first line of journal.log: [" << header << "]\n";
    log->DeleteChannels();
    log->InitOptimisationVariable();
    if (temporary) {
        std::filesystem::remove_all(dir);
    } else {
        noteDemoFile(dir, "the journal, its backups and the private files of the logging step");
    }
}

}  // namespace qibosl
