#include "unrecorded.h"

#include "late_entries.h"
#include "private_entry.h"
#include "tarvanepane.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

bool IsFree(const fs::path& Path) {
    struct stat status {};
    return ::lstat(Path.c_str(), &status) != 0 && errno == ENOENT;
}

void OpenUpPath(const fs::path& Path, bool bDirectory, mode_t Umask) {
    const std::optional<PrivateEntry> entry = OpenPrivateEntry(AT_FDCWD, Path.c_str());
    if (entry && entry->IsDirectory() == bDirectory) {
        OpenUp(*entry, Umask);
    }
}

} // namespace

std::vector<fs::path> MissingParents(const TarvaneTransferPlan& Plan) {
    std::vector<fs::path> missing;
    for (const TarvaneTransferItemPlan& item : Plan.Items) {
        const auto first = static_cast<std::ptrdiff_t>(missing.size());
        fs::path parent = item.DestinationPath.parent_path();
        while (IsFree(parent) && std::ranges::find(missing, parent) == missing.end()) {
            missing.push_back(parent);
            parent = parent.parent_path();
        }
        std::reverse(missing.begin() + first, missing.end());
    }
    return missing;
}

std::vector<fs::path> FreeTrackNames(const TarvaneTransferPlan& Plan) {
    std::vector<fs::path> names;
    for (const TarvaneTransferItemPlan& item : Plan.Items) {
        if (TarvaneIsCddaPath(item.SourcePath) && IsFree(item.DestinationPath)) {
            names.push_back(item.DestinationPath);
        }
    }
    return names;
}

timespec TimeNow() {
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    return now;
}

std::uint64_t OpenUpUnrecorded(const FinishTask& Task, std::uint64_t RecordedThere,
                               const std::atomic<bool>& bCancel) {
    // Nothing was made private, and the umask is not the user's.
    if (!Task.Preserve.bMode) {
        return 0;
    }
    const bool bDirectory = true;
    for (const fs::path& parent : Task.MadeParents) {
        OpenUpPath(parent, bDirectory, Task.Umask);
    }
    for (const fs::path& file : Task.MadeFiles) {
        // Where it was taken all the same, it may be somebody else's.
        if (Task.Names.NewNameOf(file.native()) == nullptr &&
            !Task.Names.WasSkipped(file.native())) {
            OpenUpPath(file, !bDirectory, Task.Umask);
        }
    }
    for (const std::string& file : Task.Names.NewTrackNames()) {
        OpenUpPath(file, !bDirectory, Task.Umask);
    }
    // An entry that could not be looked at has a mode of its own, which nobody knows.
    const bool bLate = Task.CopiedEntries > RecordedThere && !Task.Record.HasGaps();
    return bLate && Task.Plan != nullptr ? LateEntries(Task).FinishAll(bCancel) : 0;
}
