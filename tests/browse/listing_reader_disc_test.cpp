// Reading what a disc holds.

#include "listing_reader.h"

#include "becomes_true.h"
#include "child_processes.h"
#include "fake_drive.h"
#include "result_of.h"

#include <cerrno>
#include <unistd.h>

#include <gtest/gtest.h>

namespace {

constexpr const char* kFakeDisc = "cdda:/dev/fake-cd";

Listing Read(const std::string& Place) {
    ListingReader reader(Place);
    return ResultOf(reader);
}

} // namespace

TEST(ListingReaderOfDisc, ListsTheAudioTracks) {
    FakeDisc disc = AudioDisc({150, 18783, 30000}, 40500);
    disc.Tracks[1].bData = true;
    const ScopedDrive drive(disc);
    const Listing listing = Read(kFakeDisc);
    EXPECT_EQ(listing.Place, kFakeDisc);
    EXPECT_EQ(listing.Failure, "");
    EXPECT_EQ(listing.FreeBytes, std::nullopt);
    ASSERT_EQ(listing.Entries.size(), 2U);
    EXPECT_EQ(listing.Entries[0].Name, "Track 01.wav");
    EXPECT_EQ(listing.Entries[0].What, ListedEntry::Kind::Track);
    EXPECT_EQ(listing.Entries[0].SizeBytes, 44U + (18783U - 150U) * kFakeFrameBytes);
    EXPECT_EQ(listing.Entries[0].Modified, std::nullopt);
    EXPECT_EQ(listing.Entries[1].Name, "Track 03.wav");
}

TEST(ListingReaderOfDisc, TakesASlashBehindTheDrive) {
    const ScopedDrive drive(AudioDisc({150}, 300));
    EXPECT_EQ(Read("cdda:/dev/fake-cd/").Entries.size(), 1U);
}

TEST(ListingReaderOfDisc, SaysWhatTheDriveSays) {
    FakeDisc disc;
    disc.bPresent = false;
    const ScopedDrive drive(disc);
    const Listing listing = Read(kFakeDisc);
    EXPECT_EQ(listing.Failure, "no disc in '/dev/fake-cd'");
    EXPECT_TRUE(listing.Entries.empty());
}

TEST(ListingReaderOfDisc, CanBeLetGoOfWhileTheDriveHolds) {
    ASSERT_TRUE(NoChildIsLeft());
    ScopedDrive drive(AudioDisc({150}, 300));
    drive.Before = [](const std::string&) {
        while (true) {
            pause();
        }
    };
    {
        ListingReader reader(kFakeDisc);
        EXPECT_GE(reader.OverFd(), 0);
        EXPECT_FALSE(reader.TakeResult().has_value());
        EXPECT_EQ(ChildProcesses().size(), 1U);
    }
    EXPECT_TRUE(NoChildIsLeft());
}
