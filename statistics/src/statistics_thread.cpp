// statistics/src/statistics_thread.cpp
// The statistics thread: watches the clock and closes minutes, hours, days and months on every
// registered counter, then hands the finished rings to the reporter. Its clock and sleep go
// through platform/clock.h, so that tests drive it with a clock of their own and stop it at once.
#include <vum-qib-osl/statistics/statistics_thread.h>

#include <vum-qib-osl/log/log.h>
#include <vum-qib-osl/log/log_msg.h>
#include <vum-qib-osl/statistics/statistics_trial.h>

#include "platform/clock.h"
#include "statistics/src/statistics_state.h"

namespace osl::detail {

StatisticsState& statisticsState() {
    static StatisticsState* state = new StatisticsState;
    return *state;
}

void resetStatistics() {
    StatisticsState& state = statisticsState();
    std::vector<std::thread> threads;
    {
        std::lock_guard<std::mutex> lock(state.threadsLock);
        threads.swap(state.threads);
    }
    {
        std::lock_guard<std::mutex> lock(state.wakeup.mutex);
        state.wakeup.stopped = true;
    }
    state.wakeup.changed.notify_all();
    for (std::thread& t : threads) t.join();
    {
        std::lock_guard<std::mutex> lock(state.wakeup.mutex);
        state.wakeup.stopped = false;
    }
    {
        std::lock_guard<std::recursive_mutex> lock(state.registryLock);
        state.registry.clear();
        state.registryExists.store(false);
    }
    state.reporter.store(nullptr);
    state.enabled.store(false);
    state.hourReport.store(false);
    state.dayReport.store(false);
    state.monthReport.store(false);
    resetReportHeaders();
    resetPrometheusExport();
}

}  // namespace osl::detail

namespace {

using osl::detail::StatisticsState;
using osl::detail::statisticsState;

constexpr std::int64_t kSecond = 1000000;

// The fields the thread watches, as the rings index them.
struct Period {
    long minute = 0;
    long hour = 0;
    long dayIndex = 0;
    long monthIndex = 0;
    long year = 0;
};

Period periodOf(const osl::platform::LocalTime& t) { return {t.minute, t.hour, t.day - 1, t.month - 1, t.year}; }

// A field has moved on when it grew or wrapped around to 0.
bool changed(long now, long last) { return now > last || (now == 0 && last != 0); }

bool sleepSeconds(StatisticsState& state, int seconds) {
    return osl::platform::clock().sleepFor(seconds * kSecond, state.wakeup);
}

void logFailure(const char* what) {
    if (!CLog::Instance()->HasSeverity(SevError)) return;
    CLogMsg msg("CQibOsl_Statistics_Thread", "OSL", SevError);
    msg << "statistics report failed: " << what << flush;
}

// One pass over the counters at a boundary; the reports go out afterwards.
void closePeriods(StatisticsState& state, const Period& last, const Period& now) {
    const bool minute = changed(now.minute, last.minute);
    const bool hour = changed(now.hour, last.hour);
    const bool day = changed(now.dayIndex, last.dayIndex);
    const bool month = changed(now.monthIndex, last.monthIndex);

    std::vector<CQibOsl_Statistics_Counter*> counters;
    {
        std::lock_guard<std::recursive_mutex> lock(state.registryLock);
        counters = state.registry;
    }
    CQibOsl_Statistics_RingList hours, days, months;
    std::vector<osl::detail::ClosedMinute> closed;
    for (CQibOsl_Statistics_Counter* counter : counters) {
        if (minute) {
            counter->SampleMinute(last.minute);
            CQibOsl_Statistics_RingList ring;  // taken before the hour empties the minutes
            counter->ReportMinutes(ring);
            closed.push_back({counter, ring.front().second[last.minute]});
        }
        if (hour) {
            counter->ReportMinutes(hours);
            counter->SampleHour(last.hour);
        }
        if (day) {
            counter->ReportHours(days);
            counter->SampleDay(last.dayIndex);
        }
        if (month) {
            counter->ReportDays(months);
            counter->SampleMonth(last.monthIndex);
        }
    }
    try {
        if (minute) osl::detail::exportMinute(closed);
        CQibOsl_Statistics_OutputReport* reporter = state.reporter.load(std::memory_order_relaxed);
        if (reporter == nullptr) return;
        const long y = last.year, m = last.monthIndex + 1, d = last.dayIndex + 1, h = last.hour;
        if (hour && state.hourReport.load(std::memory_order_relaxed)) reporter->HourReport(hours, y, m, d, h);
        if (day && state.dayReport.load(std::memory_order_relaxed)) reporter->DayReport(days, y, m, d, h);
        if (month && state.monthReport.load(std::memory_order_relaxed)) reporter->MonthReport(months, y, m, d, h);
    } catch (const std::exception& e) {
        logFailure(e.what());
    } catch (...) {
        logFailure("unknown exception");
    }
}

void run(StatisticsState& state) {
    osl::platform::LocalTime read = osl::platform::localNow();
    Period last = periodOf(read);
    if (!sleepSeconds(state, 60)) return;
    for (;;) {
        if (!state.registryExists.load(std::memory_order_acquire) || !state.enabled.load(std::memory_order_relaxed)) {
            // Deliberate: the time of the last pass, not the present one, so that the first pass
            // after statistics come back on closes what passed meanwhile.
            last = periodOf(read);
            if (!sleepSeconds(state, 60)) return;
            continue;
        }
        read = osl::platform::localNow();
        const Period now = periodOf(read);
        if (!changed(now.minute, last.minute) && !changed(now.hour, last.hour) &&
            !changed(now.dayIndex, last.dayIndex) && !changed(now.monthIndex, last.monthIndex) &&
            !changed(now.year, last.year)) {
            if (!sleepSeconds(state, 30)) return;
            continue;
        }
        closePeriods(state, last, now);
        if (changed(now.minute, last.minute)) last.minute = now.minute;
        if (changed(now.hour, last.hour)) last.hour = now.hour;
        if (changed(now.dayIndex, last.dayIndex)) last.dayIndex = now.dayIndex;
        if (changed(now.monthIndex, last.monthIndex)) last.monthIndex = now.monthIndex;
        if (changed(now.year, last.year)) last.year = now.year;
        if (!sleepSeconds(state, 30)) return;
    }
}

}  // namespace

CQibOsl_Statistics_Thread::CQibOsl_Statistics_Thread(CQibOsl_Statistics_OutputReport* reporter) {
    if (reporter != nullptr) SetReporter(reporter);
}

void CQibOsl_Statistics_Thread::SetReporter(CQibOsl_Statistics_OutputReport* reporter) {
    statisticsState().reporter.store(reporter);
}

void CQibOsl_Statistics_Thread::Start() {
    StatisticsState& state = statisticsState();
    {
        std::lock_guard<std::recursive_mutex> lock(state.registryLock);
        state.registryExists.store(true, std::memory_order_release);
    }
    std::lock_guard<std::mutex> lock(state.threadsLock);
    state.threads.emplace_back([&state] { run(state); });
}

void CQibOsl_Statistics_Thread::EnableStatistics() { statisticsState().enabled.store(true); }
void CQibOsl_Statistics_Thread::DisableStatistics() { statisticsState().enabled.store(false); }
void CQibOsl_Statistics_Thread::EnableHourReport() { statisticsState().hourReport.store(true); }
void CQibOsl_Statistics_Thread::DisableHourReport() { statisticsState().hourReport.store(false); }
void CQibOsl_Statistics_Thread::EnableDayReport() { statisticsState().dayReport.store(true); }
void CQibOsl_Statistics_Thread::DisableDayReport() { statisticsState().dayReport.store(false); }
void CQibOsl_Statistics_Thread::EnableMonthReport() { statisticsState().monthReport.store(true); }
void CQibOsl_Statistics_Thread::DisableMonthReport() { statisticsState().monthReport.store(false); }

bool OslStatistics_SimulateClock(int year, int month, int day, int hour, int minute, int second, double factor) {
    if (!(factor > 0)) return false;
    const std::int64_t start = osl::platform::fromLocal(year, month, day, hour, minute, second);
    if (start == -1) return false;
    // Never freed: a thread may still be reading the clock it replaces.
    osl::platform::setClock(osl::platform::makeScaledClock({start, 0}, factor).release());
    return true;
}

void OslStatistics_SystemClock() { osl::platform::setClock(nullptr); }
