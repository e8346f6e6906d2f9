// ini/tests/ini_parse_test.cpp
// Reading INI files: syntax, the parse errors with their numbers and lines, first definitions,
// and files in INI syntax that other people wrote (copies from Debian packages, tests/data/README).
#include <vum-qib-osl/ini/ini.h>

#include <gtest/gtest.h>

#include <list>
#include <string>
#include <tuple>

#include "ini/tests/thrown.h"
#include "tests/support/scoped_unicode_mode.h"
#include "tests/support/temp_dir.h"

namespace {

class IniParseTest : public ::testing::Test {
protected:
    // Loads text from a file; returns the error number (0 when none) after checking the rest of the error.
    int load(Ini& ini, const std::string& text, bool readOnly = true) {
        osl::test::writeFile(dir_.file("t.ini"), text);
        return loadFile(ini, dir_.file("t.ini"), readOnly);
    }
    int loadFile(Ini& ini, const std::string& path, bool readOnly = true) {
        const std::string error = osl::test::thrown([&] { ini.Load(path, readOnly); });
        if (error == "nothing thrown") return 0;
        const int number = std::stoi(error.substr(error.rfind(", code ") + 7));
        EXPECT_EQ(error, Ini::ExceptionNumberToString(number) + ", code " + std::to_string(number) +
                             ", severity 12, programm ini/src/ini");
        return number;
    }
    osl::test::TempDir dir_;
};

TEST_F(IniParseTest, ErrorNumbersAndLines) {
    const std::tuple<const char*, int, int> cases[] = {  // text, error number, line
        {"; only a comment\n\n  \n", 5, 3}, {"", 5, 0}, {"\xEF\xBB\xBF\n", 5, 1},  // a signature is no content
        {"[\n", 5, 0},  // under three bytes: the signature probe leaves the stream failed
        {"[a] x\n", 11, 1}, {"[a]\t; tab before comment\n", 11, 1}, {"# comment\n[g]\n", 7, 1},
        {"k=v\n", 7, 1},  // a key before any group
        {"[ \n", 9, 1},  // a blank name is found before the missing "]"
        {"[]\n", 9, 1}, {"[a;b]\n", 13, 1},
        {"[abc\n", 10, 1},            // first line: read as a header
        {"[g]\nk=v\n[abc\n", 7, 3},    // later: "[" without "]" is a key line
        {"[g]\n; c\nkey\n", 8, 3}, {"[g]\nk v=1\n", 8, 2}, {"[g]\nk;x=1\n", 14, 2},
    };
    for (const auto& [text, number, line] : cases) {
        SCOPED_TRACE(text);
        Ini ini;
        EXPECT_EQ(load(ini, text), number);
        EXPECT_EQ(ini.GetErrorLine(), line);
    }
}

TEST_F(IniParseTest, ValuesAndTrailingComments) {
    const std::pair<const char*, const char*> cases[] = {
        {"k = v ; note", "v"}, {"k=v;w", "v"},     {"value=v;w", "v;w"},        {"xvalue=a;b", "a;b"},
        {"k=", ""},            {"k= ;x", ""},      {"k=\t a b = c \t", "a b = c"}, {"k\t=\tv", "v"},
        {"Value=a;b", "a"},    {"k=v value=x;y", "v value=x;y"},
    };
    for (const auto& [line, expected] : cases) {
        SCOPED_TRACE(line);
        Ini ini;
        ASSERT_EQ(load(ini, std::string("[g]\n") + line + "\n"), 0);
        ASSERT_EQ(ini.GetGroupProperty("g")->size(), 1u);
        EXPECT_EQ(ini.GetGroupProperty("g")->begin()->second, expected);
    }
}

// Group names keep inner and trailing blanks; a signature, NUL bytes, control characters and
// a missing last line feed do not disturb the reader.
TEST_F(IniParseTest, OddButValidFiles) {
    const std::string grouped = "[ \tMy Group ]   ; comment\nk=v\n[x]\n", controls("[g]\nk=a\0b\nj=\x01\n", 14);
    const std::tuple<std::string, const char*, const char*, std::string> cases[] = {  // text, group, key, value
        {grouped, "MY GROUP ", "K", "v"}, {grouped, "My Group", "k", "none"},
        {"\xEF\xBB\xBF[g]\r\nk=v\r\n", "g", "k", "v"},  // the group name starts after the signature
        {controls, "g", "k", std::string("a\0b", 3)}, {controls, "g", "j", "\x01"}, {"[a]\r\nk=v", "a", "k", "v"},
    };
    Ini ini;
    for (const auto& [text, group, key, value] : cases) {
        SCOPED_TRACE(text);
        ASSERT_EQ(load(ini, text), 0);
        EXPECT_EQ(ini.GetKeyValue(group, key, "none", false), value);
    }
    std::list<std::string> names{"stale"};
    ASSERT_EQ(load(ini, "[a]\nk=v\n[b]"), 0);  // a last header without a line feed is dropped
    ini.GetGroupNames(names);
    EXPECT_EQ(names, std::list<std::string>{"a"});
    ASSERT_EQ(load(ini, "[a]"), 0);
    ini.GetGroupNames(names);
    EXPECT_TRUE(names.empty());
}

TEST_F(IniParseTest, FirstDefinitionWins) {
    Ini ini;
    ASSERT_EQ(load(ini, "[g]\nk=1\nK=2\n[G]\nk=3\nn=4\n[h]\nx=1\n", false), 0);
    EXPECT_EQ(ini.GetKeyValue("g", "k", "", false), "1");
    EXPECT_FALSE(ini.isGroupHasKey("g", "n"));  // the second [G] is dropped whole

    const std::string more = dir_.file("more.ini");
    osl::test::writeFile(more, "[h]\nx=2\ny=3\n[new]\nz=1\n");
    ini.LoadAdd(more, true);
    EXPECT_EQ(ini.GetKeyValue("h", "x", "", false), "1");
    EXPECT_FALSE(ini.isGroupHasKey("h", "y"));
    EXPECT_TRUE(ini.isGroupHasKey("new", "z"));
    EXPECT_TRUE(ini.IsReadOnly());
    EXPECT_EQ(ini.GetFileName(), more);
}

TEST_F(IniParseTest, OverlongLineEndsTheReading) {
    // A line holds 10,239 characters: up to that, reading goes on.
    const std::tuple<std::size_t, std::size_t, bool> cases[] = {{20000, 10239 - 2, false}, {10237, 10237, true}};
    for (const auto& [length, kept, goesOn] : cases) {
        Ini ini;
        ASSERT_EQ(load(ini, "[g]\nk=" + std::string(length, 'x') + "\n[h]\nj=1\n"), 0);
        EXPECT_EQ(ini.GetKeyValue("g", "k", "", false).size(), kept);
        EXPECT_EQ(ini.isGroupExist("h"), goesOn);
    }
}

TEST_F(IniParseTest, ParseErrorKeepsEarlierGroups) {
    Ini ini;
    ASSERT_EQ(load(ini, "[a]\nk=1\n[b]\nk=2\n[c]\nbroken line\n"), 8);
    EXPECT_EQ(ini.GetErrorLine(), 6);
    EXPECT_TRUE(ini.isGroupHasKey("b", "k"));
    EXPECT_FALSE(ini.isGroupExist("c"));
    ASSERT_EQ(load(ini, "[a]\n"), 0);
    EXPECT_EQ(ini.GetErrorLine(), 0);
}

TEST_F(IniParseTest, UnopenableFilesGiveError1) {
    osl::test::ScopedUnicodeMode latin1(true, "MS1252", "ISO-8859-1");
    osl::test::writeFile(dir_.file("report_"), "[g]\nk=v\n");  // what a shortened name would open
    for (const std::string& name : {dir_.file("absent.ini"), dir_.path().string(), dir_.file("report_\xE2\x82\xAC")}) {
        Ini ini;
        EXPECT_EQ(loadFile(ini, name), 1) << name;
    }
}

TEST_F(IniParseTest, PackagedFilesReadAndWriteBackUnchanged) {
    const std::string data = std::string(OSL_TEST_DATA_DIR) + "/";
    const Ini desktop(data + "xdg-user-dirs.desktop");
    EXPECT_EQ(desktop.GetKeyValue("desktop entry", "Exec", "", false), "xdg-user-dirs-update");
    const Ini unit(data + "snmpd.service");
    EXPECT_EQ(unit.GetKeyValue("Service", "ExecStart", "", false),
              "/usr/sbin/snmpd -LOw -u Debian-snmp -g Debian-snmp -I -smux,mteTrigger,mteTriggerConf -f");
    // Flushed, read back and flushed again, the tables and both texts agree.
    for (const Ini* original : {&desktop, &unit}) {
        Ini writable(*original);
        writable.LoadAdd("", false);  // keeps the table, makes it writable
        writable.FlushIniDataToFile(dir_.file("first.ini"));
        Ini back(dir_.file("first.ini"), false);
        back.FlushIniDataToFile(dir_.file("second.ini"));
        EXPECT_EQ(osl::test::readFile(dir_.file("first.ini")), osl::test::readFile(dir_.file("second.ini")));
        IniGroupIterator a = original->begin(), b = back.begin();
        for (; a != original->end() && b != back.end(); ++a, ++b) {
            EXPECT_EQ((*a).name, (*b).name);
            EXPECT_EQ(*(*a).properties, *(*b).properties) << (*a).name;
        }
        EXPECT_TRUE(a == original->end() && b == back.end());
    }
    // Only comments under its group, and no line feed at the end.
    const Ini options(data + "wcetemu.ini");
    ASSERT_NE(options.GetGroupProperty("Options"), nullptr);
    EXPECT_TRUE(options.GetGroupProperty("Options")->empty());
}

}  // namespace
