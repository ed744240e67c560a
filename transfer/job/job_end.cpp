#include "job_end.h"

#include <algorithm>

#include "failure_reason.h"
#include "full_path.h"
#include "number_text.h"
#include "progress_texts.h"
#include "quoted.h"
#include "size_text.h"

namespace {

constexpr std::size_t kNamedDirectories = 3;

// Of the file that the job has ended at and removed again. One that is whole, but for what could
// not be flushed, has all its bytes counted too.
std::uint64_t BytesRemovedAgain(const TarvaneTransferUiSnapshot& Last) {
    const bool bWhole = Last.CurrentFileDoneBytes == Last.CurrentFileTotalBytes &&
                        !Last.MessageText.starts_with("Failed to flush destination");
    return Last.bSucceeded || bWhole ? 0 : Last.CurrentFileDoneBytes;
}

std::uint64_t Less(std::uint64_t From, std::uint64_t Amount) {
    return From - std::min(From, Amount);
}

// 0 where it is not known, as of a job that has not come to its end.
std::uint64_t ReplacedNames(const EndedJob& Ended, bool bSucceeded) {
    if (!Ended.FilesLeftToEngine) {
        return Ended.Names.Replaced();
    }
    return bSucceeded ? Less(*Ended.FilesLeftToEngine, Ended.Job.GetSkippedItems()) : 0;
}

TransferCounts CountsOf(const EndedJob& Ended, const TarvaneTransferUiSnapshot& Last) {
    const std::uint64_t bytes = Less(Last.DoneBytes, Ended.Job.GetSkippedBytes());
    // A directory that was there already is done, but neither copied nor moved.
    const std::uint64_t notCopied = Ended.Job.GetSkippedItems() + Ended.Names.Merged();
    return {.Entries = Less(Last.DoneItems, notCopied),
            .Bytes = Less(bytes, BytesRemovedAgain(Last)),
            .Seconds = Last.ElapsedSeconds,
            .Skipped = Ended.Job.GetSkippedItems(),
            .Replaced = ReplacedNames(Ended, Last.bSucceeded),
            .Renamed = Ended.Names.Renamed(),
            .Merged = Ended.Names.Merged()};
}

std::string UnreadText(const UnreadDirectories& Unread) {
    if (Unread.Count == 0) {
        return {};
    }
    std::string text = Unread.Count == 1 ? "a directory could not be read and is empty now: "
                                         : NumberText(Unread.Count) +
                                               " directories could not be read and are empty now: ";
    const std::size_t named = std::min(Unread.First.size(), kNamedDirectories);
    for (std::size_t i = 0; i < named; ++i) {
        text += (i > 0 ? ", " : "") + Quoted(Unread.First[i].native());
    }
    return Unread.Count > named ? text + " and " + NumberText(Unread.Count - named) + " more"
                                : text;
}

std::string VanishedText(const EndedJob& Ended, const TarvaneTransferUiSnapshot& Last) {
    if (Last.DoneItems < Last.TotalItems) {
        const std::uint64_t entries = Last.TotalItems - Last.DoneItems;
        return EntriesText(entries) + " vanished before the turn came to " +
               (entries == 1 ? "it" : "them");
    }
    if (Last.DoneBytes < Last.TotalBytes && !Ended.Names.SkippedOtherThanFiles()) {
        return "files have become shorter since they were counted, by " +
               SizeText(Last.TotalBytes - Last.DoneBytes);
    }
    return {};
}

// What was asked for and is not there although the engine has succeeded, as one sentence without a
// capital, a period or a line end; empty when all is there.
std::string MissingText(const EndedJob& Ended, const TarvaneTransferUiSnapshot& Last) {
    const std::string unread = UnreadText(Ended.Unread);
    const std::string vanished = VanishedText(Ended, Last);
    return unread.empty() || vanished.empty() ? unread + vanished : unread + "; " + vanished;
}

} // namespace

void UnreadDirectories::LeaveOut(const std::filesystem::path& Tree) {
    Count -= std::erase_if(First, [&Tree](const std::filesystem::path& Directory) {
        return IsWithin(Directory, Tree);
    });
}

bool IsLessThanCounted(const EndedJob& Ended) {
    const TarvaneTransferUiSnapshot last = Ended.Job.MakeUiSnapshot();
    return last.bSucceeded && !VanishedText(Ended, last).empty();
}

RunOutcome OutcomeOf(const EndedJob& Ended) {
    const TarvaneTransferUiSnapshot last = Ended.Job.MakeUiSnapshot();
    const TransferCounts counts = CountsOf(Ended, last);
    RunOutcome outcome{.Result = RunResult::Failed, .Text = last.MessageText, .Counts = counts};
    if (last.bSucceeded) {
        outcome.Text = MissingText(Ended, last);
        if (outcome.Text.empty()) {
            outcome.Result = RunResult::Succeeded;
            outcome.Text = CountsText(counts, Ended.Job.IsMove());
        }
    } else if (last.bCanceled && Ended.FailSentence.empty()) {
        outcome.Result = RunResult::Canceled;
    } else if (last.bCanceled) {
        outcome.Text = Ended.FailSentence;
    } else {
        outcome.Text =
            FailureText({.Sentence = last.MessageText,
                         .Plan = Ended.Plan,
                         .CurrentPath = Ended.Job.GetCurrentPath(),
                         .CurrentBytes = last.CurrentFileTotalBytes,
                         .DoneEntries = last.DoneItems,
                         // One that the engine has given by itself is not known.
                         .LastAnswer = Ended.FilesLeftToEngine ? nullptr : Ended.LastAnswer});
    }
    return outcome;
}
