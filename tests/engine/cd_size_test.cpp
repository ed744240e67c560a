// The largest track that a WAV file can hold.
//
// The positions in a table of contents have one byte for the minutes, which is too little for such
// a track, so this test gives the minutes more room and answers the requests itself. The engine is
// built around the changed record; nothing else that is linked knows it.

#define minute                                                                                     \
    Unused;                                                                                        \
    int minute
#include <linux/cdrom.h>
#undef minute

#include "engine_source.h"

#include "temporary_directory.h"

#include <gtest/gtest.h>

#include <cstdarg>

int WrappedIoctl(int Descriptor, unsigned long Code, ...) asm("__wrap_ioctl");

namespace {

constexpr int kFramesPerMinute = 4500;
constexpr std::int32_t kMostFrames = 1826091;

// The only track of the disc starts at 0 and ends here.
std::int32_t gLeadOutFrame = 0;
int gReads = 0;

void PutPosition(std::int32_t Frame, cdrom_msf0& Out) {
    Out.minute = Frame / kFramesPerMinute;
    Out.second = static_cast<__u8>(Frame % kFramesPerMinute / 75);
    Out.frame = static_cast<__u8>(Frame % 75);
}

class LargestTrack : public testing::Test {
protected:
    LargestTrack() { gReads = 0; }

    // /dev/null is there on every machine and opens like a drive.
    bool Extract() { return ExtractCddaTrackToWav("cdda:/dev/null/1", Wav, Job, ErrorMessage); }

    TemporaryDirectory Directory;
    fs::path Wav = Directory / "Track 01.wav";
    TarvaneTransferJob Job{false, 1, "Audio CD"};
    std::string ErrorMessage;
};

TEST_F(LargestTrack, IsRead) {
    gLeadOutFrame = kMostFrames;
    EXPECT_FALSE(Extract());
    EXPECT_EQ(ErrorMessage, "Failed reading audio CD sectors: Input/output error");
    EXPECT_EQ(gReads, 1);
    EXPECT_EQ(Job.MakeUiSnapshot().CurrentFileTotalBytes, 4294966032U);
}

TEST_F(LargestTrack, WithOneMoreFrameIsTooLargeAndIsNotOpened) {
    gLeadOutFrame = kMostFrames + 1;
    EXPECT_FALSE(Extract());
    EXPECT_EQ(ErrorMessage, "Audio CD track is too large for a standard WAV file.");
    EXPECT_EQ(gReads, 0);
    EXPECT_FALSE(fs::exists(Wav));
}

TEST_F(LargestTrack, IsFoundByASizeInSixtyFourBits) {
    // In 32 bits the size would be 2352.
    gLeadOutFrame = (1 << 28) + 1;
    EXPECT_FALSE(Extract());
    EXPECT_EQ(ErrorMessage, "Audio CD track is too large for a standard WAV file.");
}

} // namespace

// A disc with one track, none of whose frames can be read.
int WrappedIoctl(int, unsigned long Code, ...) {
    va_list arguments;
    va_start(arguments, Code);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    if (Code == CDROMREADTOCHDR) {
        *static_cast<cdrom_tochdr*>(argument) = {1, 1};
        return 0;
    }
    if (Code == CDROMREADTOCENTRY) {
        auto* entry = static_cast<cdrom_tocentry*>(argument);
        PutPosition(entry->cdte_track == CDROM_LEADOUT ? gLeadOutFrame : 0, entry->cdte_addr.msf);
        return 0;
    }
    ++gReads;
    errno = EIO;
    return -1;
}
