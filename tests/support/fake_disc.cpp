#include "fake_disc.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <linux/cdrom.h>

namespace {

cdrom_msf0 ToMsf(int Frame) {
    return {static_cast<__u8>(Frame / (CD_SECS * CD_FRAMES)),
            static_cast<__u8>(Frame / CD_FRAMES % CD_SECS), static_cast<__u8>(Frame % CD_FRAMES)};
}

int ReadHeader(const FakeDisc& Disc, cdrom_tochdr& Out) {
    if (Disc.Tracks.empty()) {
        return EIO;
    }
    Out.cdth_trk0 = static_cast<__u8>(Disc.Tracks.front().Number);
    Out.cdth_trk1 = static_cast<__u8>(Disc.Tracks.back().Number);
    return 0;
}

int ReadEntry(const FakeDisc& Disc, cdrom_tocentry& Entry) {
    if (Entry.cdte_format != CDROM_MSF) {
        return EINVAL;
    }
    if (Entry.cdte_track == CDROM_LEADOUT) {
        Entry.cdte_addr.msf = ToMsf(Disc.LeadOutFrame);
        return 0;
    }
    const auto track =
        std::find_if(Disc.Tracks.begin(), Disc.Tracks.end(),
                     [&Entry](const FakeTrack& Each) { return Each.Number == Entry.cdte_track; });
    if (track == Disc.Tracks.end()) {
        return EINVAL;
    }
    Entry.cdte_addr.msf = ToMsf(track->StartFrame);
    // Copying is allowed, which must not be taken for data.
    constexpr unsigned kCopyPermitted = 0x02;
    const unsigned control = kCopyPermitted | (track->bData ? unsigned{CDROM_DATA_TRACK} : 0U);
    Entry.cdte_ctrl = static_cast<__u8>(control & 0x0fU);
    Entry.cdte_adr = 1;
    return 0;
}

int ReadAudio(const FakeDisc& Disc, const cdrom_read_audio& Read) {
    constexpr int kMostFramesPerRead = 75;
    if (Read.addr_format != CDROM_LBA || Read.nframes < 1 || Read.nframes > kMostFramesPerRead) {
        return EINVAL;
    }
    const int end = Read.addr.lba + Read.nframes;
    if (Disc.bStrict && end > Disc.LeadOutFrame - CD_MSF_OFFSET) {
        return EIO;
    }
    const std::string frames = FakeFrames(Disc.Id, Read.addr.lba, Read.nframes);
    std::memcpy(Read.buf, frames.data(), frames.size());
    return 0;
}

bool Concerns(const FakeFault& Fault, const std::string& Request, unsigned long Code,
              const void* Argument) {
    const std::string prefix = "read ";
    if (Code != CDROMREADAUDIO) {
        return Fault.Request == Request;
    }
    if (!Fault.Request.starts_with(prefix)) {
        return Fault.Request == "read";
    }
    const int address = std::stoi(Fault.Request.substr(prefix.size()));
    const auto* read = static_cast<const cdrom_read_audio*>(Argument);
    return address >= read->addr.lba && address < read->addr.lba + read->nframes;
}

int Serve(const FakeDisc& Disc, unsigned long Code, void* Argument) {
    switch (Code) {
    case CDROMREADTOCHDR:
        return ReadHeader(Disc, *static_cast<cdrom_tochdr*>(Argument));
    case CDROMREADTOCENTRY:
        return ReadEntry(Disc, *static_cast<cdrom_tocentry*>(Argument));
    case CDROMREADAUDIO:
        return ReadAudio(Disc, *static_cast<const cdrom_read_audio*>(Argument));
    default:
        return ENOTTY;
    }
}

constexpr std::size_t kStampBytes = 8;

// What all frames have in common.
std::string MakeNoise() {
    std::string noise;
    std::uint32_t state = 1;
    for (int i = 0; i < kFakeFrameBytes; ++i) {
        state = state * 1664525U + 1013904223U;
        noise += static_cast<char>(state >> 24U);
    }
    return noise;
}

void Stamp(std::uint32_t DiscId, int Address, char* Out) {
    std::memcpy(Out, &DiscId, sizeof(DiscId));
    std::memcpy(Out + sizeof(DiscId), &Address, sizeof(Address));
}

const FakeDisc& DiscInside(FakeDrive& Drive) {
    const std::size_t number =
        Drive.RequestsPerDisc == 0
            ? 0
            : static_cast<std::size_t>(Drive.Requests / Drive.RequestsPerDisc);
    ++Drive.Requests;
    return Drive.Discs[std::min(number, Drive.Discs.size() - 1)];
}

} // namespace

FakeDisc AudioDisc(const std::vector<int>& StartFrames, int LeadOutFrame, std::uint32_t Id) {
    FakeDisc disc;
    disc.Id = Id;
    for (const int start : StartFrames) {
        disc.Tracks.push_back({static_cast<int>(disc.Tracks.size()) + 1, start, false});
    }
    disc.LeadOutFrame = LeadOutFrame;
    return disc;
}

std::string FakeRequestName(unsigned long Code, const void* Argument) {
    switch (Code) {
    case CDROMREADTOCHDR:
        return "header";
    case CDROMREADTOCENTRY:
        return "entry " + std::to_string(static_cast<const cdrom_tocentry*>(Argument)->cdte_track);
    case CDROMREADAUDIO: {
        const auto* read = static_cast<const cdrom_read_audio*>(Argument);
        return "read " + std::to_string(read->addr.lba) + " " + std::to_string(read->nframes);
    }
    default:
        return "unknown " + std::to_string(Code);
    }
}

std::string FakeFrames(std::uint32_t DiscId, int FirstAddress, int Count) {
    static const std::string noise = MakeNoise();
    std::string frames;
    frames.reserve(static_cast<std::size_t>(Count) * kFakeFrameBytes);
    for (int address = FirstAddress; address < FirstAddress + Count; ++address) {
        frames += noise;
        const std::size_t end = frames.size();
        Stamp(DiscId, address, &frames[end - kFakeFrameBytes]);
        Stamp(DiscId, address, &frames[end - kStampBytes]);
    }
    return frames;
}

FakeAnswer AnswerRequest(FakeDrive& Drive, unsigned long Code, void* Argument) {
    const FakeDisc& disc = DiscInside(Drive);
    const std::string request = FakeRequestName(Code, Argument);
    FakeAnswer answer;
    for (const FakeFault& fault : disc.Faults) {
        if (Concerns(fault, request, Code, Argument)) {
            answer.Error = std::max(answer.Error, fault.Error);
            answer.DelayMilliseconds += fault.DelayMilliseconds;
        }
    }
    if (!disc.bPresent) {
        answer.Error = ENOMEDIUM;
    }
    if (answer.Error == 0) {
        answer.Error = Serve(disc, Code, Argument);
    }
    return answer;
}
