// strings/tests/utf8_string_test.cpp
#include <vum-qib-osl/strings/utf8_string.h>

#include <vum-qib-osl/misc/qib_error.h>

#include "tests/support/scoped_unicode_mode.h"

#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>
#include <string>

namespace {

constexpr size_t npos = Osl_UTF8String::npos;
const std::string kAEEuro = "a\xC3\xA9\xE2\x82\xAC";  // aé€: 1 + 2 + 3 bytes

// The text of what f throws, a QIBError's with its code and severity.
template <class F>
std::string thrownText(F f) {
    try { f(); } catch (const std::out_of_range& e) { return e.what(); } catch (const QIBError& e) {
        return e.What() + " (" + std::to_string(e.Code()) + "/" + std::to_string(e.Severity()) + ")";
    }
    return "no exception";
}

}  // namespace

TEST(Utf8StringTest, CharacterPositionsAndErasingInUnicodeMode) {
    osl::test::ScopedUnicodeMode mode(true);
    Osl_UTF8String s(kAEEuro);
    EXPECT_EQ(s.LengthInChars(), 3u);
    EXPECT_EQ(s.CharsPosAsAbsPos(0, 2), 3u);
    EXPECT_EQ(s.CharsPosAsAbsPos(0, 3), npos);  // the end itself is npos
    EXPECT_EQ(s.CharsPosAsAbsPos(1, 1), 3u);
    EXPECT_EQ(s.AbsPosAsCharsPos(0, 3), 2u);
    EXPECT_EQ(s.AbsPosAsCharsPos(0, 2), 2u);  // a cut character counts as one
    EXPECT_EQ(s.AbsPosAsCharsPos(0, 100), 3u);
    EXPECT_EQ(s.SubstrInChars(1, 5), "\xC3\xA9\xE2\x82\xAC");
    EXPECT_EQ(s.SubstrInChars(1, 1), "\xC3\xA9");
    EXPECT_EQ(s.SubstrInChars(3, 0), "");
    EXPECT_EQ(Osl_UTF8String().SubstrInChars(0, 1), "");
    EXPECT_EQ(thrownText([&] { s.SubstrInChars(3, 1); }), "Out of range");
    EXPECT_EQ(s.Find("\xE2\x82\xAC"), 2u);
    EXPECT_EQ(s.Find("a", 1), npos);
    EXPECT_EQ(s.Find("\xA9"), npos);  // matches only at character boundaries
    EXPECT_EQ(s.Find("a\xC3\xA9\xE2\x82\xAC!"), npos);
    Osl_UTF8String bad("\x80x\xF0\x9F\x98\x80y\xE2");  // stray bytes and a cut last character
    EXPECT_EQ(bad.LengthInChars(), 5u);
    EXPECT_EQ(bad.Find("y"), 3u);
    EXPECT_EQ(bad.Find("\xE2"), 4u);
    std::string longAscii(100, 'x');
    Osl_UTF8String mixed(longAscii + "\xC3\xA9" + longAscii + "needle");
    EXPECT_EQ(mixed.LengthInChars(), 207u);
    EXPECT_EQ(mixed.Find("needle"), 201u);
    EXPECT_EQ(mixed.Find("xneedle", 150), 200u);
    const struct { std::string text; size_t pos, n; std::string expected; } cases[] = {
        {kAEEuro, 1, 1, "a\xE2\x82\xAC"}, {kAEEuro, 0, npos, ""}, {kAEEuro, 2, 5, "a\xC3\xA9"},
        {kAEEuro, 1, 0, kAEEuro}, {kAEEuro, 3, 1, "Out of range"}, {"", 0, 1, ""}};
    for (const auto& c : cases) {
        Osl_UTF8String erased(c.text);
        const std::string error = thrownText([&] { erased.EraseInChars(c.pos, c.n); });
        EXPECT_EQ(error == "no exception" ? erased.ToString() : error, c.expected) << c.text << " erased at " << c.pos;
    }
}

TEST(Utf8StringTest, GetNextChar) {
    osl::test::ScopedUnicodeMode mode(true);
    const struct { std::string text; size_t pos, next; std::string ch; } cases[] = {
        {kAEEuro, 3, 6, "\xE2\x82\xAC"}, {"\xC3\xA9", 1, npos - 1, ""},  // a continuation byte
        {"\xC3\xA9", 2, npos, ""},          {"a\xE2\x82", 1, 3, "\xE2\x82"},  // cut: the bytes there
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.pos);
        Osl_UTF8String out;
        EXPECT_EQ(Osl_UTF8String(c.text).GetNextChar(c.pos, out), c.next);
        EXPECT_EQ(out, c.ch.c_str());
    }
    const char* ch = nullptr;
    size_t len = 0;
    EXPECT_EQ(thrownText([&] { Osl_UTF8String("a").GetNextChar(2, ch, len); }), "Out of range");
    EXPECT_EQ(thrownText([&] { Osl_UTF8String("\xF0\x9F\x98\x80").GetNextChar(0, ch, len); }),
              "UTF8 char more than 3 bytes is not implemented (0/0)");
}

TEST(Utf8StringTest, LegacyModeCountsBytes) {
    osl::test::ScopedUnicodeMode mode(false, "MS1252");
    Osl_UTF8String s(kAEEuro);
    EXPECT_EQ(s.LengthInChars(), 6u);
    EXPECT_EQ(s.CharsPosAsAbsPos(2, 5), 3u);  // a difference, deliberately
    EXPECT_EQ(s.AbsPosAsCharsPos(1, 4), 3u);
    EXPECT_EQ(s.SubstrInChars(1, 2), "\xC3\xA9");
    EXPECT_EQ(s.Find("\xE2"), 3u);
    const char* ch = nullptr;
    size_t len = 0;
    EXPECT_EQ(s.GetNextChar(1, ch, len), 2u);
    EXPECT_EQ(len, 1u);
    EXPECT_EQ(Osl_UTF8String("\xF0").GetNextChar(0, ch, len), 1u);  // no 4-byte check in legacy mode
}

TEST(Utf8StringTest, CaseMapping) {
    const auto mapped = [](const std::string& in, bool upper) {
        Osl_UTF8String s(in);
        upper ? s.ToUpper() : s.ToLower();
        return s.ToString();
    };
    {
        osl::test::ScopedUnicodeMode mode(false, "MS1252");
        const struct { std::string in, upper, lower; } cases[] = {
            {"abcXYZ", "ABCXYZ", "abcxyz"},
            {"\xE0\xFE\xF7\xFF\xC0\xDE\xD7", "\xC0\xDE\xF7\x9F\xC0\xDE\xD7", "\xE0\xFE\xF7\xFF\xE0\xFE\xD7"},
            {"\x9A\x9C\x9E\x8A\x8C\x8E\x9F", "\x8A\x8C\x8E\x8A\x8C\x8E\x9F", "\x9A\x9C\x9E\x9A\x9C\x9E\xFF"},
            {"\xDF\xB5\x80 1", "\xDF\xB5\x80 1", "\xDF\xB5\x80 1"},  // no pair: unchanged
        };
        for (const auto& c : cases) {
            EXPECT_EQ(mapped(c.in, true), c.upper) << c.in;
            EXPECT_EQ(mapped(c.in, false), c.lower) << c.in;
        }
    }
    osl::test::ScopedUnicodeMode mode(true);
    EXPECT_EQ(mapped("stra\xC3\x9F" "e \xC3\xA9t\xC3\xA9 \xD0\xB4", true), "STRASSE \xC3\x89T\xC3\x89 \xD0\x94");
    EXPECT_EQ(mapped("x\xC5\xBFy", true), "X\xC5\xBFY");  // ſ upper-cases to 1 byte: kept, the length stays
}

TEST(Utf8StringTest, WideConversionsInBothModes) {
    {
        osl::test::ScopedUnicodeMode mode(true, "MS1252", "Latin1");
        Osl_UTF8String s(u"a\u00E9\u20AC");
        EXPECT_EQ(s.ToString(), kAEEuro);
        EXPECT_EQ(s.ToWString(), u"a\u00E9\u20AC");
        EXPECT_EQ(Osl_UTF8String("a\xC3\xA9").ToCurrentFSEncoding(), "a\xE9");
        EXPECT_EQ(s.ToCurrentSystemEncoding(), "a\xE9\x80");
    }
    {
        osl::test::ScopedUnicodeMode mode(true, "MS1252", "UTF-8");  // a UTF-8 file system takes every byte
        EXPECT_EQ(Osl_UTF8String("name\xFF\xC3\xA9").ToCurrentFSEncoding(), "name\xFF\xC3\xA9");
    }
    osl::test::ScopedUnicodeMode mode(false, "MS1252");
    Osl_UTF8String legacy(u"a\u00E9\u20AC");
    EXPECT_EQ(legacy.ToString(), "a\xE9\x80");
    EXPECT_EQ(legacy.ToWString(), u"a\u00E9\u20AC");
    EXPECT_EQ(legacy.ToCurrentFSEncoding(), "a\xE9\x80");
    EXPECT_EQ(Osl_UTF8String(static_cast<const char16_t*>(nullptr)).ToString(), "");
    EXPECT_EQ(Osl_UTF8String(u"abc\u65E5xyz").ToString(), "abc?xyz");  // the other side's replacement
    osl::test::ScopedUnicodeMode unicode(true, "MS1252", "MS1252");
    EXPECT_EQ(Osl_UTF8String("a\xFFz\xE2\x82").ToWString(), u"a\uFFFDz\uFFFD");
    EXPECT_EQ(Osl_UTF8String("\xE6\x97\xA5.txt").ToCurrentFSEncoding(), "?.txt");
    EXPECT_EQ(Osl_UTF8String("\xE6\x97\xA5\xE2\x82\xAC").ToCurrentSystemEncoding(), "?\x80");
    EXPECT_EQ(Osl_UTF8String(std::u16string(u"a\xD800")).ToString(), "a\xEF\xBF\xBD");
}

TEST(Utf8StringTest, ComparisonOperators) {
    Osl_UTF8String composed("\xC3\xA9"), decomposed("e\xCC\x81");
    osl::test::ScopedUnicodeMode mode(true);
    EXPECT_FALSE(composed == decomposed);  // bytes, also in Unicode mode
    EXPECT_TRUE(composed == "\xC3\xA9");
    // U+FF21 (EF BC A1) against U+10000 (F0 90 80 80): bytes say less, UTF-16 units say greater.
    Osl_UTF8String bmp("\xEF\xBC\xA1"), astral("\xF0\x90\x80\x80");
    EXPECT_TRUE(bmp > astral);
    const Osl_UTF8String texts[] = {  // any bytes: < is a strict weak order that agrees with =="x\x80" "a", "x\x80" "b", "x", "x\xC3\xA9", "xe\xCC\x81", "\xEF\xBC\xA1",
                                    "\xF0\x90\x80\x80", "\xFF", "x\xE2\x82", "", "\xED\xA0\x80"};
    for (const auto& a : texts)
        for (const auto& b : texts) {
            SCOPED_TRACE(a + " / " + b);
            EXPECT_EQ(!(a < b) && !(b < a), a == b);
            EXPECT_EQ(a > b, b < a);
        }
    osl::test::ScopedUnicodeMode legacy(false);
    EXPECT_TRUE(bmp < astral);
    std::ostringstream out;
    out << composed;
    EXPECT_EQ(out.str(), "\xC3\xA9");
}
