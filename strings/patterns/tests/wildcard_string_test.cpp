// strings/patterns/tests/wildcard_string_test.cpp
#include <vum-qib-osl/strings/wildcard_string.h>

#include <vum-qib-osl/misc/qib_error.h>

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/scoped_unicode_mode.h"

namespace {

using osl::test::ScopedUnicodeMode;

// HasPattern looks at the translation: a ? became a dot.
TEST(WildcardStringTest, TranslationEscapesAndAnchors) {
    const struct { std::string wildcard, regexp; bool hasPattern; } cases[] = {
        {"*.txt", "^.*\\.txt$", true},
        {"a?c", "^a.c$", false},
        {"\\^$.[]+|()", "^\\\\\\^\\$\\.\\[\\]\\+\\|\\(\\)$", false},
        {"{x}", "^{x}$", false},         // braces stay as they are
        {"a\xff" "b", "^a\\\\b$", false},  // 0xFF is taken for a backslash
        {"", "^$", false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.wildcard);
        Osl_UTF8String regexp;
        WStringAsRegexp(c.wildcard, regexp);
        EXPECT_EQ(regexp.ToString(), c.regexp);
        EXPECT_EQ(WildcardString(c.wildcard).HasPattern(), c.hasPattern);
    }
}

TEST(WildcardStringTest, MatchesWholeNamesOnly) {
    const struct { const char* wildcard; const char* name; bool matches; } cases[] = {
        {"*.txt", "notes.txt", true}, {"*.txt", "notes.txt.bak", false}, {"a?c", "ac", false},
        {"*", "", false},  // an empty match is no match
        {"*.TXT", "notes.txt", false}, {"[ab]", "[ab]", true},
        {"*.txt", "a.txt\n", false},  {"*", "two\nlines", true},         {"a?b", "a\nb", true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.wildcard) + " ~ " + c.name);
        WildcardString w(c.wildcard, true);
        EXPECT_EQ(w.Match(std::string(c.name)), c.matches);
        EXPECT_EQ(w.Match(c.name, 7, 9), c.matches);
    }
}

TEST(WildcardStringTest, MatchIsSafeFromSeveralThreads) {
    const WildcardString w("report-*.csv");
    const std::string names[] = {"report-1.csv", "report-2.txt", "x-report-3.csv", "report-.csv"};
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&, t] {
            for (int i = 0; i < 20000; ++i) wrong += w.Match(names[(i + t) % 4]) != ((i + t) % 4 != 1 && (i + t) % 4 != 2);
        });
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(wrong.load(), 0);
}

TEST(WildcardStringTest, IgnoringCaseSticksAcrossSetCase) {
    WildcardString w("*.TXT", true);
    EXPECT_FALSE(w.Match("a.txt"));
    w.SetCase(false);
    EXPECT_TRUE(w.Match("a.txt"));
    w.SetCase(true);
    EXPECT_TRUE(w.Match("a.txt")) << "the compiled expression still ignores case";
    EXPECT_FALSE(WildcardString(w).Match("a.txt")) << "a copy compiles afresh from its flag";
    WildcardString assigned("x");
    assigned = WildcardString("*.log", false);
    EXPECT_TRUE(assigned.Match("A.LOG"));
    EXPECT_EQ(assigned.GetPattern().ToString(), "*.log");
    assigned.SetPattern("r??.csv");
    EXPECT_TRUE(assigned.Match("R01.CSV"));
}

TEST(WildcardStringTest, NonAsciiNamesInBothModes) {
    {
        ScopedUnicodeMode unicode(true);
        WildcardString w("r\xc3\xa9sum\xc3\xa9?.txt", false);  // résumé?.txt
        EXPECT_TRUE(w.Match("R\xc3\x89SUM\xc3\x89\xc3\xa9.TXT"));  // one ? takes the two bytes of é
        EXPECT_THROW(WildcardString("\xc3*"), QIBError);
    }
    ScopedUnicodeMode legacy(false);
    WildcardString w("r\xe9sum\xe9?.txt", false);
    EXPECT_TRUE(w.Match("R\xc9SUM\xc9\xe9.TXT"));
    EXPECT_FALSE(w.Match("R\xc9SUM\xc9\xc3\xa9.TXT"));
    EXPECT_THROW(WildcardString("{1}"), QIBError) << "braces are passed on to the expression";
}

}  // namespace
