// strings/src/unicode_converter.cpp
// Conversions between the legacy encoding, UTF-8, UCS-2 and the visual form. Reports through
// result codes, never exceptions (only a missing converter throws). ICU only via
// platform/icu_text.h; single-byte code pages to and from UTF-8 go through tables taken once
// from ICU's own mapping, and hand anything the tables do not cover to ICU.
#include <vum-qib-osl/strings/unicode_converter.h>

#include <vum-qib-osl/log/log_msg.h>
#include <vum-qib-osl/misc/qib_error.h>
#include <vum-qib-osl/strings/unicode_configuration.h>
#include <vum-qib-osl/strings/utf8_string.h>
#include <vum-qib-osl/strings/visual_string.h>

#include "platform/icu_text.h"
#include "strings/src/utf_transform.h"
#include "strings/src/visual_cells.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <mutex>
#include <vector>

namespace {

constexpr char kWhere[] = "strings/src/unicode_converter";

// The Unicode of every byte of a single-byte code page as UTF-8, and the byte of every BMP code
// point; both asked of ICU once per process and code page.
struct SingleByteTables {
    uint8_t utf8Length[256] = {};  // 0: unmapped
    char utf8[256][4] = {};
    std::vector<int16_t> fromBmp;  // -1: unmapped
    bool asciiIdentity = true;     // bytes 00-7F are themselves
};

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
            osl::detail::utf16ToUtf8(&unit, 1, t->utf8[b], 4, consumed, written);
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

bool isUtf8Converter(const std::string& converter) {
    return osl::platform::icuCanonicalConverterName(converter) == "UTF-8";
}

inline bool asciiWord(const char* p) {
    uint64_t word;
    std::memcpy(&word, p, 8);
    return (word & 0x8080808080808080ULL) == 0;
}

// Single-byte code page -> UTF-8 through the table; stops where the table has no answer.
// Positions are kept in locals: stores through char* could alias the references.
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

template <class D, class F>
ConversionRC allocating(size_t capacity, D** dst, size_t& dstLen, F convert) {
    auto buffer = std::make_unique<D[]>(capacity);
    dstLen = capacity;
    ConversionRC rc = convert(buffer.get(), dstLen);
    *dst = buffer.release();
    return rc;
}

template <class DStr, class F>
ConversionRC viaBuffer(DStr& dst, F convert) {
    typename DStr::value_type* buffer = nullptr;
    size_t length = 0;
    ConversionRC rc = convert(&buffer, length);
    if (buffer != nullptr) {
        dst.assign(buffer, length);
        delete[] buffer;
    }
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

struct Osl_UnicodeConverter::BufferConverter {
    osl::platform::IcuConversion conversion;
    const SingleByteTables* toUtf8 = nullptr;    // source is a single-byte code page, destination UTF-8
    const SingleByteTables* fromUtf8 = nullptr;  // source is UTF-8, destination a single-byte code page
    bool identity = false;                       // both sides are one converter: bytes go through
    bool dbcs = false;                           // source has shift bytes 0x0E/0x0F
    bool shiftOpen = false;                      // inside a shift-out run at the end of the last call
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
        Osl_UnicodeConfiguration* conf = Osl_UnicodeConfiguration::Instance();
        const std::string& fromName = toTarget ? current_ : target_;
        const std::string& toName = toTarget ? target_ : current_;
        std::string fromConverter = conf->GetConverterName(fromName);
        std::string toConverter = conf->GetConverterName(toName);
        auto buffer = std::make_unique<BufferConverter>();
        if (!buffer->conversion.open(fromConverter, toConverter)) {
            const std::string& bad =
                osl::platform::icuCanonicalConverterName(fromConverter).empty() ? fromName : toName;
            throw QIBError("Cannot create a GCLocale for the encoding " + bad, 98, 12,
                           "strings/src/unicode_configuration", 583);
        }
        buffer->identity = osl::platform::icuCanonicalConverterName(fromConverter) ==
                           osl::platform::icuCanonicalConverterName(toConverter);
        buffer->dbcs = conf->IsDBCSEncoding(fromName);
        if (isUtf8Converter(toConverter)) buffer->toUtf8 = singleByteTables(fromConverter);
        if (isUtf8Converter(fromConverter)) buffer->fromUtf8 = singleByteTables(toConverter);
        buffer_ = std::move(buffer);
    }
    BufferConverter& bc = *buffer_;
    const size_t capacity = dst == nullptr ? 0 : dstLen;
    if (bc.identity) {  // a UTF-8 file name to a UTF-8 file system keeps every byte
        size_t n = std::min(srcLen, capacity);
        if (n > 0) std::memcpy(dst, src, n);
        handled_ = static_cast<int>(n);
        dstLen = n;
        if (n == srcLen) return ConversionOK;
        logNoSpace(srcLen, capacity);
        return ConversionNoSpace;
    }

    // Double-byte EBCDIC: each shift byte keeps a column as a blank (SO -> 40 0E, SI -> 0F 40, an
    // empty run 0E 0F -> 40 40); a run left open by the last call is reopened first.
    std::vector<char> work;
    std::vector<size_t> workEnd;  // for each source byte: the working length after it
    const char* from = src;
    size_t fromLen = srcLen;
    if (bc.dbcs) {
        size_t shifts = 0;
        for (size_t i = 0; i < srcLen; ++i)
            if (src[i] == 0x0E || src[i] == 0x0F) ++shifts;
        if (shifts > 0 || bc.shiftOpen) {
            work.reserve(srcLen + shifts + 1);
            workEnd.resize(srcLen);
            if (bc.shiftOpen) work.push_back(0x0E);
            for (size_t i = 0; i < srcLen; ++i) {
                char b = src[i];
                if (b == 0x0E && i + 1 < srcLen && src[i + 1] == 0x0F) {
                    work.push_back(0x40);
                    workEnd[i] = work.size();
                    work.push_back(0x40);
                    workEnd[++i] = work.size();
                    continue;
                }
                if (b == 0x0E) {
                    work.push_back(0x40);
                    work.push_back(0x0E);
                    bc.shiftOpen = true;
                } else if (b == 0x0F) {
                    work.push_back(0x0F);
                    work.push_back(0x40);
                    bc.shiftOpen = false;
                } else {
                    work.push_back(b);
                }
                workEnd[i] = work.size();
            }
            from = work.data();
            fromLen = work.size();
        }
    }

    size_t consumed = 0, written = 0;
    osl::platform::IcuStatus status = osl::platform::IcuStatus::failed;
    if (bc.toUtf8 != nullptr || bc.fromUtf8 != nullptr) {
        status = bc.toUtf8 != nullptr ? fromSingleByte(*bc.toUtf8, from, fromLen, dst, capacity, consumed, written)
                                      : toSingleByte(*bc.fromUtf8, from, fromLen, dst, capacity, consumed, written);
    }
    if (status == osl::platform::IcuStatus::failed) {  // the rest (or all) through ICU
        size_t more = 0, moreWritten = 0;
        status = bc.conversion.convert(from + consumed, fromLen - consumed, dst + written, capacity - written, more,
                                       moreWritten);
        consumed += more;
        written += moreWritten;
    }
    if (!workEnd.empty()) {
        size_t original = 0;
        while (original < srcLen && workEnd[original] <= consumed) ++original;
        consumed = original;
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
    return viaBuffer(dst, [&](char** d, size_t& l) {
        return ConvertTargetEncodingtoCurrentEncoding(src.data(), src.size(), d, l);
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
    return viaBuffer(dst, [&](char** d, size_t& l) {
        return ConvertCurrentEncodingtoTargetEncoding(src.data(), src.size(), d, l);
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
    return viaBuffer(dst, [&](char** d, size_t& l) { return ConvertUTF8toCurrentEncoding(src.data(), src.size(), d, l); });
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
    return viaBuffer(dst, [&](char** d, size_t& l) { return ConvertCurrentEncodingtoUTF8(src.data(), src.size(), d, l); });
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
    return viaBuffer(dst, [&](char** d, size_t& l) { return ConvertUCS2toUTF8(src.data(), src.size(), d, l); });
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
    return viaBuffer(dst, [&](char16_t** d, size_t& l) { return ConvertUTF8toUCS2(src.data(), src.size(), d, l); });
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
    return viaBuffer(dst, [&](char** d, size_t& l) { return ConvertVisualtoUTF8(src.data(), src.size(), d, l); });
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
    return viaBuffer(dst, [&](char** d, size_t& l) { return ConvertUCS2toVisual(src.data(), src.size(), d, l); });
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
    return viaBuffer(dst, [&](char16_t** d, size_t& l) { return ConvertVisualtoUCS2(src.data(), src.size(), d, l); });
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
        if (osl::platform::icuMapCaseUtf8(true, "", "a", 1, probe, sizeof probe) != 1)
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
    int64_t n = osl::platform::icuMapCaseUtf8(upper, "", src, srcLen, dst, dst == nullptr ? 0 : dstLen);
    if (n < 0) {
        dstLen = 0;
        return ConversionIllegal;
    }
    if (static_cast<size_t>(n) > dstLen || dst == nullptr) {
        dstLen = static_cast<size_t>(n);
        return ConversionNoSpace;
    }
    dstLen = static_cast<size_t>(n);
    return static_cast<size_t>(n) == srcLen ? ConversionOK : ConversionIllegal;
}

ConversionRC Osl_UnicodeConverter::ToUpperUTF8(const char* src, size_t srcLen, char* dst, size_t& dstLen) {
    return mapCase(true, src, srcLen, dst, dstLen);
}
ConversionRC Osl_UnicodeConverter::ToLowerUTF8(const char* src, size_t srcLen, char* dst, size_t& dstLen) {
    return mapCase(false, src, srcLen, dst, dstLen);
}
