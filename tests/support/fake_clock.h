// tests/support/fake_clock.h
// A clock that stands still until the test moves it; installed for the lifetime of the object.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "platform/clock.h"

namespace osl::test {

class FakeClock final : public osl::platform::Clock {
public:
    /// Installs itself at the given local time (time zone of the process).
    FakeClock(int year, int month, int day, int hour, int minute, int second, int micros = 0);
    ~FakeClock() override;
    FakeClock(const FakeClock&) = delete;
    FakeClock& operator=(const FakeClock&) = delete;

    osl::platform::WallTime now() const override;
    void advance(std::int64_t seconds, std::int32_t micros = 0);

private:
    std::atomic<std::int64_t> micros_;
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
