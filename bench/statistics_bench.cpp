// bench/statistics_bench.cpp
// One event into a shared counter from one and two threads: ReportEventA against the two bare
// relaxed atomic additions it is made of, and against a count and a sum guarded by a mutex.
#include <vum-qib-osl/statistics/statistics_thread.h>

#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdint>
#include <mutex>

namespace {

CQibOsl_Statistics_EventPerMinuteCounter& counter() {
    static auto* c = [] {
        CQibOsl_Statistics_Thread().Start();  // sleeps a minute at a time; never samples here
        CQibOsl_Statistics_Thread::EnableStatistics();
        return new CQibOsl_Statistics_EventPerMinuteCounter("bench");
    }();
    return *c;
}

void BM_ReportEvent_osl(benchmark::State& state) {
    CQibOsl_Statistics_EventPerMinuteCounter& c = counter();
    long value = 0;
    for (auto _ : state) c.ReportEventA(++value & 0xff);
    benchmark::DoNotOptimize(c.Current());
}
BENCHMARK(BM_ReportEvent_osl)->Name("report_event/osl")->Threads(1)->Threads(2)->UseRealTime();

struct alignas(64) AtomicPair {
    std::atomic<std::int32_t> count{0};
    std::atomic<std::int32_t> sum{0};
} atomicPair;

void BM_ReportEvent_atomics(benchmark::State& state) {
    long value = 0;
    for (auto _ : state) {
        atomicPair.count.fetch_add(1, std::memory_order_relaxed);
        atomicPair.sum.fetch_add(static_cast<std::int32_t>(++value & 0xff), std::memory_order_relaxed);
    }
}
BENCHMARK(BM_ReportEvent_atomics)->Name("report_event/atomics")->Threads(1)->Threads(2)->UseRealTime();

struct alignas(64) LockedPair {
    std::mutex lock;  // guards count and sum
    std::int32_t count = 0;
    std::int32_t sum = 0;
} lockedPair;

void BM_ReportEvent_mutex(benchmark::State& state) {
    long value = 0;
    for (auto _ : state) {
        std::lock_guard<std::mutex> guard(lockedPair.lock);
        ++lockedPair.count;
        lockedPair.sum += static_cast<std::int32_t>(++value & 0xff);
    }
    benchmark::DoNotOptimize(lockedPair.count);
}
BENCHMARK(BM_ReportEvent_mutex)->Name("report_event/mutex")->Threads(1)->Threads(2)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
