// platform/bridges/icu_text.cpp
// The one door to ICU for text: converters, converter names, case mapping, character properties, calendar
// names and collation. Returns results and codes; never throws QIBError, never logs.
#include "platform/icu_text.h"

#include <unicode/casemap.h>
#include <unicode/uchar.h>
#include <unicode/ucnv.h>
#include <unicode/ucol.h>
#include <unicode/udat.h>
#include <unicode/uclean.h>
#include <unicode/uloc.h>
#include <unicode/uset.h>
#include <unicode/ustring.h>
#include <unicode/utypes.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <mutex>
#include <utility>

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
    std::vector<UChar> pivot;       // the source as UTF-16
    std::vector<int32_t> offsets;   // for each pivot unit: the source offset of its character
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

namespace {

IcuStatus statusOf(UErrorCode status) {
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

// The whole of pivot[0, units) from Unicode, flushed (a stateful encoding ends in its initial
// state); the number of bytes, or -1 when they do not fit in capacity.
int64_t fromUnicodeFlushed(UConverter* to, const UChar* pivot, size_t units, char* dst, size_t capacity) {
    ucnv_resetFromUnicode(to);
    char* target = dst;
    const UChar* source = pivot;
    UErrorCode status = U_ZERO_ERROR;
    ucnv_fromUnicode(to, &target, dst + capacity, &source, pivot + units, nullptr, true, &status);
    ucnv_resetFromUnicode(to);
    if (U_FAILURE(status)) return -1;
    return target - dst;
}

}  // namespace

// A conversion that does not go through whole takes two passes through a pivot of UTF-16 with
// offsets rather than ucnv_convertEx: its read-ahead consumes source that the written output does
// not represent. Where the output stops early, it is cut back to whole characters and redone
// flushed, so that the consumed length is exact and a stateful target ends in its initial state.
IcuStatus IcuConversion::convert(const char* src, size_t srcLen, char* dst, size_t dstLen, size_t& consumed,
                                 size_t& written) {
    consumed = 0;
    written = 0;
    if (!impl_) return IcuStatus::failed;
    Impl& m = *impl_;
    UConverter* from = m.from.get();
    UConverter* to = m.to.get();

    // Most calls convert everything into room enough: ucnv_convertEx does that fastest, and when
    // it does all of it, the read-ahead below cannot matter. Anything else starts over below.
    {
        UErrorCode status = U_ZERO_ERROR;
        const char* source = src;
        char* target = dst;
        UChar pivot[1024];
        UChar* pivotSource = pivot;
        UChar* pivotTarget = pivot;
        ucnv_convertEx(to, from, &target, dst + dstLen, &source, src + srcLen, pivot, &pivotSource, &pivotTarget,
                       pivot + 1024, true, true, &status);
        if (U_SUCCESS(status) && source == src + srcLen) {
            consumed = srcLen;
            written = static_cast<size_t>(target - dst);
            ucnv_resetToUnicode(from);
            ucnv_resetFromUnicode(to);
            return IcuStatus::ok;
        }
    }

    // Source -> pivot: a source byte gives at most two units (sequence mappings aside, which
    // only take a second round).
    m.pivot.resize(srcLen * 2 + 16);
    m.offsets.resize(m.pivot.size());
    ucnv_resetToUnicode(from);
    const char* source = src;
    size_t units = 0;
    IcuStatus sourceStatus = IcuStatus::ok;
    size_t sourceGood = srcLen;  // source represented by the pivot
    for (;;) {
        UErrorCode status = U_ZERO_ERROR;
        const auto roundStart = static_cast<int32_t>(source - src);
        UChar* pivotEnd = m.pivot.data() + units;
        ucnv_toUnicode(from, &pivotEnd, m.pivot.data() + m.pivot.size(), &source, src + srcLen,
                       m.offsets.data() + units, true, &status);
        const size_t produced = static_cast<size_t>(pivotEnd - m.pivot.data());
        for (size_t i = units; i < produced; ++i)  // -1: output held over from the round before
            m.offsets[i] = m.offsets[i] < 0 ? (i > 0 ? m.offsets[i - 1] : 0) : m.offsets[i] + roundStart;
        units = produced;
        if (status == U_BUFFER_OVERFLOW_ERROR) {
            m.pivot.resize(m.pivot.size() * 2);
            m.offsets.resize(m.pivot.size());
            continue;
        }
        if (U_FAILURE(status)) {
            char bad[32];
            int8_t badLen = sizeof bad;
            UErrorCode ignored = U_ZERO_ERROR;
            ucnv_getInvalidChars(from, bad, &badLen, &ignored);
            sourceStatus = statusOf(status);
            const size_t at = static_cast<size_t>(source - src);
            sourceGood = at - std::min(at, U_SUCCESS(ignored) ? static_cast<size_t>(badLen) : size_t{0});
        }
        break;
    }
    ucnv_resetToUnicode(from);
    // Units of a character cut short by the error belong to no whole character.
    while (units > 0 && static_cast<size_t>(m.offsets[units - 1]) >= sourceGood) --units;

    // Pivot -> destination.
    const UChar* pivotSource = m.pivot.data();
    char* target = dst;
    UErrorCode status = U_ZERO_ERROR;
    ucnv_resetFromUnicode(to);
    ucnv_fromUnicode(to, &target, dst + dstLen, &pivotSource, m.pivot.data() + units, nullptr, true, &status);
    if (U_SUCCESS(status)) {
        ucnv_resetFromUnicode(to);
        consumed = sourceGood;
        written = static_cast<size_t>(target - dst);
        return sourceStatus;
    }
    IcuStatus targetStatus = statusOf(status);
    size_t keep = static_cast<size_t>(pivotSource - m.pivot.data());
    if (targetStatus == IcuStatus::illegal) {
        UChar bad[8];
        int8_t badLen = 8;
        UErrorCode ignored = U_ZERO_ERROR;
        ucnv_getInvalidUChars(to, bad, &badLen, &ignored);
        keep -= std::min(keep, U_SUCCESS(ignored) ? static_cast<size_t>(badLen) : size_t{1});
    }
    ucnv_resetFromUnicode(to);
    // Whole source characters only: no unit of a character whose other units are left out.
    auto wholeCut = [&](size_t k) {
        while (k > 0 && k < units && m.offsets[k] == m.offsets[k - 1]) --k;
        return k;
    };
    keep = wholeCut(keep);
    int64_t n = fromUnicodeFlushed(to, m.pivot.data(), keep, dst, dstLen);
    if (n < 0) {  // the flushed end did not fit: the largest prefix that does
        targetStatus = IcuStatus::noSpace;
        size_t low = 0, high = keep;  // low fits, high does not
        while (high - low > 1) {
            size_t mid = wholeCut(low + (high - low) / 2);
            if (mid <= low) mid = low + 1;
            if (fromUnicodeFlushed(to, m.pivot.data(), mid, dst, dstLen) >= 0) low = mid;
            else high = mid;
        }
        keep = wholeCut(low);
        n = fromUnicodeFlushed(to, m.pivot.data(), keep, dst, dstLen);
        if (n < 0) n = 0;
    }
    written = static_cast<size_t>(n);
    consumed = keep < units ? static_cast<size_t>(m.offsets[keep]) : sourceGood;
    return targetStatus;
}

int64_t icuMapCaseUtf8(bool upper, const char* src, size_t srcLen, char* dst, size_t dstLen) {
    // The static mappers of the root locale need no object: nothing is opened per call.
    UErrorCode status = U_ZERO_ERROR;
    const auto n = static_cast<int32_t>(srcLen);
    const auto cap = static_cast<int32_t>(dstLen);
    int32_t mapped = upper ? icu::CaseMap::utf8ToUpper("", 0, src, n, dst, cap, nullptr, status)
                           : icu::CaseMap::utf8ToLower("", 0, src, n, dst, cap, nullptr, status);
    if (U_FAILURE(status) && status != U_BUFFER_OVERFLOW_ERROR) return -1;
    return mapped;
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
    // One collator per thread, locale and strength: opening one costs far more than a comparison.
    struct CollatorCloser {
        void operator()(UCollator* c) const { ucol_close(c); }
    };
    thread_local std::map<std::pair<std::string, bool>, std::unique_ptr<UCollator, CollatorCloser>> collators;
    auto& slot = collators[{locale, caseless}];
    UErrorCode status = U_ZERO_ERROR;
    if (!slot) {
        slot.reset(ucol_open(locale.c_str(), &status));
        if (U_FAILURE(status) || !slot) {
            slot.reset();
            return std::nullopt;
        }
        if (caseless) ucol_setStrength(slot.get(), UCOL_SECONDARY);
    }
    UCollationResult r = ucol_strcollUTF8(slot.get(), a.data(), static_cast<int32_t>(a.size()), b.data(),
                                          static_cast<int32_t>(b.size()), &status);
    if (U_FAILURE(status)) return std::nullopt;
    return static_cast<int>(r);
}

}  // namespace osl::platform
