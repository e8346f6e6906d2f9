// bench/ebcdic_bench.cpp
// Japanese text in IBM-939 (EBCDIC with shift-out/shift-in around double-byte runs) to UTF-8 and
// back: Osl_UnicodeConverter against ICU's ucnv_convertEx and glibc's iconv. Every side's result
// is checked: ours keeps a blank for each shift byte on the way to UTF-8 (the column it takes in
// the EBCDIC record), so its expected text is iconv's of the source with those blanks added.
#include <vum-qib-osl/strings/unicode_converter.h>

#include <benchmark/benchmark.h>
#include <iconv.h>
#include <unicode/ucnv.h>

#include <string>
#include <vector>

namespace {

// Kanji, kana and Latin letters: a report line of a Japanese installation, about 64 KB.
const std::string& utf8Text() {
    static const std::string text = [] {
        const std::string line = "売上報告 2026年11月: 東京支店 合計 1234567 円、カタカナ と ひらがな。Total ok\n";
        std::string t;
        while (t.size() < 64 * 1024) t += line;
        return t;
    }();
    return text;
}

std::string viaIconv(const char* to, const char* from, const std::string& in) {
    std::vector<char> out(in.size() * 4 + 16);
    iconv_t cd = iconv_open(to, from);
    char* src = const_cast<char*>(in.data());
    size_t srcLeft = in.size();
    char* dst = out.data();
    size_t dstLeft = out.size();
    iconv(cd, &src, &srcLeft, &dst, &dstLeft);
    iconv_close(cd);
    return std::string(out.data(), out.size() - dstLeft);
}

const std::string& ebcdicText() {
    static const std::string text = viaIconv("IBM939", "UTF-8", utf8Text());
    return text;
}

const std::string& input(bool toUtf8) { return toUtf8 ? ebcdicText() : utf8Text(); }
std::string expected(bool toUtf8) { return toUtf8 ? utf8Text() : ebcdicText(); }

// UTF-8 with a blank in place of every shift-out and shift-in byte of the EBCDIC text.
std::string expectedWithColumns() {
    std::string withBlanks;
    for (char c : ebcdicText()) {
        if (c == '\x0E') withBlanks += "\x40\x0E";
        else if (c == '\x0F') withBlanks += "\x0F\x40";
        else withBlanks += c;
    }
    return viaIconv("UTF-8", "IBM939", withBlanks);
}

void osl(benchmark::State& state, bool toUtf8) {
    const std::string& in = input(toUtf8);
    std::vector<char> out(in.size() * 4 + 16);
    Osl_UnicodeConverter converter;
    converter.SetCurrentEncoding("IBM-939");
    size_t len = 0;
    for (auto _ : state) {
        len = out.size();
        if (toUtf8) {
            converter.ConvertCurrentEncodingtoUTF8(in.data(), in.size(), out.data(), len);
        } else {
            converter.ConvertUTF8toCurrentEncoding(in.data(), in.size(), out.data(), len);
        }
        benchmark::DoNotOptimize(out.data());
    }
    if (std::string(out.data(), len) != (toUtf8 ? expectedWithColumns() : expected(false))) {
        state.SkipWithError("result differs from iconv");
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * in.size()));
}

void icu(benchmark::State& state, bool toUtf8) {
    const std::string& in = input(toUtf8);
    std::vector<char> out(in.size() * 4 + 16);
    UErrorCode status = U_ZERO_ERROR;
    UConverter* utf8 = ucnv_open("UTF-8", &status);
    UConverter* ebcdic = ucnv_open("ibm-939", &status);
    UConverter* from = toUtf8 ? ebcdic : utf8;
    UConverter* to = toUtf8 ? utf8 : ebcdic;
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
    if (U_FAILURE(status) || std::string(out.data(), written) != expected(toUtf8)) {
        state.SkipWithError("result differs from iconv");
    }
    ucnv_close(utf8);
    ucnv_close(ebcdic);
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * in.size()));
}

void glibcIconv(benchmark::State& state, bool toUtf8) {
    const std::string& in = input(toUtf8);
    std::vector<char> out(in.size() * 4 + 16);
    iconv_t cd = toUtf8 ? iconv_open("UTF-8", "IBM939") : iconv_open("IBM939", "UTF-8");
    for (auto _ : state) {
        iconv(cd, nullptr, nullptr, nullptr, nullptr);
        char* src = const_cast<char*>(in.data());
        size_t srcLeft = in.size();
        char* dst = out.data();
        size_t dstLeft = out.size();
        iconv(cd, &src, &srcLeft, &dst, &dstLeft);
        // The shift back to single-byte state at the end of the text.
        if (!toUtf8) iconv(cd, nullptr, nullptr, &dst, &dstLeft);
        benchmark::DoNotOptimize(out.data());
    }
    iconv_close(cd);
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * in.size()));
}

BENCHMARK_CAPTURE(osl, to, true)->Name("ibm939_to_utf8/osl");
BENCHMARK_CAPTURE(icu, to, true)->Name("ibm939_to_utf8/icu");
BENCHMARK_CAPTURE(glibcIconv, to, true)->Name("ibm939_to_utf8/iconv");
BENCHMARK_CAPTURE(osl, from, false)->Name("utf8_to_ibm939/osl");
BENCHMARK_CAPTURE(icu, from, false)->Name("utf8_to_ibm939/icu");
BENCHMARK_CAPTURE(glibcIconv, from, false)->Name("utf8_to_ibm939/iconv");

}  // namespace

BENCHMARK_MAIN();
