// statistics/src/statistics_state.h
// The process-wide state of the statistics: registry, reporter, switches and the threads.
#pragma once

#include <vum-qib-osl/statistics/statistics_thread.h>

#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/clock.h"

namespace osl::detail {

struct StatisticsState {
    std::recursive_mutex registryLock;  // guards registry
    std::vector<CQibOsl_Statistics_Counter*> registry;
    // The switches and the reporter are read by reporting threads on every event: relaxed atomics.
    std::atomic<bool> registryExists{false};
    std::atomic<bool> enabled{false};
    std::atomic<bool> hourReport{false};
    std::atomic<bool> dayReport{false};
    std::atomic<bool> monthReport{false};
    std::atomic<CQibOsl_Statistics_OutputReport*> reporter{nullptr};

    osl::platform::Wakeup wakeup;  // what the threads sleep on
    std::mutex threadsLock;        // guards threads
    std::vector<std::thread> threads;
};

StatisticsState& statisticsState();

/// Stops and joins every statistics thread, then returns the process to its initial state: no
/// registry, no reporter, every switch off, no header written, no Prometheus export. Counters
/// keep thinking they are registered. For tests, which need fresh state in one process.
void resetStatistics();

/// Forgets the largest header of each report kind (report_files.cpp).
void resetReportHeaders();

struct ClosedMinute {
    const CQibOsl_Statistics_Counter* counter;
    CQibOsl_Statistics_Sample sample;
};
/// The Prometheus export at a minute boundary (prometheus_export.cpp): adds the minute that closed
/// on every counter to its totals and, when enabled, writes the file.
void exportMinute(const std::vector<ClosedMinute>& closed);
void resetPrometheusExport();

}  // namespace osl::detail
