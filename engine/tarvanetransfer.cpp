// The file-transfer engine. See tarvanetransfer.h for the contract with the interface.
//
// Sections, each using only those above it; search for the bracketed name.
//
//   [records]   Constants and private records
//   [text]      Progress text formatting
//   [job]       Job state and progress
//   [handshake] Conflict handshake
//   [snapshot]  Progress dialog snapshot
//   [registry]  Job registry and job list
//   [prepare]   Destination preparation and skip accounting
//   [conflict]  File conflict records and resolution
//   [removable] Removable-destination probe
//   [streams]   File streams of a run
//   [file]      File copier
//   [cd-range]  CD track range reader
//   [cd-wav]    Track-to-WAV extraction
//   [special]   Other entries than files and directories
//   [path]      Path copier
//   [scan]      Scan of the sources
//   [runner]    Job runner

#include "tarvanetransfer.h"

#include "ring_sound.h"
#include "tarvaneops.h"
#include "tarvanepane.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <limits>
#include <optional>
#include <stack>
#include <string_view>
#include <system_error>

#include <dirent.h>
#include <fcntl.h>
#include <linux/cdrom.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/sysmacros.h>
#include <unistd.h>

// -------------------------------------------------------------------------------------------------
// [records] Constants and private records
//
// What every later section shares. A step that fails puts one sentence into the caller's
// ErrorMessage, always by assignment, and says so by its result; a cancel is such a failure, which
// the runner tells apart by the job's flag.
// -------------------------------------------------------------------------------------------------

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kTransferBufferBytes = 262144;
// The limit for removable media.
constexpr std::uint64_t kInteractiveCopyBytesPerSecond = 6291456;
constexpr std::chrono::milliseconds kTransferSampleInterval{160};
constexpr std::chrono::seconds kTransferSampleWindow{4};
constexpr int kCddaBytesPerFrame = 2352;
constexpr int kFramesPerRead = 16;

struct TransferTotals {
    std::uint64_t ItemCount = 0;
    std::uint64_t ByteCount = 0;
};

enum class TransferCopyResult : std::int32_t {
    Succeeded = 0,
    Skipped = 1,
    Failed = 2,
};

bool Fail(std::string& ErrorMessage, std::string Message) {
    ErrorMessage = std::move(Message);
    return false;
}

TransferCopyResult FailCopy(std::string& ErrorMessage, std::string Message) {
    ErrorMessage = std::move(Message);
    return TransferCopyResult::Failed;
}

// What one status query told about a path, links followed. Steps that ask at the same moment share
// one: a small file costs little more than its queries.
class PathStatus {
public:
    explicit PathStatus(const char* Path) {
        if (::stat(Path, &Info) != 0) {
            Error = errno;
        }
    }
    // Of an entry of an open directory.
    PathStatus(int Directory, const char* Name) {
        if (::fstatat(Directory, Name, &Info, 0) != 0) {
            Error = errno;
        }
    }

    // As in the standard library, what is too large to be told exists all the same.
    bool Exists() const { return Error == 0 || Error == EOVERFLOW; }
    // Neither found nor missed.
    bool IsUnknown() const { return !Exists() && IsUntold(); }
    // It may exist, but not as what.
    bool IsUntold() const { return Error != 0 && Error != ENOENT && Error != ENOTDIR; }
    bool IsDirectory() const { return Error == 0 && S_ISDIR(Info.st_mode); }
    bool IsRegularFile() const { return Error == 0 && S_ISREG(Info.st_mode); }

    // False only where both exist for certain and are two files.
    bool MayBeSameAs(const PathStatus& Other) const {
        return Error != 0 || Other.Error != 0 ||
               (Info.st_ino == Other.Info.st_ino && Info.st_dev == Other.Info.st_dev);
    }

    // Of a regular file.
    std::uint64_t SizeBytes() const { return static_cast<std::uint64_t>(Info.st_size); }
    const timespec& ModifiedTime() const { return Info.st_mtim; }
    std::error_code ErrorCode() const { return {Error, std::generic_category()}; }

private:
    struct stat Info {};
    int Error = 0;
};

// A path with its status when it was met. The path must outlive it.
struct MetPath {
    MetPath(const fs::path& PathToMeet) : Path(PathToMeet), Status(PathToMeet.c_str()) {}
    MetPath(const fs::path& PathMet, const PathStatus& StatusThen)
        : Path(PathMet), Status(StatusThen) {}

    const fs::path& Path;
    PathStatus Status;
};

// The entries of a directory but "." and "..", in the order of the listing. A directory that may
// not be read has none.
class DirectoryListing {
public:
    // Parent is the descriptor that a relative path starts from.
    DirectoryListing(int Parent, const char* Path, int MoreFlags = 0) {
        const int directory =
            ::openat(Parent, Path, O_RDONLY | O_DIRECTORY | O_CLOEXEC | MoreFlags);
        Stream = directory < 0 ? nullptr : ::fdopendir(directory);
        if (Stream == nullptr) {
            KeepError();
        }
        if (Stream == nullptr && directory >= 0) {
            ::close(directory);
        }
    }
    explicit DirectoryListing(const fs::path& Path) : DirectoryListing(AT_FDCWD, Path.c_str()) {}
    ~DirectoryListing() {
        if (Stream != nullptr) {
            ::closedir(Stream);
        }
    }
    DirectoryListing(const DirectoryListing&) = delete;
    DirectoryListing& operator=(const DirectoryListing&) = delete;

    // Null at the end and after an error.
    const dirent* Next() {
        while (Stream != nullptr && !Error) {
            errno = 0;
            const dirent* entry = ::readdir(Stream);
            if (entry == nullptr) {
                KeepError();
                return nullptr;
            }
            const std::string_view name = entry->d_name;
            if (name != "." && name != "..") {
                return entry;
            }
        }
        return nullptr;
    }

    // Of the opening or of the last step.
    const std::error_code& LastError() const { return Error; }
    int Descriptor() const { return ::dirfd(Stream); }

private:
    void KeepError() {
        if (errno != EACCES) {
            Error = {errno, std::generic_category()};
        }
    }

    DIR* Stream = nullptr;
    std::error_code Error;
};

} // namespace

// -------------------------------------------------------------------------------------------------
// [text] Progress text formatting
//
// Pure functions on both threads; none can fail. The texts are English whatever the program's
// locale is.
// -------------------------------------------------------------------------------------------------

namespace {

std::string TransferVerb(bool bMove) {
    return bMove ? "Move" : "Copy";
}

std::string TransferStageLabel(TarvaneTransferStage Stage) {
    switch (Stage) {
    case TarvaneTransferStage::Preparing:
        return "Preparing";
    case TarvaneTransferStage::Copying:
        return "Copying";
    case TarvaneTransferStage::RemovingSource:
        return "Removing source";
    case TarvaneTransferStage::WaitingForConflict:
        return "Waiting for conflict choice";
    case TarvaneTransferStage::Completed:
        return "Completed";
    case TarvaneTransferStage::Failed:
        return "Failed";
    case TarvaneTransferStage::Canceled:
        return "Canceled";
    }
    return "Pending";
}

std::uint64_t ToUInt64(std::uintmax_t Value) {
    return static_cast<std::uint64_t>(Value);
}

// The unit is chosen before the number is rounded, so one byte below 1 MB reads 1024.0 KB. This is
// deliberate: the text never claims a unit that the size has not reached.
std::string FormatBinarySize(std::uint64_t Size) {
    static constexpr std::array<const char*, 5> kUnits = {"B", "KB", "MB", "GB", "TB"};
    double value = static_cast<double>(Size);
    std::size_t unitIndex = 0;
    while (value >= 1024.0 && unitIndex < kUnits.size() - 1) {
        value *= 0.0009765625;
        ++unitIndex;
    }
    const int digitsAfterPoint = unitIndex == 0 ? 0 : 1;
    std::array<char, 32> buffer;
    const auto number = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                      std::chars_format::fixed, digitsAfterPoint);
    return std::string(buffer.data(), number.ptr) + ' ' + kUnits[unitIndex];
}

std::string FormatRate(std::uint64_t BytesPerSecond) {
    return FormatBinarySize(BytesPerSecond) + "/s";
}

std::string FormatDurationShort(double Seconds) {
    if (!std::isfinite(Seconds) || Seconds < 0.0) {
        return "--:--";
    }
    constexpr double kMostSeconds = std::numeric_limits<std::int32_t>::max();
    const auto totalSeconds =
        static_cast<std::int32_t>(std::lround(std::min(Seconds, kMostSeconds)));
    const std::int32_t hours = totalSeconds / 3600;
    const std::int32_t minutes = (totalSeconds / 60) % 60;
    const std::int32_t secs = totalSeconds % 60;
    std::array<char, 32> buffer{};
    if (totalSeconds > 3599) {
        std::snprintf(buffer.data(), buffer.size(), "%d:%02d:%02d", hours, minutes, secs);
    } else {
        std::snprintf(buffer.data(), buffer.size(), "%02d:%02d", minutes, secs);
    }
    return buffer.data();
}

std::string FormatPercentString(double Value01) {
    if (!std::isfinite(Value01)) {
        return "--";
    }
    const int percent = static_cast<int>(std::lround(std::clamp(Value01, 0.0, 1.0) * 100.0));
    return std::to_string(percent) + "%";
}

// Counts bytes, so a character of several bytes may be cut at either seam. An even limit leaves the
// result one byte short of it, which keeps both halves equal.
std::string ElideMiddle(const std::string& Text, std::size_t MaxChars) {
    static constexpr std::string_view kEllipsis = "...";
    if (Text.size() <= MaxChars) {
        return Text;
    }
    const std::size_t keep =
        MaxChars > kEllipsis.size() ? (MaxChars - kEllipsis.size()) / 2 : std::size_t{0};
    std::string elided = Text.substr(0, keep);
    elided += kEllipsis;
    elided += Text.substr(Text.size() - keep);
    return elided;
}

} // namespace

// -------------------------------------------------------------------------------------------------
// [job] Job state and progress
//
// The worker writes, the interface reads. Counters and flags change before the lock is taken for
// the texts, so that the copy loop never waits for the interface to read a number. The three
// finishers differ in when they notify and in the sound, so each is written out.
// -------------------------------------------------------------------------------------------------

TarvaneTransferJob::TarvaneTransferJob(bool bMoveJob, std::size_t RequestedItemCount,
                                       std::string SourceName)
    : bMove(bMoveJob), RequestedTopLevelItems(RequestedItemCount),
      SourceLabel(std::move(SourceName)), StartedAt(std::chrono::steady_clock::now()) {}

void TarvaneTransferJob::SetStage(TarvaneTransferStage NewStage,
                                  const std::string& StatusOverride) {
    Stage = NewStage;
    const std::lock_guard lock(Mutex);
    StatusText = StatusOverride.empty() ? TransferStageLabel(NewStage) : StatusOverride;
}

void TarvaneTransferJob::SetCurrentPath(const std::string& Path, std::uint64_t FileTotalBytes) {
    CurrentFileTotalBytes = FileTotalBytes;
    CurrentFileDoneBytes = 0;
    const std::lock_guard lock(Mutex);
    CurrentPath = Path;
}

std::string TarvaneTransferJob::GetCurrentPath() const {
    const std::lock_guard lock(Mutex);
    return CurrentPath;
}

void TarvaneTransferJob::SetTotals(std::uint64_t TotalItems, std::uint64_t TotalBytes) {
    ItemsTotal = TotalItems;
    BytesTotal = TotalBytes;
}

void TarvaneTransferJob::AddBytesDone(std::uint64_t Delta) {
    if (Delta == 0) {
        return;
    }
    const std::uint64_t nextBytes = BytesDone.fetch_add(Delta) + Delta;
    CurrentFileDoneBytes.fetch_add(Delta);
    const auto now = std::chrono::steady_clock::now();
    const std::lock_guard lock(Mutex);
    if (ByteSamples.empty() || now - ByteSamples.back().first >= kTransferSampleInterval) {
        ByteSamples.emplace_back(now, nextBytes);
    }
    while (!ByteSamples.empty() && now - ByteSamples.front().first > kTransferSampleWindow) {
        ByteSamples.pop_front();
    }
}

void TarvaneTransferJob::MarkItemsDone(std::uint64_t Count) {
    if (Count == 0) {
        return;
    }
    ItemsDone.fetch_add(Count);
}

void TarvaneTransferJob::MarkSkipped(std::uint64_t Items, std::uint64_t Bytes) {
    ItemsSkipped.fetch_add(Items);
    BytesSkipped.fetch_add(Bytes);
}

std::uint64_t TarvaneTransferJob::GetSkippedItems() const {
    return ItemsSkipped;
}

std::uint64_t TarvaneTransferJob::GetSkippedBytes() const {
    return BytesSkipped;
}

void TarvaneTransferJob::SetCurrentFileProgress(std::uint64_t DoneBytes,
                                                std::uint64_t TotalBytesForFile) {
    CurrentFileTotalBytes = TotalBytesForFile;
    CurrentFileDoneBytes = DoneBytes;
}

// The text is built before the flag is set: memory that runs out changes nothing, and does not keep
// the notification from a worker that waits.
void TarvaneTransferJob::RequestCancel() {
    std::string statusText = "Cancel requested";
    CancelRequested = true;
    {
        const std::lock_guard lock(Mutex);
        if (!Finished) {
            StatusText = std::move(statusText);
        }
    }
    ConflictCondition.notify_all();
}

bool TarvaneTransferJob::IsCancelRequested() const {
    return CancelRequested;
}

bool TarvaneTransferJob::IsFinished() const {
    return Finished;
}

bool TarvaneTransferJob::IsMove() const {
    return bMove;
}

void TarvaneTransferJob::FinishSuccess(const std::string& Message) {
    Stage = TarvaneTransferStage::Completed;
    Succeeded = true;
    Finished = true;
    const auto now = std::chrono::steady_clock::now();
    {
        const std::lock_guard lock(Mutex);
        StatusText = Message;
        ByteSamples.emplace_back(now, BytesDone.load());
    }
    ConflictCondition.notify_all();
    PlayTarvaneTransferCompleteSound();
}

void TarvaneTransferJob::FinishFailure(const std::string& Message) {
    Stage = TarvaneTransferStage::Failed;
    Finished = true;
    const auto now = std::chrono::steady_clock::now();
    const std::lock_guard lock(Mutex);
    StatusText = Message;
    ByteSamples.emplace_back(now, BytesDone.load());
    ConflictCondition.notify_all();
}

void TarvaneTransferJob::FinishCanceled(const std::string& Message) {
    Stage = TarvaneTransferStage::Canceled;
    Canceled = true;
    Finished = true;
    const auto now = std::chrono::steady_clock::now();
    const std::lock_guard lock(Mutex);
    StatusText = Message;
    ByteSamples.emplace_back(now, BytesDone.load());
    ConflictCondition.notify_all();
}

// -------------------------------------------------------------------------------------------------
// [handshake] Conflict handshake
//
// WaitForConflict posts a conflict and sleeps on the worker; GetPendingConflict and ResolveConflict
// show and answer it on the interface thread. A conflict is idle, posted (pending) or answered
// (pending and resolved); only a posted one can be read or answered, and only the worker withdraws
// it.
// -------------------------------------------------------------------------------------------------

bool TarvaneTransferJob::WaitForConflict(const TarvaneTransferConflict& Conflict,
                                         TarvaneTransferConflictAction& OutAction,
                                         std::string& OutRenamePath) {
    std::unique_lock lock(Mutex);
    if (CancelRequested || Finished) {
        OutAction = TarvaneTransferConflictAction::Cancel;
        OutRenamePath.clear();
        return false;
    }

    const bool directoryConflict = Conflict.Kind == TarvaneTransferConflictKind::Directory;
    const bool hasDefault = directoryConflict ? bDirectoryDecisionSet : bFileDecisionSet;
    if (hasDefault) {
        OutAction = directoryConflict ? DirectoryDecision : FileDecision;
        OutRenamePath.clear();
        return true;
    }

    PostConflict(Conflict);
    ConflictCondition.wait(lock,
                           [this] { return bConflictResolved || CancelRequested || Finished; });
    if (CancelRequested || Finished) {
        OutAction = TarvaneTransferConflictAction::Cancel;
        OutRenamePath.clear();
    } else {
        OutAction = ConflictAction;
        OutRenamePath = ConflictRenamePath;
    }
    WithdrawConflict();
    return OutAction != TarvaneTransferConflictAction::Cancel;
}

bool TarvaneTransferJob::RemembersAnswerFor(TarvaneTransferConflictKind Kind) const {
    const std::lock_guard lock(Mutex);
    return Kind == TarvaneTransferConflictKind::Directory ? bDirectoryDecisionSet
                                                          : bFileDecisionSet;
}

// Requires: Mutex is held.
void TarvaneTransferJob::PostConflict(const TarvaneTransferConflict& Conflict) {
    PendingConflict = Conflict;
    bConflictPending = true;
    bConflictResolved = false;
    ConflictAction = TarvaneTransferConflictAction::Cancel;
    ConflictRenamePath.clear();
    Stage = TarvaneTransferStage::WaitingForConflict;
    StatusText = "Waiting for conflict choice";
}

// Goes back to Copying whatever the stage was before; a canceled or finished job keeps its own.
// Requires: Mutex is held.
void TarvaneTransferJob::WithdrawConflict() {
    bConflictPending = false;
    bConflictResolved = false;
    PendingConflict = TarvaneTransferConflict();
    ConflictRenamePath.clear();
    if (!Finished && !CancelRequested) {
        Stage = TarvaneTransferStage::Copying;
        StatusText = "Copying";
    }
}

bool TarvaneTransferJob::GetPendingConflict(TarvaneTransferConflict& OutConflict) const {
    const std::lock_guard lock(Mutex);
    if (!bConflictPending || bConflictResolved) {
        return false;
    }
    OutConflict = PendingConflict;
    return true;
}

// As in RequestCancel, the texts come before the flags.
bool TarvaneTransferJob::ResolveConflict(TarvaneTransferConflictAction Action,
                                         const std::string& RenamePath) {
    std::string renamePath = RenamePath;
    std::string statusText = "Cancel requested";
    {
        const std::lock_guard lock(Mutex);
        if (!bConflictPending || bConflictResolved) {
            return false;
        }
        if (Action == TarvaneTransferConflictAction::Rename && RenamePath.empty()) {
            return false;
        }
        if (Action == TarvaneTransferConflictAction::Cancel) {
            CancelRequested = true;
        }
        RememberAnswer(Action);
        ConflictAction = Action;
        ConflictRenamePath = std::move(renamePath);
        bConflictResolved = true;
        if (Action == TarvaneTransferConflictAction::Cancel) {
            StatusText = std::move(statusText);
        }
    }
    ConflictCondition.notify_all();
    return true;
}

// Keeps an "all" answer that suits the pending conflict's kind, in its single form, so that later
// conflicts get that. OverwriteAllOlder stays itself: each later file is decided by its own age.
// Requires: Mutex is held.
void TarvaneTransferJob::RememberAnswer(TarvaneTransferConflictAction Action) {
    using Act = TarvaneTransferConflictAction;
    if (PendingConflict.Kind == TarvaneTransferConflictKind::Directory) {
        if (Action == Act::MergeAll || Action == Act::SkipAll) {
            bDirectoryDecisionSet = true;
            DirectoryDecision = Action == Act::MergeAll ? Act::Merge : Act::Skip;
        }
        return;
    }
    if (Action == Act::OverwriteAll) {
        bFileDecisionSet = true;
        FileDecision = Act::Overwrite;
    } else if (Action == Act::SkipAll) {
        bFileDecisionSet = true;
        FileDecision = Act::Skip;
    } else if (Action == Act::OverwriteAllOlder) {
        bFileDecisionSet = true;
        FileDecision = Act::OverwriteAllOlder;
    }
}

// -------------------------------------------------------------------------------------------------
// [snapshot] Progress dialog snapshot
//
// MakeUiSnapshot reads the counters one by one, takes the lock for the two strings and the rate,
// and builds all text after it. The counters may be a little older than the samples; every derived
// value tolerates that.
// -------------------------------------------------------------------------------------------------

namespace {

constexpr double kMinimumRateSeconds = 0.05;

double ToSeconds(std::chrono::steady_clock::duration Duration) {
    return static_cast<double>(std::chrono::nanoseconds(Duration).count()) / 1e9;
}

double Fraction(std::uint64_t Done, std::uint64_t Total) {
    return std::min(1.0, static_cast<double>(Done) / static_cast<double>(Total));
}

// Cut off to a whole number of bytes; what is beyond the range of the result is its largest value.
std::uint64_t BytesPerSecond(std::uint64_t Bytes, double Seconds) {
    const double rate = static_cast<double>(Bytes) / Seconds;
    constexpr double kBeyondRange = 0x1p64;
    return rate < kBeyondRange ? static_cast<std::uint64_t>(rate)
                               : std::numeric_limits<std::uint64_t>::max();
}

// The average since the start, for as long as the samples give no rate.
std::uint64_t AverageRate(std::uint64_t DoneBytes, double ElapsedSeconds, bool bFinished) {
    if (DoneBytes == 0 || (ElapsedSeconds <= kMinimumRateSeconds && !bFinished)) {
        return 0;
    }
    const double rateSeconds = std::max(ElapsedSeconds, kMinimumRateSeconds);
    return BytesPerSecond(DoneBytes, rateSeconds);
}

double OverallFraction(const TarvaneTransferUiSnapshot& Ui, bool bFinished) {
    if (Ui.TotalBytes > 0) {
        return Fraction(Ui.DoneBytes, Ui.TotalBytes);
    }
    if (Ui.TotalItems > 0) {
        return Fraction(Ui.DoneItems, Ui.TotalItems);
    }
    return bFinished ? 1.0 : 0.0;
}

// An entry without bytes of its own shows the overall fraction.
double FileFraction(const TarvaneTransferUiSnapshot& Ui, TarvaneTransferStage Stage) {
    if (Ui.CurrentFileTotalBytes > 0) {
        return Fraction(Ui.CurrentFileDoneBytes, Ui.CurrentFileTotalBytes);
    }
    if (Stage == TarvaneTransferStage::Preparing || Stage == TarvaneTransferStage::RemovingSource) {
        return 0.0;
    }
    return Ui.OverallProgress01;
}

std::string StageLine(TarvaneTransferStage Stage, const std::string& StatusText) {
    const std::string label = TransferStageLabel(Stage);
    if (StatusText.empty() || StatusText == label) {
        return "Stage: " + label;
    }
    return "Stage: " + label + " | " + StatusText;
}

std::string PathLine(const std::string& CurrentPath) {
    static constexpr std::size_t kShownPathBytes = 88;
    if (CurrentPath.empty()) {
        return "Current: Waiting...";
    }
    return "Current: " + ElideMiddle(CurrentPath, kShownPathBytes);
}

std::string OverallLine(const TarvaneTransferUiSnapshot& Ui) {
    const std::string items = std::to_string(Ui.DoneItems) + " / " + std::to_string(Ui.TotalItems);
    if (Ui.TotalBytes == 0) {
        return "Overall items " + items;
    }
    return "Overall " + FormatBinarySize(Ui.DoneBytes) + " / " + FormatBinarySize(Ui.TotalBytes) +
           " | Items " + items;
}

double EstimateRemainingSeconds(const TarvaneTransferUiSnapshot& Ui) {
    if (Ui.DoneBytes < Ui.TotalBytes && Ui.TransferRateBytesPerSecond > 0) {
        return static_cast<double>(Ui.TotalBytes - Ui.DoneBytes) /
               static_cast<double>(Ui.TransferRateBytesPerSecond);
    }
    return Ui.bFinished ? 0.0 : -1.0;
}

// A finished job's line ends with its message. An empty message leaves the separator standing,
// which is deliberate: the line of a finished job always has this fourth field.
std::string IoLine(const TarvaneTransferUiSnapshot& Ui) {
    const std::uint64_t rate = Ui.TransferRateBytesPerSecond;
    std::string line = "Rate " + (rate > 0 ? FormatRate(rate) : std::string("--")) + " | Spent " +
                       FormatDurationShort(Ui.ElapsedSeconds) + " | Remaining " +
                       FormatDurationShort(Ui.RemainingSeconds);
    if (Ui.bFinished) {
        line += " | " + Ui.MessageText;
    }
    return line;
}

} // namespace

// The queue is never walked: its two ends are enough. 0 when it cannot tell.
// Requires: Mutex is held.
std::uint64_t TarvaneTransferJob::SampledRateBytesPerSecond() const {
    if (ByteSamples.size() < 2) {
        return 0;
    }
    const ByteSample& first = ByteSamples.front();
    const ByteSample& last = ByteSamples.back();
    const double sampleSeconds = ToSeconds(last.first - first.first);
    if (!(sampleSeconds > kMinimumRateSeconds) || last.second < first.second) {
        return 0;
    }
    return BytesPerSecond(last.second - first.second, sampleSeconds);
}

TarvaneTransferUiSnapshot TarvaneTransferJob::MakeUiSnapshot() const {
    TarvaneTransferUiSnapshot ui;
    const TarvaneTransferStage stage = Stage;
    ui.TotalItems = ItemsTotal;
    ui.DoneItems = ItemsDone;
    ui.TotalBytes = BytesTotal;
    ui.DoneBytes = BytesDone;
    ui.CurrentFileTotalBytes = CurrentFileTotalBytes;
    ui.CurrentFileDoneBytes = CurrentFileDoneBytes;
    const auto now = std::chrono::steady_clock::now();
    const double elapsedSeconds = ToSeconds(now - StartedAt);

    std::string currentPath;
    std::string statusText;
    std::uint64_t sampledRateBytes = 0;
    {
        const std::lock_guard lock(Mutex);
        currentPath = CurrentPath;
        statusText = StatusText;
        sampledRateBytes = SampledRateBytesPerSecond();
    }

    if (sampledRateBytes == 0) {
        sampledRateBytes = AverageRate(ui.DoneBytes, elapsedSeconds, Finished);
    }
    ui.OverallProgress01 = OverallFraction(ui, Finished);
    ui.FileProgress01 = FileFraction(ui, stage);
    ui.bFinished = Finished;
    ui.bSucceeded = Succeeded;
    ui.bCanceled = Canceled;
    ui.bCancelRequested = CancelRequested && !ui.bFinished;
    ui.TransferRateBytesPerSecond = sampledRateBytes;
    ui.ElapsedSeconds = elapsedSeconds;
    ui.MessageText = statusText;
    ui.StageText = StageLine(stage, statusText);
    ui.PathText = PathLine(currentPath);
    ui.OverallText = OverallLine(ui);
    ui.RemainingSeconds = EstimateRemainingSeconds(ui);
    ui.IoText = IoLine(ui);
    ui.HintText = ui.bCancelRequested
                      ? "Canceling transfer. Waiting for the current filesystem step to finish."
                      : "Press Esc to cancel. Partial destination files may remain after a cancel.";
    return ui;
}

// -------------------------------------------------------------------------------------------------
// [registry] Job registry and job list
//
// The registry refers to jobs weakly, so listing never keeps one alive. Both operations drop the
// entries of jobs that are gone. Its mutex is held through a whole collection and comes before each
// job's Mutex.
// -------------------------------------------------------------------------------------------------

namespace {

std::mutex gTransferRegistryMutex;
std::vector<std::weak_ptr<TarvaneTransferJob>> gTransferRegistry;

} // namespace

TarvaneTransferJobSnapshot TarvaneTransferJob::MakeJobSnapshot() const {
    static constexpr std::string_view kPathPrefix = "Current: ";
    const TarvaneTransferUiSnapshot ui = MakeUiSnapshot();
    TarvaneTransferJobSnapshot row;
    row.Source = SourceLabel.empty() ? "Tarvane" : SourceLabel;
    row.Job = TransferVerb(bMove);
    row.State = TransferStageLabel(Stage);
    row.Progress = FormatPercentString(ui.OverallProgress01);
    row.Detail = ui.PathText;
    if (row.Detail.starts_with(kPathPrefix)) {
        row.Detail.erase(0, kPathPrefix.size());
    }
    row.Detail = row.Detail.empty() ? ui.IoText : row.Detail + " | " + ui.IoText;
    return row;
}

void RegisterTarvaneTransferJob(const std::shared_ptr<TarvaneTransferJob>& Job) {
    if (!Job) {
        return;
    }
    const std::lock_guard lock(gTransferRegistryMutex);
    std::erase_if(gTransferRegistry, [](const auto& Entry) { return Entry.expired(); });
    gTransferRegistry.push_back(Job);
}

std::vector<TarvaneTransferJobSnapshot> CollectActiveTarvaneTransferJobSnapshots() {
    std::vector<TarvaneTransferJobSnapshot> rows;
    const std::lock_guard lock(gTransferRegistryMutex);
    std::erase_if(gTransferRegistry, [&rows](const auto& Entry) {
        const std::shared_ptr<TarvaneTransferJob> job = Entry.lock();
        if (!job) {
            return true;
        }
        if (!job->IsFinished()) {
            rows.push_back(job->MakeJobSnapshot());
        }
        return false;
    });
    return rows;
}

// -------------------------------------------------------------------------------------------------
// [prepare] Destination preparation and skip accounting
//
// Worker thread. What the copiers share: the folder of a destination, the removal of partial
// results, and counting what is skipped so that progress still reaches its total, but for the bytes
// behind links.
// -------------------------------------------------------------------------------------------------

namespace {

bool EnsureDestinationParent(const fs::path& Path, std::string& ErrorMessage) {
    const std::string parent(Path.native(), 0, Path.native().rfind('/') + 1);
    if (parent.empty() || PathStatus(parent.c_str()).IsDirectory()) {
        return true;
    }
    std::error_code ec;
    fs::create_directories(Path.parent_path(), ec);
    if (ec) {
        return Fail(ErrorMessage, "Failed to create destination directory: " + ec.message());
    }
    return true;
}

// Cleans up after a failure that is already being reported, so its own errors are nobody's news.
void RemovePathIfPresent(const fs::path& Path) {
    std::error_code ec;
    if (fs::is_directory(Path, ec)) {
        fs::remove_all(Path, ec);
    } else {
        fs::remove(Path, ec);
    }
}

bool IsSameLink(const fs::path& Link, const fs::path& Path) {
    struct stat link {};
    struct stat info {};
    return ::lstat(Link.c_str(), &link) == 0 && ::lstat(Path.c_str(), &info) == 0 &&
           link.st_ino == info.st_ino && link.st_dev == info.st_dev;
}

// True when Path, or a link on its way, lies in Directory, or is the link that Directory is:
// removing that would take it along. What is to be replaced is asked this first, so that an item
// that fails leaves its source alone. Links that do not come to an end count as leading there.
bool LeadsInto(const fs::path& Directory, const fs::path& Path, int& InOutLinksLeft) {
    std::error_code ec;
    const bool removesLinkOnly = fs::is_symlink(Directory, ec);
    for (fs::path step = Path; step.has_relative_path(); step = step.parent_path()) {
        if (removesLinkOnly
                ? IsSameLink(Directory, step)
                : TarvanePathIsInside(Directory, step) ||
                      TarvanePathsEquivalentOrSame(Directory, step.parent_path() / ".")) {
            return true;
        }
        const fs::path next = fs::read_symlink(step, ec);
        if (!ec && (--InOutLinksLeft < 0 ||
                    LeadsInto(Directory, step.parent_path() / next, InOutLinksLeft))) {
            return true;
        }
    }
    return false;
}

bool LeadsInto(const fs::path& Directory, const fs::path& Path) {
    constexpr int kMaxLinks = 1000;
    int linksLeft = kMaxLinks;
    return LeadsInto(Directory, Path, linksLeft);
}

// Counts: Path and every entry below it as an item each, regular files with their bytes; links are
// not followed. Errors: what was counted before a failure stays counted.
bool MarkSkippedPath(const fs::path& Path, TarvaneTransferJob& Job, std::string& ErrorMessage) {
    struct stat info {};
    if (::lstat(Path.c_str(), &info) != 0) {
        return Fail(ErrorMessage, std::generic_category().message(errno));
    }
    if (S_ISDIR(info.st_mode)) {
        Job.SetCurrentPath(Path.native(), 0);
        Job.MarkItemsDone(1);
        Job.MarkSkipped(1, 0);
        // A folder that cannot be listed counts as empty.
        DirectoryListing listing(Path);
        while (const dirent* entry = listing.Next()) {
            if (!MarkSkippedPath(Path / entry->d_name, Job, ErrorMessage)) {
                return false;
            }
        }
        return true;
    }

    const auto size =
        S_ISREG(info.st_mode) ? static_cast<std::uint64_t>(info.st_size) : std::uint64_t{0};
    Job.SetCurrentPath(Path.native(), size);
    if (size > 0) {
        Job.AddBytesDone(size);
        Job.SetCurrentFileProgress(size, size);
    }
    Job.MarkItemsDone(1);
    Job.MarkSkipped(1, size);
    return true;
}

} // namespace

// -------------------------------------------------------------------------------------------------
// [conflict] File conflict records and resolution
//
// Worker thread. ResolveLocalFileConflict turns a taken name into three results for a copier:
// whether to go on, the path to write, and whether to skip. It blocks only while the interface
// decides; no lock is held while files are compared.
// -------------------------------------------------------------------------------------------------

namespace {

std::int64_t ConflictFileTimeTicks(fs::file_time_type Time) {
    return std::chrono::nanoseconds(Time.time_since_epoch()).count();
}

fs::file_time_type FileTimeOf(std::int64_t Ticks) {
    return fs::file_time_type(std::chrono::nanoseconds(Ticks));
}

// The fraction of a second is cut off, so a file written in that second shows that second; before
// 1970 it shows the next one, as cutting off goes towards 0.
std::string FormatConflictFileTime(fs::file_time_type Time) {
    const auto systemTime = std::chrono::file_clock::to_sys(Time);
    const std::time_t seconds =
        std::chrono::duration_cast<std::chrono::seconds>(systemTime.time_since_epoch()).count();
    std::tm calendar{};
    localtime_r(&seconds, &calendar);
    std::array<char, 64> text{};
    const std::size_t length =
        std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &calendar);
    return {text.data(), length};
}

// False for a time that the file clock cannot tell: it begins in 1881 and ends in 2466, and what
// lies beyond the end of the system's clock, in 2262, is left out too.
bool ReadModifiedTime(const PathStatus& Status, std::int64_t& OutTicks) {
    using std::chrono::seconds;
    static const std::int64_t earliest =
        std::chrono::file_clock::to_sys(fs::file_time_type::min()).time_since_epoch() / seconds(1);
    constexpr std::int64_t kEnd = std::chrono::nanoseconds::max() / seconds(1);
    const timespec& time = Status.ModifiedTime();
    if (Status.ErrorCode() || time.tv_sec < earliest || time.tv_sec >= kEnd) {
        return false;
    }
    const std::chrono::sys_seconds wholeSeconds{seconds(time.tv_sec)};
    OutTicks = ConflictFileTimeTicks(std::chrono::file_clock::from_sys(wholeSeconds) +
                                     std::chrono::nanoseconds(time.tv_nsec));
    return true;
}

// A conflict without the texts of its dates, which only a person needs: writing them takes longer
// than all the rest. What cannot be found out stays unset and is no error.
TarvaneTransferConflict MakeUndatedConflict(TarvaneTransferConflictKind Kind, const MetPath& Source,
                                            const MetPath& Destination) {
    TarvaneTransferConflict conflict;
    conflict.Kind = Kind;
    conflict.SourcePath = Source.Path.native();
    conflict.DestinationPath = Destination.Path.native();
    conflict.bSourceDirectory = Source.Status.IsDirectory();
    conflict.bDestinationDirectory = Destination.Status.IsDirectory();
    if (Source.Status.IsRegularFile()) {
        conflict.bSourceHasSize = true;
        conflict.SourceSizeBytes = Source.Status.SizeBytes();
    }
    if (Destination.Status.IsRegularFile()) {
        conflict.bDestinationHasSize = true;
        conflict.DestinationSizeBytes = Destination.Status.SizeBytes();
    }
    conflict.bSourceHasModifiedTime = ReadModifiedTime(Source.Status, conflict.SourceModifiedTicks);
    conflict.bDestinationHasModifiedTime =
        ReadModifiedTime(Destination.Status, conflict.DestinationModifiedTicks);
    return conflict;
}

TarvaneTransferConflict MakeLocalConflict(TarvaneTransferConflictKind Kind, const MetPath& Source,
                                          const MetPath& Destination) {
    TarvaneTransferConflict conflict = MakeUndatedConflict(Kind, Source, Destination);
    if (conflict.bSourceHasModifiedTime) {
        conflict.SourceDate = FormatConflictFileTime(FileTimeOf(conflict.SourceModifiedTicks));
    }
    if (conflict.bDestinationHasModifiedTime) {
        conflict.DestinationDate =
            FormatConflictFileTime(FileTimeOf(conflict.DestinationModifiedTicks));
    }
    return conflict;
}

bool ShouldOverwriteOlder(const TarvaneTransferConflict& Conflict) {
    return Conflict.bSourceHasModifiedTime && Conflict.bDestinationHasModifiedTime &&
           Conflict.SourceModifiedTicks > Conflict.DestinationModifiedTicks;
}

// Errors: every failure reads as a difference.
bool LocalFilesHaveSameContent(const fs::path& Source, const fs::path& Destination) {
    std::error_code ec;
    const std::uintmax_t sourceSize = fs::file_size(Source, ec);
    if (ec) {
        return false;
    }
    const std::uintmax_t destinationSize = fs::file_size(Destination, ec);
    if (ec || sourceSize != destinationSize) {
        return false;
    }
    std::ifstream source(Source, std::ios::binary);
    std::ifstream destination(Destination, std::ios::binary);
    if (!source.is_open() || !destination.is_open()) {
        return false;
    }

    const auto sourceBuffer = std::make_unique<char[]>(kTransferBufferBytes);
    const auto destinationBuffer = std::make_unique<char[]>(kTransferBufferBytes);
    while (source) {
        source.read(sourceBuffer.get(), kTransferBufferBytes);
        destination.read(destinationBuffer.get(), kTransferBufferBytes);
        const std::streamsize sourceRead = source.gcount();
        const std::streamsize destinationRead = destination.gcount();
        if (sourceRead != destinationRead) {
            return false;
        }
        if (sourceRead == 0) {
            break;
        }
        if (std::memcmp(sourceBuffer.get(), destinationBuffer.get(),
                        static_cast<std::size_t>(sourceRead)) != 0) {
            return false;
        }
    }
    return !source.bad() && !destination.bad();
}

// The new name is a complete path and is checked once; a taken one is not asked about again.
bool UseRenameTarget(const std::string& RenamePath, fs::path& OutDestination,
                     std::string& ErrorMessage) {
    if (RenamePath.empty()) {
        return Fail(ErrorMessage, "Rename target cannot be empty.");
    }
    OutDestination = RenamePath;
    const PathStatus status(OutDestination.c_str());
    if (status.IsUnknown()) {
        return Fail(ErrorMessage, "Failed checking rename target: " + status.ErrorCode().message());
    }
    if (status.Exists()) {
        return Fail(ErrorMessage, "Rename target already exists: " + OutDestination.string());
    }
    return true;
}

bool ApplyFileAnswer(TarvaneTransferConflictAction Action, const std::string& RenamePath,
                     const TarvaneTransferConflict& Conflict, fs::path& OutDestination,
                     bool& OutSkip, std::string& ErrorMessage) {
    switch (Action) {
    case TarvaneTransferConflictAction::Skip:
    case TarvaneTransferConflictAction::SkipAll:
        OutSkip = true;
        return true;
    case TarvaneTransferConflictAction::Overwrite:
    case TarvaneTransferConflictAction::OverwriteAll:
        return true;
    case TarvaneTransferConflictAction::Rename:
        return UseRenameTarget(RenamePath, OutDestination, ErrorMessage);
    case TarvaneTransferConflictAction::CompareByContent:
        OutSkip = LocalFilesHaveSameContent(Conflict.SourcePath, Conflict.DestinationPath);
        return true;
    case TarvaneTransferConflictAction::OverwriteAllOlder:
        OutSkip = !ShouldOverwriteOlder(Conflict);
        return true;
    case TarvaneTransferConflictAction::Merge:
    case TarvaneTransferConflictAction::MergeAll:
    case TarvaneTransferConflictAction::Cancel:
        break;
    }
    return Fail(ErrorMessage, "Invalid file conflict decision.");
}

// Whether the status of a destination is one from before an answer, which may take any time.
bool MayHaveWaited(const MetPath& Destination, TarvaneTransferConflictPolicy ConflictPolicy) {
    return ConflictPolicy == TarvaneTransferConflictPolicy::Ask && Destination.Status.Exists();
}

// OutDestination changes only where the answer gives another name; it may be the same object as
// Destination's path.
bool ResolveLocalFileConflict(TarvaneTransferJob& Job, const MetPath& Source,
                              const MetPath& Destination,
                              TarvaneTransferConflictPolicy ConflictPolicy,
                              fs::path& OutDestination, bool& OutSkip, std::string& ErrorMessage) {
    OutSkip = false;
    if (Destination.Status.IsUnknown()) {
        return Fail(ErrorMessage, "Failed checking destination '" + Destination.Path.native() +
                                      "': " + Destination.Status.ErrorCode().message());
    }
    if (!Destination.Status.Exists()) {
        return true;
    }

    if (ConflictPolicy == TarvaneTransferConflictPolicy::Skip) {
        OutSkip = true;
        return true;
    }
    if (ConflictPolicy != TarvaneTransferConflictPolicy::Ask) {
        return true;
    }

    constexpr auto kKind = TarvaneTransferConflictKind::File;
    const TarvaneTransferConflict conflict = Job.RemembersAnswerFor(kKind)
                                                 ? MakeUndatedConflict(kKind, Source, Destination)
                                                 : MakeLocalConflict(kKind, Source, Destination);
    TarvaneTransferConflictAction action = TarvaneTransferConflictAction::Overwrite;
    std::string renamePath;
    if (!Job.WaitForConflict(conflict, action, renamePath)) {
        return Fail(ErrorMessage, "Transfer canceled.");
    }
    return ApplyFileAnswer(action, renamePath, conflict, OutDestination, OutSkip, ErrorMessage);
}

} // namespace

// -------------------------------------------------------------------------------------------------
// [removable] Removable-destination probe
//
// Worker thread, once per file. Asks the kernel's block-device tree for the device number that
// holds the destination and nothing else: a file system on a partition has no attribute there and
// is not removable, deliberately. The kernel is asked each time; only the attribute of the device
// that was asked last stays open during a run, as opening it takes longer than all of the rest.
// -------------------------------------------------------------------------------------------------

namespace {

// A device's attribute, which is open from the first question to the end of the scope, as is the
// folder that it was found from.
class RemovableAttribute {
public:
    RemovableAttribute() = default;
    ~RemovableAttribute() {
        Close(Descriptor);
        Close(Devices);
    }
    RemovableAttribute(const RemovableAttribute&) = delete;
    RemovableAttribute& operator=(const RemovableAttribute&) = delete;

    bool SaysRemovable(dev_t Asked) {
        std::optional<long> value = Asked == Device ? Read() : std::nullopt;
        if (!value) {
            // Another device, or one with the number of a device that has gone.
            Open(Asked);
            value = Read();
        }
        return value == 1;
    }

private:
    void Open(dev_t Asked) {
        Close(Descriptor);
        Device = Asked;
        if (Devices < 0) {
            Devices = ::open("/sys/dev/block", O_PATH | O_DIRECTORY | O_CLOEXEC);
        }
        const std::string path =
            std::to_string(major(Asked)) + ":" + std::to_string(minor(Asked)) + "/removable";
        if (::faccessat(Devices, path.c_str(), F_OK, 0) == 0) {
            Descriptor = ::openat(Devices, path.c_str(), O_RDONLY | O_CLOEXEC);
        }
    }
    std::optional<long> Read() const {
        std::array<char, 32> text{};
        if (Descriptor < 0 || ::pread(Descriptor, text.data(), text.size() - 1, 0) < 0) {
            return std::nullopt;
        }
        return std::strtol(text.data(), nullptr, 10);
    }
    static void Close(int& InOutDescriptor) {
        if (InOutDescriptor >= 0) {
            ::close(std::exchange(InOutDescriptor, -1));
        }
    }

    dev_t Device = 0;
    int Descriptor = -1;
    // The folder of all devices: where there is none for a file system, as with one in memory, each
    // file asks for it anew, and to open it by the whole path would take thrice as long.
    int Devices = -1;
};

// The one of this thread's run, for all of its files.
struct AttributeOfRun : RemovableAttribute {
    AttributeOfRun() { gCurrent = this; }
    ~AttributeOfRun() { gCurrent = nullptr; }

    static inline thread_local RemovableAttribute* gCurrent = nullptr;
};

// Errors: false, silently; only the existence check throws (filesystem_error), when a folder on the
// way cannot be searched.
bool IsRemovableDestination(const fs::path& Destination) {
    struct stat info {};
    if (::stat(Destination.c_str(), &info) != 0) {
        const fs::path probe = fs::exists(Destination) ? Destination : Destination.parent_path();
        if (probe.empty() || ::stat(probe.c_str(), &info) != 0) {
            return false;
        }
    }
    RemovableAttribute ofThisFile;
    RemovableAttribute* const ofRun = AttributeOfRun::gCurrent;
    return (ofRun != nullptr ? *ofRun : ofThisFile).SaysRemovable(info.st_dev);
}

} // namespace

// -------------------------------------------------------------------------------------------------
// [streams] File streams of a run
//
// Worker thread. Making a pair of streams takes longer than opening it, so a run has one pair for
// all its files; a file outside a run has its own.
// -------------------------------------------------------------------------------------------------

namespace {

// On the runner's stack: a thread's own objects have to be registered for the thread's end, and
// where memory runs out in that, the process ends.
struct StreamsOfRun {
    StreamsOfRun() { gCurrent = this; }
    ~StreamsOfRun() { gCurrent = nullptr; }
    StreamsOfRun(const StreamsOfRun&) = delete;
    StreamsOfRun& operator=(const StreamsOfRun&) = delete;

    std::ifstream In;
    std::ofstream Out;

    static inline thread_local StreamsOfRun* gCurrent = nullptr;
};

// The streams of the file that is copied, closed at the end of the scope.
class FileStreams {
public:
    FileStreams()
        : Streams(StreamsOfRun::gCurrent != nullptr ? *StreamsOfRun::gCurrent
                                                    : OfThisFile.emplace()) {}
    ~FileStreams() {
        Streams.In.close();
        Streams.Out.close();
    }
    FileStreams(const FileStreams&) = delete;
    FileStreams& operator=(const FileStreams&) = delete;

    std::ifstream& In() { return Streams.In; }
    std::ofstream& Out() { return Streams.Out; }

private:
    std::optional<StreamsOfRun> OfThisFile;
    StreamsOfRun& Streams;
};

} // namespace

// -------------------------------------------------------------------------------------------------
// [file] File copier
//
// Worker thread. CopyFileWithProgress copies one regular file: resolve the conflict, clear a
// directory at the target, copy the blocks, pace the writes, and for a move remove the source.
// Every failure after the destination was opened removes it; each such exit is written out, because
// what comes before the removal differs. An exception goes on after the same clean-up.
// -------------------------------------------------------------------------------------------------

namespace {

// Sleeps until the average rate since CopyStarted is back at the limit, however long that takes.
void PaceWrites(std::uint64_t CopiedBytes, std::chrono::steady_clock::time_point CopyStarted) {
    const double targetElapsed =
        static_cast<double>(CopiedBytes) / static_cast<double>(kInteractiveCopyBytesPerSecond);
    const std::chrono::nanoseconds elapsed = std::chrono::steady_clock::now() - CopyStarted;
    const double remaining = targetElapsed * 1e9 - static_cast<double>(elapsed.count());
    if (!(remaining > 0.0)) {
        return;
    }
    timespec wait{};
    wait.tv_sec = static_cast<std::time_t>(remaining / 1e9);
    wait.tv_nsec = static_cast<long>(remaining - static_cast<double>(wait.tv_sec) * 1e9);
    while (nanosleep(&wait, &wait) != 0 && errno == EINTR) {}
}

// An exception of the probe is an ordinary failure of the copy.
bool ProbeRemovable(const fs::path& Target, bool& OutRemovable, std::string& ErrorMessage) {
    try {
        OutRemovable = IsRemovableDestination(Target);
    } catch (const fs::filesystem_error& error) {
        return Fail(ErrorMessage, "Failed checking destination '" + Target.string() +
                                      "': " + error.code().message());
    }
    return true;
}

// Counts: bytes, a block at a time; not taken back on failure. Errors: the target is removed.
bool CopyBlocks(std::ifstream& In, std::ofstream& Out, const fs::path& Target,
                TarvaneTransferJob& Job, std::string& ErrorMessage) {
    const auto buffer = std::make_unique_for_overwrite<char[]>(kTransferBufferBytes);
    bool paceForRemovableMedia = false;
    if (!ProbeRemovable(Target, paceForRemovableMedia, ErrorMessage)) {
        Out.close();
        RemovePathIfPresent(Target);
        return false;
    }
    const auto copyStarted = std::chrono::steady_clock::now();
    std::uint64_t copiedBytes = 0;
    while (In) {
        if (Job.IsCancelRequested()) {
            In.close();
            Out.close();
            RemovePathIfPresent(Target);
            return Fail(ErrorMessage, "Transfer canceled.");
        }
        In.read(buffer.get(), kTransferBufferBytes);
        const std::streamsize readBytes = In.gcount();
        if (readBytes <= 0) {
            break;
        }
        Out.write(buffer.get(), readBytes);
        if (!Out) {
            Out.close();
            RemovePathIfPresent(Target);
            return Fail(ErrorMessage, "Failed while writing destination file.");
        }
        Job.AddBytesDone(static_cast<std::uint64_t>(readBytes));
        copiedBytes += static_cast<std::uint64_t>(readBytes);
        if (paceForRemovableMedia) {
            PaceWrites(copiedBytes, copyStarted);
        }
    }
    if (In.bad()) {
        Out.close();
        RemovePathIfPresent(Target);
        return Fail(ErrorMessage, "Failed while reading source file.");
    }
    Out.flush();
    if (!Out) {
        Out.close();
        RemovePathIfPresent(Target);
        return Fail(ErrorMessage, "Failed to flush destination file.");
    }
    return true;
}

// Makes room for a file at Target, where no directory may stand. An existing file is left for the
// open to truncate, and a folder that is missing for the open to miss.
bool PrepareFileTarget(const MetPath& Source, const MetPath& Target, TarvaneTransferJob& Job,
                       std::string& ErrorMessage) {
    const std::error_code error = Target.Status.ErrorCode();
    if (error && error != std::errc::no_such_file_or_directory) {
        return EnsureDestinationParent(Target.Path, ErrorMessage) &&
               Fail(ErrorMessage, "Could not inspect destination '" + Target.Path.native() +
                                      "': " + error.message());
    }
    if (!Target.Status.IsDirectory()) {
        return true;
    }
    if (LeadsInto(Target.Path, Source.Path)) {
        Job.SetCurrentPath(Source.Path.native(), Source.Status.SizeBytes());
        return Fail(ErrorMessage, "Failed to open source file.");
    }
    std::error_code ec;
    fs::remove_all(Target.Path, ec);
    if (ec) {
        return Fail(ErrorMessage, "Failed to replace destination directory: " + ec.message());
    }
    return true;
}

// After an exception; a Target that Out did not get to open stays.
void RemovePartialTarget(std::ofstream& Out, const fs::path& Target) {
    if (Out.is_open()) {
        Out.close();
        RemovePathIfPresent(Target);
    }
}

// Opens Out at Target and fills it. Errors: an exception leaves no partial file either.
bool FillTarget(std::ifstream& In, std::ofstream& Out, const fs::path& Target,
                TarvaneTransferJob& Job, std::string& ErrorMessage) {
    try {
        Out.open(Target, std::ios::binary | std::ios::trunc);
        if (!Out.is_open()) {
            // Its folder is missing in the rarest of cases, and looking for it takes longer.
            if (!EnsureDestinationParent(Target, ErrorMessage)) {
                return false;
            }
            Out.open(Target, std::ios::binary | std::ios::trunc);
        }
        if (!Out.is_open()) {
            return Fail(ErrorMessage, "Failed to open destination file.");
        }
        return CopyBlocks(In, Out, Target, Job, ErrorMessage);
    } catch (...) {
        RemovePartialTarget(Out, Target);
        throw;
    }
}

// What is left to do when all of the data is at the destination.
TransferCopyResult FinishFile(const MetPath& Source, TarvaneTransferJob& Job, bool bMove,
                              std::string& ErrorMessage) {
    const std::uint64_t fileSize = Source.Status.SizeBytes();
    Job.SetCurrentFileProgress(fileSize, fileSize);
    Job.MarkItemsDone(1);
    if (bMove) {
        std::error_code ec;
        fs::remove(Source.Path, ec);
        if (ec) {
            return FailCopy(ErrorMessage, "Copied data but could not remove original '" +
                                              Source.Path.native() + "': " + ec.message());
        }
    }
    return TransferCopyResult::Succeeded;
}

// Copies where nothing is expected to stand: opening a file that must be new says the same as a
// status query before it, which takes a tenth of a small file's time. No result: nothing was done,
// and CopyFileWithProgress says why or copies.
std::optional<TransferCopyResult> CopyNewFile(const MetPath& Source, const fs::path& Destination,
                                              TarvaneTransferJob& Job, bool bMove,
                                              std::string& ErrorMessage) {
    FileStreams streams;
    streams.In().open(Source.Path, std::ios::binary);
    if (!streams.In().is_open() || Job.IsCancelRequested()) {
        return std::nullopt;
    }
    try {
        // C++23 calls it noreplace.
        streams.Out().open(Destination, std::ios::binary | std::ios::__noreplace);
        if (!streams.Out().is_open()) {
            return std::nullopt;
        }
        Job.SetCurrentPath(Source.Path.native(), Source.Status.SizeBytes());
        if (!CopyBlocks(streams.In(), streams.Out(), Destination, Job, ErrorMessage)) {
            return TransferCopyResult::Failed;
        }
    } catch (...) {
        RemovePartialTarget(streams.Out(), Destination);
        throw;
    }
    return FinishFile(Source, Job, bMove, ErrorMessage);
}

// Carries over the data only: the destination has the permissions, owner and times of a new file.
// Counts: the file's bytes and one item, also when it is skipped. Errors: a destination that was
// opened is removed, but where removing a move's source failed the complete copy stays.
[[gnu::noinline]] TransferCopyResult
CopyFileWithProgress(const MetPath& Source, const MetPath& Destination, TarvaneTransferJob& Job,
                     TarvaneTransferConflictPolicy ConflictPolicy, bool bMove,
                     std::string& ErrorMessage) {
    if (Job.IsCancelRequested()) {
        return FailCopy(ErrorMessage, "Transfer canceled.");
    }
    const std::string& sourceText = Source.Path.native();
    if (const std::error_code error = Source.Status.ErrorCode()) {
        return FailCopy(ErrorMessage,
                        "Could not read source file '" + sourceText + "': " + error.message());
    }
    const std::uint64_t fileSize = Source.Status.SizeBytes();

    fs::path otherName;
    bool skip = false;
    if (!ResolveLocalFileConflict(Job, Source, Destination, ConflictPolicy, otherName, skip,
                                  ErrorMessage)) {
        return TransferCopyResult::Failed;
    }
    if (skip) {
        Job.SetCurrentPath(sourceText, fileSize);
        Job.AddBytesDone(fileSize);
        Job.SetCurrentFileProgress(fileSize, fileSize);
        Job.MarkItemsDone(1);
        Job.MarkSkipped(1, fileSize);
        return TransferCopyResult::Skipped;
    }
    const fs::path& target = otherName.empty() ? Destination.Path : otherName;
    const MetPath current = MayHaveWaited(Destination, ConflictPolicy) ? target : Destination;
    if (!PrepareFileTarget(Source, current, Job, ErrorMessage)) {
        return TransferCopyResult::Failed;
    }

    Job.SetCurrentPath(sourceText, fileSize);
    FileStreams streams;
    streams.In().open(Source.Path, std::ios::binary);
    if (!streams.In().is_open()) {
        return EnsureDestinationParent(target, ErrorMessage)
                   ? FailCopy(ErrorMessage, "Failed to open source file.")
                   : TransferCopyResult::Failed;
    }
    if (!FillTarget(streams.In(), streams.Out(), target, Job, ErrorMessage)) {
        return TransferCopyResult::Failed;
    }
    return FinishFile(Source, Job, bMove, ErrorMessage);
}

} // namespace

// -------------------------------------------------------------------------------------------------
// [cd-range] CD track range reader
//
// Worker thread. GetCddaTrackFrameRange reads the table of contents through the CD-ROM driver.
// Frame numbers are absolute MSF positions: the two seconds (150 frames) before the first track are
// deliberately not subtracted, so track 1 of a normal disc starts at frame 150.
// -------------------------------------------------------------------------------------------------

namespace {

std::string SystemErrorText() {
    return std::strerror(errno);
}

std::int32_t CddaMsfToFrames(const cdrom_msf0& Msf) {
    return Msf.minute * 4500 + Msf.second * 75 + Msf.frame;
}

// Requires: Fd is an open drive; the caller closes it, also after an exception.
bool ReadTrackBounds(int Fd, const std::string& DevicePath, int RequestedTrack,
                     std::int32_t& OutStartFrame, std::int32_t& OutEndFrame,
                     std::string& ErrorMessage) {
    cdrom_tochdr header{};
    if (ioctl(Fd, CDROMREADTOCHDR, &header) < 0) {
        return Fail(ErrorMessage,
                    "No readable audio CD TOC in " + DevicePath + ": " + SystemErrorText());
    }
    if (RequestedTrack < header.cdth_trk0 || RequestedTrack > header.cdth_trk1) {
        return Fail(ErrorMessage, "Audio CD track is outside the disc TOC.");
    }

    cdrom_tocentry trackEntry{};
    trackEntry.cdte_track = static_cast<__u8>(RequestedTrack);
    trackEntry.cdte_format = CDROM_MSF;
    if (ioctl(Fd, CDROMREADTOCENTRY, &trackEntry) < 0) {
        return Fail(ErrorMessage, "Could not read audio CD track start: " + SystemErrorText());
    }
    if ((trackEntry.cdte_ctrl & CDROM_DATA_TRACK) != 0) {
        return Fail(ErrorMessage, "Selected CD track is a data track, not audio.");
    }
    OutStartFrame = CddaMsfToFrames(trackEntry.cdte_addr.msf);

    // A track ends where the next one begins, so the gap between them belongs to it.
    cdrom_tocentry nextEntry{};
    nextEntry.cdte_format = CDROM_MSF;
    nextEntry.cdte_track = RequestedTrack == header.cdth_trk1
                               ? static_cast<__u8>(CDROM_LEADOUT)
                               : static_cast<__u8>(RequestedTrack + 1);
    if (ioctl(Fd, CDROMREADTOCENTRY, &nextEntry) < 0) {
        return Fail(ErrorMessage, "Could not read audio CD track end: " + SystemErrorText());
    }
    OutEndFrame = CddaMsfToFrames(nextEntry.cdte_addr.msf);
    return true;
}

// The range is half-open. Errors: the drive is closed; the numbers stay as far as they were read.
bool GetCddaTrackFrameRange(const std::string& Source, std::int32_t& OutStartFrame,
                            std::int32_t& OutEndFrame, std::string& ErrorMessage) {
    OutStartFrame = 0;
    OutEndFrame = 0;
    const std::string devicePath = TarvaneCddaDeviceFromPath(Source);
    const int requestedTrack = TarvaneCddaTrackFromPath(Source);
    if (devicePath.empty() || requestedTrack <= 0) {
        return Fail(ErrorMessage, "Invalid audio CD track path.");
    }
    const int fd = open(devicePath.c_str(), O_RDONLY | O_NONBLOCK);
    if (fd < 0) {
        return Fail(ErrorMessage,
                    "Could not open CD drive " + devicePath + ": " + SystemErrorText());
    }
    bool read = false;
    try {
        read = ReadTrackBounds(fd, devicePath, requestedTrack, OutStartFrame, OutEndFrame,
                               ErrorMessage);
    } catch (...) {
        close(fd);
        throw;
    }
    close(fd);
    if (!read) {
        return false;
    }
    if (OutEndFrame <= OutStartFrame) {
        return Fail(ErrorMessage, "Audio CD track has an invalid frame range.");
    }
    return true;
}

} // namespace

// -------------------------------------------------------------------------------------------------
// [cd-wav] Track-to-WAV extraction
//
// Worker thread. ExtractCddaTrackToWav writes a track as the drive delivers it: no retry, no error
// correction, no byte swapping. The MSF positions of the range go to the drive as LBA addresses
// unchanged, deliberately: the audio starts two seconds after the position in the table of
// contents, and the last track's reads reach up to 149 frames past the lead-out.
// -------------------------------------------------------------------------------------------------

namespace {

void WriteLe16(std::ostream& Out, std::uint16_t Value) {
    Out.put(static_cast<char>(Value & 0xff));
    Out.put(static_cast<char>(Value >> 8));
}

void WriteLe32(std::ostream& Out, std::uint32_t Value) {
    WriteLe16(Out, static_cast<std::uint16_t>(Value & 0xffff));
    WriteLe16(Out, static_cast<std::uint16_t>(Value >> 16));
}

void WriteWavHeader(std::ostream& Out, std::uint32_t DataBytes) {
    Out.write("RIFF", 4);
    WriteLe32(Out, DataBytes + 36);
    Out.write("WAVE", 4);
    Out.write("fmt ", 4);
    WriteLe32(Out, 16);     // bytes of the format chunk
    WriteLe16(Out, 1);      // PCM
    WriteLe16(Out, 2);      // channels
    WriteLe32(Out, 44100);  // samples per second
    WriteLe32(Out, 176400); // bytes per second
    WriteLe16(Out, 4);      // bytes per stereo sample
    WriteLe16(Out, 16);     // bits per sample
    Out.write("data", 4);
    WriteLe32(Out, DataBytes);
}

// Requires: Out has the header, Fd is the open drive. Counts: bytes, a read at a time; not taken
// back on failure. Errors: Out and Fd are closed and Destination is removed, but for an exception,
// which may leave both open, and never one of them.
bool CopyCddaFrames(int Fd, std::int32_t StartFrame, std::int32_t EndFrame, std::ofstream& Out,
                    const fs::path& Destination, TarvaneTransferJob& Job,
                    std::string& ErrorMessage) {
    std::array<__u8, std::size_t{kFramesPerRead} * kCddaBytesPerFrame> buffer{};
    std::int32_t frame = StartFrame;
    while (frame < EndFrame) {
        if (Job.IsCancelRequested()) {
            Out.close();
            close(Fd);
            RemovePathIfPresent(Destination);
            return Fail(ErrorMessage, "Transfer canceled.");
        }
        const std::int32_t framesThisRead = std::min(EndFrame - frame, kFramesPerRead);
        cdrom_read_audio readAudio{};
        readAudio.addr.lba = frame;
        readAudio.addr_format = CDROM_LBA;
        readAudio.nframes = framesThisRead;
        readAudio.buf = buffer.data();
        if (ioctl(Fd, CDROMREADAUDIO, &readAudio) < 0) {
            Out.close();
            close(Fd);
            RemovePathIfPresent(Destination);
            // The error number is read after the clean-up, deliberately.
            return Fail(ErrorMessage, "Failed reading audio CD sectors: " + SystemErrorText());
        }
        const std::int32_t bytesRead = framesThisRead * kCddaBytesPerFrame;
        Out.write(reinterpret_cast<const char*>(buffer.data()), bytesRead);
        if (!Out) {
            Out.close();
            close(Fd);
            RemovePathIfPresent(Destination);
            return Fail(ErrorMessage, "Failed while writing WAV data.");
        }
        Job.AddBytesDone(static_cast<std::uint64_t>(bytesRead));
        frame += framesThisRead;
    }
    Out.flush();
    if (!Out) {
        Out.close();
        close(Fd);
        RemovePathIfPresent(Destination);
        return Fail(ErrorMessage, "Failed to flush destination WAV file.");
    }
    return true;
}

// Counts: the track's bytes and one item. Errors: a failure after the WAV was opened removes it;
// one before leaves the destination untouched.
bool ExtractCddaTrackToWav(const std::string& Source, const fs::path& Destination,
                           TarvaneTransferJob& Job, std::string& ErrorMessage) {
    if (Job.IsCancelRequested()) {
        return Fail(ErrorMessage, "Transfer canceled.");
    }
    if (!EnsureDestinationParent(Destination, ErrorMessage)) {
        return false;
    }
    std::int32_t startFrame = 0;
    std::int32_t endFrame = 0;
    if (!GetCddaTrackFrameRange(Source, startFrame, endFrame, ErrorMessage)) {
        return false;
    }
    const std::int64_t dataBytes64 = std::int64_t{endFrame - startFrame} * kCddaBytesPerFrame;
    if (dataBytes64 > std::numeric_limits<std::uint32_t>::max()) {
        return Fail(ErrorMessage, "Audio CD track is too large for a standard WAV file.");
    }
    const auto dataBytes = static_cast<std::uint32_t>(dataBytes64);

    const std::string devicePath = TarvaneCddaDeviceFromPath(Source);
    const int fd = open(devicePath.c_str(), O_RDONLY | O_NONBLOCK);
    if (fd < 0) {
        return Fail(ErrorMessage,
                    "Could not open CD drive " + devicePath + ": " + SystemErrorText());
    }
    std::ofstream out;
    try {
        out.open(Destination, std::ios::binary | std::ios::trunc);
        if (!out.is_open()) {
            close(fd);
            return Fail(ErrorMessage, "Failed to open destination WAV file.");
        }
        WriteWavHeader(out, dataBytes);
        if (!out) {
            // The sentence comes first: nothing below may throw while only one of the two is open.
            ErrorMessage = "Failed to write WAV header.";
            close(fd);
            RemovePathIfPresent(Destination);
            return false;
        }
        Job.SetCurrentPath(Source, dataBytes);
        if (!CopyCddaFrames(fd, startFrame, endFrame, out, Destination, Job, ErrorMessage)) {
            return false;
        }
    } catch (...) {
        if (out.is_open()) {
            out.close();
            close(fd);
            RemovePathIfPresent(Destination);
        }
        throw;
    }
    close(fd);
    Job.SetCurrentFileProgress(dataBytes, dataBytes);
    Job.MarkItemsDone(1);
    return true;
}

} // namespace

// -------------------------------------------------------------------------------------------------
// [special] Other entries than files and directories
//
// Worker thread. CopyCddaTrack extracts a track unless its name is taken and the answer is to skip
// it; CopySpecialEntry takes one pipe, socket, device or link to such an entry, in the file
// copier's order of steps.
// -------------------------------------------------------------------------------------------------

namespace {

// Removes nothing: the tracks of a moved CD stay where they are.
[[gnu::noinline]] TransferCopyResult
CopyCddaTrack(const fs::path& Source, const fs::path& Destination, TarvaneTransferJob& Job,
              TarvaneTransferConflictPolicy ConflictPolicy, std::string& ErrorMessage) {
    const std::string sourceText = Source.string();
    fs::path target = Destination;
    bool skip = false;
    if (!ResolveLocalFileConflict(Job, Source, target, ConflictPolicy, target, skip,
                                  ErrorMessage)) {
        return TransferCopyResult::Failed;
    }
    if (skip) {
        Job.SetCurrentPath(sourceText, 0);
        Job.MarkItemsDone(1);
        Job.MarkSkipped(1, 0);
        return TransferCopyResult::Skipped;
    }
    return ExtractCddaTrackToWav(sourceText, target, Job, ErrorMessage)
               ? TransferCopyResult::Succeeded
               : TransferCopyResult::Failed;
}

// As the standard copy does it, whose form without exceptions ends the process where memory runs
// out over a link.
void RecreateLink(const fs::path& Source, const fs::path& Target, std::error_code& OutError) {
    std::array<char, PATH_MAX> text{};
    const ssize_t length = ::readlink(Source.c_str(), text.data(), text.size() - 1);
    const bool made = length >= 0 && ::symlink(text.data(), Target.c_str()) == 0;
    OutError = {made ? 0 : errno, std::generic_category()};
}

void CopySpecial(const fs::path& Source, const fs::path& Target, std::error_code& OutError) {
    struct stat info {};
    const bool link = ::lstat(Source.c_str(), &info) == 0 && S_ISLNK(info.st_mode);
    if (link && ::lstat(Target.c_str(), &info) != 0 && errno == ENOENT) {
        RecreateLink(Source, Target, OutError);
        return;
    }
    fs::copy(Source, Target, fs::copy_options::overwrite_existing | fs::copy_options::copy_symlinks,
             OutError);
}

// A link that leads to neither a file nor a directory is recreated as a link; what the standard
// copy refuses (a pipe, a socket, a device) fails with its text.
[[gnu::noinline]] TransferCopyResult CopySpecialEntry(const MetPath& Source,
                                                      const fs::path& Destination,
                                                      TarvaneTransferJob& Job,
                                                      TarvaneTransferConflictPolicy ConflictPolicy,
                                                      bool bMove, std::string& ErrorMessage) {
    fs::path target = Destination;
    bool skip = false;
    if (!ResolveLocalFileConflict(Job, Source, target, ConflictPolicy, target, skip,
                                  ErrorMessage)) {
        return TransferCopyResult::Failed;
    }
    if (skip) {
        Job.SetCurrentPath(Source.Path.native(), 0);
        Job.MarkItemsDone(1);
        Job.MarkSkipped(1, 0);
        return TransferCopyResult::Skipped;
    }
    if (!EnsureDestinationParent(target, ErrorMessage)) {
        return TransferCopyResult::Failed;
    }
    std::error_code ec;
    const bool targetIsDirectory = fs::is_directory(target, ec);
    if (ec && ec != std::errc::no_such_file_or_directory) {
        return FailCopy(ErrorMessage,
                        "Could not inspect destination '" + target.string() + "': " + ec.message());
    }
    if (targetIsDirectory && LeadsInto(target, Source.Path)) {
        return FailCopy(ErrorMessage, std::strerror(ENOENT));
    }
    if (targetIsDirectory) {
        fs::remove_all(target, ec);
        if (ec) {
            return FailCopy(ErrorMessage, ec.message());
        }
    }
    CopySpecial(Source.Path, target, ec);
    if (ec) {
        return FailCopy(ErrorMessage, ec.message());
    }
    Job.SetCurrentPath(Source.Path.native(), 0);
    Job.MarkItemsDone(1);
    if (bMove) {
        fs::remove(Source.Path, ec);
        if (ec) {
            return FailCopy(ErrorMessage, "Copied data but could not remove original '" +
                                              Source.Path.native() + "': " + ec.message());
        }
    }
    return TransferCopyResult::Succeeded;
}

} // namespace

// -------------------------------------------------------------------------------------------------
// [path] Path copier
//
// Worker thread. CopyPathWithProgress takes one path of any kind; CopyEntry calls itself for the
// entries of a directory. All kind tests follow links: a link to a directory becomes a real
// directory with the linked contents, and on a move the files inside it are removed and then the
// link. A move that gets here is always copy, then delete, entry by entry; nothing is rolled back.
// A path has room for 2,047 directories, and a thread's stack for as many calls: the steps that
// need much of it are never inlined into them.
// -------------------------------------------------------------------------------------------------

namespace {

// What stays the same throughout an item. Its paths grow and shrink with the tree, as building them
// anew takes longer the deeper it is: after a success they are what they were.
struct ItemCopy {
    fs::path Source;
    fs::path Destination;
    TarvaneTransferJob& Job;
    const TarvaneTransferConflictPolicy ConflictPolicy;
    const bool bMove;
    std::string& ErrorMessage;
};

TransferCopyResult CopyEntry(ItemCopy& Item, const PathStatus& SourceStatus, bool bIntoNewFolder);

// Asks whenever anything stands at the destination, a file included. Both other policies merge:
// Skip deliberately leaves whole directories to the file conflicts inside them.
bool ResolveLocalDirectoryConflict(TarvaneTransferJob& Job, const MetPath& Source,
                                   const MetPath& Destination,
                                   TarvaneTransferConflictPolicy ConflictPolicy, bool& OutSkip,
                                   std::string& ErrorMessage) {
    OutSkip = false;
    if (Destination.Status.IsUntold()) {
        return Fail(ErrorMessage, "Failed checking destination '" + Destination.Path.native() +
                                      "': " + Destination.Status.ErrorCode().message());
    }
    if (!Destination.Status.Exists() || ConflictPolicy != TarvaneTransferConflictPolicy::Ask) {
        return true;
    }

    const TarvaneTransferConflict conflict =
        MakeLocalConflict(TarvaneTransferConflictKind::Directory, Source, Destination);
    TarvaneTransferConflictAction action = TarvaneTransferConflictAction::Merge;
    // A directory is never renamed; what came with the answer lands in the message, deliberately.
    if (!Job.WaitForConflict(conflict, action, ErrorMessage)) {
        return Fail(ErrorMessage, "Transfer canceled.");
    }
    switch (action) {
    case TarvaneTransferConflictAction::Skip:
    case TarvaneTransferConflictAction::SkipAll:
        OutSkip = true;
        return true;
    case TarvaneTransferConflictAction::Merge:
    case TarvaneTransferConflictAction::MergeAll:
        return true;
    case TarvaneTransferConflictAction::Overwrite:
    case TarvaneTransferConflictAction::Rename:
    case TarvaneTransferConflictAction::OverwriteAll:
    case TarvaneTransferConflictAction::CompareByContent:
    case TarvaneTransferConflictAction::OverwriteAllOlder:
    case TarvaneTransferConflictAction::Cancel:
        break;
    }
    return Fail(ErrorMessage, "Invalid directory merge decision.");
}

// Makes Destination a directory, in place of whatever else stands there.
bool PrepareDirectoryTarget(const fs::path& Source, const MetPath& Destination,
                            TarvaneTransferJob& Job, bool& OutIsNew, std::string& ErrorMessage) {
    std::error_code ec;
    if (Destination.Status.IsUntold()) {
        return Fail(ErrorMessage, "Failed checking destination '" + Destination.Path.native() +
                                      "': " + Destination.Status.ErrorCode().message());
    }
    if (Destination.Status.Exists() && !Destination.Status.IsDirectory()) {
        fs::remove(Destination.Path, ec);
        if (ec) {
            return Fail(ErrorMessage, "Failed to replace destination path: " + ec.message());
        }
    }
    Job.SetCurrentPath(Source.native(), 0);
    // Its parents are missing in the rarest of cases, and looking for them takes longer than this.
    OutIsNew = fs::create_directory(Destination.Path, ec);
    if (ec) {
        fs::create_directories(Destination.Path, ec);
    }
    if (ec) {
        return Fail(ErrorMessage, "Failed to create destination directory: " + ec.message());
    }
    return true;
}

// What is there by the whole path, which the copy goes by and which can have too many links or be
// too long, though the name in the open directory is neither.
PathStatus StatusOfEntry(const DirectoryListing& Listing, const dirent& Entry,
                         const fs::path& Path) {
    const bool byName = Entry.d_type != DT_LNK && Entry.d_type != DT_UNKNOWN;
    return byName && Path.native().size() < PATH_MAX
               ? PathStatus(Listing.Descriptor(), Entry.d_name)
               : PathStatus(Path.c_str());
}

// Goes through the entries in the order of the listing; the first failure ends it.
bool CopyDirectoryEntries(ItemCopy& Item, bool bIntoNewFolder) {
    DirectoryListing listing(Item.Source);
    const bool endsWithSlash = !Item.Source.has_filename();
    Item.Source /= "";
    Item.Destination /= "";
    while (const dirent* entry = listing.Next()) {
        if (Item.Job.IsCancelRequested()) {
            return Fail(Item.ErrorMessage, "Transfer canceled.");
        }
        Item.Source.replace_filename(entry->d_name);
        Item.Destination.replace_filename(entry->d_name);
        if (CopyEntry(Item, StatusOfEntry(listing, *entry, Item.Source), bIntoNewFolder) ==
            TransferCopyResult::Failed) {
            return false;
        }
    }
    if (listing.LastError()) {
        return Fail(Item.ErrorMessage, listing.LastError().message());
    }
    Item.Source = Item.Source.parent_path();
    if (endsWithSlash) {
        Item.Source /= "";
    }
    Item.Destination = Item.Destination.parent_path();
    return true;
}

// Counts: the directory as one item, before its entries.
TransferCopyResult CopyDirectory(ItemCopy& Item, const PathStatus& SourceStatus,
                                 const PathStatus& TargetStatus) {
    auto& [source, destination, job, conflictPolicy, bMove, errorMessage] = Item;
    if (TarvanePathIsInside(source, destination)) {
        return FailCopy(errorMessage, "Destination cannot be inside the source directory.");
    }
    const MetPath target(destination, TargetStatus);
    bool skip = false;
    if (!ResolveLocalDirectoryConflict(job, {source, SourceStatus}, target, conflictPolicy, skip,
                                       errorMessage)) {
        return TransferCopyResult::Failed;
    }
    if (skip) {
        return MarkSkippedPath(source, job, errorMessage) ? TransferCopyResult::Skipped
                                                          : TransferCopyResult::Failed;
    }
    const MetPath current = MayHaveWaited(target, conflictPolicy) ? destination : target;
    bool isNew = false;
    if (!PrepareDirectoryTarget(source, current, job, isNew, errorMessage)) {
        return TransferCopyResult::Failed;
    }
    job.MarkItemsDone(1);
    if (!CopyDirectoryEntries(Item, isNew)) {
        return TransferCopyResult::Failed;
    }
    if (bMove) {
        std::error_code ec;
        fs::remove(source, ec);
        // Skipped entries remain in the source, deliberately without an error.
        if (ec && ec != std::errc::directory_not_empty) {
            return FailCopy(errorMessage, "Copied data but could not remove original '" +
                                              source.native() + "': " + ec.message());
        }
    }
    return TransferCopyResult::Succeeded;
}

// An existing source and a destination that is not the same.
TransferCopyResult CopyByKind(ItemCopy& Item, const PathStatus& SourceStatus,
                              const PathStatus& TargetStatus) {
    auto& [source, destination, job, conflictPolicy, bMove, errorMessage] = Item;
    if (SourceStatus.IsDirectory()) {
        return CopyDirectory(Item, SourceStatus, TargetStatus);
    }
    if (SourceStatus.IsRegularFile()) {
        return CopyFileWithProgress({source, SourceStatus}, {destination, TargetStatus}, job,
                                    conflictPolicy, bMove, errorMessage);
    }
    if (const std::error_code error = SourceStatus.ErrorCode()) {
        return FailCopy(errorMessage,
                        "Could not inspect source '" + source.native() + "': " + error.message());
    }
    return CopySpecialEntry({source, SourceStatus}, destination, job, conflictPolicy, bMove,
                            errorMessage);
}

// Below an item, the texts of both paths differ as those of the item do: only what is there and the
// same file can be the source.
TransferCopyResult CopyEntry(ItemCopy& Item, const PathStatus& SourceStatus, bool bIntoNewFolder) {
    if (TarvaneIsCddaPath(Item.Source.native())) {
        return CopyCddaTrack(Item.Source, Item.Destination, Item.Job, Item.ConflictPolicy,
                             Item.ErrorMessage);
    }
    if (!SourceStatus.Exists()) {
        return FailCopy(Item.ErrorMessage, "Source does not exist: " + Item.Source.native());
    }
    if (bIntoNewFolder && SourceStatus.IsRegularFile()) {
        if (const auto result = CopyNewFile({Item.Source, SourceStatus}, Item.Destination, Item.Job,
                                            Item.bMove, Item.ErrorMessage)) {
            return *result;
        }
    }
    const PathStatus targetStatus(Item.Destination.c_str());
    if (targetStatus.Exists() && targetStatus.MayBeSameAs(SourceStatus) &&
        TarvanePathsEquivalentOrSame(Item.Source, Item.Destination)) {
        return FailCopy(Item.ErrorMessage, "Source and destination are the same path.");
    }
    return CopyByKind(Item, SourceStatus, targetStatus);
}

TransferCopyResult CopyPathWithProgress(const fs::path& Source, const fs::path& Destination,
                                        TarvaneTransferJob& Job,
                                        TarvaneTransferConflictPolicy ConflictPolicy, bool bMove,
                                        std::string& ErrorMessage) {
    if (TarvaneIsCddaPath(Source.native())) {
        return CopyCddaTrack(Source, Destination, Job, ConflictPolicy, ErrorMessage);
    }
    const PathStatus sourceStatus(Source.c_str());
    if (!sourceStatus.Exists()) {
        return FailCopy(ErrorMessage, "Source does not exist: " + Source.native());
    }
    if (TarvanePathsEquivalentOrSame(Source, Destination)) {
        return FailCopy(ErrorMessage, "Source and destination are the same path.");
    }
    ItemCopy item{Source, Destination, Job, ConflictPolicy, bMove, ErrorMessage};
    return CopyByKind(item, sourceStatus, PathStatus(Destination.c_str()));
}

} // namespace

// -------------------------------------------------------------------------------------------------
// [scan] Scan of the sources
//
// Worker thread. ScanTransferPath counts what an item holds before anything is copied, so that the
// totals and percentages are right from the first byte on. A link is one item and is not entered;
// one to a file, in a directory, has the bytes of the file.
// -------------------------------------------------------------------------------------------------

namespace {

// A directory that is being counted.
struct ScanLevel {
    ScanLevel(int Parent, const char* Name, int MoreFlags, std::size_t PathLengthToKeep)
        : Listing(Parent, Name, MoreFlags), PathLength(PathLengthToKeep) {}

    DirectoryListing Listing;
    std::size_t PathLength;
};

// Adds the entry's bytes: those of a regular file, also through a link. Only where the listing does
// not tell enough the system is asked, once, and a second time about what the listing has no type
// for. OutDirectory says whether it is a directory itself. Errors: the system's text alone.
bool ScanEntry(const DirectoryListing& Listing, const dirent& Entry, const std::string& Path,
               std::uint64_t& InOutBytes, bool& OutDirectory, std::string& ErrorMessage) {
    OutDirectory = Entry.d_type == DT_DIR;
    if (Entry.d_type != DT_REG && Entry.d_type != DT_LNK && Entry.d_type != DT_UNKNOWN) {
        return true;
    }
    const int parent = Listing.Descriptor();
    struct stat info {};
    if (Path.size() >= PATH_MAX) {
        // The copy goes by whole paths.
        return Fail(ErrorMessage, std::generic_category().message(ENAMETOOLONG));
    }
    if (::fstatat(parent, Entry.d_name, &info, 0) != 0) {
        return Fail(ErrorMessage, std::generic_category().message(errno));
    }
    if (S_ISREG(info.st_mode)) {
        InOutBytes += static_cast<std::uint64_t>(info.st_size);
    }
    if (Entry.d_type == DT_UNKNOWN) {
        OutDirectory = ::fstatat(parent, Entry.d_name, &info, AT_SYMLINK_NOFOLLOW) == 0 &&
                       S_ISDIR(info.st_mode);
    }
    return true;
}

// Counts every entry below a directory. A link to a directory is one entry and is not entered.
bool ScanDirectory(const fs::path& Source, TarvaneTransferJob& Job, TransferTotals& OutTotals,
                   std::string& ErrorMessage) {
    TransferTotals totals{1, 0};
    std::string path = Source.native();
    std::stack<ScanLevel> levels;
    levels.emplace(AT_FDCWD, path.c_str(), 0, path.size());
    while (!levels.empty()) {
        ScanLevel& level = levels.top();
        const dirent* entry = level.Listing.Next();
        if (level.Listing.LastError()) {
            return Fail(ErrorMessage, level.Listing.LastError().message());
        }
        if (entry == nullptr) {
            levels.pop();
            continue;
        }
        if (Job.IsCancelRequested()) {
            return Fail(ErrorMessage, "Transfer canceled.");
        }
        path.resize(level.PathLength);
        path += path.ends_with('/') ? "" : "/";
        path += entry->d_name;
        Job.SetCurrentPath(path, 0);
        bool directory = false;
        if (!ScanEntry(level.Listing, *entry, path, totals.ByteCount, directory, ErrorMessage)) {
            return false;
        }
        ++totals.ItemCount;
        if (directory) {
            levels.emplace(level.Listing.Descriptor(), entry->d_name, O_NOFOLLOW, path.size());
        }
    }
    OutTotals = totals;
    return true;
}

bool ScanCddaTrack(const std::string& SourceText, TarvaneTransferJob& Job,
                   TransferTotals& OutTotals, std::string& ErrorMessage) {
    std::int32_t startFrame = 0;
    std::int32_t endFrame = 0;
    if (!GetCddaTrackFrameRange(SourceText, startFrame, endFrame, ErrorMessage)) {
        return false;
    }
    const auto bytes =
        static_cast<std::uint64_t>(std::int64_t{endFrame - startFrame} * kCddaBytesPerFrame);
    Job.SetCurrentPath(SourceText, bytes);
    OutTotals = {1, bytes};
    return true;
}

bool ScanTransferPath(const fs::path& Source, TarvaneTransferJob& Job, TransferTotals& OutTotals,
                      std::string& ErrorMessage) {
    const std::string sourceText = Source.string();
    if (TarvaneIsCddaPath(sourceText)) {
        return ScanCddaTrack(sourceText, Job, OutTotals, ErrorMessage);
    }
    std::error_code ec;
    if (!fs::exists(Source, ec)) {
        return Fail(ErrorMessage, "Source does not exist.");
    }
    Job.SetCurrentPath(sourceText, 0);
    const bool symbolicLink = fs::is_symlink(Source, ec);
    if (symbolicLink || ec) {
        OutTotals = {1, 0};
        return !ec;
    }
    const fs::file_status status = fs::status(Source, ec);
    if (fs::is_regular_file(status)) {
        const std::uint64_t fileSize = ToUInt64(fs::file_size(Source, ec));
        if (ec) {
            return Fail(ErrorMessage, ec.message());
        }
        OutTotals = {1, fileSize};
        return true;
    }
    if (fs::is_directory(status)) {
        return ScanDirectory(Source, Job, OutTotals, ErrorMessage);
    }
    if (ec) {
        return Fail(ErrorMessage, ec.message());
    }
    OutTotals = {1, 0};
    return true;
}

} // namespace

// -------------------------------------------------------------------------------------------------
// [runner] Job runner
//
// RunTarvaneTransferJob is the worker thread's whole life: scan every item for the totals, then
// process the items in order, a move by renaming where that works. Every path through it calls
// exactly one finisher.
// -------------------------------------------------------------------------------------------------

namespace {

// Lowers the calling thread's I/O priority to the idle class and restores it at the end of the
// scope. Failures are ignored: the transfer then competes like any other program.
class ScopedIdleIoPriority {
public:
    ScopedIdleIoPriority()
        : PreviousPriority(
              static_cast<std::int32_t>(syscall(SYS_ioprio_get, kWhoProcess, kCallingThread))) {
        if (PreviousPriority >= 0) {
            Changed = syscall(SYS_ioprio_set, kWhoProcess, kCallingThread, kIdleClass) == 0;
        }
    }
    ~ScopedIdleIoPriority() {
        if (Changed) {
            syscall(SYS_ioprio_set, kWhoProcess, kCallingThread, PreviousPriority);
        }
    }
    ScopedIdleIoPriority(const ScopedIdleIoPriority&) = delete;
    ScopedIdleIoPriority& operator=(const ScopedIdleIoPriority&) = delete;

private:
    static constexpr int kWhoProcess = 1;
    static constexpr int kCallingThread = 0;
    static constexpr int kIdleClass = 3 << 13;

    std::int32_t PreviousPriority;
    bool Changed = false;
};

// Ends a job whose step failed: a requested cancel is the reason whatever the step says.
void FinishFailedStep(TarvaneTransferJob& Job, bool bMove, const std::string& ErrorMessage,
                      const std::string& MessageWithoutText) {
    if (Job.IsCancelRequested()) {
        Job.FinishCanceled(TransferVerb(bMove) +
                           " canceled. Partial destination files may remain.");
    } else {
        Job.FinishFailure(ErrorMessage.empty() ? MessageWithoutText : ErrorMessage);
    }
}

// False when the job was finished.
bool ScanPlan(TarvaneTransferPlan& Plan, TarvaneTransferJob& Job) {
    Job.SetStage(TarvaneTransferStage::Preparing, "Scanning transfer contents");
    std::uint64_t totalItems = 0;
    std::uint64_t totalBytes = 0;
    for (TarvaneTransferItemPlan& item : Plan.Items) {
        TransferTotals totals;
        std::string errorMessage;
        if (!ScanTransferPath(item.SourcePath, Job, totals, errorMessage)) {
            FinishFailedStep(Job, Plan.bMove, errorMessage, "Failed to scan transfer source.");
            return false;
        }
        item.ItemCount = totals.ItemCount;
        item.ByteCount = totals.ByteCount;
        totalItems += totals.ItemCount;
        totalBytes += totals.ByteCount;
    }
    Job.SetTotals(totalItems, totalBytes);
    return true;
}

// Moves a whole item onto a free destination of the same file system. False means that it has to be
// copied, for whatever reason.
bool TryRenameItem(const TarvaneTransferItemPlan& Item, TarvaneTransferJob& Job) {
    Job.SetStage(TarvaneTransferStage::Copying, "Moving items");
    Job.SetCurrentPath(Item.SourcePath.string(), Item.ByteCount);
    std::error_code ec;
    const bool destinationExists = fs::exists(Item.DestinationPath, ec);
    if (ec || destinationExists) {
        return false;
    }
    fs::rename(Item.SourcePath, Item.DestinationPath, ec);
    const bool renamed = !ec;
    if (renamed) {
        Job.AddBytesDone(Item.ByteCount);
        Job.SetCurrentFileProgress(Item.ByteCount, Item.ByteCount);
        Job.MarkItemsDone(Item.ItemCount);
    }
    return renamed;
}

// False when the job was finished.
bool ProcessItem(const TarvaneTransferPlan& Plan, const TarvaneTransferItemPlan& Item,
                 TarvaneTransferJob& Job) {
    std::string errorMessage;
    if (!EnsureDestinationParent(Item.DestinationPath, errorMessage)) {
        Job.FinishFailure(errorMessage);
        return false;
    }
    if (Plan.bMove && TryRenameItem(Item, Job)) {
        return true;
    }
    Job.SetStage(TarvaneTransferStage::Copying,
                 Plan.bMove ? "Copying data for move" : "Copying items");
    const TransferCopyResult copyResult = CopyPathWithProgress(
        Item.SourcePath, Item.DestinationPath, Job, Plan.ConflictPolicy, Plan.bMove, errorMessage);
    if (copyResult == TransferCopyResult::Failed) {
        FinishFailedStep(Job, Plan.bMove, errorMessage, "Transfer failed.");
        return false;
    }
    return true;
}

} // namespace

void RunTarvaneTransferJob(const std::shared_ptr<TarvaneTransferJob>& Job,
                           TarvaneTransferPlan Plan) {
    if (!Job) {
        return;
    }
    const ScopedIdleIoPriority idleIoPriority;
    const AttributeOfRun attributeOfRun;
    const StreamsOfRun streamsOfRun;
    if (!ScanPlan(Plan, *Job)) {
        return;
    }
    for (const TarvaneTransferItemPlan& item : Plan.Items) {
        if (Job->IsCancelRequested()) {
            Job->FinishCanceled(TransferVerb(Plan.bMove) +
                                " canceled. Partial destination files may remain.");
            return;
        }
        if (!ProcessItem(Plan, item, *Job)) {
            return;
        }
    }
    // A cancel that came during the last item is too late: everything is done.
    Job->FinishSuccess((Plan.bMove ? "Moved " : "Copied ") + std::to_string(Plan.Items.size()) +
                       " item(s).");
}
