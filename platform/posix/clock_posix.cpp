// platform/posix/clock_posix.cpp
// The system clock and local-time breakdown on clock_gettime and localtime_r.
#include "platform/clock.h"

#include <atomic>
#include <chrono>
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

// Real time runs `factor` times as fast as the system clock, from `start`.
class ScaledClock final : public Clock {
public:
    ScaledClock(WallTime start, double factor)
        : start_(start.seconds * 1000000 + start.micros), origin_(std::chrono::steady_clock::now()),
          factor_(factor) {}
    WallTime now() const override {
        const auto elapsed = std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - origin_);
        const std::int64_t us = start_ + static_cast<std::int64_t>(elapsed.count() * factor_);
        return {us / 1000000, static_cast<std::int32_t>(us % 1000000)};
    }
    bool sleepFor(std::int64_t micros, Wakeup& wakeup) const override {
        return Clock::sleepFor(static_cast<std::int64_t>(static_cast<double>(micros) / factor_), wakeup);
    }

private:
    std::int64_t start_;
    std::chrono::steady_clock::time_point origin_;
    double factor_;
};

std::atomic<const Clock*> installed{nullptr};

}  // namespace

bool Clock::sleepFor(std::int64_t micros, Wakeup& wakeup) const {
    std::unique_lock<std::mutex> lock(wakeup.mutex);
    return !wakeup.changed.wait_for(lock, std::chrono::microseconds(micros), [&] { return wakeup.stopped; });
}

std::unique_ptr<Clock> makeScaledClock(WallTime start, double factor) {
    return std::make_unique<ScaledClock>(start, factor);
}

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
