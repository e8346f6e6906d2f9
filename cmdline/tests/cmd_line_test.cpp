// cmdline/tests/cmd_line_test.cpp
#include <vum-qib-osl/cmdline/cmd_line.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

using Tokens = std::vector<std::pair<CmdLine::TKind, std::string>>;

Tokens scan(CmdLine& line, bool compact = false) {
    Tokens tokens;
    for (CmdLine::TKind kind = line.NextToken(compact); kind != CmdLine::tkEnd; kind = line.NextToken(compact)) {
        tokens.emplace_back(kind, line.CurrentToken());
    }
    return tokens;
}

TEST(CmdLineTest, SplitsTextIntoKindsAndTokens) {
    struct Case { std::string text; Tokens expected; };
    const Case cases[] = {
        {"-out=file.txt in", {{CmdLine::tkOption, "Out"}, {CmdLine::tkValue, "file.txt"}, {CmdLine::tkWord, "in"}}},
        {"-name", {{CmdLine::tkOption, "Name"}}}, {"--x", {{CmdLine::tkOption, "-x"}}},
        {"= v", {{CmdLine::tkValue, "v"}}},
        {"a=b", {{CmdLine::tkWord, "a"}, {CmdLine::tkValue, "b"}}},
        {"a-b \t- c", {{CmdLine::tkWord, "a-b"}, {CmdLine::tkOption, "C"}}},
        {"", {}}, {" \t ", {}},
        // Tokens are cut to 499 characters; the scan itself is not.
        {"-" + std::string(700, 'w') + " next",
         {{CmdLine::tkOption, "W" + std::string(498, 'w')}, {CmdLine::tkWord, "next"}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text.substr(0, 20));
        CmdLine line(c.text.c_str());
        EXPECT_EQ(line.GetKind(), CmdLine::tkNone);
        EXPECT_EQ(scan(line), c.expected);
    }
}

TEST(CmdLineTest, ArgumentsAreJoinedWithLeadingBlanks) {
    char prog[] = "prog", a[] = "-a", b[] = "b";
    char* argv[] = {prog, a, b};
    EXPECT_STREQ(CmdLine(3, argv).GetLine(), " -a b");
}

TEST(CmdLineTest, CompactingRemovesConsumedTokens) {
    CmdLine line("-a b c");
    EXPECT_EQ(line.NextToken(true), CmdLine::tkOption);
    EXPECT_STREQ(line.GetLine(), "-a b c");
    EXPECT_EQ(line.NextToken(true), CmdLine::tkWord);
    EXPECT_STREQ(line.GetLine(), " b c");
    EXPECT_STREQ(line.CurrentToken(), "b");
    EXPECT_EQ(line.NextToken(true), CmdLine::tkWord);
    EXPECT_STREQ(line.GetLine(), " c");
    EXPECT_EQ(line.NextToken(true), CmdLine::tkEnd);
    EXPECT_STREQ(line.GetLine(), "");
    line.Reset();  // scans what is left, not the text first given
    EXPECT_EQ(line.NextToken(false), CmdLine::tkEnd);
}

TEST(CmdLineTest, EndIsStickyUntilResetAndCopiesScanOnFromTheSamePlace) {
    CmdLine line("a b c");
    line.NextToken(false);
    CmdLine copy("x");
    copy = line;
    EXPECT_EQ(scan(copy), (Tokens{{CmdLine::tkWord, "b"}, {CmdLine::tkWord, "c"}}));
    EXPECT_EQ(copy.NextToken(true), CmdLine::tkEnd);
    EXPECT_EQ(line.NextToken(false), CmdLine::tkWord);
    EXPECT_STREQ(line.CurrentToken(), "b");
    CmdLine constructed(line);
    EXPECT_EQ(scan(constructed), (Tokens{{CmdLine::tkWord, "c"}}));
    constructed.Reset();
    EXPECT_EQ(constructed.NextToken(false), CmdLine::tkWord);
    EXPECT_STREQ(constructed.CurrentToken(), "a");
}

}  // namespace
