#include "file_reason.h"

#include <cerrno>
#include <memory>
#include <system_error>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include "full_path.h"
#include "owned_descriptor.h"
#include "size_text.h"

namespace fs = std::filesystem;

namespace {

std::string SystemText(int Error) {
    return Error == 0 ? std::string() : std::generic_category().message(Error);
}

// The errno of a stat that follows links, or 0.
int Look(const fs::path& Path, struct stat& OutStatus) {
    return ::stat(Path.c_str(), &OutStatus) == 0 ? 0 : errno;
}

// The errno of the attempt, or 0. What is no regular file is left alone: opening a device or a pipe
// can do something.
int TryToOpen(const fs::path& Path, const struct stat& Status, int Access) {
    if (!S_ISREG(Status.st_mode)) {
        return 0;
    }
    const OwnedDescriptor opened(::open(Path.c_str(), Access | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    return opened.Get() >= 0 ? 0 : errno;
}

// The errno of listing a directory's first entry, or 0; the others may be a million.
int TryToList(const fs::path& Directory) {
    const std::unique_ptr<DIR, int (*)(DIR*)> listing(::opendir(Directory.c_str()), ::closedir);
    if (listing) {
        errno = 0;
        return ::readdir(listing.get()) != nullptr ? 0 : errno;
    }
    return errno;
}

// The directory at which the file system begins that holds an existing directory.
fs::path MountPointOf(fs::path Directory) {
    struct stat inside {};
    struct stat above {};
    while (Directory.has_relative_path() && Look(Directory, inside) == 0 &&
           Look(Directory.parent_path(), above) == 0 && inside.st_dev == above.st_dev) {
        Directory = Directory.parent_path();
    }
    return Directory;
}

std::string WhyFileSystemTakesNothing(const struct statvfs& FileSystem, const fs::path& Directory) {
    if ((FileSystem.f_flag & ST_RDONLY) != 0) {
        return SystemText(EROFS);
    }
    // Some file systems have no number of files at all.
    if (FileSystem.f_files > 0 && FileSystem.f_ffree == 0) {
        return "No space left on " + MountPointOf(Directory).native() + " for another file";
    }
    return {};
}

} // namespace

std::string WhyUnreadable(const fs::path& Source) {
    struct stat status {};
    int error = Look(Source, status);
    if (error == 0) {
        error = S_ISDIR(status.st_mode) ? TryToList(Source) : TryToOpen(Source, status, O_RDONLY);
    }
    return SystemText(error);
}

std::string WhyNotOpenedForWriting(const fs::path& Destination) {
    struct stat status {};
    const int error = Look(Destination, status);
    if (error == 0) {
        return SystemText(TryToOpen(Destination, status, O_WRONLY));
    }
    if (error != ENOENT) {
        return SystemText(error);
    }
    const fs::path parent = Destination.parent_path();
    if (::faccessat(AT_FDCWD, parent.c_str(), W_OK | X_OK, AT_EACCESS) != 0) {
        return SystemText(errno);
    }
    struct statvfs fileSystem {};
    return ::statvfs(parent.c_str(), &fileSystem) == 0
               ? WhyFileSystemTakesNothing(fileSystem, parent)
               : std::string();
}

std::string WhyNotWritten(const fs::path& Destination, std::uint64_t NeededBytes) {
    const fs::path directory = NearestExistingDirectory(Destination.parent_path());
    struct statvfs fileSystem {};
    if (::statvfs(directory.c_str(), &fileSystem) != 0) {
        return {};
    }
    // Root may use what is reserved.
    const std::uint64_t blocks = ::geteuid() == 0 ? fileSystem.f_bfree : fileSystem.f_bavail;
    const std::uint64_t freeBytes = blocks * fileSystem.f_frsize;
    if (fileSystem.f_blocks > 0 && freeBytes < NeededBytes) {
        return "No space left on " + MountPointOf(directory).native() + ": " +
               SizeText(NeededBytes) + " needed, " + SizeText(freeBytes) + " free";
    }
    return WhyFileSystemTakesNothing(fileSystem, directory);
}
