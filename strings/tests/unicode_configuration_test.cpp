// strings/tests/unicode_configuration_test.cpp
#include <vum-qib-osl/strings/unicode_configuration.h>

#include <vum-qib-osl/misc/qib_error.h>

#include "platform/icu_text.h"
#include "tests/support/scoped_unicode_mode.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <list>
#include <string>
#include <vector>

namespace {

// The text, code, severity and place of the error f throws.
template <class F>
std::string thrown(F f) {
    try { f(); } catch (const QIBError& e) {
        return e.What() + " (" + std::to_string(e.Code()) + "/" + std::to_string(e.Severity()) + ") " + e.Where();
    }
    return "no error thrown";
}

class UnicodeConfigurationTest : public ::testing::Test {
protected:
    void TearDown() override {
        Osl_UnicodeConfiguration::SetSettingsReader(nullptr);
        conf_->SetSortOrder("");
    }
    Osl_UnicodeConfiguration* conf_ = Osl_UnicodeConfiguration::Instance();
    osl::test::ScopedUnicodeMode restore_{false};
};

}  // namespace

TEST_F(UnicodeConfigurationTest, RecordsAreFoundByEveryAliasAndUnknownNamesFail) {
    const struct { const char *name, *description; bool ibm, dbcs; const char* windows; } cases[] = {
        {"MS1252", "Windows Latin 1, Western European", false, false, "MS1252"},
        {"ISO-8859-1", "ISO 8859-1 Latin 1, Western European", false, false, "MS1252"},
        {"ibm-939", "IBM EBCDIC Japanese Latin mixed", true, true, "MS932"},
        {"ibm-37", "IBM EBCDIC US/Canada", true, false, "MS1252"},
        {"utf8", "Unicode UTF-8", false, false, "UTF-8"},
        {"no-such-encoding", "ISO 8859-1 Latin 1, Western European", false, false, "MS1252"},  // Latin1
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(conf_->GetEncodingDescription(c.name), c.description);
        EXPECT_EQ(conf_->IsIBMEncoding(c.name), c.ibm);
        EXPECT_EQ(conf_->IsDBCSEncoding(c.name), c.dbcs);
        EXPECT_EQ(conf_->Encoding2WindowsEncoding(c.name), c.windows);
    }
    EXPECT_FALSE(conf_->IsLegacySupportedEncoding("UTF-8"));
    EXPECT_TRUE(conf_->IsUNICODESupportedEncoding("UTF-8"));
    EXPECT_EQ(thrown([&] { conf_->GetLanguageAbbreviatedName("Klingon"); }),
              "Cannot find the language info for Klingon (98/12) strings/src/unicode_configuration 561");
    std::list<std::string> fonts;
    EXPECT_EQ(thrown([&] { conf_->WindowsEncoding2VariableFonts("MS9999", fonts); }),
              "Cannot find the Windows encoding info for MS9999 (98/12) strings/src/unicode_configuration 538");
}

TEST_F(UnicodeConfigurationTest, EveryRecordHasAConverterAndTheListsAgree) {
    std::list<std::string> encodings, windows, languages;
    conf_->GetEncodings(encodings);
    conf_->GetWinEncodings(windows);
    conf_->GetLanguages(languages);
    ASSERT_GE(encodings.size(), 35u);
    for (const auto& name : encodings) {
        SCOPED_TRACE(name);
        EXPECT_FALSE(osl::platform::icuCanonicalConverterName(conf_->GetConverterName(name)).empty());
        EXPECT_NE(std::find(windows.begin(), windows.end(), conf_->Encoding2WindowsEncoding(name)), windows.end());
    }
    EXPECT_TRUE(std::is_sorted(encodings.begin(), encodings.end(), [](const std::string& a, const std::string& b) {
        return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                            [](char x, char y) { return std::tolower(x) < std::tolower(y); });
    }));
    std::list<std::string> found;
    conf_->WindowsEncoding2Encoding("MS932", found);
    EXPECT_EQ(found, (std::list<std::string>{"IBM-930", "IBM-939", "MS932"}));
    for (const auto& language : languages) {
        SCOPED_TRACE(language);
        std::string win = conf_->Language2WindowsEncoding(language);
        std::list<std::string> fonts, back;
        conf_->WindowsEncoding2FixedFonts(win, fonts);
        EXPECT_FALSE(fonts.empty());
        conf_->WindowsEncoding2Language(win, back);
        EXPECT_NE(std::find(back.begin(), back.end(), language), back.end());
    }
}

TEST_F(UnicodeConfigurationTest, InitFromSettingsOrTheInstalledReader) {
    using UC = Osl_UnicodeConfiguration;
    const auto state = [](bool withFileSystem = true) {  // mode, current [/file-system] encoding
        return (UC::IsUnicodeMode() ? "unicode " : "legacy ") + UC::GetCurrentEncoding() +
               (withFileSystem ? "/" + UC::GetOSFileSystemNativeEncoding() : "");
    };
    // Fields: mode, localedir, default_character_set, os_file_systemnative_character_set.
    Osl_UnicodeSettings unicode{"unicode", "", "MS1252", ""};
    EXPECT_EQ(thrown([&] { conf_->Init(unicode); }),
              "localedir is not set (98/12) strings/src/unicode_configuration 227");
    unicode.localedir = "/usr/share/icu";
    conf_->Init(unicode);
    EXPECT_EQ(state(), "unicode MS1252/MS1252");  // file names from the default
    conf_->Init(Osl_UnicodeSettings{"legacy", "/usr/share/icu", "MS1250", "UTF-8"});  // whatever else is set
    EXPECT_EQ(state(), "legacy MS1250/UTF-8");
    conf_->Init(Osl_UnicodeSettings{});  // no locale directory: Init() reads again after a new reader
    UC::SetSettingsReader(nullptr);
    UC::SetUnicodeMode(true);
    UC::SetCurrentEncoding("MS1251");
    conf_->Init();  // no reader: what was set stays
    EXPECT_EQ(state(false), "unicode MS1251");
    int calls = 0;
    UC::SetSettingsReader([&]() -> Osl_UnicodeSettings { ++calls; throw QIBError("no file", 1, 12, "", 1); });
    UC::SetUnicodeMode(true);
    conf_->Init();  // the reader's error is swallowed: the defaults
    EXPECT_EQ(calls, 1);
    EXPECT_FALSE(UC::IsUnicodeMode());
    conf_->Init();
    EXPECT_EQ(calls, 1);
    UC::SetSettingsReader([] { return Osl_UnicodeSettings{"unicode", "", "MS1250", ""}; });
    EXPECT_THROW(conf_->Init(), QIBError);  // Unicode mode without a locale directory
    EXPECT_EQ(state(false), "unicode MS1250");
}

TEST_F(UnicodeConfigurationTest, CalendarNamesComeFromIcuInTheModesText) {
    std::vector<std::string> months, shortDays, german, germanUnicode, days;
    conf_->GetMonthNames("English", months);
    conf_->GetAbbreviatedWeekdayNames("English", shortDays);
    ASSERT_EQ(months.size(), 12u);
    EXPECT_EQ(months[11], "December");
    ASSERT_EQ(shortDays.size(), 7u);
    EXPECT_EQ(shortDays[0], "Sun");
    conf_->GetMonthNames("German", german);  // legacy mode: windows-1252 bytes
    EXPECT_EQ(german[2], "M\xE4rz");
    {
        osl::test::ScopedUnicodeMode mode(true);
        conf_->GetMonthNames("German", germanUnicode);
        conf_->GetWeekdayNames("Japanese", days);
    }
    EXPECT_EQ(germanUnicode[2], "M\xC3\xA4rz");
    ASSERT_EQ(days.size(), 7u);
    EXPECT_EQ(days[0], "\xE6\x97\xA5\xE6\x9B\x9C\xE6\x97\xA5");  // 日曜日
}

TEST_F(UnicodeConfigurationTest, RightToLeftAndSortOrder) {
    EXPECT_TRUE(conf_->IsCharacterRTL("\xE0", "Hebrew"));  // alef in windows-1255
    EXPECT_FALSE(conf_->IsCharacterRTL("a", "Hebrew"));
    EXPECT_FALSE(conf_->IsCharacterRTL("\xE0", "English"));
    {
        osl::test::ScopedUnicodeMode mode(true);
        EXPECT_TRUE(conf_->IsCharacterRTL("\xD7\x90", "Hebrew"));
        EXPECT_TRUE(conf_->IsCharacterRTL("\xD8\xA7", "Arabic"));
        EXPECT_EQ(conf_->GetLanguageAbbreviatedName("Hebrew"), "he");
        // Byte order puts ä (C3 A4) after b; German collation before it.
        EXPECT_GT(Osl_UnicodeConfiguration::lex_str_compare_func("\xC3\xA4", "b"), 0);
        conf_->SetSortOrder("German");
        EXPECT_EQ(conf_->GetSortOrder(), "German");
        EXPECT_LT(Osl_UnicodeConfiguration::lex_str_compare_func("\xC3\xA4", "b"), 0);
        EXPECT_NE(Osl_UnicodeConfiguration::lex_str_compare_func("Abc", "abc"), 0);
        EXPECT_EQ(Osl_UnicodeConfiguration::lex_str_compare_func_nocase("Abc", "abc"), 0);
    }
    conf_->SetSortOrder("");
    EXPECT_EQ(Osl_UnicodeConfiguration::lex_str_compare_func_nocase("ABC\xC9", "abc\xE9"), 0);
}
