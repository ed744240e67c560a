// What a drive answers when it is asked for the table of contents of its disc.

#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <string>
#include <variant>

#include <linux/cdrom.h>

#include "fuzz_target.h"
#include "table_of_contents.h"
#include "track_list.h"

namespace {

InputReader gAnswers{{}};

// A whole answer of bytes, but the mark that says in which of two ways an address is written: a
// drive answers in the way that it was asked for.
void Fill(void* Out, std::size_t Size) {
    for (std::size_t i = 0; i < Size; ++i) {
        static_cast<unsigned char*>(Out)[i] = static_cast<unsigned char>(gAnswers.Number(256));
    }
}

int Answer(unsigned long Request, void* Out) {
    constexpr int kErrors[] = {EIO, ENOMEDIUM, ENOTTY, EINVAL};
    if (const int kind = gAnswers.Number(64); kind >= 60) {
        errno = kErrors[kind - 60];
        return -1;
    }
    if (Request == CDROMREADTOCHDR) {
        Fill(Out, sizeof(cdrom_tochdr));
    } else {
        Fill(Out, sizeof(cdrom_tocentry));
    }
    return 0;
}

void Check(const TrackListFailure& Failure) {
    Expect(!Failure.Reason.empty(), "a failure has a reason");
}

void Check(const TrackList& List) {
    // The latest address that there is room for: 255 minutes, seconds and frames.
    constexpr std::int32_t kLastFrame = (255 * CD_SECS + 255) * CD_FRAMES + 255;
    Expect(!List.Tracks.empty() && List.Tracks.size() <= 99, "a disc has 1 to 99 tracks");
    bool bAnyAudio = false;
    for (std::size_t i = 0; i < List.Tracks.size(); ++i) {
        const TrackListEntry& track = List.Tracks[i];
        Expect(track.Number == List.Tracks[0].Number + static_cast<int>(i) && track.Number <= 99,
               "tracks follow each other");
        Expect(track.StartFrame >= 0 && track.EndFrame >= track.StartFrame &&
                   track.EndFrame <= kLastFrame,
               "a track ends behind its beginning");
        Expect(i == 0 || track.StartFrame == List.Tracks[i - 1].EndFrame,
               "a track begins where the one before it ends");
        const auto frames = static_cast<std::uint64_t>(track.EndFrame - track.StartFrame);
        const std::uint64_t audio = track.bData ? 0 : frames * CD_FRAMESIZE_RAW;
        Expect(TrackAudioBytes(track) == audio, "audio is as long as its frames");
        bAnyAudio = bAnyAudio || !track.bData;
    }
    Expect(bAnyAudio, "a disc that is listed has audio");
}

} // namespace

extern "C" int __wrap_ioctl(int, unsigned long Request, ...) {
    std::va_list arguments;
    va_start(arguments, Request);
    void* const out = va_arg(arguments, void*);
    va_end(arguments);
    return Answer(Request, out);
}

void RunInput(std::string_view Input) {
    gAnswers = InputReader(Input);
    std::visit([](const auto& Result) { Check(Result); }, ReadTrackList("/dev/null"));
}
