// Describing both sides of a conflict: sizes, times, dates, content and age.

#include "engine_source.h"

#include "mounts.h"
#include "transfer_fixture.h"

#include <cstdlib>

namespace {

using Kind = TarvaneTransferConflictKind;

// Three and a half hours east of Greenwich, without daylight saving and without a zone table.
constexpr const char* kZone = "XYZ-3:30";
constexpr std::int64_t kZoneSeconds = 3 * 3600 + 30 * 60;
// 2024-03-07 14:05:09 in that zone.
constexpr std::int64_t kAfternoon = 1709820309 - kZoneSeconds;

class ConflictRecord : public TransferTest {
protected:
    ConflictRecord() {
        ::setenv("TZ", kZone, 1);
        ::tzset();
        WriteFile(Source, "12345");
        WriteFile(Destination, "123");
        SetModifiedTime(Source, kAfternoon, 750000000);
        SetModifiedTime(Destination, kAfternoon - 86400);
    }

    TarvaneTransferConflict Made() { return MakeLocalConflict(Kind::File, Source, Destination); }

    const fs::path Source = Directory / "source";
    const fs::path Destination = Directory / "destination";
};

TEST_F(ConflictRecord, HasTheKindAndThePathsAsGiven) {
    const fs::path odd = Directory / "sub/../destination";
    const TarvaneTransferConflict conflict = MakeLocalConflict(Kind::Directory, Source, odd);
    EXPECT_EQ(conflict.Kind, Kind::Directory);
    EXPECT_EQ(conflict.SourcePath, Source.string());
    EXPECT_EQ(conflict.DestinationPath, odd.string());
}

TEST_F(ConflictRecord, KnowsBothFilesBySizeAndDate) {
    const TarvaneTransferConflict conflict = Made();
    EXPECT_EQ(conflict.Kind, Kind::File);
    EXPECT_FALSE(conflict.bSourceDirectory);
    EXPECT_FALSE(conflict.bDestinationDirectory);
    EXPECT_TRUE(conflict.bSourceHasSize);
    EXPECT_TRUE(conflict.bDestinationHasSize);
    EXPECT_EQ(conflict.SourceSizeBytes, 5U);
    EXPECT_EQ(conflict.DestinationSizeBytes, 3U);
    EXPECT_TRUE(conflict.bSourceHasModifiedTime);
    EXPECT_TRUE(conflict.bDestinationHasModifiedTime);
    EXPECT_EQ(conflict.SourceDate, "2024-03-07 14:05:09");
    EXPECT_EQ(conflict.DestinationDate, "2024-03-06 14:05:09");
}

TEST_F(ConflictRecord, CountsTheTicksInNanoseconds) {
    const TarvaneTransferConflict conflict = Made();
    EXPECT_EQ(conflict.SourceModifiedTicks - conflict.DestinationModifiedTicks, 86400750000000);
    EXPECT_EQ(conflict.SourceModifiedTicks, fs::last_write_time(Source).time_since_epoch().count());
}

TEST_F(ConflictRecord, HasNoSizeForDirectories) {
    fs::create_directory(Directory / "from");
    fs::create_directory(Directory / "to");
    const TarvaneTransferConflict conflict =
        MakeLocalConflict(Kind::Directory, Directory / "from", Directory / "to");
    EXPECT_TRUE(conflict.bSourceDirectory);
    EXPECT_TRUE(conflict.bDestinationDirectory);
    EXPECT_FALSE(conflict.bSourceHasSize);
    EXPECT_FALSE(conflict.bDestinationHasSize);
    EXPECT_EQ(conflict.SourceSizeBytes, 0U);
    EXPECT_EQ(conflict.DestinationSizeBytes, 0U);
    EXPECT_TRUE(conflict.bSourceHasModifiedTime);
    EXPECT_TRUE(conflict.bDestinationHasModifiedTime);
}

TEST_F(ConflictRecord, FollowsLinks) {
    fs::create_symlink("source", Directory / "to-file");
    fs::create_directory(Directory / "folder");
    fs::create_directory_symlink("folder", Directory / "to-folder");
    const TarvaneTransferConflict conflict =
        MakeLocalConflict(Kind::File, Directory / "to-file", Directory / "to-folder");
    EXPECT_FALSE(conflict.bSourceDirectory);
    EXPECT_EQ(conflict.SourceSizeBytes, 5U);
    EXPECT_EQ(conflict.SourceDate, "2024-03-07 14:05:09");
    EXPECT_TRUE(conflict.bDestinationDirectory);
}

TEST_F(ConflictRecord, LeavesUnsetWhatAMissingSourceDoesNotTell) {
    fs::remove(Source);
    const TarvaneTransferConflict conflict = Made();
    EXPECT_EQ(conflict.SourcePath, Source.string());
    EXPECT_FALSE(conflict.bSourceDirectory);
    EXPECT_FALSE(conflict.bSourceHasSize);
    EXPECT_FALSE(conflict.bSourceHasModifiedTime);
    EXPECT_EQ(conflict.SourceSizeBytes, 0U);
    EXPECT_EQ(conflict.SourceModifiedTicks, 0);
    EXPECT_EQ(conflict.SourceDate, "");
    EXPECT_EQ(conflict.DestinationSizeBytes, 3U);
    EXPECT_EQ(conflict.DestinationDate, "2024-03-06 14:05:09");
}

TEST_F(ConflictRecord, LeavesUnsetWhatAMissingDestinationDoesNotTell) {
    fs::remove(Destination);
    const TarvaneTransferConflict conflict = Made();
    EXPECT_FALSE(conflict.bDestinationDirectory);
    EXPECT_FALSE(conflict.bDestinationHasSize);
    EXPECT_FALSE(conflict.bDestinationHasModifiedTime);
    EXPECT_EQ(conflict.DestinationSizeBytes, 0U);
    EXPECT_EQ(conflict.DestinationModifiedTicks, 0);
    EXPECT_EQ(conflict.DestinationDate, "");
    EXPECT_EQ(conflict.SourceSizeBytes, 5U);
    EXPECT_EQ(conflict.SourceDate, "2024-03-07 14:05:09");
}

TEST_F(ConflictRecord, HasNoSizeForAPipe) {
    MakeFifo(Directory / "fifo");
    const TarvaneTransferConflict conflict =
        MakeLocalConflict(Kind::File, Directory / "fifo", Destination);
    EXPECT_FALSE(conflict.bSourceDirectory);
    EXPECT_FALSE(conflict.bSourceHasSize);
    EXPECT_TRUE(conflict.bSourceHasModifiedTime);
}

class ConflictDate : public ConflictRecord {
protected:
    std::string DateOf(std::int64_t Seconds, std::int64_t Nanoseconds) {
        SetModifiedTime(Source, Seconds, Nanoseconds);
        return MakeLocalConflict(Kind::File, Source, Destination).SourceDate;
    }
};

// A date made from readings of two clocks would lose the second now and then.
TEST_F(ConflictDate, ShowsTheExactSecondEveryTime) {
    SetModifiedTime(Source, kAfternoon, 0);
    const fs::file_time_type time = fs::last_write_time(Source);
    for (int i = 0; i < 20000; ++i) {
        ASSERT_EQ(FormatConflictFileTime(time), "2024-03-07 14:05:09") << "at repetition " << i;
    }
}

TEST_F(ConflictDate, CutsTheFractionOffEveryTime) {
    SetModifiedTime(Source, kAfternoon, 750000000);
    const fs::file_time_type time = fs::last_write_time(Source);
    for (int i = 0; i < 20000; ++i) {
        ASSERT_EQ(FormatConflictFileTime(time), "2024-03-07 14:05:09") << "at repetition " << i;
    }
}

TEST_F(ConflictDate, CutsOffEvenTheLastNanosecondOfASecond) {
    EXPECT_EQ(DateOf(kAfternoon, 999999999), "2024-03-07 14:05:09");
}

TEST_F(ConflictDate, IsLocalTimeThatFollowsDaylightSaving) {
    ::setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    ::tzset();
    EXPECT_EQ(DateOf(1704067200, 0), "2024-01-01 01:00:00");
    EXPECT_EQ(DateOf(1719792000, 0), "2024-07-01 02:00:00");
}

TEST_F(ConflictDate, ReachesBackBefore1970) {
    ::setenv("TZ", "UTC0", 1);
    ::tzset();
    EXPECT_EQ(DateOf(-86400, 0), "1969-12-31 00:00:00");
    EXPECT_EQ(DateOf(-1, 500000000), "1970-01-01 00:00:00");
}

TEST_F(ConflictDate, IsUnknownForATimeBeyondTheClock) {
    constexpr std::int64_t year2300 = 10413792000;
    SetModifiedTime(Source, year2300);
    const TarvaneTransferConflict conflict = Made();
    EXPECT_FALSE(conflict.bSourceHasModifiedTime);
    EXPECT_EQ(conflict.SourceModifiedTicks, 0);
    EXPECT_EQ(conflict.SourceDate, "");
    EXPECT_TRUE(conflict.bSourceHasSize);
}

// A clock of file times that counts nanoseconds in 64 bits begins in 1881; an unset time of some
// file systems is 1601. A file system in memory holds them all.
TEST_F(ConflictDate, IsUnknownForATimeBeforeTheClock) {
    EnterPrivateMountNamespace();
    const ScopedMount memory = MountTmpfs(Directory / "memory", "size=1m");
    const fs::path old = memory.Path() / "old";
    WriteFile(old, "x");
    ::setenv("TZ", "UTC0", 1);
    ::tzset();
    constexpr std::int64_t year1601 = -11644473600;
    constexpr std::int64_t earliest = -2785708036;
    for (const std::int64_t seconds : {year1601, std::int64_t{-9223372037}, earliest - 1}) {
        SetModifiedTime(old, seconds);
        const TarvaneTransferConflict conflict = MakeLocalConflict(Kind::File, old, old);
        EXPECT_FALSE(conflict.bSourceHasModifiedTime) << seconds;
        EXPECT_FALSE(conflict.bDestinationHasModifiedTime) << seconds;
        EXPECT_EQ(conflict.SourceModifiedTicks, 0) << seconds;
        EXPECT_EQ(conflict.DestinationModifiedTicks, 0) << seconds;
        EXPECT_EQ(conflict.SourceDate + conflict.DestinationDate, "") << seconds;
    }
    SetModifiedTime(old, earliest);
    const TarvaneTransferConflict conflict = MakeLocalConflict(Kind::File, old, Source);
    EXPECT_EQ(conflict.SourceDate, "1881-09-22 00:12:44");
    EXPECT_LT(conflict.SourceModifiedTicks, conflict.DestinationModifiedTicks);
}

class ConflictAge : public testing::Test {
protected:
    static TarvaneTransferConflict Modified(std::int64_t SourceTicks,
                                            std::int64_t DestinationTicks) {
        TarvaneTransferConflict conflict;
        conflict.bSourceHasModifiedTime = true;
        conflict.bDestinationHasModifiedTime = true;
        conflict.SourceModifiedTicks = SourceTicks;
        conflict.DestinationModifiedTicks = DestinationTicks;
        return conflict;
    }
};

TEST_F(ConflictAge, OverwritesOnlyWithAStrictlyNewerSource) {
    EXPECT_TRUE(ShouldOverwriteOlder(Modified(101, 100)));
    EXPECT_FALSE(ShouldOverwriteOlder(Modified(100, 100)));
    EXPECT_FALSE(ShouldOverwriteOlder(Modified(99, 100)));
}

TEST_F(ConflictAge, ComparesWithTheSign) {
    EXPECT_TRUE(ShouldOverwriteOlder(Modified(1, -1)));
    EXPECT_TRUE(ShouldOverwriteOlder(Modified(-1, -2)));
    EXPECT_FALSE(ShouldOverwriteOlder(Modified(-1, 1)));
}

TEST_F(ConflictAge, DoesNotOverwriteWithAnUnknownSourceTime) {
    TarvaneTransferConflict conflict = Modified(101, 100);
    conflict.bSourceHasModifiedTime = false;
    EXPECT_FALSE(ShouldOverwriteOlder(conflict));
}

TEST_F(ConflictAge, DoesNotOverwriteAnUnknownDestinationTime) {
    TarvaneTransferConflict conflict = Modified(101, 100);
    conflict.bDestinationHasModifiedTime = false;
    EXPECT_FALSE(ShouldOverwriteOlder(conflict));
}

} // namespace
