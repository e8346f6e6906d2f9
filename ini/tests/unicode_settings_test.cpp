// ini/tests/unicode_settings_test.cpp
// The Unicode configuration takes its mode and encodings from the settings file's "unicode" group.
#include <vum-qib-osl/misc/qib_error.h>
#include <vum-qib-osl/strings/unicode_configuration.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "ini/src/unicode_settings.h"
#include "tests/support/scoped_unicode_mode.h"
#include "tests/support/temp_dir.h"

namespace {

class UnicodeSettingsTest : public ::testing::Test {
protected:
    void SetUp() override { std::filesystem::create_directories(dir_.path() / "config"); }
    void TearDown() override { Osl_UnicodeConfiguration::SetSettingsReader(nullptr); }
    void settings(const std::string& text) { osl::test::writeFile(dir_.file("config/qib_fds.ini"), text); }
    // Init() as a program calls it, reading this test's installation.
    void initFromInstallation() {
        Osl_UnicodeConfiguration* conf = Osl_UnicodeConfiguration::Instance();
        conf->Init(Osl_UnicodeSettings{});  // forget an earlier Init, so that Init() reads again
        const std::string installation = dir_.path().string();
        Osl_UnicodeConfiguration::SetSettingsReader([installation] { return osl::detail::readUnicodeSettings(installation); });
        conf->Init();
    }
    osl::test::TempDir dir_;
    osl::test::ScopedUnicodeMode restore_{false};
};

TEST_F(UnicodeSettingsTest, ReadsTheUnicodeGroup) {
    ::setenv("OSL_TEST_LOCALES", dir_.path().c_str(), 1);
    settings("[default]\nmode=unicode\n[unicode]\nmode=unicode\nlocaledir=%OSL_TEST_LOCALES%\n"
             "default_character_set=MS1250\nos_file_systemnative_character_set=UTF-8\n");
    const Osl_UnicodeSettings read = osl::detail::readUnicodeSettings(dir_.path().string());
    EXPECT_EQ(read.mode, "unicode");
    EXPECT_EQ(read.localedir, dir_.path().string());
    initFromInstallation();
    EXPECT_TRUE(Osl_UnicodeConfiguration::IsUnicodeMode());
    EXPECT_EQ(Osl_UnicodeConfiguration::GetCurrentEncoding(), "MS1250");
    EXPECT_EQ(Osl_UnicodeConfiguration::GetOSFileSystemNativeEncoding(), "UTF-8");
}

TEST_F(UnicodeSettingsTest, DefaultsAndFailures) {
    // No "mode" key: legacy, whatever else is set; the file-system encoding follows the current one.
    // The group "default" does not count here.
    settings("[default]\nmode=unicode\n[unicode]\ndefault_character_set=Latin1\n");
    const Osl_UnicodeSettings read = osl::detail::readUnicodeSettings(dir_.path().string());
    EXPECT_EQ(read.mode, "legacy");
    EXPECT_EQ(read.os_file_systemnative_character_set, "Latin1");
    initFromInstallation();
    EXPECT_FALSE(Osl_UnicodeConfiguration::IsUnicodeMode());

    settings("[unicode]\nmode=unicode\n");
    try {
        initFromInstallation();
        FAIL() << "Unicode mode without a locale directory";
    } catch (const QIBError& e) {
        EXPECT_EQ(e.What(), "localedir is not set");
    }

    // A settings file that does not parse leaves the defaults.
    settings("mode=unicode\n");
    EXPECT_THROW(osl::detail::readUnicodeSettings(dir_.path().string()), QIBError);
    Osl_UnicodeConfiguration::SetUnicodeMode(true);
    initFromInstallation();
    EXPECT_FALSE(Osl_UnicodeConfiguration::IsUnicodeMode());
}

}  // namespace
