// bench/log_file_bench.cpp
// Lines per second into a rotating log file: our logger with a common file channel (rotation by
// size and a retention of two backups) against spdlog's rotating file sink flushing every line
// and POCO's FileChannel (which flushes every line by default) behind a pattern formatter. The
// peers' patterns imitate our line layout (name, process and thread, date, severity, at), so that
// each writes about the same bytes per line (ours and spdlog's end in CR LF, POCO's in LF); each
// rotates at 4 MB and keeps two backups. Also four threads logging into the same channel at once.
#include <vum-qib-osl/log/channel_file.h>
#include <vum-qib-osl/log/log.h>

#include <Poco/AutoPtr.h>
#include <Poco/FileChannel.h>
#include <Poco/FormattingChannel.h>
#include <Poco/Logger.h>
#include <Poco/PatternFormatter.h>
#include <benchmark/benchmark.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/spdlog.h>

#include <filesystem>
#include <memory>
#include <string>

namespace {

constexpr std::uint32_t kRotateAt = 4 * 1024 * 1024;
constexpr char kSpdlogPattern[] = "A bench      %P/%t       %m-%d-%Y %H:%M:%S -INFO  bench : %v";
constexpr char kPocoPattern[] = "A bench      %P/%J       %m-%d-%Y %H:%M:%S -INFO  bench : %t";

std::shared_ptr<spdlog::logger> spdlogLogger(const std::string& name, const std::string& path) {
    auto sink = std::make_shared<spdlog::sinks::rotating_file_sink_mt>(path, kRotateAt, 2);
    auto logger = std::make_shared<spdlog::logger>(name, sink);
    logger->set_formatter(
        std::make_unique<spdlog::pattern_formatter>(kSpdlogPattern, spdlog::pattern_time_type::local, "\r\n"));
    logger->flush_on(spdlog::level::trace);
    return logger;
}

// A fresh directory for one benchmark, removed afterwards.
class BenchDir {
public:
    explicit BenchDir(const std::string& name)
        : path_(std::filesystem::temp_directory_path() / ("osl-bench-" + name)) {
        std::filesystem::remove_all(path_);
        std::filesystem::create_directories(path_);
    }
    ~BenchDir() { std::filesystem::remove_all(path_); }
    std::string file(const char* name) const { return (path_ / name).string(); }

private:
    std::filesystem::path path_;
};

// The logger singleton writes into one common file channel while the fixture lives.
class OslFile {
public:
    explicit OslFile(const std::string& path) {
        CLog* log = CLog::Instance();
        log->DeleteChannels();
        log->SetProcessName("bench");
        auto* channel = new CChannelCommonFile(path, SevInfo, "");
        channel->SetMaxSize(kRotateAt);
        channel->SetPurgeCount(2);
        log->AddChannel(channel);
    }
    ~OslFile() {
        CLog::Instance()->DeleteChannels();
        CLog::Instance()->InitOptimisationVariable();
    }
};

void runOsl(benchmark::State& state) {
    CLogMsg msg("bench", "", SevInfo);
    int n = 0;
    for (auto _ : state) {
        msg << "line " << ++n << " of the benchmark" << flush;
    }
    state.SetItemsProcessed(state.iterations());
}

void BM_FileLine_osl(benchmark::State& state) {
    BenchDir dir("osl");
    OslFile file(dir.file("run.log"));
    runOsl(state);
}
BENCHMARK(BM_FileLine_osl)->Name("file_line/osl");

void BM_FileLine_spdlog(benchmark::State& state) {
    BenchDir dir("spdlog");
    std::shared_ptr<spdlog::logger> logger = spdlogLogger("bench", dir.file("run.log"));
    int n = 0;
    for (auto _ : state) logger->info("line {} of the benchmark", ++n);
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_FileLine_spdlog)->Name("file_line/spdlog");

Poco::Logger& pocoLogger(const std::string& path) {
    Poco::AutoPtr<Poco::FileChannel> file(new Poco::FileChannel(path));
    file->setProperty("rotation", std::to_string(kRotateAt / 1024) + " K");
    file->setProperty("purgeCount", "2");
    Poco::AutoPtr<Poco::PatternFormatter> pattern(new Poco::PatternFormatter(kPocoPattern));
    Poco::AutoPtr<Poco::FormattingChannel> channel(new Poco::FormattingChannel(pattern, file));
    Poco::Logger& logger = Poco::Logger::get("bench-" + path);
    logger.setChannel(channel);
    logger.setLevel(Poco::Message::PRIO_INFORMATION);
    return logger;
}

void BM_FileLine_poco(benchmark::State& state) {
    BenchDir dir("poco");
    Poco::Logger& logger = pocoLogger(dir.file("run.log"));
    int n = 0;
    for (auto _ : state) logger.information("line " + std::to_string(++n) + " of the benchmark");
    state.SetItemsProcessed(state.iterations());
    logger.getChannel()->close();
}
BENCHMARK(BM_FileLine_poco)->Name("file_line/poco");

// Four threads: thread 0 sets up and tears down, every thread logs.
std::unique_ptr<BenchDir> sharedDir;
std::unique_ptr<OslFile> sharedOsl;
std::shared_ptr<spdlog::logger> sharedSpdlog;
Poco::Logger* sharedPoco = nullptr;

void BM_FileLine4_osl(benchmark::State& state) {
    if (state.thread_index() == 0) {
        sharedDir = std::make_unique<BenchDir>("osl4");
        sharedOsl = std::make_unique<OslFile>(sharedDir->file("run.log"));
    }
    runOsl(state);
    if (state.thread_index() == 0) {
        sharedOsl.reset();
        sharedDir.reset();
    }
}
BENCHMARK(BM_FileLine4_osl)->Name("file_line_4_threads/osl")->Threads(4)->UseRealTime();

void BM_FileLine4_spdlog(benchmark::State& state) {
    if (state.thread_index() == 0) {
        sharedDir = std::make_unique<BenchDir>("spdlog4");
        sharedSpdlog = spdlogLogger("bench4", sharedDir->file("run.log"));
    }
    int n = 0;
    for (auto _ : state) sharedSpdlog->info("line {} of the benchmark", ++n);
    state.SetItemsProcessed(state.iterations());
    if (state.thread_index() == 0) {
        sharedSpdlog.reset();
        sharedDir.reset();
    }
}
BENCHMARK(BM_FileLine4_spdlog)->Name("file_line_4_threads/spdlog")->Threads(4)->UseRealTime();

void BM_FileLine4_poco(benchmark::State& state) {
    if (state.thread_index() == 0) {
        sharedDir = std::make_unique<BenchDir>("poco4");
        sharedPoco = &pocoLogger(sharedDir->file("run.log"));
    }
    int n = 0;
    for (auto _ : state) sharedPoco->information("line " + std::to_string(++n) + " of the benchmark");
    state.SetItemsProcessed(state.iterations());
    if (state.thread_index() == 0) {
        sharedPoco->getChannel()->close();
        sharedDir.reset();
    }
}
BENCHMARK(BM_FileLine4_poco)->Name("file_line_4_threads/poco")->Threads(4)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
