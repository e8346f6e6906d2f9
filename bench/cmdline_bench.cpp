// bench/cmdline_bench.cpp
// Reading a typical program command line (a few options with values, a flag, operands) and
// filling a three-argument message text: ours beside Boost.Program_options and getopt_long for
// the command line, and beside {fmt} for the positional text.
#include <vum-qib-osl/cmdline/qib_command_line.h>
#include <vum-qib-osl/message/format_string.h>

#include <benchmark/benchmark.h>
#include <fmt/format.h>
#include <getopt.h>

#include <boost/program_options.hpp>
#include <string>
#include <vector>

namespace {

// prog -in=q3.dat -out q3.pdf(two arguments for the peers' sake) -v -level=3 a.txt b.txt
std::vector<std::string> oslArgs() { return {"prog", "-in=q3.dat", "-out=", "q3.pdf", "-v", "-level=3", "a.txt", "b.txt"}; }
std::vector<std::string> gnuArgs() {
    return {"prog", "--in=q3.dat", "--out", "q3.pdf", "-v", "--level=3", "a.txt", "b.txt"};
}

std::vector<char*> pointers(std::vector<std::string>& args) {
    std::vector<char*> argv;
    for (std::string& a : args) argv.push_back(a.data());
    argv.push_back(nullptr);
    return argv;
}

void BM_CommandLine_osl(benchmark::State& state) {
    std::vector<std::string> args = oslArgs();
    std::vector<char*> argv = pointers(args);
    for (auto _ : state) {
        QIBCommandLine line;
        line.Init(static_cast<int>(args.size()), argv.data());
        std::string in = line.GetOptionValue("-in");
        std::string out = line.GetOptionValue("-out");
        int level = std::stoi(line.GetOptionValue("-level"));
        bool verbose = line.HasFlag("-v");
        std::vector<std::string> files = line.GetOptionValues("");
        benchmark::DoNotOptimize(in);
        benchmark::DoNotOptimize(out);
        benchmark::DoNotOptimize(level);
        benchmark::DoNotOptimize(verbose);
        benchmark::DoNotOptimize(files);
    }
}
BENCHMARK(BM_CommandLine_osl)->Name("command_line/osl");

void BM_CommandLine_boost(benchmark::State& state) {
    namespace po = boost::program_options;
    std::vector<std::string> args = gnuArgs();
    std::vector<char*> argv = pointers(args);
    po::options_description options;
    options.add_options()("in", po::value<std::string>())("out", po::value<std::string>())(
        "level", po::value<int>())("verbose,v", po::bool_switch())("files", po::value<std::vector<std::string>>());
    po::positional_options_description positional;
    positional.add("files", -1);
    for (auto _ : state) {
        po::variables_map vm;
        po::store(po::command_line_parser(static_cast<int>(args.size()), argv.data())
                      .options(options)
                      .positional(positional)
                      .run(),
                  vm);
        std::string in = vm["in"].as<std::string>();
        std::string out = vm["out"].as<std::string>();
        int level = vm["level"].as<int>();
        bool verbose = vm["verbose"].as<bool>();
        std::vector<std::string> files = vm["files"].as<std::vector<std::string>>();
        benchmark::DoNotOptimize(in);
        benchmark::DoNotOptimize(out);
        benchmark::DoNotOptimize(level);
        benchmark::DoNotOptimize(verbose);
        benchmark::DoNotOptimize(files);
    }
}
BENCHMARK(BM_CommandLine_boost)->Name("command_line/boost");

void BM_CommandLine_getopt(benchmark::State& state) {
    std::vector<std::string> args = gnuArgs();
    static const option kOptions[] = {{"in", required_argument, nullptr, 'i'},
                                      {"out", required_argument, nullptr, 'o'},
                                      {"level", required_argument, nullptr, 'l'},
                                      {nullptr, 0, nullptr, 0}};
    for (auto _ : state) {
        std::vector<char*> argv = pointers(args);  // getopt permutes its argv
        optind = 0;
        std::string in, out;
        int level = 0;
        bool verbose = false;
        for (int c; (c = getopt_long(static_cast<int>(args.size()), argv.data(), "v", kOptions, nullptr)) != -1;) {
            if (c == 'i') in = optarg;
            if (c == 'o') out = optarg;
            if (c == 'l') level = std::stoi(optarg);
            if (c == 'v') verbose = true;
        }
        std::vector<std::string> files(argv.begin() + optind, argv.begin() + static_cast<long>(args.size()));
        benchmark::DoNotOptimize(in);
        benchmark::DoNotOptimize(out);
        benchmark::DoNotOptimize(level);
        benchmark::DoNotOptimize(verbose);
        benchmark::DoNotOptimize(files);
    }
}
BENCHMARK(BM_CommandLine_getopt)->Name("command_line/getopt");

void BM_Fill3_osl(benchmark::State& state) {
    const std::string text = "cannot open %1: %2 (%3 attempts)";
    const std::string file = "report-2024-q3.dat";
    for (auto _ : state) {
        FormatString f(text);
        f << file << "permission denied" << 3;
        benchmark::DoNotOptimize(f.Get());
    }
}
BENCHMARK(BM_Fill3_osl)->Name("fill_placeholders/osl");

void BM_Fill3_fmt(benchmark::State& state) {
    const std::string text = "cannot open {0}: {1} ({2} attempts)";  // read at run time, as from a catalog
    const std::string file = "report-2024-q3.dat";
    for (auto _ : state) {
        std::string s = fmt::format(fmt::runtime(text), file, "permission denied", 3);
        benchmark::DoNotOptimize(s);
    }
}
BENCHMARK(BM_Fill3_fmt)->Name("fill_placeholders/fmt");

}  // namespace

BENCHMARK_MAIN();
