// tests/support/fake_clock.cpp
#include "tests/support/fake_clock.h"

#include <stdlib.h>
#include <time.h>

#include <string>

namespace osl::test {

FakeClock::FakeClock(int year, int month, int day, int hour, int minute, int second, int micros) {
    micros_ = osl::platform::fromLocal(year, month, day, hour, minute, second) * 1000000 + micros;
    osl::platform::setClock(this);
}

FakeClock::~FakeClock() { osl::platform::setClock(nullptr); }

osl::platform::WallTime FakeClock::now() const {
    std::int64_t us = micros_.load();
    return {us / 1000000, static_cast<std::int32_t>(us % 1000000)};
}

void FakeClock::advance(std::int64_t seconds, std::int32_t micros) {
    micros_ += seconds * 1000000 + micros;
}

ScopedTimeZone::ScopedTimeZone(const char* tz) {
    const char* old = getenv("TZ");
    had_ = old != nullptr;
    if (had_) previous_ = old;
    setenv("TZ", tz, 1);
    tzset();
}

ScopedTimeZone::~ScopedTimeZone() {
    if (had_) {
        setenv("TZ", previous_.c_str(), 1);
    } else {
        unsetenv("TZ");
    }
    tzset();
}

}  // namespace osl::test
