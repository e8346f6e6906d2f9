// tools/qibosl/cmd_demo.cpp
// qibosl demo: a tour of the library on an installation directory, the way a product program
// uses it at start-up. Its texts come from the installation's message catalog.
#include <vum-qib-osl/osl.h>

#include <filesystem>
#include <iostream>

#include "tools/qibosl/commands.h"

namespace qibosl {
namespace {

void toScreen(const char* line) { std::cout << line << "\n"; }

// The text of a key of the demo's catalog, without its key.
Message& text(const std::string& key) {
    static Message message;
    message.PrintCode(false);
    return message[key];
}

void section(const std::string& key) { std::cout << "\n== " << text(key).Text() << "\n"; }

const char* kindName(CmdLine::TKind kind) {
    switch (kind) {
        case CmdLine::tkWord: return "word  ";
        case CmdLine::tkOption: return "option";
        case CmdLine::tkValue: return "value ";
        default: return "end   ";
    }
}

void demoMessagesAndCommandLine() {
    section("demo_section_messages");
    const std::size_t count = static_cast<std::size_t>(
        std::distance(SingleMapFileMT::Instance()->begin(), SingleMapFileMT::Instance()->end()));
    std::cout << (text("demo_catalog") << "demo.cat" << static_cast<long>(count)).Text() << "\n";
    Message coded;  // prints its key first
    std::cout << "\t" << (coded["E0042"] << "report.dat" << "permission denied" << 3).Text() << "\n";
    std::cout << text("demo_missing").Text() << "\n\t" << coded["E9999"].Text() << "\n";
    std::cout << (text("demo_error") << QIBError("Cannot open the report", 2, 8, "tools/qibosl/cmd_demo", 48)).Text()
              << "\n";

    char prog[] = "report", in[] = "-in", eq[] = "=", file[] = "q3.dat", out[] = "-OUT=", target[] = "q3.pdf",
         word[] = "draft";
    char* argv[] = {prog, in, eq, file, out, target, word};
    QIBCommandLine line;
    line.Init(7, argv);
    std::cout << (text("demo_command_line") << "report -in = q3.dat -OUT= q3.pdf draft").Text() << "\n";
    std::string name;
    std::string value;
    while (line.ReadOption(name, value)) {
        std::cout << (name.empty() ? (text("demo_operand") << value) : (text("demo_option") << name << value)).Text()
                  << "\n";
    }

    const char* sample = "-out=file.txt in";
    CmdLine scanner(sample);
    std::cout << (text("demo_tokens") << sample).Text() << "\n";
    for (CmdLine::TKind kind = scanner.NextToken(false); kind != CmdLine::tkEnd; kind = scanner.NextToken(false)) {
        std::cout << (text("demo_token") << kindName(kind) << scanner.CurrentToken()).Text() << "\n";
    }

    std::cout << text("demo_usage").Text() << "\n";
    DisplayUsage(std::cout, "report", "");
}

}  // namespace

int cmdDemo(const Args& args) {
    if (args.size() > 1) throw UsageError("demo takes at most one installation directory");
    const std::filesystem::path installation = args.empty() ? "examples/installation" : args[0];
    if (!std::filesystem::is_directory(installation)) {
        throw UsageError("no installation directory at '" + installation.string() + "'");
    }
    const std::filesystem::path messages = std::filesystem::absolute(installation / "messages");
    WEnv::WPutEnv("MESSAGE_PATH", messages.string());
    if (!Message().Append("demo.cat")) {
        std::cerr << "qibosl demo: no message catalog " << (messages / "demo.cat").string()
                  << " (the build compiles it from demo.msg)\n";
        return 1;
    }
    std::cout << (text("demo_title") << std::filesystem::absolute(installation).string()).Text() << "\n";

    section("demo_section_versions");
    QibVr_Versions::Instance().Register("qibosl", "qibosl demo");
    std::cout << QibVr_Versions::Instance().ToString("qibosl");

    section("demo_section_logging");
    CLog* log = CLog::Instance();
    log->SetProcessName("qibosl");
    log->SetFunctionChannel(toScreen, SevInfo, "*, ~noise", false);
    CLogMsg msg("demo", "", SevInfo);
    msg << text("demo_log_started").Text() << flush;
    msg.Sev(SevWarning).Category("disk") << text("demo_log_warning").Text() << flush;
    OSL_LOG(SevInfo, "noise", "demo") << text("demo_log_refused").Text();
    try {
        throw QIBError(text("demo_log_error").Text(), 2, 8, "tools/qibosl/cmd_demo", 48);
    } catch (const QIBError& e) {
        OSL_LOG(SevError, "", "demo") << e;
    }
    OslLogPrint(SevSystem, "", "demo", text("demo_log_print").Text().c_str());

    demoMessagesAndCommandLine();
    demoEnvironment(installation);
    return 0;
}

}  // namespace qibosl
