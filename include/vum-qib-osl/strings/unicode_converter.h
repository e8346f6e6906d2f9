// Conversions between the current (legacy) encoding, a target encoding, UTF-8, UCS-2 (UTF-16
// code units) and the visual form, and the character services of the string classes.
#pragma once

#include <vum-qib-osl/osl_api.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

class Osl_UTF8String;
class Osl_VisualString;

/// The result of every conversion.
enum ConversionRC : int {
    ConversionOK = 0,          ///< success
    ConversionSourceCut = -1,  ///< the source ends inside a character (UTF-8/UCS-2 only)
    ConversionIllegal = -2,    ///< illegal source, other failure, or case mapping changed the length
    ConversionNoSpace = -3,    ///< no space in the destination buffer
};

/// Stored by `SetErrorHanldlingMode`; no conversion consults it.
enum ErrorHanldlingMode : int {
    ErrorHandlingDefault = 0,
    ErrorHandlingStop = 1,
    ErrorHandlingSubstitute = 2,
};

/// What `GetCharType` answers.
enum EnumCharTypeMode : int {
    /// A bit set: 0x1 upper, 0x2 lower, 0x4 digit, 0x8 space, 0x10 punctuation, 0x20 control,
    /// 0x40 blank, 0x80 hex digit, 0x100 letter.
    CharTypeClass = 1,
    /// The Unicode general category (ICU's UCharCategory number).
    CharTypeCategory = 2,
};

/// A cheap value created on the stack for one conversion or a few.
///
/// Thread-safety: one object per thread (it keeps the handled length and the shift state of a
/// double-byte source); the static members may be called from any thread.
///
/// Each conversion has three forms:
/// - caller buffer: (src, srcLen, dst, dstLen&): dstLen is the capacity on entry and the amount
///   produced on return;
/// - allocating: (src, srcLen, &dst, dstLen&): allocates the capacity named at the function with
///   new[], converts into it; the caller frees *dst with delete[];
/// - string: (source string, destination string&).
/// Lengths count bytes, or char16_t units for UCS-2. Conversions return ConversionRC and never
/// throw, except that the first code-page conversion throws QIBError when its encoding has no
/// converter. A caller buffer too small gives -3 and one log line (severity 3).
class OSL_API Osl_UnicodeConverter {
public:
    Osl_UnicodeConverter();
    ~Osl_UnicodeConverter();
    Osl_UnicodeConverter(const Osl_UnicodeConverter&) = delete;
    Osl_UnicodeConverter& operator=(const Osl_UnicodeConverter&) = delete;

    /// Handled length 0, drops the code-page converter, makes sure the configuration exists.
    void Init();
    /// Encoding names as Osl_UnicodeConfiguration knows them; a change of name re-initialises.
    void SetCurrentEncoding(const std::string& name);
    void SetTargetEncoding(const std::string& name);
    const std::string& GetCurrentEncoding() const { return current_; }
    const std::string& GetTargetEncoding() const { return target_; }
    void SetErrorHanldlingMode(ErrorHanldlingMode mode) { errorMode_ = mode; }
    /// Source consumed by the last conversion: bytes, or char16_t units for a UCS-2 source. It is
    /// exactly the source that the output represents, so a caller that stopped at -2 or -3 can
    /// go on from there. Double-byte EBCDIC sources keep their shift state across calls for
    /// the consumed bytes only: a text converts the same in pieces as in one call.
    int GetHandledLength() const { return handled_; }

    /// target -> current; allocating capacity 4n + 1 bytes.
    ConversionRC ConvertTargetEncodingtoCurrentEncoding(const char* src, size_t srcLen, char* dst, size_t& dstLen);
    ConversionRC ConvertTargetEncodingtoCurrentEncoding(const char* src, size_t srcLen, char** dst, size_t& dstLen);
    ConversionRC ConvertTargetEncodingtoCurrentEncoding(const std::string& src, std::string& dst);
    /// current -> target; allocating capacity 4n + 1 bytes.
    ConversionRC ConvertCurrentEncodingtoTargetEncoding(const char* src, size_t srcLen, char* dst, size_t& dstLen);
    ConversionRC ConvertCurrentEncodingtoTargetEncoding(const char* src, size_t srcLen, char** dst, size_t& dstLen);
    ConversionRC ConvertCurrentEncodingtoTargetEncoding(const std::string& src, std::string& dst);
    /// UTF-8 -> current (the target becomes "UTF-8"); allocating capacity 4n + 4 bytes.
    ConversionRC ConvertUTF8toCurrentEncoding(const char* src, size_t srcLen, char* dst, size_t& dstLen);
    ConversionRC ConvertUTF8toCurrentEncoding(const char* src, size_t srcLen, char** dst, size_t& dstLen);
    ConversionRC ConvertUTF8toCurrentEncoding(const std::string& src, std::string& dst);
    /// current -> UTF-8 (the target becomes "UTF-8"); allocating capacity 3n + 1 bytes.
    ConversionRC ConvertCurrentEncodingtoUTF8(const char* src, size_t srcLen, char* dst, size_t& dstLen);
    ConversionRC ConvertCurrentEncodingtoUTF8(const char* src, size_t srcLen, char** dst, size_t& dstLen);
    ConversionRC ConvertCurrentEncodingtoUTF8(const std::string& src, std::string& dst);

    /// UCS-2 -> UTF-8, lenient (lone surrogates are carried); allocating capacity 3n + 1 bytes.
    ConversionRC ConvertUCS2toUTF8(const char16_t* src, size_t srcLen, char* dst, size_t& dstLen);
    ConversionRC ConvertUCS2toUTF8(const char16_t* src, size_t srcLen, char** dst, size_t& dstLen);
    ConversionRC ConvertUCS2toUTF8(const std::u16string& src, std::string& dst);
    /// UTF-8 -> UCS-2, lenient; allocating capacity n + 1 units.
    ConversionRC ConvertUTF8toUCS2(const char* src, size_t srcLen, char16_t* dst, size_t& dstLen);
    ConversionRC ConvertUTF8toUCS2(const char* src, size_t srcLen, char16_t** dst, size_t& dstLen);
    ConversionRC ConvertUTF8toUCS2(const std::string& src, std::u16string& dst);
    /// UTF-8 -> visual (3-byte cells; a wide character is followed by FF FF FF); capacity 6n + 1.
    ConversionRC ConvertUTF8toVisual(const char* src, size_t srcLen, char* dst, size_t& dstLen);
    ConversionRC ConvertUTF8toVisual(const char* src, size_t srcLen, char** dst, size_t& dstLen);
    ConversionRC ConvertUTF8toVisual(const std::string& src, std::string& dst);
    /// visual -> UTF-8 (drops the FE and FF bytes); capacity n + 1 bytes.
    ConversionRC ConvertVisualtoUTF8(const char* src, size_t srcLen, char* dst, size_t& dstLen);
    ConversionRC ConvertVisualtoUTF8(const char* src, size_t srcLen, char** dst, size_t& dstLen);
    ConversionRC ConvertVisualtoUTF8(const std::string& src, std::string& dst);
    /// UCS-2 -> visual; capacity 6n + 1 bytes; handled length n.
    ConversionRC ConvertUCS2toVisual(const char16_t* src, size_t srcLen, char* dst, size_t& dstLen);
    ConversionRC ConvertUCS2toVisual(const char16_t* src, size_t srcLen, char** dst, size_t& dstLen);
    ConversionRC ConvertUCS2toVisual(const std::u16string& src, std::string& dst);
    /// visual -> UCS-2; capacity (n / 3) * 2 units.
    ConversionRC ConvertVisualtoUCS2(const char* src, size_t srcLen, char16_t* dst, size_t& dstLen);
    ConversionRC ConvertVisualtoUCS2(const char* src, size_t srcLen, char16_t** dst, size_t& dstLen);
    ConversionRC ConvertVisualtoUCS2(const std::string& src, std::u16string& dst);
    /// The string forms of the visual conversions on the library's text types.
    ConversionRC ConvertUTF8toVisual(const Osl_UTF8String& src, Osl_VisualString& dst);
    ConversionRC ConvertVisualtoUTF8(const Osl_VisualString& src, Osl_UTF8String& dst);
    ConversionRC ConvertUCS2toVisual(const std::u16string& src, Osl_VisualString& dst);
    ConversionRC ConvertVisualtoUCS2(const Osl_VisualString& src, std::u16string& dst);

    /// Copy the bytes unchanged and return 0.
    static ConversionRC ConvertLocalEncodingtoUTF8(const std::string& src, std::string& dst);
    static ConversionRC ConvertUTF8toLocalEncoding(const std::string& src, std::string& dst);
    /// Always false: encodings are not guessed.
    static bool AutoDetectEncoding(const char* buffer, size_t length, std::string& encoding);
    static bool AutoDetectEncoding(const std::string& buffer, std::string& encoding);

    /// The start of the character after p: p + 1 + T(*p), T = 0 for 00-BF, 1 for C0-DF, 2 for
    /// E0-EF, 3 for F0-F7, 4 for F8-FB, 5 for FC-FF. Looks at *p only; may step past the end.
    static const char* GetNextCharUTF8(const char* p) { return p + 1 + kTrailing[static_cast<unsigned char>(*p)]; }
    /// Number of units before the first 0.
    static int64_t GetWLength(const char16_t* s);
    static int64_t GetWLength(const std::u16string& s);
    /// True for characters two columns wide (East Asian wide ranges).
    static bool IsWideUnicode(char16_t c);
    /// True when the UTF-8 character at p (len bytes; 0: the whole character) is one column wide.
    bool IsNarrowChar(const char* p, size_t len);
    bool IsNarrowChar(const std::string& s);
    /// The character type of the character at p (UTF-8 in Unicode mode, one byte of the current
    /// encoding otherwise); see EnumCharTypeMode.
    int GetCharType(EnumCharTypeMode mode, const char* p);
    /// Full Unicode case mapping of UTF-8 text. dstLen: capacity in, mapped length out, never more
    /// than the capacity. 0 when the mapped length equals srcLen; -2 when it differs (dstLen 0 if
    /// the mapping did not fit) or the source is illegal; -3 (dstLen 0) when the capacity is
    /// smaller than srcLen.
    ConversionRC ToUpperUTF8(const char* src, size_t srcLen, char* dst, size_t& dstLen);
    ConversionRC ToLowerUTF8(const char* src, size_t srcLen, char* dst, size_t& dstLen);

    /// Name of the process-wide UTF-8 locale (created once; QIBError "cannot create a UTF8 locale").
    static const std::string& GetLocaleUTF8();

protected:
    /// Name of the locale of the current encoding, fixed at its first use in the process.
    static const std::string& GetCurrentLocale();
    static ConversionRC Convert(unsigned from, unsigned to, const std::string& src, std::string& dst);

private:
    struct BufferConverter;
    ConversionRC convertCodePage(bool toTarget, const char* src, size_t srcLen, char* dst, size_t& dstLen);
    ConversionRC mapCase(bool upper, const char* src, size_t srcLen, char* dst, size_t& dstLen);

    static const unsigned char kTrailing[256];

    std::string current_;
    std::string target_;
    int handled_ = 0;
    ErrorHanldlingMode errorMode_ = ErrorHandlingDefault;
    std::unique_ptr<BufferConverter> buffer_;
    unsigned char direction_ = 0;  // 1: buffer_ converts current -> target
};
