#include "late_entries.h"

#include "private_entry.h"
#include "tarvanetransfer.h"

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

std::uint64_t LateEntries::FinishAll(const std::atomic<bool>& bCancel) {
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
    return StayPrivate;
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
    const bool bAbovePassedOver =
        Levels.empty() ? !EnterItem(Entry.Name) : Levels.back().bPassedOver;
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

// The record has the items in their order, but not all of them.
bool LateEntries::EnterItem(std::string_view Destination) {
    const auto& items = Task.Plan->Items;
    while (Item < items.size() && items[Item].DestinationPath.native() != Destination) {
        ++Item;
    }
    return Item < items.size();
}

void LateEntries::Leave() {
    const Level level = std::move(Levels.back());
    Levels.pop_back();
    if (!level.bPassedOver) {
        const int folder = Folders.Current();
        const TarvaneTransferItemPlan& item = Task.Plan->Items[Item];
        const std::string source =
            item.SourcePath.native() + Path.substr(item.DestinationPath.native().size()) + '/';
        ForEachName(folder, [&](const char* Name) {
            if (!level.Names.contains(HashOf(Name))) {
                FinishIfLate(folder, Name, source + Name, level.bMade);
            }
        });
        Folders.Leave();
    }
    Path.resize(level.ParentPathBytes);
}

void LateEntries::FinishIfLate(int Folder, const char* Name, const std::string& Source,
                               bool bFolderMade) {
    const std::optional<PrivateEntry> entry = OpenPrivateEntry(Folder, Name);
    if (!entry || !IsLate(entry->Status, bFolderMade)) {
        return;
    }
    const int opened = entry->Opened.Get();
    struct stat source {};
    struct stat status {};
    if (::stat(Source.c_str(), &source) != 0 || ::fstat(opened, &status) != 0 ||
        (source.st_mode & S_IFMT) != (status.st_mode & S_IFMT)) {
        ++StayPrivate;
        return;
    }
    if (entry->IsDirectory()) {
        ForEachName(opened, [&](const char* Inner) {
            FinishIfLate(opened, Inner, Source + '/' + Inner, bFolderMade);
        });
    }
    if (Changes.Carry({.Folder = opened}, status, RecordedStatusOf(source))) {
        ++StayPrivate;
    }
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
