// Every way in which a running copy can be ended from outside: no partial file stays, the terminal
// is as it was, and the status says what happened.

#include "becomes_true.h"
#include "hanging_file_system.h"
#include "mounts.h"
#include "on_terminal.h"
#include "preloaded_drive.h"
#include "sanitizer_options.h"
#include "without_time.h"

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <vector>

namespace {

namespace fs = std::filesystem;

class EndsOnTerminal : public OnTerminal {
protected:
    void StartSlowCopy(const std::vector<std::string>& Options = {}) {
        WriteFile(Root / "big.bin", PatternBytes(20 << 20));
        std::vector<std::string> arguments{"copy", "--no-preflight", "--flush=never", "big.bin",
                                           "disk"};
        arguments.insert(arguments.begin() + 1, Options.begin(), Options.end());
        ProgramInTerminal::Setting setting = Setting(arguments);
        LetSignalsEndIt(setting.Environment);
        Start(setting);
    }

    void StartShownSlowCopy(const std::vector<std::string>& Options = {}) {
        StartSlowCopy(Options);
        ASSERT_TRUE(Program->ShowsText(" MB / 20.0 MB"));
    }

    void ExpectNothingLeft() {
        EXPECT_EQ(TreeOf(Root / "disk").count("big.bin"), 0U);
        ExpectRestoredTerminal();
    }

    RemovableDisk Disk{Root.Path(), "1\n"};
};

TEST_F(EndsOnTerminal, SigintCancels) {
    StartShownSlowCopy();
    Program->Signal(SIGINT);
    EXPECT_TRUE(Program->ExitsWith(130));
    EXPECT_EQ(Program->HistoryAndScreen(),
              "Copy canceled. Partial destination files may remain.\nNothing copied.\n");
    ExpectNothingLeft();
}

// Sent to the process and to its group, as timeout does.
TEST_F(EndsOnTerminal, SigintsThatComeTogetherCancel) {
    StartShownSlowCopy();
    for (int i = 0; i < 3; ++i) {
        Program->Signal(SIGINT);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_TRUE(Program->ExitsWith(130));
    EXPECT_EQ(Program->HistoryAndScreen(),
              "Copy canceled. Partial destination files may remain.\nNothing copied.\n");
    ExpectNothingLeft();
}

TEST_F(EndsOnTerminal, EscCancelsWithPlainLines) {
    StartShownSlowCopy({"--progress=lines", "--interval=0.1"});
    Program->Type(kEsc);
    EXPECT_TRUE(Program->ExitsWith(130));
    EXPECT_EQ(Program->Output().find("^["), std::string::npos) << Program->HistoryAndScreen();
    ExpectNothingLeft();
}

TEST_F(EndsOnTerminal, EscCancelsQuietly) {
    StartSlowCopy({"-q"});
    EXPECT_TRUE(
        BecomesTrue("the copy has begun", [this] { return fs::exists(Root / "disk/big.bin"); }));
    Program->Type(kEsc);
    EXPECT_TRUE(Program->ExitsWith(130));
    EXPECT_EQ(Program->HistoryAndScreen(), "");
    ExpectNothingLeft();
}

TEST_F(EndsOnTerminal, SigtermCancelsAndKeepsItsStatus) {
    StartShownSlowCopy();
    Program->Signal(SIGTERM);
    EXPECT_TRUE(Program->ExitsWith(143));
    ExpectNothingLeft();
}

TEST_F(EndsOnTerminal, SighupCancelsAndKeepsItsStatus) {
    StartShownSlowCopy();
    Program->Signal(SIGHUP);
    EXPECT_TRUE(Program->ExitsWith(129));
    ExpectNothingLeft();
}

TEST_F(EndsOnTerminal, AClosedTerminalCancels) {
    StartShownSlowCopy();
    Program->HangUp();
    EXPECT_TRUE(Program->ExitsWith(129));
    EXPECT_EQ(TreeOf(Root / "disk").count("big.bin"), 0U);
}

TEST_F(EndsOnTerminal, Sigusr1PrintsOneStatusLineAndGoesOn) {
    StartShownSlowCopy();
    Program->Signal(SIGUSR1);
    EXPECT_TRUE(Program->ExitsWith(0));
    const std::string shown = Program->HistoryAndScreen();
    EXPECT_EQ(shown.find("Overall "), 0U) << shown;
    EXPECT_NE(shown.find(" / 20.0 MB | Items 0 / 1 | Rate "), std::string::npos) << shown;
    EXPECT_TRUE(WithoutTime(shown).ends_with("\nCopied 1 entry, 20.0 MB.\n")) << shown;
}

TEST_F(EndsOnTerminal, ACrashRestoresTheTerminal) {
    StartShownSlowCopy();
    Program->Signal(SIGSEGV);
    EXPECT_TRUE(Program->ExitsWith(128 + SIGSEGV));
    ExpectRestoredTerminal();
}

TEST_F(EndsOnTerminal, AnAbortRestoresTheTerminal) {
    StartShownSlowCopy();
    Program->Signal(SIGABRT);
    EXPECT_TRUE(Program->ExitsWith(128 + SIGABRT));
    ExpectRestoredTerminal();
}

TEST_F(EndsOnTerminal, ASignalThatNobodyTakesRestoresTheTerminal) {
    StartShownSlowCopy();
    Program->Signal(SIGUSR2);
    EXPECT_TRUE(Program->ExitsWith(128 + SIGUSR2));
    ExpectRestoredTerminal();
}

// Output that Ctrl-S has stopped, which nobody sets going again.
class EndsOnStoppedTerminal : public EndsOnTerminal {
protected:
    void SetUp() override {
        StartShownSlowCopy();
        ThreadsOfRunningJob = Threads();
        Program->Type(kCtrlS);
    }

    void AwaitEndOfJob() {
        ASSERT_TRUE(BecomesTrue("the job's thread is over",
                                [this] { return Threads() < ThreadsOfRunningJob; }));
    }

    // A sanitizer may have one of its own.
    std::ptrdiff_t Threads() const {
        const fs::path threads = "/proc/" + std::to_string(Program->ProcessId()) + "/task";
        return std::distance(fs::directory_iterator(threads), {});
    }

    std::ptrdiff_t ThreadsOfRunningJob = 0;

    void ExpectSoonEndBy(int Signal) {
        Program->Signal(Signal);
        EXPECT_TRUE(Program->ExitsWith(128 + Signal, 10.0));
        ExpectRestoredTerminal();
    }
};

TEST_F(EndsOnStoppedTerminal, SigtermEndsARunningCopy) {
    ExpectSoonEndBy(SIGTERM);
    EXPECT_EQ(TreeOf(Root / "disk").count("big.bin"), 0U);
}

TEST_F(EndsOnStoppedTerminal, SigintEndsARunningCopy) {
    ExpectSoonEndBy(SIGINT);
    EXPECT_EQ(TreeOf(Root / "disk").count("big.bin"), 0U);
}

TEST_F(EndsOnStoppedTerminal, SigtermEndsACopyThatHasALineToPrint) {
    Program->Signal(SIGUSR1);
    ExpectSoonEndBy(SIGTERM);
}

TEST_F(EndsOnStoppedTerminal, SigtermEndsAFinishedCopy) {
    AwaitEndOfJob();
    ExpectSoonEndBy(SIGTERM);
}

TEST_F(EndsOnStoppedTerminal, SigintEndsAFinishedCopy) {
    AwaitEndOfJob();
    ExpectSoonEndBy(SIGINT);
}

TEST_F(EndsOnStoppedTerminal, AFinishedCopyWaitsForCtrlQ) {
    AwaitEndOfJob();
    Program->Watch(0.3);
    Program->Type(kCtrlQ);
    EXPECT_TRUE(Program->ExitsWith(0));
    EXPECT_EQ(WithoutTime(Program->HistoryAndScreen()), "Copied 1 entry, 20.0 MB.\n");
    ExpectRestoredTerminal();
}

class HeldEndsOnTerminal : public OnTerminal {
protected:
    // A drive that keeps one read for minutes: nothing can interrupt it.
    HeldEndsOnTerminal() {
        FakeDisc disc = AudioDisc({150}, 1000, 7);
        disc.Faults = {{"read 500", 0, 100000}};
        Drives.Describe(disc);
        ProgramInTerminal::Setting setting = Setting({"copy", "cdda:/dev/sr0/1", "track.wav"});
        setting.Columns = 300;
        for (const auto& variable : Drives.Environment()) {
            setting.Environment.push_back(variable);
        }
        Start(setting);
    }

    // The reads before that one have been written then.
    void AwaitHeldRead() { ASSERT_TRUE(Program->ShowsText("Overall 771.8 KB / ")); }

    PreloadedDrives Drives;
};

// At once it would count as the same Ctrl-C.
void TypeCtrlCAgain(ProgramInTerminal& Program) {
    Program.Watch(0.2);
    Program.Type("\x03");
}

TEST_F(HeldEndsOnTerminal, CtrlCIsAnsweredAtOnceAndLeavesTheSecondTime) {
    AwaitHeldRead();
    Program->Type(kCtrlC);
    ASSERT_TRUE(Program->ShowsText(
        "Canceling transfer. Waiting for the current filesystem step to finish."));
    TypeCtrlCAgain(*Program);
    EXPECT_TRUE(Program->ExitsWith(130, 10.0));
    // The block stays: it says what the program was waiting for.
    EXPECT_TRUE(Program->HistoryAndScreen().ends_with(
        "to finish.\ntarvane: left before the transfer has stopped: the program ends when the "
        "drive or disk answers, and a partial copy of 'cdda:/dev/sr0/1' may stay in '" +
        Root.Path().string() + "'\n"))
        << Program->HistoryAndScreen();
    ExpectRestoredTerminal();
}

// A transfer whose worker a file system holds where not even SIGKILL ends it.
class HungEndsOnTerminal : public OnTerminal {
protected:
    HungEndsOnTerminal() {
        EnterPrivateMountNamespace();
        Hung.emplace(Root / "from");
    }

    char StateOfProgram() const {
        std::ifstream status("/proc/" + std::to_string(Program->ProcessId()) + "/stat");
        std::string word;
        while (status >> word && !word.ends_with(')')) {}
        status >> word;
        return word.front();
    }

    std::optional<HangingFileSystem> Hung;
};

TEST_F(HungEndsOnTerminal, LeavesWhenTheFileSystemAnswers) {
    // What is to be carried over would be looked at first.
    ProgramInTerminal::Setting setting =
        Setting({"copy", "--no-preflight", "--no-preserve", "from", "to"});
    setting.Columns = 200;
    Start(setting);
    ASSERT_TRUE(BecomesTrue("the transfer hangs", [this] { return Hung->IsHolding(); }));
    Program->Type(kCtrlC);
    ASSERT_TRUE(Program->ShowsText("Canceling transfer."));
    TypeCtrlCAgain(*Program);
    ASSERT_TRUE(Program->ShowsText("left before the transfer has stopped"));
    // The program is a zombie with a thread that is left.
    EXPECT_TRUE(BecomesTrue("the interface is gone", [this] { return StateOfProgram() == 'Z'; }));
    siginfo_t end{};
    ::waitid(P_PID, static_cast<id_t>(Program->ProcessId()), &end, WEXITED | WNOHANG | WNOWAIT);
    EXPECT_EQ(end.si_pid, 0) << "whoever has started it is free to go on";
    Hung.reset();
    EXPECT_TRUE(Program->ExitsWith(130, 10.0));
    EXPECT_TRUE(Program->HistoryAndScreen().ends_with(
        "tarvane: left before the transfer has stopped: the program ends when the drive or disk "
        "answers, and nothing was copied yet\n"))
        << Program->HistoryAndScreen();
    ExpectRestoredTerminal();
}

TEST_F(HeldEndsOnTerminal, SigtermWaitsTwoSecondsForTheCleanUpAndNoLonger) {
    AwaitHeldRead();
    const auto started = std::chrono::steady_clock::now();
    Program->Signal(SIGTERM);
    EXPECT_TRUE(Program->ExitsWith(143, 20.0));
    EXPECT_GE(std::chrono::steady_clock::now() - started, std::chrono::milliseconds(1900));
    ExpectRestoredTerminal();
}

} // namespace
