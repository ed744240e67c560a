#include "finish_walk.h"

#include "private_mode.h"
#include "quoted.h"

#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <utility>

namespace {

using Kind = RecordedEntry::Kind;

constexpr std::size_t kNamedChanges = 10;

// Or of another kind. A folder to which the way back was lost has no descriptor.
bool IsGone(int Error) {
    return Error == ENOENT || Error == ENOTDIR || Error == ELOOP || Error == EBADF;
}

// Of full paths.
std::string ParentOf(const std::string& Path) {
    return Path.substr(0, Path.rfind('/') + 1);
}

const char* LeafOf(const std::string& Path) {
    return Path.c_str() + Path.rfind('/') + 1;
}

} // namespace

FinishWalk::FinishWalk(const FinishTask& TaskToDo, FinishResult& OutResult,
                       std::atomic<std::uint64_t>& OutDone)
    : Task(TaskToDo), Result(OutResult), Done(OutDone), Changes(TaskToDo.Preserve) {
    for (const MadePrivate& each : Task.Privates) {
        Privates.emplace(each.Path, &each);
    }
}

void FinishWalk::Run(const std::atomic<bool>& bCancel) {
    StatusRecord::Reader reader(Task.Record);
    while (const std::optional<RecordedEntry> entry = reader.Next()) {
        if (bCancel) {
            Result.bCanceled = true;
            break;
        }
        switch (entry->What) {
        case Kind::File:
            FinishFile(*entry);
            ++Done;
            break;
        case Kind::Directory:
            EnterDirectory(*entry);
            break;
        case Kind::End:
            LeaveDirectory();
            ++Done;
            break;
        }
        Result.bModesLost = Changes.AreModesLost();
        Result.bTimesLost = Changes.AreTimesLost();
        Result.bOwnersLost = Changes.AreOwnersLost();
    }
    if (!Result.bCanceled) {
        GiveBackModesLeft();
    }
}

// Of the rest nothing is recorded: their sources came late.
void FinishWalk::GiveBackModesLeft() {
    for (const auto& [path, old] : Privates) {
        const EntryPlace place{.Folder = AT_FDCWD, .Name = old->Path.c_str()};
        NoteGivenBack(*old, GiveBackModeBehind(Task, *old, place, Changes));
    }
}

void FinishWalk::EnterDirectory(const RecordedEntry& Entry) {
    const bool bPassedOver = IsPassedOver();
    const std::size_t parentPathBytes = AppendToPath(Entry.Name);
    // What stays incomplete is completed by a second run, which must be able to work in it.
    RecordedStatus source = Entry.Source;
    source.Mode |= Task.bWhole ? 0 : S_IRWXU;
    Levels.push_back({.Source = source,
                      .ParentPathBytes = parentPathBytes,
                      .bMade = !Entry.There || !S_ISDIR(Entry.There->Mode),
                      .bPassedOver = true});
    if (bPassedOver || Task.Names.WasSkipped(Path)) {
        return;
    }
    Levels.back().bPassedOver = !OpenDirectory(Entry);
    if (Levels.back().bPassedOver) {
        NoteUnreachable(Path);
    }
}

// One that was there before is only passed through. Its number is asked for where a link leads to
// it only: some file systems give a directory a new one while memory is short.
bool FinishWalk::OpenDirectory(const RecordedEntry& Entry) {
    if (Levels.size() == 1 && !Folders.Start(ParentOf(Path))) {
        return false;
    }
    if (Levels.back().bMade) {
        return Folders.Enter(LeafOf(Path), O_RDONLY);
    }
    return Entry.There->bLink ? Folders.EnterLink(LeafOf(Path), O_PATH, Entry.There->Identity)
                              : Folders.Enter(LeafOf(Path), O_PATH);
}

void FinishWalk::LeaveDirectory() {
    const Level level = std::exchange(Levels.back(), {});
    Levels.pop_back();
    if (!level.bPassedOver) {
        const FolderStack::Folder left = Folders.Leave();
        if (left.Opened.Get() < 0) {
            ++Result.LeftAlone;
        } else {
            ++Copies;
            if (level.bMade) {
                NoteEnd(Path,
                        Changes.Carry({.Folder = left.Opened.Get()}, left.Status, level.Source));
            }
        }
    }
    Path.resize(level.ParentPathBytes);
}

void FinishWalk::FinishFile(const RecordedEntry& Entry) {
    if (IsPassedOver()) {
        return;
    }
    const std::size_t parentPathBytes = AppendToPath(Entry.Name);
    if (const std::string* const newName = Task.Names.NewNameOf(Path)) {
        FinishRenamed(*newName, Entry);
    } else if (!Task.Names.WasSkipped(Path)) {
        if (Levels.empty() && !Folders.Start(ParentOf(Path))) {
            NoteUnreachable(Path);
        } else {
            FinishAt({.Folder = Folders.Current(), .Name = LeafOf(Path)}, Path, Entry);
        }
    }
    Path.resize(parentPathBytes);
}

// It may be anywhere, and nothing stood there.
void FinishWalk::FinishRenamed(const std::string& NewName, const RecordedEntry& Entry) {
    const OwnedDescriptor folder(
        ::open(ParentOf(NewName).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (folder.Get() < 0) {
        NoteUnreachable(NewName);
        return;
    }
    RecordedEntry renamed = Entry;
    renamed.There.reset();
    FinishAt({.Folder = folder.Get(), .Name = LeafOf(NewName)}, NewName, renamed);
}

// What has another name too may be somebody else's: a copy has one.
void FinishWalk::FinishAt(const EntryPlace& Place, const std::string& Named,
                          const RecordedEntry& Entry) {
    struct stat status {};
    const auto wasPrivate = Privates.extract(Named);
    const MadePrivate* const old = wasPrivate ? wasPrivate.mapped() : nullptr;
    if (::fstatat(Place.Folder, Place.Name, &status, AT_SYMLINK_NOFOLLOW) != 0) {
        NoteUnreachable(Named);
    } else if (old != nullptr && KeepsItsMode(Task, *old, status)) {
        NoteGivenBack(*old, GiveBackMode(Task, *old, Place, status, Changes));
    } else if (old != nullptr || IsOurs(Named, Entry, status)) {
        if ((status.st_mode & S_IFMT) != (Entry.Source.Mode & S_IFMT) || status.st_nlink > 1) {
            ++Result.LeftAlone;
            return;
        }
        // One that was found equal was not copied.
        Copies += Task.Names.WasCompared(Named) ? 0U : 1U;
        NoteLength(Named, Entry.Source.SizeBytes, status);
        NoteEnd(Named, Changes.Carry(Place, status, Entry.Source));
    }
}

// Made or replaced by the job, or found equal.
bool FinishWalk::IsOurs(const std::string& Named, const RecordedEntry& Entry,
                        const struct stat& Status) const {
    if (!Entry.There) {
        return true;
    }
    if (Entry.There->bLink) {
        return !S_ISLNK(Status.st_mode);
    }
    return !AreSameTimes(Status.st_mtim, Entry.There->Modified) || Task.Names.WasCompared(Named);
}

// Returns how long the path was.
std::size_t FinishWalk::AppendToPath(std::string_view Name) {
    const std::size_t before = Path.size();
    if (before > 0) {
        Path += '/';
    }
    Path += Name;
    return before;
}

// Errno says why.
void FinishWalk::NoteUnreachable(const std::string& Named) {
    const int error = errno;
    if (!IsGone(error)) {
        NoteFailure(Named, {.What = "look at", .Error = error});
    } else if (Task.bWhole) {
        ++Result.LeftAlone;
    }
}

void FinishWalk::NoteLength(const std::string& Named, std::uint64_t Expected,
                            const struct stat& Status) {
    if (!S_ISREG(Status.st_mode) || static_cast<std::uint64_t>(Status.st_size) == Expected) {
        return;
    }
    ++Result.ChangedLength;
    if (Result.FirstChanged.size() < kNamedChanges) {
        Result.FirstChanged.push_back(Named);
    }
}

void FinishWalk::NoteEnd(const std::string& Named, const std::optional<ChangeFailure>& Failure) {
    if (Failure) {
        NoteFailure(Named, *Failure);
    } else {
        ++Result.Finished;
    }
}

// In no number but that of the failures: nothing was copied there, or is known of it.
void FinishWalk::NoteGivenBack(const MadePrivate& Old,
                               const std::optional<ChangeFailure>& Failure) {
    if (Failure) {
        NoteFailure(Old.Path, *Failure);
    }
}

void FinishWalk::NoteFailure(const std::string& Named, const ChangeFailure& Failure) {
    ++Result.Failures;
    if (Result.FirstFailure.empty()) {
        Result.FirstFailure = std::string("cannot ") + Failure.What + " " + Quoted(Named) + ": " +
                              std::generic_category().message(Failure.Error);
    }
}
