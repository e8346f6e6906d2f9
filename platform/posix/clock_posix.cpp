// platform/posix/clock_posix.cpp
// The system clock and local-time breakdown on clock_gettime and localtime_r.
#include "platform/clock.h"

#include <atomic>
#include <ctime>

namespace osl::platform {
namespace {

class SystemClock final : public Clock {
public:
    WallTime now() const override {
        timespec ts{};
        clock_gettime(CLOCK_REALTIME, &ts);
        return {static_cast<std::int64_t>(ts.tv_sec), static_cast<std::int32_t>(ts.tv_nsec / 1000)};
    }
};

std::atomic<const Clock*> installed{nullptr};

}  // namespace

const Clock& clock() {
    static const SystemClock* system = new SystemClock;
    const Clock* c = installed.load(std::memory_order_acquire);
    return c ? *c : *system;
}

void setClock(const Clock* c) { installed.store(c, std::memory_order_release); }

LocalTime toLocal(WallTime time) {
    time_t t = static_cast<time_t>(time.seconds);
    tm parts{};
    localtime_r(&t, &parts);
    return {parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday, parts.tm_hour,
            parts.tm_min,         parts.tm_sec,     time.micros};
}

std::int64_t fromLocal(int year, int month, int day, int hour, int minute, int second) {
    tm parts{};
    parts.tm_year = year - 1900;
    parts.tm_mon = month - 1;
    parts.tm_mday = day;
    parts.tm_hour = hour;
    parts.tm_min = minute;
    parts.tm_sec = second;
    parts.tm_isdst = -1;
    return static_cast<std::int64_t>(mktime(&parts));
}

LocalTime localNow() { return toLocal(clock().now()); }

}  // namespace osl::platform
