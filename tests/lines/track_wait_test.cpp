// The wait for a drive: what is said meanwhile, and what ends it.

#include "track_wait.h"

#include <chrono>
#include <csignal>
#include <string>
#include <variant>

#include <gtest/gtest.h>

#include "at_prompt.h"
#include "captured_descriptor.h"

namespace {

using std::chrono::milliseconds;

constexpr const char* kWaiting = "tarvane: waiting for the drive, Esc cancels\n";

class TrackWait : public PhaseAtPrompt {
protected:
    // "2 tracks", or the reason why there are none.
    std::string List(const std::string& Device = kFakeDevice) {
        const auto result = ListTracksAtPrompt(Device, Context());
        if (const auto* failure = std::get_if<TrackListFailure>(&result)) {
            return failure->Reason;
        }
        return std::to_string(std::get<TrackList>(result).Tracks.size()) + " tracks";
    }

    // 0 when nobody has asked for the end.
    int EndSignal() { return Loop.Requests().IsAsked() ? Loop.Requests().Signal() : 0; }
};

} // namespace

TEST_F(TrackWait, GivesTheTracks) {
    const ScopedDrive drive(AudioDisc({150, 1000, 1017}, 2000));
    EXPECT_EQ(List(), "3 tracks");
    EXPECT_EQ(EndSignal(), 0);
}

TEST_F(TrackWait, IsWokenByTheDrive) {
    HeldDrive drive("header");
    Screen.Script({ScriptedTerminal::Always(), {}, [&] {
                       EXPECT_FALSE(Screen.IsWoken());
                       drive.Release();
                       ExpectToBeWoken();
                   }});
    EXPECT_EQ(List(), "2 tracks");
}

TEST_F(TrackWait, SaysWhyThereAreNone) {
    EXPECT_EQ(List("/nowhere/sr0"),
              "cannot open CD drive '/nowhere/sr0': No such file or directory");
    EXPECT_EQ(EndSignal(), 0);
}

TEST_F(TrackWait, SaysOnceThatItWaitsWhenThatTakesMoreThanAMoment) {
    HeldDrive drive("header");
    std::string before = "not looked";
    Screen.Script({Screen.After(milliseconds(430)), {}, [&] { before = Screen.Screen(); }});
    Screen.Script(
        {Screen.After(milliseconds(530)), {}, [&] { EXPECT_EQ(Screen.Screen(), kWaiting); }});
    Screen.Script({Screen.After(milliseconds(3000)), {}, [&] { drive.Release(); }});
    EXPECT_EQ(List(), "2 tracks");
    EXPECT_EQ(before, "");
    EXPECT_EQ(Screen.Screen(), kWaiting);
}

TEST_F(TrackWait, SaysNothingWhereNobodyReadsIt) {
    HeldDrive drive("header");
    Screen.bOutputTerminal = false;
    Screen.Script({Screen.After(milliseconds(3000)), {}, [&] { drive.Release(); }});
    std::string tracks;
    std::string errors;
    {
        const CapturedDescriptor captured(STDERR_FILENO);
        tracks = List();
        errors = captured.Text();
    }
    EXPECT_EQ(tracks, "2 tracks");
    EXPECT_EQ(errors, "");
    EXPECT_EQ(Screen.Written(), "");
}

TEST_F(TrackWait, EndsWithEscAndWithNoOtherKey) {
    const HeldDrive drive("header");
    Screen.PressWhen(Screen.Shows(kWaiting), {PressedKey('q'), kEnterKey});
    Screen.Script({Screen.Later(milliseconds(1000)), {}, [&] { EXPECT_EQ(EndSignal(), 0); }});
    Screen.PressWhen(ScriptedTerminal::Always(), {kEscapeKey});
    EXPECT_EQ(List(), "");
    EXPECT_EQ(EndSignal(), SIGINT);
    EXPECT_TRUE(Screen.IsThrough());
}

TEST_F(TrackWait, EndsWithASignal) {
    const HeldDrive drive("header");
    Screen.RaiseWhen(Screen.Shows(kWaiting), SIGTERM);
    EXPECT_EQ(List(), "");
    EXPECT_EQ(EndSignal(), SIGTERM);
}

TEST_F(TrackWait, AnswersAStatusRequest) {
    HeldDrive drive("header");
    Screen.RaiseWhen(Screen.Shows(kWaiting), SIGUSR1);
    Screen.Script({Screen.Shows("Waiting for the drive."), {}, [&] { drive.Release(); }});
    EXPECT_EQ(List(), "2 tracks");
    EXPECT_EQ(Screen.Screen(), std::string(kWaiting) + "Waiting for the drive.\n");
}
