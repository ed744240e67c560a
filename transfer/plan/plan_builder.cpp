#include "plan_builder.h"

#include <algorithm>
#include <cerrno>
#include <map>
#include <optional>
#include <system_error>
#include <utility>

#include <sys/stat.h>

#include "full_path.h"
#include "plan_sources.h"
#include "quoted.h"

namespace fs = std::filesystem;

namespace {

constexpr char kCdLabel[] = "Audio CD";

struct DestinationOperand {
    fs::path Given;
    bool bDirectory = false;
    bool bExists = false;
};

std::string WithError(const std::string& What, const fs::path& Path, int Error) {
    return What + " " + Quoted(Path.native()) + ": " + std::generic_category().message(Error);
}

// Nothing where it can be no destination, whatever the sources are.
std::optional<DestinationOperand> LookAtDestination(const fs::path& Given,
                                                    PlanRefusal& InOutRefusal) {
    if (IsCdPath(Given)) {
        InOutRefusal.Add(PlanRefusalKind::WrongUsage,
                         "cannot write to an audio CD: " + Quoted(Given.native()));
        return std::nullopt;
    }
    DestinationOperand destination{.Given = Given};
    struct stat status;
    if (stat(Given.c_str(), &status) == 0) {
        destination.bExists = true;
        destination.bDirectory = S_ISDIR(status.st_mode);
    } else if (errno != ENOENT) {
        InOutRefusal.Add(PlanRefusalKind::Failed, WithError("failed to access", Given, errno));
        return std::nullopt;
    }
    return destination;
}

// What does not suit the sources in the destination's shape; empty when all does. Many sources, or
// -t, need a directory.
std::string WhyShapeIsRefused(const TransferRequest& Request, bool bManySources,
                              const std::vector<PlanSource>& Sources,
                              const DestinationOperand& Destination) {
    const fs::path& given = Destination.Given;
    if (!Destination.bDirectory && (Request.TargetDirectory || bManySources)) {
        return WithError(Request.TargetDirectory ? "target directory" : "target", given,
                         Destination.bExists ? ENOTDIR : ENOENT);
    }
    if (Destination.bExists) {
        return {};
    }
    if (EndsInComponent(given, "..")) {
        return WithError("target", given, ENOENT);
    }
    const bool bMeansDirectory = given.native().ends_with('/') || EndsInComponent(given, ".");
    if (bMeansDirectory && !std::ranges::all_of(Sources, &PlanSource::bDirectory)) {
        return WithError("cannot create regular file", given, ENOTDIR);
    }
    return {};
}

TarvaneTransferItemPlan MakeItem(const PlanSource& Source, const fs::path& Destination,
                                 bool bIntoDirectory) {
    TarvaneTransferItemPlan item;
    item.Name = Source.Name;
    item.SourcePath = Source.Path;
    item.DestinationPath =
        bIntoDirectory && !Source.bContentsOnly ? Destination / Source.Name : Destination;
    item.bDestinationRenamed = item.DestinationPath.filename() != Source.Name;
    item.bDirectory = Source.bDirectory;
    return item;
}

void FindTwoOnOneName(const std::vector<TarvaneTransferItemPlan>& Items,
                      PlanRefusal& InOutRefusal) {
    std::map<std::string, const TarvaneTransferItemPlan*> takers;
    for (const TarvaneTransferItemPlan& item : Items) {
        const auto [first, bNew] = takers.emplace(item.DestinationPath.native(), &item);
        if (bNew) {
            continue;
        }
        const fs::path& other = first->second->SourcePath;
        InOutRefusal.Add(PlanRefusalKind::WrongUsage,
                         other == item.SourcePath
                             ? "source " + Quoted(other.native()) + " is given more than once"
                             : Quoted(other.native()) + " and " + Quoted(item.SourcePath.native()) +
                                   " would both become " + Quoted(item.DestinationPath.native()));
    }
}

fs::path CommonBeginning(const fs::path& First, const fs::path& Second) {
    fs::path common;
    auto other = Second.begin();
    for (const fs::path& component : First) {
        if (other == Second.end() || *other != component) {
            break;
        }
        common /= component;
        ++other;
    }
    return common;
}

// The directory that all sources come from.
std::string LabelFor(const std::vector<PlanSource>& Sources) {
    std::optional<fs::path> label;
    for (const PlanSource& source : Sources) {
        if (source.bTrack) {
            continue;
        }
        const fs::path from = source.bContentsOnly ? source.Path : source.Path.parent_path();
        label = label ? CommonBeginning(*label, from) : from;
    }
    return label ? label->native() : kCdLabel;
}

// The items of the sources that were found. Adds whatever is wrong about them.
std::vector<TarvaneTransferItemPlan> MakeItems(const TransferRequest& Request,
                                               const std::vector<PlanSource>& Sources,
                                               const DestinationOperand& Destination,
                                               PlanRefusal& InOutRefusal) {
    const bool bIntoDirectory = Destination.bDirectory && !Request.bNoTargetDirectory;
    const fs::path fullDestination = FullPath(Destination.Given);
    std::vector<TarvaneTransferItemPlan> items;
    for (const PlanSource& source : Sources) {
        items.push_back(MakeItem(source, fullDestination, bIntoDirectory));
    }
    FindTwoOnOneName(items, InOutRefusal);
    return items;
}

} // namespace

BuiltPlan BuildPlan(const TransferRequest& Request, const TrackLister& ListTracks) {
    std::vector<fs::path> operands = Request.Operands;
    if (!Request.TargetDirectory) {
        operands.pop_back();
    }
    PlanRefusal refusal;
    const std::optional<DestinationOperand> destination =
        LookAtDestination(DestinationOf(Request), refusal);
    const std::vector<PlanSource> sources =
        FindSources(operands, Request.bMove, ListTracks, refusal);
    TarvaneTransferPlan plan;
    if (destination && !refusal.IsCanceled()) {
        // Also when one of them is missing.
        const bool bManySources = std::max(operands.size(), sources.size()) > 1;
        std::string reason = WhyShapeIsRefused(Request, bManySources, sources, *destination);
        if (reason.empty()) {
            plan.Items = MakeItems(Request, sources, *destination, refusal);
        } else {
            refusal.Add(PlanRefusalKind::WrongUsage, std::move(reason));
        }
    }
    if (refusal.IsRefused()) {
        return refusal;
    }
    plan.bMove = Request.bMove;
    // The engine's own policies merge into links and replace one kind of entry by another.
    plan.ConflictPolicy = TarvaneTransferConflictPolicy::Ask;
    plan.SourceLabel = LabelFor(sources);
    return plan;
}
