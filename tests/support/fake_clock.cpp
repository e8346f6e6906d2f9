// tests/support/fake_clock.cpp
#include "tests/support/fake_clock.h"

#include <stdlib.h>
#include <time.h>

#include <string>

namespace osl::test {

FakeClock::FakeClock(int year, int month, int day, int hour, int minute, int second, int micros) {
    tm parts{};
    parts.tm_year = year - 1900;
    parts.tm_mon = month - 1;
    parts.tm_mday = day;
    parts.tm_hour = hour;
    parts.tm_min = minute;
    parts.tm_sec = second;
    parts.tm_isdst = -1;
    micros_ = static_cast<std::int64_t>(mktime(&parts)) * 1000000 + micros;
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
