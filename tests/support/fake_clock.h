// tests/support/fake_clock.h
// A clock that stands still until the test moves it; installed for the lifetime of the object.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "platform/clock.h"

namespace osl::test {

class FakeClock final : public osl::platform::Clock {
public:
    /// Installs itself at the given local time (time zone of the process).
    FakeClock(int year, int month, int day, int hour, int minute, int second, int micros = 0);
    ~FakeClock() override { osl::platform::setClock(nullptr); }
    FakeClock(const FakeClock&) = delete;
    FakeClock& operator=(const FakeClock&) = delete;

    osl::platform::WallTime now() const override {
        const std::int64_t us = micros_.load();
        return {us / 1000000, static_cast<std::int32_t>(us % 1000000)};
    }
    void advance(std::int64_t seconds, std::int32_t micros = 0);

    /// Sleeps until advance() has moved the time past the end of the sleep, or until stopped.
    bool sleepFor(std::int64_t micros, osl::platform::Wakeup& wakeup) const override;
    /// The length of the last sleep begun on this clock.
    std::int64_t lastSleepSeconds() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return lastSleep_;
    }
    /// Waits until at least n sleeps have begun; false after ten seconds of real time.
    bool waitForSleeps(unsigned n) const;
    /// advance(seconds), then waits until the thread it woke is asleep again (its work done).
    /// False when no thread went back to sleep within ten seconds.
    bool step(std::int64_t seconds);

private:
    std::atomic<std::int64_t> micros_;
    mutable std::mutex mutex_;  // guards sleepers_ and sleeps_
    mutable std::condition_variable slept_;
    mutable std::vector<osl::platform::Wakeup*> sleepers_;
    mutable unsigned sleeps_ = 0;
    mutable std::int64_t lastSleep_ = 0;
};

/// Sets TZ for the process while it lives, and restores the previous value.
class ScopedTimeZone {
public:
    explicit ScopedTimeZone(const char* tz);
    ~ScopedTimeZone();

private:
    bool had_;
    std::string previous_;
};

}  // namespace osl::test
