#include "plan_sources.h"

#include <cerrno>
#include <string_view>
#include <system_error>
#include <utility>

#include <sys/stat.h>

#include "exit_status.h"
#include "quoted.h"
#include "tarvanepane.h"
#include "track_fetch.h"

namespace fs = std::filesystem;

namespace {

// Given without its trailing slashes; empty for "/".
std::string_view WithoutTrailingSlashes(const fs::path& Given) {
    const std::string_view text = Given.native();
    return text.substr(0, text.find_last_not_of('/') + 1);
}

std::string SentenceForMissing(const fs::path& Operand, int Error) {
    std::error_code ec;
    if (Error == ENOENT && fs::is_symlink(fs::symlink_status(Operand, ec))) {
        return "cannot stat " + Quoted(Operand.native()) + ": dangling symbolic link";
    }
    return "cannot stat " + Quoted(Operand.native()) + ": " +
           std::generic_category().message(Error);
}

class SourceFinder {
public:
    explicit SourceFinder(bool bMoveSources) : bMove(bMoveSources) {}

    // False when it makes no sense to look at further operands.
    bool Add(const fs::path& Operand) {
        return IsCdPath(Operand) ? AddTracks(Operand) : AddEntry(Operand);
    }

    std::vector<PlanSource> Sources;
    PlanRefusal Refusal;

private:
    bool RefuseUsage(std::string Sentence) {
        Refusal = {kExitUsage, {std::move(Sentence)}};
        return false;
    }

    bool AddEntry(const fs::path& Operand) {
        const bool bContentsOnly = WithoutTrailingSlashes(Operand).empty() ||
                                   EndsInComponent(Operand, ".") || EndsInComponent(Operand, "..");
        if (bContentsOnly && bMove) {
            return RefuseUsage("cannot move " + Quoted(Operand.native()) +
                               ": it has no name of its own");
        }
        struct stat status;
        if (stat(Operand.c_str(), &status) != 0) {
            Refusal.ExitStatus = kExitFailed;
            Refusal.Sentences.push_back(SentenceForMissing(Operand, errno));
            return true;
        }
        PlanSource source;
        source.Path = FullPath(Operand);
        source.Name = source.Path.has_filename() ? source.Path.filename().native() : "/";
        source.bDirectory = S_ISDIR(status.st_mode);
        source.bContentsOnly = bContentsOnly;
        Sources.push_back(std::move(source));
        return true;
    }

    void AddTrack(fs::path Path, int Number) {
        PlanSource source;
        source.Path = std::move(Path);
        source.Name = TrackFileName(Number);
        source.bTrack = true;
        Sources.push_back(std::move(source));
    }

    bool AddTracks(const fs::path& Operand) {
        const std::string device = TarvaneCddaDeviceFromPath(Operand.native());
        if (device.empty()) {
            return RefuseUsage(Quoted(Operand.native()) + " names no drive");
        }
        const int number = TarvaneCddaTrackFromPath(Operand.native());
        if (number != 0) {
            AddTrack(Operand, number);
            return true;
        }
        return AddDisc(device);
    }

    bool AddDisc(const std::string& Device) {
        TrackList list;
        std::string errorMessage;
        int endStatus = kExitDone;
        switch (FetchTrackList(Device, list, errorMessage, endStatus)) {
        case TrackFetchResult::Fetched:
            break;
        case TrackFetchResult::Failed:
            Refusal.ExitStatus = kExitFailed;
            Refusal.Sentences.push_back(errorMessage);
            return true;
        case TrackFetchResult::Canceled:
            Refusal = {endStatus, {}};
            return false;
        }
        for (const TrackListEntry& track : list.Tracks) {
            if (!track.bData) {
                AddTrack(TrackPath(Device, track.Number), track.Number);
            }
        }
        return true;
    }

    const bool bMove;
};

} // namespace

std::variant<std::vector<PlanSource>, PlanRefusal>
FindSources(const std::vector<fs::path>& Operands, bool bMove) {
    SourceFinder finder(bMove);
    for (const fs::path& operand : Operands) {
        if (!finder.Add(operand)) {
            break;
        }
    }
    if (finder.Refusal.ExitStatus != kExitDone) {
        return std::move(finder.Refusal);
    }
    return std::move(finder.Sources);
}

fs::path FullPath(const fs::path& Given) {
    std::error_code ec;
    fs::path full = Given.is_absolute() ? fs::path("/") : fs::current_path(ec);
    if (ec) {
        return Given;
    }
    for (const fs::path& component : Given.relative_path()) {
        if (!component.empty() && component != ".") {
            full /= component;
        }
    }
    return full;
}

bool EndsInComponent(const fs::path& Given, std::string_view Name) {
    const std::string_view text = WithoutTrailingSlashes(Given);
    return text.substr(text.rfind('/') + 1) == Name;
}

bool IsCdPath(const fs::path& Path) {
    return TarvaneIsCddaPath(Path.native());
}
