#include "entry_deletion.h"

#include "directory_entries.h"
#include "quoted.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr int kOnlyToGoOn = O_PATH | O_DIRECTORY | O_CLOEXEC;

int ReadIdentity(int Directory, FileIdentity& Out) {
    struct stat status {};
    if (fstat(Directory, &status) != 0) {
        return errno;
    }
    Out = IdentityOf(status);
    return 0;
}

int ReadNames(int Directory, std::vector<std::string>& Out) {
    return ForEachEntry(Directory, [&Out](const dirent& Entry) { Out.emplace_back(Entry.d_name); });
}

// What leads to itself or upwards is no entry of its directory.
bool NamesAnEntry(const std::filesystem::path& Name) {
    return !Name.empty() && Name != "." && Name != "..";
}

} // namespace

void EntryDeletion::Delete(const std::filesystem::path& Path) {
    const int error = Begin(Path);
    if (error != 0 && error != ENOENT) {
        Failures.Add({"cannot delete " + Quoted(Path.native()), error});
    }
    if (error != 0) {
        return;
    }
    while (Levels.size() > 1 || !Levels.back().Rest.empty()) {
        if (!Levels.back().Rest.empty()) {
            DeleteNext();
        } else if (!Leave()) {
            return;
        }
    }
}

int EntryDeletion::Begin(const std::filesystem::path& Path) {
    if (!NamesAnEntry(Path.filename())) {
        return EINVAL;
    }
    Current = OwnedDescriptor(open(Path.parent_path().c_str(), kOnlyToGoOn));
    if (Current.Get() < 0) {
        return errno;
    }
    Levels.assign(1, {.Name = Path.parent_path(), .Rest = {Path.filename()}});
    return ReadIdentity(Current.Get(), Levels.back().Identity);
}

void EntryDeletion::DeleteNext() {
    const std::string name = std::move(Levels.back().Rest.back());
    Levels.back().Rest.pop_back();
    const int isNoDirectory = 0;
    int error = Remove(name, isNoDirectory);
    if (error == EISDIR) {
        error = Remove(name, AT_REMOVEDIR);
    }
    if (error == ENOTEMPTY || error == EEXIST) {
        error = Enter(name);
    }
    if (error != 0) {
        Fail(name, error);
    }
}

int EntryDeletion::Remove(const std::string& Name, int Flags) {
    if (unlinkat(Current.Get(), Name.c_str(), Flags) == 0) {
        ++Deleted;
        return 0;
    }
    return errno == ENOENT ? 0 : errno;
}

int EntryDeletion::Enter(const std::string& Name) {
    constexpr int kToRead = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    OwnedDescriptor directory(openat(Current.Get(), Name.c_str(), kToRead));
    if (directory.Get() < 0) {
        return errno;
    }
    // Where this is not allowed there would be no way back, and nothing can be deleted either.
    const OwnedDescriptor wayBack(openat(directory.Get(), "..", kOnlyToGoOn));
    if (wayBack.Get() < 0) {
        return errno;
    }
    Level level{.Name = Name};
    if (const int error = ReadIdentity(directory.Get(), level.Identity)) {
        return error;
    }
    // A mount point cannot even be entered, but another volume of the same file system can.
    if (level.Identity.Device != Levels.back().Identity.Device) {
        return EBUSY;
    }
    if (const int error = ReadNames(directory.Get(), level.Rest)) {
        return error;
    }
    Levels.push_back(std::move(level));
    Current = std::move(directory);
    return 0;
}

bool EntryDeletion::Leave() {
    const Level left = std::move(Levels.back());
    Levels.pop_back();
    if (const int error = GoUp()) {
        Fail(left.Name, error);
        return false;
    }
    if (left.bKept) {
        Levels.back().bKept = true;
    } else if (const int error = Remove(left.Name, AT_REMOVEDIR)) {
        Fail(left.Name, error);
    }
    return true;
}

int EntryDeletion::GoUp() {
    OwnedDescriptor parent(openat(Current.Get(), "..", kOnlyToGoOn));
    if (parent.Get() < 0) {
        return errno;
    }
    FileIdentity identity;
    if (const int error = ReadIdentity(parent.Get(), identity)) {
        return error;
    }
    // It has been moved elsewhere meanwhile.
    if (identity != Levels.back().Identity) {
        return ENOENT;
    }
    Current = std::move(parent);
    return 0;
}

void EntryDeletion::Fail(const std::string& Name, int Error) {
    Levels.back().bKept = true;
    std::string path;
    if (Failures.HasRoom()) {
        std::filesystem::path whole;
        for (const Level& level : Levels) {
            whole /= level.Name;
        }
        path = whole / Name;
    }
    Failures.Add({"cannot delete " + Quoted(path), Error});
}
