#include "date_text.h"

#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <limits>

#include <gtest/gtest.h>

namespace {

class DateTexts : public testing::Test {
protected:
    DateTexts() { Use("CET-1"); }
    ~DateTexts() override {
        unsetenv("TZ");
        tzset();
    }

    static void Use(const char* TimeZone) {
        constexpr int kReplace = 1;
        setenv("TZ", TimeZone, kReplace);
        tzset();
    }
};

} // namespace

TEST_F(DateTexts, AreInLocalTime) {
    EXPECT_EQ(DateText(0), "1970-01-01 01:00");
    Use("UTC0");
    EXPECT_EQ(DateText(0), "1970-01-01 00:00");
}

TEST_F(DateTexts, LeaveTheSecondsOutOrShowThem) {
    EXPECT_EQ(DateText(1709816709), "2024-03-07 14:05");
    EXPECT_EQ(DateTextWithSeconds(1709816709), "2024-03-07 14:05:09");
}

TEST_F(DateTexts, ReachBackBefore1970) {
    EXPECT_EQ(DateText(-1), "1970-01-01 00:59");
}

TEST_F(DateTexts, AreEmptyForWhatNoCalendarReaches) {
    EXPECT_EQ(DateText(std::numeric_limits<std::int64_t>::max()), "");
}
