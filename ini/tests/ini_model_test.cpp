// ini/tests/ini_model_test.cpp
// The INI table: ordering, queries, modifications, environment expansion, iteration, writing
// and the log lines of category "ini".
#include <vum-qib-osl/ini/ini.h>
#include <vum-qib-osl/log/log.h>
#include <vum-qib-osl/misc/qib_error.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "tests/support/temp_dir.h"

namespace {

class IniModelTest : public ::testing::Test {
protected:
    Ini loaded(const std::string& text, bool readOnly = false) {
        const std::string path = dir_.file("m.ini");
        osl::test::writeFile(path, text);
        return Ini(path, readOnly);
    }
    osl::test::TempDir dir_;
};

TEST(StrCmpInSensitiveTest, FoldsAsciiLettersOnly) {
    struct Case {
        std::string left, right;
        bool less;
    };
    const Case cases[] = {
        {"abc", "ABD", true},  {"abc", "ABC", false},  {"ab", "ABC", true},  {"a", "", false},
        {"_", "a", false},  // "_" (0x5F) sorts after "A" (0x41), the folded "a"
        {"\xc3\x89", "\xc3\xa9", true}, {"a\x80", "A\x7f", false},  // é vs É stay different; unsigned bytes
        // Longer than one eight-byte step: case differences early, real ones late.
        {"SECTION_12", "section_13", true}, {"abcdefghIJ", "ABCDEFGHij", false},
        {"abcdefghijklmnop_", "ABCDEFGHIJKLMNOPa", false}, {"abcdefghijklmnopq", "abcdefghijklmnop", false},
    };
    const StrCmpInSensitive less;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.left + " < " + c.right);
        EXPECT_EQ(less(c.left, c.right), c.less);
    }
}

TEST_F(IniModelTest, SetKeyValueAndInsertNewGroupResults) {
    Ini ini("", false);
    EXPECT_TRUE(ini.SetKeyValue("G", "k", "1"));   // new group: true although the key is new
    EXPECT_FALSE(ini.SetKeyValue("g", "j", "2"));  // existing group, new key
    EXPECT_TRUE(ini.SetKeyValue("g", "K", "3"));   // existing key, any case
    EXPECT_EQ(ini.GetKeyValue("g", "k", "", false), "3");
    EXPECT_TRUE(ini.InsertNewGroup("g"));          // existed: emptied
    EXPECT_FALSE(ini.isGroupHasKey("g", "j"));
    EXPECT_FALSE(ini.InsertNewGroup("other"));
    ini.EraseKey("missing", "k");
    ini.EraseGroup("missing");
    EXPECT_TRUE(ini.isGroupExist("other"));
}

TEST_F(IniModelTest, SetKeyValueCleansNamesAndValues) {
    Ini ini("", false);
    ini.SetKeyValue("g;\tx\ny", "k;\tey\r\nz", "a;b\tc\nd");
    ini.SetKeyValue("g  x", "value", "a;b\tc\nd");
    EXPECT_EQ(ini.GetKeyValue("g  x", "k  ey", "none", false), "a b c");
    EXPECT_EQ(ini.GetKeyValue("g  x", "value", "none", false), "a;b\tc\nd");
    EXPECT_FALSE(ini.InsertNewGroup("h;1\rrest"));
    EXPECT_TRUE(ini.InsertNewGroup("h;1\rrest"));
    EXPECT_TRUE(ini.isGroupExist("h 1"));
}

TEST_F(IniModelTest, EnvironmentExpansionIsOnePass) {
    ::setenv("OSL_INI_A", "alpha", 1);
    ::setenv("OSL_INI_B", "%OSL_INI_A%", 1);
    ::setenv("OSL_INI_EMPTY", "", 1);
    ::setenv("OSL_INI.X", "dot", 1);
    ::unsetenv("OSL_INI_NOPE");
    ::unsetenv("OSL_INI_X");
    Ini ini = loaded(
        "[g]\n"
        "path=%OSL_INI_A%/x%%y%OSL_INI_NOPE%\n"
        "chain=%OSL_INI_B%-%OSL_INI_A%\n"
        "twice=%OSL_INI_A%%OSL_INI_A%\n"
        "empty=[%OSL_INI_EMPTY%]\n"
        "odd=%OSL_INI_A%%\n"
        "pattern=%OSL_INI.X% %OSL_INI_X%\n"
        "key=%path%\n");
    struct Case {
        const char* key;
        const char* expanded;
    };
    const Case cases[] = {
        {"path", "alpha/x%%y%OSL_INI_NOPE%"},
        {"chain", "%OSL_INI_A%-alpha"},
        {"twice", "alphaalpha"},
        {"empty", "[]"},
        {"odd", "alpha%"},
        {"pattern", "dot dot"},  // the name is a pattern: "." matches "_" too
        {"key", "%path%"},       // keys of the file are not variables
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.key);
        EXPECT_EQ(ini.GetKeyValue("g", c.key, "", true), c.expanded);
        EXPECT_EQ(ini.GetString("g", c.key, "", nullptr), c.expanded);
    }
    EXPECT_EQ(ini.GetKeyValue("g", "path", "", false), "%OSL_INI_A%/x%%y%OSL_INI_NOPE%");
}

TEST_F(IniModelTest, GetStringFoundFlagAndDefaults) {
    ::setenv("OSL_INI_A", "alpha", 1);
    Ini ini = loaded("[g]\nk=v\n");
    bool found = false;
    EXPECT_EQ(ini.GetString("G", "K", "d", &found), "v");
    EXPECT_TRUE(found);
    EXPECT_EQ(ini.GetString("g", "x", "%OSL_INI_A%", &found), "%OSL_INI_A%");
    EXPECT_FALSE(found);
    EXPECT_EQ(ini.GetString("nogroup", "k", "d", &found), "d");
    EXPECT_FALSE(found);
}

TEST_F(IniModelTest, IteratorWalksGroupsInOrder) {
    Ini empty;
    EXPECT_TRUE(empty.begin() == empty.end());
    Ini ini = loaded("[b]\nk=1\n[A]\n[c]\nx=2\ny=3\n");
    std::vector<std::string> names;
    std::size_t keys = 0;
    for (IniGroupIterator it = ini.begin(); it != ini.end(); ++it) {
        names.push_back((*it).name);
        keys += (*it).properties->size();
    }
    EXPECT_EQ(names, (std::vector<std::string>{"A", "b", "c"}));
    EXPECT_EQ(keys, 3u);
    IniGroupIterator it = ini.begin();
    IniGroupIterator old = it++;
    EXPECT_EQ((*old).name, "A");
    EXPECT_EQ((*it).name, "b");
    ++it;
    ++it;
    EXPECT_TRUE(it == ini.end());
    EXPECT_EQ((*it).properties, nullptr);
    EXPECT_EQ((*it).name, "");
    Ini copy = ini;
    EXPECT_FALSE(copy.begin() == ini.begin());  // another table
}

TEST_F(IniModelTest, FlushWritesTheCanonicalForm) {
    Ini ini = loaded(
        "; comment\n[zeta]\n b = 2 ; note\na=1\n\n[Alpha]\nvalue=x;y\n[empty]\n", false);
    ini.SetKeyValue("alpha", "k", "v");
    const std::string out = dir_.file("out.ini");
    ini.FlushIniDataToFile(out);
    EXPECT_EQ(osl::test::readFile(out), "[Alpha]\nk=v\nvalue=x;y\n\n[empty]\n\n[zeta]\na=1\nb=2\n\n");
    EXPECT_EQ(ini.GetFileName(), dir_.file("m.ini"));

    ini.FlushIniDataToFile("");
    Ini back(dir_.file("m.ini"), true);
    EXPECT_EQ(back.GetKeyValue("alpha", "value", "", false), "x;y");
    EXPECT_EQ(osl::test::readFile(dir_.file("m.ini")), osl::test::readFile(out));
}

TEST_F(IniModelTest, FlushErrors) {
    Ini readOnly = loaded("[g]\nk=v\n", true);
    const std::string out = dir_.file("never.ini");
    try {
        readOnly.FlushIniDataToFile(out);
        FAIL() << "flushed a read-only table";
    } catch (const QIBError& e) {
        EXPECT_EQ(e.Code(), 2);
        EXPECT_EQ(e.What(), "File was opened for input only");
    }
    EXPECT_FALSE(std::filesystem::exists(out));

    Ini writable = loaded("[g]\nk=v\n", false);
    for (const std::string& target : {dir_.file("no/such/dir.ini"), std::string("/dev/full")}) {
        SCOPED_TRACE(target);
        try {
            writable.FlushIniDataToFile(target);
            FAIL() << "no error";
        } catch (const QIBError& e) {
            EXPECT_EQ(e.Code(), 3);
            EXPECT_EQ(e.What(), "Failure to open file before flushing");
        }
    }
}

TEST(IniErrorTextTest, AllNumbers) {
    const char* texts[] = {"",
                           "Error opening file",
                           "File was opened for input only",
                           "Failure to open file before flushing",
                           "Group name is expected",
                           "Ini file is empty",
                           "Unexpected blank space , tab or ;",
                           "Unexpected  [",
                           " = Expected",
                           "No group name",
                           "No ] sign ",
                           " ] sign doesn't end line ",
                           "Empty line",
                           "; sign is not allowed inside group name",
                           "; sign is not allowed here",
                           "Sign ; is not extpected"};
    for (int n = 0; n < 16; ++n) EXPECT_EQ(Ini::ExceptionNumberToString(n), texts[n]) << n;
    EXPECT_EQ(Ini::ExceptionNumberToString(16), "");
    EXPECT_EQ(Ini::ExceptionNumberToString(-1), "");
    EXPECT_EQ(&Ini::ExceptionNumberToString(3), &Ini::ExceptionNumberToString(3));
}

std::vector<std::string>& logged() {
    static std::vector<std::string> lines;
    return lines;
}

TEST_F(IniModelTest, LogsInCategoryIniOnlyWhenEnabled) {
    Ini ini = loaded("[g]\nk=v\n");
    CLog* log = CLog::Instance();
    log->SetFunctionChannel([](const char* line) { logged().push_back(line); }, SevInfo, "other", false);
    logged().clear();
    ini.GetKeyValue("g", "k", "", false);
    EXPECT_TRUE(logged().empty());

    log->SetFunctionChannel([](const char* line) { logged().push_back(line); }, SevInfo, "ini", false);
    ini.GetKeyValue("g", "k", "", false);
    ini.GetKeyValue("g", "x", "d", false);
    ini.GetKeyValue("h", "x", "d", false);
    ini.GetString("g", "k", "", nullptr);
    ini.SetKeyValue("g", "n", "1");
    ini.EraseKey("g", "n");
    ini.EraseGroup("h");
    Ini("", false);
    const char* expected[] = {
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
    ASSERT_EQ(logged().size(), std::size(expected));
    for (std::size_t i = 0; i < logged().size(); ++i) {
        const std::string& line = logged()[i];
        EXPECT_NE(line.find(" ini "), std::string::npos) << line;
        EXPECT_EQ(line.substr(line.size() - std::string(expected[i]).size()), expected[i]);
    }
    log->DeleteChannels();
}

}  // namespace
