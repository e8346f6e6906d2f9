// strings/src/utf_transform.h
// The built-in UTF-16 <-> UTF-8 transformation, lenient: unpaired surrogates are carried over in
// both directions (as 3-byte sequences in UTF-8). Results are ConversionRC values. With the
// small byte helpers the strings code shares.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace osl::detail {

/// ASCII case folding: the one helper for names compared without regard to ASCII case.
inline char asciiLower(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }
inline std::string lowered(std::string s) {
    for (char& c : s) c = asciiLower(c);
    return s;
}

/// True when the eight bytes at p are all ASCII: the one word-at-a-time test of the strings code.
inline bool asciiWord(const void* p) {
    uint64_t word;
    std::memcpy(&word, p, 8);
    return (word & 0x8080808080808080ULL) == 0;
}

/// 0, -1 (the source ends inside a character), -2 (illegal source) or -3 (destination full).
/// consumed and written count source and destination units up to the last whole character.
int utf16ToUtf8(const char16_t* src, size_t srcLen, char* dst, size_t dstCap, size_t& consumed, size_t& written);
int utf8ToUtf16(const char* src, size_t srcLen, char16_t* dst, size_t dstCap, size_t& consumed, size_t& written);

/// The code point of the UTF-8 character at p (at most available bytes), with its length in len;
/// -1 (len 1) for an illegal or cut sequence.
int32_t decodeUtf8(const char* p, size_t available, size_t& len);

}  // namespace osl::detail
