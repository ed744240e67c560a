#include "plan_builder.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <map>
#include <optional>
#include <system_error>
#include <utility>

#include <sys/stat.h>

#include "conflict_policy.h"
#include "full_path.h"
#include "plan_sources.h"
#include "quoted.h"

namespace fs = std::filesystem;

namespace {

using Refused = std::optional<PlanRefusal>;

constexpr char kCdLabel[] = "Audio CD";

struct DestinationOperand {
    fs::path Given;
    bool bDirectory = false;
    bool bExists = false;
};

PlanRefusal UsageRefusal(std::string Sentence) {
    return {PlanRefusalKind::WrongUsage, {std::move(Sentence)}};
}

std::string WithError(const std::string& What, const fs::path& Path, int Error) {
    return What + " " + Quoted(Path.native()) + ": " + std::generic_category().message(Error);
}

Refused LookAtDestination(const fs::path& Given, DestinationOperand& Out) {
    Out.Given = Given;
    if (IsCdPath(Given)) {
        return UsageRefusal("cannot write to an audio CD: " + Quoted(Given.native()));
    }
    struct stat status;
    if (stat(Given.c_str(), &status) == 0) {
        Out.bExists = true;
        Out.bDirectory = S_ISDIR(status.st_mode);
    } else if (errno != ENOENT) {
        return PlanRefusal{PlanRefusalKind::Failed, {WithError("failed to access", Given, errno)}};
    }
    return std::nullopt;
}

// Whether the destination's shape suits the sources. Many sources, or -t, need a directory.
Refused CheckShape(const TransferRequest& Request, const std::vector<PlanSource>& Sources,
                   const DestinationOperand& Destination) {
    const fs::path& given = Destination.Given;
    if (!Destination.bDirectory && (Request.TargetDirectory || Sources.size() > 1)) {
        return UsageRefusal(WithError(Request.TargetDirectory ? "target directory" : "target",
                                      given, Destination.bExists ? ENOTDIR : ENOENT));
    }
    if (Destination.bExists) {
        return std::nullopt;
    }
    if (EndsInComponent(given, "..")) {
        return UsageRefusal(WithError("target", given, ENOENT));
    }
    const bool bMeansDirectory = given.native().ends_with('/') || EndsInComponent(given, ".");
    if (bMeansDirectory && !std::ranges::all_of(Sources, &PlanSource::bDirectory)) {
        return UsageRefusal(WithError("cannot create regular file", given, ENOTDIR));
    }
    return std::nullopt;
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

Refused FindTwoOnOneName(const std::vector<TarvaneTransferItemPlan>& Items) {
    std::map<std::string, const TarvaneTransferItemPlan*> takers;
    for (const TarvaneTransferItemPlan& item : Items) {
        const auto [first, bNew] = takers.emplace(item.DestinationPath.native(), &item);
        if (bNew) {
            continue;
        }
        const fs::path& other = first->second->SourcePath;
        if (other == item.SourcePath) {
            return UsageRefusal("source " + Quoted(other.native()) + " is given more than once");
        }
        return UsageRefusal(Quoted(other.native()) + " and " + Quoted(item.SourcePath.native()) +
                            " would both become " + Quoted(item.DestinationPath.native()));
    }
    return std::nullopt;
}

// Why the item must not take its destination's name; empty when it may, or when it can be asked.
std::string WhyNameIsRefused(const TarvaneTransferItemPlan& Item, const ConflictPolicy& Policy) {
    struct stat status;
    if (stat(Item.DestinationPath.c_str(), &status) != 0) {
        const bool bLink = errno == ENOENT && lstat(Item.DestinationPath.c_str(), &status) == 0;
        return bLink
                   ? "not writing through dangling symlink " + Quoted(Item.DestinationPath.native())
                   : "";
    }
    TarvaneTransferConflict conflict;
    conflict.Kind = Item.bDirectory ? TarvaneTransferConflictKind::Directory
                                    : TarvaneTransferConflictKind::File;
    conflict.SourcePath = Item.SourcePath.native();
    conflict.DestinationPath = Item.DestinationPath.native();
    conflict.bSourceDirectory = Item.bDirectory;
    conflict.bDestinationDirectory = S_ISDIR(status.st_mode);
    const TakenEntry entry = LookAtTakenEntry(Item.DestinationPath).value_or(TakenEntry());
    return Policy.Decide(MakeTakenName(conflict, entry, Policy.FollowsLinks())).Sentence;
}

Refused FindRefusedNames(const TransferRequest& Request,
                         const std::vector<TarvaneTransferItemPlan>& Items) {
    const ConflictPolicy policy(RulesOf(Request));
    PlanRefusal refusal{PlanRefusalKind::Failed, {}};
    for (const TarvaneTransferItemPlan& item : Items) {
        std::string sentence = WhyNameIsRefused(item, policy);
        if (!sentence.empty()) {
            refusal.Sentences.push_back(std::move(sentence));
        }
    }
    return refusal.Sentences.empty() ? std::nullopt : Refused(std::move(refusal));
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

} // namespace

BuiltPlan BuildPlan(const TransferRequest& Request, const TrackLister& ListTracks) {
    std::vector<fs::path> operands = Request.Operands;
    if (!Request.TargetDirectory) {
        operands.pop_back();
    }
    DestinationOperand destination;
    if (Refused refusal = LookAtDestination(DestinationOf(Request), destination)) {
        return std::move(*refusal);
    }
    auto found = FindSources(operands, Request.bMove, ListTracks);
    if (auto* refusal = std::get_if<PlanRefusal>(&found)) {
        return std::move(*refusal);
    }
    const std::vector<PlanSource>& sources = std::get<std::vector<PlanSource>>(found);
    if (Refused refusal = CheckShape(Request, sources, destination)) {
        return std::move(*refusal);
    }
    TarvaneTransferPlan plan;
    const bool bIntoDirectory = destination.bDirectory && !Request.bNoTargetDirectory;
    const fs::path fullDestination = FullPath(destination.Given);
    for (const PlanSource& source : sources) {
        plan.Items.push_back(MakeItem(source, fullDestination, bIntoDirectory));
    }
    if (Refused refusal = FindTwoOnOneName(plan.Items)) {
        return std::move(*refusal);
    }
    if (Refused refusal = FindRefusedNames(Request, plan.Items)) {
        return std::move(*refusal);
    }
    plan.bMove = Request.bMove;
    // The engine's own policies merge into links and replace one kind of entry by another.
    plan.ConflictPolicy = TarvaneTransferConflictPolicy::Ask;
    plan.SourceLabel = LabelFor(sources);
    return plan;
}
