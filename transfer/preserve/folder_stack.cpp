#include "folder_stack.h"

#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <utility>

namespace {

constexpr std::size_t kOpenFolders = 32;

bool OpenFolder(FolderStack::Folder& Out, int Parent, const char* Name, int Flags) {
    Out.Opened = OwnedDescriptor(::openat(Parent, Name, Flags | O_DIRECTORY | O_CLOEXEC));
    Out.Flags = Flags;
    return Out.Opened.Get() >= 0 && ::fstat(Out.Opened.Get(), &Out.Status) == 0;
}

} // namespace

// Items often have one parent.
bool FolderStack::Start(const std::string& Path) {
    if (!Folders.empty() && StartPath == Path) {
        return true;
    }
    Folders.clear();
    Folder first;
    if (!OpenFolder(first, AT_FDCWD, Path.c_str(), O_PATH)) {
        return false;
    }
    StartPath = Path;
    Folders.push_back(std::move(first));
    return true;
}

bool FolderStack::Enter(const char* Name, int Flags) {
    Folder entered;
    if (!OpenFolder(entered, Current(), Name, Flags | O_NOFOLLOW)) {
        return false;
    }
    Push(std::move(entered));
    return true;
}

bool FolderStack::EnterLink(const char* Name, int Flags, const FileIdentity& Wanted) {
    Folder entered;
    if (!OpenFolder(entered, Current(), Name, Flags)) {
        return false;
    }
    if (IdentityOf(entered.Status) != Wanted) {
        errno = ENOENT;
        return false;
    }
    entered.bThroughLink = true;
    Push(std::move(entered));
    return true;
}

// The first one stays open, and so do those that ".." does not lead back to.
void FolderStack::Push(Folder Entered) {
    Folders.push_back(std::move(Entered));
    if (Folders.size() > kOpenFolders + 1) {
        const std::size_t far = Folders.size() - 1 - kOpenFolders;
        if (!Folders[far + 1].bThroughLink) {
            Folders[far].Opened = OwnedDescriptor();
        }
    }
}

FolderStack::Folder FolderStack::Leave() {
    Folder left = std::move(Folders.back());
    Folders.pop_back();
    Folder& below = Folders.back();
    if (below.Opened.Get() < 0 && left.Opened.Get() >= 0) {
        Folder back;
        if (OpenFolder(back, left.Opened.Get(), "..", below.Flags) &&
            IdentityOf(back.Status) == IdentityOf(below.Status)) {
            below.Opened = std::move(back.Opened);
        }
    }
    return left;
}
