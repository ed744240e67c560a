// What the program promises about a run that nobody watches, whatever is in its way.

#pragma once

#include "facts.h"
#include "library_model.h"
#include "random_case.h"

#include <map>
#include <string>

// The name of a tree fact and the path that it is about.
std::string FactName(const std::string& Path);
std::string FactPath(const std::string& Name);

// What a run of the program came to.
struct ProgramEnd {
    int ExitStatus = 0;
    std::string Said;
    Facts Tree;
};

class Promises {
public:
    // Files is the tree before the run. Throws Undetermined when nothing is promised: without a
    // source or the destination, of sources without an end, of links to what is moved away.
    Promises(const RandomCase& CaseToRun, ModelFiles& Files);

    // One line for each promise that was broken, at most a few; empty when none was.
    std::string BrokenBy(const ProgramEnd& End);

private:
    // A source or what is below one, by its path below the destination.
    struct SourceEntry {
        std::string Path;
        // With the link followed, and the link's own.
        std::string Fact;
        std::string OwnFact;
        const ModelNode* Node = nullptr;
        // What has its name at the destination, the link followed; or nothing.
        const ModelNode* Taken = nullptr;
        bool bLinkAtDestination = false;

        // A device, a pipe or a socket, or a link to one, which is copied as itself.
        bool IsSpecial() const {
            return Node != nullptr && Node->Kind != EntryKind::File &&
                   Node->Kind != EntryKind::Directory;
        }
        // What a copy of it is.
        const std::string& CopiedFact() const { return IsSpecial() ? OwnFact : Fact; }
    };

    void AddSources(const std::string& Path, const std::string& Name, int Depth);
    std::string FileChoice() const;
    std::string DirectoryChoice() const;
    bool Replaces(const SourceEntry& Source) const;
    bool IsPlain() const;
    bool MustTouchNothing() const;
    bool MayReplace(const SourceEntry& Source) const;
    bool MayBeSkipped(const std::string& Name) const;

    bool IsRightAt(const SourceEntry& Source, const std::string& Fact) const;

    void CheckOutside();
    void CheckDestination();
    void CheckNewEntry(const std::string& Name, const std::string& Fact);
    void CheckContentsOfSources();
    void CheckCompleteness();
    void CheckStatus();

    void Break(const std::string& Promise, const std::string& Path);
    // Empty when nothing is there afterwards.
    std::string After(const std::string& Path) const;
    bool IsSomewhere(const std::string& Fact) const;
    bool IsBesideAs(const std::string& Path, const std::string& Fact) const;

    const RandomCase& Case;
    ModelFiles& FilesBefore;
    LibraryModel Library;
    const Facts Before;
    std::string Destination;
    std::map<std::string, SourceEntry> Sources;
    const ProgramEnd* Ended = nullptr;
    std::string Broken;
    int BrokenCount = 0;
};
