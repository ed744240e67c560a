#include "tracks_command.h"

#include "exit_status.h"
#include "prompt.h"
#include "quoted.h"
#include "reporter.h"
#include "screen_text.h"
#include "system_terminal.h"
#include "tarvaneops.h"
#include "tarvanepane.h"
#include "track_list.h"
#include "track_wait.h"

#include <array>
#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <system_error>
#include <utility>
#include <variant>
#include <vector>

namespace {

constexpr int kFramesPerSecond = 75;
constexpr int kSecondsPerMinute = 60;

struct DiscTotal {
    int AudioTracks = 0;
    std::int32_t Frames = 0;
    std::uint64_t WavBytes = 0;
};

std::int32_t LengthFrames(const TrackListEntry& Track) {
    return Track.EndFrame - Track.StartFrame;
}

const char* KindOf(const TrackListEntry& Track) {
    return Track.bData ? "data" : "audio";
}

std::string FormatFrames(std::int32_t Frames) {
    const std::int32_t seconds = Frames / kFramesPerSecond;
    std::array<char, 32> text;
    std::snprintf(text.data(), text.size(), "%02d:%02d.%02d", seconds / kSecondsPerMinute,
                  seconds % kSecondsPerMinute, Frames % kFramesPerSecond);
    return text.data();
}

DiscTotal AddUp(const TrackList& List) {
    DiscTotal total;
    for (const TrackListEntry& track : List.Tracks) {
        if (track.bData) {
            continue;
        }
        ++total.AudioTracks;
        if (track.HasValidRange()) {
            total.Frames += LengthFrames(track);
            total.WavBytes += TrackWavSizeBytes(track);
        }
    }
    return total;
}

void PrintRow(const TrackListEntry& Track) {
    const std::string name = Track.bData ? "-" : TrackFileName(Track.Number);
    const std::string length = Track.HasValidRange() ? FormatFrames(LengthFrames(Track)) : "-";
    const std::uint64_t wavBytes = TrackWavSizeBytes(Track);
    std::printf("%2d  %-12s  %8s  %8s  %11s  %s\n", Track.Number, name.c_str(),
                FormatFrames(Track.StartFrame).c_str(), length.c_str(),
                wavBytes == 0 ? "-" : std::to_string(wavBytes).c_str(), KindOf(Track));
}

void PrintTable(const TrackList& List, const std::vector<std::string>& Drives) {
    std::printf("Disc in %s\n", CleanForScreen(List.Device).c_str());
    for (const std::string& drive : Drives) {
        if (!TarvanePathsEquivalentOrSame(drive, List.Device)) {
            std::printf("Another drive: %s\n", CleanForScreen(drive).c_str());
        }
    }
    std::printf(" #  Name          Start     Length      WAV bytes  Kind\n");
    for (const TrackListEntry& track : List.Tracks) {
        PrintRow(track);
    }
    const DiscTotal total = AddUp(List);
    std::printf("Total: %d audio track%s, %s, %" PRIu64 " bytes\n", total.AudioTracks,
                total.AudioTracks == 1 ? "" : "s", FormatFrames(total.Frames).c_str(),
                total.WavBytes);
}

nlohmann::ordered_json MakeTrackObject(const std::string& Device, const TrackListEntry& Track) {
    nlohmann::ordered_json object{
        {"number", Track.Number},
        {"name", nullptr},
        {"path", nullptr},
        {"kind", KindOf(Track)},
        {"start", FormatFrames(Track.StartFrame)},
        {"start_frame", Track.StartFrame},
        {"length", nullptr},
        {"length_frames", nullptr},
        {"wav_bytes", nullptr},
    };
    if (!Track.bData) {
        object["name"] = TrackFileName(Track.Number);
        object["path"] = TrackPath(Device, Track.Number);
    }
    if (Track.HasValidRange()) {
        object["length"] = FormatFrames(LengthFrames(Track));
        object["length_frames"] = LengthFrames(Track);
        if (!Track.bData) {
            object["wav_bytes"] = TrackWavSizeBytes(Track);
        }
    }
    return object;
}

void PrintDocument(const TrackList& List, const std::vector<std::string>& Drives) {
    nlohmann::ordered_json document{{"device", List.Device}, {"drives", Drives}};
    nlohmann::ordered_json& tracks = document["tracks"] = nlohmann::ordered_json::array();
    for (const TrackListEntry& track : List.Tracks) {
        tracks.push_back(MakeTrackObject(List.Device, track));
    }
    const DiscTotal total = AddUp(List);
    document["total"] = {{"audio_tracks", total.AudioTracks},
                         {"length", FormatFrames(total.Frames)},
                         {"length_frames", total.Frames},
                         {"wav_bytes", total.WavBytes}};
    // A terminal obeys more than the control characters of ASCII.
    constexpr bool kAscii = true;
    const auto replace = nlohmann::ordered_json::error_handler_t::replace;
    std::puts(document.dump(2, ' ', kAscii, replace).c_str());
}

RunOutcome Fail(const std::string& Message) {
    std::fprintf(stderr, "tarvane: %s\n", CleanForScreen(Message).c_str());
    return {.Result = RunResult::Failed, .Text = Message};
}

// The drive that was asked for, as an absolute path. Empty when the path names none.
std::string DeviceFrom(const std::string& Requested) {
    if (TarvaneIsCddaPath(Requested)) {
        return TarvaneCddaDeviceFromPath(Requested);
    }
    std::error_code ec;
    const std::filesystem::path device = std::filesystem::absolute(Requested, ec);
    return ec ? Requested : device.string();
}

// The first disc that can be listed, or why there is none in each drive.
std::variant<TrackList, std::vector<std::string>>
ListFirstDisc(const std::vector<std::string>& Devices, const PromptContext& Context) {
    std::vector<std::string> reasons;
    for (const std::string& device : Devices) {
        auto result = ListTracksAtPrompt(device, Context);
        if (auto* list = std::get_if<TrackList>(&result)) {
            return std::move(*list);
        }
        if (Context.Loop.Requests().IsAsked()) {
            break;
        }
        reasons.push_back(std::get<TrackListFailure>(result).Reason);
    }
    return reasons;
}

// What is on the disc, or how the command ends without one.
std::variant<TrackList, RunOutcome> ReadDisc(const std::vector<std::string>& Devices) {
    SystemTerminal screen;
    Prompt prompt(screen, ExitStatusOf);
    InterfaceLoop loop(screen, prompt);
    Reporter silent;
    auto result = ListFirstDisc(Devices, {screen, prompt, loop, silent});
    prompt.Close(loop.Requests());
    prompt.Finish();
    if (auto* list = std::get_if<TrackList>(&result)) {
        return std::move(*list);
    }
    if (loop.Requests().IsAsked()) {
        return RunOutcome{.Result = RunResult::Canceled, .EndSignal = loop.Requests().Signal()};
    }
    RunOutcome outcome{.Result = RunResult::Failed};
    for (const std::string& reason : std::get<std::vector<std::string>>(result)) {
        outcome = Fail(reason);
    }
    return outcome;
}

} // namespace

RunOutcome RunTracksCommand(const TracksRequest& Request) {
    const std::vector<std::string> drives = FindOpticalDrives();
    const std::vector<std::string> devices =
        Request.Device.empty() ? drives : std::vector{DeviceFrom(Request.Device)};
    if (devices.empty()) {
        return Fail("no optical drive found");
    }
    if (devices.front().empty()) {
        return Fail(Quoted(Request.Device) + " names no drive");
    }
    const std::variant<TrackList, RunOutcome> disc = ReadDisc(devices);
    if (const auto* end = std::get_if<RunOutcome>(&disc)) {
        return *end;
    }
    if (Request.bJson) {
        PrintDocument(std::get<TrackList>(disc), drives);
    } else {
        PrintTable(std::get<TrackList>(disc), drives);
    }
    if (std::fflush(stdout) != 0) {
        return Fail("cannot write the list: " + std::system_category().message(errno));
    }
    return {.Result = RunResult::Succeeded};
}
