// bench/message_bench.cpp
// A message catalog look-up through the process-wide catalog, from one and from two threads,
// against a bare std::unordered_map find that copies the text out (ours returns a copy too): the
// floor of any look-up by name.
#include <vum-qib-osl/message/map_file.h>

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <unordered_map>
#include <vector>

namespace {

constexpr int kEntries = 2000;

std::string keyOf(int i) {
    std::string key = std::to_string(10000 + i);
    key.insert(key.begin(), 'E');
    return key;
}
std::string textOf(int i) { return "cannot open report %1 of job " + std::to_string(i) + ": %2"; }

// A catalog of 2000 entries, stored once through MapFile and loaded into the process-wide one.
const std::vector<std::string>& keys() {
    static const std::vector<std::string>* list = [] {
        MapFile catalog;
        auto* k = new std::vector<std::string>;
        for (int i = 0; i < kEntries; ++i) {
            catalog.Insert(keyOf(i), textOf(i));
            k->push_back(keyOf((i * 7919) % kEntries));
        }
        const std::string path = (std::filesystem::temp_directory_path() /
                                  ("osl-message-bench-" + std::to_string(::getpid()) + ".cat")).string();
        if (!catalog.StoreMap(path) || !SingleMapFileMT::Instance()->LoadMap(path)) std::abort();
        std::remove(path.c_str());
        return k;
    }();
    return *list;
}

void osl(benchmark::State& state) {
    const std::vector<std::string>& k = keys();
    std::size_t i = static_cast<std::size_t>(state.thread_index()) * 101;
    for (auto _ : state) {
        std::string text = (*SingleMapFileMT::Instance())[k[i++ % k.size()]];
        benchmark::DoNotOptimize(text.data());
    }
}

void unorderedMap(benchmark::State& state) {
    static const std::unordered_map<std::string, std::string>* map = [] {
        auto* m = new std::unordered_map<std::string, std::string>;
        for (int i = 0; i < kEntries; ++i) m->emplace(keyOf(i), textOf(i));
        return m;
    }();
    const std::vector<std::string>& k = keys();
    std::size_t i = static_cast<std::size_t>(state.thread_index()) * 101;
    for (auto _ : state) {
        auto it = map->find(k[i++ % k.size()]);
        std::string text = it == map->end() ? std::string() : it->second;
        benchmark::DoNotOptimize(text.data());
    }
}

BENCHMARK(osl)->Name("catalog_lookup_1_thread/osl");
BENCHMARK(unorderedMap)->Name("catalog_lookup_1_thread/unordered_map");
BENCHMARK(osl)->Name("catalog_lookup_2_threads/osl")->Threads(2)->UseRealTime();
BENCHMARK(unorderedMap)->Name("catalog_lookup_2_threads/unordered_map")->Threads(2)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
