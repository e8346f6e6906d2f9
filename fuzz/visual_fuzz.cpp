// fuzz/visual_fuzz.cpp
// Edits of Osl_VisualString driven by arbitrary bytes. The first byte picks the mode; the text up
// to the first NUL (at most 64 bytes) is the string, the next NUL-ended text the operand, and every
// following group of four bytes one edit: member, position, count, policy. Positions and counts
// stay within a few columns of the length, so that a copy count never asks for gigabytes. An edit
// may throw std::out_of_range; otherwise, and after a throw too, the cells must stay well formed.
#include <vum-qib-osl/strings/unicode_configuration.h>
#include <vum-qib-osl/strings/unicode_converter.h>
#include <vum-qib-osl/strings/visual_string.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string>

namespace {

using VS = Osl_VisualString;

void check(bool condition) {
    if (!condition) std::abort();
}

// Unicode mode: whole cells, every wide character followed by its pad and no pad elsewhere, and
// lengths that agree with the cells.
void checkCells(const VS& s) {
    static Osl_UnicodeConverter converter;
    const std::string& c = s.ToString();
    check(s.LengthInNarrowChars() == c.size() / 3 && c.size() % 3 == 0);
    bool padExpected = false;
    size_t chars = 0;
    for (size_t i = 0; i < c.size(); i += 3) {
        const bool pad = c.compare(i, 3, VS::WideCharsPad) == 0;
        check(pad == padExpected);
        chars += pad ? 0 : 1;
        // A cell of three bytes that are no UTF-8 character (copied from bad input) is narrow.
        padExpected = !pad && static_cast<unsigned char>(c[i]) < 0xFE && !converter.IsNarrowChar(c.data() + i, 3);
    }
    check(!padExpected && s.LengthInChars() == chars);
}

std::string takeText(const uint8_t*& data, const uint8_t* end) {
    std::string text;
    while (data < end && *data != 0 && text.size() < 64) text += static_cast<char>(*data++);
    if (data < end) ++data;
    return text;
}

void edit(VS& s, const VS& operand, uint8_t op, uint8_t a, uint8_t b, uint8_t policyBits) {
    const size_t columns = s.LengthInNarrowChars(), chars = s.LengthInChars();
    const size_t pos = a % (columns + 3), charPos = a % (chars + 3);
    const size_t n = b == 0xFF ? VS::npos : b % 8;
    const size_t copies = b % 8;  // never npos: a copy count is a size
    const long policy = policyBits & 0x77;
    switch (op % 20) {
        case 0: s.InsertInNarrowChars(pos, operand, policy); break;
        case 1: s.InsertInNarrowChars(pos, copies, operand, policy); break;
        case 2: s.ReplaceInNarrowChars(pos, n, operand, policy); break;
        case 3: s.ReplaceInNarrowChars(pos, n, copies, operand, policy); break;
        case 4: s.EraseInNarrowChars(pos, n, policy); break;
        case 5: s = s.SubstrInNarrowChars(pos, n, policy); break;
        case 6: s.ResizeInNarrowChars(copies + columns / 2, operand, policy); break;
        case 7: s.Append(copies, operand, policy); break;
        case 8: s.InsertInChars(charPos, operand); break;
        case 9: s.InsertInChars(charPos, copies, operand); break;
        case 10: s.ReplaceInChars(charPos, n, operand); break;
        case 11: s.ReplaceInChars(charPos, n, copies, operand); break;
        case 12: s.EraseInChars(charPos, n); break;
        case 13: s = s.SubstrInChars(charPos, n); break;
        case 14: {
            const size_t found = s.FindInNarrowChars(operand, pos);
            check(found == VS::npos || found + operand.LengthInNarrowChars() <= columns);
            const size_t back = s.RfindInNarrowChars(operand, n);
            check(back == VS::npos || back <= columns);
            const size_t inChars = s.FindInChars(operand, charPos);
            check(inChars == VS::npos || inChars <= chars);
            break;
        }
        case 15:
            for (size_t found : {s.FindFirstOfInNarrowChars(operand, pos), s.FindFirstNotOfInNarrowChars(operand, pos),
                                 s.FindLastOfInNarrowChars(operand, n), s.FindLastNotOfInNarrowChars(operand, n)}) {
                check(found == VS::npos || found < columns);
            }
            break;
        case 16: {
            const size_t narrow = s.GetNarrowPositionFromCharPosition(charPos, policy);
            check(narrow <= columns);
            check(s.GetCharPositionFromNarrowPosition(narrow) <= chars);
            (void)s.IsValidPosition(pos);
            (void)s.IsNarrowInNarrowPosition(pos);
            (void)s.IsNarrowInCharPosition(charPos);
            (void)s.CodeAt(pos);
            break;
        }
        case 17: (op & 0x20) != 0 ? s.ToUpper() : s.ToLower(); break;
        case 18: (void)(s < operand); (void)(s == operand); (void)s.ToWString(); break;
        default: s = VS(s.ToUTF8String()); break;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    const bool unicode = (data[0] & 1) != 0;
    Osl_UnicodeConfiguration::SetUnicodeMode(unicode);
    const uint8_t* at = data + 1;
    const uint8_t* end = data + size;
    VS s(takeText(at, end));
    const VS operand(takeText(at, end));
    for (int edits = 0; end - at >= 4 && edits < 64; at += 4, ++edits) {
        try {
            edit(s, operand, at[0], at[1], at[2], at[3]);
        } catch (const std::out_of_range&) {
        }
        if (unicode) checkCells(s);
    }
    Osl_UnicodeConfiguration::SetUnicodeMode(false);
    return 0;
}
