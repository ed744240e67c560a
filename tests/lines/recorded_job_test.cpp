// A job and what makes its copies like their sources: what others can read meanwhile, and what is
// like the source at the end, however that comes.

#include "recorded_job.h"

#include <sys/stat.h>

#include <gtest/gtest.h>

#include "at_prompt.h"
#include "finish_step.h"
#include "preflight.h"

namespace {

namespace fs = std::filesystem;

constexpr std::int64_t kLongAgo = 1000000000;
constexpr mode_t kUmask = 027;
constexpr PreserveChoice kModeAndTimes{.bMode = true, .bTimes = true};
constexpr PreserveChoice kTimes{.bTimes = true};

class RecordedJob : public PhaseAtPrompt {
protected:
    RecordedJob() {
        fs::create_directory(Root / "to");
        for (const char* name : {"a", "b"}) {
            WriteFile(Root / "from" / name, "new");
            SetModifiedTime(Root / "from" / name, kLongAgo);
            EXPECT_EQ(::chmod((Root / "from" / name).c_str(), 0644), 0);
        }
        WriteFile(Root / "to/b", "old");
        Request.Preserve = kModeAndTimes;
        Request.OnConflict = FileConflictChoice::Ask;
    }

    RunOutcome Run(const TarvaneTransferPlan& Plan) {
        const std::unique_ptr<StatusRecord> record = RecordFor(Request, Plan);
        PreflightControl control;
        RunPreflight({.Plan = Plan, .Rules = RulesOf(Request), .Record = record.get()}, control);
        const mode_t ofTheTest = ::umask(kUmask);
        const RunOutcome outcome = RunRecordedJob(Request, Plan, {}, record.get(), Context());
        EXPECT_EQ(::umask(ofTheTest), kUmask);
        return outcome;
    }

    struct stat StatusOf(const std::string& Name) const {
        struct stat status {};
        EXPECT_EQ(::stat((Root / "to" / Name).c_str(), &status), 0) << Name;
        return status;
    }
    mode_t ModeOf(const std::string& Name) const { return StatusOf(Name).st_mode & 07777; }
    std::int64_t TimeOf(const std::string& Name) const { return StatusOf(Name).st_mtim.tv_sec; }

    // While the job waits for an answer about "b", "a" is there.
    void ExpectModeMeanwhile(mode_t Mode) {
        Screen.Script(
            {Screen.Shows("File exists"), {}, [this, Mode] { EXPECT_EQ(ModeOf("a"), Mode); }});
    }
    void AnswerWith(const KeyPress& Key) {
        Screen.PressWhen(Screen.Later(std::chrono::milliseconds(700)), {Key});
    }

    TransferRequest Request;
};

} // namespace

TEST_F(RecordedJob, NeedsNoRecordWhereNothingComesAlong) {
    const TarvaneTransferPlan plan = CopyOf({"a"});
    EXPECT_NE(RecordFor(Request, plan), nullptr);
    EXPECT_NE(RecordFor(Request, CopyOf({"a", kTrack})), nullptr);
    EXPECT_EQ(RecordFor(Request, CopyOf({kTrack})), nullptr);
    Request.bDryRun = true;
    EXPECT_EQ(RecordFor(Request, plan), nullptr);
    Request = {};
    EXPECT_EQ(RecordFor(Request, plan), nullptr);
}

TEST_F(RecordedJob, KeepsCopiesPrivateUntilAllIsThere) {
    ExpectModeMeanwhile(0600);
    AnswerWith(PressedKey('o'));
    const RunOutcome outcome = Run(CopyOf({"a", "b"}));
    EXPECT_EQ(outcome.Result, RunResult::Succeeded) << outcome.Text;
    EXPECT_EQ(outcome.Finishing->Finished, 2U);
    for (const char* name : {"a", "b"}) {
        EXPECT_EQ(ModeOf(name), 0644U) << name;
        EXPECT_EQ(TimeOf(name), kLongAgo) << name;
    }
}

TEST_F(RecordedJob, KeepsNothingPrivateWhereModesDoNotComeAlong) {
    Request.Preserve = kTimes;
    ::chmod((Root / "from/b").c_str(), 0600);
    ::chmod((Root / "to/b").c_str(), 0664);
    ExpectModeMeanwhile(0640);
    AnswerWith(PressedKey('o'));
    Run(CopyOf({"a", "b"}));
    EXPECT_EQ(ModeOf("a"), 0640U);
    EXPECT_EQ(ModeOf("b"), 0664U);
    EXPECT_EQ(TimeOf("a"), kLongAgo);
    EXPECT_EQ(TimeOf("b"), kLongAgo);
}

TEST_F(RecordedJob, FindsCopiesByTheirNewNames) {
    for (const PreserveChoice preserve : {kModeAndTimes, kTimes}) {
        Request.Preserve = preserve;
        Request.OnConflict = FileConflictChoice::KeepBoth;
        EXPECT_EQ(Run(CopyOf({"b"})).Finishing->Finished, 1U);
    }
    EXPECT_EQ(TimeOf("b-2"), kLongAgo);
    EXPECT_EQ(TimeOf("b-3"), kLongAgo);
    EXPECT_NE(TimeOf("b"), kLongAgo);
}

TEST_F(RecordedJob, FinishesWhatACanceledJobHasCopied) {
    ExpectModeMeanwhile(0600);
    AnswerWith(kEscapeKey);
    WriteFile(Root / "from/not reached", "new");
    const std::int64_t timeOfOld = TimeOf("b");
    const RunOutcome outcome = Run(CopyOf({"a", "b", "not reached"}));
    EXPECT_EQ(outcome.Result, RunResult::Canceled);
    EXPECT_EQ(outcome.Finishing->Finished, 1U);
    EXPECT_EQ(outcome.Finishing->LeftAlone, 0U);
    EXPECT_EQ(ModeOf("a"), 0644U);
    EXPECT_EQ(TimeOf("a"), kLongAgo);
    EXPECT_EQ(TimeOf("b"), timeOfOld);
}

TEST_F(RecordedJob, GivesBackItsModeToAFileThatCouldNotBeReplaced) {
    ::chmod((Root / "to/b").c_str(), 0664);
    AnswerWith(PressedKey('o'));
    TarvaneTransferPlan plan = CopyOf({"b"});
    // A file that nobody can read, not even root.
    plan.Items[0].SourcePath = "/proc/sys/vm/drop_caches";
    const RunOutcome outcome = Run(plan);
    EXPECT_EQ(outcome.Result, RunResult::Failed);
    EXPECT_EQ(outcome.Text,
              "/proc/sys/vm/drop_caches: Failed to open source file. (Permission denied)");
    EXPECT_EQ(ReadFile(Root / "to/b"), "old");
    EXPECT_EQ(ModeOf("b"), 0664U);
}

TEST_F(RecordedJob, OpensUpTheParentsThatItHasMade) {
    TarvaneTransferPlan plan = CopyOf({"a"});
    plan.Items[0].DestinationPath = Root / "to/x/y/a";
    EXPECT_EQ(Run(plan).Result, RunResult::Succeeded);
    EXPECT_EQ(ModeOf("x"), 0750U);
    EXPECT_EQ(ModeOf("x/y"), 0750U);
}

TEST_F(RecordedJob, SaysWhatStaysPrivateWhenItIsLeft) {
    HeldDrive drive("read");
    Screen.PressWhen([&drive] { return drive.Holds(); }, {kEscapeKey});
    Screen.Script({Screen.Always(), {{}, {kEscapeKey}}, [&drive] { drive.Release(); }});
    EXPECT_THROW(Run(CopyOf({"a", kTrack})), ScriptedExit);
    EXPECT_NE(Screen.Screen().find("; what is copied stays private: only its owner can read it\n"),
              std::string::npos)
        << Screen.Screen();
}
