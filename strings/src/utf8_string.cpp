// strings/src/utf8_string.cpp
// Character operations of the library's text type. Every operation asks the mode at its call.
// Unicode-mode stepping follows the lead byte only (GetNextCharUTF8); loops compare positions
// with the length so that a cut character at the end never leads past the string.
#include <vum-qib-osl/strings/utf8_string.h>

#include <vum-qib-osl/misc/qib_error.h>
#include <vum-qib-osl/strings/unicode_configuration.h>
#include <vum-qib-osl/strings/unicode_converter.h>

#include "strings/src/utf_transform.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <ostream>
#include <stdexcept>
#include <utility>

namespace {

bool unicodeMode() { return Osl_UnicodeConfiguration::IsUnicodeMode(); }

[[noreturn]] void outOfRange() { throw std::out_of_range("Out of range"); }

inline size_t stepFrom(const char* data, size_t i) {
    return static_cast<size_t>(Osl_UnicodeConverter::GetNextCharUTF8(data + i) - data);
}

// Steps from byte i towards limit (at most the length), counting characters; stops at the first
// step that reaches or passes limit. Runs of ASCII are stepped eight bytes at a time.
inline size_t countSteps(const char* data, size_t& i, size_t limit) {
    size_t count = 0;
    const auto* s = reinterpret_cast<const unsigned char*>(data);
    while (i < limit) {
        unsigned char b = s[i];
        if (b >= 0x80) {
            do {  // a run of non-ASCII characters; compares instead of the table keep the chain short
                i += b < 0xC0 ? 1 : b < 0xE0 ? 2 : b < 0xF0 ? 3 : b < 0xF8 ? 4 : b < 0xFC ? 5 : 6;
                ++count;
            } while (i < limit && (b = s[i]) >= 0x80);
        } else if (limit - i >= 8 && osl::detail::asciiWord(data + i)) {
            i += 8;
            count += 8;
        } else {
            ++i;
            ++count;
        }
    }
    return count;
}

// Latin-1 case tables with the Windows-1252 pairs 9A/8A, 9C/8C, 9E/8E and FF/9F.
struct LegacyCaseTables {
    std::array<uint32_t, 256> upper{};
    std::array<uint32_t, 256> lower{};
    LegacyCaseTables() {
        for (uint32_t b = 0; b < 256; ++b) upper[b] = lower[b] = b;
        for (uint32_t b = 'a'; b <= 'z'; ++b) upper[b] = b - 32;
        for (uint32_t b = 0xE0; b <= 0xFE; ++b)
            if (b != 0xF7) upper[b] = b - 32;
        upper[0x9A] = 0x8A;
        upper[0x9C] = 0x8C;
        upper[0x9E] = 0x8E;
        upper[0xFF] = 0x9F;
        for (uint32_t b = 0; b < 256; ++b)
            if (upper[b] != b) lower[upper[b]] = b;
    }
};

const LegacyCaseTables& legacyTables() {
    static const LegacyCaseTables* tables = new LegacyCaseTables;
    return *tables;
}

uint32_t lookup(const std::array<uint32_t, 256>& table, int value) {
    if (value > 255) return 255;
    return table[static_cast<unsigned char>(value)];
}

void mapLegacy(std::string& s, const std::array<uint32_t, 256>& table) {
    for (char& c : s) c = static_cast<char>(lookup(table, static_cast<signed char>(c)));
}

// Unicode case mapping that keeps the byte length: the whole text when its mapping has the same
// length, else character by character, keeping each character whose mapping would change it.
void mapUnicode(std::string& s, bool upper) {
    if (s.empty()) return;
    Osl_UnicodeConverter converter;
    std::unique_ptr<char[]> buffer(new char[s.size()]);
    size_t length = s.size();
    ConversionRC rc = upper ? converter.ToUpperUTF8(s.data(), s.size(), buffer.get(), length)
                            : converter.ToLowerUTF8(s.data(), s.size(), buffer.get(), length);
    if (rc == ConversionOK) {
        s.assign(buffer.get(), s.size());
        return;
    }
    std::string out;
    out.reserve(s.size());
    size_t i = 0;
    while (i < s.size()) {
        size_t len = 0;
        int32_t c = osl::detail::decodeUtf8(s.data() + i, s.size() - i, len);
        char mapped[16];
        size_t mappedLen = sizeof mapped;
        if (c >= 0 && (upper ? converter.ToUpperUTF8(s.data() + i, len, mapped, mappedLen)
                             : converter.ToLowerUTF8(s.data() + i, len, mapped, mappedLen)) == ConversionOK)
            out.append(mapped, mappedLen);
        else
            out.append(s, i, len);
        i += len;
    }
    s = std::move(out);
}


// What a conversion of Osl_UTF8String puts for a character the other side lacks.
constexpr char kUtf8Replacement[] = "\xEF\xBF\xBD";  // U+FFFD

size_t skipUtf8(const char* p, size_t n) {
    size_t len = 1;
    osl::detail::decodeUtf8(p, n, len);
    return std::min(len, n);
}

// Converts the whole source: where `convert` stops at a character it cannot take (or a cut one at
// the end), the replacement goes in its place and the conversion goes on behind it. convert
// gives the result code and the exact source consumed.
template <class Out, class Unit, class Skip, class Convert>
Out convertReplacing(const Unit* src, size_t n, size_t factor, const Out& replacement, Skip skip, Convert convert) {
    Out out;
    size_t at = 0;
    while (at < n) {
        const size_t before = out.size();
        const size_t capacity = factor * (n - at) + 4;
        out.resize(before + capacity);
        size_t length = capacity;
        auto [rc, handled] = convert(src + at, n - at, out.data() + before, length);
        out.resize(before + std::min(length, capacity));
        at += std::min(handled, n - at);
        if (rc == ConversionOK || at >= n) break;
        if (rc == ConversionNoSpace) {
            if (handled == 0) break;  // cannot happen with this capacity; never loop on it
            continue;
        }
        out += replacement;
        if (rc == ConversionSourceCut) break;  // one replacement for the cut character
        at += skip(src + at, n - at);
    }
    return out;
}

// UTF-8 to a legacy encoding; a character it lacks becomes the encoding's question mark.
std::string utf8ToEncoding(const std::string& utf8, const std::string& encoding) {
    Osl_UnicodeConverter converter;
    converter.SetCurrentEncoding(encoding);
    std::string question;
    if (converter.ConvertUTF8toCurrentEncoding(std::string("?"), question) != ConversionOK) question = "?";
    return convertReplacing<std::string>(utf8.data(), utf8.size(), 4, question, skipUtf8,
                                         [&](const char* p, size_t n, char* d, size_t& l) {
                                             ConversionRC rc = converter.ConvertUTF8toCurrentEncoding(p, n, d, l);
                                             return std::make_pair(rc, static_cast<size_t>(converter.GetHandledLength()));
                                         });
}

// The order of UTF-16 code units, extended to any bytes so that it stays a strict weak order
// consistent with byte equality: a valid character weighs as its UTF-16 units compare, an
// invalid byte weighs after every character and by its value. Each weight stands for exactly
// one byte sequence, so equal weights mean equal bytes.
inline uint32_t weightAt(const unsigned char* s, size_t n, size_t& len) {
    if (s[0] < 0x80) {
        len = 1;
        return s[0];
    }
    const int32_t c = osl::detail::decodeUtf8(reinterpret_cast<const char*>(s), n, len);
    if (c < 0) return 0x200000u + s[0];                                  // len is 1
    const auto u = static_cast<uint32_t>(c);
    if (u >= 0x10000) return 0xD800u + (u - 0x10000u);                  // surrogate pairs sort here
    if (u >= 0xD800 && u <= 0xDFFF) return 0x110000u + u;              // encoded lone surrogates
    if (u >= 0xE000) return u + 0x100000u;                              // after the pairs
    return u;
}

int compareUnicode(const std::string& a, const std::string& b) {
    const size_t n = std::min(a.size(), b.size());
    const size_t m = static_cast<size_t>(std::mismatch(a.begin(), a.begin() + static_cast<std::ptrdiff_t>(n), b.begin()).first -
                                          a.begin());  // the first differing byte
    if (m == a.size() || m == b.size()) return a.size() == b.size() ? 0 : (a.size() < b.size() ? -1 : 1);
    // Back to the start of the character holding byte m: a lead byte at most three bytes back
    // starts one in both texts; without one, m itself starts one.
    size_t i = m;
    for (size_t back = 1; back <= 3 && back <= m; ++back) {
        if ((static_cast<unsigned char>(a[m - back]) & 0xC0) != 0x80) {
            i = m - back;
            break;
        }
    }
    const auto* pa = reinterpret_cast<const unsigned char*>(a.data());
    const auto* pb = reinterpret_cast<const unsigned char*>(b.data());
    size_t ia = i, ib = i;
    while (ia < a.size() && ib < b.size()) {
        size_t la = 1, lb = 1;
        const uint32_t wa = weightAt(pa + ia, a.size() - ia, la);
        const uint32_t wb = weightAt(pb + ib, b.size() - ib, lb);
        if (wa != wb) return wa < wb ? -1 : 1;
        ia += la;
        ib += lb;
    }
    return ia < a.size() ? 1 : (ib < b.size() ? -1 : 0);
}
}  // namespace

Osl_UTF8String::Osl_UTF8String(const std::u16string& s) {
    Osl_UnicodeConverter converter;
    std::string utf8 = convertReplacing<std::string>(
        s.data(), s.size(), 3, std::string(kUtf8Replacement), [](const char16_t*, size_t) { return size_t{1}; },
        [&](const char16_t* p, size_t n, char* d, size_t& l) {
            ConversionRC rc = converter.ConvertUCS2toUTF8(p, n, d, l);
            return std::make_pair(rc, static_cast<size_t>(converter.GetHandledLength()));
        });
    if (unicodeMode()) {
        std::string::operator=(std::move(utf8));
        return;
    }
    std::string::operator=(utf8ToEncoding(utf8, Osl_UnicodeConfiguration::GetCurrentEncoding()));
}

Osl_UTF8String::Osl_UTF8String(const char16_t* s)
    : Osl_UTF8String(s == nullptr ? std::u16string()
                                  : std::u16string(s, static_cast<size_t>(Osl_UnicodeConverter::GetWLength(s)))) {}

size_t Osl_UTF8String::LengthInChars() const {
    if (!unicodeMode()) return size();
    size_t i = 0;
    return countSteps(data(), i, size());
}

size_t Osl_UTF8String::CharsPosAsAbsPos(size_t absStart, size_t nChars) const {
    // Deliberate: a difference, not a position. Callers depend on it.
    if (!unicodeMode()) return nChars - absStart;
    const size_t n = size();
    size_t i = absStart;
    for (size_t count = 0; i < n && count < nChars; ++count) i = stepFrom(data(), i);
    return i < n ? i : npos;
}

size_t Osl_UTF8String::AbsPosAsCharsPos(size_t absStart, size_t absPos) const {
    if (!unicodeMode()) return absPos - absStart;
    size_t i = absStart;
    return countSteps(data(), i, std::min(absPos, size()));
}

void Osl_UTF8String::charRange(size_t charPos, size_t nChars, size_t& start, size_t& count) const {
    start = CharsPosAsAbsPos(0, charPos);
    if (start == npos) outOfRange();
    size_t end = CharsPosAsAbsPos(start, nChars);
    count = end == npos ? npos : end - start;
}

Osl_UTF8String Osl_UTF8String::SubstrInChars(size_t charPos, size_t nChars) const {
    if (!unicodeMode()) return substr(charPos, nChars);
    if (nChars == 0 || (empty() && charPos == 0)) return Osl_UTF8String();
    size_t start = 0, count = 0;
    charRange(charPos, nChars, start, count);
    return substr(start, count);
}

void Osl_UTF8String::EraseInChars(size_t charPos, size_t nChars) {
    if (!unicodeMode()) {
        erase(charPos, nChars);
        return;
    }
    if (nChars == 0 || (empty() && charPos == 0)) return;
    size_t start = 0, count = 0;
    charRange(charPos, nChars, start, count);
    erase(start, count);
}

size_t Osl_UTF8String::Find(const std::string& needle, size_t charPos) const {
    if (!unicodeMode()) return find(needle, charPos);
    if (needle.size() > size()) return npos;
    size_t p = CharsPosAsAbsPos(0, charPos);
    if (p == npos) return npos;
    const size_t last = size() - needle.size();
    size_t index = charPos;
    // Byte search for the next hit, then step to it: a hit inside a character is passed over.
    while (p <= last) {
        size_t hit = find(needle, p);
        if (hit == npos) return npos;
        index += countSteps(data(), p, hit);
        if (p == hit) return index;
    }
    return npos;
}

size_t Osl_UTF8String::GetCharLen(const char* p) const {
    auto b = static_cast<unsigned char>(*p);
    if ((b & 0x80) == 0) return 1;
    if ((b & 0xE0) == 0xC0) return 2;
    if ((b & 0xF0) == 0xE0) return 3;
    if ((b & 0xC0) == 0x80) return npos - 1;
    throw QIBError("UTF8 char more than 3 bytes is not implemented", 0, 0, "", 0);
}

size_t Osl_UTF8String::GetNextChar(size_t pos, const char*& ch, size_t& chLen) const {
    if (pos > size()) outOfRange();
    if (pos == size()) return npos;
    if (!unicodeMode()) {
        ch = data() + pos;
        chLen = 1;
        return pos + 1;
    }
    size_t len = GetCharLen(data() + pos);
    if (len == npos - 1) return npos - 1;
    // A character cut by the end of the string is given with the bytes that are there.
    len = std::min(len, size() - pos);
    ch = data() + pos;
    chLen = len;
    return pos + len;
}

size_t Osl_UTF8String::GetNextChar(size_t pos, Osl_UTF8String& ch) const {
    const char* p = nullptr;
    size_t len = 0;
    size_t next = GetNextChar(pos, p, len);
    if (p == nullptr) ch.clear();
    else ch.assign(p, len);
    return next;
}

void ToUpper2(std::string& s) {
    if (Osl_UnicodeConfiguration::IsUnicodeMode()) mapUnicode(s, true);
    else mapLegacy(s, legacyTables().upper);
}

void ToLower2(std::string& s) {
    if (Osl_UnicodeConfiguration::IsUnicodeMode()) mapUnicode(s, false);
    else mapLegacy(s, legacyTables().lower);
}

void Osl_UTF8String::ToUpper() { ToUpper2(*this); }
void Osl_UTF8String::ToLower() { ToLower2(*this); }

std::u16string Osl_UTF8String::ToWString() const {
    Osl_UnicodeConverter converter;
    std::string legacyAsUtf8;
    const std::string* utf8 = this;
    if (!unicodeMode()) {
        converter.SetCurrentEncoding(Osl_UnicodeConfiguration::GetCurrentEncoding());
        legacyAsUtf8 = convertReplacing<std::string>(
            data(), size(), 3, std::string(kUtf8Replacement), [](const char*, size_t) { return size_t{1}; },
            [&](const char* p, size_t n, char* d, size_t& l) {
                ConversionRC rc = converter.ConvertCurrentEncodingtoUTF8(p, n, d, l);
                return std::make_pair(rc, static_cast<size_t>(converter.GetHandledLength()));
            });
        utf8 = &legacyAsUtf8;
    }
    return convertReplacing<std::u16string>(
        utf8->data(), utf8->size(), 1, std::u16string(1, u'\uFFFD'), skipUtf8,
        [&](const char* p, size_t n, char16_t* d, size_t& l) {
            ConversionRC rc = converter.ConvertUTF8toUCS2(p, n, d, l);
            return std::make_pair(rc, static_cast<size_t>(converter.GetHandledLength()));
        });
}

std::string Osl_UTF8String::ToCurrentFSEncoding() const {
    if (!unicodeMode()) return *this;
    return utf8ToEncoding(*this, Osl_UnicodeConfiguration::GetOSFileSystemNativeEncoding());
}

std::string Osl_UTF8String::ToCurrentSystemEncoding() const {
    if (!unicodeMode()) return *this;
    return utf8ToEncoding(*this, Osl_UnicodeConfiguration::GetCurrentEncoding());
}

bool operator==(const Osl_UTF8String& a, const Osl_UTF8String& b) { return a.ToString() == b.ToString(); }
bool operator!=(const Osl_UTF8String& a, const Osl_UTF8String& b) { return !(a == b); }
bool operator==(const Osl_UTF8String& a, const char* b) { return a.ToString() == (b == nullptr ? "" : b); }
bool operator!=(const Osl_UTF8String& a, const char* b) { return !(a == b); }

bool operator<(const Osl_UTF8String& a, const Osl_UTF8String& b) {
    if (Osl_UnicodeConfiguration::IsUnicodeMode()) return compareUnicode(a, b) < 0;
    return a.compare(b) < 0;
}

bool operator>(const Osl_UTF8String& a, const Osl_UTF8String& b) { return b < a; }

std::ostream& operator<<(std::ostream& out, const Osl_UTF8String& s) {
    return out.write(s.data(), static_cast<std::streamsize>(s.size()));
}
