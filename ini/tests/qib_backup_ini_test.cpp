// ini/tests/qib_backup_ini_test.cpp
// BackupIni: flushing through numbered temporary files, its errors and the file name afterwards.
#include <vum-qib-osl/ini/qib_backup_ini.h>
#include <vum-qib-osl/misc/qib_error.h>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "tests/support/scoped_unicode_mode.h"
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

TEST_F(BackupIniTest, FlushUpdatesTheLinkedFileKeepingModeAndOwner) {
    // A non-ASCII name on a Latin-1 file system: every call on the name must use the converted one.
    osl::test::ScopedUnicodeMode latin1(true, "MS1252", "ISO-8859-1");
    const std::string real = dir_.file("caf\xE9.ini");
    const std::string link = dir_.file("caf\xC3\xA9-link.ini");
    osl::test::writeFile(real, "; written by hand\n[b]\nk = 1\n");
    fs::permissions(real, fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
    const bool root = ::geteuid() == 0;
    if (root) {
        ASSERT_EQ(::chown(real.c_str(), 65534, 65534), 0);  // a service's file, flushed by root
    }
    fs::create_symlink("caf\xE9.ini", dir_.file("caf\xE9-link.ini"));
    BackupIni ini(link);
    ini.SetKeyValue("a", "x", "2");
    ini.FlushIniDataToFile("ignored.ini");
    ini.SetKeyValue("a", "x", "3");
    ini.FlushIniDataToFile("");
    EXPECT_EQ(osl::test::readFile(real), "[a]\nx=3\n\n[b]\nk=1\n\n");
    EXPECT_TRUE(fs::is_symlink(dir_.file("caf\xE9-link.ini")));
    struct stat st {};
    ASSERT_EQ(::stat(real.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 07777, 0640u);
    if (root) {
        EXPECT_EQ(st.st_uid, 65534u);
        EXPECT_EQ(st.st_gid, 65534u);
    }
    EXPECT_FALSE(fs::exists(dir_.file("ignored.ini")));
    EXPECT_EQ(ini.GetFileName(), link);
    EXPECT_EQ(leftovers(), "");
}

TEST_F(BackupIniTest, FailedReplacementNamesNumberedTemporaries) {
    const std::string file = dir_.file("config.ini");
    osl::test::writeFile(file, "[a]\nk=v\n");
    BackupIni ini(file);
    fs::remove(file);
    fs::create_directories(file + "/inside");  // a directory cannot be renamed over
    std::string texts[2];
    for (std::string& text : texts) {
        try {
            ini.FlushIniDataToFile("");
            FAIL() << "replaced a directory";
        } catch (const QIBError& e) {
            text = e.What();
            EXPECT_EQ(e.Code(), 12);
            EXPECT_EQ(e.Severity(), 12);
            EXPECT_EQ(e.Where().rfind("ini/src/qib_backup_ini ", 0), 0u);
        }
        EXPECT_EQ(ini.GetFileName(), file);
        EXPECT_EQ(leftovers(), "");
    }
    // One counter for the process: the second flush takes the next number.
    const std::string prefix = "Cannot copy file: " + file + ".tmp";
    ASSERT_EQ(texts[0].rfind(prefix, 0), 0u) << texts[0];
    const int first = std::stoi(texts[0].substr(prefix.size()));
    EXPECT_EQ(texts[0], prefix + std::to_string(first) + " to: " + file);
    EXPECT_EQ(texts[1], prefix + std::to_string(first + 1) + " to: " + file);
}

TEST_F(BackupIniTest, UnwritableOrReadOnlyTablesGiveErrors3And2) {
    osl::test::ScopedUnicodeMode latin1(true, "MS1252", "ISO-8859-1");
    const std::string good = dir_.file("report_");  // also what a shortened name would hit
    osl::test::writeFile(good, "[g]\nk=v\n");
    const struct {
        std::string file;
        bool readOnly;
        long code;
    } cases[] = {
        {dir_.file("missing/config.ini"), false, 3},
        {dir_.file("report_\xE2\x82\xAC.ini"), false, 3},
        {good, true, 2},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        BackupIni ini(good);
        try {
            ini.Load(c.file, c.readOnly);  // keeps the name and the flag even when it cannot read
        } catch (const QIBError&) {
        }
        ini.SetKeyValue("g", "k", "changed");
        try {
            ini.FlushIniDataToFile("");
            FAIL() << "no error";
        } catch (const QIBError& e) {
            EXPECT_EQ(e.Code(), c.code);
        }
        EXPECT_EQ(ini.GetFileName(), c.file);
    }
    EXPECT_EQ(osl::test::readFile(good), "[g]\nk=v\n");
    EXPECT_EQ(leftovers(), "");
}

}  // namespace
