// strings/src/visual_cells.h
// The visual form's cells: one 3-byte cell per display column. A 1-byte character b is FE FE b, a
// 2-byte character b1 b2 is FE b1 b2, a 3-byte character is itself, followed by the wide-pad cell
// FF FF FF when it is two columns wide. Shared by the converter and Osl_VisualString.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace osl::detail {

constexpr size_t kCellBytes = 3;
constexpr unsigned char kCellFill = 0xFE;  // fills the front of a cell of a 1- or 2-byte character
constexpr unsigned char kPadByte = 0xFF;   // every byte of the wide-pad cell
constexpr char kWidePadCell[] = "\xFF\xFF\xFF";
constexpr char kSpaceCell[] = "\xFE\xFE\x20";  // a narrow blank, written over a cut half
constexpr char kNposCell[] = "\xFE\xFE\xFF";

/// True for the East Asian wide ranges of the BMP (the rule of Osl_UnicodeConverter::IsWideUnicode).
constexpr bool isWideCodePoint(uint32_t c) {
    if (c < 0x1100) return false;
    if (c <= 0x115F) return true;
    if (c >= 0x2E80 && c <= 0xA4CF) return (c & 0xFFEE) != 0x300A && c != 0x303F;
    return (c >= 0xAC00 && c <= 0xD7A3) || (c >= 0xF900 && c <= 0xFAFF) || (c >= 0xFE30 && c <= 0xFE6F) ||
           (c >= 0xFF00 && c <= 0xFF5F) || (c >= 0xFFE0 && c <= 0xFFE6);
}

/// True when the 3 bytes at p are a well-formed UTF-8 character of a wide code point.
inline bool isWideUtf8(const char* p) {
    const auto* s = reinterpret_cast<const unsigned char*>(p);
    if ((s[1] & 0xC0) != 0x80 || (s[2] & 0xC0) != 0x80) return false;
    return isWideCodePoint((static_cast<uint32_t>(s[0] & 0x0F) << 12) | (static_cast<uint32_t>(s[1] & 0x3F) << 6) |
                           (s[2] & 0x3Fu));
}

inline bool isPadCell(const char* cell) {
    return static_cast<unsigned char>(cell[0]) == kPadByte && static_cast<unsigned char>(cell[1]) == kPadByte &&
           static_cast<unsigned char>(cell[2]) == kPadByte;
}

/// Bytes of the cells of the character of len (1 to 3) bytes at p: 3, or 6 when it is wide.
inline size_t cellBytesOf(const char* p, size_t len) { return len == 3 && isWideUtf8(p) ? 6 : 3; }

/// Writes the cells of the character of len (1 to 3) bytes at p to out; returns the bytes written.
inline size_t encodeCells(const char* p, size_t len, char* out) {
    if (len == 1) {
        out[0] = static_cast<char>(kCellFill);
        out[1] = static_cast<char>(kCellFill);
        out[2] = p[0];
        return kCellBytes;
    }
    if (len == 2) {
        out[0] = static_cast<char>(kCellFill);
        out[1] = p[0];
        out[2] = p[1];
        return kCellBytes;
    }
    std::memcpy(out, p, 3);
    if (!isWideUtf8(p)) return kCellBytes;
    std::memcpy(out + 3, kWidePadCell, 3);
    return 2 * kCellBytes;
}

/// Length of the UTF-8 character that starts with lead byte b (the next-character rule).
inline size_t utf8StepOf(unsigned char b) {
    return b < 0xC0 ? 1 : b < 0xE0 ? 2 : b < 0xF0 ? 3 : b < 0xF8 ? 4 : b < 0xFC ? 5 : 6;
}

/// Walks UTF-8 text as the visual conversion does: every character of 1 to 3 bytes that ends
/// inside the text becomes its cells; any other character ends the walk, its bytes counted as
/// handled. Writes the cells to dst when it is not null, stopping before a
/// character whose cells do not fit in cap. Returns the bytes of cells; handled and full tell
/// the source walked and whether dst ran out of room.
inline size_t utf8ToCells(const char* src, size_t n, char* dst, size_t cap, size_t& handled, bool& full) {
    const auto* s = reinterpret_cast<const unsigned char*>(src);
    size_t i = 0, w = 0;
    full = false;
    while (i < n) {
        const size_t len = utf8StepOf(s[i]);
        if (len > 3 || len > n - i) {
            i = std::min(i + len, n);
            break;
        }
        if (dst == nullptr) {
            w += cellBytesOf(src + i, len);
        } else {
            if (cap - w < 2 * kCellBytes && cap - w < cellBytesOf(src + i, len)) {
                full = true;
                break;
            }
            w += encodeCells(src + i, len, dst + w);
        }
        i += len;
    }
    handled = i;
    return w;
}

/// Sets out to the cells of UTF-8 text, allocating no more than their size; returns the source
/// bytes handled.
inline size_t assignCells(const char* src, size_t n, std::string& out) {
    size_t handled = 0;
    bool full = false;
    const size_t size = utf8ToCells(src, n, nullptr, 0, handled, full);
    out.resize(size);
    utf8ToCells(src, n, out.data(), size, handled, full);
    return handled;
}

}  // namespace osl::detail
