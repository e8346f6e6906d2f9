// The library's text type: UTF-8 in Unicode mode, bytes of the current legacy encoding otherwise.
#pragma once

#include <vum-qib-osl/osl_api.h>

#include <cstddef>
#include <iosfwd>
#include <string>

/// A byte string. Members ending in `InChars`, the position conversions, `<`, `>` and the wide
/// conversions ask the mode at every call: in Unicode mode they count UTF-8 characters, in legacy
/// mode one byte is one character. Every other member (length, find, substr ...) works on bytes
/// in both modes. Bytes are not validated on entry. Positions that are not inside the string
/// throw std::out_of_range("Out of range") where noted.
/// Thread-safety: as std::string (const members from several threads at once, a change needs the
/// object to itself); the mode is read at each call.
class OSL_API Osl_UTF8String : public std::string {
public:
    static constexpr size_t npos = std::string::npos;

    Osl_UTF8String() = default;
    Osl_UTF8String(const Osl_UTF8String&) = default;
    Osl_UTF8String(Osl_UTF8String&&) noexcept = default;
    /// The bytes as they are, in both modes.
    Osl_UTF8String(const std::string& s) : std::string(s) {}
    Osl_UTF8String(std::string&& s) noexcept : std::string(std::move(s)) {}
    Osl_UTF8String(const char* s) : std::string(s) {}
    Osl_UTF8String(const char* s, size_t n) : std::string(s, n) {}
    Osl_UTF8String(size_t n, char c) : std::string(n, c) {}
    /// From UTF-16: UTF-8 in Unicode mode; in legacy mode converted on to the current encoding.
    /// Conversions of this class never cut a text short: a character the target lacks becomes
    /// the target's replacement character ("?" in a legacy encoding, U+FFFD in UTF-8 and
    /// UTF-16), as does each invalid byte (or unpaired surrogate at the end) of the source, and
    /// the rest follows. Legacy mode: u"abc日xyz" in windows-1252 is "abc?xyz".
    Osl_UTF8String(const std::u16string& s);
    Osl_UTF8String(const char16_t* s);

    Osl_UTF8String& operator=(const Osl_UTF8String&) = default;
    Osl_UTF8String& operator=(Osl_UTF8String&&) noexcept = default;
    Osl_UTF8String& operator=(const std::string& s) { std::string::operator=(s); return *this; }
    Osl_UTF8String& operator=(const char* s) { std::string::operator=(s); return *this; }

    Osl_UTF8String& operator+=(const Osl_UTF8String& s) { append(s); return *this; }
    Osl_UTF8String& operator+=(const std::string& s) { append(s); return *this; }
    Osl_UTF8String& operator+=(const char* s) { append(s); return *this; }
    Osl_UTF8String& operator+=(char c) { push_back(c); return *this; }

    /// Bytes [pos, pos + n).
    Osl_UTF8String substr(size_t pos = 0, size_t n = npos) const { return Osl_UTF8String(std::string::substr(pos, n)); }

    /// The object as a narrow string.
    const std::string& ToString() const { return *this; }

    /// Characters: UTF-8 steps in Unicode mode (a stray continuation byte counts as one), bytes in
    /// legacy mode.
    size_t LengthInChars() const;
    /// Byte position nChars characters after the byte position absStart; npos when that reaches
    /// the end. Legacy mode: nChars - absStart (a difference, kept for existing callers).
    size_t CharsPosAsAbsPos(size_t absStart, size_t nChars) const;
    /// Characters between the byte positions absStart and absPos (a cut character counts as one).
    size_t AbsPosAsCharsPos(size_t absStart, size_t absPos) const;
    /// nChars characters from the character position charPos (npos: to the end). Throws "Out of
    /// range" when charPos is not inside the string (unless nChars is 0, or both are 0 on "").
    Osl_UTF8String SubstrInChars(size_t charPos, size_t nChars = npos) const;
    /// Erases characters; positions as in SubstrInChars.
    void EraseInChars(size_t charPos, size_t nChars = npos);
    /// Character position of needle (byte-exact, at character boundaries) from charPos, or npos.
    /// Legacy mode: the byte position.
    size_t Find(const std::string& needle, size_t charPos = 0) const;
    /// The character at byte position pos: ch points at it, chLen is its length in bytes; returns
    /// the byte position of the following character. On a continuation byte returns npos - 1 and
    /// leaves ch alone; at the end returns npos; beyond it throws "Out of range". A lead byte of
    /// four or more bytes throws QIBError "UTF8 char more than 3 bytes is not implemented".
    size_t GetNextChar(size_t pos, const char*& ch, size_t& chLen) const;
    /// The same, giving the character as a string (empty when there is none).
    size_t GetNextChar(size_t pos, Osl_UTF8String& ch) const;
    /// Case mapping in place: Unicode case mapping of UTF-8 (the byte length is kept) in Unicode
    /// mode, the Latin-1/Windows-1252 tables in legacy mode.
    void ToUpper();
    void ToLower();
    /// UTF-16 of the text (from the current encoding in legacy mode); replacement as above.
    std::u16string ToWString() const;
    /// The text in the file-system encoding (Unicode mode, replacement as above), or the bytes
    /// (legacy mode).
    std::string ToCurrentFSEncoding() const;
    /// The text in the current encoding (Unicode mode, replacement as above), or the bytes
    /// (legacy mode).
    std::string ToCurrentSystemEncoding() const;

private:
    size_t GetCharLen(const char* p) const;
    void charRange(size_t charPos, size_t nChars, size_t& start, size_t& count) const;
};

/// Case mapping of any narrow string in place, in the current mode (as Osl_UTF8String::ToUpper).
OSL_API void ToUpper2(std::string& s);
OSL_API void ToLower2(std::string& s);

/// Byte equality in both modes.
OSL_API bool operator==(const Osl_UTF8String& a, const Osl_UTF8String& b);
OSL_API bool operator!=(const Osl_UTF8String& a, const Osl_UTF8String& b);
OSL_API bool operator==(const Osl_UTF8String& a, const char* b);
OSL_API bool operator!=(const Osl_UTF8String& a, const char* b);
/// Unicode mode: UTF-16 code-unit order of the characters, bytes that are not valid UTF-8 after
/// every character and by value, so that < is a strict weak order that agrees with == (two
/// strings are equivalent only when their bytes are equal); legacy mode: byte order. Allocates
/// nothing.
OSL_API bool operator<(const Osl_UTF8String& a, const Osl_UTF8String& b);
OSL_API bool operator>(const Osl_UTF8String& a, const Osl_UTF8String& b);
/// Writes the bytes unchanged.
OSL_API std::ostream& operator<<(std::ostream& out, const Osl_UTF8String& s);
