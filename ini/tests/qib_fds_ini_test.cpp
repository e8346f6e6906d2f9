// ini/tests/qib_fds_ini_test.cpp
// The installation settings file: location, the "default" group, the error texts, the Unicode
// configuration read from its "unicode" group, and the installation directories.
#include <vum-qib-osl/ini/general_configuration.h>
#include <vum-qib-osl/ini/qib_fds_ini.h>
#include <vum-qib-osl/misc/qib_error.h>
#include <vum-qib-osl/strings/unicode_configuration.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "ini/src/unicode_settings.h"
#include "ini/tests/thrown.h"
#include "misc/src/install_root.h"
#include "tests/support/scoped_unicode_mode.h"
#include "tests/support/temp_dir.h"

namespace {

using osl::test::thrown;
const std::string kWhere = ", programm ini/src/qib_fds_ini";

class QibFDSIniTest : public ::testing::Test {
protected:
    void SetUp() override { std::filesystem::create_directories(dir_.path() / "config"); }
    osl::test::TempDir dir_;
    const std::string installation_ = dir_.path().string();
    const std::string settings_ = dir_.file("config/qib_fds.ini");
};

TEST_F(QibFDSIniTest, DefaultGroupSuppliesFallbacks) {
    ::setenv("OSL_FDS_ROOT", "/srv/reports", 1);
    osl::test::writeFile(settings_, "[default]\nlog_dir=%OSL_FDS_ROOT%/log\nlevel=warning\n"
                                    "[server]\nlevel=info\nport=7001\n");
    const QibFDSIni ini(installation_, true);
    EXPECT_EQ(ini.GetLocation(), installation_ + "/config/qib_fds.ini");
    EXPECT_EQ(ini.GetProperty("server", "level"), "info");
    EXPECT_EQ(ini.GetProperty("server", "log_dir"), "/srv/reports/log");
    EXPECT_EQ(ini.GetProperty("client", "level"), "warning");
    EXPECT_EQ(ini.GetProperty("server", "nothing"), "");
    EXPECT_EQ(ini.GetProperty("client", "level", "d"), "d");  // a caller's default beats the group
    EXPECT_EQ(ini.GetProperty("server", "port", "d"), "7001");
}

TEST_F(QibFDSIniTest, SetPropertyDeleteSectionAndFlush) {
    osl::test::writeFile(settings_, "[unicode]\nmode=legacy\n[old]\nx=1\n");
    QibFDSIni ini(installation_, false);
    ini.SetProperty("unicode", "mode", "unicode");
    ini.SetProperty("new", "k", "v");
    ini.DeleteSection("old");
    ini.Flush();
    EXPECT_EQ(osl::test::readFile(settings_), "[new]\nk=v\n\n[unicode]\nmode=unicode\n\n");

    QibFDSIni readOnly(installation_);
    readOnly.SetProperty("new", "k", "w");
    EXPECT_THROW(readOnly.Flush(), QIBError);
    EXPECT_EQ(QibFDSIni(installation_).GetProperty("new", "k"), "v");
}

// A caller's reader that reports parse errors by number, as older readers did.
class NumberThrowingIni : public QibFDSIni {
public:
    using QibFDSIni::QibFDSIni;
    void FlushIniDataToFile(const std::string&) override { throw 9; }
};

TEST_F(QibFDSIniTest, LocationLoadAndFlushErrors) {
    EXPECT_EQ(thrown([&] { QibFDSIni(dir_.file("nowhere"), true); }), "QibFDSIni::QibFDSIni file " +
              dir_.file("nowhere") + "/config/qib_fds.ini does not exist., code 12, severity 99" + kWhere);
    osl::test::writeFile(settings_, "[a]\nk=1\n[b] x\n");
    EXPECT_EQ(thrown([&] { QibFDSIni(installation_, true); }),
              "Error read qib_fds file " + settings_ + " :  ] sign doesn't end line , code 99, severity 12" + kWhere);
    // Integer parse errors become QIBErrors.
    osl::test::writeFile(settings_, "[a]\n");
    NumberThrowingIni ini(installation_, false);
    EXPECT_EQ(thrown([&] { ini.Flush(); }), "QibFDSIni::Flush : No group name, code 99, severity 12" + kWhere);
    // Without a directory, the file is looked for next to the code of the library.
    const std::string beside = osl::detail::installationRoot() + "config/qib_fds.ini";
    if (std::filesystem::exists(beside)) return;
    EXPECT_EQ(thrown([] { QibFDSIni(true); }),
              "QibFDSIni::QibFDSIni file " + beside + " does not exist., code 12, severity 99" + kWhere);
}

class UnicodeSettingsTest : public QibFDSIniTest {
protected:
    void TearDown() override { Osl_UnicodeConfiguration::SetSettingsReader(nullptr); }
    osl::test::ScopedUnicodeMode restore_{false};
};

TEST_F(UnicodeSettingsTest, ReadsTheUnicodeGroup) {
    ::setenv("OSL_TEST_LOCALES", dir_.path().c_str(), 1);
    osl::test::writeFile(settings_, "[default]\nmode=unicode\n[unicode]\nmode=unicode\nlocaledir=%OSL_TEST_LOCALES%\n"
                                    "default_character_set=MS1250\nos_file_systemnative_character_set=UTF-8\n");
    EXPECT_EQ(osl::detail::readUnicodeSettings(installation_).localedir, installation_);
    // Init() as a program calls it, reading this installation.
    Osl_UnicodeConfiguration::Instance()->Init(Osl_UnicodeSettings{});  // forget an earlier Init
    Osl_UnicodeConfiguration::SetSettingsReader([this] { return osl::detail::readUnicodeSettings(installation_); });
    Osl_UnicodeConfiguration::Instance()->Init();
    EXPECT_TRUE(Osl_UnicodeConfiguration::IsUnicodeMode());
    EXPECT_EQ(Osl_UnicodeConfiguration::GetCurrentEncoding(), "MS1250");
    EXPECT_EQ(Osl_UnicodeConfiguration::GetOSFileSystemNativeEncoding(), "UTF-8");
}

TEST_F(UnicodeSettingsTest, NoModeKeyMeansLegacy) {
    // Legacy whatever else is set (the group "default" does not count); the file system follows the current encoding.
    osl::test::writeFile(settings_, "[default]\nmode=unicode\n[unicode]\ndefault_character_set=Latin1\n");
    const Osl_UnicodeSettings read = osl::detail::readUnicodeSettings(installation_);
    EXPECT_EQ(read.mode, "legacy");
    EXPECT_EQ(read.os_file_systemnative_character_set, "Latin1");
}

template <class F>
int thrownInt(F f) {  // -1: nothing thrown
    try { f(); } catch (int e) { return e; }
    return -1;
}

class GeneralConfigurationTest : public ::testing::Test {
protected:
    void TearDown() override { for (const char* name : {"OSL_ROOT_A", "OSL_ROOT_B", "OSL_ROOT_C"}) unsetenv(name); }
};

// Runs first: before any Init in this process the root is empty.
TEST_F(GeneralConfigurationTest, BeforeInitTheGettersGiveTheBareNames) {
    if (!GeneralConfiguration::GetRootDirectory().empty()) GTEST_SKIP() << "Init ran already";
    EXPECT_EQ(GeneralConfiguration::GetLogDirectory(), "log/");
    EXPECT_EQ(GeneralConfiguration::GetDBDirectory(), "db/");
}

TEST_F(GeneralConfigurationTest, TheFirstSetVariableGivesTheRoot) {
    setenv("OSL_ROOT_B", "/prod", 1);
    setenv("OSL_ROOT_C", "/other", 1);
    GeneralConfiguration::Init(std::vector<std::string>{"OSL_ROOT_A", "OSL_ROOT_B", "OSL_ROOT_C"});
    EXPECT_EQ(GeneralConfiguration::GetRootDirectory(), "/prod/");

    using G = GeneralConfiguration;
    const std::pair<std::string (*)(), const char*> getters[] = {
        {G::GetBannersDirectory, "banners"}, {G::GetBinDirectory, "bin"}, {G::GetDBDirectory, "db"},
        {G::GetConfigurationDirectory, "configuration"}, {G::GetDdfpageDirectory, "ddfpage"},
        {G::GetTmpDirectory, "tmp"}, {G::GetDefinitionsDirectory, "definitions"},
        {G::GetDocumentationDirectory, "documentation"}, {G::GetDriversDirectory, "drivers"},
        {G::GetExamplesDirectory, "examples"}, {G::GetLogDirectory, "log"}, {G::GetMessagesDirectory, "messages"},
        {G::GetMonitorDirectory, "monitor"}, {G::GetRecipientDirectory, "recipient"},
    };
    for (const auto& [getter, name] : getters) EXPECT_EQ(getter(), std::string("/prod/") + name + "/");

    // A value that already ends in "/" gets no second one.
    setenv("OSL_ROOT_C", "/opt/app/", 1);
    GeneralConfiguration::Init("OSL_ROOT_C");
    EXPECT_EQ(GeneralConfiguration::GetRootDirectory(), "/opt/app/");
    EXPECT_EQ(GeneralConfiguration::GetTmpDirectory(), "/opt/app/tmp/");
}

TEST_F(GeneralConfigurationTest, NoUsableVariableThrowsTwoAndKeepsTheRoot) {
    setenv("OSL_ROOT_A", "/kept", 1);
    GeneralConfiguration::Init("OSL_ROOT_A");
    setenv("OSL_ROOT_B", "", 1);
    setenv("OSL_ROOT_C", "/never", 1);
    // None set, an empty list, the first set one empty.
    const std::vector<std::string> cases[] = {
        {"OSL_ROOT_X", "OSL_ROOT_Y"}, {}, {"OSL_ROOT_X", "OSL_ROOT_B", "OSL_ROOT_C"}};
    for (const std::vector<std::string>& names : cases) {
        SCOPED_TRACE(names.size());
        EXPECT_EQ(thrownInt([&] { GeneralConfiguration::Init(names); }), 2);
        EXPECT_EQ(GeneralConfiguration::GetRootDirectory(), "/kept/");
    }
    EXPECT_EQ(thrownInt([] { GeneralConfiguration::Init("OSL_ROOT_X"); }), 2);
}

TEST_F(GeneralConfigurationTest, FixedDirectoryPathEndsInOneSlash) {
    const std::pair<const char*, const char*> cases[] = {
        {"", "/"}, {"/", "/"}, {"a", "a/"}, {"/a/b/", "/a/b/"}, {"a\\", "a\\/"}, {"a//", "a//"}};
    for (const auto& [path, fixed] : cases) EXPECT_EQ(GeneralConfiguration::GetFixedDirectoryPath(path), fixed) << path;
}

}  // namespace
