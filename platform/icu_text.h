// platform/icu_text.h
// The text services the strings subsystem takes from ICU, in standard types: code-page
// converters, converter names, case mapping, character properties, locale names
// and collation. Implemented in platform/bridges/icu_text.cpp; nothing else includes ICU.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace osl::platform {

/// Hands the data directory to ICU and loads its data. Returns 0 or ICU's error code.
int icuStart(const std::string& dataDirectory);

/// The canonical ICU name of a converter name or alias, or empty when ICU knows none.
std::string icuCanonicalConverterName(const std::string& name);
/// True when the converter is single-byte (one byte per character, no state).
bool icuIsSingleByte(const std::string& name);
/// The Unicode of each byte of a single-byte converter: a code point, or -1 for an unmapped byte.
/// Empty when the converter is not single-byte.
std::vector<int32_t> icuSingleByteToUnicode(const std::string& name);
/// The byte each BMP code point converts to without fallbacks (65536 entries; -1: unmapped).
std::vector<int16_t> icuSingleByteFromUnicode(const std::string& name);

/// Outcome of a conversion step.
enum class IcuStatus { ok, noSpace, illegal, truncated, failed };

/// A pair of ICU converters converting from one encoding to another, stopping at the first
/// illegal or unmappable character. Each call converts one whole buffer: a stateful target ends
/// in its initial state, and consumed is exactly the source that the written bytes represent
/// (whole characters; on noSpace the longest prefix whose output fits).
class IcuConversion {
public:
    IcuConversion();
    ~IcuConversion();
    IcuConversion(const IcuConversion&) = delete;
    IcuConversion& operator=(const IcuConversion&) = delete;

    /// Opens both converters; false (with nothing open) when either name is unknown.
    bool open(const std::string& fromName, const std::string& toName);
    /// Converts src into dst (capacity dstLen); consumed and written are set in every case.
    IcuStatus convert(const char* src, size_t srcLen, char* dst, size_t dstLen, size_t& consumed,
                      size_t& written);

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

/// Full Unicode case mapping of UTF-8 text with the rules of the root locale. Returns the mapped
/// length (which may exceed dstLen; then dst holds nothing useful), or -1 on illegal input.
/// Opens nothing: safe from any thread.
int64_t icuMapCaseUtf8(bool upper, const char* src, size_t srcLen, char* dst, size_t dstLen);

/// Character properties of one code point.
int icuCharCategory(int32_t c);
/// The class bits of EnumCharTypeMode's CharTypeClass.
int icuCharClass(int32_t c);
/// True for right-to-left letters (bidirectional classes R and AL).
bool icuIsRightToLeft(int32_t c);

/// Month or weekday names of a locale in UTF-8: 12 months, or 7 weekdays from Sunday.
std::vector<std::string> icuCalendarNames(const std::string& locale, bool months, bool abbreviated);

/// Compares UTF-8 texts by the collation of a locale; caseless ignores case differences.
/// Returns std::nullopt when the locale has no collator.
std::optional<int> icuCollate(const std::string& locale, bool caseless, const std::string& a,
                              const std::string& b);

}  // namespace osl::platform
