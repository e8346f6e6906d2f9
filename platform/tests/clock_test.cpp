// platform/tests/clock_test.cpp
#include "platform/clock.h"

#include <gtest/gtest.h>

#include "tests/support/fake_clock.h"

namespace {

TEST(ClockTest, LocalTimeBreakdownAndSubstitution) {
    osl::test::ScopedTimeZone tz("UTC");
    {
        osl::test::FakeClock fake(2024, 2, 29, 23, 59, 58, 123);
        osl::platform::LocalTime t = osl::platform::localNow();
        EXPECT_EQ(t.year, 2024);
        EXPECT_EQ(t.month, 2);
        EXPECT_EQ(t.day, 29);
        EXPECT_EQ(t.hour, 23);
        EXPECT_EQ(t.second, 58);
        EXPECT_EQ(t.micros, 123);
        fake.advance(2);
        t = osl::platform::localNow();
        EXPECT_EQ(t.month, 3);
        EXPECT_EQ(t.day, 1);
        EXPECT_EQ(t.hour, 0);
    }
    // Back on the system clock.
    EXPECT_GE(osl::platform::localNow().year, 2025);
}

}  // namespace
