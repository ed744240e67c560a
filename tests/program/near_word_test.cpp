#include "near_word.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

std::string Nearest(std::string_view Typed, const std::vector<std::string_view>& Known) {
    return NearestWord(Typed, Known);
}

TEST(NearWord, IsOneSlipAwayFromAShortWord) {
    for (const char* typed : {"cop", "opy", "ccopy", "copyy", "cpoy", "coyp", "copi", "vopy"}) {
        EXPECT_EQ(Nearest(typed, {"move", "copy"}), "copy") << typed;
    }
    for (const char* typed : {"", "cp", "co", "yopc", "coppyy", "kopi", "cypo", "COPY"}) {
        EXPECT_EQ(Nearest(typed, {"move", "copy"}), "") << typed;
    }
}

TEST(NearWord, IsTwoSlipsAwayFromALongOne) {
    for (const char* typed : {"no-clobbe", "noclober", "on-clobebr", "no-clobber"}) {
        EXPECT_EQ(Nearest(typed, {"no-clobber"}), "no-clobber") << typed;
    }
    EXPECT_EQ(Nearest("noclobe", {"no-clobber"}), "");
    EXPECT_EQ(Nearest("on-clobebrr", {"no-clobber"}), "");
}

TEST(NearWord, IsTheNearest) {
    EXPECT_EQ(Nearest("progess", {"prograss", "progress"}), "progress");
    EXPECT_EQ(Nearest("progess", {"progress", "prograss"}), "progress");
}

TEST(NearWord, IsNoVeryShortOne) {
    EXPECT_EQ(Nearest("cq", {"cp", "c"}), "");
}

TEST(NearWord, IsNoneWhereNoneIsKnown) {
    EXPECT_EQ(Nearest("copy", {}), "");
}

} // namespace
