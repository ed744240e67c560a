// Audio-CD tracks as sources. No drive is read.

#include "plan_builder.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "file_tree.h"
#include "plan_fixture.h"

namespace {

class PlanTracks : public PlanFixture {
protected:
    PlanTracks() { Hold(TrackList{"/dev/sr0", {{1, false, 150, 300}, {2, false, 300, 500}}}); }

    // What the drive holds, or why that is not known.
    void Hold(const std::variant<TrackList, TrackListFailure>& Result) {
        ListTracks = [this, Result](const std::string& Device) {
            Devices.push_back(Device);
            return Result;
        };
    }

    Names Devices;
};

TEST_F(PlanTracks, ATrackBecomesAWavFile) {
    EXPECT_EQ(Ways(Copy({"cdda:/dev/sr0/3", "cdda:/dev/sr0/Track 12.wav", "dest"})),
              Names({"cdda:/dev/sr0/3 -> dest/Track 03.wav",
                     "cdda:/dev/sr0/Track 12.wav -> dest/Track 12.wav"}));
    EXPECT_EQ(Devices, Names({"/dev/sr0", "/dev/sr0"}));
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
    Hold(TrackList{"/dev/sr0", {{1, true, 150, 300}, {2, false, 300, 500}, {3, false, 500, 900}}});
    EXPECT_EQ(Ways(Copy({"a.txt", "cdda:/dev/sr0", "dest"})),
              Names({"a.txt -> dest/a.txt", "cdda:/dev/sr0/Track 02.wav -> dest/Track 02.wav",
                     "cdda:/dev/sr0/Track 03.wav -> dest/Track 03.wav"}));
    EXPECT_EQ(Devices, Names({"/dev/sr0"}));
}

TEST_F(PlanTracks, AMixedPlanIsLabelledByItsFiles) {
    EXPECT_EQ(Plan(Copy({"cdda:/dev/sr0/1", "tree/inner.txt", "dest"})).SourceLabel,
              Directory / "tree");
}

TEST_F(PlanTracks, ADiscOfSeveralTracksNeedsAnExistingDirectory) {
    Hold(TrackList{"/dev/sr0", {{1, false, 150, 300}, {2, false, 300, 500}}});
    EXPECT_EQ(Refusal(Copy({"cdda:/dev/sr0", "new"})),
              Names({"usage", "target 'new': No such file or directory"}));
}

TEST_F(PlanTracks, SeveralTracksCannotGetOneName) {
    Hold(TrackList{"/dev/sr0", {{1, false, 150, 300}, {2, false, 300, 500}}});
    TransferRequest request = Copy({"cdda:/dev/sr0", "dest"});
    request.bNoTargetDirectory = true;
    EXPECT_EQ(Refusal(request), Names({"usage", "'cdda:/dev/sr0/Track 01.wav' and "
                                                "'cdda:/dev/sr0/Track 02.wav' would both become "
                                                "'dest'"}));
}

TEST_F(PlanTracks, OneTrackInTwoWritingsCannotLandTwice) {
    EXPECT_EQ(
        Refusal(Copy({"cdda:/dev/sr0/1", "cdda:/dev/sr0/Track 01.wav", "dest"})),
        Names({"usage", "'cdda:/dev/sr0/1' and 'cdda:/dev/sr0/Track 01.wav' would both become "
                        "'dest/Track 01.wav'"}));
}

TEST_F(PlanTracks, ADiscThatCannotBeReadIsAFailure) {
    Hold(TrackListFailure{"no disc in '/dev/sr0'"});
    EXPECT_EQ(
        Refusal(Copy({"no", "cdda:/dev/sr0", "dest"})),
        Names({"failed", "cannot stat 'no': No such file or directory", "no disc in '/dev/sr0'"}));
}

TEST_F(PlanTracks, TracksOfADiscThatCannotBeReadAreOneFailure) {
    Hold(TrackListFailure{"no disc in '/dev/sr0'"});
    EXPECT_EQ(Refusal(Copy({"cdda:/dev/sr0/1", "no", "cdda:/dev/sr0/2", "dest"})),
              Names({"failed", "no disc in '/dev/sr0'",
                     "cannot stat 'no': No such file or "
                     "directory"}));
}

TEST_F(PlanTracks, AWaitForADriveThatTheUserEndedSaysNothing) {
    Hold(TrackListFailure{});
    for (const char* operand : {"cdda:/dev/sr0", "cdda:/dev/sr0/1"}) {
        Devices.clear();
        EXPECT_EQ(Refusal(Copy({operand, "cdda:/dev/sr1", "dest"})), Names({"canceled"}));
        EXPECT_EQ(Devices, Names({"/dev/sr0"}));
    }
}

TEST_F(PlanTracks, AWaitThatTheUserEndedSaysNothingOfWhatElseIsWrong) {
    Hold(TrackListFailure{});
    EXPECT_EQ(Refusal(Copy({"no", "cdda:/dev/sr0", "a.txt"})), Names({"canceled"}));
}

TEST_F(PlanTracks, NoDriveIsWaitedForWhereTheDestinationIsWrong) {
    Hold(TrackListFailure{"no disc in '/dev/sr0'"});
    EXPECT_EQ(
        Refusal(Copy({"cdda:/dev/sr0", "cdda:x", "a.txt/x"})),
        Names({"usage", "failed to access 'a.txt/x': Not a directory", "'cdda:x' names no drive"}));
    EXPECT_EQ(Devices, Names());
}

TEST_F(PlanTracks, AMalformedCdPathNamesNoDrive) {
    EXPECT_EQ(Refusal(Copy({"cdda:sr0/3", "dest"})),
              Names({"usage", "'cdda:sr0/3' names no drive"}));
}

TEST_F(PlanTracks, ACdIsNoDestination) {
    EXPECT_EQ(Refusal(Copy({"a.txt", "cdda:/dev/sr0"})),
              Names({"usage", "cannot write to an audio CD: 'cdda:/dev/sr0'"}));
}

TEST_F(PlanTracks, AFileThatOnlyLooksLikeACdIsReachedThroughItsDirectory) {
    WriteFile(Directory / "cdda:x", "");
    EXPECT_EQ(Ways(Copy({"./cdda:x", "dest"})), Names({"cdda:x -> dest/cdda:x"}));
}

} // namespace
