// ini/tests/qib_backup_ini_test.cpp
// BackupIni: flushing through numbered temporary files, its errors and the file name afterwards.
#include <vum-qib-osl/ini/qib_backup_ini.h>
#include <vum-qib-osl/misc/qib_error.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/support/temp_dir.h"

namespace fs = std::filesystem;

namespace {

class BackupIniTest : public ::testing::Test {
protected:
    std::string leftovers() const {
        std::string names;
        for (const auto& entry : fs::directory_iterator(dir_.path())) {
            const std::string name = entry.path().filename().string();
            if (name.find(".tmp") != std::string::npos) names += name + " ";
        }
        return names;
    }
    osl::test::TempDir dir_;
};

TEST_F(BackupIniTest, FlushReplacesTheFileAndKeepsItsMode) {
    const std::string file = dir_.file("config.ini");
    osl::test::writeFile(file, "; written by hand\n[b]\nk = 1\n");
    fs::permissions(file, fs::perms::owner_read | fs::perms::owner_write);
    BackupIni ini(file);
    ini.SetKeyValue("a", "x", "2");
    ini.FlushIniDataToFile("ignored.ini");
    EXPECT_EQ(osl::test::readFile(file), "[a]\nx=2\n\n[b]\nk=1\n\n");
    EXPECT_EQ(fs::status(file).permissions() & fs::perms::all, fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_FALSE(fs::exists(dir_.file("ignored.ini")));
    ini.SetKeyValue("a", "x", "3");
    ini.FlushIniDataToFile("");
    EXPECT_EQ(Ini(file).GetKeyValue("a", "x", "", false), "3");
    EXPECT_EQ(ini.GetFileName(), file);
    EXPECT_EQ(leftovers(), "");
}

TEST_F(BackupIniTest, FailedReplacementNamesNumberedTemporaries) {
    const std::string file = dir_.file("config.ini");
    osl::test::writeFile(file, "[a]\nk=v\n");
    BackupIni ini(file);
    fs::remove(file);
    fs::create_directories(file + "/inside");  // a directory cannot be renamed over
    int previous = -1;
    for (int round = 0; round < 2; ++round) {
        try {
            ini.FlushIniDataToFile("");
            FAIL() << "replaced a directory";
        } catch (const QIBError& e) {
            const std::string prefix = "Cannot copy file: " + file + ".tmp";
            ASSERT_EQ(e.What().rfind(prefix, 0), 0u) << e.What();
            const std::size_t to = e.What().find(" to: ");
            ASSERT_NE(to, std::string::npos);
            EXPECT_EQ(e.What().substr(to), " to: " + file);
            const int number = std::stoi(e.What().substr(prefix.size(), to - prefix.size()));
            if (previous >= 0) {
                EXPECT_EQ(number, previous + 1);
            }
            previous = number;
            EXPECT_EQ(e.Code(), 12);
            EXPECT_EQ(e.Severity(), 12);
            EXPECT_EQ(e.Where().rfind("ini/src/qib_backup_ini ", 0), 0u);
        }
        EXPECT_EQ(ini.GetFileName(), file);
        EXPECT_EQ(leftovers(), "");
    }
}

TEST_F(BackupIniTest, UnwritableTemporaryGivesError3AndKeepsTheName) {
    const std::string file = dir_.file("config.ini");
    osl::test::writeFile(file, "[a]\nk=v\n");
    BackupIni ini(file);
    fs::remove(file);
    fs::remove(dir_.path());
    try {
        ini.FlushIniDataToFile("");
        FAIL() << "flushed into a missing directory";
    } catch (const QIBError& e) {
        EXPECT_EQ(e.Code(), 3);
        EXPECT_EQ(e.What(), "Failure to open file before flushing");
    }
    EXPECT_EQ(ini.GetFileName(), file);
    fs::create_directories(dir_.path());

    osl::test::writeFile(file, "[a]\nk=v\n");
    ini.Load(file, true);
    try {
        ini.FlushIniDataToFile("");
        FAIL() << "flushed a read-only table";
    } catch (const QIBError& e) {
        EXPECT_EQ(e.Code(), 2);
    }
    EXPECT_EQ(ini.GetFileName(), file);
    EXPECT_EQ(leftovers(), "");
}

}  // namespace
