#include "engine_hooks.h"

#include "link_names.h"
#include "ring_sound.h"
#include "tarvaneops.h"
#include "tarvanepane.h"

#include <cerrno>
#include <map>
#include <string_view>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

EngineHooks* gHooks = nullptr;

std::error_code Ask(CallHook EngineHooks::*Hook, const fs::path& Path) {
    if (gHooks == nullptr || !(gHooks->*Hook)) {
        return {};
    }
    return (gHooks->*Hook)(Path);
}

// Where the hook lets a call fail, its error is in errno. Allocates nothing without a hook: these
// calls throw nothing.
bool Fails(CallHook EngineHooks::*Hook, const char* Path) {
    if (gHooks == nullptr || !(gHooks->*Hook)) {
        return false;
    }
    const std::error_code error = (gHooks->*Hook)(Path);
    errno = error ? error.value() : errno;
    return static_cast<bool>(error);
}

// What each open listing has told last, but "." and "..".
thread_local std::map<DIR*, std::string> gLastEntries;

} // namespace

EngineHooks::EngineHooks() {
    gHooks = this;
}

EngineHooks::~EngineHooks() {
    gHooks = nullptr;
}

bool RealIsCddaPath(const std::string& Path) REAL(TarvaneIsCddaPath);
bool WrappedIsCddaPath(const std::string& Path) WRAPPED(TarvaneIsCddaPath);

bool WrappedIsCddaPath(const std::string& Path) {
    if (gHooks != nullptr && gHooks->PathMet) {
        gHooks->PathMet(Path);
    }
    return RealIsCddaPath(Path);
}

bool RealPathsEquivalent(const fs::path& First, const fs::path& Second) noexcept
    REAL(TarvanePathsEquivalentOrSame);
bool WrappedPathsEquivalent(const fs::path& First, const fs::path& Second) noexcept
    WRAPPED(TarvanePathsEquivalentOrSame);

bool WrappedPathsEquivalent(const fs::path& First, const fs::path& Second) noexcept {
    const bool same = RealPathsEquivalent(First, Second);
    if (gHooks != nullptr && gHooks->PathsCompared) {
        gHooks->PathsCompared(First);
    }
    return same;
}

// Nobody wants to hear the tests, so the real one is left out.
void WrappedPlaySound() noexcept WRAPPED(PlayTarvaneTransferCompleteSound);

void WrappedPlaySound() noexcept {
    if (gHooks != nullptr && gHooks->SoundPlayed) {
        gHooks->SoundPlayed();
    }
}

fs::file_status RealStatus(const fs::path& Path, std::error_code& OutError) noexcept
    REAL(FileStatus);
fs::file_status WrappedStatus(const fs::path& Path, std::error_code& OutError) noexcept
    WRAPPED(FileStatus);

fs::file_status WrappedStatus(const fs::path& Path, std::error_code& OutError) noexcept {
    if ((OutError = Ask(&EngineHooks::Status, Path))) {
        return fs::file_status(fs::file_type::none);
    }
    return RealStatus(Path, OutError);
}

fs::file_status RealThrowingStatus(const fs::path& Path) REAL(FileStatusOrThrow);
fs::file_status WrappedThrowingStatus(const fs::path& Path) WRAPPED(FileStatusOrThrow);

fs::file_status WrappedThrowingStatus(const fs::path& Path) {
    if (const std::error_code error = Ask(&EngineHooks::ThrowingStatus, Path)) {
        throw fs::filesystem_error("status", Path, error);
    }
    return RealThrowingStatus(Path);
}

fs::file_status RealSymlinkStatus(const fs::path& Path, std::error_code& OutError) noexcept
    REAL(SymlinkStatus);
fs::file_status WrappedSymlinkStatus(const fs::path& Path, std::error_code& OutError) noexcept
    WRAPPED(SymlinkStatus);

fs::file_status WrappedSymlinkStatus(const fs::path& Path, std::error_code& OutError) noexcept {
    if ((OutError = Ask(&EngineHooks::SymlinkStatus, Path))) {
        return fs::file_status(fs::file_type::none);
    }
    return RealSymlinkStatus(Path, OutError);
}

std::uintmax_t RealFileSize(const fs::path& Path, std::error_code& OutError) noexcept
    REAL(FileSize);
std::uintmax_t WrappedFileSize(const fs::path& Path, std::error_code& OutError) noexcept
    WRAPPED(FileSize);

std::uintmax_t WrappedFileSize(const fs::path& Path, std::error_code& OutError) noexcept {
    if ((OutError = Ask(&EngineHooks::FileSize, Path))) {
        return static_cast<std::uintmax_t>(-1);
    }
    return RealFileSize(Path, OutError);
}

void RealRename(const fs::path& From, const fs::path& To, std::error_code& OutError) noexcept
    REAL(Rename);
void WrappedRename(const fs::path& From, const fs::path& To, std::error_code& OutError) noexcept
    WRAPPED(Rename);

void WrappedRename(const fs::path& From, const fs::path& To, std::error_code& OutError) noexcept {
    if (!(OutError = Ask(&EngineHooks::Rename, From))) {
        RealRename(From, To, OutError);
    }
}

extern "C" {

int __real_stat(const char* Path, struct stat* OutStatus);
int __wrap_stat(const char* Path, struct stat* OutStatus);
int __real_lstat(const char* Path, struct stat* OutStatus);
int __wrap_lstat(const char* Path, struct stat* OutStatus);
int __real_fstatat(int Parent, const char* Name, struct stat* OutStatus, int Flags);
int __wrap_fstatat(int Parent, const char* Name, struct stat* OutStatus, int Flags);
int __real_faccessat(int Folder, const char* Path, int Mode, int Flags);
int __wrap_faccessat(int Folder, const char* Path, int Mode, int Flags);
dirent* __real_readdir(DIR* Directory);
dirent* __wrap_readdir(DIR* Directory);
int __real_closedir(DIR* Directory);
int __wrap_closedir(DIR* Directory);

int __wrap_stat(const char* Path, struct stat* OutStatus) {
    return Fails(&EngineHooks::Status, Path) ? -1 : __real_stat(Path, OutStatus);
}

int __wrap_lstat(const char* Path, struct stat* OutStatus) {
    return Fails(&EngineHooks::SymlinkStatus, Path) ? -1 : __real_lstat(Path, OutStatus);
}

int __wrap_fstatat(int Parent, const char* Name, struct stat* OutStatus, int Flags) {
    return Fails(&EngineHooks::EntryStatus, Name) ? -1
                                                  : __real_fstatat(Parent, Name, OutStatus, Flags);
}

int __wrap_faccessat(int Folder, const char* Path, int Mode, int Flags) {
    if (gHooks != nullptr && gHooks->DeviceProbed &&
        std::string_view(Path).ends_with("/removable")) {
        gHooks->DeviceProbed();
    }
    return __real_faccessat(Folder, Path, Mode, Flags);
}

// A listing that fails has no further entries, as with the system's own errors.
dirent* __wrap_readdir(DIR* Directory) {
    if (gHooks == nullptr || !gHooks->Advance) {
        return __real_readdir(Directory);
    }
    std::string& left = gLastEntries[Directory];
    if (!left.empty() && Fails(&EngineHooks::Advance, left.c_str())) {
        return nullptr;
    }
    dirent* entry = __real_readdir(Directory);
    const std::string_view name = entry == nullptr ? "" : entry->d_name;
    left = name == "." || name == ".." ? "" : name;
    return entry;
}

int __wrap_closedir(DIR* Directory) {
    gLastEntries.erase(Directory);
    return __real_closedir(Directory);
}
}
