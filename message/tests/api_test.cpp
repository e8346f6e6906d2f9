// message/tests/api_test.cpp
// The catalog classes through the shared library: every symbol used here must be exported.
#include <vum-qib-osl/osl.h>

#include <gtest/gtest.h>

#include "tests/support/temp_dir.h"

namespace {

TEST(MessageApiTest, ClassesAreReachableThroughTheSharedLibrary) {
    osl::test::TempDir dir;
    MTMapFile catalog;
    catalog.Insert("K", "A %1 B %2");
    ASSERT_TRUE(catalog.StoreMap(dir.file("c.cat")));
    MapFile copy;
    ASSERT_TRUE(copy.LoadMap(dir.file("c.cat")));
    EXPECT_EQ(copy["K"], "A %1 B %2");

    Message message;
    ASSERT_TRUE(message.Append(dir.file("c.cat")));
    EXPECT_EQ((message["K"] << "x" << 5).Text(), "K A x B 5");
    EXPECT_EQ(SingleMapFileMT::Instance()->HasEntry("K"), true);
    FormatString format("%1%2");
    EXPECT_EQ(format.GetArgumentsNumber(), 2);
}

}  // namespace
