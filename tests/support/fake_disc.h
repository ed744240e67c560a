// Audio CDs and the drives that hold them, for tests: what the CD-ROM driver would answer.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct FakeTrack {
    int Number = 0;
    // As the table of contents has it: the first track of a normal disc starts at frame 150.
    int StartFrame = 0;
    bool bData = false;
};

// What happens to one request beside its answer. Requests are named "header", "entry 3", "entry
// 170" (the lead-out), "read", which is every read, and "read 1000", which is any read that asks
// for the frame at that address.
struct FakeFault {
    std::string Request;
    // 0 to answer the request after all.
    int Error = 0;
    int DelayMilliseconds = 0;
};

struct FakeDisc {
    std::uint32_t Id = 1;
    // False for a drive without a disc.
    bool bPresent = true;
    std::vector<FakeTrack> Tracks;
    int LeadOutFrame = 0;
    // Refuses to read past the lead-out, as most drives do.
    bool bStrict = false;
    std::vector<FakeFault> Faults;
};

// A disc of audio tracks that start at the given frames.
FakeDisc AudioDisc(const std::vector<int>& StartFrames, int LeadOutFrame, std::uint32_t Id = 1);

constexpr int kFakeFrameBytes = 2352;

// The audio at Count addresses. Each frame begins and ends with its disc and address; in between
// all frames are the same noise.
std::string FakeFrames(std::uint32_t DiscId, int FirstAddress, int Count);

// One drive, and the discs that are put into it one after the other.
struct FakeDrive {
    std::string Device;
    std::vector<FakeDisc> Discs;
    // After so many requests the next disc is in the drive; 0 for never.
    int RequestsPerDisc = 0;
    int Requests = 0;
};

// The name of an ioctl, as in FakeFault but for "read 1000 16" with the number of frames.
std::string FakeRequestName(unsigned long Code, const void* Argument);

struct FakeAnswer {
    int Error = 0;
    int DelayMilliseconds = 0;
};

// Answers an ioctl of the CD-ROM driver, filling in what Argument points to. The caller waits for
// the delay.
FakeAnswer AnswerRequest(FakeDrive& Drive, unsigned long Code, void* Argument);
