// The texts that counters, durations, fractions and stages turn into.

#include "engine_source.h"

#include "grouping_locale.h"

#include <gtest/gtest.h>

namespace {

constexpr std::uint64_t kKilo = 1024;
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(TransferVerb, IsMoveOrCopy) {
    EXPECT_EQ(TransferVerb(true), "Move");
    EXPECT_EQ(TransferVerb(false), "Copy");
}

TEST(TransferStageLabel, NamesEveryStage) {
    EXPECT_EQ(TransferStageLabel(TarvaneTransferStage::Preparing), "Preparing");
    EXPECT_EQ(TransferStageLabel(TarvaneTransferStage::Copying), "Copying");
    EXPECT_EQ(TransferStageLabel(TarvaneTransferStage::RemovingSource), "Removing source");
    EXPECT_EQ(TransferStageLabel(TarvaneTransferStage::WaitingForConflict),
              "Waiting for conflict choice");
    EXPECT_EQ(TransferStageLabel(TarvaneTransferStage::Completed), "Completed");
    EXPECT_EQ(TransferStageLabel(TarvaneTransferStage::Failed), "Failed");
    EXPECT_EQ(TransferStageLabel(TarvaneTransferStage::Canceled), "Canceled");
}

TEST(TransferStageLabel, OfSevenOrAnyLargerValueIsPending) {
    EXPECT_EQ(TransferStageLabel(static_cast<TarvaneTransferStage>(7)), "Pending");
    EXPECT_EQ(TransferStageLabel(static_cast<TarvaneTransferStage>(8)), "Pending");
    EXPECT_EQ(TransferStageLabel(static_cast<TarvaneTransferStage>(2147483647)), "Pending");
}

TEST(TransferStageLabel, OfANegativeValueIsPending) {
    EXPECT_EQ(TransferStageLabel(static_cast<TarvaneTransferStage>(-1)), "Pending");
}

TEST(ToUInt64, KeepsTheValue) {
    EXPECT_EQ(ToUInt64(0), 0u);
    EXPECT_EQ(ToUInt64(4'294'967'296), 4'294'967'296u);
    EXPECT_EQ(ToUInt64(UINTMAX_MAX), UINT64_MAX);
}

TEST(FormatBinarySize, ShowsBytesWithoutAFraction) {
    EXPECT_EQ(FormatBinarySize(0), "0 B");
    EXPECT_EQ(FormatBinarySize(1), "1 B");
    EXPECT_EQ(FormatBinarySize(1000), "1000 B");
    EXPECT_EQ(FormatBinarySize(1023), "1023 B");
}

TEST(FormatBinarySize, ShowsLargerUnitsWithOneDigitAfterThePoint) {
    EXPECT_EQ(FormatBinarySize(1024), "1.0 KB");
    EXPECT_EQ(FormatBinarySize(1536), "1.5 KB");
    EXPECT_EQ(FormatBinarySize(1'048'576), "1.0 MB");
    EXPECT_EQ(FormatBinarySize(1'073'741'824), "1.0 GB");
    EXPECT_EQ(FormatBinarySize(12 * kKilo * kKilo * kKilo), "12.0 GB");
    EXPECT_EQ(FormatBinarySize(std::uint64_t{1} << 40), "1.0 TB");
}

TEST(FormatBinarySize, ChoosesTheUnitBeforeItRounds) {
    EXPECT_EQ(FormatBinarySize(1'048'575), "1024.0 KB");
    EXPECT_EQ(FormatBinarySize(1'073'741'823), "1024.0 MB");
}

TEST(FormatBinarySize, RoundsAHalfToTheEvenDigit) {
    EXPECT_EQ(FormatBinarySize(1280), "1.2 KB");
    EXPECT_EQ(FormatBinarySize(1792), "1.8 KB");
}

TEST(FormatBinarySize, StaysInTheLargestUnit) {
    EXPECT_EQ(FormatBinarySize(std::uint64_t{1} << 50), "1024.0 TB");
    EXPECT_EQ(FormatBinarySize(std::uint64_t{1} << 60), "1048576.0 TB");
}

TEST(FormatBinarySize, TakesSizesBeyondTheSignedRange) {
    EXPECT_EQ(FormatBinarySize(std::uint64_t{1} << 63), "8388608.0 TB");
    EXPECT_EQ(FormatBinarySize(UINT64_MAX), "16777216.0 TB");
}

TEST(FormatBinarySize, DoesNotFollowTheLocaleOfTheProgram) {
    const GroupingLocale locale;
    EXPECT_EQ(FormatBinarySize(1023), "1023 B");
    EXPECT_EQ(FormatBinarySize(1536), "1.5 KB");
    EXPECT_EQ(FormatBinarySize(std::uint64_t{1} << 60), "1048576.0 TB");
}

TEST(FormatRate, AddsPerSecondToASize) {
    EXPECT_EQ(FormatRate(6'291'456), "6.0 MB/s");
    EXPECT_EQ(FormatRate(1'048'575), "1024.0 KB/s");
}

TEST(FormatRate, HasNoSpecialTextForZero) {
    EXPECT_EQ(FormatRate(0), "0 B/s");
}

TEST(FormatDurationShort, ShowsMinutesAndSecondsBelowAnHour) {
    EXPECT_EQ(FormatDurationShort(0.0), "00:00");
    EXPECT_EQ(FormatDurationShort(9.0), "00:09");
    EXPECT_EQ(FormatDurationShort(60.0), "01:00");
    EXPECT_EQ(FormatDurationShort(754.0), "12:34");
    EXPECT_EQ(FormatDurationShort(3599.0), "59:59");
}

TEST(FormatDurationShort, ShowsHoursFromAnHourOn) {
    EXPECT_EQ(FormatDurationShort(3600.0), "1:00:00");
    EXPECT_EQ(FormatDurationShort(86'399.0), "23:59:59");
    EXPECT_EQ(FormatDurationShort(90'061.0), "25:01:01");
    EXPECT_EQ(FormatDurationShort(97'389.0), "27:03:09");
    EXPECT_EQ(FormatDurationShort(2'147'483'647.0), "596523:14:07");
}

TEST(FormatDurationShort, RoundsToSecondsWithAHalfGoingUp) {
    EXPECT_EQ(FormatDurationShort(0.49), "00:00");
    EXPECT_EQ(FormatDurationShort(0.5), "00:01");
    EXPECT_EQ(FormatDurationShort(2.5), "00:03");
    EXPECT_EQ(FormatDurationShort(59.5), "01:00");
    EXPECT_EQ(FormatDurationShort(3599.4), "59:59");
    EXPECT_EQ(FormatDurationShort(3599.5), "1:00:00");
}

TEST(FormatDurationShort, ShowsDashesForAnUnknownDuration) {
    EXPECT_EQ(FormatDurationShort(-1.0), "--:--");
    EXPECT_EQ(FormatDurationShort(-0.001), "--:--");
    EXPECT_EQ(FormatDurationShort(kNotANumber), "--:--");
    EXPECT_EQ(FormatDurationShort(kInfinity), "--:--");
    EXPECT_EQ(FormatDurationShort(-kInfinity), "--:--");
}

TEST(FormatDurationShort, TakesNegativeZeroForZero) {
    EXPECT_EQ(FormatDurationShort(-0.0), "00:00");
}

TEST(FormatDurationShort, ShowsTheLongestForAnythingLonger) {
    EXPECT_EQ(FormatDurationShort(2'147'483'647.5), "596523:14:07");
    EXPECT_EQ(FormatDurationShort(3e9), "596523:14:07");
    EXPECT_EQ(FormatDurationShort(1e300), "596523:14:07");
}

TEST(FormatPercentString, ShowsWholePercents) {
    EXPECT_EQ(FormatPercentString(0.0), "0%");
    EXPECT_EQ(FormatPercentString(0.42), "42%");
    EXPECT_EQ(FormatPercentString(1.0), "100%");
}

TEST(FormatPercentString, RoundsWithAHalfGoingUp) {
    EXPECT_EQ(FormatPercentString(0.005), "1%");
    EXPECT_EQ(FormatPercentString(0.004), "0%");
    EXPECT_EQ(FormatPercentString(0.125), "13%");
    EXPECT_EQ(FormatPercentString(0.994), "99%");
    EXPECT_EQ(FormatPercentString(0.996), "100%");
}

TEST(FormatPercentString, StaysBetween0And100) {
    EXPECT_EQ(FormatPercentString(-0.2), "0%");
    EXPECT_EQ(FormatPercentString(1.7), "100%");
    EXPECT_EQ(FormatPercentString(1e300), "100%");
}

TEST(FormatPercentString, ShowsDashesForWhatIsNoNumber) {
    EXPECT_EQ(FormatPercentString(kNotANumber), "--");
    EXPECT_EQ(FormatPercentString(kInfinity), "--");
    EXPECT_EQ(FormatPercentString(-kInfinity), "--");
}

TEST(ElideMiddle, LeavesAnEightyEightBytePathAsItIs) {
    const std::string path = "/" + std::string(86, 'p') + "z";
    EXPECT_EQ(ElideMiddle(path, 88), path);
    EXPECT_EQ(ElideMiddle("", 88), "");
}

TEST(ElideMiddle, ShortensAnEightyNineBytePathToEightySeven) {
    const std::string first(42, 'a');
    const std::string last(42, 'z');
    const std::string elided = ElideMiddle(first + "12345" + last, 88);
    EXPECT_EQ(elided, first + "..." + last);
    EXPECT_EQ(elided.size(), 87u);
    EXPECT_EQ(elided.find("..."), 42u);
}

TEST(ElideMiddle, ShortensAnyLongerPathToEightySeven) {
    const std::string first(42, 'a');
    const std::string last(42, 'z');
    EXPECT_EQ(ElideMiddle(first + std::string(4000, '/') + last, 88), first + "..." + last);
}

TEST(ElideMiddle, FillsAnOddLimit) {
    EXPECT_EQ(ElideMiddle("0123456789", 9), "012...789");
}

TEST(ElideMiddle, CountsBytesAndMayCutACharacter) {
    EXPECT_EQ(ElideMiddle("\u00e4\u00f6\u00fc\u00df", 5), "\xc3...\x9f");
}

TEST(ElideMiddle, DoesNotUnderflowForTheSmallestLimits) {
    EXPECT_LE(ElideMiddle("0123456789", 0).size(), 3u);
    EXPECT_LE(ElideMiddle("0123456789", 1).size(), 3u);
    EXPECT_LE(ElideMiddle("0123456789", 2).size(), 3u);
    EXPECT_EQ(ElideMiddle("0123456789", 3), "...");
}

} // namespace
