// What became of taken names, for those who look at the destination afterwards.

#pragma once

#include "conflict_desk.h"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

// For those who keep very many names: two in millions of millions have one hash.
inline std::size_t HashOf(std::string_view Name) {
    return std::hash<std::string_view>()(Name);
}

// Takes the answers of one job. A path is the destination that was taken, as the job has it. Of
// what was only replaced nothing is kept, as that shows on the disk.
class AnsweredNames {
public:
    void Add(const AnsweredConflict& Answered);
    // The job has ended before it took the name, or the new one that it was to take instead.
    void LeaveAlone(const std::string& Path);

    // The full path of the name that the source got instead; null when it got none.
    const std::string* NewNameOf(std::string_view Path) const;
    // The new names by the paths that were taken, for those who look for all of them.
    const std::unordered_map<std::string, std::string>& Renamed() const { return NewNames; }
    // Those of them that CD tracks got.
    const std::vector<std::string>& NewTrackNames() const { return TrackNames; }
    // The contents were compared: they are equal now.
    bool WasCompared(std::string_view Path) const { return Holds(Compared, Path); }
    // It was left alone, with all that is in it; nor does the source have another name.
    bool WasSkipped(std::string_view Path) const { return Holds(Skipped, Path); }

private:
    using Hashes = std::unordered_set<std::size_t>;

    // As a rule there are none, and every entry of a transfer is asked about.
    static bool Holds(const Hashes& Held, std::string_view Path) {
        return !Held.empty() && Held.contains(HashOf(Path));
    }

    std::unordered_map<std::string, std::string> NewNames;
    std::vector<std::string> TrackNames;
    Hashes Compared;
    Hashes Skipped;
};
