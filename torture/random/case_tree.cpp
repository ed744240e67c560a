#include "case_tree.h"

#include "undetermined.h"

#include <cerrno>
#include <climits>
#include <system_error>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr mode_t kDirectoryMode = 0777;
constexpr mode_t kFileMode = 0666;

void Require(bool bDone, const std::string& Path) {
    if (!bDone) {
        throw std::system_error(errno, std::generic_category(), Path);
    }
}

void WriteWhole(const std::string& Path, const std::string& Contents) {
    const int descriptor =
        ::open(Path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, kFileMode);
    Require(descriptor >= 0, Path);
    const ssize_t written = ::write(descriptor, Contents.data(), Contents.size());
    ::close(descriptor);
    Require(written == static_cast<ssize_t>(Contents.size()), Path);
}

void MakeEntry(const CaseEntry& Entry, const std::string& Root) {
    const std::string path = Root + "/" + Entry.Path;
    switch (Entry.Kind) {
    case EntryKind::Directory:
        Require(::mkdir(path.c_str(), kDirectoryMode) == 0 || errno == EEXIST, path);
        break;
    case EntryKind::File:
        WriteWhole(path, ContentsOf(Entry));
        break;
    case EntryKind::HardLink:
        Require(::link((Root + "/" + Entry.Target).c_str(), path.c_str()) == 0, path);
        break;
    case EntryKind::Link:
        Require(::symlink(LinkTarget(Entry, Root).c_str(), path.c_str()) == 0, path);
        break;
    case EntryKind::Fifo:
        Require(::mkfifo(path.c_str(), kFileMode) == 0, path);
        break;
    case EntryKind::Socket:
        Require(::mknod(path.c_str(), S_IFSOCK | kFileMode, 0) == 0, path);
        break;
    case EntryKind::Device:
        Require(false, path);
        break;
    }
}

std::string ReadWhole(const std::string& Path, std::size_t Size) {
    const int descriptor = ::open(Path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    Require(descriptor >= 0, Path);
    std::string contents(Size + 1, '\0');
    const ssize_t length = ::read(descriptor, contents.data(), contents.size());
    ::close(descriptor);
    Require(length >= 0, Path);
    contents.resize(static_cast<std::size_t>(length));
    return contents;
}

std::string TargetOf(const std::string& Path) {
    std::string target(PATH_MAX, '\0');
    const ssize_t length = ::readlink(Path.c_str(), target.data(), target.size());
    Require(length >= 0, Path);
    target.resize(static_cast<std::size_t>(length));
    return target;
}

std::vector<std::string> NamesOnDisk(const std::string& Directory) {
    std::vector<std::string> names;
    DIR* const stream = ::opendir(Directory.c_str());
    Require(stream != nullptr, Directory);
    while (const dirent* const entry = ::readdir(stream)) {
        const std::string name = static_cast<const char*>(entry->d_name);
        if (name != "." && name != "..") {
            names.push_back(name);
        }
    }
    ::closedir(stream);
    return names;
}

struct stat StatusOnDisk(const std::string& Path) {
    struct stat status {};
    Require(::lstat(Path.c_str(), &status) == 0, Path);
    return status;
}

// Directories that are mounts stay, empty.
void ClearOnDisk(const std::string& Root) {
    const std::string start = Root + "/";
    for (const std::string& name : NamesOnDisk(Root)) {
        const std::string path = start + name;
        if (!S_ISDIR(StatusOnDisk(path).st_mode)) {
            Require(::unlink(path.c_str()) == 0, path);
            continue;
        }
        ClearOnDisk(path);
        Require(::rmdir(path.c_str()) == 0 || errno == EBUSY, path);
    }
}

void AddFactsOnDisk(const std::string& Root, const std::string& Below, Facts& OutFacts) {
    const std::string start = Below + "/";
    for (const std::string& name : NamesOnDisk(Root + Below)) {
        const std::string relative = start + name;
        const std::string path = Root + relative;
        const struct stat status = StatusOnDisk(path);
        std::string& fact = OutFacts[std::string(kTreeFact) + relative];
        if (S_ISDIR(status.st_mode)) {
            fact = "directory";
            AddFactsOnDisk(Root, relative, OutFacts);
        } else if (S_ISREG(status.st_mode)) {
            fact = FileFact(ReadWhole(path, static_cast<std::size_t>(status.st_size)));
        } else if (S_ISLNK(status.st_mode)) {
            fact = "link to " + TargetOf(path);
        } else {
            fact = S_ISFIFO(status.st_mode) ? "fifo" : S_ISSOCK(status.st_mode) ? "socket" : "?";
        }
    }
}

void AddFactsInModel(const ModelNode& Directory, const std::string& Below, Facts& OutFacts) {
    const std::string start = Below + "/";
    for (const auto& [name, node] : Directory.Children) {
        const std::string relative = start + name;
        OutFacts[std::string(kTreeFact) + relative] = NodeFact(*node);
        AddFactsInModel(*node, relative, OutFacts);
    }
}

} // namespace

std::string NodeFact(const ModelNode& Node) {
    switch (Node.Kind) {
    case EntryKind::Directory:
        return "directory";
    case EntryKind::File:
    case EntryKind::HardLink:
        return FileFact(Node.Data);
    case EntryKind::Link:
        return "link to " + Node.Data;
    case EntryKind::Fifo:
        return "fifo";
    case EntryKind::Socket:
        return "socket";
    case EntryKind::Device:
        break;
    }
    return "?";
}

void MakeOnDisk(const RandomCase& Case, const std::string& Root) {
    ClearOnDisk(Root);
    for (const CaseEntry& entry : Case.Entries) {
        MakeEntry(entry, Root);
    }
    // Last, as each new entry changes its directory's time.
    for (const CaseEntry& entry : Case.Entries) {
        const std::string path = Root + "/" + entry.Path;
        const timespec moment{.tv_sec = entry.ModifiedSeconds, .tv_nsec = 0};
        const timespec times[2]{moment, moment};
        Require(::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW) == 0, path);
    }
}

void MakeInModel(const RandomCase& Case, bool bOtherFileSystem, ModelFiles& Files) {
    const std::string root = Files.RootPath() + "/";
    Files.Create(root + "far", EntryKind::Directory, {});
    if (bOtherFileSystem) {
        Files.Mount(root + "far");
    }
    for (const CaseEntry& entry : Case.Entries) {
        const std::string path = root + entry.Path;
        int error = 0;
        if (entry.Kind == EntryKind::HardLink) {
            error = Files.AddHardLink(path, root + entry.Target);
        } else if (Files.Find(path, Links::Keep).Node == nullptr) {
            error =
                Files.Create(path, entry.Kind,
                             entry.Kind == EntryKind::File ? ContentsOf(entry)
                                                           : LinkTarget(entry, Files.RootPath()));
        }
        if (error != 0) {
            throw Undetermined("the tree cannot be made: " + entry.Path);
        }
    }
    for (const CaseEntry& entry : Case.Entries) {
        Files.Find(root + entry.Path, Links::Keep).Node->ModifiedSeconds = entry.ModifiedSeconds;
    }
}

Facts TreeOnDisk(const std::string& Root) {
    Facts facts;
    AddFactsOnDisk(Root, "", facts);
    return facts;
}

Facts TreeInModel(ModelFiles& Files) {
    Facts facts;
    AddFactsInModel(Files.Root(), "", facts);
    return facts;
}
