// cmdline/tests/qib_command_line_test.cpp
#include <vum-qib-osl/cmdline/qib_command_line.h>

#include <vum-qib-osl/message/map_file.h>

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "tests/support/scoped_unicode_mode.h"
#include "tests/support/temp_dir.h"

namespace {

using Strings = std::vector<std::string>;

// Exposes the queue for checking.
class TestLine : public QIBCommandLine {
public:
    Strings pending() const { return {m_Pending.begin(), m_Pending.end()}; }
    Strings history() const { return {m_History.begin(), m_History.end()}; }
};

// Init on a used object appends: `line` may hold arguments already.
template <class Char>
TestLine init(std::vector<std::basic_string<Char>> args, TestLine line = {}) {
    std::vector<Char*> argv;
    for (auto& a : args) argv.push_back(a.data());
    line.Init(static_cast<int>(argv.size()), argv.data());
    return line;
}

TEST(QIBCommandLineTest, InitJoinsOptionsWithTheirValues) {
    struct Case { Strings args; Strings pending; };  // the arguments after the program's name
    const Case cases[] = {
        {{"-OUT", "=", "file"}, {"-OUT=file"}}, {{"-OUT=", "file"}, {"-OUT=file"}}, {{"-x", "=v"}, {"-x=v"}},
        {{"-x", "=", "-1"}, {"-x", "=", "-1"}}, {{"-x=", "-y"}, {"-x=", "-y"}},     {{"-x", "="}, {"-x="}},
        {{"-x", "=v", "w"}, {"-x", "=v", "w"}}, {{"-a=1", "=2"}, {"-a=1", "=2"}},   {{"", "-a"}, {"-a"}},
        {{"-OUT", "file"}, {"-OUT", "file"}},   {{}, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::PrintToString(c.args));
        Strings args = c.args;
        args.insert(args.begin(), "prog");
        TestLine line = init<char>(args);
        EXPECT_EQ(line.pending(), c.pending);
        EXPECT_EQ(line.GetArg0(), "prog");
    }
}

TEST(QIBCommandLineTest, WideInitKeepsEmptyArgumentsNarrowsBytewiseAndAppends) {
    TestLine line = init<char16_t>({u"prog", u"", u"-a"});
    EXPECT_EQ(line.pending(), (Strings{"", "-a"}));
    EXPECT_EQ(line.GetArg0(), "prog");
    // Both bytes of U+4142 are non-zero: each byte starts a run, so they repeat.
    TestLine odd = init<char16_t>({u"p", u"\u4142c"});
    EXPECT_EQ(odd.pending(), (Strings{"BAcAcc"}));
    line = init<char>({"p2", "-b"}, line);
    EXPECT_EQ(line.pending(), (Strings{"", "-a", "-b"}));
    EXPECT_EQ(line.GetArg0(), "p2");
}

TEST(QIBCommandLineTest, UnicodeModeConvertsArgumentsToUtf8AndUpperCasesNames) {
    osl::test::ScopedUnicodeMode mode(true, "Latin1", "Latin1");
    TestLine narrow = init<char>({"p", "-\xFC" "ber=\xE9" "t\xE9"});  // Latin-1 from the file system
    EXPECT_EQ(narrow.pending(), Strings{"-\xC3\xBC" "ber=\xC3\xA9" "t\xC3\xA9"});
    std::string name, value;
    ASSERT_TRUE(narrow.ReadOption(name, value));
    EXPECT_EQ(name, "-\xC3\x9C" "BER");
    EXPECT_EQ(value, "\xC3\xA9" "t\xC3\xA9");

    TestLine wide = init<char16_t>({u"p", u"-\u00fcber=\u4142", u""});
    EXPECT_EQ(wide.pending(), (Strings{"-\xC3\xBC" "ber=\xE4\x85\x82", ""}));
    EXPECT_EQ(wide.GetOptionValue("-\xC3\xBC" "BER"), "\xE4\x85\x82");
}

TEST(QIBCommandLineTest, ReadAndPeekSplitNameAndValue) {
    TestLine line = init<char>({"p", "-out=a=b", "file.txt"});
    std::string name = "old", value = "old";
    ASSERT_TRUE(line.PeakOption(name, value));
    EXPECT_EQ(name, "-OUT");
    EXPECT_EQ(value, "a=b");
    ASSERT_TRUE(line.ReadOption(name, value));
    ASSERT_TRUE(line.ReadOption(name, value));
    EXPECT_EQ(name, "");
    EXPECT_EQ(value, "file.txt");
    EXPECT_FALSE(line.IsMore());
    name = value = "kept";
    EXPECT_FALSE(line.ReadOption(name, value));
    EXPECT_FALSE(line.PeakOption(name, value));
    EXPECT_EQ(name + value, "keptkept");
    EXPECT_EQ(line.history(), (Strings{"-out=a=b", "file.txt"}));
}

TEST(QIBCommandLineTest, ResetAppendsTheWholeHistoryEachTime) {
    TestLine line = init<char>({"p", "-a", "-b", "-c"});
    std::string name, value;
    line.ReadOption(name, value);
    line.ReadOption(name, value);
    line.Reset();
    EXPECT_EQ(line.pending(), (Strings{"-c", "-a", "-b"}));
    line.Reset();
    EXPECT_EQ(line.pending(), (Strings{"-c", "-a", "-b", "-a", "-b"}));
}

TEST(QIBCommandLineTest, LookupsIgnoreCaseOfNamesAndTextForms) {
    TestLine line = init<char>({"p", "-v=1", "-OUT=x", "word", "-out=", "-out=y"});
    EXPECT_TRUE(line.HasOption("-v"));
    EXPECT_FALSE(line.HasFlag("-v"));
    EXPECT_TRUE(line.HasFlag("-Out"));  // -out= has an empty value
    EXPECT_EQ(line.GetOptionValue("-out"), "x");
    EXPECT_EQ(line.GetOptionValues("-OUT"), (Strings{"x", "", "y"}));
    EXPECT_EQ(line.GetOptionValues("-none"), Strings{});
    EXPECT_EQ(line.GetOptionValues(""), Strings{"word"});  // bare words have an empty name

    std::string value = "old";
    EXPECT_FALSE(line.FindAndPeekOption("-missing", value));
    EXPECT_EQ(value, "");
    ASSERT_TRUE(line.FindAndReadOption("-out", value));
    EXPECT_EQ(value, "x");
    EXPECT_EQ(line.history(), Strings{"-OUT=x"});

    line.RemoveOption("-out", false);
    EXPECT_EQ(line.pending(), (Strings{"-v=1", "word", "-out=y"}));
    line.PushOption("-k", "");
    line.PushOption("-out", "z");
    EXPECT_TRUE(line.HasFlag("-K"));
    line.RemoveOption("-OUT", true);
    EXPECT_EQ(line.pending(), (Strings{"-v=1", "word", "-k="}));
    EXPECT_EQ(line.history(), Strings{"-OUT=x"});
    EXPECT_EQ(line.tos(), "-v=1 word -k=");
    std::ostringstream out;
    out << line;
    EXPECT_EQ(out.str(), "-v=1, word, -k=, ");
    EXPECT_EQ(TestLine().tos(), "");
}

TEST(DisplayUsageTest, PrintsHeadersEntriesAndFormattedLines) {
    osl::test::TempDir dir;
    auto catalog = [&dir](const MapFile::Entries& entries) {
        MapFile map;
        for (const auto& [key, text] : entries) map.Insert(key, text);
        const std::string path = dir.file("usage" + std::to_string(entries.size()) + ".cat");
        EXPECT_TRUE(map.StoreMap(path));
        return path;
    };
    std::ostringstream orphan;  // entries without a usage key print nothing
    EXPECT_TRUE(DisplayUsage(orphan, "prog", catalog({{"prog_x1_1", "orphan"}})));
    EXPECT_EQ(orphan.str(), "");
    const std::string path = catalog({
        {"usage_x1", "Options:"}, {"myprog_x1_1", "-in=FILE input"}, {"myprog_x1_2", "-out=FILE output"},
        {"other_x1_1", "-v verbose"},
        {"usage_2", "version %1 of %2"}, {"myprog_2_1", "7.1"}, {"other_2_1", "9"},
        {"usage_x3", "never shown"},  // no set has entries under it
    });
    struct Case { Strings sets; const char* expected; };
    const Case cases[] = {
        {{"myprog"}, "Options:\n\t-in=FILE input\n\t-out=FILE output\nversion 7.1 of \n"},
        {{"other", "myprog"}, "Options:\n\t-v verbose\nOptions:\n\t-in=FILE input\n\t-out=FILE output\nversion 9 of 7.1\n"},
        {{"nobody"}, "version  of \n"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::PrintToString(c.sets));
        std::ostringstream out;
        EXPECT_TRUE(DisplayUsage(out, c.sets, path));
        EXPECT_EQ(out.str(), c.expected);
    }
}

}  // namespace
