// ini/tests/ini_model_test.cpp
// The INI table: ordering, queries, modifications, environment expansion, iteration, writing,
// the log lines of category "ini", and BackupIni's flushing through numbered temporary files.
#include <vum-qib-osl/ini/ini.h>
#include <vum-qib-osl/ini/qib_backup_ini.h>
#include <vum-qib-osl/log/log.h>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <tuple>
#include <vector>

#include "ini/tests/thrown.h"
#include "tests/support/scoped_unicode_mode.h"
#include "tests/support/temp_dir.h"

namespace fs = std::filesystem;

namespace {

using osl::test::thrown;
const std::string kReadOnly = "File was opened for input only, code 2, severity 12, programm ini/src/ini";
const std::string kCannotOpen = "Failure to open file before flushing, code 3, severity 12, programm ini/src/ini";

class IniModelTest : public ::testing::Test {
protected:
    Ini loaded(const std::string& text, bool readOnly = false) {
        osl::test::writeFile(dir_.file("m.ini"), text);
        return Ini(dir_.file("m.ini"), readOnly);
    }
    osl::test::TempDir dir_;
};

TEST(StrCmpInSensitiveTest, FoldsAsciiLettersOnly) {
    const std::tuple<std::string, std::string, bool> cases[] = {  // left, right, left < right
        {"abc", "ABD", true},  {"abc", "ABC", false},  {"ab", "ABC", true},  {"a", "", false},
        {"_", "a", false},  // "_" (0x5F) sorts after "A" (0x41), the folded "a"
        {"\xc3\x89", "\xc3\xa9", true}, {"a\x80", "A\x7f", false},  // é vs É stay different; unsigned bytes
        // Longer than one eight-byte step: case differences early, real ones late.
        {"SECTION_12", "section_13", true}, {"abcdefghIJ", "ABCDEFGHij", false},
        {"abcdefghijklmnop_", "ABCDEFGHIJKLMNOPa", false}, {"abcdefghijklmnopq", "abcdefghijklmnop", false},
    };
    for (const auto& [left, right, less] : cases)
        EXPECT_EQ(StrCmpInSensitive()(left, right), less) << left << " < " << right;
}

TEST_F(IniModelTest, SetKeyValueAndInsertNewGroupResultsAndCleaning) {
    Ini ini("", false);
    EXPECT_TRUE(ini.SetKeyValue("G", "k", "1"));   // new group: true although the key is new
    EXPECT_FALSE(ini.SetKeyValue("g", "j", "2"));  // existing group, new key
    EXPECT_TRUE(ini.SetKeyValue("g", "K", "3"));   // existing key, any case
    EXPECT_EQ(ini.GetKeyValue("g", "k", "", false), "3");
    EXPECT_TRUE(ini.InsertNewGroup("g"));          // existed: emptied
    EXPECT_FALSE(ini.isGroupHasKey("g", "j"));
    ini.EraseKey("missing", "k");  // nothing to erase
    // ";", tabs and line ends become blanks in names, and end values but those of "value".
    ini.SetKeyValue("g;\tx\ny", "k;\tey\r\nz", "a;b\tc\nd");
    ini.SetKeyValue("g  x", "value", "a;b\tc\nd");
    EXPECT_EQ(ini.GetKeyValue("g  x", "k  ey", "none", false), "a b c");
    EXPECT_EQ(ini.GetKeyValue("g  x", "value", "none", false), "a;b\tc\nd");
    EXPECT_FALSE(ini.InsertNewGroup("h;1\rrest"));
    EXPECT_TRUE(ini.InsertNewGroup("h;1\rrest"));
    EXPECT_TRUE(ini.isGroupExist("h 1"));
}

TEST_F(IniModelTest, EnvironmentExpansionIsOnePass) {
    const std::pair<const char*, const char*> variables[] = {
        {"OSL_INI_A", "alpha"}, {"OSL_INI_B", "%OSL_INI_A%"}, {"OSL_INI_EMPTY", ""}, {"OSL_INI.X", "dot"}};
    for (const auto& [name, value] : variables) ::setenv(name, value, 1);
    for (const char* name : {"OSL_INI_NOPE", "OSL_INI_X"}) ::unsetenv(name);
    Ini ini = loaded("[g]\npath=%OSL_INI_A%/x%%y%OSL_INI_NOPE%\nchain=%OSL_INI_B%-%OSL_INI_A%\n"
                     "twice=%OSL_INI_A%%OSL_INI_A%\nempty=[%OSL_INI_EMPTY%]\nodd=%OSL_INI_A%%\n"
                     "pattern=%OSL_INI.X% %OSL_INI_X%\nkey=%path%\n");
    const std::pair<const char*, const char*> cases[] = {
        {"path", "alpha/x%%y%OSL_INI_NOPE%"}, {"chain", "%OSL_INI_A%-alpha"}, {"twice", "alphaalpha"},
        {"empty", "[]"}, {"odd", "alpha%"},
        {"pattern", "dot dot"},  // the name is a pattern: "." matches "_" too
        {"key", "%path%"},       // keys of the file are not variables
    };
    for (const auto& [key, expanded] : cases) EXPECT_EQ(ini.GetKeyValue("g", key, "", true), expanded) << key;
    EXPECT_EQ(ini.GetKeyValue("g", "path", "", false), "%OSL_INI_A%/x%%y%OSL_INI_NOPE%");
    // GetString: the found flag, and defaults are not expanded.
    bool found = false;  // set by each call: true after the first, false after the others
    auto get = [&](const char* group, const char* key, const char* fallback) {
        const std::string value = ini.GetString(group, key, fallback, &found);
        return value + (found ? " (found)" : "");
    };
    EXPECT_EQ(get("G", "TWICE", "d"), "alphaalpha (found)");
    EXPECT_EQ(get("g", "x", "%OSL_INI_A%"), "%OSL_INI_A%");
    EXPECT_EQ(get("nogroup", "k", "d"), "d");
}

TEST_F(IniModelTest, IteratorWalksGroupsInOrder) {
    Ini empty;
    EXPECT_TRUE(empty.begin() == empty.end());
    Ini ini = loaded("[b]\nk=1\n[A]\n[c]\nx=2\ny=3\n");
    IniGroupIterator it = ini.begin();
    EXPECT_EQ((*it++).name, "A");
    EXPECT_EQ((*it).name, "b");
    EXPECT_EQ((*it).properties->size(), 1u);
    EXPECT_EQ((*++it).name, "c");
    ++it;
    EXPECT_TRUE(it == ini.end());
    EXPECT_EQ((*it).properties, nullptr);
}

TEST_F(IniModelTest, FlushWritesTheCanonicalFormOrFails) {
    Ini ini = loaded("; comment\n[zeta]\n b = 2 ; note\na=1\n\n[Alpha]\nvalue=x;y\n[empty]\n", false);
    ini.SetKeyValue("alpha", "k", "v");
    const std::string out = dir_.file("out.ini");
    const std::string canonical = "[Alpha]\nk=v\nvalue=x;y\n\n[empty]\n\n[zeta]\na=1\nb=2\n\n";
    ini.FlushIniDataToFile(out);
    EXPECT_EQ(osl::test::readFile(out), canonical);
    EXPECT_EQ(ini.GetFileName(), dir_.file("m.ini"));
    ini.FlushIniDataToFile("");
    EXPECT_EQ(osl::test::readFile(dir_.file("m.ini")), canonical);

    for (const std::string& target : {dir_.file("no/such/dir.ini"), std::string("/dev/full"), out})
        EXPECT_EQ(thrown([&] { loaded("[g]\nk=v\n", target == out).FlushIniDataToFile(target); }),
                  target == out ? kReadOnly : kCannotOpen) << target;
    EXPECT_EQ(osl::test::readFile(out), canonical);  // untouched by the read-only table
}

TEST(IniErrorTextTest, AllNumbers) {
    const char* texts[] = {"", "Error opening file", "File was opened for input only",
        "Failure to open file before flushing", "Group name is expected", "Ini file is empty",
        "Unexpected blank space , tab or ;", "Unexpected  [", " = Expected", "No group name", "No ] sign ",
        " ] sign doesn't end line ", "Empty line", "; sign is not allowed inside group name",
        "; sign is not allowed here", "Sign ; is not extpected"};
    for (int n = 0; n < 16; ++n) EXPECT_EQ(Ini::ExceptionNumberToString(n), texts[n]) << n;
    for (int n : {-1, 16}) EXPECT_EQ(Ini::ExceptionNumberToString(n), "") << n;
}

std::vector<std::string> logged;

TEST_F(IniModelTest, LogsInCategoryIniOnlyWhenEnabled) {
    Ini ini = loaded("[g]\nk=v\n");
    CLog* log = CLog::Instance();
    log->SetFunctionChannel([](const char* line) { logged.push_back(line); }, SevInfo, "other", false);
    ini.GetKeyValue("g", "k", "", false);
    EXPECT_TRUE(logged.empty());

    log->SetFunctionChannel([](const char* line) { logged.push_back(line); }, SevInfo, "ini", false);
    ini.GetKeyValue("g", "k", "", false);
    ini.GetKeyValue("g", "x", "d", false);
    ini.GetKeyValue("h", "x", "d", false);
    ini.GetString("g", "k", "", nullptr);
    ini.SetKeyValue("g", "n", "1");
    ini.EraseKey("g", "n");
    ini.EraseGroup("h");
    Ini("", false);
    const std::string expected[] = {
        "Ini::GetKeyValue : Group :g Key: k return value: v",
        "Ini::GetKeyValue : Group :g Key: x return default value: d (cannot find key in group)",
        "Ini::GetKeyValue : Group :h Key: x return default value: d (cannot find group)",
        "Ini::GetKeyValue : Group :g Key: k return value: v (replaced)",
        "Ini::SetKeyValue : Group: g Key: n Val: 1",
        "Ini::EraseKey : Group: g Key: n",
        "Ini::EraseGroup : Group: h",
        "Ini::LoadAdd : Load Ini file from file:  (writtable)",
        "Ini::LoadAdd : File name is empty",
    };
    ASSERT_EQ(logged.size(), std::size(expected));
    for (std::size_t i = 0; i < logged.size(); ++i) {
        EXPECT_NE(logged[i].find(" ini "), std::string::npos) << logged[i];
        EXPECT_EQ(logged[i].substr(logged[i].size() - expected[i].size()), expected[i]);
    }
    log->DeleteChannels();
}

class BackupIniTest : public IniModelTest {
protected:
    std::string leftovers() const {
        std::string names;
        for (const auto& entry : fs::directory_iterator(dir_.path()))
            if (entry.path().filename().string().find(".tmp") != std::string::npos) names += entry.path().string();
        return names;
    }
};

TEST_F(BackupIniTest, FlushUpdatesTheLinkedFileKeepingModeAndOwner) {
    // A non-ASCII name on a Latin-1 file system: every call on the name must use the converted one.
    osl::test::ScopedUnicodeMode latin1(true, "MS1252", "ISO-8859-1");
    const std::string real = dir_.file("caf\xE9.ini");
    const std::string link = dir_.file("caf\xC3\xA9-link.ini");
    osl::test::writeFile(real, "; written by hand\n[b]\nk = 1\n");
    fs::permissions(real, fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
    const bool root = ::geteuid() == 0;
    ASSERT_TRUE(!root || ::chown(real.c_str(), 65534, 65534) == 0);  // as root: a service's file
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
    EXPECT_TRUE(!root || (st.st_uid == 65534u && st.st_gid == 65534u));
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
    // One counter for the process: the second flush takes the next number.
    const std::string prefix = "Cannot copy file: " + file + ".tmp";
    int number = -1;
    for (int flush = 0; flush < 2; ++flush) {
        const std::string text = thrown([&] { ini.FlushIniDataToFile(""); });
        ASSERT_EQ(text.rfind(prefix, 0), 0u) << text;
        if (number < 0) number = std::stoi(text.substr(prefix.size()));
        EXPECT_EQ(text, prefix + std::to_string(number + flush) + " to: " + file +
                            ", code 12, severity 12, programm ini/src/qib_backup_ini");
        EXPECT_EQ(ini.GetFileName(), file);
        EXPECT_EQ(leftovers(), "");
    }
}

TEST_F(BackupIniTest, UnwritableOrReadOnlyTablesGiveErrors3And2) {
    osl::test::ScopedUnicodeMode latin1(true, "MS1252", "ISO-8859-1");
    const std::string good = dir_.file("report_");  // also what a shortened name would hit
    osl::test::writeFile(good, "[g]\nk=v\n");
    for (const std::string& file : {dir_.file("missing/config.ini"), dir_.file("report_\xE2\x82\xAC.ini"), good}) {
        SCOPED_TRACE(file);
        const bool readOnly = file == good;
        BackupIni ini(good);
        thrown([&] { ini.Load(file, readOnly); });  // keeps the name and the flag even when it cannot read
        ini.SetKeyValue("g", "k", "changed");
        EXPECT_EQ(thrown([&] { ini.FlushIniDataToFile(""); }), readOnly ? kReadOnly : kCannotOpen);
        EXPECT_EQ(ini.GetFileName(), file);
    }
    EXPECT_EQ(osl::test::readFile(good), "[g]\nk=v\n");
    EXPECT_EQ(leftovers(), "");
}

}  // namespace
