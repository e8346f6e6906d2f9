// platform/bridges/pcre2_regex.cpp
// The one file that includes PCRE2. UTF-8 patterns compile with PCRE2_MATCH_INVALID_UTF so
// that matching with PCRE2_NO_UTF_CHECK stays memory-safe even on bytes nobody checked; the
// subject check itself is ours (isValidUtf8), done once per subject by the callers.
#include "platform/pcre2_regex.h"

#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

#include <array>
#include <atomic>
#include <clocale>
#include <cstring>

namespace osl::platform {
namespace {

// PCRE2's table layout (pcre2_maketables.c): lower-case map, flip-case map, ten class bitmaps
// of 32 bytes, then one ctype byte per character. A test pins it against pcre2_maketables.
constexpr std::size_t kLowerCase = 0;
constexpr std::size_t kFlipCase = 256;
constexpr std::size_t kClassBits = 512;
constexpr std::size_t kCtypes = kClassBits + 320;
constexpr std::size_t kTablesLength = kCtypes + 256;
enum ClassBitmap : std::size_t {
    kBitSpace = 0, kBitXdigit = 32, kBitDigit = 64, kBitUpper = 96, kBitLower = 128,
    kBitWord = 160, kBitGraph = 192, kBitPrint = 224, kBitPunct = 256, kBitCntrl = 288
};
enum Ctype : unsigned { kCtSpace = 0x01, kCtLetter = 0x02, kCtLowerLetter = 0x04, kCtDigit = 0x08, kCtWord = 0x10 };

struct CharClass {
    bool upper = false, lower = false, alpha = false, digit = false, xdigit = false;
    bool space = false, cntrl = false, graph = false, print = false;
    unsigned char toLower = 0, toUpper = 0;
};

CharClass asciiClass(unsigned c) {
    CharClass k;
    k.upper = c >= 'A' && c <= 'Z';
    k.lower = c >= 'a' && c <= 'z';
    k.alpha = k.upper || k.lower;
    k.digit = c >= '0' && c <= '9';
    k.xdigit = k.digit || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
    k.space = c == ' ' || (c >= '\t' && c <= '\r');
    k.cntrl = c < 0x20 || c == 0x7f;
    k.graph = c > 0x20 && c < 0x7f;
    k.print = c >= 0x20 && c < 0x7f;
    k.toLower = static_cast<unsigned char>(k.upper ? c + 32 : c);
    k.toUpper = static_cast<unsigned char>(k.lower ? c - 32 : c);
    return k;
}

// windows-1252 above 0x7f: the letters with their case partners, the five unassigned bytes
// as controls, everything else a printable symbol; 0xA0 (no-break space) prints but is no
// graph, as in the C libraries' Latin-1 locales.
CharClass windows1252Class(unsigned c) {
    if (c < 0x80) return asciiClass(c);
    CharClass k;
    auto upperOf = [](unsigned l) -> unsigned {
        switch (l) {
            case 0x9a: return 0x8a;
            case 0x9c: return 0x8c;
            case 0x9e: return 0x8e;
            case 0xff: return 0x9f;
            default: return (l >= 0xe0 && l <= 0xfe && l != 0xf7) ? l - 0x20 : 0;
        }
    };
    auto lowerOf = [](unsigned u) -> unsigned {
        switch (u) {
            case 0x8a: return 0x9a;
            case 0x8c: return 0x9c;
            case 0x8e: return 0x9e;
            case 0x9f: return 0xff;
            default: return (u >= 0xc0 && u <= 0xde && u != 0xd7) ? u + 0x20 : 0;
        }
    };
    const bool caselessLower = c == 0x83 || c == 0xb5 || c == 0xdf;  // no upper case in the code page
    k.lower = upperOf(c) != 0 || caselessLower;
    k.upper = lowerOf(c) != 0;
    k.alpha = k.lower || k.upper || c == 0xaa || c == 0xba;
    k.cntrl = c == 0x81 || c == 0x8d || c == 0x8f || c == 0x90 || c == 0x9d;
    k.print = !k.cntrl;
    k.graph = k.print && c != 0xa0;
    k.toLower = static_cast<unsigned char>(k.upper ? lowerOf(c) : c);
    k.toUpper = static_cast<unsigned char>(upperOf(c) != 0 ? upperOf(c) : c);
    return k;
}

std::array<unsigned char, kTablesLength> makeTables(CharClass (*classify)(unsigned)) {
    std::array<unsigned char, kTablesLength> t{};
    for (unsigned c = 0; c < 256; ++c) {
        const CharClass k = classify(c);
        t[kLowerCase + c] = k.toLower;
        t[kFlipCase + c] = k.lower ? k.toUpper : k.toLower;
        const auto set = [&](std::size_t bitmap, bool on) {
            if (on) t[kClassBits + bitmap + c / 8] |= static_cast<unsigned char>(1u << (c & 7));
        };
        const bool alnum = k.alpha || k.digit;
        set(kBitDigit, k.digit);
        set(kBitUpper, k.upper);
        set(kBitLower, k.lower);
        set(kBitWord, alnum || c == '_');
        set(kBitSpace, k.space);
        set(kBitXdigit, k.xdigit);
        set(kBitGraph, k.graph);
        set(kBitPrint, k.print);
        set(kBitPunct, k.graph && !alnum);
        set(kBitCntrl, k.cntrl);
        unsigned x = 0;
        if (k.space) x |= kCtSpace;
        if (k.alpha) x |= kCtLetter;
        if (k.lower) x |= kCtLowerLetter;
        if (k.digit) x |= kCtDigit;
        if (alnum || c == '_') x |= kCtWord;
        t[kCtypes + c] = static_cast<unsigned char>(x);
    }
    return t;
}

const unsigned char* windows1252Tables() {
    // Compiled patterns point into these tables for their whole life: never freed.
    static const std::array<unsigned char, kTablesLength> tables = makeTables(windows1252Class);
    return tables.data();
}

}  // namespace

struct Pcre2Regex::Impl {
    pcre2_code* code = nullptr;
    pcre2_match_data* matchData = nullptr;
    pcre2_match_context* matchContext = nullptr;
    pcre2_jit_stack* jitStack = nullptr;
    bool jit = false;
    bool utf8 = false;
    bool looksBefore = false;
    bool matched = false;
    // Match data for matchLength, taken by one caller at a time; a caller that finds it taken
    // makes its own. Lock-free, and nothing per thread.
    mutable std::atomic<pcre2_match_data*> spare{nullptr};

    ~Impl() { clear(); }
    void clear() {
        pcre2_match_data_free(spare.exchange(nullptr));
        pcre2_match_data_free(matchData);
        pcre2_code_free(code);
        pcre2_match_context_free(matchContext);
        pcre2_jit_stack_free(jitStack);
        code = nullptr;
        matchData = nullptr;
        matchContext = nullptr;
        jitStack = nullptr;
        jit = utf8 = looksBefore = matched = false;
    }
};

Pcre2Regex::Pcre2Regex() : impl_(std::make_unique<Impl>()) {}
Pcre2Regex::~Pcre2Regex() = default;
Pcre2Regex::Pcre2Regex(Pcre2Regex&&) noexcept = default;
Pcre2Regex& Pcre2Regex::operator=(Pcre2Regex&&) noexcept = default;

void Pcre2Regex::clear() {
    if (impl_) impl_->clear();
}

bool Pcre2Regex::compiled() const { return impl_ && impl_->code != nullptr; }
bool Pcre2Regex::utf8() const { return impl_ && impl_->utf8; }
bool Pcre2Regex::looksBeforeStart() const { return impl_ && impl_->looksBefore; }

bool Pcre2Regex::compile(std::string_view pattern, bool utf8, bool caseless, std::string& error) {
    if (!impl_) impl_ = std::make_unique<Impl>();
    Impl& m = *impl_;
    m.clear();
    pcre2_compile_context* context = pcre2_compile_context_create(nullptr);
    // $ only at the very end and . across line feeds: subjects are whole texts (file names,
    // field values), not lines. (?m) and (?-s) give line anchors back to a pattern that wants them.
    std::uint32_t options = PCRE2_DOLLAR_ENDONLY | PCRE2_DOTALL | (caseless ? PCRE2_CASELESS : 0);
    if (utf8) {
        // \C could split a character: refused, so that every match range lies on character
        // boundaries and replacements keep a subject valid.
        options |= PCRE2_UTF | PCRE2_UCP | PCRE2_MATCH_INVALID_UTF | PCRE2_NEVER_BACKSLASH_C;
    } else if (context != nullptr) {
        pcre2_set_character_tables(context, windows1252Tables());
    }
    int errorCode = 0;
    PCRE2_SIZE errorOffset = 0;
    m.code = pcre2_compile(reinterpret_cast<PCRE2_SPTR>(pattern.data()), pattern.size(), options,
                           &errorCode, &errorOffset, context);
    pcre2_compile_context_free(context);
    if (m.code == nullptr) {
        PCRE2_UCHAR buffer[512];
        const int n = pcre2_get_error_message(errorCode, buffer, sizeof buffer);
        error = n < 0 ? "PCRE2 error " + std::to_string(errorCode)
                      : std::string(reinterpret_cast<const char*>(buffer), static_cast<std::size_t>(n));
        return false;
    }
    m.utf8 = utf8;
    m.jit = pcre2_jit_compile(m.code, PCRE2_JIT_COMPLETE) == 0;
    m.matchData = pcre2_match_data_create_from_pattern(m.code, nullptr);
    m.matchContext = pcre2_match_context_create(nullptr);
    std::uint32_t lookbehind = 0;
    pcre2_pattern_info(m.code, PCRE2_INFO_MAXLOOKBEHIND, &lookbehind);
    m.looksBefore = lookbehind > 0 || pattern.find('^') != std::string_view::npos;
    if (m.matchData == nullptr || m.matchContext == nullptr) {
        m.clear();
        error = "out of memory";
        return false;
    }
    return true;
}

int Pcre2Regex::exec(const char* subject, std::size_t length, std::size_t start, bool checked) {
    if (!compiled()) return -1;
    Impl& m = *impl_;
    m.matched = false;
    if (start > length || (subject == nullptr && length != 0)) return -1;
    if (subject == nullptr) subject = "";
    if (m.utf8) {
        if (start < length && (static_cast<unsigned char>(subject[start]) & 0xc0) == 0x80) return -1;
        if (!checked && !isValidUtf8(subject, length)) return -1;
    }
    const auto* s = reinterpret_cast<PCRE2_SPTR>(subject);
    const std::uint32_t options = m.utf8 ? PCRE2_NO_UTF_CHECK : 0;
    int rc = m.jit ? pcre2_jit_match(m.code, s, length, start, options, m.matchData, m.matchContext)
                   : pcre2_match(m.code, s, length, start, options, m.matchData, m.matchContext);
    if (rc == PCRE2_ERROR_JIT_STACKLIMIT && m.jitStack == nullptr) {
        // The 32 KB on the machine stack were not enough: this pattern gets a stack of its own,
        // made only now so that the many small expressions of a program (wildcards) carry none.
        m.jitStack = pcre2_jit_stack_create(32 * 1024, 1024 * 1024, nullptr);
        if (m.jitStack != nullptr) {
            pcre2_jit_stack_assign(m.matchContext, nullptr, m.jitStack);
            rc = pcre2_jit_match(m.code, s, length, start, options, m.matchData, m.matchContext);
        }
    }
    if (rc == PCRE2_ERROR_JIT_STACKLIMIT)  // the interpreter keeps its backtracking on the heap
        rc = pcre2_match(m.code, s, length, start, options | PCRE2_NO_JIT, m.matchData, m.matchContext);
    if (rc >= 0) {
        m.matched = true;
        return 1;
    }
    return rc == PCRE2_ERROR_NOMATCH ? 0 : -1;
}

long Pcre2Regex::matchLength(const char* subject, std::size_t length) const {
    if (!compiled()) return -2;
    if (subject == nullptr) {
        if (length != 0) return -2;
        subject = "";
    }
    const Impl& m = *impl_;
    pcre2_match_data* data = m.spare.exchange(nullptr, std::memory_order_acquire);
    if (data == nullptr) data = pcre2_match_data_create(1, nullptr);
    if (data == nullptr) return -2;
    // Invalid UTF-8 cannot match (the pattern was compiled with PCRE2_MATCH_INVALID_UTF), so the
    // subject needs no check of its own.
    const auto* s = reinterpret_cast<PCRE2_SPTR>(subject);
    int rc = m.jit ? pcre2_jit_match(m.code, s, length, 0, 0, data, nullptr)
                   : pcre2_match(m.code, s, length, 0, 0, data, nullptr);
    if (rc == PCRE2_ERROR_JIT_STACKLIMIT) rc = pcre2_match(m.code, s, length, 0, PCRE2_NO_JIT, data, nullptr);
    const PCRE2_SIZE* ovector = pcre2_get_ovector_pointer(data);
    const long result = rc == PCRE2_ERROR_NOMATCH ? -1
                        : rc < 0 || ovector[1] < ovector[0] ? -2
                                                            : static_cast<long>(ovector[1] - ovector[0]);
    pcre2_match_data* empty = nullptr;
    if (!m.spare.compare_exchange_strong(empty, data, std::memory_order_release)) pcre2_match_data_free(data);
    return result;
}

bool Pcre2Regex::group(std::size_t i, std::size_t& start, std::size_t& end) const {
    if (!compiled() || !impl_->matched) return false;
    if (i >= pcre2_get_ovector_count(impl_->matchData)) return false;
    const PCRE2_SIZE* ovector = pcre2_get_ovector_pointer(impl_->matchData);
    if (ovector[2 * i] == PCRE2_UNSET || ovector[2 * i + 1] == PCRE2_UNSET) return false;
    start = ovector[2 * i];
    end = ovector[2 * i + 1];
    // \K in a lookahead can give an end before the start; such a range means nothing to callers.
    return start <= end;
}

bool isValidUtf8(const char* data, std::size_t length) {
    const auto* p = reinterpret_cast<const unsigned char*>(data);
    const unsigned char* const end = p + length;
    while (p < end) {
        // Log and file text is mostly ASCII: skip it eight bytes at a time.
        while (end - p >= 8) {
            std::uint64_t word;
            std::memcpy(&word, p, sizeof word);
            if ((word & 0x8080808080808080ull) != 0) break;
            p += 8;
        }
        if (p == end) break;
        const unsigned c = *p;
        if (c < 0x80) {
            ++p;
            continue;
        }
        std::size_t n;
        unsigned min;
        std::uint32_t cp;
        if (c >= 0xc2 && c <= 0xdf) { n = 1; min = 0x80; cp = c & 0x1f; }
        else if (c >= 0xe0 && c <= 0xef) { n = 2; min = 0x800; cp = c & 0x0f; }
        else if (c >= 0xf0 && c <= 0xf4) { n = 3; min = 0x10000; cp = c & 0x07; }
        else return false;
        if (static_cast<std::size_t>(end - p) <= n) return false;
        for (std::size_t i = 1; i <= n; ++i) {
            if ((p[i] & 0xc0) != 0x80) return false;
            cp = (cp << 6) | (p[i] & 0x3f);
        }
        if (cp < min || cp > 0x10ffff || (cp >= 0xd800 && cp <= 0xdfff)) return false;
        p += n + 1;
    }
    return true;
}

std::string pcre2CharacterTables(bool windows1252) {
    const auto tables = makeTables(windows1252 ? windows1252Class : asciiClass);
    return std::string(reinterpret_cast<const char*>(tables.data()), tables.size());
}

std::string pcre2DefaultCharacterTables() {
    const unsigned char* made = pcre2_maketables(nullptr);
    if (made == nullptr) return std::string();
    std::string tables(reinterpret_cast<const char*>(made), kTablesLength);
    pcre2_maketables_free(nullptr, made);
    return tables;
}

}  // namespace osl::platform
