// The real program, a drive with a disc of three tracks, and a directory for their files.

#pragma once

#include "file_tree.h"
#include "preloaded_drive.h"
#include "program_in_terminal.h"
#include "run_program.h"

#include <gtest/gtest.h>

inline constexpr std::uint32_t kDisc = 7;
inline constexpr std::size_t kHeaderBytes = 44;

// Track 1 from frame 150 to 1000, track 2 to 1017, track 3 to 2000.
inline FakeDisc ThreeTracks() {
    return AudioDisc({150, 1000, 1017}, 2000, kDisc);
}

class CdProgram : public testing::Test {
protected:
    CdProgram() {
        std::filesystem::create_directory(Music);
        Drives.Describe(ThreeTracks());
    }

    ProgramResult Tarvane(std::vector<std::string> Arguments) {
        Arguments.insert(Arguments.begin(), TARVANE_PROGRAM);
        return RunProgram(Arguments, Root.Path(), Drives.Environment());
    }

    // With an answer for taken names, because nobody can be asked.
    ProgramResult Copy(std::vector<std::string> Sources, const std::string& OnConflict = "fail") {
        Sources.insert(Sources.begin(), {"copy", "--on-conflict=" + OnConflict});
        Sources.push_back(Music);
        return Tarvane(Sources);
    }

    ProgramInTerminal::Setting CopyInTerminal(const std::string& Source) const {
        ProgramInTerminal::Setting setting;
        setting.Command = {TARVANE_PROGRAM, "copy", Source, Music};
        setting.Environment = Drives.Environment();
        setting.Environment.emplace_back("TERM", "xterm");
        return setting;
    }

    // Compares every frame of the file with what the disc has at its address.
    void ExpectFrames(const std::filesystem::path& Wav, int StartFrame, int EndFrame,
                      std::uint32_t Disc = kDisc) const {
        const std::string bytes = ReadFile(Wav);
        const int frames = EndFrame - StartFrame;
        ASSERT_EQ(bytes.size(), kHeaderBytes + static_cast<std::size_t>(frames * kFakeFrameBytes));
        EXPECT_TRUE(bytes.substr(kHeaderBytes) == FakeFrames(Disc, StartFrame, frames)) << Wav;
    }

    // The job failed with this sentence, whatever was said before and after it.
    void ExpectFailure(const ProgramResult& Result, const std::string& Sentence) const {
        EXPECT_EQ(Result.Status, 1);
        EXPECT_EQ(Result.Output, "");
        EXPECT_NE(("\n" + Result.Errors).find("\ntarvane: " + Sentence + "\n"), std::string::npos)
            << Result.Errors;
        EXPECT_EQ(Drives.OpenDescriptors(), 0);
    }

    TemporaryDirectory Root;
    std::string Music = (Root / "Music").string();
    PreloadedDrives Drives;
};
