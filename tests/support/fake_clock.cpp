// tests/support/fake_clock.cpp
#include "tests/support/fake_clock.h"

#include <stdlib.h>
#include <time.h>

#include <algorithm>
#include <chrono>
#include <string>

namespace osl::test {

FakeClock::FakeClock(int year, int month, int day, int hour, int minute, int second, int micros) {
    micros_ = osl::platform::fromLocal(year, month, day, hour, minute, second) * 1000000 + micros;
    osl::platform::setClock(this);
}

void FakeClock::advance(std::int64_t seconds, std::int32_t micros) {
    micros_ += seconds * 1000000 + micros;
    std::lock_guard<std::mutex> lock(mutex_);
    for (osl::platform::Wakeup* sleeper : sleepers_) {
        std::lock_guard<std::mutex> sleeping(sleeper->mutex);
        sleeper->changed.notify_all();
    }
}

bool FakeClock::sleepFor(std::int64_t micros, osl::platform::Wakeup& wakeup) const {
    const std::int64_t end = micros_.load() + micros;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        sleepers_.push_back(&wakeup);
        ++sleeps_;
        lastSleep_ = micros / 1000000;
    }
    slept_.notify_all();
    bool stopped = false;
    {
        std::unique_lock<std::mutex> lock(wakeup.mutex);
        wakeup.changed.wait(lock, [&] { return wakeup.stopped || micros_.load() >= end; });
        stopped = wakeup.stopped;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    sleepers_.erase(std::find(sleepers_.begin(), sleepers_.end(), &wakeup));
    return !stopped;
}

bool FakeClock::waitForSleeps(unsigned n) const {
    std::unique_lock<std::mutex> lock(mutex_);
    return slept_.wait_for(lock, std::chrono::seconds(10), [&] { return sleeps_ >= n; });
}

bool FakeClock::step(std::int64_t seconds) {
    unsigned before = 0;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        before = sleeps_;
    }
    advance(seconds);
    return waitForSleeps(before + 1);
}

ScopedTimeZone::ScopedTimeZone(const char* tz) {
    const char* old = getenv("TZ");
    had_ = old != nullptr;
    if (had_) previous_ = old;
    setenv("TZ", tz, 1);
    tzset();
}

ScopedTimeZone::~ScopedTimeZone() {
    had_ ? setenv("TZ", previous_.c_str(), 1) : unsetenv("TZ");
    tzset();
}

}  // namespace osl::test
