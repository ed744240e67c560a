// One track of an audio CD and the file that it becomes, for tests of the engine's extraction.
//
// Requires: included behind the engine's source, whose private functions it calls; and what
// fake_drive.h requires.

#pragma once

#include "fake_drive.h"
#include "file_tree.h"
#include "temporary_directory.h"

#include <gtest/gtest.h>

inline constexpr std::uint32_t kDisc = 7;
inline constexpr int kStart = 150;
inline const char* const kSource = "cdda:/dev/fake-cd/1";

// A disc with one track.
inline FakeDisc OneTrack(int Frames) {
    return AudioDisc({kStart}, kStart + Frames, kDisc);
}

class TrackExtraction : public testing::Test {
protected:
    bool Extract() { return ExtractCddaTrackToWav(kSource, Wav, Job, ErrorMessage); }

    void ExpectFailure(const std::string& Message) {
        EXPECT_FALSE(Extract());
        EXPECT_EQ(ErrorMessage, Message);
    }

    void ExpectCounters(std::uint64_t Bytes, std::uint64_t Items) {
        const TarvaneTransferUiSnapshot snapshot = Job.MakeUiSnapshot();
        EXPECT_EQ(snapshot.DoneBytes, Bytes);
        EXPECT_EQ(snapshot.DoneItems, Items);
    }

    TemporaryDirectory Directory;
    std::filesystem::path Wav = Directory / "Track 01.wav";
    TarvaneTransferJob Job{false, 1, "Audio CD"};
    std::string ErrorMessage = "untouched";
};
