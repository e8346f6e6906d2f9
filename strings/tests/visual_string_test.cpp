// strings/tests/visual_string_test.cpp
#include <vum-qib-osl/strings/visual_string.h>

#include <vum-qib-osl/strings/unicode_converter.h>

#include "tests/support/scoped_unicode_mode.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cwchar>
#include <functional>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

constexpr size_t npos = Osl_VisualString::npos;
const std::string kHan = "\xE4\xB8\xAD";  // 中, two columns
using VS = Osl_VisualString;

std::string utf8(uint32_t c) {
    std::string out;
    Osl_UnicodeConverter().ConvertUCS2toUTF8(std::u16string(1, static_cast<char16_t>(c)), out);
    return out;
}

// The text of a result (a SpaceCode cell reads as a blank), or the exception's text.
std::string outcome(const std::function<VS()>& f) {
    try { return f().ToUTF8String(); } catch (const std::out_of_range& e) { return e.what(); }
}

// Each wide character has its pad right after it, no pad stands alone, and the count is right.
bool wellFormed(const VS& s) {
    const std::string& c = s.ToString();
    if (c.size() % 3 != 0) return false;
    bool padExpected = false;
    size_t chars = 0;
    for (size_t i = 0; i < c.size(); i += 3) {
        const bool pad = c.compare(i, 3, VS::WideCharsPad) == 0;
        if (pad != padExpected) return false;
        chars += pad ? 0 : 1;
        const auto code = static_cast<char16_t>(((c[i] & 0x0F) << 12) | ((c[i + 1] & 0x3F) << 6) | (c[i + 2] & 0x3F));
        padExpected = !pad && static_cast<unsigned char>(c[i]) < 0xFE && Osl_UnicodeConverter::IsWideUnicode(code);
    }
    return !padExpected && s.LengthInChars() == chars;
}

}  // namespace

TEST(VisualStringTest, ConversionsCaseComparisonAndOutput) {
    osl::test::ScopedUnicodeMode mode(true);
    const std::string text = "a\xC3\xA9" + kHan;
    Osl_UnicodeConverter converter;
    VS v("wxyz");
    ASSERT_EQ(v.LengthInChars(), 4u);  // builds the maps that the conversion must drop
    EXPECT_EQ(converter.ConvertUTF8toVisual(Osl_UTF8String(text), v), ConversionOK);
    EXPECT_EQ(v.ToString(), "\xFE\xFE" "a" "\xFE\xC3\xA9" + kHan + VS::WideCharsPad);
    EXPECT_EQ(v.LengthInChars(), 3u);
    EXPECT_EQ(v, VS(text));
    std::string cells;  // a narrow 3-byte character has no pad; a 4-byte one ends the conversion
    EXPECT_EQ(converter.ConvertUTF8toVisual(std::string("\xE2\x82\xAC" "a\xF0\x9F\x98\x80" "b"), cells), ConversionOK);
    EXPECT_EQ(cells, "\xE2\x82\xAC\xFE\xFE" "a");
    EXPECT_EQ(converter.GetHandledLength(), 8);
    EXPECT_EQ(VS(std::string(40, 'a')).ToString().capacity(), 120u);  // no more room than the cells
    Osl_UTF8String back;
    converter.ConvertVisualtoUTF8(v, back);
    EXPECT_EQ(back.ToString(), text);
    std::u16string wide;
    converter.ConvertVisualtoUCS2(v, wide);
    EXPECT_EQ(wide, u"a\u00E9\u4E2D");
    VS fromWide;
    converter.ConvertUCS2toVisual(wide, fromWide);
    EXPECT_EQ(fromWide, v);
    EXPECT_EQ(converter.GetHandledLength(), 3);  // in the caller's UTF-16 units
    VS s("\xC3\xA4" "b" + kHan);
    s.ToUpper();
    EXPECT_EQ(s.ToUTF8String().ToString(), "\xC3\x84" "B" + kHan);
    EXPECT_LT(VS("b"), VS(kHan));  // code-point order, not the order of the cells
    std::ostringstream out;
    out << s;
    EXPECT_EQ(out.str(), s.ToUTF8String().ToString());
}

// Edits with a boundary inside a wide character follow the policy bits.
TEST(VisualStringTest, PositionsSearchesAndEditsAroundAWideCharacter) {
    osl::test::ScopedUnicodeMode mode(true);
    const VS s("a" + kHan + "b");  // columns: a, 中, pad, b
    EXPECT_EQ(s.GetCharPositionFromNarrowPosition(2), 1u);
    EXPECT_EQ(s.GetNarrowPositionFromCharPosition(2), 3u);
    EXPECT_EQ(s.GetNarrowPositionFromCharPosition(1, VS::StartLeft), 2u);
    EXPECT_EQ(s.GetNarrowPositionFromCharPosition(9), 4u);
    EXPECT_FALSE(s.IsValidPosition(2));
    EXPECT_THROW(s.IsValidPosition(5), std::out_of_range);
    EXPECT_EQ((std::vector{s.IsNarrowInNarrowPosition(1), s.IsNarrowInCharPosition(1), s.IsNarrowInCharPosition(2)}),
              (std::vector{false, false, true}));
    EXPECT_EQ((std::vector{s.CodeAt(0), s.CodeAt(1), s.CodeAt(2)}),
              (std::vector<long>{'a', static_cast<signed char>('\xAD'), -1}));  // the last byte, signed
    const VS t(kHan + "a" + kHan + "b");  // columns: 中 pad a 中 pad b
    EXPECT_EQ(t.FindInNarrowChars(VS(kHan), 1), 3u);
    EXPECT_EQ(t.RfindInChars(VS(kHan), 1), 0u);
    EXPECT_EQ(t.RfindInNarrowChars(VS(), 4), 4u);
    EXPECT_EQ(t.FindFirstOfInNarrowChars(VS("b" + kHan), 1), 3u);  // the pad at 1 is skipped
    EXPECT_EQ(t.FindFirstNotOfInNarrowChars(VS(kHan)), 2u);
    EXPECT_EQ(t.FindLastOfInNarrowChars(VS(kHan)), 3u);
    EXPECT_EQ(t.FindLastNotOfInNarrowChars(VS("b"), 4), 3u);
    EXPECT_EQ(t.FindFirstOfInNarrowChars(VS("\xE4\xB8\xAE")), npos);  // 丮 shares no whole cell
    const VS x("x");
    const struct { const char* what; std::function<VS()> op; std::string expected; } cases[] = {
        {"substr, accept end", [&] { return s.SubstrInNarrowChars(0, 2, VS::EndAccept); }, "a "},
        {"substr, extend end", [&] { return s.SubstrInNarrowChars(0, 2, VS::EndExtend); }, "a" + kHan},
        {"substr, no policy", [&] { return s.SubstrInNarrowChars(0, 2); }, "Out of range"},
        {"substr, accept start", [&] { return s.SubstrInNarrowChars(2, 2, VS::StartAccept); }, " b"},
        {"substr, start left", [&] { return s.SubstrInNarrowChars(2, 2, VS::StartLeft); }, kHan + "b"},
        {"substr, start right", [&] { return s.SubstrInNarrowChars(2, 2, VS::StartRight); }, "b"},
        {"insert, accept", [&] { return VS(s).InsertInNarrowChars(2, x, VS::StartAccept); }, "a x b"},
        {"insert, left", [&] { return VS(s).InsertInNarrowChars(2, x, VS::StartLeft); }, "ax" + kHan + "b"},
        {"insert, right", [&] { return VS(s).InsertInNarrowChars(2, x, VS::StartRight); }, "a" + kHan + "xb"},
        {"insert, end bits only", [&] { return VS(s).InsertInNarrowChars(2, x, VS::EndAccept); }, "Out of range"},
        {"erase, accept end", [&] { return VS(s).EraseInNarrowChars(1, 1, VS::EndAccept); }, "a b"},
        {"replace", [&] { return VS(s).ReplaceInNarrowChars(1, 2, VS("xy")); }, "axyb"},
        {"replace by 3 columns", [&] { return VS(s).ReplaceInNarrowChars(0, 1, 3, VS(kHan), 64); }, kHan + " " + kHan + "b"},
        {"3 columns, no end bit", [&] { return VS(s).InsertInNarrowChars(4, 3, VS(kHan), 4); }, "Out of range"},
        {"resize, accept", [&] { VS r(s); r.ResizeInNarrowChars(2, x, VS::EndAccept); return r; }, "a "},
        {"resize, shrink", [&] { VS r(s); r.ResizeInNarrowChars(2, x, VS::EndShrink); return r; }, "a"},
        {"resize, grow", [&] { VS r(s); r.ResizeInNarrowChars(6, VS(), 0); return r; }, "a" + kHan + "b  "},
        {"chars: replace 1 by 2 wide", [&] { return VS(s).ReplaceInChars(0, 2, 2, VS(kHan)); }, kHan + kHan + "b"},
        {"chars: erase", [&] { return VS(s).EraseInChars(1, 1); }, "ab"},
        {"chars: beyond", [&] { return VS(s).EraseInChars(4, 1); }, "Out of range"},
    };
    for (const auto& c : cases) EXPECT_EQ(outcome(c.op), c.expected) << c.what;
}

TEST(VisualStringTest, LegacyModeWorksOnBytes) {
    osl::test::ScopedUnicodeMode mode(false);
    VS s("ab\xFE\xFF");  // bytes that look like cell codes stay bytes
    EXPECT_EQ(s.ToString(), "ab\xFE\xFF");
    EXPECT_EQ(s.CodeAt(2), 0xFE);
    EXPECT_EQ(s.SubstrInNarrowChars(1, 2).ToString(), "b\xFE");
    EXPECT_EQ(s.FindFirstOfInNarrowChars(VS("\xFF")), 3u);
    s.ResizeInNarrowChars(6, VS("-"));
    EXPECT_EQ(s.ToUTF8String().ToString(), "ab\xFE\xFF--");
    EXPECT_THROW(s.InsertInNarrowChars(7, VS("x")), std::out_of_range);
    // Legacy bytes that look like orphan wide pads in Unicode mode: edits near them stay in bounds.
    s = VS("\xFF\xFF\xFF\xFF\xFF\xFF" "abc");
    osl::test::ScopedUnicodeMode unicode(true);
    for (long policy : {0, 1, 2, 4, 16, 32, 64})
        for (size_t pos = 0; pos <= 3; ++pos) {
            EXPECT_EQ(VS(s).EraseInNarrowChars(pos, 1, policy).LengthInNarrowChars(), pos < 3 ? 2u : 3u);
            EXPECT_EQ(VS(s).InsertInNarrowChars(pos, VS("x"), policy).LengthInNarrowChars(), 4u);
        }
}

// Random mixes of ASCII, Latin, CJK, Hangul, half- and full-width characters, from a fixed seed.
TEST(VisualStringTest, RandomTextsKeepTheirInvariants) {
    osl::test::ScopedUnicodeMode mode(true);
    const struct { uint32_t first, last, width; } pools[] = {{0x20, 0x7E, 1}, {0xC0, 0x17F, 1}, {0x4E00, 0x9FA5, 2},
                 {0xAC00, 0xD7A3, 2}, {0xFF61, 0xFF9F, 1}, {0xFF01, 0xFF5E, 2}};
    const long policies[] = {0, 1, 2, 4, 16, 32, 64, 1 | 32, 2 | 16, 4 | 64};
    std::mt19937 random(20241123);
    auto below = [&](size_t n) { return std::uniform_int_distribution<size_t>(0, n)(random); };
    for (int round = 0; round < 300; ++round) {
        std::vector<std::string> chars;
        std::string text;
        size_t columns = 0;
        for (size_t n = below(12); n > 0; --n) {
            const auto& pool = pools[below(5)];
            chars.push_back(utf8(pool.first + static_cast<uint32_t>(below(pool.last - pool.first))));
            text += chars.back();
            columns += pool.width;
        }
        SCOPED_TRACE(text);
        const VS s(text);
        ASSERT_EQ(s.ToUTF8String().ToString(), text);
        ASSERT_EQ(s.LengthInNarrowChars(), columns);
        ASSERT_EQ(s.LengthInChars(), chars.size());
        for (size_t i = 0; i < chars.size(); ++i) {
            const size_t k = below(chars.size() - i), at = s.GetNarrowPositionFromCharPosition(i);
            ASSERT_EQ(s.GetCharPositionFromNarrowPosition(at), i);
            std::string model;
            for (size_t j = i; j < i + k; ++j) model += chars[j];
            ASSERT_EQ(s.SubstrInChars(i, k).ToUTF8String().ToString(), model);
            ASSERT_EQ(s.SubstrInChars(i, k), s.SubstrInNarrowChars(at, s.GetNarrowPositionFromCharPosition(i + k) - at));
            ASSERT_EQ(s.FindInChars(VS(chars[i])), s.GetCharPositionFromNarrowPosition(s.FindInNarrowChars(VS(chars[i]))));
        }
        const VS piece(chars.empty() ? std::string("x") : chars[below(chars.size() - 1)]);
        for (long policy : policies) {
            const size_t pos = below(columns + 1), n = below(columns + 1);
            const std::function<void(VS&)> ops[] = {
                [&](VS& v) { v = v.SubstrInNarrowChars(pos, n, policy); },
                [&](VS& v) { v.EraseInNarrowChars(pos, n, policy); },
                [&](VS& v) { v.InsertInNarrowChars(pos, piece, policy); },
                [&](VS& v) { v.InsertInNarrowChars(pos, n, piece, policy); },
                [&](VS& v) { v.ReplaceInNarrowChars(pos, n, piece, policy); },
                [&](VS& v) { v.ReplaceInNarrowChars(pos, n, 3, piece, policy); },
                [&](VS& v) { v.ResizeInNarrowChars(pos, piece, policy); },
            };
            for (const auto& op : ops) {
                VS v(s);
                try {
                    op(v);
                } catch (const std::out_of_range& e) {
                    ASSERT_EQ(std::string(e.what()), "Out of range");
                    ASSERT_FALSE((policy & 4) != 0 && (policy & 64) != 0 && pos <= columns) << "accepting policy threw";
                    ASSERT_EQ(v, s) << "changed before throwing";
                }
                ASSERT_TRUE(wellFormed(v)) << "policy " << policy << " pos " << pos << " n " << n;
            }
        }
    }
}

// Columns against glibc's wcwidth: every difference is one of the rule's own.
TEST(VisualStringTest, WidthsAgreeWithTerminalsButForTheRulesOwnChoices) {
    osl::test::ScopedUnicodeMode mode(true);
    const std::string previous = std::setlocale(LC_CTYPE, nullptr);
    ASSERT_NE(std::setlocale(LC_CTYPE, "C.UTF-8"), nullptr);
    const auto ruleDiffers = [](uint32_t c, int terminal) {
        return terminal <= 0 ||                                // no zero-width or unprintable characters
               (c & 0xFFEE) == 0x300A ||                       // 《》〚〛 are narrow
               c == 0xFF60 || (c >= 0xFE10 && c <= 0xFE19);  // wide forms outside the ranges
    };
    const struct { uint32_t first, last, step; } ranges[] = {{0x20, 0x24F, 3}, {0x1100, 0x11FF, 4}, {0x3000, 0x30FF, 1},
        {0x4E00, 0x9FFF, 97}, {0xAC00, 0xD7A3, 101}, {0xFE10, 0xFE6F, 3}, {0xFF01, 0xFFEE, 1}};
    for (const auto& [first, last, step] : ranges) {
        for (uint32_t c = first; c <= last; c += step) {
            const int terminal = wcwidth(static_cast<wchar_t>(c));
            const auto ours = static_cast<int>(VS(utf8(c)).LengthInNarrowChars());
            EXPECT_TRUE(ours == terminal || ruleDiffers(c, terminal))
                << std::hex << c << " ours " << ours << " terminal " << terminal;
        }
    }
    std::setlocale(LC_CTYPE, previous.c_str());
}
