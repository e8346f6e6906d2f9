// bench/patterns_bench.cpp
// Regular expressions and wildcards against the peers a user would pick instead:
// - every match of a log-line pattern in 16 MB of log text, found by a loop over
//   Osl_RegularExpression::search, by raw PCRE2 with JIT (the same engine used directly, the
//   subject checked once) and by std::regex; in Unicode mode (UTF-8) and in legacy mode;
// - WildcardString::Match against fnmatch(3) over a list of file names.
// Each loop counts its matches; a count that differs from the others fails the benchmark.
#include <vum-qib-osl/strings/regular_expression.h>
#include <vum-qib-osl/strings/unicode_configuration.h>
#include <vum-qib-osl/strings/wildcard_string.h>

#define PCRE2_CODE_UNIT_WIDTH 8
#include <benchmark/benchmark.h>
#include <fnmatch.h>
#include <pcre2.h>

#include <regex>
#include <string>
#include <vector>

namespace {

constexpr char kPattern[] = "ERROR ([A-Za-z]+) : cannot open ([a-z]+-[0-9]+)\\.dat";

const std::string& logText() {
    static const std::string* text = [] {
        auto* t = new std::string;
        t->reserve(16u << 20);
        const char* severities[] = {"-INFO ", "-WARN ", "-ERROR", "-INFO ", "-INFO "};
        const char* ats[] = {"Open", "Load", "Flush", "Rotate"};
        unsigned seed = 12345;
        for (unsigned n = 0; t->size() < (16u << 20); ++n) {
            seed = seed * 1103515245u + 12345u;
            const unsigned r = (seed >> 8) % 1000;
            *t += "A srv        4242/   17    db 03-05-2024 14:07:09 ";
            *t += severities[r % 5];
            *t += " ";
            *t += ats[r % 4];
            *t += r % 5 == 2 ? " : cannot open report-" + std::to_string(n) + ".dat"
                             : " : read " + std::to_string(r) + " groups from caf\xc3\xa9/settings.ini";
            *t += "\n";
        }
        return t;
    }();
    return *text;
}

std::size_t expectedMatches() {
    static const std::size_t n = [] {
        const std::string& text = logText();
        std::size_t count = 0;
        for (std::size_t p = text.find("ERROR "); p != std::string::npos; p = text.find("ERROR ", p + 1)) ++count;
        return count;
    }();
    return n;
}

void finish(benchmark::State& state, std::size_t found) {
    if (found != expectedMatches()) {
        state.SkipWithError(("found " + std::to_string(found) + " matches, not " +
                             std::to_string(expectedMatches())).c_str());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * logText().size()));
}

void searchOsl(benchmark::State& state, bool unicode) {
    Osl_UnicodeConfiguration::SetUnicodeMode(unicode);
    const std::string& text = logText();
    Osl_RegularExpression re(kPattern);
    std::size_t found = 0;
    for (auto _ : state) {
        found = 0;
        for (std::size_t pos = 0;;) {
            const Osl_RegularExpression::range r = re.search(text, pos, std::string::npos);
            if (r == Osl_RegularExpression::not_found()) break;
            ++found;
            pos = r.second;
        }
        benchmark::DoNotOptimize(found);
    }
    Osl_UnicodeConfiguration::SetUnicodeMode(false);
    finish(state, found);
}

void searchPcre2(benchmark::State& state, bool unicode) {
    const std::string& text = logText();
    int error = 0;
    PCRE2_SIZE offset = 0;
    pcre2_code* code = pcre2_compile(reinterpret_cast<PCRE2_SPTR>(kPattern), PCRE2_ZERO_TERMINATED,
                                     unicode ? PCRE2_UTF : 0, &error, &offset, nullptr);
    pcre2_jit_compile(code, PCRE2_JIT_COMPLETE);
    pcre2_match_data* md = pcre2_match_data_create_from_pattern(code, nullptr);
    const auto* subject = reinterpret_cast<PCRE2_SPTR>(text.data());
    std::size_t found = 0;
    for (auto _ : state) {
        found = 0;
        std::uint32_t options = 0;  // the first call checks the UTF-8, the others do not
        for (PCRE2_SIZE pos = 0;;) {
            if (pcre2_match(code, subject, text.size(), pos, options, md, nullptr) < 0) break;
            options = PCRE2_NO_UTF_CHECK;
            ++found;
            pos = pcre2_get_ovector_pointer(md)[1];
        }
        benchmark::DoNotOptimize(found);
    }
    pcre2_match_data_free(md);
    pcre2_code_free(code);
    finish(state, found);
}

void searchStdRegex(benchmark::State& state) {
    const std::string& text = logText();
    const std::regex re(kPattern);
    std::size_t found = 0;
    for (auto _ : state) {
        found = 0;
        for (auto it = std::sregex_iterator(text.begin(), text.end(), re); it != std::sregex_iterator(); ++it) {
            ++found;
        }
        benchmark::DoNotOptimize(found);
    }
    finish(state, found);
}

BENCHMARK_CAPTURE(searchOsl, utf8, true)->Name("regex_search_16mb_utf8/osl")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(searchPcre2, utf8, true)->Name("regex_search_16mb_utf8/pcre2_jit")->Unit(benchmark::kMillisecond);
BENCHMARK(searchStdRegex)->Name("regex_search_16mb_utf8/std_regex")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(searchOsl, bytes, false)->Name("regex_search_16mb_legacy/osl")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(searchPcre2, bytes, false)->Name("regex_search_16mb_legacy/pcre2_jit")->Unit(benchmark::kMillisecond);

const std::vector<std::string>& fileNames() {
    static const std::vector<std::string>* names = [] {
        auto* v = new std::vector<std::string>;
        const char* stems[] = {"report-", "qib_fds", "settings", "catalog_", "statistics-2024-"};
        const char* extensions[] = {".txt", ".ini", ".csv", ".log", ".dat", ".TXT"};
        for (int i = 0; i < 1000; ++i) {
            v->push_back(std::string(stems[i % 5]) + std::to_string(i) + extensions[i % 6]);
        }
        return v;
    }();
    return *names;
}


void wildcardOsl(benchmark::State& state) {
    WildcardString w("*.t?t", true);
    std::size_t found = 0;
    for (auto _ : state) {
        found = 0;
        for (const std::string& name : fileNames()) found += w.Match(name) ? 1 : 0;
        benchmark::DoNotOptimize(found);
    }
    state.counters["matched"] = static_cast<double>(found);
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * fileNames().size()));
}

void wildcardFnmatch(benchmark::State& state) {
    std::size_t found = 0;
    for (auto _ : state) {
        found = 0;
        for (const std::string& name : fileNames()) found += fnmatch("*.t?t", name.c_str(), 0) == 0 ? 1 : 0;
        benchmark::DoNotOptimize(found);
    }
    state.counters["matched"] = static_cast<double>(found);
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * fileNames().size()));
}

BENCHMARK(wildcardOsl)->Name("wildcard_match_1000_names/osl")->Unit(benchmark::kMicrosecond);
BENCHMARK(wildcardFnmatch)->Name("wildcard_match_1000_names/fnmatch")->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
