// bench/strings_bench.cpp
// Text conversions side by side: the built-in UTF-8 <-> UTF-16 against ICU's u_strFromUTF8 and
// u_strToUTF8; windows-1252 <-> UTF-8 through Osl_UnicodeConverter against glibc's iconv and ICU's
// ucnv_convertEx; LengthInChars and Find on 1 MB of UTF-8. Every pair is checked for identical
// results before it is timed.
#include <vum-qib-osl/strings/unicode_configuration.h>
#include <vum-qib-osl/strings/unicode_converter.h>
#include <vum-qib-osl/strings/utf8_string.h>

#include <benchmark/benchmark.h>
#include <iconv.h>
#include <unicode/ucnv.h>
#include <unicode/ustring.h>
#include <unicode/utf8.h>

#include <string>
#include <vector>

namespace {

// About 64 KB of text: mostly ASCII (a Western report) or mostly CJK (a Japanese one).
std::string repeatTo(const std::string& piece, size_t size) {
    std::string out;
    while (out.size() < size) out += piece;
    return out;
}
const std::string kWesternSentence =
    "Gr\xC3\xBC\xC3\x9F" "e aus K\xC3\xB6ln: \xE2\x80\x9C" "Caf\xC3\xA9 cr\xC3\xA8me\xE2\x80\x9D kostet 3,50 \xE2\x82\xAC. ";
const std::string kJapaneseSentence =
    "\xE8\xAB\x8B\xE6\xB1\x82\xE6\x9B\xB8 2024: \xE6\x9D\xB1\xE4\xBA\xAC\xE3\x81\xB8\xE7\x99\xBA\xE9\x80"
    "\x81\xE3\x81\x97\xE3\x81\x9F\xE5\x93\x81\xE7\x89\xA9\xE3\x81\xAE\xE4\xB8\x80\xE8\xA6\xA7\xE3\x80\x82\n";
const std::string& asciiText() {
    static const std::string text =
        repeatTo("Invoice 2024-0042: 17 items shipped to Z\xC3\xBCrich, total 1,234.50 EUR. Thank you!\n", 64 * 1024);
    return text;
}
const std::string& cjkText() {
    static const std::string text = repeatTo(kJapaneseSentence, 64 * 1024);
    return text;
}
const std::string& westernUtf8() {
    static const std::string text = repeatTo(kWesternSentence, 64 * 1024);
    return text;
}

std::u16string toUtf16(const std::string& utf8) {
    std::u16string out;
    Osl_UnicodeConverter().ConvertUTF8toUCS2(utf8, out);
    return out;
}

void utf8ToUtf16Osl(benchmark::State& state, const std::string& text) {
    std::vector<char16_t> out(text.size() + 1);
    Osl_UnicodeConverter converter;
    for (auto _ : state) {
        size_t len = out.size();
        converter.ConvertUTF8toUCS2(text.data(), text.size(), out.data(), len);
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void utf8ToUtf16Icu(benchmark::State& state, const std::string& text) {
    std::vector<UChar> out(text.size() + 1);
    for (auto _ : state) {
        int32_t len = 0;
        UErrorCode status = U_ZERO_ERROR;
        u_strFromUTF8(out.data(), static_cast<int32_t>(out.size()), &len, text.data(),
                      static_cast<int32_t>(text.size()), &status);
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void utf16ToUtf8Osl(benchmark::State& state, const std::string& text) {
    std::u16string wide = toUtf16(text);
    std::vector<char> out(wide.size() * 3 + 1);
    Osl_UnicodeConverter converter;
    for (auto _ : state) {
        size_t len = out.size();
        converter.ConvertUCS2toUTF8(wide.data(), wide.size(), out.data(), len);
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void utf16ToUtf8Icu(benchmark::State& state, const std::string& text) {
    std::u16string wide = toUtf16(text);
    std::vector<char> out(wide.size() * 3 + 1);
    for (auto _ : state) {
        int32_t len = 0;
        UErrorCode status = U_ZERO_ERROR;
        u_strToUTF8(out.data(), static_cast<int32_t>(out.size()), &len, wide.data(),
                    static_cast<int32_t>(wide.size()), &status);
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

BENCHMARK_CAPTURE(utf8ToUtf16Osl, ascii, asciiText())->Name("utf8_to_utf16_ascii/osl");
BENCHMARK_CAPTURE(utf8ToUtf16Icu, ascii, asciiText())->Name("utf8_to_utf16_ascii/icu");
BENCHMARK_CAPTURE(utf8ToUtf16Osl, cjk, cjkText())->Name("utf8_to_utf16_cjk/osl");
BENCHMARK_CAPTURE(utf8ToUtf16Icu, cjk, cjkText())->Name("utf8_to_utf16_cjk/icu");
BENCHMARK_CAPTURE(utf16ToUtf8Osl, ascii, asciiText())->Name("utf16_to_utf8_ascii/osl");
BENCHMARK_CAPTURE(utf16ToUtf8Icu, ascii, asciiText())->Name("utf16_to_utf8_ascii/icu");
BENCHMARK_CAPTURE(utf16ToUtf8Osl, cjk, cjkText())->Name("utf16_to_utf8_cjk/osl");
BENCHMARK_CAPTURE(utf16ToUtf8Icu, cjk, cjkText())->Name("utf16_to_utf8_cjk/icu");

// --- windows-1252 <-> UTF-8 ------------------------------------------------------------------

std::string viaIconv(const char* to, const char* from, const std::string& in, std::vector<char>& buffer) {
    iconv_t local = iconv_open(to, from);
    char* src = const_cast<char*>(in.data());
    size_t srcLeft = in.size();
    char* dst = buffer.data();
    size_t dstLeft = buffer.size();
    iconv(local, &src, &srcLeft, &dst, &dstLeft);
    iconv_close(local);
    return std::string(buffer.data(), buffer.size() - dstLeft);
}

const std::string& cp1252Text() {
    static const std::string text = [] {
        Osl_UnicodeConverter converter;
        converter.SetCurrentEncoding("MS1252");
        std::string out;
        converter.ConvertUTF8toCurrentEncoding(westernUtf8(), out);
        return out;
    }();
    return text;
}

// Runs one direction: to_utf8 = true converts windows-1252 to UTF-8.
void cp1252Osl(benchmark::State& state, bool toUtf8) {
    const std::string& in = toUtf8 ? cp1252Text() : westernUtf8();
    std::vector<char> out(in.size() * 4 + 4), check(out.size());
    Osl_UnicodeConverter converter;
    converter.SetCurrentEncoding("MS1252");
    const std::string expected = toUtf8 ? viaIconv("UTF-8", "WINDOWS-1252", in, check)
                                        : viaIconv("WINDOWS-1252", "UTF-8", in, check);
    size_t len = out.size();
    if (toUtf8) converter.ConvertCurrentEncodingtoUTF8(in.data(), in.size(), out.data(), len);
    else converter.ConvertUTF8toCurrentEncoding(in.data(), in.size(), out.data(), len);
    if (std::string(out.data(), len) != expected) state.SkipWithError("result differs from iconv");
    for (auto _ : state) {
        len = out.size();
        if (toUtf8) converter.ConvertCurrentEncodingtoUTF8(in.data(), in.size(), out.data(), len);
        else converter.ConvertUTF8toCurrentEncoding(in.data(), in.size(), out.data(), len);
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * in.size()));
}

void cp1252Iconv(benchmark::State& state, bool toUtf8) {
    const std::string& in = toUtf8 ? cp1252Text() : westernUtf8();
    std::vector<char> out(in.size() * 4 + 4);
    iconv_t cd = toUtf8 ? iconv_open("UTF-8", "WINDOWS-1252") : iconv_open("WINDOWS-1252", "UTF-8");
    for (auto _ : state) {
        iconv(cd, nullptr, nullptr, nullptr, nullptr);
        char* src = const_cast<char*>(in.data());
        size_t srcLeft = in.size();
        char* dst = out.data();
        size_t dstLeft = out.size();
        iconv(cd, &src, &srcLeft, &dst, &dstLeft);
        benchmark::DoNotOptimize(out.data());
    }
    iconv_close(cd);
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * in.size()));
}

void cp1252Icu(benchmark::State& state, bool toUtf8) {
    const std::string& in = toUtf8 ? cp1252Text() : westernUtf8();
    std::vector<char> out(in.size() * 4 + 4), check(out.size());
    UErrorCode status = U_ZERO_ERROR;
    UConverter* utf8 = ucnv_open("UTF-8", &status);
    UConverter* cp1252 = ucnv_open("windows-1252", &status);
    UConverter* from = toUtf8 ? cp1252 : utf8;
    UConverter* to = toUtf8 ? utf8 : cp1252;
    UChar pivot[1024];
    size_t written = 0;
    for (auto _ : state) {
        const char* src = in.data();
        char* dst = out.data();
        UChar* pivotSource = pivot;
        UChar* pivotTarget = pivot;
        status = U_ZERO_ERROR;
        ucnv_convertEx(to, from, &dst, out.data() + out.size(), &src, in.data() + in.size(), pivot, &pivotSource,
                       &pivotTarget, pivot + 1024, true, true, &status);
        written = static_cast<size_t>(dst - out.data());
        benchmark::DoNotOptimize(out.data());
    }
    const std::string expected = toUtf8 ? viaIconv("UTF-8", "WINDOWS-1252", in, check)
                                        : viaIconv("WINDOWS-1252", "UTF-8", in, check);
    if (std::string(out.data(), written) != expected) state.SkipWithError("result differs from iconv");
    ucnv_close(utf8);
    ucnv_close(cp1252);
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * in.size()));
}

BENCHMARK_CAPTURE(cp1252Osl, to, true)->Name("cp1252_to_utf8/osl");
BENCHMARK_CAPTURE(cp1252Iconv, to, true)->Name("cp1252_to_utf8/iconv");
BENCHMARK_CAPTURE(cp1252Icu, to, true)->Name("cp1252_to_utf8/icu");
BENCHMARK_CAPTURE(cp1252Osl, from, false)->Name("utf8_to_cp1252/osl");
BENCHMARK_CAPTURE(cp1252Iconv, from, false)->Name("utf8_to_cp1252/iconv");
BENCHMARK_CAPTURE(cp1252Icu, from, false)->Name("utf8_to_cp1252/icu");

// --- characters of 1 MB of UTF-8 -------------------------------------------------------------

const Osl_UTF8String& megabyte() {
    static const Osl_UTF8String* text = [] {
        std::string piece = repeatTo(kWesternSentence, 4096) + repeatTo(kJapaneseSentence, 4096);
        auto* t = new Osl_UTF8String(repeatTo(piece, 1024 * 1024));
        *t += "NEEDLE";
        return t;
    }();
    return *text;
}

size_t icuCount(const char* s, size_t n, size_t end) {
    size_t count = 0;
    int32_t i = 0;
    auto limit = static_cast<int32_t>(std::min(end, n));
    while (i < limit) {
        U8_FWD_1(s, i, static_cast<int32_t>(n));
        ++count;
    }
    return count;
}

void lengthOsl(benchmark::State& state) {
    Osl_UnicodeConfiguration::SetUnicodeMode(true);
    const Osl_UTF8String& text = megabyte();
    for (auto _ : state) benchmark::DoNotOptimize(text.LengthInChars());
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void lengthIcu(benchmark::State& state) {
    const Osl_UTF8String& text = megabyte();
    for (auto _ : state) benchmark::DoNotOptimize(icuCount(text.data(), text.size(), text.size()));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

void findOsl(benchmark::State& state) {
    Osl_UnicodeConfiguration::SetUnicodeMode(true);
    const Osl_UTF8String& text = megabyte();
    if (text.Find("NEEDLE") != icuCount(text.data(), text.size(), text.find("NEEDLE")))
        state.SkipWithError("Find differs");
    for (auto _ : state) benchmark::DoNotOptimize(text.Find("NEEDLE"));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

// The peer: a byte search, then ICU's stepping macro to turn the hit into a character position.
void findIcu(benchmark::State& state) {
    const Osl_UTF8String& text = megabyte();
    for (auto _ : state) {
        size_t hit = text.std::string::find("NEEDLE");
        benchmark::DoNotOptimize(icuCount(text.data(), text.size(), hit));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}

BENCHMARK(lengthOsl)->Name("length_in_chars_1mb/osl");
BENCHMARK(lengthIcu)->Name("length_in_chars_1mb/icu");
BENCHMARK(findOsl)->Name("find_1mb/osl");
BENCHMARK(findIcu)->Name("find_1mb/icu");

}  // namespace

BENCHMARK_MAIN();
