// bench/log_bench.cpp
// The cost of a message that the logger does not want, through OSL_LOG, POCO's poco_debug
// and spdlog's debug: each logger is configured to take warnings and above, and the message is
// at a lower level. Every loop clobbers memory, as the code around a real log statement does:
// otherwise the compiler may test a plain level field once before the loop and measure nothing.
#include <vum-qib-osl/log/log.h>

// Without this, a release build compiles poco_debug to nothing at all; a product needs the
// runtime level check that it is configured with.
#define POCO_LOG_DEBUG 1
#include <Poco/Logger.h>
#include <Poco/NullChannel.h>
#include <benchmark/benchmark.h>
#include <spdlog/sinks/null_sink.h>
#include <spdlog/spdlog.h>

#include <string>

namespace {

void discardLine(const char*) {}

void BM_DisabledMessage_osl(benchmark::State& state) {
    CLog* log = CLog::Instance();
    log->SetFunctionChannel(discardLine, SevWarning, "", false);
    int n = 0;
    for (auto _ : state) {
        OSL_LOG(SevInfo, "", "bench") << "value " << n << " of " << std::string("a string");
        benchmark::DoNotOptimize(++n);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_DisabledMessage_osl)->Name("disabled_message/osl");

void BM_DisabledMessage_poco(benchmark::State& state) {
    Poco::Logger& logger = Poco::Logger::get("bench");
    logger.setChannel(new Poco::NullChannel);
    logger.setLevel(Poco::Message::PRIO_WARNING);
    int n = 0;
    for (auto _ : state) {
        poco_debug(logger, "value " + std::to_string(n) + " of " + std::string("a string"));
        benchmark::DoNotOptimize(++n);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_DisabledMessage_poco)->Name("disabled_message/poco");

void BM_DisabledMessage_spdlog(benchmark::State& state) {
    auto logger = std::make_shared<spdlog::logger>("bench", std::make_shared<spdlog::sinks::null_sink_st>());
    logger->set_level(spdlog::level::warn);
    int n = 0;
    for (auto _ : state) {
        logger->debug("value {} of {}", n, std::string("a string"));
        benchmark::DoNotOptimize(++n);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_DisabledMessage_spdlog)->Name("disabled_message/spdlog");

}  // namespace

BENCHMARK_MAIN();
