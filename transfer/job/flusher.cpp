#include "flusher.h"

#include "block_device.h"
#include "file_system_flush.h"
#include "full_path.h"
#include "quoted.h"

#include <algorithm>
#include <set>
#include <system_error>

namespace fs = std::filesystem;

namespace {

bool CanVanish(const fs::path& Directory) {
    const StorageTraits traits = StorageOf(NearestExistingDirectory(Directory));
    return traits.bRemovable || traits.bUsb || traits.bNetwork;
}

FlushReach ReachOf(const fs::path& Directory) {
    if (StorageOf(Directory).bNetwork) {
        return FlushReach::Server;
    }
    return BlockDeviceDirectoryOf(Directory).empty() ? FlushReach::System : FlushReach::Device;
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
    for (const fs::path& wanted : Directories) {
        const fs::path directory = NearestExistingDirectory(wanted);
        const std::optional<MountIdentity> mount = MountIdentityOf(directory);
        const auto known = std::find_if(Targets.begin(), Targets.end(), [&](const Target& Each) {
            return mount && Each.Mount == mount;
        });
        if (known != Targets.end()) {
            known->Paths.push_back(wanted);
            continue;
        }
        Target& target = Targets.emplace_back();
        target.Paths = {directory, wanted};
        target.Mount = mount;
        target.Opened = OpenForFlush(directory);
        Reach = std::min(Reach, ReachOf(directory));
        Estimate.Watch(BlockDeviceDirectoryOf(directory));
    }
}

void Flusher::Start(std::uint64_t CopiedBytes) {
    Estimate.Start(CopiedBytes);
    for (Target& target : Targets) {
        try {
            target.Process.emplace(FlushOf(target.Paths), target.Opened.Get());
        } catch (const std::system_error& error) {
            NoteError(target.Paths.front(), error.what());
        }
    }
}

FlushProgress Flusher::Poll() {
    NoteEnds();
    FlushProgress progress;
    progress.bFinished = std::all_of(Targets.begin(), Targets.end(),
                                     [](const Target& Each) { return !Each.Process; });
    progress.ErrorText = ErrorText;
    progress.Reach = Reach;
    if (!progress.bFinished) {
        const FlushEstimate::Remainder left = Estimate.Look();
        progress.RemainingBytes = left.Bytes;
        progress.BytesPerSecond = left.BytesPerSecond;
    }
    return progress;
}

void Flusher::NoteEnds() {
    for (Target& target : Targets) {
        if (const std::optional<std::string> reply =
                target.Process ? target.Process->TakeReply() : std::nullopt) {
            target.Process.reset();
            NoteEnd(target, FromReply<FlushReply>(*reply));
        }
    }
}

void Flusher::NoteEnd(const Target& Flushed, const std::optional<FlushReply>& End) {
    const fs::path& directory = Flushed.Paths.front();
    if (!End) {
        NoteError(directory, "the flush was interrupted");
    } else if (End->Error != 0) {
        NoteError(directory, std::generic_category().message(End->Error));
    } else if (End->Displaced) {
        NoteError(Flushed.Paths[*End->Displaced],
                  "it is no longer on the file system that the transfer began on");
    } else if (!End->bDevice) {
        Reach = std::min(Reach, FlushReach::System);
    }
}

// The first one stands for all.
void Flusher::NoteError(const fs::path& Directory, const std::string& Reason) {
    if (ErrorText.empty()) {
        ErrorText = "cannot write everything to " + Quoted(Directory.native()) + ": " + Reason;
    }
}
