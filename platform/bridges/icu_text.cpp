// platform/bridges/icu_text.cpp
// The one door to ICU for text: converters, aliases, case mapping, character properties, calendar
// names and collation. Returns results and codes; never throws QIBError, never logs.
#include "platform/icu_text.h"

#include <unicode/ucasemap.h>
#include <unicode/uchar.h>
#include <unicode/ucnv.h>
#include <unicode/ucol.h>
#include <unicode/udat.h>
#include <unicode/uclean.h>
#include <unicode/uloc.h>
#include <unicode/uset.h>
#include <unicode/ustring.h>
#include <unicode/utypes.h>

#include <cstring>
#include <mutex>

namespace osl::platform {
namespace {

struct ConverterCloser {
    void operator()(UConverter* c) const { ucnv_close(c); }
};
using ConverterPtr = std::unique_ptr<UConverter, ConverterCloser>;

// Opens a converter that stops at the first illegal or unmappable character.
ConverterPtr openStopping(const std::string& name) {
    UErrorCode status = U_ZERO_ERROR;
    ConverterPtr cnv(ucnv_open(name.c_str(), &status));
    if (U_FAILURE(status) || !cnv) return nullptr;
    ucnv_setToUCallBack(cnv.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    ucnv_setFromUCallBack(cnv.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    if (U_FAILURE(status)) return nullptr;
    return cnv;
}

std::string toUtf8(const UChar* s, int32_t n) {
    std::string out(static_cast<size_t>(n) * 3 + 1, '\0');
    int32_t produced = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strToUTF8(out.data(), static_cast<int32_t>(out.size()), &produced, s, n, &status);
    if (U_FAILURE(status)) return {};
    out.resize(static_cast<size_t>(produced));
    return out;
}

}  // namespace

int icuStart(const std::string& dataDirectory) {
    static std::mutex lock;
    std::lock_guard<std::mutex> guard(lock);
    if (!dataDirectory.empty()) u_setDataDirectory(dataDirectory.c_str());
    UErrorCode status = U_ZERO_ERROR;
    u_init(&status);
    return U_FAILURE(status) ? static_cast<int>(status) : 0;
}

std::string icuCanonicalConverterName(const std::string& name) {
    if (name.empty()) return {};
    UErrorCode status = U_ZERO_ERROR;
    const char* canonical = ucnv_getAlias(name.c_str(), 0, &status);
    if (U_FAILURE(status) || canonical == nullptr) return {};
    return canonical;
}

std::vector<std::string> icuConverterAliases(const std::string& name) {
    std::vector<std::string> aliases;
    if (name.empty()) return aliases;
    UErrorCode status = U_ZERO_ERROR;
    uint16_t count = ucnv_countAliases(name.c_str(), &status);
    for (uint16_t i = 0; U_SUCCESS(status) && i < count; ++i) {
        const char* alias = ucnv_getAlias(name.c_str(), i, &status);
        if (U_SUCCESS(status) && alias != nullptr) aliases.emplace_back(alias);
    }
    return aliases;
}

bool icuIsSingleByte(const std::string& name) {
    ConverterPtr cnv = openStopping(name);
    return cnv && ucnv_getType(cnv.get()) == UCNV_SBCS && ucnv_getMaxCharSize(cnv.get()) == 1;
}

std::vector<int32_t> icuSingleByteToUnicode(const std::string& name) {
    ConverterPtr cnv = openStopping(name);
    if (!cnv || ucnv_getType(cnv.get()) != UCNV_SBCS) return {};
    std::vector<int32_t> table(256, -1);
    for (int b = 0; b < 256; ++b) {
        char byte = static_cast<char>(b);
        UChar out[4];
        UErrorCode status = U_ZERO_ERROR;
        ucnv_resetToUnicode(cnv.get());
        int32_t n = ucnv_toUChars(cnv.get(), out, 4, &byte, 1, &status);
        if (U_SUCCESS(status) && n == 1) table[static_cast<size_t>(b)] = out[0];
    }
    return table;
}

std::vector<int16_t> icuSingleByteFromUnicode(const std::string& name) {
    ConverterPtr cnv = openStopping(name);
    if (!cnv || ucnv_getType(cnv.get()) != UCNV_SBCS) return {};
    std::vector<int16_t> table(65536, -1);
    // Only code points of the round-trip set can convert without fallbacks; each is asked of
    // ICU itself so that the table gives exactly ICU's answer.
    UErrorCode status = U_ZERO_ERROR;
    USet* set = uset_openEmpty();
    ucnv_getUnicodeSet(cnv.get(), set, UCNV_ROUNDTRIP_SET, &status);
    int32_t ranges = U_SUCCESS(status) ? uset_getItemCount(set) : 0;
    for (int32_t i = 0; i < ranges; ++i) {
        UChar32 start = 0, end = 0;
        UErrorCode itemStatus = U_ZERO_ERROR;
        if (uset_getItem(set, i, &start, &end, nullptr, 0, &itemStatus) != 0) continue;
        for (UChar32 c = start; c <= end && c < 0x10000; ++c) {
            if (c >= 0xD800 && c <= 0xDFFF) continue;
            UChar in = static_cast<UChar>(c);
            char out[4];
            UErrorCode convStatus = U_ZERO_ERROR;
            ucnv_resetFromUnicode(cnv.get());
            int32_t n = ucnv_fromUChars(cnv.get(), out, 4, &in, 1, &convStatus);
            if (U_SUCCESS(convStatus) && n == 1) table[static_cast<size_t>(c)] = static_cast<unsigned char>(out[0]);
        }
    }
    uset_close(set);
    return table;
}

struct IcuConversion::Impl {
    ConverterPtr from;
    ConverterPtr to;
    UChar pivot[1024];
};

IcuConversion::IcuConversion() = default;
IcuConversion::~IcuConversion() = default;

bool IcuConversion::open(const std::string& fromName, const std::string& toName) {
    auto impl = std::make_unique<Impl>();
    impl->from = openStopping(fromName);
    impl->to = openStopping(toName);
    if (!impl->from || !impl->to) return false;
    impl_ = std::move(impl);
    return true;
}

IcuStatus IcuConversion::convert(const char* src, size_t srcLen, char* dst, size_t dstLen, size_t& consumed,
                                 size_t& written) {
    consumed = 0;
    written = 0;
    if (!impl_) return IcuStatus::failed;
    const char* source = src;
    char* target = dst;
    UChar* pivotSource = impl_->pivot;
    UChar* pivotTarget = impl_->pivot;
    UErrorCode status = U_ZERO_ERROR;
    ucnv_convertEx(impl_->to.get(), impl_->from.get(), &target, dst + dstLen, &source, src + srcLen,
                   impl_->pivot, &pivotSource, &pivotTarget, impl_->pivot + 1024, true, true, &status);
    consumed = static_cast<size_t>(source - src);
    written = static_cast<size_t>(target - dst);
    if (U_SUCCESS(status)) return IcuStatus::ok;
    switch (status) {
        case U_BUFFER_OVERFLOW_ERROR: return IcuStatus::noSpace;
        case U_TRUNCATED_CHAR_FOUND: return IcuStatus::truncated;
        case U_INVALID_CHAR_FOUND:
        case U_ILLEGAL_CHAR_FOUND:
        case U_ILLEGAL_ESCAPE_SEQUENCE:
        case U_UNSUPPORTED_ESCAPE_SEQUENCE: return IcuStatus::illegal;
        default: return IcuStatus::failed;
    }
}

int64_t icuMapCaseUtf8(bool upper, const std::string& locale, const char* src, size_t srcLen, char* dst,
                       size_t dstLen) {
    UErrorCode status = U_ZERO_ERROR;
    UCaseMap* map = ucasemap_open(locale.c_str(), 0, &status);
    if (U_FAILURE(status)) return -1;
    int32_t n = upper ? ucasemap_utf8ToUpper(map, dst, static_cast<int32_t>(dstLen), src,
                                             static_cast<int32_t>(srcLen), &status)
                      : ucasemap_utf8ToLower(map, dst, static_cast<int32_t>(dstLen), src,
                                             static_cast<int32_t>(srcLen), &status);
    ucasemap_close(map);
    if (U_FAILURE(status) && status != U_BUFFER_OVERFLOW_ERROR) return -1;
    return n;
}

int icuCharCategory(int32_t c) { return u_charType(c); }

int icuCharClass(int32_t c) {
    int bits = 0;
    if (u_isUUppercase(c)) bits |= 0x1;
    if (u_isULowercase(c)) bits |= 0x2;
    if (u_isdigit(c)) bits |= 0x4;
    if (u_isUWhiteSpace(c)) bits |= 0x8;
    if (u_ispunct(c)) bits |= 0x10;
    if (u_iscntrl(c)) bits |= 0x20;
    if (u_isblank(c)) bits |= 0x40;
    if (u_isxdigit(c)) bits |= 0x80;
    if (u_isUAlphabetic(c)) bits |= 0x100;
    return bits;
}

bool icuIsRightToLeft(int32_t c) {
    UCharDirection d = u_charDirection(c);
    return d == U_RIGHT_TO_LEFT || d == U_RIGHT_TO_LEFT_ARABIC;
}

std::vector<std::string> icuCalendarNames(const std::string& locale, bool months, bool abbreviated) {
    std::vector<std::string> names;
    UErrorCode status = U_ZERO_ERROR;
    UDateFormat* fmt = udat_open(UDAT_NONE, UDAT_FULL, locale.c_str(), nullptr, 0, nullptr, 0, &status);
    if (U_FAILURE(status)) return names;
    UDateFormatSymbolType type = months ? (abbreviated ? UDAT_STANDALONE_SHORT_MONTHS : UDAT_STANDALONE_MONTHS)
                                        : (abbreviated ? UDAT_STANDALONE_SHORT_WEEKDAYS : UDAT_STANDALONE_WEEKDAYS);
    int32_t count = udat_countSymbols(fmt, type);
    // Weekday symbols start with an empty entry at index 0 (Sunday is 1).
    for (int32_t i = months ? 0 : 1; i < count && names.size() < (months ? 12u : 7u); ++i) {
        UChar buffer[128];
        UErrorCode symbolStatus = U_ZERO_ERROR;
        int32_t n = udat_getSymbols(fmt, type, i, buffer, 128, &symbolStatus);
        if (U_FAILURE(symbolStatus)) break;
        names.push_back(toUtf8(buffer, n));
    }
    udat_close(fmt);
    return names;
}

std::optional<int> icuCollate(const std::string& locale, bool caseless, const std::string& a, const std::string& b) {
    UErrorCode status = U_ZERO_ERROR;
    UCollator* coll = ucol_open(locale.c_str(), &status);
    if (U_FAILURE(status)) return std::nullopt;
    if (caseless) ucol_setStrength(coll, UCOL_SECONDARY);
    UCollationResult r = ucol_strcollUTF8(coll, a.data(), static_cast<int32_t>(a.size()), b.data(),
                                          static_cast<int32_t>(b.size()), &status);
    ucol_close(coll);
    if (U_FAILURE(status)) return std::nullopt;
    return static_cast<int>(r);
}

}  // namespace osl::platform
