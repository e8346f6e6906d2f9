// bench/visual_bench.cpp
// Text in display columns: building an Osl_VisualString from 1 MB of mixed Latin, CJK, half-width
// and full-width text, and 10,000 substrings of 40 columns at spread-out columns, against the
// same work on ICU UTF-16 strings: UnicodeString::fromUTF8 plus a column index built with
// u_getIntPropertyValue(UCHAR_EAST_ASIAN_WIDTH), and substrings copied through that index. Both
// blank half of a wide character that a column boundary cuts. The results are compared before
// anything is timed.
#include <vum-qib-osl/strings/unicode_configuration.h>
#include <vum-qib-osl/strings/visual_string.h>

#include <benchmark/benchmark.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

constexpr size_t kWidth = 40;
constexpr size_t kCuts = 10000;

const std::string& mixedText() {
    static const std::string text = [] {
        const std::string piece =
            "Invoice 2024-0042 for Z\xC3\xBCrich: "                                   // Latin
            "\xE8\xAB\x8B\xE6\xB1\x82\xE6\x9B\xB8\xE3\x82\x92\xE9\x80\x81\xE4\xBB\x98\xE3\x81\x97"
            "\xE3\x81\xBE\xE3\x81\x99\xE3\x80\x82 "                                     // 請求書を送付します。
            "\xEF\xBD\xB6\xEF\xBE\x80\xEF\xBD\xB6\xEF\xBE\x85 "                        // ｶﾀｶﾅ
            "\xEF\xBC\xA1\xEF\xBC\xA2\xEF\xBC\xA3\xEF\xBC\x91\xEF\xBC\x92\xEF\xBC\x93 "  // ＡＢＣ１２３
            "\xED\x95\x9C\xEA\xB5\xAD\xEC\x96\xB4 total 1.234,50 \xE2\x82\xAC\n";      // 한국어, €
        std::string out;
        while (out.size() < 1024 * 1024) out += piece;
        return out;
    }();
    return text;
}

// Spread-out first columns of the substrings, the same for both sides.
std::vector<size_t> cutColumns(size_t columns) {
    std::vector<size_t> at(kCuts);
    unsigned seed = 12345;
    for (size_t& a : at) {
        seed = seed * 1103515245u + 12345u;
        a = (seed >> 4) % (columns - kWidth);
    }
    return at;
}

// ICU's side: the text as UTF-16 and, per column, the offset of its character and whether the
// column is the second half of a wide one.
struct IcuColumns {
    icu::UnicodeString text;
    std::vector<int32_t> offset;
    std::vector<bool> second;
};

IcuColumns buildIcu(const std::string& utf8) {
    IcuColumns c;
    c.text = icu::UnicodeString::fromUTF8(icu::StringPiece(utf8.data(), static_cast<int32_t>(utf8.size())));
    c.offset.reserve(static_cast<size_t>(c.text.length()) * 2);
    c.second.reserve(static_cast<size_t>(c.text.length()) * 2);
    for (int32_t i = 0; i < c.text.length(); i = c.text.moveIndex32(i, 1)) {
        const UChar32 ch = c.text.char32At(i);
        const int32_t w = u_getIntPropertyValue(ch, UCHAR_EAST_ASIAN_WIDTH);
        c.offset.push_back(i);
        c.second.push_back(false);
        if (w == U_EA_WIDE || w == U_EA_FULLWIDTH) {
            c.offset.push_back(i);
            c.second.push_back(true);
        }
    }
    c.offset.push_back(c.text.length());
    c.second.push_back(false);
    return c;
}

icu::UnicodeString substrIcu(const IcuColumns& c, size_t column, size_t width) {
    const bool startCut = c.second[column];
    const bool endCut = c.second[column + width];
    const int32_t start = c.offset[column] + (startCut ? 1 : 0);
    const int32_t end = c.offset[column + width] + (endCut ? 1 : 0);
    icu::UnicodeString sub;
    if (startCut) sub.append(static_cast<UChar>(' '));
    sub.append(c.text, start, end - start);
    if (endCut) sub.setCharAt(sub.length() - 1, static_cast<UChar>(' '));
    return sub;
}

constexpr long kAccept = Osl_VisualString::StartAccept | Osl_VisualString::EndAccept;

void checkSameResults() {
    Osl_UnicodeConfiguration::SetUnicodeMode(true);
    const Osl_VisualString ours(mixedText());
    const IcuColumns icu = buildIcu(mixedText());
    if (ours.LengthInNarrowChars() + 1 != icu.offset.size()) {
        std::fprintf(stderr, "column counts differ: %zu and %zu\n", ours.LengthInNarrowChars(), icu.offset.size() - 1);
        std::exit(1);
    }
    for (size_t column : cutColumns(ours.LengthInNarrowChars())) {
        std::string theirs;
        substrIcu(icu, column, kWidth).toUTF8String(theirs);
        if (ours.SubstrInNarrowChars(column, kWidth, kAccept).ToUTF8String().ToString() != theirs) {
            std::fprintf(stderr, "substrings at column %zu differ\n", column);
            std::exit(1);
        }
    }
}

void buildOsl(benchmark::State& state) {
    Osl_UnicodeConfiguration::SetUnicodeMode(true);
    for (auto _ : state) {
        Osl_VisualString v(mixedText());
        benchmark::DoNotOptimize(v.c_str());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * mixedText().size()));
}

void buildIcuBench(benchmark::State& state) {
    for (auto _ : state) {
        IcuColumns c = buildIcu(mixedText());
        benchmark::DoNotOptimize(c.offset.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * mixedText().size()));
}

void substrOsl(benchmark::State& state) {
    Osl_UnicodeConfiguration::SetUnicodeMode(true);
    const Osl_VisualString v(mixedText());
    const std::vector<size_t> at = cutColumns(v.LengthInNarrowChars());
    for (auto _ : state) {
        for (size_t column : at) {
            Osl_VisualString sub = v.SubstrInNarrowChars(column, kWidth, kAccept);
            benchmark::DoNotOptimize(sub.c_str());
        }
    }
}

void substrIcuBench(benchmark::State& state) {
    const IcuColumns c = buildIcu(mixedText());
    const std::vector<size_t> at = cutColumns(c.offset.size() - 1);
    for (auto _ : state) {
        for (size_t column : at) {
            icu::UnicodeString sub = substrIcu(c, column, kWidth);
            benchmark::DoNotOptimize(sub.getBuffer());
        }
    }
}

// The whole task: build, then take the substrings.
void taskOsl(benchmark::State& state) {
    Osl_UnicodeConfiguration::SetUnicodeMode(true);
    for (auto _ : state) {
        const Osl_VisualString v(mixedText());
        for (size_t column : cutColumns(v.LengthInNarrowChars())) {
            Osl_VisualString sub = v.SubstrInNarrowChars(column, kWidth, kAccept);
            benchmark::DoNotOptimize(sub.c_str());
        }
    }
}

void taskIcu(benchmark::State& state) {
    for (auto _ : state) {
        const IcuColumns c = buildIcu(mixedText());
        for (size_t column : cutColumns(c.offset.size() - 1)) {
            icu::UnicodeString sub = substrIcu(c, column, kWidth);
            benchmark::DoNotOptimize(sub.getBuffer());
        }
    }
}

}  // namespace

BENCHMARK(buildOsl)->Name("visual_build_1mb/osl")->Unit(benchmark::kMillisecond);
BENCHMARK(buildIcuBench)->Name("visual_build_1mb/icu")->Unit(benchmark::kMillisecond);
BENCHMARK(substrOsl)->Name("visual_10000_substr/osl")->Unit(benchmark::kMicrosecond);
BENCHMARK(substrIcuBench)->Name("visual_10000_substr/icu")->Unit(benchmark::kMicrosecond);
BENCHMARK(taskOsl)->Name("visual_build_and_substr/osl")->Unit(benchmark::kMillisecond);
BENCHMARK(taskIcu)->Name("visual_build_and_substr/icu")->Unit(benchmark::kMillisecond);

int main(int argc, char** argv) {
    checkSameResults();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
