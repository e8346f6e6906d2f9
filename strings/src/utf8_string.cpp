// strings/src/utf8_string.cpp
// Character operations of the library's text type. Every operation asks the mode at its call.
// Unicode-mode stepping follows the lead byte only (GetNextCharUTF8); loops compare positions
// with the length so that a cut character at the end never leads past the string.
#include <vum-qib-osl/strings/utf8_string.h>

#include <vum-qib-osl/misc/qib_error.h>
#include <vum-qib-osl/strings/unicode_configuration.h>
#include <vum-qib-osl/strings/unicode_converter.h>

#include "strings/src/utf_transform.h"

#include <array>
#include <cstring>
#include <memory>
#include <ostream>
#include <stdexcept>

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

}  // namespace

Osl_UTF8String::Osl_UTF8String(const std::u16string& s) {
    Osl_UnicodeConverter converter;
    std::string utf8;
    converter.ConvertUCS2toUTF8(s, utf8);
    if (unicodeMode()) {
        std::string::operator=(std::move(utf8));
        return;
    }
    converter.SetCurrentEncoding(Osl_UnicodeConfiguration::GetCurrentEncoding());
    std::string legacy;
    converter.ConvertUTF8toCurrentEncoding(utf8, legacy);
    std::string::operator=(std::move(legacy));
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
    std::u16string wide;
    if (unicodeMode()) {
        converter.ConvertUTF8toUCS2(*this, wide);
        return wide;
    }
    converter.SetCurrentEncoding(Osl_UnicodeConfiguration::GetCurrentEncoding());
    std::string utf8;
    converter.ConvertCurrentEncodingtoUTF8(*this, utf8);
    converter.ConvertUTF8toUCS2(utf8, wide);
    return wide;
}

std::string Osl_UTF8String::ToCurrentFSEncoding() const {
    if (!unicodeMode()) return *this;
    Osl_UnicodeConverter converter;
    converter.SetCurrentEncoding(Osl_UnicodeConfiguration::GetOSFileSystemNativeEncoding());
    std::string out;
    converter.ConvertUTF8toCurrentEncoding(*this, out);
    return out;
}

std::string Osl_UTF8String::ToCurrentSystemEncoding() const {
    if (!unicodeMode()) return *this;
    Osl_UnicodeConverter converter;
    converter.SetCurrentEncoding(Osl_UnicodeConfiguration::GetCurrentEncoding());
    std::string out;
    converter.ConvertUTF8toCurrentEncoding(*this, out);
    return out;
}

bool operator==(const Osl_UTF8String& a, const Osl_UTF8String& b) { return a.ToString() == b.ToString(); }
bool operator!=(const Osl_UTF8String& a, const Osl_UTF8String& b) { return !(a == b); }
bool operator==(const Osl_UTF8String& a, const char* b) { return a.ToString() == (b == nullptr ? "" : b); }
bool operator!=(const Osl_UTF8String& a, const char* b) { return !(a == b); }

bool operator<(const Osl_UTF8String& a, const Osl_UTF8String& b) {
    if (Osl_UnicodeConfiguration::IsUnicodeMode()) return a.ToWString() < b.ToWString();
    return a.compare(b) < 0;
}

bool operator>(const Osl_UTF8String& a, const Osl_UTF8String& b) {
    if (Osl_UnicodeConfiguration::IsUnicodeMode()) return a.ToWString() > b.ToWString();
    return a.compare(b) > 0;
}

std::ostream& operator<<(std::ostream& out, const Osl_UTF8String& s) {
    return out.write(s.data(), static_cast<std::streamsize>(s.size()));
}
