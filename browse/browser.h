// One pane's way through directories and discs: the list, what is being read for it, and what
// changes under it.

#pragma once

#include "browse_list.h"
#include "folder_watch.h"
#include "listing_reader.h"
#include "owned_descriptor.h"

#include <filesystem>
#include <optional>
#include <string>

// Threads: one, the interface's. It never waits.
class Browser {
public:
    // Begins to read Start, an absolute path.
    explicit Browser(const std::filesystem::path& Start);

    BrowseList& List() { return Entries; }
    const BrowseList& List() const { return Entries; }

    // What is in the list stays there until the new place has been read. Where that fails the list
    // stays as well, and Message tells why. In the same place the cursor goes to CursorOn too.
    void GoTo(const std::filesystem::path& Place, const std::string& CursorOn = {});
    // To the place above, the cursor on the one that was left.
    void GoUp();
    // Into the directory or disc under the cursor, or up on the row that leads there. False on
    // anything else.
    bool Enter();
    // As soon as what is being read has been read; another place that is read then makes it
    // needless.
    void ReadAgain();
    // Leaves what is being read: the list stays.
    void StopReading();

    // Takes what has been read and begins to read again what has changed. It rests between two
    // readings, so that many changes in a short time are read together. Where the directory has
    // gone, the nearest one above it that is there takes its place.
    void Attend();

    // The place that is being read; nothing when none is.
    std::optional<std::filesystem::path> Reading() const;
    // What went wrong last, as a sentence like that of Listing; empty when nothing did since
    // somebody wanted something.
    const std::string& Message() const { return LastMessage; }

    // For poll, to be asked for before each one; -1, which poll ignores, for none.
    int ReaderFd() const;
    // Also that of the clock that wakes it from its rest, during which changes wait.
    int WatchFd() const;

private:
    void Begin(const std::filesystem::path& Place);
    void BeginAgain();
    // And not, because somebody wants to go there, another place.
    bool IsReadingForList() const;
    void Finish(Listing Read);
    void FinishLookAbove(Listing Above);
    void Accept(Listing Read);
    // Reads what is above it, to see whether that is there.
    void LookAbove(const std::filesystem::path& MissingPlace);
    void BeginRest();
    bool IsRestOver();

    BrowseList Entries;
    FolderWatch Watch;
    std::optional<ListingReader> Reader;
    // For another place than that of the list, which stays watched until the other one is read.
    std::optional<FolderWatch> NextWatch;
    std::string CursorWanted;
    std::string LastMessage;
    // The directory that is looked for in the one above it; empty when none is.
    std::filesystem::path Missing;
    bool bReadAgain = false;
    // The place of the list is there but could not be read.
    bool bUnreadable = false;
    OwnedDescriptor RestClock;
    bool bResting = false;
};
