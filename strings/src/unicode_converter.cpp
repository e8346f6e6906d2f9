// strings/src/unicode_converter.cpp
// Conversions between the legacy encoding, UTF-8, UCS-2 and the visual form. Reports through
// result codes, never exceptions (only a missing converter throws). ICU only via
// platform/icu_text.h; single-byte code pages to and from UTF-8 take the table path of
// single_byte_tables.cpp first and hand what it does not cover to ICU.
#include <vum-qib-osl/strings/unicode_converter.h>

#include <vum-qib-osl/log/log_msg.h>
#include <vum-qib-osl/misc/qib_error.h>
#include <vum-qib-osl/strings/unicode_configuration.h>
#include <vum-qib-osl/strings/utf8_string.h>
#include <vum-qib-osl/strings/visual_string.h>

#include "platform/icu_text.h"
#include "strings/src/single_byte_tables.h"
#include "strings/src/utf_transform.h"
#include "strings/src/visual_cells.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <mutex>
#include <vector>

namespace {

constexpr char kWhere[] = "strings/src/unicode_converter";

// Neither form fills its buffer first: the conversion writes what counts.
template <class D, class F>
ConversionRC allocating(size_t capacity, D** dst, size_t& dstLen, F convert) {
    std::unique_ptr<D[]> buffer(new D[capacity]);
    dstLen = capacity;
    ConversionRC rc = convert(buffer.get(), dstLen);
    *dst = buffer.release();
    return rc;
}

// Converts straight into the string; a source that is the string itself is copied first.
template <class S, class DStr, class F>
ConversionRC intoString(const S& src, DStr& dst, size_t capacity, F convert) {
    if (static_cast<const void*>(&src) == static_cast<const void*>(&dst)) {
        const S copy = src;
        return intoString(copy, dst, capacity, convert);
    }
    dst.resize(capacity);
    size_t length = capacity;
    ConversionRC rc = convert(src, dst.data(), length);
    dst.resize(std::min(length, capacity));
    return rc;
}

void logNoSpace(size_t srcLen, size_t capacity) {
    OSL_LOG(SevError, nullptr, "Osl_UnicodeConverter::BufferConverter")
        << "No space in the destination buffer ;" << " slen: " << srcLen << " dlen: " << capacity
        << ". DO Destination buffer length = 4* length of source buffer";
}

ConversionRC toRC(int rc) { return static_cast<ConversionRC>(rc); }

}  // namespace

const unsigned char Osl_UnicodeConverter::kTrailing[256] = {
    // 00-BF: one byte (a stray continuation byte is stepped over alone)
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
    // C0-DF
    1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1,
    // E0-EF, F0-F7, F8-FB, FC-FF
    2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 3, 3, 3, 3, 3, 3, 3, 3, 4, 4, 4, 4, 5, 5, 5, 5};

namespace {

// What a pair of encodings needs, worked out once per process and pair: asking the records
// and ICU's names again for every converter made on the stack cost more than short conversions.
struct Route {
    std::string fromConverter, toConverter;
    const osl::detail::SingleByteTables* toUtf8 = nullptr;    // source single-byte, destination UTF-8
    const osl::detail::SingleByteTables* fromUtf8 = nullptr;  // source UTF-8, destination single-byte
    bool identity = false;  // both sides are one converter: bytes go through
    bool utf8 = false;      // ... and it is UTF-8
    bool dbcs = false;      // the source has shift bytes 0x0E/0x0F
};

const Route& routeFor(const std::string& fromName, const std::string& toName) {
    static std::mutex lock;  // guards routes
    static auto* routes = new std::map<std::pair<std::string, std::string>, const Route*>;
    {
        std::lock_guard<std::mutex> guard(lock);
        if (auto it = routes->find({fromName, toName}); it != routes->end()) return *it->second;
    }
    Osl_UnicodeConfiguration* conf = Osl_UnicodeConfiguration::Instance();
    auto route = std::make_unique<Route>();
    route->fromConverter = conf->GetConverterName(fromName);
    route->toConverter = conf->GetConverterName(toName);
    const std::string from = osl::platform::icuCanonicalConverterName(route->fromConverter);
    const std::string to = osl::platform::icuCanonicalConverterName(route->toConverter);
    if (from.empty() || to.empty())
        throw QIBError("Cannot create a GCLocale for the encoding " + (from.empty() ? fromName : toName), 98, 12,
                       "strings/src/unicode_configuration", 583);
    route->identity = from == to;
    route->utf8 = route->identity && from == "UTF-8";
    route->dbcs = conf->IsDBCSEncoding(fromName);
    if (to == "UTF-8") route->toUtf8 = osl::detail::singleByteTables(route->fromConverter);
    if (from == "UTF-8") route->fromUtf8 = osl::detail::singleByteTables(route->toConverter);
    std::lock_guard<std::mutex> guard(lock);
    return *routes->emplace(std::make_pair(fromName, toName), route.release()).first->second;
}
}  // namespace

struct Osl_UnicodeConverter::BufferConverter {
    const Route* route = nullptr;
    std::unique_ptr<osl::platform::IcuConversion> conversion;  // opened when the tables do not do
    bool shiftOpen = false;  // the source consumed so far ends inside a shift-out run
    std::vector<char> work;  // the source with its shift columns, kept to save allocations
};

Osl_UnicodeConverter::Osl_UnicodeConverter() { Init(); }
Osl_UnicodeConverter::~Osl_UnicodeConverter() = default;

void Osl_UnicodeConverter::Init() {
    handled_ = 0;
    (void)Osl_UnicodeConfiguration::Instance();
    buffer_.reset();
}

void Osl_UnicodeConverter::SetCurrentEncoding(const std::string& name) {
    if (name == current_) return;
    current_ = name;
    Init();
}

void Osl_UnicodeConverter::SetTargetEncoding(const std::string& name) {
    if (name == target_) return;
    target_ = name;
    Init();
}

ConversionRC Osl_UnicodeConverter::convertCodePage(bool toTarget, const char* src, size_t srcLen, char* dst,
                                                   size_t& dstLen) {
    if (buffer_ && direction_ != (toTarget ? 1 : 0)) buffer_.reset();
    direction_ = toTarget ? 1 : 0;
    if (!buffer_) {
        auto buffer = std::make_unique<BufferConverter>();
        buffer->route = &routeFor(toTarget ? current_ : target_, toTarget ? target_ : current_);
        buffer_ = std::move(buffer);
    }
    BufferConverter& bc = *buffer_;
    const Route& route = *bc.route;
    const size_t capacity = dst == nullptr ? 0 : dstLen;
    if (route.identity) {  // a UTF-8 file name to a UTF-8 file system keeps every byte
        size_t n = std::min(srcLen, capacity);
        if (route.utf8 && n < srcLen)  // whole characters only
            while (n > 0 && (static_cast<unsigned char>(src[n]) & 0xC0) == 0x80) --n;
        if (n > 0) std::memcpy(dst, src, n);
        handled_ = static_cast<int>(n);
        dstLen = n;
        if (n == srcLen) return ConversionOK;
        logNoSpace(srcLen, capacity);
        return ConversionNoSpace;
    }

    // Double-byte EBCDIC: each shift byte keeps a column as a blank (SO -> 40 0E, SI -> 0F 40, an
    // empty run 0E 0F -> 40 40); a run left open by the source consumed so far is reopened first.
    // The state moves on only with the source that is consumed.
    const char* from = src;
    size_t fromLen = srcLen;
    const bool shifts = route.dbcs && (bc.shiftOpen || std::memchr(src, 0x0E, srcLen) != nullptr ||
                                       std::memchr(src, 0x0F, srcLen) != nullptr);
    if (shifts) {
        if (bc.work.size() < 2 * srcLen + 1) bc.work.resize(2 * srcLen + 1);
        char* w = bc.work.data();
        if (bc.shiftOpen) *w++ = 0x0E;
        for (size_t i = 0; i < srcLen; ++i) {
            const char b = src[i];
            if (b == 0x0E && i + 1 < srcLen && src[i + 1] == 0x0F) {
                *w++ = 0x40;
                *w++ = 0x40;
                ++i;
            } else if (b == 0x0E) {
                *w++ = 0x40;
                *w++ = 0x0E;
            } else if (b == 0x0F) {
                *w++ = 0x0F;
                *w++ = 0x40;
            } else {
                *w++ = b;
            }
        }
        from = bc.work.data();
        fromLen = static_cast<size_t>(w - from);
    }

    size_t consumed = 0, written = 0;
    osl::platform::IcuStatus status = osl::platform::IcuStatus::failed;
    if (route.toUtf8 != nullptr)
        status = osl::detail::fromSingleByte(*route.toUtf8, from, fromLen, dst, capacity, consumed, written);
    else if (route.fromUtf8 != nullptr)
        status = osl::detail::toSingleByte(*route.fromUtf8, from, fromLen, dst, capacity, consumed, written);
    if (status == osl::platform::IcuStatus::failed) {  // the rest (or all) through ICU
        if (!bc.conversion) {
            bc.conversion = std::make_unique<osl::platform::IcuConversion>();
            if (!bc.conversion->open(route.fromConverter, route.toConverter)) bc.conversion.reset();
        }
        size_t more = 0, moreWritten = 0;
        if (bc.conversion)
            status = bc.conversion->convert(from + consumed, fromLen - consumed, dst + written, capacity - written,
                                            more, moreWritten);
        consumed += more;
        written += moreWritten;
    }
    if (shifts) {  // back from the working text to the source bytes whose output is whole
        size_t original = consumed == fromLen ? srcLen : 0, length = bc.shiftOpen ? 1 : 0;
        while (original < srcLen) {
            const char b = src[original];
            const bool emptyRun = b == 0x0E && original + 1 < srcLen && src[original + 1] == 0x0F;
            const size_t after = length + (emptyRun || (b != 0x0E && b != 0x0F) ? 1 : 2);
            if (after > consumed) break;
            length = after;
            ++original;
            if (emptyRun) {  // its shift-in: the second blank
                if (length + 1 > consumed) break;
                ++length;
                ++original;
            }
        }
        consumed = original;
        for (size_t i = consumed; i-- > 0;) {
            if (src[i] == 0x0E || src[i] == 0x0F) {
                bc.shiftOpen = src[i] == 0x0E;
                break;
            }
        }
    }
    handled_ = static_cast<int>(consumed);
    dstLen = written;

    switch (status) {
        case osl::platform::IcuStatus::ok: return ConversionOK;
        case osl::platform::IcuStatus::noSpace:
            logNoSpace(srcLen, capacity);
            return ConversionNoSpace;
        default: return ConversionIllegal;
    }
}

// --- code-page conversions -----------------------------------------------------------------

ConversionRC Osl_UnicodeConverter::ConvertTargetEncodingtoCurrentEncoding(const char* src, size_t srcLen, char* dst,
                                                                          size_t& dstLen) {
    return convertCodePage(false, src, srcLen, dst, dstLen);
}
ConversionRC Osl_UnicodeConverter::ConvertTargetEncodingtoCurrentEncoding(const char* src, size_t srcLen, char** dst,
                                                                          size_t& dstLen) {
    return allocating(4 * srcLen + 1, dst, dstLen, [&](char* d, size_t& l) {
        return ConvertTargetEncodingtoCurrentEncoding(src, srcLen, d, l);
    });
}
ConversionRC Osl_UnicodeConverter::ConvertTargetEncodingtoCurrentEncoding(const std::string& src, std::string& dst) {
    return intoString(src, dst, 4 * src.size() + 1, [&](const auto& s, char* d, size_t& l) {
        return ConvertTargetEncodingtoCurrentEncoding(s.data(), s.size(), d, l);
    });
}

ConversionRC Osl_UnicodeConverter::ConvertCurrentEncodingtoTargetEncoding(const char* src, size_t srcLen, char* dst,
                                                                          size_t& dstLen) {
    return convertCodePage(true, src, srcLen, dst, dstLen);
}
ConversionRC Osl_UnicodeConverter::ConvertCurrentEncodingtoTargetEncoding(const char* src, size_t srcLen, char** dst,
                                                                          size_t& dstLen) {
    return allocating(4 * srcLen + 1, dst, dstLen, [&](char* d, size_t& l) {
        return ConvertCurrentEncodingtoTargetEncoding(src, srcLen, d, l);
    });
}
ConversionRC Osl_UnicodeConverter::ConvertCurrentEncodingtoTargetEncoding(const std::string& src, std::string& dst) {
    return intoString(src, dst, 4 * src.size() + 1, [&](const auto& s, char* d, size_t& l) {
        return ConvertCurrentEncodingtoTargetEncoding(s.data(), s.size(), d, l);
    });
}

ConversionRC Osl_UnicodeConverter::ConvertUTF8toCurrentEncoding(const char* src, size_t srcLen, char* dst,
                                                                size_t& dstLen) {
    SetTargetEncoding("UTF-8");
    return convertCodePage(false, src, srcLen, dst, dstLen);
}
ConversionRC Osl_UnicodeConverter::ConvertUTF8toCurrentEncoding(const char* src, size_t srcLen, char** dst,
                                                                size_t& dstLen) {
    return allocating(4 * srcLen + 4, dst, dstLen,
                      [&](char* d, size_t& l) { return ConvertUTF8toCurrentEncoding(src, srcLen, d, l); });
}
ConversionRC Osl_UnicodeConverter::ConvertUTF8toCurrentEncoding(const std::string& src, std::string& dst) {
    return intoString(src, dst, 4 * src.size() + 4, [&](const auto& s, char* d, size_t& l) {
        return ConvertUTF8toCurrentEncoding(s.data(), s.size(), d, l);
    });
}

ConversionRC Osl_UnicodeConverter::ConvertCurrentEncodingtoUTF8(const char* src, size_t srcLen, char* dst,
                                                                size_t& dstLen) {
    SetTargetEncoding("UTF-8");
    return convertCodePage(true, src, srcLen, dst, dstLen);
}
ConversionRC Osl_UnicodeConverter::ConvertCurrentEncodingtoUTF8(const char* src, size_t srcLen, char** dst,
                                                                size_t& dstLen) {
    return allocating(3 * srcLen + 1, dst, dstLen,
                      [&](char* d, size_t& l) { return ConvertCurrentEncodingtoUTF8(src, srcLen, d, l); });
}
ConversionRC Osl_UnicodeConverter::ConvertCurrentEncodingtoUTF8(const std::string& src, std::string& dst) {
    return intoString(src, dst, 3 * src.size() + 1, [&](const auto& s, char* d, size_t& l) {
        return ConvertCurrentEncodingtoUTF8(s.data(), s.size(), d, l);
    });
}

// --- UCS-2 and UTF-8 -------------------------------------------------------------------------

ConversionRC Osl_UnicodeConverter::ConvertUCS2toUTF8(const char16_t* src, size_t srcLen, char* dst, size_t& dstLen) {
    size_t consumed = 0, written = 0;
    int rc = osl::detail::utf16ToUtf8(src, srcLen, dst, dst == nullptr ? 0 : dstLen, consumed, written);
    handled_ = static_cast<int>(consumed);
    dstLen = written;
    return toRC(rc);
}
ConversionRC Osl_UnicodeConverter::ConvertUCS2toUTF8(const char16_t* src, size_t srcLen, char** dst, size_t& dstLen) {
    return allocating(3 * srcLen + 1, dst, dstLen, [&](char* d, size_t& l) { return ConvertUCS2toUTF8(src, srcLen, d, l); });
}
ConversionRC Osl_UnicodeConverter::ConvertUCS2toUTF8(const std::u16string& src, std::string& dst) {
    return intoString(src, dst, 3 * src.size() + 1, [&](const auto& s, char* d, size_t& l) {
        return ConvertUCS2toUTF8(s.data(), s.size(), d, l);
    });
}

ConversionRC Osl_UnicodeConverter::ConvertUTF8toUCS2(const char* src, size_t srcLen, char16_t* dst, size_t& dstLen) {
    size_t consumed = 0, written = 0;
    int rc = osl::detail::utf8ToUtf16(src, srcLen, dst, dst == nullptr ? 0 : dstLen, consumed, written);
    handled_ = static_cast<int>(consumed);
    dstLen = written;
    return toRC(rc);
}
ConversionRC Osl_UnicodeConverter::ConvertUTF8toUCS2(const char* src, size_t srcLen, char16_t** dst, size_t& dstLen) {
    return allocating(srcLen + 1, dst, dstLen, [&](char16_t* d, size_t& l) { return ConvertUTF8toUCS2(src, srcLen, d, l); });
}
ConversionRC Osl_UnicodeConverter::ConvertUTF8toUCS2(const std::string& src, std::u16string& dst) {
    return intoString(src, dst, src.size() + 1, [&](const auto& s, char16_t* d, size_t& l) {
        return ConvertUTF8toUCS2(s.data(), s.size(), d, l);
    });
}

// --- visual form -----------------------------------------------------------------------------

ConversionRC Osl_UnicodeConverter::ConvertUTF8toVisual(const char* src, size_t srcLen, char* dst, size_t& dstLen) {
    char none = 0;  // no buffer: no room, but the walk still stops where the first cell would go
    size_t handled = 0;
    bool full = false;
    dstLen = osl::detail::utf8ToCells(src, srcLen, dst == nullptr ? &none : dst, dst == nullptr ? 0 : dstLen,
                                      handled, full);
    handled_ = static_cast<int>(handled);
    return full ? ConversionNoSpace : ConversionOK;
}
ConversionRC Osl_UnicodeConverter::ConvertUTF8toVisual(const char* src, size_t srcLen, char** dst, size_t& dstLen) {
    return allocating(6 * srcLen + 1, dst, dstLen, [&](char* d, size_t& l) { return ConvertUTF8toVisual(src, srcLen, d, l); });
}
// Visual editing converts small texts constantly: measure first, then write into the exact size.
ConversionRC Osl_UnicodeConverter::ConvertUTF8toVisual(const std::string& src, std::string& dst) {
    if (&src == &dst) {
        const std::string copy = src;
        return ConvertUTF8toVisual(copy, dst);
    }
    handled_ = static_cast<int>(osl::detail::assignCells(src.data(), src.size(), dst));
    return ConversionOK;
}

ConversionRC Osl_UnicodeConverter::ConvertVisualtoUTF8(const char* src, size_t srcLen, char* dst, size_t& dstLen) {
    size_t capacity = dst == nullptr ? 0 : dstLen;
    size_t w = 0, i = 0;
    ConversionRC rc = ConversionOK;
    for (; i < srcLen; ++i) {
        auto b = static_cast<unsigned char>(src[i]);
        if (b >= osl::detail::kCellFill) continue;  // the fill of a cell and the wide pad
        if (w == capacity) {
            rc = ConversionNoSpace;
            break;
        }
        dst[w++] = src[i];
    }
    handled_ = static_cast<int>(i);
    dstLen = w;
    return rc;
}
ConversionRC Osl_UnicodeConverter::ConvertVisualtoUTF8(const char* src, size_t srcLen, char** dst, size_t& dstLen) {
    return allocating(srcLen + 1, dst, dstLen, [&](char* d, size_t& l) { return ConvertVisualtoUTF8(src, srcLen, d, l); });
}
ConversionRC Osl_UnicodeConverter::ConvertVisualtoUTF8(const std::string& src, std::string& dst) {
    return intoString(src, dst, src.size() + 1, [&](const auto& s, char* d, size_t& l) {
        return ConvertVisualtoUTF8(s.data(), s.size(), d, l);
    });
}

ConversionRC Osl_UnicodeConverter::ConvertUCS2toVisual(const char16_t* src, size_t srcLen, char* dst, size_t& dstLen) {
    char* utf8 = nullptr;
    size_t utf8Len = 0;
    ConvertUCS2toUTF8(src, srcLen, &utf8, utf8Len);
    std::unique_ptr<char[]> owner(utf8);
    ConversionRC rc = ConvertUTF8toVisual(utf8, utf8Len, dst, dstLen);
    handled_ = static_cast<int>(srcLen);
    return rc;
}
ConversionRC Osl_UnicodeConverter::ConvertUCS2toVisual(const char16_t* src, size_t srcLen, char** dst, size_t& dstLen) {
    return allocating(6 * srcLen + 1, dst, dstLen, [&](char* d, size_t& l) { return ConvertUCS2toVisual(src, srcLen, d, l); });
}
ConversionRC Osl_UnicodeConverter::ConvertUCS2toVisual(const std::u16string& src, std::string& dst) {
    return intoString(src, dst, 6 * src.size() + 1, [&](const auto& s, char* d, size_t& l) {
        return ConvertUCS2toVisual(s.data(), s.size(), d, l);
    });
}

ConversionRC Osl_UnicodeConverter::ConvertVisualtoUCS2(const char* src, size_t srcLen, char16_t* dst, size_t& dstLen) {
    char* utf8 = nullptr;
    size_t utf8Len = 0;
    ConvertVisualtoUTF8(src, srcLen, &utf8, utf8Len);
    std::unique_ptr<char[]> owner(utf8);
    return ConvertUTF8toUCS2(utf8, utf8Len, dst, dstLen);
}
ConversionRC Osl_UnicodeConverter::ConvertVisualtoUCS2(const char* src, size_t srcLen, char16_t** dst, size_t& dstLen) {
    return allocating((srcLen / 3) * 2, dst, dstLen, [&](char16_t* d, size_t& l) { return ConvertVisualtoUCS2(src, srcLen, d, l); });
}
ConversionRC Osl_UnicodeConverter::ConvertVisualtoUCS2(const std::string& src, std::u16string& dst) {
    return intoString(src, dst, (src.size() / 3) * 2, [&](const auto& s, char16_t* d, size_t& l) {
        return ConvertVisualtoUCS2(s.data(), s.size(), d, l);
    });
}

ConversionRC Osl_UnicodeConverter::ConvertUTF8toVisual(const Osl_UTF8String& src, Osl_VisualString& dst) {
    dst.ClearMaps();
    return ConvertUTF8toVisual(src.ToString(), dst.cells_);
}
ConversionRC Osl_UnicodeConverter::ConvertVisualtoUTF8(const Osl_VisualString& src, Osl_UTF8String& dst) {
    return ConvertVisualtoUTF8(src.cells_, static_cast<std::string&>(dst));
}
ConversionRC Osl_UnicodeConverter::ConvertUCS2toVisual(const std::u16string& src, Osl_VisualString& dst) {
    dst.ClearMaps();
    return ConvertUCS2toVisual(src, dst.cells_);
}
ConversionRC Osl_UnicodeConverter::ConvertVisualtoUCS2(const Osl_VisualString& src, std::u16string& dst) {
    return ConvertVisualtoUCS2(src.cells_, dst);
}

// --- copies and detection --------------------------------------------------------------------

ConversionRC Osl_UnicodeConverter::ConvertLocalEncodingtoUTF8(const std::string& src, std::string& dst) {
    dst = src;
    return ConversionOK;
}
ConversionRC Osl_UnicodeConverter::ConvertUTF8toLocalEncoding(const std::string& src, std::string& dst) {
    dst = src;
    return ConversionOK;
}
ConversionRC Osl_UnicodeConverter::Convert(unsigned, unsigned, const std::string& src, std::string& dst) {
    dst = src;
    return ConversionOK;
}
bool Osl_UnicodeConverter::AutoDetectEncoding(const char*, size_t, std::string&) { return false; }
bool Osl_UnicodeConverter::AutoDetectEncoding(const std::string&, std::string&) { return false; }

// --- character services ----------------------------------------------------------------------

int64_t Osl_UnicodeConverter::GetWLength(const char16_t* s) {
    if (s == nullptr) return 0;
    int64_t n = 0;
    while (s[n] != 0) ++n;
    return n;
}
int64_t Osl_UnicodeConverter::GetWLength(const std::u16string& s) { return GetWLength(s.c_str()); }

bool Osl_UnicodeConverter::IsWideUnicode(char16_t c) { return osl::detail::isWideCodePoint(c); }

bool Osl_UnicodeConverter::IsNarrowChar(const char* p, size_t len) {
    if (p == nullptr) return true;
    if (len == 0) len = static_cast<size_t>(GetNextCharUTF8(p) - p);
    char16_t units[8];
    size_t consumed = 0, written = 0;
    osl::detail::utf8ToUtf16(p, len, units, 8, consumed, written);
    return written == 0 || !IsWideUnicode(units[0]);
}
bool Osl_UnicodeConverter::IsNarrowChar(const std::string& s) {
    return s.empty() || IsNarrowChar(s.data(), s.size());
}

namespace {
struct CurrentLocale {
    std::string name;
    std::vector<int32_t> table;  // bytes of a single-byte current encoding
};
const CurrentLocale& currentLocale() {
    static const CurrentLocale* locale = [] {
        auto* l = new CurrentLocale;
        std::string encoding = Osl_UnicodeConfiguration::GetCurrentEncoding();
        l->name = "." + encoding;
        std::string converter = Osl_UnicodeConfiguration::Instance()->GetConverterName(encoding);
        if (osl::platform::icuCanonicalConverterName(converter).empty()) {
            std::string name = l->name;
            delete l;
            throw QIBError("cannot create a " + name + " locale", 12, 12, kWhere, 1246);
        }
        l->table = osl::platform::icuSingleByteToUnicode(converter);
        return l;
    }();
    return *locale;
}
}  // namespace

const std::string& Osl_UnicodeConverter::GetCurrentLocale() { return currentLocale().name; }

const std::string& Osl_UnicodeConverter::GetLocaleUTF8() {
    // Case mapping and typing of UTF-8 follow the language-neutral rules of ICU's root locale.
    static const std::string* locale = [] {
        char probe[4];
        if (osl::platform::icuMapCaseUtf8(true, "a", 1, probe, sizeof probe) != 1)
            throw QIBError("cannot create a UTF8 locale", 12, 12, kWhere, 1226);
        return new std::string(".UTF-8");
    }();
    return *locale;
}

int Osl_UnicodeConverter::GetCharType(EnumCharTypeMode mode, const char* p) {
    if (p == nullptr) return 0;
    int32_t c;
    if (Osl_UnicodeConfiguration::IsUnicodeMode()) {
        (void)GetLocaleUTF8();
        size_t available = 0;
        while (available < 4 && p[available] != '\0') ++available;
        size_t len = 0;
        c = osl::detail::decodeUtf8(p, available == 0 ? 1 : available, len);
    } else {
        const CurrentLocale& locale = currentLocale();
        auto b = static_cast<unsigned char>(*p);
        c = locale.table.size() == 256 ? locale.table[b] : (b < 0x80 ? b : -1);
    }
    if (c < 0) return 0;
    return mode == CharTypeCategory ? osl::platform::icuCharCategory(c) : osl::platform::icuCharClass(c);
}

ConversionRC Osl_UnicodeConverter::mapCase(bool upper, const char* src, size_t srcLen, char* dst, size_t& dstLen) {
    (void)GetLocaleUTF8();
    const size_t capacity = dst == nullptr ? 0 : dstLen;
    int64_t n = osl::platform::icuMapCaseUtf8(upper, src, srcLen, dst, capacity);
    const auto mapped = static_cast<size_t>(n);
    if (n < 0 || mapped != srcLen) {  // a mapping that did not fit leaves nothing to show
        dstLen = n < 0 || mapped > capacity ? 0 : mapped;
        return ConversionIllegal;
    }
    if (mapped > capacity) {
        dstLen = 0;
        return ConversionNoSpace;
    }
    dstLen = mapped;
    return ConversionOK;
}

ConversionRC Osl_UnicodeConverter::ToUpperUTF8(const char* src, size_t srcLen, char* dst, size_t& dstLen) {
    return mapCase(true, src, srcLen, dst, dstLen);
}
ConversionRC Osl_UnicodeConverter::ToLowerUTF8(const char* src, size_t srcLen, char* dst, size_t& dstLen) {
    return mapCase(false, src, srcLen, dst, dstLen);
}
