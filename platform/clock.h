// platform/clock.h
// Wall-clock time for the library, behind a seam so that tests can fix the time.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>

namespace osl::platform {

struct WallTime {
    std::int64_t seconds = 0;  // since the epoch
    std::int32_t micros = 0;
};

struct LocalTime {
    int year = 0;
    int month = 0;  // 1..12
    int day = 0;    // 1..31
    int hour = 0;
    int minute = 0;
    int second = 0;
    int micros = 0;
};

/// What a library thread sleeps on, so that it can be stopped at once.
struct Wakeup {
    std::mutex mutex;
    std::condition_variable changed;  // notified when stopped is set or a test clock moves
    bool stopped = false;             // guarded by mutex
};

class Clock {
public:
    virtual ~Clock() = default;
    virtual WallTime now() const = 0;
    /// Sleeps for micros of this clock's time. Returns false as soon as wakeup.stopped is set.
    virtual bool sleepFor(std::int64_t micros, Wakeup& wakeup) const;
};

/// A clock that runs from start at factor times the speed of the system clock.
std::unique_ptr<Clock> makeScaledClock(WallTime start, double factor);

/// The clock in use: the system's, unless a test installed another one.
const Clock& clock();
/// Installs a clock (not owned); null restores the system clock.
void setClock(const Clock* clock);

/// The current time of clock(), in the local time zone.
LocalTime localNow();
LocalTime toLocal(WallTime time);
/// Seconds since the epoch of a local date and time (mktime); -1 when it cannot be represented.
std::int64_t fromLocal(int year, int month, int day, int hour, int minute, int second);

}  // namespace osl::platform
