// strings/src/utf_transform.cpp
// The UTF-16 <-> UTF-8 transformation. Runs of ASCII are copied eight (four) units at a time.
#include "strings/src/utf_transform.h"

#include <cstring>

namespace osl::detail {
namespace {

constexpr int kOk = 0, kCut = -1, kIllegal = -2, kNoSpace = -3;

inline bool isTrail(uint8_t b) { return (b & 0xC0) == 0x80; }

// Checks the bytes of the sequence starting with lead that are present. Returns the sequence
// length, or 0 when a present byte is illegal. Encoded surrogates (ED A0-BF) are accepted.
inline size_t checkSequence(const uint8_t* s, size_t available) {
    uint8_t b = s[0];
    size_t need;
    uint8_t low = 0x80, high = 0xBF;
    if (b < 0x80) return 1;
    if (b < 0xC2) return 0;
    if (b < 0xE0) {
        need = 2;
    } else if (b < 0xF0) {
        need = 3;
        if (b == 0xE0) low = 0xA0;
    } else if (b < 0xF5) {
        need = 4;
        if (b == 0xF0) low = 0x90;
        if (b == 0xF4) high = 0x8F;
    } else {
        return 0;
    }
    if (available > 1 && (s[1] < low || s[1] > high)) return 0;
    for (size_t i = 2; i < need && i < available; ++i)
        if (!isTrail(s[i])) return 0;
    return need;
}

}  // namespace

int32_t decodeUtf8(const char* p, size_t available, size_t& len) {
    len = 1;
    if (available == 0) return -1;
    const auto* s = reinterpret_cast<const uint8_t*>(p);
    size_t need = checkSequence(s, available);
    if (need == 0 || need > available) return -1;
    len = need;
    switch (need) {
        case 1: return s[0];
        case 2: return ((s[0] & 0x1F) << 6) | (s[1] & 0x3F);
        case 3: return ((s[0] & 0x0F) << 12) | ((s[1] & 0x3F) << 6) | (s[2] & 0x3F);
        default: return ((s[0] & 0x07) << 18) | ((s[1] & 0x3F) << 12) | ((s[2] & 0x3F) << 6) | (s[3] & 0x3F);
    }
}

// kRoomy: the destination holds the worst case, so no step checks for room.
template <bool kRoomy>
int utf8ToUtf16Impl(const char* src, size_t srcLen, char16_t* dst, size_t dstCap, size_t& consumed, size_t& written) {
    const auto* s = reinterpret_cast<const uint8_t*>(src);
    const uint8_t* end = s + srcLen;
    char16_t* d = dst;
    char16_t* dend = dst + dstCap;
    int rc = kOk;
    while (s < end) {
        uint8_t b = *s;
        if (b < 0x80) {
            if (end - s >= 8 && (kRoomy || dend - d >= 8)) {
                if (asciiWord(s)) {
                    for (int i = 0; i < 8; ++i) d[i] = s[i];
                    s += 8;
                    d += 8;
                    continue;
                }
            }
            if (!kRoomy && d == dend) { rc = kNoSpace; break; }
            *d++ = b;
            ++s;
            continue;
        }
        // Runs of 3-byte characters (CJK) in a loop of their own. Lenient as checkSequence: E1-EF
        // take any continuation bytes (encoded surrogates included), E0 needs A0-BF first.
        if ((b & 0xF0) == 0xE0) {
            const uint8_t* runStart = s;
            while (end - s >= 3 && (kRoomy || d != dend)) {
                uint8_t lead = s[0], c1 = s[1], c2 = s[2];
                if ((lead & 0xF0) != 0xE0 || (((c1 & 0xC0) ^ 0x80) | ((c2 & 0xC0) ^ 0x80)) != 0 ||
                    (lead == 0xE0 && c1 < 0xA0))
                    break;
                *d++ = static_cast<char16_t>(((lead & 0x0F) << 12) | ((c1 & 0x3F) << 6) | (c2 & 0x3F));
                s += 3;
            }
            if (s != runStart) continue;
        }
        size_t available = static_cast<size_t>(end - s);
        size_t need = checkSequence(s, available);
        if (need == 0) { rc = kIllegal; break; }
        if (need > available) { rc = kCut; break; }
        if (need == 3) {
            if (!kRoomy && d == dend) { rc = kNoSpace; break; }
            *d++ = static_cast<char16_t>(((b & 0x0F) << 12) | ((s[1] & 0x3F) << 6) | (s[2] & 0x3F));
        } else if (need == 2) {
            if (!kRoomy && d == dend) { rc = kNoSpace; break; }
            *d++ = static_cast<char16_t>(((b & 0x1F) << 6) | (s[1] & 0x3F));
        } else {
            if (!kRoomy && dend - d < 2) { rc = kNoSpace; break; }
            uint32_t c = ((b & 0x07u) << 18) | ((s[1] & 0x3Fu) << 12) | ((s[2] & 0x3Fu) << 6) | (s[3] & 0x3Fu);
            c -= 0x10000;
            *d++ = static_cast<char16_t>(0xD800 + (c >> 10));
            *d++ = static_cast<char16_t>(0xDC00 + (c & 0x3FF));
        }
        s += need;
    }
    consumed = static_cast<size_t>(s - reinterpret_cast<const uint8_t*>(src));
    written = static_cast<size_t>(d - dst);
    return rc;
}

template <bool kRoomy>
int utf16ToUtf8Impl(const char16_t* src, size_t srcLen, char* dst, size_t dstCap, size_t& consumed, size_t& written) {
    const char16_t* s = src;
    const char16_t* end = src + srcLen;
    auto* d = reinterpret_cast<uint8_t*>(dst);
    uint8_t* dend = d + dstCap;
    int rc = kOk;
    while (s < end) {
        uint32_t c = *s;
        if (c < 0x80 && end - s >= 4 && (kRoomy || dend - d >= 4)) {
            uint64_t word;
            std::memcpy(&word, s, 8);
            if ((word & 0xFF80FF80FF80FF80ULL) == 0) {
                d[0] = static_cast<uint8_t>(s[0]);
                d[1] = static_cast<uint8_t>(s[1]);
                d[2] = static_cast<uint8_t>(s[2]);
                d[3] = static_cast<uint8_t>(s[3]);
                s += 4;
                d += 4;
                continue;
            }
        }
        if (c < 0x80) {
            if (!kRoomy && d == dend) { rc = kNoSpace; break; }
            *d++ = static_cast<uint8_t>(c);
            ++s;
        } else if (c < 0x800) {
            if (!kRoomy && dend - d < 2) { rc = kNoSpace; break; }
            d[0] = static_cast<uint8_t>(0xC0 | (c >> 6));
            d[1] = static_cast<uint8_t>(0x80 | (c & 0x3F));
            d += 2;
            ++s;
        } else if (c < 0xD800 || c > 0xDFFF) {
            if (!kRoomy && dend - d < 3) { rc = kNoSpace; break; }
            d[0] = static_cast<uint8_t>(0xE0 | (c >> 12));
            d[1] = static_cast<uint8_t>(0x80 | ((c >> 6) & 0x3F));
            d[2] = static_cast<uint8_t>(0x80 | (c & 0x3F));
            d += 3;
            ++s;
        } else if (c <= 0xDBFF && s + 1 == end) {
            rc = kCut;  // the low half may come with the next call
            break;
        } else if (c <= 0xDBFF && s[1] >= 0xDC00 && s[1] <= 0xDFFF) {
            if (!kRoomy && dend - d < 4) { rc = kNoSpace; break; }
            uint32_t cp = 0x10000 + ((c - 0xD800) << 10) + (s[1] - 0xDC00u);
            d[0] = static_cast<uint8_t>(0xF0 | (cp >> 18));
            d[1] = static_cast<uint8_t>(0x80 | ((cp >> 12) & 0x3F));
            d[2] = static_cast<uint8_t>(0x80 | ((cp >> 6) & 0x3F));
            d[3] = static_cast<uint8_t>(0x80 | (cp & 0x3F));
            d += 4;
            s += 2;
        } else {  // unpaired surrogates are carried as they are
            if (!kRoomy && dend - d < 3) { rc = kNoSpace; break; }
            d[0] = static_cast<uint8_t>(0xE0 | (c >> 12));
            d[1] = static_cast<uint8_t>(0x80 | ((c >> 6) & 0x3F));
            d[2] = static_cast<uint8_t>(0x80 | (c & 0x3F));
            d += 3;
            ++s;
        }
    }
    consumed = static_cast<size_t>(s - src);
    written = static_cast<size_t>(d - reinterpret_cast<uint8_t*>(dst));
    return rc;
}

int utf8ToUtf16(const char* src, size_t srcLen, char16_t* dst, size_t dstCap, size_t& consumed, size_t& written) {
    return dstCap >= srcLen ? utf8ToUtf16Impl<true>(src, srcLen, dst, dstCap, consumed, written)
                            : utf8ToUtf16Impl<false>(src, srcLen, dst, dstCap, consumed, written);
}

int utf16ToUtf8(const char16_t* src, size_t srcLen, char* dst, size_t dstCap, size_t& consumed, size_t& written) {
    return dstCap / 3 >= srcLen ? utf16ToUtf8Impl<true>(src, srcLen, dst, dstCap, consumed, written)
                                : utf16ToUtf8Impl<false>(src, srcLen, dst, dstCap, consumed, written);
}

}  // namespace osl::detail
