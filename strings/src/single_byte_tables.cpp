// strings/src/single_byte_tables.cpp
// The table path of single-byte code pages. Positions are kept in locals: stores through char*
// could alias the references.
#include "strings/src/single_byte_tables.h"

#include "strings/src/utf_transform.h"

#include <cstring>
#include <map>
#include <mutex>

namespace osl::detail {

const SingleByteTables* singleByteTables(const std::string& converter) {
    static std::mutex lock;  // guards cache
    static auto* cache = new std::map<std::string, const SingleByteTables*>;
    std::lock_guard<std::mutex> guard(lock);
    if (auto it = cache->find(converter); it != cache->end()) return it->second;
    const SingleByteTables* result = nullptr;
    if (osl::platform::icuIsSingleByte(converter)) {
        auto* t = new SingleByteTables;
        std::vector<int32_t> toUnicode = osl::platform::icuSingleByteToUnicode(converter);
        t->fromBmp = osl::platform::icuSingleByteFromUnicode(converter);
        for (size_t b = 0; b < 256 && toUnicode.size() == 256; ++b) {
            int32_t c = toUnicode[b];
            if (b < 0x80 && c != static_cast<int32_t>(b)) t->asciiIdentity = false;
            if (c < 0 || (c >= 0xD800 && c <= 0xDFFF)) continue;
            char16_t unit = static_cast<char16_t>(c);
            size_t consumed = 0, written = 0;
            utf16ToUtf8(&unit, 1, t->utf8[b], 4, consumed, written);
            t->utf8Length[b] = static_cast<uint8_t>(written);
        }
        for (size_t c = 0; c < 0x80 && t->fromBmp.size() == 65536; ++c)
            if (t->fromBmp[c] != static_cast<int16_t>(c)) t->asciiIdentity = false;
        if (toUnicode.size() == 256 && t->fromBmp.size() == 65536) result = t;
        else delete t;
    }
    cache->emplace(converter, result);
    return result;
}

osl::platform::IcuStatus fromSingleByte(const SingleByteTables& t, const char* src, size_t n, char* dst, size_t cap,
                                        size_t& consumed, size_t& written) {
    const auto* s = reinterpret_cast<const unsigned char*>(src);
    const uint8_t* lengths = t.utf8Length;
    const char(*bytes)[4] = t.utf8;
    const bool ascii = t.asciiIdentity;
    size_t i = consumed, w = written;
    auto status = osl::platform::IcuStatus::ok;
    // Blocks of eight bytes while the destination surely has room: copied when ASCII, else
    // every byte writes four bytes of its table entry and advances by its length.
    while (n - i >= 8 && cap - w >= 32) {
        if (ascii && asciiWord(src + i)) {
            std::memcpy(dst + w, src + i, 8);
            i += 8;
            w += 8;
            continue;
        }
        size_t k = 0;
        for (; k < 8; ++k) {
            uint8_t b = s[i + k];
            uint8_t len = lengths[b];
            if (len == 0) break;
            std::memcpy(dst + w, bytes[b], 4);
            w += len;
        }
        i += k;
        if (k < 8) break;
    }
    while (i < n) {
        uint8_t b = s[i];
        uint8_t len = lengths[b];
        if (len == 0) {
            status = osl::platform::IcuStatus::failed;
            break;
        }
        if (cap - w >= 4) {
            std::memcpy(dst + w, bytes[b], 4);  // the unused bytes are overwritten next
        } else if (cap - w >= len) {
            std::memcpy(dst + w, bytes[b], len);
        } else {
            status = osl::platform::IcuStatus::noSpace;
            break;
        }
        w += len;
        ++i;
    }
    consumed = i;
    written = w;
    return status;
}

// UTF-8 -> single-byte code page; stops at anything but a mapped 1- to 3-byte character.
osl::platform::IcuStatus toSingleByte(const SingleByteTables& t, const char* src, size_t n, char* dst, size_t cap,
                                      size_t& consumed, size_t& written) {
    const auto* s = reinterpret_cast<const unsigned char*>(src);
    const int16_t* fromBmp = t.fromBmp.data();
    const bool ascii = t.asciiIdentity;
    size_t i = consumed, w = written;
    auto status = osl::platform::IcuStatus::ok;
    // Blocks: eight ASCII bytes copied at once, else up to 32 characters of one to three bytes
    // looked up without further room checks; anything else is left to the loop below.
    while (n - i >= 16 && cap - w >= 32) {
        if (ascii && asciiWord(src + i)) {
            std::memcpy(dst + w, src + i, 8);
            i += 8;
            w += 8;
            continue;
        }
        int k = 0;
        for (; k < 32 && n - i >= 3; ++k) {  // a character takes at most three bytes
            uint8_t b = s[i];
            int16_t v;
            if (b < 0x80) {
                v = ascii ? static_cast<int16_t>(b) : fromBmp[b];
                if (v < 0) break;
                ++i;
            } else if (b >= 0xC2 && b < 0xE0 && (s[i + 1] & 0xC0) == 0x80) {
                v = fromBmp[((b & 0x1Fu) << 6) | (s[i + 1] & 0x3Fu)];
                if (v < 0) break;
                i += 2;
            } else if (b >= 0xE0 && b < 0xF0 && (s[i + 1] & 0xC0) == 0x80 && (s[i + 2] & 0xC0) == 0x80 &&
                       !(b == 0xE0 && s[i + 1] < 0xA0) && !(b == 0xED && s[i + 1] > 0x9F)) {
                v = fromBmp[((b & 0x0Fu) << 12) | ((s[i + 1] & 0x3Fu) << 6) | (s[i + 2] & 0x3Fu)];
                if (v < 0) break;
                i += 3;
            } else {
                break;
            }
            dst[w++] = static_cast<char>(v);
        }
        if (k == 0) break;  // the loop below stops there too
    }
    while (i < n) {
        uint8_t b = s[i];
        uint32_t c;
        size_t len;
        if (b < 0x80) {
            if (ascii && n - i >= 8 && cap - w >= 8 && asciiWord(src + i)) {
                std::memcpy(dst + w, src + i, 8);
                i += 8;
                w += 8;
                continue;
            }
            c = b;
            len = 1;
        } else if (b >= 0xC2 && b < 0xE0 && n - i >= 2 && (s[i + 1] & 0xC0) == 0x80) {
            c = ((b & 0x1Fu) << 6) | (s[i + 1] & 0x3Fu);
            len = 2;
        } else if (b >= 0xE0 && b < 0xF0 && n - i >= 3 && (s[i + 1] & 0xC0) == 0x80 && (s[i + 2] & 0xC0) == 0x80 &&
                   !(b == 0xE0 && s[i + 1] < 0xA0) && !(b == 0xED && s[i + 1] > 0x9F)) {
            c = ((b & 0x0Fu) << 12) | ((s[i + 1] & 0x3Fu) << 6) | (s[i + 2] & 0x3Fu);
            len = 3;
        } else {
            status = osl::platform::IcuStatus::failed;
            break;
        }
        int16_t v = fromBmp[c];
        if (v < 0) {
            status = osl::platform::IcuStatus::failed;
            break;
        }
        if (w == cap) {
            status = osl::platform::IcuStatus::noSpace;
            break;
        }
        dst[w++] = static_cast<char>(v);
        i += len;
    }
    consumed = i;
    written = w;
    return status;
}

}  // namespace osl::detail
