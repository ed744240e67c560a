// What the choices about taken names will do, foretold for one name after the other.

#pragma once

#include "conflict_policy.h"
#include "destination_side.h"
#include "preflight_result.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include <sys/stat.h>

enum class NameFate {
    // Nothing stands there.
    Free,
    // A directory, whose contents are decided about one by one.
    Merged,
    Replaced,
    // A link gives its place to the file.
    LinkReplaced,
    Skipped,
    // The source gets another name.
    Renamed,
    // Replaced or skipped, as the contents are.
    Compared,
    // Somebody will be asked.
    Asked,
    // The run must not begin.
    Refused,
};

// What is to take a name, as the engine's record would have it.
struct SourceSide {
    std::string Path;
    bool bDirectory = false;
    // Of a regular file.
    std::optional<std::uint64_t> SizeBytes = {};
    std::optional<std::int64_t> ModifiedTicks = {};
    // Of anything but directories and CD tracks.
    mode_t Mode = 0;
    uid_t Owner = 0;
    gid_t Group = 0;
};

SourceSide SourceSideOf(std::string Path, const struct stat& Status);

class TakenNames {
public:
    // Adds to the counts and findings of Result, which must outlive it. What carries modes makes a
    // file private before it is replaced, where that lets in more people than the source.
    TakenNames(ConflictRules ChosenRules, PreflightResult& ResultToFill, bool bCarryModes)
        : Rules(std::move(ChosenRules)), Policy(Rules), Result(ResultToFill),
          bCarriesModes(bCarryModes) {}

    const ConflictRules& Chosen() const { return Rules; }

    // What becomes of Source at DestinationPath, where There was seen. Counts it; a refused name is
    // a finding.
    NameFate Decide(const SourceSide& Source, const std::string& DestinationPath,
                    const DestinationEntry& There);

    // Whether Decide skips every file that would take this name, and needs not see it.
    bool SkipsFilesAt(const DestinationEntry& There) const;
    // Counts a file that is skipped.
    void Skip() { Count(NameFate::Skipped); }

    // The directory that an item goes into.
    void Enter(const DestinationFacts& Directory);
    // Whether all the names that were taken since were files that a choice replaces or skips, and
    // directories that it merges into, with nothing among them that names could meet through, and
    // no file that has to be made private first.
    bool AreOnlyFiles() const { return bOnlyFiles; }

private:
    bool IsOnlyFile(const SourceSide& Source, const std::string& DestinationPath,
                    const DestinationEntry& There, NameFate Fate) const;
    NameFate DecideThroughDangling(const SourceSide& Source, const std::string& DestinationPath);
    NameFate DecideTaken(const SourceSide& Source, const std::string& DestinationPath,
                         const DestinationEntry& There);
    void Count(NameFate Fate);

    const ConflictRules Rules;
    const ConflictPolicy Policy;
    PreflightResult& Result;
    const bool bCarriesModes;
    bool bOnlyFiles = false;
    std::uint64_t MountId = 0;
};
