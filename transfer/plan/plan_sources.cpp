#include "plan_sources.h"

#include <algorithm>
#include <cerrno>
#include <optional>
#include <system_error>
#include <utility>

#include <sys/stat.h>

#include "full_path.h"
#include "quoted.h"
#include "tarvanepane.h"

namespace fs = std::filesystem;

namespace {

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
    SourceFinder(bool bMoveSources, const TrackLister& TracksOf)
        : bMove(bMoveSources), ListTracks(TracksOf) {}

    // False when it makes no sense to look at further operands.
    bool Add(const fs::path& Operand) {
        return IsCdPath(Operand) ? AddTracks(Operand) : AddEntry(Operand);
    }

    std::vector<PlanSource> Sources;
    std::optional<PlanRefusal> Refusal;

private:
    bool RefuseUsage(std::string Sentence) {
        Refusal = {PlanRefusalKind::WrongUsage, {std::move(Sentence)}};
        return false;
    }

    // Others may be missing too. A drive that several tracks are in is missing once.
    bool AddFailure(std::string Sentence) {
        if (!Refusal) {
            Refusal.emplace();
        }
        if (std::ranges::find(Refusal->Sentences, Sentence) == Refusal->Sentences.end()) {
            Refusal->Sentences.push_back(std::move(Sentence));
        }
        return true;
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
            return AddFailure(SentenceForMissing(Operand, errno));
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
        const auto result = ListTracks(device);
        if (const auto* failure = std::get_if<TrackListFailure>(&result)) {
            return AddDiscFailure(*failure);
        }
        const int number = TarvaneCddaTrackFromPath(Operand.native());
        if (number != 0) {
            AddTrack(Operand, number);
        } else {
            AddDisc(std::get<TrackList>(result));
        }
        return true;
    }

    bool AddDiscFailure(const TrackListFailure& Failure) {
        if (!Failure.Reason.empty()) {
            return AddFailure(Failure.Reason);
        }
        Refusal = {PlanRefusalKind::Canceled, {}};
        return false;
    }

    void AddDisc(const TrackList& Disc) {
        for (const TrackListEntry& track : Disc.Tracks) {
            if (!track.bData) {
                AddTrack(TrackPath(Disc.Device, track.Number), track.Number);
            }
        }
    }

    const bool bMove;
    const TrackLister& ListTracks;
};

} // namespace

std::variant<std::vector<PlanSource>, PlanRefusal>
FindSources(const std::vector<fs::path>& Operands, bool bMove, const TrackLister& ListTracks) {
    SourceFinder finder(bMove, ListTracks);
    for (const fs::path& operand : Operands) {
        if (!finder.Add(operand)) {
            break;
        }
    }
    if (finder.Refusal) {
        return std::move(*finder.Refusal);
    }
    return std::move(finder.Sources);
}

bool IsCdPath(const fs::path& Path) {
    return TarvaneIsCddaPath(Path.native());
}
