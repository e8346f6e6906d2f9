// platform/tests/pcre2_regex_test.cpp
// What the library relies on from PCRE2: table layout, options per mode, checks. Error texts and
// groups are checked through Osl_RegularExpression.
#include "platform/pcre2_regex.h"

#include <gtest/gtest.h>

#include <string>

namespace osl::platform {
namespace {

TEST(Pcre2RegexTest, AsciiTablesHaveTheLayoutPcre2MakesItself) {
    EXPECT_EQ(pcre2CharacterTables(false), pcre2DefaultCharacterTables());
}

TEST(Pcre2RegexTest, LegacyCaselessMatchingKnowsWindows1252Letters) {
    struct Case { const char* pattern; const char* subject; bool caseless; int expected; };
    const Case cases[] = {
        {"\x8a", "\x9a", true, 1},             // Š / š
        {"\x9f", "\xff", true, 1},             // Ÿ / ÿ
        {"\x8c", "\x9c", true, 1},             // Œ / œ
        {"\xd7", "\xf7", true, 0},             // × and ÷ are no case pair
        {"^\\w+$", "gr\xfc\xdf", false, 1},    // grüß: letters are word characters
        {"^[[:upper:]]+$", "\xc0\xde", false, 1},
        {"\\s", "\xa0", false, 0},              // no-break space is no \s
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.pattern);
        Pcre2Regex re;
        std::string error;
        ASSERT_TRUE(re.compile(c.pattern, false, c.caseless, error)) << error;
        EXPECT_EQ(re.exec(c.subject, std::char_traits<char>::length(c.subject), 0, false), c.expected);
    }
}

TEST(Pcre2RegexTest, ValidationRefusesWhatPcre2Refuses) {
    struct Case { const char* bytes; bool valid; };
    const Case cases[] = {{"abc\xe2\x82\xac", true}, {"\xc0\xaf", false}, {"\xe0\x80\xaf", false},  // overlong
                          {"\xed\xa0\x80", false},                                // surrogate
                          {"\xf4\x90\x80\x80", false},                            // above U+10FFFF
                          {"\xf0\x9f\x98\x80", true},   {"\xe2\x82", false},  {"\x80", false},
                          // behind whole blocks of eight ASCII bytes
                          {"abcdefgh\xff", false}, {"abcdefghijklmnop\xc3", false},
                          {"abcdefgh\xc3\xa9" "abcdefgh", true}, {"abcdefg\xc3\xa9" "bcdefgh\xed\xbf\xbf", false}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.bytes);
        EXPECT_EQ(isValidUtf8(c.bytes, std::char_traits<char>::length(c.bytes)), c.valid);
    }
}

TEST(Pcre2RegexTest, Utf8ModeTrustsAVouchedSubjectAndRefusesTheSingleByteEscape) {
    Pcre2Regex re;
    std::string error;
    ASSERT_TRUE(re.compile("\xc3\x89t\xc3\xa9", true, true, error)) << error;  // Été
    const std::string invalid = "\xc3\xa9T\xc3\x89\xff";
    EXPECT_EQ(re.exec(invalid.data(), invalid.size(), 0, false), -1);
    // A caller that vouches for the bytes gets no check, and still no crash on bad ones.
    EXPECT_EQ(re.exec(invalid.data(), invalid.size(), 0, true), 1);
    EXPECT_FALSE(re.compile("\\C", true, false, error)) << "\\C would split characters";
}

}  // namespace
}  // namespace osl::platform
