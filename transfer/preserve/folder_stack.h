// The folders on the way to an entry, opened one in the other, so that no name of theirs can lead
// elsewhere meanwhile.

#pragma once

#include "file_identity.h"
#include "owned_descriptor.h"

#include <string>
#include <vector>

#include <sys/stat.h>

// Keeps only so many of them open, whatever their number.
class FolderStack {
public:
    struct Folder {
        // None while it is closed, and when the way back to it is lost.
        OwnedDescriptor Opened;
        // When it was entered.
        struct stat Status {};
        // Of its opening.
        int Flags = 0;
        // Its ".." leads to another folder than the one below it in the stack.
        bool bThroughLink = false;
    };

    // The first folder; links in Path are followed. Errors: false with errno.
    bool Start(const std::string& Path);

    // Goes on to an entry of the last one, opened with Flags and through no link. Errors: false
    // with errno, without a step.
    bool Enter(const char* Name, int Flags);
    // The same, wherever Name leads, if that is the directory Wanted; ENOENT otherwise.
    bool EnterLink(const char* Name, int Flags, const FileIdentity& Wanted);

    // Goes back, and opens the folder below again. Gives away the one that it leaves.
    Folder Leave();

    // Of the last one; -1 when the way back to it is lost.
    int Current() const { return Folders.back().Opened.Get(); }

private:
    void Push(Folder Entered);

    std::string StartPath;
    std::vector<Folder> Folders;
};
