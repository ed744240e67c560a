#include "late_entries.h"

#include <dirent.h>
#include <fcntl.h>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace {

using Kind = RecordedEntry::Kind;

// Does nothing where the folder cannot be read.
void ForEachName(int Folder, const std::function<void(const char*)>& Visit) {
    const int opened = ::openat(Folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    DIR* const listing = opened < 0 ? nullptr : ::fdopendir(opened);
    if (listing == nullptr) {
        OwnedDescriptor unused(opened);
        return;
    }
    const std::unique_ptr<DIR, int (*)(DIR*)> owner(listing, ::closedir);
    while (const dirent* const entry = ::readdir(listing)) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") {
            Visit(entry->d_name);
        }
    }
}

} // namespace

void LateEntries::OpenUpAll(const std::atomic<bool>& bCancel) {
    NoteRenamed();
    StatusRecord::Reader reader(Task.Record);
    while (const std::optional<RecordedEntry> entry = bCancel ? std::nullopt : reader.Next()) {
        switch (entry->What) {
        case Kind::File:
            Know(entry->Name);
            break;
        case Kind::Directory:
            Know(entry->Name);
            Enter(*entry);
            break;
        case Kind::End:
            Leave();
            break;
        }
    }
}

// They may be anywhere, and have got their modes from their sources.
void LateEntries::NoteRenamed() {
    for (const auto& [path, newName] : Task.Names.Renamed()) {
        struct stat status {};
        if (::lstat(newName.c_str(), &status) == 0) {
            Renamed.insert(IdentityOf(status));
        }
    }
}

void LateEntries::Know(std::string_view Name) {
    if (!Levels.empty()) {
        Levels.back().Names.insert(HashOf(Name));
    }
}

void LateEntries::Enter(const RecordedEntry& Entry) {
    const bool bAbovePassedOver = !Levels.empty() && Levels.back().bPassedOver;
    const std::size_t parentPathBytes = Path.size();
    Path += Path.empty() ? "" : "/";
    Path += Entry.Name;
    const bool bMade = !Entry.There || !S_ISDIR(Entry.There->Mode);
    const bool bPassedOver =
        bAbovePassedOver || Task.Names.WasSkipped(Path) || !OpenFolder(Entry, bMade);
    Levels.push_back(
        {.ParentPathBytes = parentPathBytes, .bMade = bMade, .bPassedOver = bPassedOver});
}

bool LateEntries::OpenFolder(const RecordedEntry& Entry, bool bMade) {
    const std::size_t leaf = Path.rfind('/') + 1;
    if (Levels.empty() && !Folders.Start(Path.substr(0, leaf))) {
        return false;
    }
    const char* const name = Path.c_str() + leaf;
    return !bMade && Entry.There->bLink ? Folders.EnterLink(name, O_PATH, Entry.There->Identity)
                                        : Folders.Enter(name, O_PATH);
}

void LateEntries::Leave() {
    const Level level = std::move(Levels.back());
    Levels.pop_back();
    if (!level.bPassedOver) {
        const int folder = Folders.Current();
        ForEachName(folder, [&](const char* Name) {
            if (!level.Names.contains(HashOf(Name))) {
                OpenUpIfLate(folder, Name, level.bMade);
            }
        });
        Folders.Leave();
    }
    Path.resize(level.ParentPathBytes);
}

void LateEntries::OpenUpIfLate(int Folder, const char* Name, bool bFolderMade) const {
    const std::optional<PrivateEntry> entry = OpenPrivateEntry(Folder, Name);
    if (!entry || !IsLate(entry->Status, bFolderMade)) {
        return;
    }
    if (entry->IsDirectory()) {
        ForEachName(entry->Opened.Get(), [&](const char* Inner) {
            OpenUpIfLate(entry->Opened.Get(), Inner, bFolderMade);
        });
    }
    OpenUp(*entry, Task.Umask);
}

// Not all file systems tell when an entry was made. The time of its last change says nothing about
// one that may have been there before.
bool LateEntries::IsLate(const struct statx& Status, bool bFolderMade) const {
    if (Renamed.contains(IdentityOf(Status))) {
        return false;
    }
    const bool bTold = (Status.stx_mask & STATX_BTIME) != 0;
    const statx_timestamp& since = bTold ? Status.stx_btime : Status.stx_ctime;
    const timespec& started = Task.JobStarted;
    const bool bSince = since.tv_sec > started.tv_sec ||
                        (since.tv_sec == started.tv_sec && since.tv_nsec >= started.tv_nsec);
    return bSince && (bTold || bFolderMade);
}
