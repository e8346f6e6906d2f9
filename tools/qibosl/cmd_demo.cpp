// tools/qibosl/cmd_demo.cpp
// qibosl demo: a tour of the library on an installation directory, the way a product program
// uses it at start-up.
#include <vum-qib-osl/osl.h>

#include <cstdio>
#include <filesystem>
#include <iostream>
#include <string>

#include "tools/qibosl/commands.h"

namespace qibosl {
namespace {

void toScreen(const char* line) { std::cout << line << "\n"; }

void section(const char* title) { std::cout << "\n== " << title << "\n"; }

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
    demoText();
    demoEnvironment(installation);
    demoLogging(installation.string());
    return 0;
}

}  // namespace qibosl
