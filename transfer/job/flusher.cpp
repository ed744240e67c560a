#include "flusher.h"

#include "block_device.h"
#include "full_path.h"
#include "quoted.h"

#include <algorithm>
#include <cerrno>
#include <set>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

bool CanVanish(const fs::path& Directory) {
    const StorageTraits traits = StorageOf(NearestExistingDirectory(Directory));
    return traits.bRemovable || traits.bUsb || traits.bNetwork;
}

// Flushes the file system of the process's input, or all of them where that could not be opened.
// The reply is the errno, or 0.
WorkerProcess::Work FlushOf(bool bOpened) {
    return [bOpened, error = 0]() mutable {
        if (bOpened) {
            // Some file systems leave what they have written in the cache of the device without
            // fsync. Others have no such call for directories.
            const bool bDone =
                ::syncfs(STDIN_FILENO) == 0 && (::fsync(STDIN_FILENO) == 0 || errno == EINVAL);
            error = bDone ? 0 : errno;
        } else {
            ::sync();
        }
        return AsReply(error);
    };
}

} // namespace

std::vector<fs::path> DirectoriesToFlush(const TarvaneTransferPlan& Plan, FlushChoice Choice) {
    std::set<fs::path> directories;
    for (const TarvaneTransferItemPlan& item : Plan.Items) {
        directories.insert(item.DestinationPath.parent_path());
        // It may be a mount point, or a link to somewhere else.
        std::error_code ec;
        if (fs::is_directory(item.DestinationPath, ec)) {
            directories.insert(item.DestinationPath);
        }
    }
    std::vector<fs::path> chosen;
    for (const fs::path& directory : directories) {
        if (Choice == FlushChoice::Always ||
            (Choice == FlushChoice::Auto && CanVanish(directory))) {
            chosen.push_back(directory);
        }
    }
    return chosen;
}

Flusher::Flusher(const std::vector<fs::path>& Directories) {
    std::set<dev_t> known;
    for (const fs::path& wanted : Directories) {
        const fs::path directory = NearestExistingDirectory(wanted);
        struct stat status {};
        if (::stat(directory.c_str(), &status) == 0 && !known.insert(status.st_dev).second) {
            continue;
        }
        Target& target = Targets.emplace_back();
        target.Directory = directory;
        target.Opened = OwnedDescriptor(
            ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC));
        Estimate.Watch(BlockDeviceDirectoryOf(directory));
    }
}

void Flusher::Start(std::uint64_t CopiedBytes) {
    Estimate.Start(CopiedBytes);
    for (Target& target : Targets) {
        const int opened = target.Opened.Get();
        try {
            target.Process.emplace(FlushOf(opened >= 0), opened);
        } catch (const std::system_error& error) {
            NoteError(target, error.what());
        }
    }
}

FlushProgress Flusher::Poll() {
    NoteEnds();
    FlushProgress progress;
    progress.bFinished = std::all_of(Targets.begin(), Targets.end(),
                                     [](const Target& Each) { return !Each.Process; });
    progress.ErrorText = ErrorText;
    if (!progress.bFinished) {
        const FlushEstimate::Remainder left = Estimate.Look();
        progress.RemainingBytes = left.Bytes;
        progress.BytesPerSecond = left.BytesPerSecond;
    }
    return progress;
}

void Flusher::NoteEnds() {
    for (Target& target : Targets) {
        const std::optional<std::string> reply =
            target.Process ? target.Process->TakeReply() : std::nullopt;
        if (!reply) {
            continue;
        }
        target.Process.reset();
        const std::optional<int> error = FromReply<int>(*reply);
        if (!error) {
            NoteError(target, "the flush was interrupted");
        } else if (*error != 0) {
            NoteError(target, std::generic_category().message(*error));
        }
    }
}

// The first one stands for all.
void Flusher::NoteError(const Target& Flushed, const std::string& Reason) {
    if (ErrorText.empty()) {
        ErrorText =
            "cannot write everything to " + Quoted(Flushed.Directory.native()) + ": " + Reason;
    }
}
