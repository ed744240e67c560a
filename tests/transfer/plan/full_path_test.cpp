#include "full_path.h"

#include <gtest/gtest.h>

TEST(IsWithin, HoldsForATreeAndWhatLiesBelowIt) {
    EXPECT_TRUE(IsWithin("/a/b", "/a/b"));
    EXPECT_TRUE(IsWithin("/a/b/c/d", "/a/b"));
    EXPECT_FALSE(IsWithin("/a/bc", "/a/b"));
    EXPECT_FALSE(IsWithin("/a", "/a/b"));
}

TEST(IsWithin, HoldsForAllPathsBelowTheRoot) {
    EXPECT_TRUE(IsWithin("/", "/"));
    EXPECT_TRUE(IsWithin("/a/b", "/"));
    EXPECT_FALSE(IsWithin("cdda:/dev/sr0/1", "/"));
}

TEST(Rebased, KeepsWhatIsBelow) {
    EXPECT_EQ(Rebased("/a/b/c/d", "/a/b", "/x"), "/x/c/d");
    EXPECT_EQ(Rebased("/a/b", "/", "/x"), "/x/a/b");
}

TEST(Rebased, PutsTheTreeItselfInItsPlace) {
    EXPECT_EQ(Rebased("/a/b", "/a/b", "/x/y"), "/x/y");
    EXPECT_EQ(Rebased("cdda:/dev/sr0/1", "cdda:/dev/sr0/1", "/x/1.wav"), "/x/1.wav");
}

TEST(PlannedDestination, IsThatOfTheFirstItemThatHoldsTheSource) {
    TarvaneTransferPlan plan;
    plan.Items.resize(2);
    plan.Items[0].SourcePath = "/a/b";
    plan.Items[0].DestinationPath = "/x/b";
    plan.Items[1].SourcePath = "/a";
    plan.Items[1].DestinationPath = "/y";
    EXPECT_EQ(PlannedDestination("/a/b/c", plan), "/x/b/c");
    EXPECT_EQ(PlannedDestination("/a/d", plan), "/y/d");
    EXPECT_EQ(PlannedDestination("/other", plan), "");
}
