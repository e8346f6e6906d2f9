// tools/qibosl/cmd_demo.cpp
// qibosl demo: a tour of the library on an installation directory, the way a product program
// uses it at start-up. Its texts come from the installation's message catalog.
#include <vum-qib-osl/osl.h>

#include <cstdio>
#include <filesystem>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

#include "osl_version.h"
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

std::vector<std::pair<std::filesystem::path, std::string>>& demoFiles() {
    static std::vector<std::pair<std::filesystem::path, std::string>> files;
    return files;
}

void section(const std::string& title) {
    demoStep();
    std::cout << "\n== " << title << "\n";
}

const char* kindName(CmdLine::TKind kind) {
    switch (kind) {
        case CmdLine::tkWord: return "word  ";
        case CmdLine::tkOption: return "option";
        case CmdLine::tkValue: return "value ";
        default: return "end   ";
    }
}

void demoMessagesAndCommandLine() {
    section(text("demo_section_messages").Text());
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

void demoPatterns(const std::filesystem::path& installation) {
    section("AutoEdit variables, wildcards and regular expressions");
    QIBAutoEditString name("%%dir/%%job-%%date.%%part.log");
    name.AddVariable("DIR", "/var/log/qib");
    name.AddVariable("job", "nightly");
    name.AddVariable("part", "part7");
    std::cout << name.GetPattern() << " -> " << name.Resolve(false) << "\n";
    QIBAutoEditString compound("%%target%%env");
    compound.AddVariable("env", "Prod");
    compound.AddVariable("targetprod", "srv-prod-01");
    std::cout << compound.GetPattern() << " -> " << compound.Resolve(false) << "  (env first, then targetProd)\n";
    QIBAutoEditString columns("|%%job   |%%part|");
    columns.AddVariable("job", "ab");
    columns.AddVariable("part", "part7");
    std::cout << columns.GetPattern() << " -> " << columns.Resolve(true) << "  (fixed width)\n";

    for (const char* wildcard : {"*.ini", "README*", "*.TXT"}) {
        WildcardString w(wildcard, false);
        std::cout << "files matching " << wildcard << " (" << w.AsRegexp().ToString() << ", case ignored):";
        std::error_code ec;
        for (auto it = std::filesystem::recursive_directory_iterator(installation, ec);
             !ec && it != std::filesystem::recursive_directory_iterator(); it.increment(ec)) {
            if (it->is_regular_file() && w.Match(it->path().filename().string())) {
                std::cout << " " << std::filesystem::relative(it->path(), installation).string();
            }
        }
        std::cout << "\n";
    }
    Osl_RegularExpression re("(\\d{4})-(\\d{2})");
    const std::string line = "report of 2024-03, rerun 2024-04";
    std::cout << "groups of the first match in '" << line << "':";
    re.search(line, 0, std::string::npos);
    for (std::size_t g = 1; g <= re.groups(); ++g) {
        const auto r = re.group(g);
        std::cout << " " << line.substr(r.first, r.second - r.first);
    }
    std::string copy = line;
    const std::size_t n = re.replace(copy, 0, std::string::npos, "YYYY-MM", true);
    std::cout << "\nreplaced " << n << ": " << copy << "\n";
    try {
        Osl_RegularExpression bad("(");
    } catch (const QIBError& e) {
        std::cout << "a bad pattern: " << e << "\n";
    }
}

// Text and encodings: legacy bytes to UTF-8, to UTF-16 and back, in windows-1252 and in the
// double-byte EBCDIC code page IBM-939.
std::string hexBytes(const std::string& bytes) {
    std::string out;
    char cell[4];
    for (unsigned char c : bytes) {
        std::snprintf(cell, sizeof cell, "%02X ", c);
        out += cell;
    }
    if (!out.empty()) out.pop_back();
    return out;
}

std::string hexUnits(const std::u16string& units) {
    std::string out;
    char cell[6];
    for (char16_t u : units) {
        std::snprintf(cell, sizeof cell, "%04X ", static_cast<unsigned>(u));
        out += cell;
    }
    if (!out.empty()) out.pop_back();
    return out;
}

void demoText() {
    section("text and encodings: legacy -> UTF-8 -> UTF-16 -> legacy");
    for (const auto& [encoding, utf8Text] :
         {std::pair<std::string, std::string>{"MS1252", "Gr\xC3\xBC\xC3\x9F" "e, 5 \xE2\x82\xAC"},
          std::pair<std::string, std::string>{"IBM-939", "AB\xE6\x97\xA5\xE6\x9C\xAC"}}) {
        Osl_UnicodeConverter converter;
        converter.SetCurrentEncoding(encoding);
        std::string legacy;
        converter.ConvertUTF8toCurrentEncoding(utf8Text, legacy);
        std::cout << encoding << " (" << Osl_UnicodeConfiguration::Instance()->GetEncodingDescription(encoding)
                  << ")\n  legacy bytes: " << hexBytes(legacy) << "\n";
        std::string utf8;
        ConversionRC rc = converter.ConvertCurrentEncodingtoUTF8(legacy, utf8);
        std::cout << "  UTF-8:        " << hexBytes(utf8) << "  (result " << rc << ")\n";
        std::u16string wide;
        converter.ConvertUTF8toUCS2(utf8, wide);
        std::cout << "  UTF-16:       " << hexUnits(wide) << "\n";
        std::string utf8Again, back;
        converter.ConvertUCS2toUTF8(wide, utf8Again);
        converter.ConvertUTF8toCurrentEncoding(utf8Again, back);
        // A double-byte EBCDIC text keeps a blank (40) for each shift byte on its way to UTF-8.
        std::string expected;
        for (char c : legacy) expected += c == 0x0E ? std::string("\x40\x0E") : c == 0x0F ? std::string("\x0F\x40") : std::string(1, c);
        std::cout << "  back:         " << hexBytes(back)
                  << (back == legacy ? "  (same bytes)"
                      : back == expected ? "  (same bytes, a blank 40 kept for each shift byte)"
                                         : "  (differs)")
                  << "\n";
    }

    Osl_UTF8String text("a\xC3\xA9\xE2\x82\xAC");
    Osl_UnicodeConfiguration::SetUnicodeMode(true);
    std::cout << "Unicode mode: \"" << text << "\" has " << text.length() << " bytes and " << text.LengthInChars()
              << " characters\n";
    Osl_UnicodeConfiguration::SetUnicodeMode(false);
    std::cout << "legacy mode:  the same bytes are " << text.LengthInChars() << " characters\n";
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

    section(text("demo_section_versions").Text());
    QibVr_Versions::Instance().Register("qibosl", "qibosl " OSL_VERSION_STRING);
    std::cout << QibVr_Versions::Instance().ToString("qibosl");

    section(text("demo_section_logging").Text());
    CLog* log = CLog::Instance();
    log->SetProcessName("qibosl");
    // Every category but three: "noise" shows the filter at work, and the INI reader's own lines
    // in "ini" and the tracing of locks in "OSL" would crowd the screen.
    log->SetFunctionChannel(toScreen, SevInfo, "*, ~noise, ~ini, ~OSL", false);
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
    demoPatterns(installation);
    demoUnderLock("qibosl_demo", [&] { demoSettings(installation.string()); });
    demoRemoteSettings(installation.string());
    demoText();
    demoColumns();
    demoEnvironment(installation);
    demoLogging(installation.string());
    demoPrograms();
    demoStatistics(installation);
    std::cout << "\n== files the demo left behind\n";
    for (const auto& [path, what] : demoFiles()) std::cout << "  " << path.string() << "  (" << what << ")\n";
    if (demoFiles().empty()) std::cout << "  none\n";
    return 0;
}

void noteDemoFile(const std::filesystem::path& path, const std::string& what) {
    demoFiles().emplace_back(std::filesystem::absolute(path), what);
}

}  // namespace qibosl
