// strings/tests/unicode_configuration_test.cpp
#include <vum-qib-osl/strings/unicode_configuration.h>

#include <vum-qib-osl/misc/qib_error.h>
#include <vum-qib-osl/strings/unicode_converter.h>

#include "platform/icu_text.h"
#include "tests/support/scoped_unicode_mode.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <list>
#include <string>
#include <vector>

namespace {

// The error f throws, or a marker that fails every comparison.
template <class F>
QIBError thrown(F f) {
    try { f(); } catch (const QIBError& e) { return e; }
    return QIBError("no error thrown", -1, -1, "", 0);
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
    std::list<std::string> fonts;
    const QIBError language = thrown([&] { conf_->GetLanguageAbbreviatedName("Klingon"); });
    EXPECT_EQ(language.What(), "Cannot find the language info for Klingon");
    EXPECT_EQ(language.Severity(), 12);
    const QIBError encoding = thrown([&] { conf_->WindowsEncoding2VariableFonts("MS9999", fonts); });
    EXPECT_EQ(encoding.What(), "Cannot find the Windows encoding info for MS9999");
    EXPECT_EQ(encoding.Severity(), 12);
}

TEST_F(UnicodeConfigurationTest, EveryRecordHasAConverterAndTheListsAgree) {
    std::list<std::string> encodings, windows, languages;
    conf_->GetEncodings(encodings);
    conf_->GetWinEncodings(windows);
    conf_->GetLanguages(languages);
    ASSERT_GE(encodings.size(), 35u);
    std::vector<std::string> lowered;
    for (const auto& name : encodings) {
        SCOPED_TRACE(name);
        std::string converter = conf_->GetConverterName(name);
        EXPECT_FALSE(osl::platform::icuCanonicalConverterName(converter).empty()) << converter;
        EXPECT_NE(std::find(windows.begin(), windows.end(), conf_->Encoding2WindowsEncoding(name)), windows.end());
        std::string l = name;
        std::transform(l.begin(), l.end(), l.begin(), ::tolower);
        lowered.push_back(l);
    }
    EXPECT_TRUE(std::is_sorted(lowered.begin(), lowered.end()));
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
    Osl_UnicodeSettings unicode;
    unicode.mode = "unicode";
    unicode.default_character_set = "MS1252";
    const QIBError noLocaleDir = thrown([&] { conf_->Init(unicode); });
    EXPECT_EQ(noLocaleDir.What(), "localedir is not set");
    EXPECT_EQ(noLocaleDir.Code(), 98);
    EXPECT_EQ(noLocaleDir.Severity(), 12);
    EXPECT_EQ(noLocaleDir.Where(), "strings/src/unicode_configuration 227");
    unicode.localedir = "/usr/share/icu";
    conf_->Init(unicode);
    EXPECT_TRUE(Osl_UnicodeConfiguration::IsUnicodeMode());
    EXPECT_EQ(Osl_UnicodeConfiguration::GetCurrentEncoding(), "MS1252");
    EXPECT_EQ(Osl_UnicodeConfiguration::GetOSFileSystemNativeEncoding(), "MS1252");  // from the default
    Osl_UnicodeSettings legacy;  // no mode: legacy, whatever else is set
    legacy.localedir = "/usr/share/icu";
    legacy.default_character_set = "MS1250";
    legacy.os_file_systemnative_character_set = "UTF-8";
    conf_->Init(legacy);
    EXPECT_FALSE(Osl_UnicodeConfiguration::IsUnicodeMode());
    EXPECT_EQ(Osl_UnicodeConfiguration::GetCurrentEncoding(), "MS1250");
    EXPECT_EQ(Osl_UnicodeConfiguration::GetOSFileSystemNativeEncoding(), "UTF-8");
    conf_->Init(Osl_UnicodeSettings{});  // no locale directory: Init() reads again after a new reader
    Osl_UnicodeConfiguration::SetSettingsReader(nullptr);
    Osl_UnicodeConfiguration::SetUnicodeMode(true);
    Osl_UnicodeConfiguration::SetCurrentEncoding("MS1251");
    conf_->Init();  // no reader: what was set stays
    EXPECT_TRUE(Osl_UnicodeConfiguration::IsUnicodeMode());
    EXPECT_EQ(Osl_UnicodeConfiguration::GetCurrentEncoding(), "MS1251");
    int calls = 0;
    Osl_UnicodeConfiguration::SetSettingsReader([&]() -> Osl_UnicodeSettings {
        ++calls;
        throw QIBError("cannot open config/qib_fds.ini", 1, 12, "ini/src/qib_fds_ini", 1);
    });
    Osl_UnicodeConfiguration::SetUnicodeMode(true);
    conf_->Init();  // the reader's error is swallowed: the defaults
    EXPECT_EQ(calls, 1);
    EXPECT_FALSE(Osl_UnicodeConfiguration::IsUnicodeMode());
    conf_->Init();
    EXPECT_EQ(calls, 1);
    Osl_UnicodeConfiguration::SetSettingsReader([] {
        Osl_UnicodeSettings s;
        s.mode = "unicode";
        s.default_character_set = "MS1250";
        return s;
    });
    EXPECT_THROW(conf_->Init(), QIBError);  // Unicode mode without a locale directory
    EXPECT_TRUE(Osl_UnicodeConfiguration::IsUnicodeMode());
    EXPECT_EQ(Osl_UnicodeConfiguration::GetCurrentEncoding(), "MS1250");
}

TEST_F(UnicodeConfigurationTest, CalendarNamesComeFromIcuInTheModesText) {
    std::vector<std::string> months, shortDays;
    conf_->GetMonthNames("English", months);
    conf_->GetAbbreviatedWeekdayNames("English", shortDays);
    ASSERT_EQ(months.size(), 12u);
    EXPECT_EQ(months[11], "December");
    ASSERT_EQ(shortDays.size(), 7u);
    EXPECT_EQ(shortDays[0], "Sun");
    std::vector<std::string> german, germanUnicode, days;
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
