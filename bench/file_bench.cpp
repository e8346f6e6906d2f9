// bench/file_bench.cpp
// The file wrappers against what a user would write by hand:
// - listing a directory of 10,000 files with a wildcard ("*7.dat", one name in ten) through the
//   find-file handles, against std::filesystem::directory_iterator plus fnmatch(3);
// - the status of a file through Osl_IO_Status, against a bare stat(2).
// Each listing counts its names; a count that differs from the expected one fails the benchmark.
#include <vum-qib-osl/file/find_file.h>
#include <vum-qib-osl/file/osl_io_status.h>

#include <benchmark/benchmark.h>
#include <fnmatch.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

constexpr int kFiles = 10000;
constexpr char kWildcard[] = "*7.dat";

// Made once per run under the temporary directory and removed at exit.
const std::string& benchDirectory() {
    static const std::string* dir = [] {
        auto* path = new std::string(std::filesystem::temp_directory_path() / ("osl-file-bench-" + std::to_string(::getpid())));
        std::filesystem::create_directories(*path);
        for (int i = 0; i < kFiles; ++i) std::ofstream(*path + "/report-" + std::to_string(i) + ".dat");
        std::atexit([] { std::filesystem::remove_all(benchDirectory()); });
        return path;
    }();
    return *dir;
}

void check(benchmark::State& state, int found) {
    if (found != kFiles / 10) state.SkipWithError(("found " + std::to_string(found) + " names").c_str());
}

void listOsl(benchmark::State& state) {
    const std::string& dir = benchDirectory();
    int found = 0;
    for (auto _ : state) {
        found = 0;
        std::string name;
        FHANDLE search = OslFindFirstFile(dir, kWildcard, name);
        if (search != nullptr) {
            do ++found;
            while (OslFindNextFile(search, name));
            OslFindClose(search);
        }
        benchmark::DoNotOptimize(name);
    }
    check(state, found);
}

void listStdFnmatch(benchmark::State& state) {
    const std::string& dir = benchDirectory();
    int found = 0;
    for (auto _ : state) {
        found = 0;
        for (const auto& entry : std::filesystem::directory_iterator(dir)) {
            if (fnmatch(kWildcard, entry.path().filename().c_str(), 0) == 0) ++found;
        }
    }
    check(state, found);
}

void statusOsl(benchmark::State& state) {
    const std::string path = benchDirectory() + "/report-42.dat";
    for (auto _ : state) {
        Osl_IO_Status status(path);
        benchmark::DoNotOptimize(status.size());
    }
}

void statusStat(benchmark::State& state) {
    const std::string path = benchDirectory() + "/report-42.dat";
    for (auto _ : state) {
        struct stat st {};
        benchmark::DoNotOptimize(::stat(path.c_str(), &st));
        benchmark::DoNotOptimize(st.st_size);
    }
}

}  // namespace

BENCHMARK(listOsl)->Name("list_10000_wildcard/osl")->Unit(benchmark::kMillisecond);
BENCHMARK(listStdFnmatch)->Name("list_10000_wildcard/std_fnmatch")->Unit(benchmark::kMillisecond);
BENCHMARK(statusOsl)->Name("status/osl")->Unit(benchmark::kNanosecond);
BENCHMARK(statusStat)->Name("status/stat")->Unit(benchmark::kNanosecond);

BENCHMARK_MAIN();
