// strings/src/utf_transform.h
// The built-in UTF-16 <-> UTF-8 transformation, lenient: unpaired surrogates are carried over in
// both directions (as 3-byte sequences in UTF-8). Results are ConversionRC values.
#pragma once

#include <cstddef>
#include <cstdint>

namespace osl::detail {

/// 0, -1 (the source ends inside a character), -2 (illegal source) or -3 (destination full).
/// consumed and written count source and destination units up to the last whole character.
int utf16ToUtf8(const char16_t* src, size_t srcLen, char* dst, size_t dstCap, size_t& consumed, size_t& written);
int utf8ToUtf16(const char* src, size_t srcLen, char16_t* dst, size_t dstCap, size_t& consumed, size_t& written);

/// The code point of the UTF-8 character at p (at most available bytes), with its length in len;
/// -1 (len 1) for an illegal or cut sequence.
int32_t decodeUtf8(const char* p, size_t available, size_t& len);

}  // namespace osl::detail
