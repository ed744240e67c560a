// Whether a run has kept them.

#include "promises.h"

#include "case_tree.h"

#include <algorithm>
#include <cstdlib>

namespace {

bool IsBelow(const std::string& Path, const std::string& Directory) {
    return Path.starts_with(Directory + "/");
}

} // namespace

void Promises::Break(const std::string& Promise, const std::string& Path) {
    constexpr int kMost = 8;
    if (++BrokenCount <= kMost) {
        Broken += "    " + Promise + ": " + Shown(Path) + "\n";
    }
}

std::string Promises::After(const std::string& Path) const {
    const auto found = Ended->Tree.find(FactName(Path));
    return found == Ended->Tree.end() ? "" : found->second;
}

bool Promises::IsSomewhere(const std::string& Fact) const {
    return std::any_of(Ended->Tree.begin(), Ended->Tree.end(),
                       [&Fact](const auto& Entry) { return Entry.second == Fact; });
}

// Whether an entry of the same directory has the fact and had no name before.
bool Promises::IsBesideAs(const std::string& Path, const std::string& Fact) const {
    const std::string directory = Path.substr(0, Path.rfind('/'));
    return std::any_of(Ended->Tree.begin(), Ended->Tree.end(), [&](const auto& Entry) {
        const std::string path = FactPath(Entry.first);
        return Entry.second == Fact && path.substr(0, path.rfind('/')) == directory &&
               !Before.contains(Entry.first);
    });
}

// A link that was renamed stays one.
bool Promises::IsRightAt(const SourceEntry& Source, const std::string& Fact) const {
    return Fact == Source.CopiedFact() || (Case.bMove && Fact == Source.OwnFact);
}

// A copy leaves everything alone but its destination, and a move everything but that and what it
// was given.
void Promises::CheckOutside() {
    for (const auto& [name, fact] : Before) {
        const std::string path = FactPath(name);
        const bool bSource =
            Case.bMove &&
            std::any_of(Case.Items.begin(), Case.Items.end(), [&path](const CaseItem& Item) {
                return path == Item.Source || IsBelow(path, Item.Source);
            });
        const std::string after = After(path);
        if (!IsBelow(path, Destination) && after != fact && !(bSource && after.empty())) {
            Break("what was not named has changed", path);
        }
    }
    for (const auto& [name, fact] : Ended->Tree) {
        if (!IsBelow(FactPath(name), Destination) && !Before.contains(name)) {
            Break("something new stands outside of the destination", FactPath(name));
        }
    }
}

// What had a name at the destination is still there, unless the choice lets its source replace it.
void Promises::CheckDestination() {
    for (const auto& [name, fact] : Before) {
        const std::string path = FactPath(name);
        const std::string after = After(path);
        if (!IsBelow(path, Destination) || after == fact) {
            continue;
        }
        const auto source = Sources.find(path.substr(Destination.size() + 1));
        const bool bReplaced = source != Sources.end() && after == source->second.CopiedFact() &&
                               MayReplace(source->second);
        if (!bReplaced) {
            Break("what the choice leaves alone at the destination has changed", path);
        }
    }
    for (const auto& [name, fact] : Ended->Tree) {
        if (IsBelow(FactPath(name), Destination) && !Before.contains(name)) {
            CheckNewEntry(FactPath(name).substr(Destination.size() + 1), fact);
        }
    }
}

// A new name holds its source, or another one of the same directory that keeps both.
void Promises::CheckNewEntry(const std::string& Name, const std::string& Fact) {
    const auto source = Sources.find(Name);
    if (source != Sources.end()) {
        if (!IsRightAt(source->second, Fact)) {
            Break("a copy is not like its source", Destination + "/" + Name);
        }
        return;
    }
    const std::size_t slash = Name.rfind('/');
    const std::string directory = slash == std::string::npos ? "" : Name.substr(0, slash + 1);
    const bool bKept =
        FileChoice() == "keep-both" &&
        std::any_of(Sources.begin(), Sources.end(), [&](const auto& Source) {
            const std::string& path = Source.first;
            return path.substr(0, path.rfind('/') == std::string::npos ? 0 : path.rfind('/') + 1) ==
                       directory &&
                   Source.second.Taken != nullptr && Source.second.CopiedFact() == Fact;
        });
    if (!bKept) {
        Break("something stands at the destination that has no source", Destination + "/" + Name);
    }
}

// What a link leads to is no source of its own: it stands outside, or may be replaced.
void Promises::CheckContentsOfSources() {
    for (const auto& [name, source] : Sources) {
        const bool bNoLinkOnTheWay = Before.contains(FactName(source.Path));
        if (bNoLinkOnTheWay && source.OwnFact.starts_with("file ") &&
            !IsSomewhere(source.OwnFact)) {
            Break("what a source held is nowhere", source.Path);
        }
    }
}

// After a success everything is there that no choice leaves out.
void Promises::CheckCompleteness() {
    for (const auto& [name, source] : Sources) {
        const std::string path = Destination + "/" + name;
        if (MayBeSkipped(name)) {
            const bool bThere = source.bLinkAtDestination || After(path) == source.Fact;
            if (!bThere && Before.contains(FactName(source.Path)) && After(source.Path).empty()) {
                Break("a skipped source is gone", source.Path);
            }
            continue;
        }
        const std::string after = After(path);
        const bool bKeptBoth = FileChoice() == "keep-both" && source.Taken != nullptr &&
                               IsBesideAs(path, source.CopiedFact());
        const bool bBelowRenamedLink = Case.bMove && after.empty() && After(source.Path).empty();
        if (!IsRightAt(source, after) && !bKeptBoth && !bBelowRenamedLink) {
            Break("the status is 0 and this is missing", path);
        }
        const bool bFile = source.Node != nullptr && source.Node->Kind == EntryKind::File;
        if (Case.bMove && bFile && After(source.Path) == source.Fact) {
            Break("the status is 0 and the source is still there", source.Path);
        }
    }
}

void Promises::CheckStatus() {
    const int status = Ended->ExitStatus;
    if (status != EXIT_SUCCESS && status != EXIT_FAILURE) {
        Break("the exit status is neither 0 nor 1", std::to_string(status));
    }
    if (status == EXIT_FAILURE && Ended->Said.empty()) {
        Break("the program has failed", "and says nothing");
    }
    const bool bMustFail = MustTouchNothing();
    if (bMustFail && (status != EXIT_FAILURE || Ended->Tree != Before)) {
        Break("a taken name that is to fail has not kept everything as it was",
              std::to_string(status));
    }
    if (IsPlain() && !bMustFail && status != EXIT_SUCCESS) {
        Break("there is no reason for the exit status", std::to_string(status));
    }
    if (status == EXIT_SUCCESS) {
        CheckCompleteness();
    }
}

std::string Promises::BrokenBy(const ProgramEnd& End) {
    Ended = &End;
    CheckOutside();
    CheckDestination();
    CheckContentsOfSources();
    CheckStatus();
    return Broken.empty() ? "" : Broken + "    the program said: " + Shown(End.Said) + "\n";
}
