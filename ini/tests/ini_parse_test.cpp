// ini/tests/ini_parse_test.cpp
// Reading INI files: syntax, the parse errors with their numbers and lines, first definitions.
#include <vum-qib-osl/ini/ini.h>
#include <vum-qib-osl/misc/qib_error.h>

#include <gtest/gtest.h>

#include <list>
#include <string>

#include "tests/support/scoped_unicode_mode.h"
#include "tests/support/temp_dir.h"

namespace {

class IniParseTest : public ::testing::Test {
protected:
    // Loads text from a file; returns the error number (0 when none).
    int load(Ini& ini, const std::string& text, bool readOnly = true) {
        const std::string path = dir_.file("t.ini");
        osl::test::writeFile(path, text);
        try {
            ini.Load(path, readOnly);
        } catch (const QIBError& e) {
            EXPECT_EQ(e.What(), Ini::ExceptionNumberToString(static_cast<int>(e.Code())));
            EXPECT_EQ(e.Severity(), 12);
            EXPECT_EQ(e.Where().rfind("ini/src/ini ", 0), 0u) << e.Where();
            return static_cast<int>(e.Code());
        }
        return 0;
    }
    std::string value(const std::string& group, const std::string& key) {
        Ini ini;
        EXPECT_EQ(load(ini, "[" + group + "]\n" + key + "\n"), 0);
        const IniProperties* p = ini.GetGroupProperty(group);
        return p == nullptr || p->empty() ? "<none>" : p->begin()->second;
    }
    osl::test::TempDir dir_;
};

TEST_F(IniParseTest, ErrorNumbersAndLines) {
    struct Case {
        const char* text;
        int number;
        int line;
    };
    const Case cases[] = {
        {"k=v\n", 7, 1},                         // a key before any group
        {"; only a comment\n\n  \n", 5, 3},      // no content line
        {"", 5, 0},
        {"[a] x\n", 11, 1},
        {"[a]\t; tab before comment\n", 11, 1},
        {"  x[a]\n", 7, 1},
        {"[ \n", 9, 1},  // a blank name is found before the missing "]"
        {"[\n", 5, 0},  // under three bytes: the signature probe leaves the stream failed
        {"[   ]\n", 9, 1},
        {"[]\n", 9, 1},
        {"[a;b]\n", 13, 1},
        {"[abc\n", 10, 1},                       // first line: read as a header
        {"[g]\nk=v\n[abc\n", 7, 3},              // later: "[" without "]" is a key line
        {"[g]\n; c\nkey\n", 8, 3},
        {"[g]\nk v=1\n", 8, 2},
        {"[g]\nk ;=1\n", 8, 2},
        {"[g]\nk;x=1\n", 14, 2},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        Ini ini;
        EXPECT_EQ(load(ini, c.text), c.number);
        EXPECT_EQ(ini.GetErrorLine(), c.line);
    }
}

TEST_F(IniParseTest, ValuesAndTrailingComments) {
    struct Case {
        const char* line;
        const char* value;
    };
    const Case cases[] = {
        {"k = v ; note", "v"},       {"k=v;w", "v"},         {"value=v;w", "v;w"},
        {"xvalue=a;b", "a;b"},       {"path=a;b", "a"},      {"k=", ""},
        {"k= ;x", ""},               {"k=\t a b = c \t", "a b = c"},
        {"value= ;x", ""},           {"k\t=\tv", "v"},       {"Value=a;b", "a"},
        {"k=v value=x;y", "v value=x;y"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.line);
        EXPECT_EQ(value("g", c.line), c.value);
    }
}

TEST_F(IniParseTest, GroupNameKeepsInnerAndTrailingBlanks) {
    Ini ini;
    ASSERT_EQ(load(ini, "[ \tMy Group ]   ; comment\nk=v\n[x]\n"), 0);
    EXPECT_TRUE(ini.isGroupExist("my group "));
    EXPECT_FALSE(ini.isGroupExist("My Group"));
    EXPECT_EQ(ini.GetKeyValue("MY GROUP ", "K", "d", false), "v");
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

TEST_F(IniParseTest, LastLineWithoutLineFeed) {
    struct Case {
        const char* text;
        std::list<std::string> groups;
    };
    const Case cases[] = {
        {"[a]\nk=v\n[b]", {"a"}},
        {"[a]", {}},
        {"[a]\r\nk=v", {"a"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        Ini ini;
        ASSERT_EQ(load(ini, c.text), 0);
        std::list<std::string> names{"stale"};
        ini.GetGroupNames(names);
        EXPECT_EQ(names, c.groups);
    }
    Ini ini;
    ASSERT_EQ(load(ini, "[a]\r\nk=v"), 0);
    EXPECT_EQ(ini.GetKeyValue("a", "k", "", false), "v");
}

TEST_F(IniParseTest, OverlongLineEndsTheReading) {
    const std::string longValue(20000, 'x');
    Ini ini;
    ASSERT_EQ(load(ini, "[g]\nk=" + longValue + "\n[h]\nj=1\n"), 0);
    EXPECT_EQ(ini.GetKeyValue("g", "k", "", false).size(), 10239u - 2u);
    EXPECT_FALSE(ini.isGroupExist("h"));

    // Exactly 10,239 characters still fit, and reading goes on.
    const std::string fits = "k=" + std::string(10237, 'y');
    ASSERT_EQ(load(ini, "[g]\n" + fits + "\n[h]\n"), 0);
    EXPECT_EQ(ini.GetKeyValue("g", "k", "", false).size(), 10237u);
    EXPECT_TRUE(ini.isGroupExist("h"));
}

TEST_F(IniParseTest, ParseErrorKeepsEarlierGroups) {
    Ini ini;
    ASSERT_EQ(load(ini, "[a]\nk=1\n[b]\nk=2\n[c]\nbroken line\n"), 8);
    EXPECT_EQ(ini.GetErrorLine(), 6);
    EXPECT_TRUE(ini.isGroupHasKey("a", "k"));
    EXPECT_TRUE(ini.isGroupHasKey("b", "k"));
    EXPECT_FALSE(ini.isGroupExist("c"));
    ASSERT_EQ(load(ini, "[a]\n"), 0);
    EXPECT_EQ(ini.GetErrorLine(), 0);
}

TEST_F(IniParseTest, UnopenableFilesGiveError1AndEmptyNameNothing) {
    osl::test::ScopedUnicodeMode latin1(true, "MS1252", "ISO-8859-1");
    osl::test::writeFile(dir_.file("report_"), "[g]\nk=v\n");  // what a shortened name would open
    for (const std::string& name : {dir_.file("absent.ini"), dir_.path().string(), dir_.file("report_\xE2\x82\xAC")}) {
        SCOPED_TRACE(name);
        Ini ini;
        try {
            ini.Load(name, true);
            FAIL() << "no error";
        } catch (const QIBError& e) {
            EXPECT_EQ(e.Code(), 1);
            EXPECT_EQ(e.What(), "Error opening file");
        }
    }
    Ini empty("", false);
    EXPECT_EQ(empty.begin(), empty.end());
    EXPECT_FALSE(empty.IsReadOnly());
}

TEST_F(IniParseTest, UnicodeSignatureIsSkipped) {
    Ini ini;
    ASSERT_EQ(load(ini, "\xEF\xBB\xBF[g]\r\nk=v\r\n"), 0);
    EXPECT_EQ(ini.GetKeyValue("g", "k", "", false), "v");  // also: the group name starts after the signature
    // The signature alone is no content.
    EXPECT_EQ(load(ini, "\xEF\xBB\xBF\n"), 5);
}

TEST_F(IniParseTest, NulBytesAndControlCharactersDoNotStopTheReader) {
    Ini ini;
    const char text[] = "[g]\nk=a\0b\nj=\x01\n";
    ASSERT_EQ(load(ini, std::string(text, sizeof text - 1)), 0);
    EXPECT_EQ(ini.GetKeyValue("g", "k", "", false), std::string("a\0b", 3));
    EXPECT_EQ(ini.GetKeyValue("g", "j", "", false), "\x01");
}

}  // namespace
