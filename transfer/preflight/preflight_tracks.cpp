#include "preflight_tracks.h"

#include "table_of_contents.h"
#include "tarvanepane.h"

#include <algorithm>

std::uint64_t TrackLook::LookAt(const std::string& TrackPath) {
    const std::string device = TarvaneCddaDeviceFromPath(TrackPath);
    const int number = TarvaneCddaTrackFromPath(TrackPath);
    if (device.empty() || number <= 0) {
        Result.Findings.AddStop(PreflightFindingKind::MissingTrack, TrackPath);
        return 0;
    }
    const KnownDiscs::mapped_type& disc = DiscIn(device);
    if (const auto* failure = std::get_if<TrackListFailure>(&disc)) {
        Result.Findings.AddStop(PreflightFindingKind::MissingDrive, TrackPath, failure->Reason);
        return 0;
    }
    const std::vector<TrackListEntry>& tracks = std::get<TrackList>(disc).Tracks;
    const auto track =
        std::find_if(tracks.begin(), tracks.end(),
                     [number](const TrackListEntry& Entry) { return Entry.Number == number; });
    if (track == tracks.end()) {
        Result.Findings.AddStop(PreflightFindingKind::MissingTrack, TrackPath);
        return 0;
    }
    if (track->bData) {
        Result.Findings.AddStop(PreflightFindingKind::DataTrack, TrackPath);
        return 0;
    }
    if (!track->HasValidRange()) {
        Result.Findings.AddStop(PreflightFindingKind::EmptyTrack, TrackPath);
        return 0;
    }
    const std::uint64_t audioBytes = TrackAudioBytes(*track);
    ++Result.Entries;
    ++Result.CopiedEntries;
    Result.Bytes += audioBytes;
    Result.CopiedBytes += audioBytes;
    return TrackWavSizeBytes(*track);
}

const KnownDiscs::mapped_type& TrackLook::DiscIn(const std::string& Device) {
    const auto [position, bNew] = Discs.try_emplace(Device);
    if (bNew) {
        position->second = ReadTrackList(Device);
    }
    return position->second;
}
