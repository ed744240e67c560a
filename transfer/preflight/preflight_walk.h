// Walks through the sources of a plan as the engine's copy does: links to directories are followed,
// and where a directory is there already, both sides are looked at.

#pragma once

#include "access_rights.h"
#include "directory_reader.h"
#include "file_look.h"
#include "followed_links.h"
#include "overtaken_links.h"

#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <vector>

class SourceWalk {
public:
    struct Parts {
        PreflightResult& Result;
        PreflightControl& Control;
        KnownDestinations& Destinations;
        TakenNames& Names;
        SpaceDemand& Demand;
        WalkRecord& Record;
    };

    // Adds to the parts, which must outlive the walk, as must the plan.
    SourceWalk(const Parts& PartsToFill, const TarvaneTransferPlan& Plan, PreflightScope Wanted);

    void Walk(const std::filesystem::path& Source, const std::filesystem::path& Destination);

    // Whether a link that is followed on a move leads out of everything that has been walked.
    bool RemovesUnselected() const { return Links.RemovesUnselected(); }

private:
    void CheckRemoval(const std::filesystem::path& Source);
    bool IsWorthALook(const WalkListing& Directory) const;
    bool IsDestination(const WalkListing& Directory, const FileIdentity& Identity);

    bool NeedsStatus(const WalkListing& Directory, const dirent64& Entry,
                     const DestinationEntry& There) const;
    void LookAtEntry(WalkListing& InOutListing, const dirent64& Entry);
    void QueryEntry(WalkListing& InOutListing, const char* Name, bool bLink,
                    const DestinationEntry& There);
    void WalkSubdirectories(WalkListing& Directory);
    void WalkSubdirectory(WalkListing& Directory, const Subdirectory& Entered,
                          const DestinationEntry& There);
    WalkListing Enter(WalkListing& Directory, const Subdirectory& Entered,
                      const DestinationEntry& There);
    void ExtendDestinationChain(const DestinationPlace& Place);
    void FollowLink(WalkListing& Target, const DirectoryStatus& Status);
    void WalkForRecord(WalkListing& Target, const DirectoryStatus& Status);
    void WalkDirectory(WalkListing& Directory, const std::optional<DirectoryStatus>& KnownStatus);
    std::optional<DirectoryStatus> ListDirectory(WalkListing& InOutListing,
                                                 const std::optional<DirectoryStatus>& KnownStatus);

    static bool IsLinkIn(int Parent, const char* Name);
    std::optional<DirectoryStatus> StatusOfOpen(const WalkListing& Directory) const;
    DirectoryStatus StatusOf(int Parent, const char* Name, const struct stat& Status) const;
    void AddUninspectable(const std::string& Path, int Error);
    void AddUnseenDestination(const WalkListing& Directory, const char* Name, int Error);
    void AddUnopenable(const WalkListing& Directory, int Error);

    PreflightResult& Result;
    PreflightControl& Control;
    KnownDestinations& Destinations;
    TakenNames& Names;
    const bool bMove;
    const PreflightScope Scope;
    WalkRecord& Record;
    const AccessRights Rights;
    FileLook Files;
    FollowedLinks Links;
    OvertakenLinks Overtaken;
    DirectoryReader::Buffer ListingBuffer;
    // The directories from the item to where the walk is, and from the root to where it writes.
    std::vector<FileIdentity> Chain;
    std::vector<FileIdentity> DestinationChain;
    KnownDirectories<SourceDirectoryFacts, SourceDirectoryFactsOf> SourceDirectories;
    std::set<std::filesystem::path> UnwritableParents;
};
