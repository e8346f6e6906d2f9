// bench/ini_bench.cpp
// Loading a generated 20 MB (and a 4 KB) INI file with Ini, inih's INIReader and SimpleIni (each stores what it
// reads), and looking up existing keys with Ini::GetString, SimpleIni's GetValue and POCO's
// AbstractConfiguration::getString.
#include <vum-qib-osl/ini/ini.h>

#include <INIReader.h>
#include <Poco/AutoPtr.h>
#include <Poco/Util/IniFileConfiguration.h>
// Bytes as they are, as Ini keeps them (and SimpleIni's fastest set-up).
#define SI_NO_CONVERSION
#include <SimpleIni.h>
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

constexpr int kKeysPerGroup = 40;

struct Lookup {
    std::string group;
    std::string key;
    std::string dotted;  // "group.key", POCO's form
};

// A file of groups of 40 keys, values of 4 to 60 characters, a comment now and then: about
// 20 MB, or 16 KB for a typical settings file. Made once per run in the temporary directory and
// removed at exit.
class BenchFile {
public:
    static const BenchFile& get() {
        static const BenchFile* file = new BenchFile(20u * 1024 * 1024, "large");
        return *file;
    }
    static const BenchFile& small() {
        static const BenchFile* file = new BenchFile(16u * 1024, "small");
        return *file;
    }
    static const BenchFile& tiny() {
        static const BenchFile* file = new BenchFile(4u * 1024, "tiny");
        return *file;
    }
    const std::string& path() const { return path_; }
    const std::vector<Lookup>& lookups() const { return lookups_; }

private:
    BenchFile(std::size_t bytes, const std::string& name) {
        path_ = (std::filesystem::temp_directory_path() /
                 ("osl-ini-bench-" + name + "-" + std::to_string(::getpid()) + ".ini"))
                    .string();
        std::ofstream out(path_, std::ios::binary | std::ios::trunc);
        std::size_t size = 0;
        unsigned seed = 12345;
        int group = 0;
        for (; size < bytes; ++group) {
            std::string text = "[section_" + std::to_string(group) + "]\n";
            if (group % 10 == 0) text += "; settings of part " + std::to_string(group) + "\n";
            for (int k = 0; k < kKeysPerGroup; ++k) {
                seed = seed * 1103515245u + 12345u;
                const std::size_t length = 4 + (seed >> 16) % 57;
                std::string value;
                for (std::size_t i = 0; i < length; ++i) value += static_cast<char>('a' + (seed >> (i % 16)) % 26);
                text += "key_" + std::to_string(k) + "=" + value + "\n";
            }
            text += "\n";
            size += text.size();
            out << text;
        }
        for (int i = 0; i < 4096; ++i) {
            const int g = (i * 7919) % group;
            const int k = (i * 31) % kKeysPerGroup;
            Lookup l{"section_" + std::to_string(g), "key_" + std::to_string(k), ""};
            l.dotted = l.group + "." + l.key;
            lookups_.push_back(l);
        }
        if (name == "large") {
            std::atexit([] { std::remove(BenchFile::get().path().c_str()); });
        } else if (name == "small") {
            std::atexit([] { std::remove(BenchFile::small().path().c_str()); });
        } else {
            std::atexit([] { std::remove(BenchFile::tiny().path().c_str()); });
        }
    }
    std::string path_;
    std::vector<Lookup> lookups_;
};

using FileOf = const BenchFile& (*)();

template <FileOf file>
void BM_Load_osl(benchmark::State& state) {
    const std::string& path = file().path();
    for (auto _ : state) {
        Ini ini;
        ini.Load(path, true);
        benchmark::DoNotOptimize(ini.GetGroupProperty("section_1"));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * std::filesystem::file_size(path)));
}
BENCHMARK(BM_Load_osl<BenchFile::get>)->Name("ini_load_20MB/osl")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Load_osl<BenchFile::tiny>)->Name("ini_load_4KB/osl");

template <FileOf file>
void BM_Load_inih(benchmark::State& state) {
    const std::string& path = file().path();
    for (auto _ : state) {
        INIReader reader(path);
        if (reader.ParseError() != 0) state.SkipWithError("inih could not parse the file");
        benchmark::DoNotOptimize(reader.HasSection("section_1"));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * std::filesystem::file_size(path)));
}
BENCHMARK(BM_Load_inih<BenchFile::get>)->Name("ini_load_20MB/inih")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Load_inih<BenchFile::tiny>)->Name("ini_load_4KB/inih");

template <FileOf file>
void BM_Load_simpleini(benchmark::State& state) {
    const std::string& path = file().path();
    for (auto _ : state) {
        CSimpleIniA ini;
        if (ini.LoadFile(path.c_str()) < 0) state.SkipWithError("SimpleIni could not load the file");
        benchmark::DoNotOptimize(ini.GetSection("section_1"));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * std::filesystem::file_size(path)));
}
BENCHMARK(BM_Load_simpleini<BenchFile::get>)->Name("ini_load_20MB/simpleini")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Load_simpleini<BenchFile::tiny>)->Name("ini_load_4KB/simpleini");

template <FileOf file>
void BM_GetString_osl(benchmark::State& state) {
    static const Ini* ini = new Ini(file().path(), true);
    const std::vector<Lookup>& lookups = file().lookups();
    std::size_t i = 0;
    for (auto _ : state) {
        const Lookup& l = lookups[i++ & 4095];
        std::string value = ini->GetString(l.group, l.key, "", nullptr);
        benchmark::DoNotOptimize(value);
    }
}
BENCHMARK(BM_GetString_osl<BenchFile::get>)->Name("get_string_20MB/osl");
BENCHMARK(BM_GetString_osl<BenchFile::small>)->Name("get_string_16KB/osl");

template <FileOf file>
void BM_GetString_simpleini(benchmark::State& state) {
    static CSimpleIniA* ini = [] {
        auto* loaded = new CSimpleIniA;
        loaded->LoadFile(file().path().c_str());
        return loaded;
    }();
    const std::vector<Lookup>& lookups = file().lookups();
    std::size_t i = 0;
    for (auto _ : state) {
        const Lookup& l = lookups[i++ & 4095];
        const char* value = ini->GetValue(l.group.c_str(), l.key.c_str(), "");
        benchmark::DoNotOptimize(value);
    }
}
BENCHMARK(BM_GetString_simpleini<BenchFile::get>)->Name("get_string_20MB/simpleini");
BENCHMARK(BM_GetString_simpleini<BenchFile::small>)->Name("get_string_16KB/simpleini");

template <FileOf file>
void BM_GetString_poco(benchmark::State& state) {
    static Poco::Util::AbstractConfiguration* config = [] {
        auto* loaded = new Poco::Util::IniFileConfiguration(file().path());
        loaded->duplicate();  // kept for the whole run
        return loaded;
    }();
    const std::vector<Lookup>& lookups = file().lookups();
    std::size_t i = 0;
    for (auto _ : state) {
        const Lookup& l = lookups[i++ & 4095];
        std::string value = config->getString(l.dotted, "");
        benchmark::DoNotOptimize(value);
    }
}
BENCHMARK(BM_GetString_poco<BenchFile::get>)->Name("get_string_20MB/poco");
BENCHMARK(BM_GetString_poco<BenchFile::small>)->Name("get_string_16KB/poco");

}  // namespace

BENCHMARK_MAIN();
