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
