// misc/tests/osl_init_test.cpp
#include <vum-qib-osl/misc/osl_init.h>

#include <gtest/gtest.h>

#include "platform/startup.h"

namespace {

TEST(InitOSLTest, StartsServicesOnce) {
    InitOSL();
    InitOSL();
    EXPECT_EQ(osl::platform::servicesStarted(), 1);
}

TEST(EndSessionTest, CallsEveryRegisteredEnder) {
    int calls = 0;
    osl::platform::addSessionEnder([&calls] { ++calls; });
    EndSession();
    EndSession();
    EXPECT_EQ(calls, 2);
}

}  // namespace
