// ini/tests/qib_fds_ini_test.cpp
// The installation settings file: location, the "default" group, and the error texts.
#include <vum-qib-osl/ini/qib_fds_ini.h>
#include <vum-qib-osl/misc/qib_error.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>

#include "misc/src/install_root.h"
#include "tests/support/temp_dir.h"

namespace {

class QibFDSIniTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::filesystem::create_directories(dir_.path() / "config");
        settings_ = dir_.file("config/qib_fds.ini");
    }
    void expectError(const std::function<void()>& action, const std::string& text, long code, long severity) {
        try {
            action();
            ADD_FAILURE() << "no error, expected " << text;
        } catch (const QIBError& e) {
            EXPECT_EQ(e.What(), text);
            EXPECT_EQ(e.Code(), code);
            EXPECT_EQ(e.Severity(), severity);
            EXPECT_EQ(e.Where().rfind("ini/src/qib_fds_ini ", 0), 0u) << e.Where();
        }
    }
    osl::test::TempDir dir_;
    std::string settings_;
};

TEST_F(QibFDSIniTest, DefaultGroupSuppliesFallbacks) {
    ::setenv("OSL_FDS_ROOT", "/srv/reports", 1);
    osl::test::writeFile(settings_,
                         "[default]\nlog_dir=%OSL_FDS_ROOT%/log\nlevel=warning\n"
                         "[server]\nlevel=info\nport=7001\n");
    const QibFDSIni ini(dir_.path().string(), true);
    EXPECT_EQ(ini.GetLocation(), dir_.path().string() + "/config/qib_fds.ini");
    struct Case {
        const char* section;
        const char* key;
        const char* value;
    };
    const Case cases[] = {
        {"server", "level", "info"},
        {"server", "log_dir", "/srv/reports/log"},
        {"client", "level", "warning"},
        {"server", "nothing", ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.section) + "/" + c.key);
        EXPECT_EQ(ini.GetProperty(c.section, c.key), c.value);
    }
    EXPECT_EQ(ini.GetProperty("client", "level", "d"), "d");
    EXPECT_EQ(ini.GetProperty("server", "port", "d"), "7001");
}

TEST_F(QibFDSIniTest, SetPropertyDeleteSectionAndFlush) {
    osl::test::writeFile(settings_, "[unicode]\nmode=legacy\n[old]\nx=1\n");
    QibFDSIni ini(dir_.path().string(), false);
    ini.SetProperty("unicode", "mode", "unicode");
    ini.SetProperty("new", "k", "v");
    ini.DeleteSection("old");
    ini.Flush();
    EXPECT_EQ(osl::test::readFile(settings_), "[new]\nk=v\n\n[unicode]\nmode=unicode\n\n");

    QibFDSIni readOnly(dir_.path().string());
    readOnly.SetProperty("new", "k", "w");
    EXPECT_THROW(readOnly.Flush(), QIBError);
    EXPECT_EQ(QibFDSIni(dir_.path().string()).GetProperty("new", "k"), "v");
}

TEST_F(QibFDSIniTest, LocationAndLoadErrors) {
    const std::string missing = dir_.file("nowhere") + "/config/qib_fds.ini";
    expectError([&] { QibFDSIni(dir_.file("nowhere"), true); },
                "QibFDSIni::QibFDSIni file " + missing + " does not exist.", 12, 99);
    osl::test::writeFile(settings_, "[a]\nk=1\n[b] x\n");
    expectError([&] { QibFDSIni(dir_.path().string(), true); },
                "Error read qib_fds file " + settings_ + " :  ] sign doesn't end line ", 99, 12);
    // Without a directory, the file is looked for next to the code of the library.
    const std::string beside = osl::detail::installationRoot() + "config/qib_fds.ini";
    if (!std::filesystem::exists(beside)) {
        expectError([] { QibFDSIni(true); }, "QibFDSIni::QibFDSIni file " + beside + " does not exist.", 12, 99);
    }
}

// A caller's reader that reports parse errors by number, as older readers did.
class NumberThrowingIni : public QibFDSIni {
public:
    using QibFDSIni::QibFDSIni;
    void FlushIniDataToFile(const std::string&) override { throw 9; }
};

TEST_F(QibFDSIniTest, IntegerParseErrorsBecomeQIBErrors) {
    osl::test::writeFile(settings_, "[a]\n");
    NumberThrowingIni ini(dir_.path().string(), false);
    expectError([&] { ini.Flush(); }, "QibFDSIni::Flush : No group name", 99, 12);
}

}  // namespace
