// A whole run at the prompt: what stands on the screen and on the standard streams at its end, and
// how it has ended.

#include "prompt_front_end.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <memory>
#include <optional>
#include <string>
#include <sys/mman.h>
#include <sys/mount.h>
#include <thread>

#include <gtest/gtest.h>

#include "at_prompt.h"
#include "captured_descriptor.h"
#include "completion_bell.h"
#include "fake_syncfs.h"
#include "fake_utimensat.h"
#include "json_records.h"
#include "mounts.h"
#include "needs.h"
#include "size_text.h"
#include "without_time.h"

namespace {

bool gbNoMemoryToShare = false;

} // namespace

extern "C" {
void* __real_mmap(void* Where, size_t Size, int Access, int Flags, int File, off_t Start);
void* __wrap_mmap(void* Where, size_t Size, int Access, int Flags, int File, off_t Start);
}

void* __wrap_mmap(void* Where, size_t Size, int Access, int Flags, int File, off_t Start) {
    if (gbNoMemoryToShare && (Flags & MAP_SHARED) != 0) {
        errno = ENOMEM;
        return MAP_FAILED;
    }
    return __real_mmap(Where, Size, Access, Flags, File, Start);
}

namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;

class RunAtPromptTest : public AtPrompt {
protected:
    RunAtPromptTest() {
        // Of a job before.
        TakeTarvaneCompletionBell();
        WriteFile(Root / "from/a", "data");
        fs::create_directory(Root / "to");
        Request.Transfer.Flush = FlushChoice::Never;
        Ask({PathOf("from/a")});
    }

    // For the directory "to".
    void Ask(const std::vector<std::string>& Sources) {
        Request.Transfer.Operands.assign(Sources.begin(), Sources.end());
        Request.Transfer.TargetDirectory = Root / "to";
    }
    void AskForDanglingLink() {
        fs::create_directory(Root / "from/tree");
        fs::create_symlink("nowhere", Root / "from/tree/link");
        Ask({PathOf("from/tree")});
    }
    void TakeName() { WriteFile(Root / "to/a", "old"); }

    std::string Finding() const {
        return "The job will stop at links that lead nowhere:\n  " + PathOf("from/tree/link") +
               "\n";
    }
    std::string VerboseLine() const {
        return "'" + PathOf("from/a") + "' -> '" + PathOf("to/a") + "'\n";
    }

    // Runs with standard output led to Replacement, or kept in Output.
    void Run(std::optional<int> Replacement = std::nullopt) {
        const CapturedDescriptor errors(STDERR_FILENO);
        const auto output = Replacement
                                ? std::make_unique<CapturedDescriptor>(STDOUT_FILENO, *Replacement)
                                : std::make_unique<CapturedDescriptor>(STDOUT_FILENO);
        Outcome = RunAtPrompt(Request, Screen, StatusInTests);
        Errors = WithoutTime(errors.Text());
        Output = Replacement ? std::string() : output->Text();
    }

    void ExpectEnd(RunResult Result, const std::string& Shown,
                   std::optional<int> EndSignal = std::nullopt) {
        EXPECT_EQ(Outcome.Result, Result);
        EXPECT_EQ(Outcome.EndSignal, EndSignal);
        EXPECT_EQ(WithoutTime(Screen.Screen()), Shown);
        EXPECT_EQ(Errors, "");
        EXPECT_TRUE(Screen.IsThrough());
    }
    bool Rings() const { return Screen.Written().find('\a') != std::string::npos; }
    Tree Destination() const { return TreeOf(Root / "to"); }

    PromptRequest Request;
    RunOutcome Outcome;
    std::string Output;
    std::string Errors;
};

} // namespace

TEST_F(RunAtPromptTest, LeavesTheLastLineAndRingsTheBell) {
    Run();
    ExpectEnd(RunResult::Succeeded, "Copied 1 entry, 4 B.\n");
    EXPECT_EQ(Output, "");
    EXPECT_TRUE(Screen.Written().ends_with("Copied 1 entry, 4 B.\n\a"));
    EXPECT_EQ(Screen.Calls(), (std::vector<std::string>{"keys", "no keys", "closed", "finished"}));
    EXPECT_EQ(Destination(), (Tree{{"a", "file data"}}));
}

TEST_F(RunAtPromptTest, IsSilentWhenItIsToBeQuiet) {
    Request.bQuiet = true;
    Run();
    ExpectEnd(RunResult::Succeeded, "");
    EXPECT_EQ(Screen.Written(), "");
    EXPECT_EQ(Output, "");
}

TEST_F(RunAtPromptTest, RefusesWhatCannotBePlanned) {
    Ask({PathOf("from/missing"), PathOf("from/gone")});
    Run();
    ExpectEnd(RunResult::Failed, "tarvane: cannot stat '" + PathOf("from/missing") +
                                     "': No such file or directory\ntarvane: cannot stat '" +
                                     PathOf("from/gone") + "': No such file or directory\n");
    EXPECT_EQ(Screen.Calls(), (std::vector<std::string>{"closed", "finished"}));
    EXPECT_FALSE(Rings());
}

TEST_F(RunAtPromptTest, RefusesWhatContradictsItself) {
    Request.Transfer.TargetDirectory = Root / "from/a";
    Run();
    EXPECT_EQ(Outcome.Result, RunResult::WrongUsage);
    EXPECT_TRUE(Screen.Screen().starts_with("tarvane: ")) << Screen.Screen();
    EXPECT_EQ(Destination(), Tree());
}

TEST_F(RunAtPromptTest, FailsWithTheSentenceOfTheJob) {
    AskForDanglingLink();
    Request.Transfer.bPreflight = false;
    Run();
    ExpectEnd(RunResult::Failed, "tarvane: " + PathOf("from/tree/link") +
                                     ": No such file or directory\nNothing copied.\n");
    EXPECT_FALSE(Rings());
}

TEST_F(RunAtPromptTest, LooksThroughTheSourcesFirst) {
    AskForDanglingLink();
    AnswerWhenShown("Go on with the copy?", {PressedKey('n')});
    Run();
    ExpectEnd(RunResult::Canceled,
              Finding() + "Go on with the copy? no\nCanceled before anything was touched.\n");
}

TEST_F(RunAtPromptTest, IsCanceledAtAQuestion) {
    TakeName();
    Screen.PressWhen(Screen.Shows("File exists"), {kEscapeKey});
    Run();
    ExpectEnd(RunResult::Canceled, "File exists: " + PathOf("to/a") +
                                       " | cancel\nCopy canceled. Partial destination files may "
                                       "remain.\nNothing copied.\n");
    EXPECT_FALSE(Rings());
    EXPECT_EQ(Screen.Calls(), (std::vector<std::string>{
                                  "keys", "no keys", "closed",
                                  "signal " + std::to_string(SIGINT) + " after 2 s", "finished"}));
}

TEST_F(RunAtPromptTest, SaysWhatStaysPrivateWhenTheFinishingIsEnded) {
    WriteFile(Root / "from/tree/file", "data");
    fs::permissions(Root / "from/tree", fs::perms(0755));
    Ask({PathOf("from/tree")});
    Request.Transfer.Preserve = {.bMode = true, .bTimes = true};
    SharedLatch latch;
    std::atomic<bool> bHeld{false};
    const FakeUtimensat times([&] {
        bHeld = true;
        latch.Wait();
        return 0;
    });
    Screen.PressWhen([&] { return bHeld.load(); }, {kEscapeKey});
    Screen.Script({Screen.Always(), {}, [&] { latch.Open(); }});
    Run();
    ExpectEnd(RunResult::Succeeded,
              "Copied 2 entries, 4 B.\n"
              "tarvane: the copy of 1 entry is still private: only its owner can read it\n",
              SIGINT);
    EXPECT_EQ(fs::status(Root / "to/tree").permissions(), fs::perms(0700));
}

TEST_F(RunAtPromptTest, DoesNotBeginWithoutARecord) {
    Request.Transfer.Preserve = {.bMode = true};
    gbNoMemoryToShare = true;
    Outcome = RunAtPrompt(Request, Screen, StatusInTests);
    gbNoMemoryToShare = false;
    ExpectEnd(RunResult::Failed, "tarvane: cannot keep a record of modes and dates: no memory to "
                                 "share: Cannot allocate memory\n");
    EXPECT_EQ(Destination(), Tree());
}

TEST_F(RunAtPromptTest, LeavesWithTheStatusOfTheSignal) {
    TakeName();
    Screen.RaiseWhen(Screen.Shows("File exists"), SIGQUIT);
    int status = 0;
    try {
        Run();
    } catch (const ScriptedExit& exited) {
        status = exited.Status;
    }
    EXPECT_EQ(status, 1000 + SIGQUIT);
}

namespace {

class DryRun : public RunAtPromptTest {
protected:
    DryRun() {
        Request.Transfer.bDryRun = true;
        Request.Transfer.bPreflight = false;
        Request.Transfer.Flush = FlushChoice::Always;
    }
};

} // namespace

TEST_F(DryRun, WritesWhatWouldBeDone) {
    Run();
    ExpectEnd(RunResult::Succeeded, "");
    EXPECT_EQ(Output, "Would copy 1 entry, 4 B (4 bytes).\n");
    EXPECT_EQ(Destination(), Tree());
    EXPECT_FALSE(Rings());
}

TEST_F(DryRun, FailsWhereTheJobWould) {
    AskForDanglingLink();
    Run();
    ExpectEnd(RunResult::Failed, Finding());
    EXPECT_EQ(Output, "Would copy 2 entries, 0 B (0 bytes).\n");
}

TEST_F(DryRun, NeedsNobodyToAsk) {
    Screen.bAsks = false;
    Run();
    ExpectEnd(RunResult::Succeeded, "");
}

TEST_F(DryRun, IsCanceledBySignals) {
    const HeldDrive drive("header");
    Ask({kTrack});
    Screen.RaiseWhen(Screen.Shows("waiting for the drive"), SIGTERM);
    Run();
    ExpectEnd(RunResult::Canceled, "tarvane: waiting for the drive, Esc cancels\n", SIGTERM);
    EXPECT_EQ(Output, "");
}

TEST_F(DryRun, WritesRecordsInsteadOfWords) {
    Request.Progress = ProgressStyle::Json;
    Run();
    ExpectEnd(RunResult::Succeeded, "");
    EXPECT_TRUE(Output.starts_with(R"({"event":"totals","entries":1,)")) << Output;
    EXPECT_TRUE(Output.ends_with(DoneRecord(Outcome, StatusInTests(Outcome)) + "\n")) << Output;
}

namespace {

class HeldDiscAtPrompt : public RunAtPromptTest {
protected:
    void Hold(const std::string& Call) {
        // One at a time.
        Drive.reset();
        Drive = std::make_unique<HeldDrive>(Call);
        Request.Transfer.bPreflight = false;
    }

    std::unique_ptr<HeldDrive> Drive;
};

} // namespace

TEST_F(HeldDiscAtPrompt, CanBeLeftWhileTheDriveIsWaitedFor) {
    for (const char* operand : {"cdda:/dev/fake-cd", kTrack}) {
        Hold("header");
        Ask({operand});
        Screen.PressWhen(Screen.Shows("waiting for the drive"), {kEscapeKey});
        Run();
        EXPECT_EQ(Outcome.Result, RunResult::Canceled);
        EXPECT_EQ(Outcome.EndSignal, SIGINT);
        EXPECT_EQ(Destination(), Tree());
    }
}

TEST_F(HeldDiscAtPrompt, SaysThatTracksStayWhenTheyAreMoved) {
    const std::string sentence =
        "tarvane: the tracks of a CD are copied: nothing can be removed from a disc\n";
    Hold("never");
    Ask({kTrack});
    Request.Transfer.OnConflict = FileConflictChoice::Overwrite;
    // Or it would say that it waits for the drive.
    Screen.StopClockUntil([] { return false; });
    Run();
    ExpectEnd(RunResult::Succeeded, "Copied 1 entry, 1.9 MB.\n");
    Request.Transfer.bMove = true;
    Request.bQuiet = true;
    Run();
    ExpectEnd(RunResult::Succeeded, "Copied 1 entry, 1.9 MB.\n");
    Request.bQuiet = false;
    Run();
    ExpectEnd(RunResult::Succeeded,
              "Copied 1 entry, 1.9 MB.\n" + sentence + "Moved 1 entry, 1.9 MB; 1 replaced.\n");
}

TEST_F(HeldDiscAtPrompt, SaysNothingAboutTracksWhenFilesAreMoved) {
    Request.Transfer.bMove = true;
    Run();
    ExpectEnd(RunResult::Succeeded, "Moved 1 entry, 4 B.\n");
}

namespace {

class ProgressAtPrompt : public HeldDiscAtPrompt {
protected:
    // What stands on the screen after six seconds of a job, which is then let go on.
    std::string ShownMeanwhile(ProgressStyle Style) {
        Hold("read");
        Ask({kTrack});
        Request.Progress = Style;
        Screen.StopClockUntil([this] { return Drive->Holds(); });
        Request.Transfer.OnConflict = FileConflictChoice::Overwrite;
        std::string shown;
        Screen.Script({Screen.After(milliseconds(6000)), {}, [&] {
                           shown = Screen.Screen();
                           Drive->Release();
                           ExpectJobToEnd();
                       }});
        Run();
        EXPECT_EQ(Outcome.Result, RunResult::Succeeded);
        EXPECT_TRUE(Screen.IsThrough());
        return shown;
    }

    static constexpr const char* kDone = "Copied 1 entry, 1.9 MB.\n";
    static constexpr const char* kDoneAgain = "Copied 1 entry, 1.9 MB; 1 replaced.\n";
    static constexpr const char* kLine = "Overall 0 B / 1.9 MB | Items 0 / 1";
};

} // namespace

TEST_F(ProgressAtPrompt, IsABlockWhereLinesCanBeRedrawn) {
    for (const ProgressStyle style : {ProgressStyle::Auto, ProgressStyle::Live}) {
        EXPECT_NE(ShownMeanwhile(style).find("Stage: "), std::string::npos);
    }
    EXPECT_EQ(WithoutTime(Screen.Screen()), std::string(kDone) + kDoneAgain);
}

TEST_F(ProgressAtPrompt, IsLinesOnAPlainTerminal) {
    Screen.bRedraws = false;
    const std::string shown = ShownMeanwhile(ProgressStyle::Auto);
    EXPECT_TRUE(shown.starts_with(kLine)) << shown;
    EXPECT_EQ(WithoutTime(Screen.Screen()), shown + kDone);
}

TEST_F(ProgressAtPrompt, IsLinesWhereTheyAreAskedFor) {
    const std::string shown = ShownMeanwhile(ProgressStyle::Lines);
    EXPECT_TRUE(shown.starts_with(kLine)) << shown;
    EXPECT_EQ(WithoutTime(Screen.Screen()), shown + kDone);
}

TEST_F(ProgressAtPrompt, IsLinesWithoutATerminalOnlyWhereTheyAreAskedFor) {
    Screen.bOutputTerminal = Screen.bRedraws = Screen.bAsks = false;
    EXPECT_EQ(ShownMeanwhile(ProgressStyle::Auto), "");
    EXPECT_EQ(Errors, kDone);
    EXPECT_EQ(ShownMeanwhile(ProgressStyle::Lines), "");
    EXPECT_TRUE(Errors.starts_with(kLine)) << Errors;
    EXPECT_TRUE(Errors.ends_with(std::string("\n") + kDoneAgain)) << Errors;
    EXPECT_EQ(Screen.Written(), "");
}

TEST_F(ProgressAtPrompt, IsNoBlockWhereMessagesGoElsewhereThanToTheTerminal) {
    Screen.bOutputTerminal = false;
    EXPECT_EQ(ShownMeanwhile(ProgressStyle::Auto), "");
    EXPECT_EQ(Errors, kDone);
    EXPECT_EQ(Screen.Written(), "");
}

TEST_F(ProgressAtPrompt, IsNothingWhereNoneIsWanted) {
    EXPECT_EQ(ShownMeanwhile(ProgressStyle::None), "");
    EXPECT_EQ(WithoutTime(Screen.Screen()), kDone);
}

TEST_F(ProgressAtPrompt, IsNothingWhereItIsToBeQuiet) {
    Request.bQuiet = true;
    for (const ProgressStyle style : {ProgressStyle::Auto, ProgressStyle::Lines}) {
        EXPECT_EQ(ShownMeanwhile(style), "");
    }
    EXPECT_EQ(Screen.Written(), "");
}

namespace {

class CannotRunHere : public RunAtPromptTest {
protected:
    void ExpectRefusal(const std::string& Sentence) {
        Run();
        ExpectEnd(RunResult::WrongUsage, "tarvane: " + Sentence + "\n");
        EXPECT_EQ(Outcome.Text, Sentence);
        EXPECT_EQ(Screen.Calls(), std::vector<std::string>{"finished"});
        EXPECT_EQ(Output, "");
        EXPECT_EQ(Destination(), Tree());
    }
};

} // namespace

TEST_F(CannotRunHere, WhereNobodyCanBeAsked) {
    Screen.bAsks = false;
    Request.Transfer.OnConflict = FileConflictChoice::Ask;
    ExpectRefusal("nobody can be asked about taken names without a terminal; pass "
                  "--on-conflict=overwrite, skip or another choice");
}

TEST_F(CannotRunHere, WhereNobodyCanBeAskedAboutDirectories) {
    Screen.bAsks = false;
    Request.Transfer.OnConflict = FileConflictChoice::Skip;
    Request.Transfer.OnDirectoryConflict = DirectoryConflictChoice::Ask;
    ExpectRefusal("nobody can be asked about taken names without a terminal; pass "
                  "--on-directory-conflict=merge, skip or fail");
}

TEST_F(CannotRunHere, WithALiveBlockThatCannotBeRedrawn) {
    Screen.bRedraws = false;
    Request.Progress = ProgressStyle::Live;
    ExpectRefusal("--progress=live needs a terminal that can redraw lines on standard error; pass "
                  "--progress=lines or another style");
}

namespace {

class UnattendedRun : public RunAtPromptTest {
protected:
    UnattendedRun() { Screen.bOutputTerminal = Screen.bRedraws = Screen.bAsks = false; }
};

} // namespace

TEST_F(UnattendedRun, NeedsNoChoiceWhereNoNameIsTaken) {
    Run();
    EXPECT_EQ(Outcome.Result, RunResult::Succeeded);
    EXPECT_EQ(Errors, "Copied 1 entry, 4 B.\n");
    EXPECT_EQ(Screen.Written(), "");
    EXPECT_EQ(Destination(), (Tree{{"a", "file data"}}));
}

TEST_F(UnattendedRun, FailsAtATakenNameBeforeAnythingIsTouched) {
    TakeName();
    WriteFile(Root / "from/b", "free");
    Ask({PathOf("from/b"), PathOf("from/a")});
    Run();
    EXPECT_EQ(Outcome.Result, RunResult::Failed);
    EXPECT_NE(Errors.find("'" + PathOf("to/a") + "'"), std::string::npos) << Errors;
    EXPECT_EQ(Destination(), (Tree{{"a", "file old"}}));
}

TEST_F(UnattendedRun, MergesDirectories) {
    WriteFile(Root / "from/tree/new", "n");
    WriteFile(Root / "to/tree/kept", "k");
    Ask({PathOf("from/tree")});
    Run();
    EXPECT_EQ(Outcome.Result, RunResult::Succeeded);
    EXPECT_EQ(TreeOf(Root / "to/tree"), (Tree{{"kept", "file k"}, {"new", "file n"}}));
}

namespace {

class ResultsAtPrompt : public RunAtPromptTest {
protected:
    static int FullDisk() {
        NeedDeviceNode("/dev/full");
        return open("/dev/full", O_WRONLY | O_CLOEXEC);
    }
    static constexpr const char* kFullMessage = "tarvane: write error: No space left on device\n";
};

} // namespace

TEST_F(ResultsAtPrompt, SayWhatGoesWhere) {
    Request.bVerbose = true;
    Run();
    ExpectEnd(RunResult::Succeeded, "Copied 1 entry, 4 B.\n");
    EXPECT_EQ(Output, VerboseLine());
}

TEST_F(ResultsAtPrompt, SayWhatBecomesOfTakenNames) {
    TakeName();
    Request.bVerbose = true;
    const std::string line = VerboseLine().substr(0, VerboseLine().size() - 1);
    AnswerWhenShown("File exists", {PressedKey('k')});
    Run();
    EXPECT_EQ(Output, line + "\n" + line + ": renamed to '" + PathOf("to/a-2") + "'\n");
}

TEST_F(ResultsAtPrompt, AreWaitedForBehindAReaderThatIsBusy) {
    Request.bVerbose = true;
    const auto [reader, writer] = FullPipe();
    testing::AssertionResult line = testing::AssertionFailure() << "there is no line";
    std::thread reading([this, &line, end = reader] {
        const auto isDone = [this] { return fs::exists(Root / "to/a"); };
        std::string received;
        const auto hasCome = [&] {
            received += ReadPipe(end);
            return received.ends_with(VerboseLine());
        };
        line = BecomesTrue("the job is done", isDone);
        line = line ? BecomesTrue("the line has come", hasCome) : line;
    });
    Run(writer);
    reading.join();
    close(reader);
    EXPECT_TRUE(line);
}

TEST_F(ResultsAtPrompt, AreRecordsInsteadOfWords) {
    Request.bVerbose = true;
    Request.Progress = ProgressStyle::Json;
    Run();
    ExpectEnd(RunResult::Succeeded, "");
    EXPECT_EQ(Output.find('\''), std::string::npos);
    EXPECT_TRUE(Output.ends_with(DoneRecord(Outcome, StatusInTests(Outcome)) + "\n")) << Output;
}

TEST_F(ResultsAtPrompt, HoldTheSizesOfWhatIsRenamed) {
    WriteFile(Root / "from/tree/one", "data");
    WriteFile(Root / "from/tree/two", "data");
    Ask({PathOf("from/tree")});
    Request.Transfer.bMove = true;
    Request.Progress = ProgressStyle::Json;
    Run();
    EXPECT_TRUE(Output.starts_with(R"({"event":"totals","entries":3,"bytes":8,)")) << Output;
}

TEST_F(ResultsAtPrompt, HoldTheStatusThatTheProgramExitsWith) {
    TakeName();
    Request.Progress = ProgressStyle::Json;
    Screen.StopClockUntil(IsNoJobRunning);
    Screen.RaiseWhen(Screen.Shows("File exists"), SIGTERM);
    Run();
    EXPECT_NE(Output.find("\"exit_status\":" + std::to_string(1000 + SIGTERM)), std::string::npos)
        << Output;
}

TEST_F(ResultsAtPrompt, AreAFailureWhenTheyCannotBeWritten) {
    Request.bVerbose = true;
    Run(FullDisk());
    ExpectEnd(RunResult::Failed, std::string("Copied 1 entry, 4 B.\n") + kFullMessage);
}

TEST_F(ResultsAtPrompt, AreAFailureWhenRecordsCannotBeWritten) {
    Request.Progress = ProgressStyle::Json;
    Run(FullDisk());
    ExpectEnd(RunResult::Failed, kFullMessage);
}

TEST_F(ResultsAtPrompt, LeaveACanceledRunCanceledWhenTheyCannotBeWritten) {
    TakeName();
    Request.bVerbose = true;
    Screen.PressWhen(Screen.Shows("File exists"), {kEscapeKey});
    Run(FullDisk());
    EXPECT_EQ(Outcome.Result, RunResult::Canceled);
    EXPECT_TRUE(Screen.Screen().ends_with(kFullMessage)) << Screen.Screen();
}

TEST_F(ResultsAtPrompt, EndTheRunLikeAWriterToABrokenPipeWhenNobodyReadsThem) {
    TakeName();
    Request.bVerbose = true;
    Screen.StopClockUntil(IsNoJobRunning);
    Run(BrokenPipe());
    ExpectEnd(RunResult::Canceled,
              "Copy canceled. Partial destination files may remain.\nNothing copied.\n", SIGPIPE);
    EXPECT_EQ(Destination(), (Tree{{"a", "file old"}}));
}

TEST_F(ResultsAtPrompt, OfADryRunEndLikeAWriterToABrokenPipeToo) {
    Request.Transfer.bDryRun = true;
    Run(BrokenPipe());
    ExpectEnd(RunResult::Succeeded, "", SIGPIPE);
}

TEST_F(ResultsAtPrompt, EndTheRunWhenNobodyReadsTheRecords) {
    TakeName();
    Request.Progress = ProgressStyle::Json;
    Screen.StopClockUntil(IsNoJobRunning);
    Run(BrokenPipe());
    EXPECT_EQ(Outcome.EndSignal, SIGPIPE);
    EXPECT_EQ(Destination(), (Tree{{"a", "file old"}}));
}

namespace {

class FlushAtPrompt : public RunAtPromptTest {
protected:
    FlushAtPrompt() {
        Request.Transfer.Flush = FlushChoice::Always;
        Disk.Syncfs = [](int) { return 0; };
    }

    // Its second file is too big for a disk of 8 MB.
    void AskForMoveThatFails() {
        WriteFile(Root / "from/big", "");
        fs::resize_file(Root / "from/big", 16U << 20U);
        Ask({PathOf("from/a"), PathOf("from/big")});
        Request.Transfer.bMove = true;
        Request.Transfer.bPreflight = false;
    }
    // By Esc at the question about its second file.
    void AskForCanceledCopy() {
        WriteFile(Root / "from/b", "data");
        Ask({PathOf("from/a"), PathOf("from/b")});
        Screen.PressWhen(Screen.Shows("File exists"), {kEscapeKey});
    }
    // The end of a move whose second file has found the disk at "to" full.
    std::string FullDisk() const {
        return "tarvane: " + PathOf("to/big") +
               ": Failed while writing destination file. (No space left on " + PathOf("to") +
               ": 16.0 MB needed, " + SizeText(fs::space(Root / "to").free) +
               " free)\nMoved 1 entry, 4 B.\n";
    }

    std::string Cancel(const std::string& Name) const {
        return "File exists: " + PathOf(Name) +
               " | cancel\nCopy canceled. Partial destination files may remain.\n";
    }

    const std::string kFailure =
        "cannot write everything to '" + PathOf("to") + "': Input/output error";
    static constexpr const char* kLeft =
        "The copied files stay, but the system is still writing them. Do not unplug the disk yet. "
        "Until everything is written, umount says that the target is busy.\n";

    FakeSyncfs Disk;
};

} // namespace

TEST_F(FlushAtPrompt, SaysThatTheDiskIsSafeToUnplug) {
    const RemovableDisk disk(Root.Path(), "1\n");
    Request.Transfer.TargetDirectory = disk.Path();
    Run();
    ExpectEnd(RunResult::Succeeded,
              "Copied 1 entry, 4 B.\nEverything is written. It is safe to unplug the disk.\n");
    EXPECT_EQ(Outcome.bFlushed, true);
}

TEST_F(FlushAtPrompt, DoesNotCallSafeWhatIsOnNoDisk) {
    EnterPrivateMountNamespace();
    const ScopedMount memory = MountTmpfs(Root / "memory", "size=1m");
    Request.Transfer.TargetDirectory = memory.Path();
    Run();
    ExpectEnd(RunResult::Succeeded,
              "Copied 1 entry, 4 B.\nEverything is written as far as the system says.\n");
}

TEST_F(FlushAtPrompt, SaysThatTheDiskIsNotSafeToUnplugAfterEsc) {
    Disk.Syncfs = FakeSyncfs::NeverEnd;
    Screen.PressWhen(Screen.Shows("Not safe to unplug yet"), {kEscapeKey});
    Run();
    ExpectEnd(RunResult::Succeeded, std::string("Copied 1 entry, 4 B.\n") + kLeft, SIGINT);
    EXPECT_EQ(Outcome.bFlushed, false);
}

TEST_F(FlushAtPrompt, FailsWhenTheDiskDoes) {
    Disk.Syncfs = FakeSyncfs::FailWith(EIO);
    Run();
    ExpectEnd(RunResult::Failed, "Copied 1 entry, 4 B.\ntarvane: cannot write everything to '" +
                                     PathOf("to") + "': Input/output error\n");
}

TEST_F(FlushAtPrompt, IsSilentWhenItIsToBeQuiet) {
    Request.bQuiet = true;
    Run();
    ExpectEnd(RunResult::Succeeded, "");
    EXPECT_EQ(Outcome.bFlushed, true);
}

TEST_F(FlushAtPrompt, IsRecordedInsteadOfSaid) {
    Request.Progress = ProgressStyle::Json;
    Run();
    ExpectEnd(RunResult::Succeeded, "");
    EXPECT_NE(Output.find("\"event\":\"flush\""), std::string::npos) << Output;
    EXPECT_NE(Output.find("\"flushed\":true"), std::string::npos) << Output;
}

TEST_F(FlushAtPrompt, IsLeftOutWhenNothingWasDone) {
    TakeName();
    Screen.PressWhen(Screen.Shows("File exists"), {kEscapeKey});
    Run();
    ExpectEnd(RunResult::Canceled, Cancel("to/a") + "Nothing copied.\n");
    EXPECT_EQ(Outcome.bFlushed, std::nullopt);
}

TEST_F(FlushAtPrompt, FollowsAMoveThatFails) {
    EnterPrivateMountNamespace();
    const ScopedMount disk = MountLoopDisk(Root / "to", 8);
    AskForMoveThatFails();
    Run();
    ExpectEnd(RunResult::Failed,
              FullDisk() +
                  "1 entry was moved before; it is written now. It is safe to unplug the disk.\n");
    EXPECT_EQ(Outcome.bFlushed, true);
    EXPECT_FALSE(fs::exists(Root / "from/a"));
}

TEST_F(FlushAtPrompt, FollowsACopyThatIsCanceled) {
    const RemovableDisk disk(Root.Path(), "1\n");
    AskForCanceledCopy();
    WriteFile(disk.Path() / "b", "old");
    Request.Transfer.TargetDirectory = disk.Path();
    Run();
    ExpectEnd(RunResult::Canceled,
              Cancel("disk/b") +
                  "Copied 1 entry, 4 B.\n1 entry was copied before; it is written now. It is safe "
                  "to unplug the disk.\n");
}

TEST_F(FlushAtPrompt, OfACanceledCopyCanBeLeftWithEsc) {
    AskForCanceledCopy();
    WriteFile(Root / "to/b", "old");
    Disk.Syncfs = FakeSyncfs::NeverEnd;
    Screen.PressWhen(Screen.Shows("Not safe to unplug yet"), {kEscapeKey});
    Run();
    ExpectEnd(RunResult::Canceled, Cancel("to/b") + "Copied 1 entry, 4 B.\n" + kLeft, SIGINT);
}

TEST_F(FlushAtPrompt, FailsWhenTheDiskIsUnmountedWhileTheJobRuns) {
    EnterPrivateMountNamespace();
    const ScopedMount disk = MountLoopDisk(Root / "to", 8);
    WriteFile(Root / "from/b", "data");
    WriteFile(Root / "to/b", "old");
    Ask({PathOf("from/a"), PathOf("from/b")});
    Screen.Script({Screen.Shows("File exists"), {}, [&disk] {
                       EXPECT_EQ(umount2(disk.Path().c_str(), MNT_DETACH), 0);
                   }});
    Screen.PressWhen(Screen.Later(milliseconds(700)), {PressedKey('o')});
    Run();
    ExpectEnd(RunResult::Failed,
              "File exists: " + PathOf("to/b") +
                  " | overwrite\nCopied 2 entries, 8 B; 1 replaced.\ntarvane: cannot write "
                  "everything to '" +
                  PathOf("to") +
                  "': it is no longer on the file system that the transfer "
                  "began on\n");
    EXPECT_EQ(Destination(), (Tree{{"b", "file data"}}));
}

// The manual warns of it.
TEST_F(FlushAtPrompt, ComesWhenTheSourcesOfAMoveAreGone) {
    Request.Transfer.bMove = true;
    Disk.Syncfs = FakeSyncfs::NeverEnd;
    Screen.Script({Screen.Shows("Not safe to unplug yet"), {{}, {kEscapeKey}}, [this] {
                       EXPECT_FALSE(fs::exists(Root / "from/a"));
                   }});
    Run();
    ExpectEnd(RunResult::Succeeded, std::string("Moved 1 entry, 4 B.\n") + kLeft, SIGINT);
}

TEST_F(FlushAtPrompt, SaysWhatAMoveMayHaveLost) {
    Request.Transfer.bMove = true;
    Disk.Syncfs = FakeSyncfs::FailWith(EIO);
    Run();
    const std::string sentence = kFailure + "; the sources that were moved are gone, and '" +
                                 PathOf("to/a") + "' may be incomplete";
    ExpectEnd(RunResult::Failed, "Moved 1 entry, 4 B.\ntarvane: " + sentence + "\n");
    EXPECT_EQ(Outcome.Text, sentence);
}

TEST_F(FlushAtPrompt, SaysWhatAFailedMoveMayHaveLost) {
    EnterPrivateMountNamespace();
    const ScopedMount disk = MountLoopDisk(Root / "to", 8);
    AskForMoveThatFails();
    Disk.Syncfs = FakeSyncfs::FailWith(EIO);
    Run();
    ExpectEnd(RunResult::Failed, FullDisk() + "tarvane: " + kFailure +
                                     "; the sources that were moved are gone, and '" +
                                     PathOf("to/a") + "' and '" + PathOf("to/big") +
                                     "' may be incomplete\n");
    EXPECT_TRUE(FullDisk().starts_with("tarvane: " + Outcome.Text + "\n")) << Outcome.Text;
}

TEST_F(FlushAtPrompt, IsLeftOutWhereNothingIsToBeFlushed) {
    Request.Transfer.Flush = FlushChoice::Never;
    Run();
    ExpectEnd(RunResult::Succeeded, "Copied 1 entry, 4 B.\n");
    EXPECT_EQ(Outcome.bFlushed, std::nullopt);
}
