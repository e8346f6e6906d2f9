// strings/patterns/tests/auto_edit_string_test.cpp
#include <vum-qib-osl/strings/auto_edit_string.h>

#include <vum-qib-osl/strings/regular_expression.h>

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "strings/patterns/src/date_format.h"
#include "tests/support/scoped_unicode_mode.h"
#include "tests/support/fake_clock.h"

namespace {

using osl::test::ScopedUnicodeMode;

// Exposes the protected parts that subclasses may call.
class OpenAutoEdit : public QIBAutoEditString {
public:
    using QIBAutoEditString::QIBAutoEditString;
    using QIBAutoEditString::PatternHasVariable;
    std::string Eliminated(const std::string& text) {
        work_ = text;
        EliminateConcatinationString();
        return work_;
    }
};

std::string resolve(const std::string& pattern, bool keepWidth,
                    std::initializer_list<std::pair<const char*, const char*>> variables) {
    QIBAutoEditString text(pattern);
    for (const auto& [name, value] : variables) text.AddVariable(name, value);
    return text.Resolve(keepWidth);
}

TEST(AutoEditStringTest, ResolvesUserVariables) {
    const struct { const char* pattern; const char* expected; } cases[] = {
        {"a%%A b", "ax b"},      {"%%$A", "x"},         {"%%a", "x"},  // names ignore case
        {"%%B", "%%B"},          {"file.%%A", "filex"}, {"file.%%B", "file%%B"},
        {"%%A.%%A", "xx"},       {"100%", "100%"},      {"%%%A", "%x"},
        {"%%$", "%%$"},          {"", ""},              {"%%A_1 %%A", "%%A_1 x"},
        {"%%B%%A", "%%Bx"},    {"%%A1%%B1", "y%%B1"},
    };
    for (const auto& c : cases) EXPECT_EQ(resolve(c.pattern, false, {{"A", "x"}, {"a1", "y"}}), c.expected) << c.pattern;
}

TEST(AutoEditStringTest, CompoundNamesResolveFromTheRight) {
    EXPECT_EQ(resolve("<%%A%%B%%C>", false, {{"C", "2"}, {"B2", "3"}, {"A3", "ok"}}), "<ok>");
    EXPECT_EQ(resolve("%%A%%$B.txt", false, {{"b", "_x"}, {"A_X", "v"}}), "v.txt");
    EXPECT_EQ(resolve("%%A%%B", false, {{"B", "1"}}), "%%A1");
    EXPECT_EQ(resolve("%%A%%B", false, {{"A", "x"}}), "x%%B");  // B unknown: the parts one by one
    // A run far deeper than any stack: unknown names stay as written, the last two resolve.
    std::string run;
    for (int i = 0; i < 100000; ++i) run += "%%V";
    EXPECT_EQ(resolve(run + "%%Z%%N", false, {{"N", "1"}, {"Z1", "end"}}), run + "end");
}

TEST(AutoEditStringTest, FixedWidthKeepsTheColumns) {
    const struct { const char *pattern, *value, *normal, *fixed; } cases[] = {
        {"%%A   |", "x", "x   |", "x     |"},
        {"%%A   |", "abcdef", "abcdef   |", "abcdef|"},
        {"%%A |", "abcdef", "abcdef |", "abcd|"},  // no blank left for e and f
        {"%%A", "abc", "abc", "abc"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.pattern) + " with " + c.value);
        EXPECT_EQ(resolve(c.pattern, false, {{"A", c.value}}), c.normal);
        EXPECT_EQ(resolve(c.pattern, true, {{"A", c.value}}), c.fixed);
    }
    ScopedUnicodeMode unicode(true);
    EXPECT_EQ(resolve("%%A  |", true, {{"A", "\xc3\xa9t\xc3\xa9s"}}), "\xc3\xa9t\xc3\xa9s |");  // étés: 4 columns, one blank taken
    EXPECT_EQ(resolve("%%A|", true, {{"A", "\xc3\xa9t\xc3\xa9s"}}), "\xc3\xa9t\xc3\xa9|");
}

TEST(AutoEditStringTest, DateIsTodayInItsFormatUnlessAUserVariableTakesTheName) {
    osl::test::FakeClock clock(2024, 3, 5, 14, 7, 9);
    EXPECT_EQ(resolve("rep_%%date.txt", false, {}), "rep_240305.txt");
    EXPECT_EQ(resolve("%%Date", false, {{"DATE", "today"}}), "today");
    EXPECT_EQ(resolve("%%date   |", true, {}), "240305   |");
    EXPECT_EQ(resolve("%%date |", true, {{"date", "2024-03-05"}}), "2024-03|");
    const struct { const char* format; int year, month, day; const char* expected; } cases[] = {
        {"%s%m%d", 2024, 3, 5, "240305"},   {"%y-%m-%d", 2009, 12, 31, "09-12-31"},
        {"%Y/%m/%d", 2024, 1, 9, "2024/01/09"}, {"%d.%m.%Y", 987, 7, 4, "04.07.0987"},
        {"100%%", 2024, 1, 1, "100%"},     {"%q %", 2024, 1, 1, "%q %"},
        {"%s", 2000, 1, 1, "00"},          {"", 2024, 1, 1, ""},
    };
    for (const auto& c : cases) EXPECT_EQ(osl::detail::formatDate(c.format, c.year, c.month, c.day), c.expected) << c.format;
}

TEST(AutoEditStringTest, PatternsFindWhatTheScannersFind) {
    // Each variable the published expression finds is resolved; text it does not find stays.
    Osl_RegularExpression variable(QIBAutoEditString::GetVariablePattern());
    Osl_RegularExpression run(QIBAutoEditString::GetRecursiveVariablePattern());
    EXPECT_EQ(QIBAutoEditString::GetVariableHeadingPattern(), "%%\\$?");
    const char* texts[] = {"%%%A", "x%%$#@_9 y", "%%A%%B", "%%A%%%B", "%%A %%B", "%%$%%A", "%%"};
    for (const char* text : texts) {
        SCOPED_TRACE(text);
        const auto r = variable.search(text, 0, std::string::npos);
        if (r == Osl_RegularExpression::not_found()) {
            EXPECT_EQ(QIBAutoEditString(text).Resolve(), text);
        } else {
            QIBAutoEditString marked(text);
            const std::string name = std::string(text).substr(r.first, r.second - r.first);
            marked.AddVariable(name.substr(name.find_first_not_of("%$")), "<v>");
            EXPECT_EQ(marked.Resolve().substr(0, r.first + 3), std::string(text).substr(0, r.first) + "<v>");
        }
    }
    EXPECT_EQ(run.search("a %%A %%B%%C", 0, std::string::npos), Osl_RegularExpression::range(6, 12));
}

TEST(AutoEditStringTest, HelpersAndOutput) {
    OpenAutoEdit text("a %%$Name b");
    EXPECT_TRUE(text.PatternHasVariable("Name"));
    EXPECT_FALSE(text.PatternHasVariable("name"));
    EXPECT_EQ(text.Eliminated("x%%.y%%.%%z"), "xy%%z");
    for (auto [name, value] : {std::pair{"name", "1"}, {"NAME", "2"}, {"b", "3"}}) text.AddVariable(name, value);
    EXPECT_TRUE(text.HasUserDefinedVariable("Name"));
    EXPECT_FALSE(text.HasUserDefinedVariable("%%Name"));
    EXPECT_EQ(std::string(text), "a 2 b");
    EXPECT_EQ(text.GetPattern(), "a %%$Name b");
    std::ostringstream out;
    out << text;
    EXPECT_EQ(out.str(), "a %%$Name b\nb=3\nname=2\n");
}

}  // namespace
