// The functions of C++ that tests replace at the link, by the names that the linker has for them.
//
// This is the only place with such names. tests/CMakeLists.txt reads them here, so that a test says
// `WRAP FileSize`; the source that replaces the function declares both sides:
//
//   std::uintmax_t RealFileSize(const fs::path&, std::error_code&) noexcept REAL(FileSize);
//   std::uintmax_t WrappedFileSize(const fs::path&, std::error_code&) noexcept WRAPPED(FileSize);
//
// A member function takes its object as the first parameter. A name that no library has does not
// link; one that the library keeps and no longer uses leaves the tests of the hook red.

#pragma once

#define REAL(Function) asm("__real_" LINK_NAME_##Function)
#define WRAPPED(Function) asm("__wrap_" LINK_NAME_##Function)

// The C++ library.

// std::condition_variable::wait(std::unique_lock<std::mutex>&)
#define LINK_NAME_ConditionWait "_ZNSt18condition_variable4waitERSt11unique_lockISt5mutexE"
// std::chrono::steady_clock::now()
#define LINK_NAME_SteadyClockNow "_ZNSt6chrono3_V212steady_clock3nowEv"
// std::istream::read(char*, std::streamsize)
#define LINK_NAME_StreamRead "_ZNSi4readEPcl"
// std::ostream::write(const char*, std::streamsize)
#define LINK_NAME_StreamWrite "_ZNSo5writeEPKcl"
// std::ostream::flush()
#define LINK_NAME_StreamFlush "_ZNSo5flushEv"

// std::filesystem::status(const path&, std::error_code&)
#define LINK_NAME_FileStatus "_ZNSt10filesystem6statusERKNS_7__cxx114pathERSt10error_code"
// std::filesystem::status(const path&)
#define LINK_NAME_FileStatusOrThrow "_ZNSt10filesystem6statusERKNS_7__cxx114pathE"
// std::filesystem::symlink_status(const path&, std::error_code&)
#define LINK_NAME_SymlinkStatus                                                                    \
    "_ZNSt10filesystem14symlink_statusERKNS_7__cxx114pathERSt10error_code"
// std::filesystem::file_size(const path&, std::error_code&)
#define LINK_NAME_FileSize "_ZNSt10filesystem9file_sizeERKNS_7__cxx114pathERSt10error_code"
// std::filesystem::rename(const path&, const path&, std::error_code&)
#define LINK_NAME_Rename "_ZNSt10filesystem6renameERKNS_7__cxx114pathES3_RSt10error_code"

// The host and the engine.

// TarvaneIsCddaPath(const std::string&)
#define LINK_NAME_TarvaneIsCddaPath                                                                \
    "_Z17TarvaneIsCddaPathRKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE"
// TarvaneCddaTrackFromPath(const std::string&)
#define LINK_NAME_TarvaneCddaTrackFromPath                                                         \
    "_Z24TarvaneCddaTrackFromPathRKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE"
// TarvanePathsEquivalentOrSame(const std::filesystem::path&, const std::filesystem::path&)
#define LINK_NAME_TarvanePathsEquivalentOrSame                                                     \
    "_Z28TarvanePathsEquivalentOrSameRKNSt10filesystem7__cxx114pathES3_"
// PlayTarvaneTransferCompleteSound()
#define LINK_NAME_PlayTarvaneTransferCompleteSound "_Z32PlayTarvaneTransferCompleteSoundv"
// RunTarvaneTransferJob(const std::shared_ptr<TarvaneTransferJob>&, TarvaneTransferPlan)
#define LINK_NAME_RunTarvaneTransferJob                                                            \
    "_Z21RunTarvaneTransferJobRKSt10shared_ptrI18TarvaneTransferJobE19TarvaneTransferPlan"
// FindOpticalDrives()
#define LINK_NAME_FindOpticalDrives "_Z17FindOpticalDrivesB5cxx11v"

// What a pane shows.

// BrowseList::EntryAt(std::size_t) const
#define LINK_NAME_EntryAt "_ZNK10BrowseList7EntryAtEm"
