#include "plan_sources.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>
#include <variant>

#include <sys/stat.h>

#include "full_path.h"
#include "quoted.h"
#include "tarvanepane.h"

namespace fs = std::filesystem;

namespace {

bool IsTrack(const TarvaneTransferItemPlan& Item) {
    return IsCdPath(Item.SourcePath);
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
    SourceFinder(bool bMoveSources, const TrackLister& TracksOf, PlanRefusal& RefusalToAddTo)
        : bMove(bMoveSources), ListTracks(TracksOf), Refusal(RefusalToAddTo),
          bWaitsForDrives(!Refusal.IsRefused()) {}

    void Add(const fs::path& Operand) {
        if (IsCdPath(Operand)) {
            AddTracks(Operand);
        } else {
            AddEntry(Operand);
        }
    }

    std::vector<PlanSource> Sources;

private:
    void AddEntry(const fs::path& Operand) {
        const bool bContentsOnly = WithoutTrailingSlashes(Operand).empty() ||
                                   EndsInComponent(Operand, ".") || EndsInComponent(Operand, "..");
        if (bContentsOnly && bMove) {
            Refusal.Add(PlanRefusalKind::WrongUsage,
                        "cannot move " + Quoted(Operand.native()) + ": it has no name of its own");
            return;
        }
        struct stat status;
        if (stat(Operand.c_str(), &status) != 0) {
            Refusal.Add(PlanRefusalKind::Failed, SentenceForMissing(Operand, errno));
            return;
        }
        PlanSource source;
        source.Path = FullPath(Operand);
        source.Name = source.Path.has_filename() ? source.Path.filename().native() : "/";
        source.bDirectory = S_ISDIR(status.st_mode);
        source.bContentsOnly = bContentsOnly;
        Sources.push_back(std::move(source));
    }

    void AddTrack(fs::path Path, int Number) {
        PlanSource source;
        source.Path = std::move(Path);
        source.Name = TrackFileName(Number);
        source.bTrack = true;
        Sources.push_back(std::move(source));
    }

    void AddTracks(const fs::path& Operand) {
        const std::string device = TarvaneCddaDeviceFromPath(Operand.native());
        if (device.empty()) {
            Refusal.Add(PlanRefusalKind::WrongUsage, Quoted(Operand.native()) + " names no drive");
            return;
        }
        if (!bWaitsForDrives) {
            return;
        }
        const auto result = ListTracks(device);
        if (const auto* failure = std::get_if<TrackListFailure>(&result)) {
            AddDiscFailure(*failure);
            return;
        }
        const int number = TarvaneCddaTrackFromPath(Operand.native());
        if (number != 0) {
            AddTrack(Operand, number);
        } else {
            AddDisc(std::get<TrackList>(result));
        }
    }

    void AddDiscFailure(const TrackListFailure& Failure) {
        if (Failure.Reason.empty()) {
            Refusal = {PlanRefusalKind::Canceled, {}};
        } else {
            Refusal.Add(PlanRefusalKind::Failed, Failure.Reason);
        }
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
    PlanRefusal& Refusal;
    const bool bWaitsForDrives;
};

} // namespace

std::vector<PlanSource> FindSources(const std::vector<fs::path>& Operands, bool bMove,
                                    const TrackLister& ListTracks, PlanRefusal& InOutRefusal) {
    SourceFinder finder(bMove, ListTracks, InOutRefusal);
    for (const fs::path& operand : Operands) {
        if (!InOutRefusal.IsCanceled()) {
            finder.Add(operand);
        }
    }
    return std::move(finder.Sources);
}

bool IsCdPath(const fs::path& Path) {
    return TarvaneIsCddaPath(Path.native());
}

bool HasTracks(const TarvaneTransferPlan& Plan) {
    return std::ranges::any_of(Plan.Items, IsTrack);
}

bool HasOnlyTracks(const TarvaneTransferPlan& Plan) {
    return std::ranges::all_of(Plan.Items, IsTrack);
}
