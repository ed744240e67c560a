// What comes to a source or to a destination while the job runs: the record of the look before
// knows nothing of it. What somebody else has put at a name that the job does not take keeps its
// mode and times.

#include "run_fixture.h"

#include <fcntl.h>

namespace {

using Action = TarvaneTransferConflictAction;

class LateNames : public RunFixture {
protected:
    LateNames() {
        Request.Preserve = {.bMode = true, .bTimes = true};
        WriteFile(Root / "to/a", "old");
    }

    // As private as what a job makes.
    void MakeOther(const std::string& Name) const {
        WriteFile(Root / Name, "other");
        const timespec times[] = {{1000000000, 0}, {1000000000, 0}};
        ASSERT_EQ(::utimensat(AT_FDCWD, (Root / Name).c_str(), times, 0), 0);
        ASSERT_EQ(::chmod((Root / Name).c_str(), 0600), 0);
    }

    void ExpectOtherAsItWas(const std::string& Name) const {
        struct stat status {};
        ASSERT_EQ(::stat((Root / Name).c_str(), &status), 0);
        EXPECT_EQ(ReadFile(Root / Name), "other");
        EXPECT_EQ(status.st_mode & 07777U, 0600U);
        EXPECT_EQ(status.st_mtim.tv_sec, 1000000000);
    }

    // Puts a file at "b" while the job waits, and has it ask about that.
    void AskAboutLateFile(TransferRun& Run) {
        ASSERT_TRUE(Asks(Run));
        MakeOther("to/b");
        Answer(Run, Action::Overwrite);
        ASSERT_TRUE(Asks(Run));
        ASSERT_EQ(Run.OpenQuestion()->Name.Conflict.DestinationPath, PathOf("to/b"));
    }
};

TEST_F(LateNames, AreLeftAloneWhenTheAnswerIsCancel) {
    TransferRun run(Request, PlanOf({"a", "b"}));
    AskAboutLateFile(run);
    Answer(run, Action::Cancel);
    ASSERT_TRUE(Ends(run));
    EXPECT_EQ(run.Outcome().Result, RunResult::Canceled);
    ExpectOtherAsItWas("to/b");
    EXPECT_EQ(ModeOf("to/a"), 0640U);
}

TEST_F(LateNames, AreLeftAloneWhenTheRunIsCanceledAtItsQuestion) {
    TransferRun run(Request, PlanOf({"a", "b"}));
    AskAboutLateFile(run);
    run.Cancel();
    ASSERT_TRUE(Ends(run));
    EXPECT_EQ(run.Outcome().Result, RunResult::Canceled);
    ExpectOtherAsItWas("to/b");
    EXPECT_EQ(ModeOf("to/a"), 0640U);
}

TEST_F(LateNames, AreLeftAloneWhenTheRunIsCanceledBeforeItAsks) {
    TransferRun run(Request, PlanOf({"a", "b"}));
    ASSERT_TRUE(Asks(run));
    MakeOther("to/b");
    Answer(run, Action::Overwrite);
    ASSERT_TRUE(BecomesTrue("the job waits", [&run] {
        TarvaneTransferConflict conflict;
        return run.Job()->GetPendingConflict(conflict);
    }));
    run.Cancel();
    ASSERT_TRUE(Ends(run));
    ExpectOtherAsItWas("to/b");
}

TEST_F(LateNames, AreLeftAloneWhenTheNewNameWasTakenMeanwhile) {
    TransferRun run(Request, PlanOf({"a"}));
    ASSERT_TRUE(Asks(run));
    MakeOther("to/c");
    run.Answer(run.OpenQuestion()->Id, {.Action = Action::Rename, .RenamePath = PathOf("to/c")});
    ASSERT_TRUE(Ends(run));
    EXPECT_EQ(run.EndLines().front(), "Rename target already exists: " + PathOf("to/c"));
    ExpectOtherAsItWas("to/c");
}

// While the job waits at "a".
class LateSources : public LateNames {
protected:
    LateSources() { std::filesystem::create_directory(Root / "from/tree"); }

    void MakeSources() const {
        for (const char* const name : {"from/tree/open", "from/tree/secret"}) {
            WriteFile(Root / name, name);
        }
        ASSERT_EQ(::chmod((Root / "from/tree/open").c_str(), 0604), 0);
        ASSERT_EQ(::chmod((Root / "from/tree/secret").c_str(), 0600), 0);
    }
};

TEST_F(LateSources, GiveTheirCopiesTheirModes) {
    TransferRun run(Request, PlanOf({"a", "tree"}));
    ASSERT_TRUE(Asks(run));
    MakeSources();
    Answer(run, Action::Overwrite);
    ASSERT_TRUE(Ends(run));
    EXPECT_EQ(run.EndLines(), Strings{"Copied 4 entries, 33 B; 1 replaced."});
    EXPECT_EQ(ModeOf("to/tree/open"), 0604U);
    EXPECT_EQ(ModeOf("to/tree/secret"), 0600U);
}

TEST_F(LateSources, LeaveTheirCopiesPrivateWhereTheyAreMoved) {
    Request.bMove = true;
    std::filesystem::create_directory(Root / "to/tree");
    TransferRun run(Request, PlanOf({"a", "tree"}));
    ASSERT_TRUE(Asks(run));
    MakeSources();
    Answer(run, Action::Overwrite);
    ASSERT_TRUE(Asks(run));
    Answer(run, Action::Merge);
    ASSERT_TRUE(Ends(run));
    EXPECT_EQ(run.EndLines(),
              Strings({"Moved 3 entries, 33 B; 1 replaced.",
                       "2 entries that came late stay private: only their owner can read "
                       "them."}));
    EXPECT_EQ(ModeOf("to/tree/open"), 0600U);
    EXPECT_EQ(ModeOf("to/tree/secret"), 0600U);
}

// It was made private before it was replaced.
TEST_F(LateNames, KeepTheModeThatTheirSourcesAllow) {
    std::filesystem::create_directory(Root / "from/tree");
    TransferRun run(Request, PlanOf({"a", "tree"}));
    ASSERT_TRUE(Asks(run));
    for (const char* name : {"from/tree/late", "to/tree/late"}) {
        WriteFile(Root / name, name);
    }
    ASSERT_EQ(::chmod((Root / "from/tree/late").c_str(), 0640), 0);
    ASSERT_EQ(::chmod((Root / "to/tree/late").c_str(), 0664), 0);
    Answer(run, Action::Overwrite);
    ASSERT_TRUE(Asks(run));
    Answer(run, Action::Merge);
    ASSERT_TRUE(Asks(run));
    Answer(run, Action::Overwrite);
    ASSERT_TRUE(Ends(run));
    EXPECT_EQ(run.Outcome().Result, RunResult::Succeeded);
    EXPECT_EQ(ReadFile(Root / "to/tree/late"), "from/tree/late");
    EXPECT_EQ(ModeOf("to/tree/late"), 0640U);
}

} // namespace
