// Audio-CD tracks as sources. No drive is read: the reader of a disc's tracks is replaced.

#include "plan_builder.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "file_tree.h"
#include "plan_fixture.h"
#include "track_fetch.h"

namespace {

// What the replaced FetchTrackList answers.
struct FakeFetch {
    TrackFetchResult Result = TrackFetchResult::Failed;
    std::vector<TrackListEntry> Tracks;
    std::string ErrorMessage = "no disc in '/dev/sr0'";
    int ExitStatus = 0;
    std::vector<std::string> Devices;
};

FakeFetch gFetch;

} // namespace

// The reader of a disc's tracks, by the name that the linker knows it by.
extern "C" TrackFetchResult
__wrap__Z14FetchTrackListRKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEER9TrackListRS4_Ri(
    const std::string& Device, TrackList& Out, std::string& ErrorMessage, int& OutExitStatus) {
    gFetch.Devices.push_back(Device);
    if (gFetch.Result == TrackFetchResult::Fetched) {
        Out.Device = Device;
        Out.Tracks = gFetch.Tracks;
    }
    ErrorMessage = gFetch.ErrorMessage;
    OutExitStatus = gFetch.ExitStatus;
    return gFetch.Result;
}

namespace {

class PlanTracks : public PlanFixture {
protected:
    PlanTracks() { gFetch = {}; }
};

TEST_F(PlanTracks, ATrackBecomesAWavFile) {
    EXPECT_EQ(Ways(Copy({"cdda:/dev/sr0/3", "cdda:/dev/sr0/Track 12.wav", "dest"})),
              Names({"cdda:/dev/sr0/3 -> dest/Track 03.wav",
                     "cdda:/dev/sr0/Track 12.wav -> dest/Track 12.wav"}));
    EXPECT_TRUE(gFetch.Devices.empty());
}

TEST_F(PlanTracks, ATrackMayGetANewName) {
    const TarvaneTransferPlan plan = Plan(Copy({"cdda:/dev/sr0/3", "song.wav"}));
    ASSERT_EQ(plan.Items.size(), 1U);
    EXPECT_EQ(plan.Items[0].Name, "Track 03.wav");
    EXPECT_EQ(plan.Items[0].SourcePath.native(), "cdda:/dev/sr0/3");
    EXPECT_EQ(Short(plan.Items[0].DestinationPath), "song.wav");
    EXPECT_TRUE(plan.Items[0].bDestinationRenamed);
    EXPECT_FALSE(plan.Items[0].bDirectory);
    EXPECT_EQ(plan.SourceLabel, "Audio CD");
}

TEST_F(PlanTracks, ADiscStandsForItsAudioTracks) {
    gFetch.Result = TrackFetchResult::Fetched;
    gFetch.Tracks = {{1, true, 150, 300}, {2, false, 300, 500}, {3, false, 500, 900}};
    EXPECT_EQ(Ways(Copy({"a.txt", "cdda:/dev/sr0", "dest"})),
              Names({"a.txt -> dest/a.txt", "cdda:/dev/sr0/Track 02.wav -> dest/Track 02.wav",
                     "cdda:/dev/sr0/Track 03.wav -> dest/Track 03.wav"}));
    EXPECT_EQ(gFetch.Devices, Names({"/dev/sr0"}));
}

TEST_F(PlanTracks, AMixedPlanIsLabelledByItsFiles) {
    EXPECT_EQ(Plan(Copy({"cdda:/dev/sr0/1", "tree/inner.txt", "dest"})).SourceLabel,
              Directory / "tree");
}

TEST_F(PlanTracks, ADiscOfSeveralTracksNeedsAnExistingDirectory) {
    gFetch.Result = TrackFetchResult::Fetched;
    gFetch.Tracks = {{1, false, 150, 300}, {2, false, 300, 500}};
    EXPECT_EQ(Refusal(Copy({"cdda:/dev/sr0", "new"})),
              Names({"2", "target 'new': No such file or directory"}));
}

TEST_F(PlanTracks, SeveralTracksCannotGetOneName) {
    gFetch.Result = TrackFetchResult::Fetched;
    gFetch.Tracks = {{1, false, 150, 300}, {2, false, 300, 500}};
    TransferRequest request = Copy({"cdda:/dev/sr0", "dest"});
    request.bNoTargetDirectory = true;
    EXPECT_EQ(Refusal(request), Names({"2", "'cdda:/dev/sr0/Track 01.wav' and "
                                            "'cdda:/dev/sr0/Track 02.wav' would both become "
                                            "'dest'"}));
}

TEST_F(PlanTracks, OneTrackInTwoWritingsCannotLandTwice) {
    EXPECT_EQ(Refusal(Copy({"cdda:/dev/sr0/1", "cdda:/dev/sr0/Track 01.wav", "dest"})),
              Names({"2", "'cdda:/dev/sr0/1' and 'cdda:/dev/sr0/Track 01.wav' would both become "
                          "'dest/Track 01.wav'"}));
}

TEST_F(PlanTracks, ADiscThatCannotBeReadIsAFailure) {
    EXPECT_EQ(Refusal(Copy({"no", "cdda:/dev/sr0", "dest"})),
              Names({"1", "cannot stat 'no': No such file or directory", "no disc in '/dev/sr0'"}));
}

TEST_F(PlanTracks, AWaitForADriveThatTheUserEndedSaysNothing) {
    gFetch.Result = TrackFetchResult::Canceled;
    gFetch.ExitStatus = 130;
    EXPECT_EQ(Refusal(Copy({"cdda:/dev/sr0", "cdda:/dev/sr1", "dest"})), Names({"130"}));
    EXPECT_EQ(gFetch.Devices, Names({"/dev/sr0"}));
}

TEST_F(PlanTracks, AMalformedCdPathNamesNoDrive) {
    EXPECT_EQ(Refusal(Copy({"cdda:sr0/3", "dest"})), Names({"2", "'cdda:sr0/3' names no drive"}));
}

TEST_F(PlanTracks, ACdIsNoDestination) {
    EXPECT_EQ(Refusal(Copy({"a.txt", "cdda:/dev/sr0"})),
              Names({"2", "cannot write to an audio CD: 'cdda:/dev/sr0'"}));
}

TEST_F(PlanTracks, AFileThatOnlyLooksLikeACdIsReachedThroughItsDirectory) {
    WriteFile(Directory / "cdda:x", "");
    EXPECT_EQ(Ways(Copy({"./cdda:x", "dest"})), Names({"cdda:x -> dest/cdda:x"}));
}

} // namespace
