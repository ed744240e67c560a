// Walks through the sources of a plan as the engine's copy does: links to directories are followed.

#pragma once

#include "access_rights.h"
#include "directory_reader.h"
#include "file_identity.h"
#include "preflight_result.h"

#include <cstdint>
#include <filesystem>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

// What is going to happen to one item of the plan.
struct WalkRules {
    // It is only renamed: nothing is copied, followed or removed.
    bool bRenamed = false;
    // Its entries are removed when they have been copied.
    bool bRemoved = false;
    // Of the destination's file system.
    std::uint64_t MaxFileBytes = std::numeric_limits<std::uint64_t>::max();
    std::uint64_t BlockBytes = 1;
    std::uint64_t DestinationDevice = 0;
    // The destination, if it exists.
    std::optional<FileIdentity> Destination;
    // The directory that is written to and those above it.
    std::vector<FileIdentity> DestinationLineage;
};

class SourceWalk {
public:
    // Adds to the findings and totals of Result, which must outlive the walk.
    SourceWalk(PreflightResult& ResultToFill, PreflightControl& ControlToUse);

    // Returns the bytes that the copy of the item takes up in blocks of the destination.
    std::uint64_t Walk(const std::filesystem::path& Source, const WalkRules& ItemRules);

    // Whether a link that is followed on a move leads out of everything that has been walked.
    bool RemovesUnselected() const;

private:
    struct DirectoryStatus {
        FileIdentity Identity;
        // Whether entries can be removed from it; only looked at when they are going to be.
        bool bWritable = true;
    };
    struct Subdirectory {
        std::string Name;
        // Known when it had to be queried to be recognised as a directory.
        std::optional<DirectoryStatus> Status;
        bool bLink = false;
    };
    // A directory and what is found in it.
    struct Listing {
        const std::string& Path;
        int Descriptor = -1;
        // Reached without following a link.
        bool bSelected = false;
        std::uint64_t Entries = 0;
        std::vector<Subdirectory> Subdirectories = {};
    };
    struct CopyTotals {
        std::uint64_t Entries = 0;
        std::uint64_t Bytes = 0;
        std::uint64_t BlockBytes = 0;
    };

    void WalkDirectory(const std::string& Path, const std::optional<DirectoryStatus>& KnownStatus,
                       bool bSelected);
    bool ListDirectory(Listing& InOutListing, const std::optional<DirectoryStatus>& KnownStatus);
    void WalkSubdirectories(const Listing& Directory);
    void FollowLink(const std::string& Path, const DirectoryStatus& Target);
    void LookAtEntry(Listing& InOutListing, const char* Name, unsigned char Type);
    void QueryEntry(Listing& InOutListing, const char* Name, bool bLink);
    void LookAtFile(const Listing& Directory, const char* Name, const struct stat& Status,
                    bool bLink);

    DirectoryStatus StatusOfOpen(const Listing& Directory) const;
    DirectoryStatus StatusOf(int Parent, const char* Name, const struct stat& Status) const;
    bool IsStopped();
    void AddSpecial(const std::string& Path);
    void AddUninspectable(const std::string& Path, int Error);
    void AddUnopenable(const std::string& Path, int Error);

    PreflightResult& Result;
    PreflightControl& Control;
    const AccessRights Rights;
    WalkRules Rules;
    DirectoryReader::Buffer ListingBuffer;
    CopyTotals Copied;
    // The directories from the item to where the walk is.
    std::vector<FileIdentity> Chain;
    // What each followed link's target held, so that it is walked only once.
    std::map<FileIdentity, CopyTotals> Followed;
    // Only of moves: where links lead to, and what is selected in its own place.
    std::set<FileIdentity> RemovedTargets;
    std::set<FileIdentity> SelectedDirectories;
};
