// Moves a file or a directory, and defines what the engine asks of the program around it:
//
//   own_functions SOURCE DESTINATION
//
// The six functions are declared in tarvaneops.h, tarvanepane.h and ring_sound.h. These know no
// audio CDs; those of tarvane::host do, and see through links in a path that does not exist yet and
// through directories that are mounted twice.

#include <ring_sound.h>
#include <tarvaneops.h>
#include <tarvanepane.h>
#include <tarvanetransfer.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <exception>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <system_error>
#include <thread>

namespace fs = std::filesystem;

// In doubt both answer yes: the engine then refuses, and nothing is lost.
bool TarvanePathsEquivalentOrSame(const fs::path& First, const fs::path& Second) noexcept {
    try {
        std::error_code ec;
        return fs::equivalent(First, Second, ec) ||
               fs::absolute(First).lexically_normal() == fs::absolute(Second).lexically_normal();
    } catch (const std::exception&) {
        return true;
    }
}

bool TarvanePathIsInside(const fs::path& Directory, const fs::path& Path) noexcept {
    try {
        const fs::path directory = fs::weakly_canonical(Directory);
        const fs::path path = fs::weakly_canonical(Path);
        const auto [left, _] =
            std::mismatch(directory.begin(), directory.end(), path.begin(), path.end());
        return left == directory.end() && path != directory;
    } catch (const std::exception&) {
        return true;
    }
}

bool TarvaneIsCddaPath(const std::string&) {
    return false;
}

std::string TarvaneCddaDeviceFromPath(const std::string&) {
    return "";
}

int TarvaneCddaTrackFromPath(const std::string&) {
    return 0;
}

namespace {

std::atomic<bool> gSoundWanted{false};

void Run(const std::shared_ptr<TarvaneTransferJob>& Job, const TarvaneTransferPlan& Plan) {
    try {
        RunTarvaneTransferJob(Job, Plan);
    } catch (const std::exception& error) {
        if (!Job->IsFinished()) {
            Job->FinishFailure(error.what());
        }
    }
}

} // namespace

// On the worker: it only leaves word for the thread that may print.
void PlayTarvaneTransferCompleteSound() noexcept {
    gSoundWanted = true;
}

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "Usage: own_functions SOURCE DESTINATION\n";
        return 2;
    }
    TarvaneTransferPlan plan;
    plan.bMove = true;
    plan.ConflictPolicy = TarvaneTransferConflictPolicy::Skip;
    TarvaneTransferItemPlan& item = plan.Items.emplace_back();
    item.SourcePath = argv[1];
    item.DestinationPath = argv[2];

    const auto job = std::make_shared<TarvaneTransferJob>(plan.bMove, plan.Items.size(), "");
    std::thread(Run, job, plan).join();

    if (gSoundWanted) {
        std::cout << '\a';
    }
    const TarvaneTransferUiSnapshot end = job->MakeUiSnapshot();
    std::cout << end.MessageText << '\n';
    return end.bSucceeded ? 0 : 1;
}
