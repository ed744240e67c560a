// Reading a table of contents without being held.

#include "track_reader.h"

#include "child_processes.h"
#include "fake_drive.h"
#include "no_processes_left.h"
#include "open_descriptors.h"

#include <csignal>
#include <poll.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace {

using Result = std::variant<TrackList, TrackListFailure>;

// The result as a loop gets it: woken by the descriptor until there is one.
Result ResultOf(TrackReader& Reader) {
    constexpr int kLimitMilliseconds = 20000;
    while (true) {
        if (std::optional<Result> result = Reader.TakeResult()) {
            return std::move(*result);
        }
        pollfd event{Reader.OverFd(), POLLIN, 0};
        if (poll(&event, 1, kLimitMilliseconds) != 1) {
            return TrackListFailure{"nothing came in 20 seconds"};
        }
    }
}

std::string FailureOf(const std::string& Device) {
    TrackReader reader(Device);
    const Result result = ResultOf(reader);
    const auto* failure = std::get_if<TrackListFailure>(&result);
    return failure == nullptr ? "there is a list" : failure->Reason;
}

void WaitForEver(const std::string& /*Call*/) {
    while (true) {
        pause();
    }
}

} // namespace

TEST(TrackReader, GivesTheTracks) {
    FakeDisc disc = AudioDisc({150, 18783, 30000}, 40500);
    disc.Tracks[2].bData = true;
    const ScopedDrive drive(disc);
    TrackReader reader(kFakeDevice);
    const Result result = ResultOf(reader);
    const auto* list = std::get_if<TrackList>(&result);
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(list->Device, kFakeDevice);
    ASSERT_EQ(list->Tracks.size(), 3U);
    EXPECT_EQ(list->Tracks[1].Number, 2);
    EXPECT_EQ(list->Tracks[1].StartFrame, 18783);
    EXPECT_EQ(list->Tracks[1].EndFrame, 30000);
    EXPECT_FALSE(list->Tracks[1].bData);
    EXPECT_TRUE(list->Tracks[2].bData);
}

TEST(TrackReader, SaysWhyThereAreNoTracks) {
    EXPECT_EQ(FailureOf("/nowhere/sr0"),
              "cannot open CD drive '/nowhere/sr0': No such file or directory");
    FakeDisc disc;
    disc.bPresent = false;
    const ScopedDrive drive(disc);
    EXPECT_EQ(FailureOf(kFakeDevice), "no disc in '/dev/fake-cd'");
}

TEST(TrackReader, SaysThatItWasInterrupted) {
    ScopedDrive drive(AudioDisc({150}, 300));
    drive.Before = [](const std::string&) { raise(SIGKILL); };
    EXPECT_EQ(FailureOf(kFakeDevice), "cannot read the table of contents");
}

TEST(TrackReader, SaysWhyItCannotBeStarted) {
    std::string reason;
    {
        const NoProcessesLeft limit;
        TrackReader reader(kFakeDevice);
        EXPECT_EQ(reader.OverFd(), -1);
        reason = std::get<TrackListFailure>(ResultOf(reader)).Reason;
    }
    EXPECT_EQ(reason, "cannot start reading the drive: Resource temporarily unavailable");
}

TEST(TrackReader, LeavesNothingBehindWhenItIsLetGoWhileTheDriveHolds) {
    ASSERT_TRUE(NoChildIsLeft());
    ScopedDrive drive(AudioDisc({150}, 300));
    drive.Before = WaitForEver;
    const auto before = OpenDescriptors();
    {
        TrackReader reader(kFakeDevice);
        EXPECT_FALSE(reader.TakeResult().has_value());
        EXPECT_EQ(ChildProcesses().size(), 1U);
    }
    EXPECT_EQ(OpenDescriptors(), before);
    EXPECT_TRUE(NoChildIsLeft());
}
