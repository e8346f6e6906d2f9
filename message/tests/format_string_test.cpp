// message/tests/format_string_test.cpp
#include <vum-qib-osl/message/format_string.h>

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(FormatStringTest, FillsPlaceholdersByPosition) {
    FormatString f("A %1 B %2");
    f << "x" << 5;
    EXPECT_EQ(f.Get(), "A x B 5");
    f << "extra";
    EXPECT_EQ(f.Get(), "A x B 5");

    FormatString skip("%2 then %1 and %1");
    skip << std::string("one") << 'c';
    EXPECT_EQ(skip.Get(), "c then one and %1");

    FormatString missing("only %2");
    missing << "lost" << -7L;
    EXPECT_EQ(missing.Get(), "only -7");

    // The placeholder of the first argument matches the front of %10 when that comes first.
    FormatString ten("%10 %1");
    ten << "a";
    EXPECT_EQ(ten.Get(), "a0 %1");

    // Arguments go in unchanged: a placeholder inside one is filled by the next argument.
    FormatString nested("%1");
    nested << "<%2>" << "in";
    EXPECT_EQ(nested.Get(), "<in>");

    nested.Assign("again %1");
    nested << static_cast<const char*>(nullptr);
    EXPECT_EQ(nested.Get(), "again ");
}

TEST(FormatStringTest, CountsPlaceholdersUpToTheFirstGap) {
    struct Case {
        const char* text;
        int expected;
    };
    const Case cases[] = {
        {"%1 %3", 1}, {"%2", 0}, {"100% %1", 1}, {"%1 %2 %3", 3}, {"%1%1", 1}, {"%", 0}, {"%10", 1}, {"", 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(FormatString(c.text).GetArgumentsNumber(), c.expected);
    }
}

}  // namespace
