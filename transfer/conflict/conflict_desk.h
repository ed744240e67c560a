// Where the taken names of one job are dealt with, whoever draws the questions.

#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <utility>

#include "conflict_choices.h"
#include "conflict_policy.h"
#include "tarvanetransfer.h"

// Whether the engine may answer for later names by itself, as the desk would. Nobody hears of those
// names, but each costs much less than a look by the desk.
enum class EngineAnswers {
    None,
    SkipFiles,
    // Requires: only files stand in the way of files.
    SkipOrReplaceFiles,
};

// What somebody answers. Action is never one of the engine's own "all" answers: those would remove
// whole directories later without a question.
struct ConflictAnswer {
    TarvaneTransferConflictAction Action = TarvaneTransferConflictAction::Cancel;
    // The full new path with Rename, else empty.
    std::string RenamePath = {};
    // For the later names.
    std::optional<FileConflictChoice> ForAllFiles = {};
    std::optional<DirectoryConflictChoice> ForAllDirectories = {};

    bool operator==(const ConflictAnswer&) const = default;
};

// The part of a job's progress that tells what became of a taken name.
struct ItemCounters {
    // Those that were skipped included.
    std::uint64_t Done = 0;
    std::uint64_t Skipped = 0;
};

ItemCounters CountersOf(const TarvaneTransferJob& Job);

// A conflict and the answer that it got, from the user or from a choice made beforehand.
struct AnsweredConflict {
    TarvaneTransferConflict Conflict;
    TarvaneTransferConflictAction Action = TarvaneTransferConflictAction::Cancel;
    std::string RenamePath = {};
    bool bByUser = false;
    // The job's, while it waited for the answer.
    ItemCounters Before = {};
};

struct DeskNotes;

// Looks for the job's conflicts, lets the policy decide, and hands out a question where a person is
// needed. It is the only one that resolves them. A link that an answer replaces is removed before
// the answer, while the worker waits, because the engine would write through it.
//
// Threads: one, the interface's.
class ConflictDesk {
public:
    // A conflict that waits for a person.
    struct Question {
        // Different for every question of this desk.
        std::uint64_t Id = 0;
        TakenName Name;
    };

    static constexpr std::size_t kKeptAnswers = 1000;

    // The job must outlive the desk, and so must the notes. Those who read them give the files that
    // were made private the modes that they are to have.
    ConflictDesk(TarvaneTransferJob& JobToServe, ConflictPolicy ChosenPolicy,
                 EngineAnswers AllowedAnswers = EngineAnswers::None,
                 DeskNotes* NotesToFill = nullptr)
        : Job(JobToServe), Policy(std::move(ChosenPolicy)), Allowed(AllowedAnswers),
          Notes(NotesToFill) {}

    // Looks at the job: decides a conflict, opens its question, or closes that of a conflict that
    // is gone because the job was canceled. Returns the conflict if one was resolved; the pointer
    // is good until the next call.
    const AnsweredConflict* Attend();

    // How long to wait before the next look. The job tells nobody that it waits, so it is looked at
    // often after an answer, when the next taken name may come soon, and then less and less often:
    // by the root of the time since, which keeps both small beside it, what the job waits for an
    // answer and what the looks take.
    std::chrono::microseconds Pause() const;

    const std::optional<Question>& OpenQuestion() const { return Open; }

    // Answers the question with this Id and remembers what is for all. Returns as Attend does:
    // nothing when that question is not open any more, because somebody else was faster or the job
    // was canceled. Nor is anything done when the answer touches what stands there and that is
    // not what the question has shown: another question about it is open then.
    const AnsweredConflict* Answer(std::uint64_t QuestionId, const ConflictAnswer& Given);

    // Cancels the job; the name that it waits with is left alone by the notes, too.
    void Cancel();

    // When the job is over: the notes leave alone a new name that it could not take.
    void NoteEnd();

    // The latest kKeptAnswers of what was asked and answered, the oldest first, and the number of
    // all.
    const std::deque<AnsweredConflict>& Answered() const { return LatestAnswers; }
    std::uint64_t AnsweredCount() const { return AllAnswers; }

    // Whether nobody has counted the files that were replaced.
    bool LeavesReplacingToEngine() const { return bLeavesReplacing; }

    // Why a choice has ended the job: one sentence without a capital, a period or a line end, not
    // cleaned for a screen. Empty when none has.
    const std::string& FailSentence() const { return WhyFailed; }

private:
    const AnsweredConflict* Decide(const TarvaneTransferConflict& Conflict);
    const AnsweredConflict* CarryOut(const ConflictDecision& Decision, AnsweredConflict Answer);
    TarvaneTransferConflictAction ForEngine(const AnsweredConflict& Answer) const;
    const AnsweredConflict* GiveUp(std::string Sentence, AnsweredConflict Answer);
    void MakePrivate(const TarvaneTransferConflict& Conflict) const;
    const AnsweredConflict* Resolve(AnsweredConflict Answer);

    TarvaneTransferJob& Job;
    ConflictPolicy Policy;
    const EngineAnswers Allowed;
    DeskNotes* const Notes;
    std::optional<Question> Open;
    std::uint64_t LastId = 0;
    // The sum of the pauses since the latest answer.
    std::chrono::microseconds Waited{};
    std::deque<AnsweredConflict> LatestAnswers;
    std::uint64_t AllAnswers = 0;
    std::string WhyFailed;
    bool bLeavesReplacing = false;

    static constexpr std::chrono::microseconds kShortestPause{10};
    static constexpr std::chrono::microseconds kLongestPause{20000};
};
