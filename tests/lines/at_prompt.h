// What runs at a prompt in a test: a scripted terminal, real files and, for a single phase, the
// real prompt and loop with a reporter that writes down what it is told.

#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "becomes_true.h"
#include "fake_drive.h"
#include "file_tree.h"
#include "interface_loop.h"
#include "prompt.h"
#include "prompt_context.h"
#include "reporter.h"
#include "scripted_terminal.h"
#include "shared_latch.h"
#include "temporary_directory.h"

class LoggingReporter : public Reporter {
public:
    void PreflightRuns(std::uint64_t EntriesSeen) override {
        Log.push_back("look " + std::to_string(EntriesSeen));
    }
    void PreflightIsOver(const PreflightResult& Result) override {
        Log.push_back("look over " + std::to_string(Result.Entries));
    }
    void JobRuns(const ProgressView& View) override {
        Log.emplace_back(View.Snapshot.bCancelRequested ? "job to cancel" : "job");
        LongestStall = std::max(LongestStall, View.Claims.StalledSeconds);
    }
    void JobIsOver(const ProgressView& View) override {
        Log.push_back("job over " + View.Snapshot.MessageText);
    }
    void FinishRuns(const FinishProgress& Progress) override {
        Log.push_back("finishing " + AsText(Progress));
    }
    void FinishIsOver(const FinishProgress& Progress) override {
        Log.push_back((Progress.bFinished ? "finishing over " : "finishing is left at ") +
                      AsText(Progress));
    }
    void FlushRuns(const FlushProgress& Progress) override {
        Log.emplace_back(Progress.bFinished ? "flush at its end" : "flush");
    }
    void FlushIsOver(const FlushProgress& Progress) override {
        Log.push_back("flush over " + Progress.ErrorText);
    }
    void ConflictIsSettled(const SettledConflict& Settled) override {
        Answers.push_back(Settled.Answered);
        Outcomes.push_back(Settled.Outcome);
    }
    bool ReportsEachConflict() const override { return bReportsEachConflict; }
    bool IsBroken() const override { return bBroken; }

    int Count(const std::string& Entry) const {
        return static_cast<int>(std::count(Log.begin(), Log.end(), Entry));
    }

    std::vector<std::string> Log;
    std::vector<AnsweredConflict> Answers;
    std::vector<ConflictOutcome> Outcomes;
    int LongestStall = 0;
    bool bReportsEachConflict = true;
    bool bBroken = false;

private:
    static std::string AsText(const FinishProgress& Progress) {
        return std::to_string(Progress.Done) + " of " + std::to_string(Progress.Total);
    }
};

// Shows in the exit status what the program has ended by.
inline int StatusInTests(const RunOutcome& Outcome) {
    return Outcome.EndSignal ? 1000 + *Outcome.EndSignal : 0;
}

class AtPrompt : public testing::Test {
protected:
    AtPrompt() {
        Screen.SetSize(300, 24);
        // Nobody wants to hear the tests: the bell stands in for the sound then.
        setenv("SSH_CONNECTION", "somewhere", 1);
    }

    std::string PathOf(const std::string& Name) const { return (Root / Name).string(); }

    // Presses Keys when the dead time of a question that shows Text is over.
    void AnswerWhenShown(const std::string& Text, const std::vector<KeyPress>& Keys) {
        Screen.Script({Screen.Shows(Text), {}});
        Screen.PressWhen(Screen.Later(std::chrono::milliseconds(700)), Keys);
    }

    // For steps that let the engine go on while the clock stands still.
    static void ExpectJobToEnd() { EXPECT_TRUE(BecomesTrue("the job is over", IsNoJobRunning)); }
    static bool IsNoJobRunning() { return CollectActiveTarvaneTransferJobSnapshots().empty(); }

    static constexpr const char* kTrack = "cdda:/dev/fake-cd/1";

    TemporaryDirectory Root;
    ScriptedTerminal Screen;
};

// What one phase works with.
class PhaseAtPrompt : public AtPrompt {
protected:
    PromptContext Context() { return {Screen, Shown, Loop, Report}; }

    // A copy of each Name from the directory "from" to the directory "to"; a track of the drive
    // becomes "to/track".
    TarvaneTransferPlan CopyOf(const std::vector<std::string>& Names) const {
        TarvaneTransferPlan plan;
        for (const std::string& name : Names) {
            TarvaneTransferItemPlan item;
            const bool bTrack = name == kTrack;
            item.SourcePath = bTrack ? std::filesystem::path(kTrack) : Root / "from" / name;
            item.DestinationPath = Root / "to" / (bTrack ? "track" : name);
            plan.Items.push_back(item);
        }
        return plan;
    }

    std::function<bool()> Reports(const std::string& Entry, int Times = 1) {
        return [this, Entry, Times] { return Report.Count(Entry) >= Times; };
    }

    // For a step that lets what is waited for come to its end.
    void ExpectToBeWoken() const {
        EXPECT_TRUE(BecomesTrue("the wait is over", [this] { return Screen.IsWoken(); }));
    }

    Prompt Shown{Screen, StatusInTests};
    InterfaceLoop Loop{Screen, Shown};
    LoggingReporter Report;
};

// A drive that keeps whoever makes a call that starts with Held until it is released.
class HeldDrive : public ScopedDrive {
public:
    explicit HeldDrive(const std::string& Held) : ScopedDrive(AudioDisc({150, 1000}, 2000)) {
        Before = [this, Held](const std::string& Call) {
            if (Call.starts_with(Held)) {
                bHolds = true;
                Latch.Wait();
            }
        };
    }
    ~HeldDrive() { Release(); }

    void Release() { Latch.Open(); }
    // Whether a thread of this process waits, or has waited, for the drive.
    bool Holds() const { return bHolds; }

private:
    std::atomic<bool> bHolds{false};
    SharedLatch Latch;
};
