// platform/tests/clock_test.cpp
#include "platform/clock.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/fake_clock.h"

namespace {

std::string fields(const osl::platform::LocalTime& t) {
    return std::to_string(t.year) + "-" + std::to_string(t.month) + "-" + std::to_string(t.day) + " " +
           std::to_string(t.hour) + ":" + std::to_string(t.minute) + ":" + std::to_string(t.second) + "." +
           std::to_string(t.micros);
}

TEST(ClockTest, LocalTimeBreakdownAndSubstitution) {
    osl::test::ScopedTimeZone tz("UTC");
    {
        osl::test::FakeClock fake(2024, 2, 29, 23, 59, 58, 123);
        EXPECT_EQ(fields(osl::platform::localNow()), "2024-2-29 23:59:58.123");
        fake.advance(2);
        EXPECT_EQ(fields(osl::platform::localNow()), "2024-3-1 0:0:0.123");
    }
    // Back on the system clock.
    EXPECT_GE(osl::platform::localNow().year, 2025);
}

}  // namespace
