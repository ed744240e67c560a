#include "engine_hooks.h"

#include "link_names.h"
#include "ring_sound.h"
#include "tarvaneops.h"
#include "tarvanepane.h"

namespace fs = std::filesystem;

namespace {

EngineHooks* gHooks = nullptr;

std::error_code Ask(CallHook EngineHooks::*Hook, const fs::path& Path) {
    if (gHooks == nullptr || !(gHooks->*Hook)) {
        return {};
    }
    return (gHooks->*Hook)(Path);
}

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

using Iterator = fs::directory_iterator;
using RecursiveIterator = fs::recursive_directory_iterator;

Iterator& RealAdvance(Iterator* It, std::error_code& OutError) REAL(NextEntry);
Iterator& WrappedAdvance(Iterator* It, std::error_code& OutError) WRAPPED(NextEntry);

// A listing that fails has no further entries, as with the library's own errors.
Iterator& WrappedAdvance(Iterator* It, std::error_code& OutError) {
    if (const std::error_code error = Ask(&EngineHooks::Advance, (*It)->path())) {
        OutError = error;
        return *It = Iterator();
    }
    return RealAdvance(It, OutError);
}

RecursiveIterator& RealAdvanceRecursively(RecursiveIterator* It, std::error_code& OutError)
    REAL(NextEntryBelow);
RecursiveIterator& WrappedAdvanceRecursively(RecursiveIterator* It, std::error_code& OutError)
    WRAPPED(NextEntryBelow);

RecursiveIterator& WrappedAdvanceRecursively(RecursiveIterator* It, std::error_code& OutError) {
    if (const std::error_code error = Ask(&EngineHooks::AdvanceRecursively, (*It)->path())) {
        OutError = error;
        return *It = RecursiveIterator();
    }
    return RealAdvanceRecursively(It, OutError);
}
