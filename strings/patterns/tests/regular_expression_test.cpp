// strings/patterns/tests/regular_expression_test.cpp
#include <vum-qib-osl/strings/regular_expression.h>

#include <vum-qib-osl/misc/qib_error.h>

#include <gtest/gtest.h>

#include <string>

#include "tests/support/scoped_unicode_mode.h"

namespace {

using osl::test::ScopedUnicodeMode;
using range = Osl_RegularExpression::range;
constexpr std::size_t npos = std::string::npos;

class RegularExpressionTest : public ::testing::TestWithParam<bool> {  // Unicode mode?
protected:
    ScopedUnicodeMode mode_{GetParam()};
};

TEST_P(RegularExpressionTest, SearchFindsByteRangesInsideTheSpan) {
    const range none = Osl_RegularExpression::not_found();
    const struct { const char *pattern, *subject; std::size_t pos, len; range expected; } cases[] = {
        {"b+", "abbbc", 0, npos, {1, 4}},
        {"b+", "abbbc", 0, 3, {1, 3}},       // the span ends the match
        {"c", "abbbc", 4, 100, {4, 5}},      // a span past the end is cut
        {"c", "abc", 4, npos, none},         // pos beyond the string
        {"x*", "abc", 3, npos, none},        // empty span
        {"(?<=a)b", "ab", 1, npos, {1, 2}},  // text before pos is seen by lookbehind
        {"^b", "ab", 1, npos, none},         // ^ only at the start of the string
        {"b$", "abc", 0, 2, {1, 2}},         // $ at the end of the span
        {"a$", "a\n", 0, npos, none},        // ... and nowhere else
        {"(?m)a$", "a\nb", 0, npos, {0, 1}},  // unless the pattern asks for lines
        {"a.b", "a\nb", 0, npos, {0, 3}},     // . takes a line feed
        {"(?-s)a.b", "a\nb", 0, npos, none},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Osl_RegularExpression(c.pattern).search(c.subject, c.pos, c.len), c.expected)
            << c.pattern << " in " << c.subject << " from " << c.pos;
}

TEST_P(RegularExpressionTest, MatchGivesTheLengthOrMinusOneOrMinusTwo) {
    Osl_RegularExpression re("[0-9]+");
    EXPECT_EQ(re.match("ab 2024 x"), 4);
    EXPECT_EQ(re.match("ab x"), -1);
    EXPECT_EQ(re.match("ab 2024", 0, 4), 1);
    EXPECT_EQ(Osl_RegularExpression("x*").match("abc"), 0);
    Osl_RegularExpression nothing;
    EXPECT_EQ(nothing.match("abc"), -2);
    // Too deep for the JIT stack: the interpreter finishes the match.
    EXPECT_EQ(Osl_RegularExpression("^(?:(a)|b)*$").match(std::string(100000, 'a')), 100000);
    EXPECT_EQ(nothing.search("abc", 0, npos), Osl_RegularExpression::not_found());
}

TEST_P(RegularExpressionTest, GroupsCountUntilTheFirstGroupThatDidNotTakePart) {
    Osl_RegularExpression re("([0-9]+)-([0-9]+)");
    ASSERT_EQ(re.search("id 12-345;", 0, npos), range(3, 9));
    EXPECT_EQ(re.groups(), 2u);
    for (auto [i, r] : {std::pair{0u, range(3, 9)}, {1u, range(3, 5)}, {2u, range(6, 9)}, {3u, Osl_RegularExpression::not_found()}})
        EXPECT_EQ(re.group(i), r) << i;
    Osl_RegularExpression gap("(a)(b)?(c)");
    ASSERT_EQ(gap.match("xac"), 2);
    EXPECT_EQ(gap.groups(), 1u);
    EXPECT_EQ(gap.group(2), Osl_RegularExpression::not_found());
    EXPECT_EQ(gap.group(3), range(2, 3));
    re.search("nothing", 0, npos);
    EXPECT_EQ(re.groups(), 0u) << "no match, no groups";
}

TEST_P(RegularExpressionTest, ReplaceGoesOnBehindTheInsertedText) {
    const struct { const char *pattern, *subject; std::size_t pos, len; const char *with, *expected; bool all;
                   std::size_t count; } cases[] = {
        {"a", "banana", 0, npos, "o", "bonono", true, 3},
        {"a", "banana", 0, npos, "o", "bonana", false, 1},
        {"a", "banana", 2, 2, "o", "banona", true, 1},  // only the span
        {"a", "aaa", 0, npos, "aa", "aaaaaa", true, 3},  // inserted text is not searched again
        {"x*", "abc", 0, npos, "-", "abc", true, 0},     // an empty match stops at once
        {"b|x*", "abc", 0, npos, "-", "abc", true, 0},   // ... also before a real match
        {"(?<=b)a", "baaa", 0, npos, "b", "bbbb", true, 3},  // lookbehind sees inserted text
        {"^a", "aaab", 0, npos, "", "b", true, 3},          // so does ^
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.pattern) + " in " + c.subject);
        std::string s = c.subject;
        EXPECT_EQ(Osl_RegularExpression(c.pattern).replace(s, c.pos, c.len, c.with, c.all), c.count);
        EXPECT_EQ(s, c.expected);
    }
}

TEST_P(RegularExpressionTest, BadPatternThrowsTheEngineText) {
    Osl_RegularExpression re("a");
    try {
        re.pattern("(");
        FAIL() << "no error";
    } catch (const QIBError& e) {
        EXPECT_EQ(e.What() + " (" + std::to_string(e.Code()) + "/" + std::to_string(e.Severity()) + ") " + e.Where(),
                  "Invalid regular expression pattern: (\nGCError: missing closing parenthesis (12/12) strings/src/regexp 317");
    }
    EXPECT_EQ(re.match("a"), -2) << "nothing compiled after a failure";
}

TEST_P(RegularExpressionTest, IgnoringCaseSticksUntilSetOption) {
    Osl_RegularExpression re("abc", true);
    re.pattern("abc", false);
    EXPECT_EQ(re.match("xABC"), 3) << "the ignore-case bit stays set";
    re.SetOption(0);
    re.pattern("abc", false);
    EXPECT_EQ(re.match("xABC"), -1);
}

INSTANTIATE_TEST_SUITE_P(BothModes, RegularExpressionTest, ::testing::Bool());

TEST(RegularExpressionModeTest, TheModeDecidesWhatACharacterIs) {
    ScopedUnicodeMode unicode(true);
    Osl_RegularExpression dot("^.$");
    EXPECT_EQ(dot.match("\xc3\xa9"), 2);                                    // é is one character
    Osl_RegularExpression caseless("\xc3\x89t\xc3\x89", true);              // ÉTÉ
    EXPECT_EQ(caseless.search("un \xc3\xa9t\xc3\xa9", 0, npos), range(3, 8));  // été
    EXPECT_EQ(Osl_RegularExpression("^\\w+$").match("gr\xc3\xbc\xc3\x9f"), 6);  // grüß
    EXPECT_EQ(dot.match("\xc3"), -2) << "invalid UTF-8 subject";
    std::string line = "abc \xc3\xa9 x=1";  // a search from 0 checks the bytes again
    ASSERT_EQ(dot.match(line.substr(4, 2)), 2);
    line[4] = '\xff';
    EXPECT_EQ(Osl_RegularExpression("x=").match(line), -2);
    EXPECT_EQ(Osl_RegularExpression("a").search("\xc3\xa9" "a", 1, npos), Osl_RegularExpression::not_found()) << "pos inside a character";
    EXPECT_THROW(Osl_RegularExpression("\xc3("), QIBError);
    ScopedUnicodeMode legacy(false);
    EXPECT_EQ(Osl_RegularExpression("^.$").match("\xc3\xa9"), -1) << "legacy mode: two bytes are two characters";
}

}  // namespace
