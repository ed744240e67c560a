// The subdirectories of one directory, those that were queried among those of which only the name
// is known.

#include "walk_listing.h"

#include <gtest/gtest.h>

namespace {

TEST(SubdirectoryQueue, KeepsOrderAndWhatIsKnown) {
    SubdirectoryQueue queue;
    queue.Push("first");
    queue.PushQueried(
        {.Name = "link", .Status = DirectoryStatus{.Identity = {1, 2}}, .bLink = true});
    queue.PushQueried({.Name = "other link", .bLink = true});
    queue.Push("last");

    const Subdirectory first = queue.Pop();
    EXPECT_EQ(first.Name, "first");
    EXPECT_FALSE(first.Status);
    EXPECT_FALSE(first.bLink);
    const Subdirectory link = queue.Pop();
    EXPECT_EQ(link.Name, "link");
    ASSERT_TRUE(link.Status);
    EXPECT_EQ(link.Status->Identity, (FileIdentity{1, 2}));
    EXPECT_TRUE(link.bLink);
    EXPECT_EQ(queue.Pop().Name, "other link");
    EXPECT_FALSE(queue.IsEmpty());
    EXPECT_EQ(queue.Pop().Name, "last");
    EXPECT_TRUE(queue.IsEmpty());
}

} // namespace
