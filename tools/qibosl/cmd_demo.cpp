// tools/qibosl/cmd_demo.cpp
// qibosl demo: a tour of the library on an installation directory, the way a product program
// uses it at start-up.
#include <vum-qib-osl/osl.h>

#include <filesystem>
#include <iostream>

#include "tools/qibosl/commands.h"

namespace qibosl {
namespace {

void toScreen(const char* line) { std::cout << line << "\n"; }

void section(const char* title) { std::cout << "\n== " << title << "\n"; }

}  // namespace

int cmdDemo(const Args& args) {
    if (args.size() > 1) throw UsageError("demo takes at most one installation directory");
    const std::filesystem::path installation = args.empty() ? "examples/installation" : args[0];
    if (!std::filesystem::is_directory(installation)) {
        throw UsageError("no installation directory at '" + installation.string() + "'");
    }
    std::cout << "qibosl demo on the installation " << std::filesystem::absolute(installation).string()
              << "\n";

    section("versions");
    QibVr_Versions::Instance().Register("qibosl", "qibosl demo");
    std::cout << QibVr_Versions::Instance().ToString("qibosl");

    section("logging through a function channel");
    CLog* log = CLog::Instance();
    log->SetProcessName("qibosl");
    log->SetFunctionChannel(toScreen, SevInfo, "*, ~noise", false);
    CLogMsg msg("demo", "", SevInfo);
    msg << "the library is started; this line went through the function channel" << flush;
    msg.Sev(SevWarning).Category("disk") << "a warning in category disk" << flush;
    OSL_LOG(SevInfo, "noise", "demo") << "never shown: the channel refuses the category noise";
    try {
        throw QIBError("Cannot open the report", 2, 8, "tools/qibosl/cmd_demo", 48);
    } catch (const QIBError& e) {
        OSL_LOG(SevError, "", "demo") << e;
    }
    OslLogPrint(SevSystem, "", "demo", "OslLogPrint writes through the same channels");

    demoSettings(installation.string());
    demoLogging(installation.string());
    return 0;
}

}  // namespace qibosl
