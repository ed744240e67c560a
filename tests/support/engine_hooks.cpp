#include "engine_hooks.h"

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

// Each pair below carries the names that the linker gives to a function and to what replaces it.

bool RealIsCddaPath(const std::string& Path) asm("__real__Z17TarvaneIsCddaPathRKNSt7__cxx1112basic_"
                                                 "stringIcSt11char_traitsIcESaIcEEE");
bool WrappedIsCddaPath(const std::string& Path) asm(
    "__wrap__Z17TarvaneIsCddaPathRKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE");

bool WrappedIsCddaPath(const std::string& Path) {
    if (gHooks != nullptr && gHooks->PathMet) {
        gHooks->PathMet(Path);
    }
    return RealIsCddaPath(Path);
}

bool RealPathsEquivalent(const fs::path& First, const fs::path& Second) noexcept
    asm("__real__Z28TarvanePathsEquivalentOrSameRKNSt10filesystem7__cxx114pathES3_");
bool WrappedPathsEquivalent(const fs::path& First, const fs::path& Second) noexcept
    asm("__wrap__Z28TarvanePathsEquivalentOrSameRKNSt10filesystem7__cxx114pathES3_");

bool WrappedPathsEquivalent(const fs::path& First, const fs::path& Second) noexcept {
    const bool same = RealPathsEquivalent(First, Second);
    if (gHooks != nullptr && gHooks->PathsCompared) {
        gHooks->PathsCompared(First);
    }
    return same;
}

// Nobody wants to hear the tests, so the real one is left out.
void WrappedPlaySound() noexcept asm("__wrap__Z32PlayTarvaneTransferCompleteSoundv");

void WrappedPlaySound() noexcept {
    if (gHooks != nullptr && gHooks->SoundPlayed) {
        gHooks->SoundPlayed();
    }
}

fs::file_status RealStatus(const fs::path& Path, std::error_code& OutError) noexcept
    asm("__real__ZNSt10filesystem6statusERKNS_7__cxx114pathERSt10error_code");
fs::file_status WrappedStatus(const fs::path& Path, std::error_code& OutError) noexcept
    asm("__wrap__ZNSt10filesystem6statusERKNS_7__cxx114pathERSt10error_code");

fs::file_status WrappedStatus(const fs::path& Path, std::error_code& OutError) noexcept {
    if ((OutError = Ask(&EngineHooks::Status, Path))) {
        return fs::file_status(fs::file_type::none);
    }
    return RealStatus(Path, OutError);
}

fs::file_status
RealThrowingStatus(const fs::path& Path) asm("__real__ZNSt10filesystem6statusERKNS_7__cxx114pathE");
fs::file_status WrappedThrowingStatus(const fs::path& Path) asm(
    "__wrap__ZNSt10filesystem6statusERKNS_7__cxx114pathE");

fs::file_status WrappedThrowingStatus(const fs::path& Path) {
    if (const std::error_code error = Ask(&EngineHooks::ThrowingStatus, Path)) {
        throw fs::filesystem_error("status", Path, error);
    }
    return RealThrowingStatus(Path);
}

fs::file_status RealSymlinkStatus(const fs::path& Path, std::error_code& OutError) noexcept
    asm("__real__ZNSt10filesystem14symlink_statusERKNS_7__cxx114pathERSt10error_code");
fs::file_status WrappedSymlinkStatus(const fs::path& Path, std::error_code& OutError) noexcept
    asm("__wrap__ZNSt10filesystem14symlink_statusERKNS_7__cxx114pathERSt10error_code");

fs::file_status WrappedSymlinkStatus(const fs::path& Path, std::error_code& OutError) noexcept {
    if ((OutError = Ask(&EngineHooks::SymlinkStatus, Path))) {
        return fs::file_status(fs::file_type::none);
    }
    return RealSymlinkStatus(Path, OutError);
}

std::uintmax_t RealFileSize(const fs::path& Path, std::error_code& OutError) noexcept
    asm("__real__ZNSt10filesystem9file_sizeERKNS_7__cxx114pathERSt10error_code");
std::uintmax_t WrappedFileSize(const fs::path& Path, std::error_code& OutError) noexcept
    asm("__wrap__ZNSt10filesystem9file_sizeERKNS_7__cxx114pathERSt10error_code");

std::uintmax_t WrappedFileSize(const fs::path& Path, std::error_code& OutError) noexcept {
    if ((OutError = Ask(&EngineHooks::FileSize, Path))) {
        return static_cast<std::uintmax_t>(-1);
    }
    return RealFileSize(Path, OutError);
}

void RealRename(const fs::path& From, const fs::path& To, std::error_code& OutError) noexcept
    asm("__real__ZNSt10filesystem6renameERKNS_7__cxx114pathES3_RSt10error_code");
void WrappedRename(const fs::path& From, const fs::path& To, std::error_code& OutError) noexcept
    asm("__wrap__ZNSt10filesystem6renameERKNS_7__cxx114pathES3_RSt10error_code");

void WrappedRename(const fs::path& From, const fs::path& To, std::error_code& OutError) noexcept {
    if (!(OutError = Ask(&EngineHooks::Rename, From))) {
        RealRename(From, To, OutError);
    }
}

using Iterator = fs::directory_iterator;
using RecursiveIterator = fs::recursive_directory_iterator;

Iterator& RealAdvance(Iterator* It, std::error_code& OutError) asm(
    "__real__ZNSt10filesystem7__cxx1118directory_iterator9incrementERSt10error_code");
Iterator& WrappedAdvance(Iterator* It, std::error_code& OutError) asm(
    "__wrap__ZNSt10filesystem7__cxx1118directory_iterator9incrementERSt10error_code");

// A listing that fails has no further entries, as with the library's own errors.
Iterator& WrappedAdvance(Iterator* It, std::error_code& OutError) {
    if (const std::error_code error = Ask(&EngineHooks::Advance, (*It)->path())) {
        OutError = error;
        return *It = Iterator();
    }
    return RealAdvance(It, OutError);
}

RecursiveIterator& RealAdvanceRecursively(RecursiveIterator* It, std::error_code& OutError) asm(
    "__real__ZNSt10filesystem7__cxx1128recursive_directory_iterator9incrementERSt10error_code");
RecursiveIterator& WrappedAdvanceRecursively(RecursiveIterator* It, std::error_code& OutError) asm(
    "__wrap__ZNSt10filesystem7__cxx1128recursive_directory_iterator9incrementERSt10error_code");

RecursiveIterator& WrappedAdvanceRecursively(RecursiveIterator* It, std::error_code& OutError) {
    if (const std::error_code error = Ask(&EngineHooks::AdvanceRecursively, (*It)->path())) {
        OutError = error;
        return *It = RecursiveIterator();
    }
    return RealAdvanceRecursively(It, OutError);
}
