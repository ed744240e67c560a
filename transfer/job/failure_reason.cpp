#include "failure_reason.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <vector>

#include <sys/stat.h>

#include "file_reason.h"
#include "full_path.h"
#include "tarvaneops.h"

namespace fs = std::filesystem;

namespace {

// What is added to a sentence; no path where it is not certain.
struct Addition {
    fs::path Path = {};
    std::string Reason = {};
};

bool IsOneOf(const std::string& Sentence, const std::vector<std::string>& Sentences) {
    return std::ranges::find(Sentences, Sentence) != Sentences.end();
}

// Where the current entry goes; nothing when two operands hold it.
fs::path CurrentDestination(const FailedJob& Failed) {
    const AnsweredConflict* answer = Failed.LastAnswer;
    if (answer != nullptr && answer->Conflict.SourcePath == Failed.CurrentPath.native()) {
        return answer->RenamePath.empty() ? answer->Conflict.DestinationPath : answer->RenamePath;
    }
    const auto holds = [&Failed](const TarvaneTransferItemPlan& Item) {
        return IsWithin(Failed.CurrentPath, Item.SourcePath);
    };
    if (std::ranges::count_if(Failed.Plan.Items, holds) > 1) {
        return {};
    }
    return PlannedDestination(Failed.CurrentPath, Failed.Plan);
}

Addition AboutUnopenedDestination(const FailedJob& Failed) {
    const fs::path destination = CurrentDestination(Failed);
    return {destination, destination.empty() ? "" : WhyNotOpenedForWriting(destination)};
}

Addition AboutUnwrittenDestination(const FailedJob& Failed) {
    const fs::path destination = CurrentDestination(Failed);
    return {destination,
            destination.empty() ? "" : WhyNotWritten(destination, Failed.CurrentBytes)};
}

// The engine makes the parents of an operand before it shows the operand as the current path.
fs::path MissingDirectory(const FailedJob& Failed) {
    std::error_code ec;
    for (const TarvaneTransferItemPlan& item : Failed.Plan.Items) {
        if (!fs::is_directory(item.DestinationPath.parent_path(), ec)) {
            return item.DestinationPath.parent_path();
        }
    }
    const fs::path destination = CurrentDestination(Failed);
    return fs::is_directory(destination, ec) ? fs::path() : destination;
}

// The first operand that cannot be found is the one that the count has ended at.
Addition AboutMissingOperand(const FailedJob& Failed) {
    for (const TarvaneTransferItemPlan& item : Failed.Plan.Items) {
        struct stat status {};
        if (item.SourcePath.is_absolute() && ::stat(item.SourcePath.c_str(), &status) != 0) {
            return {item.SourcePath, errno == ENOENT ? "" : WhyUnreadable(item.SourcePath)};
        }
    }
    return {};
}

// The operand behind those that are done, if it is one that is refused. One that is done may look
// like that too: the copy of a link to a device leads to the same as the link. Not beyond a
// directory, which counts all that is in it.
Addition AboutRefusedOperand(const FailedJob& Failed,
                             bool (*IsRefused)(const fs::path&, const fs::path&)) {
    std::error_code ec;
    std::uint64_t done = 0;
    for (const TarvaneTransferItemPlan& item : Failed.Plan.Items) {
        if (done == Failed.DoneEntries) {
            const bool bRefused = IsRefused(item.SourcePath, item.DestinationPath);
            return {bRefused ? item.SourcePath : fs::path()};
        }
        if (fs::is_directory(item.SourcePath, ec) || fs::is_directory(item.DestinationPath, ec)) {
            break;
        }
        ++done;
    }
    return {};
}

bool IsSpecial(const fs::path& Source, const fs::path&) {
    std::error_code ec;
    return fs::is_other(Source, ec);
}

// What the standard's copy says of a pipe, a socket or a device, before the engine shows it as the
// current path.
Addition AboutSpecialOperand(const FailedJob& Failed) {
    const fs::path path = AboutRefusedOperand(Failed, IsSpecial).Path;
    return {path, "pipes, sockets and devices cannot be copied"};
}

// The system's text alone, if looking at the current entry still gives the same.
Addition AboutCurrentEntry(const std::string& Sentence, const FailedJob& Failed) {
    const bool bSame =
        Failed.CurrentPath.is_absolute() && WhyUnreadable(Failed.CurrentPath) == Sentence;
    return {bSame ? Failed.CurrentPath : fs::path()};
}

Addition AdditionTo(const std::string& Sentence, const FailedJob& Failed) {
    if (IsOneOf(Sentence, {"Failed to open source file.", "Failed while reading source file."})) {
        return {Failed.CurrentPath, WhyUnreadable(Failed.CurrentPath)};
    }
    if (Sentence.starts_with("Failed reading audio CD sectors: ")) {
        return {Failed.CurrentPath};
    }
    if (Sentence == "Failed to open destination file.") {
        return AboutUnopenedDestination(Failed);
    }
    if (IsOneOf(Sentence,
                {"Failed while writing destination file.", "Failed to flush destination file.",
                 "Failed while writing WAV data.", "Failed to flush destination WAV file."})) {
        return AboutUnwrittenDestination(Failed);
    }
    if (Sentence.starts_with("Failed to create destination directory: ")) {
        return {MissingDirectory(Failed)};
    }
    // About the name that was answered just before.
    if (Failed.LastAnswer != nullptr && Sentence.starts_with("Failed to replace destination ")) {
        return {Failed.LastAnswer->Conflict.DestinationPath};
    }
    if (Failed.LastAnswer != nullptr && Sentence.starts_with("Failed checking rename target: ")) {
        return {Failed.LastAnswer->RenamePath};
    }
    if (Sentence == "Source does not exist.") {
        return AboutMissingOperand(Failed);
    }
    if (Sentence == "Source and destination are the same path.") {
        return AboutRefusedOperand(Failed, TarvanePathsEquivalentOrSame);
    }
    if (Sentence == "Destination cannot be inside the source directory.") {
        return AboutRefusedOperand(Failed, TarvanePathIsInside);
    }
    if (Sentence == std::generic_category().message(EINVAL)) {
        return AboutSpecialOperand(Failed);
    }
    return AboutCurrentEntry(Sentence, Failed);
}

} // namespace

std::string FailureText(const FailedJob& Failed) {
    const Addition addition = AdditionTo(Failed.Sentence, Failed);
    if (addition.Path.empty()) {
        return Failed.Sentence;
    }
    return addition.Path.native() + ": " + Failed.Sentence +
           (addition.Reason.empty() ? "" : " (" + addition.Reason + ")");
}
