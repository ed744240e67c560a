// Answers for all later conflicts and the questions that they spare, through whole jobs.

#include "answering_interface.h"
#include "transfer_fixture.h"

namespace {

namespace fs = std::filesystem;

using Act = TarvaneTransferConflictAction;
using Kind = TarvaneTransferConflictKind;
using Policy = TarvaneTransferConflictPolicy;

constexpr std::int64_t kAnySecond = 1700000000;

// Three files and two directories, each with its namesake at the destination.
class RememberedAnswer : public TransferTest {
protected:
    RememberedAnswer() {
        for (const std::string name : {"f1", "f2", "f3", "d1/own", "d2/own"}) {
            WriteFile(Directory / "from" / name, "new");
            WriteFile(Directory / "to" / (name + ".other"), "other");
        }
        for (const std::string name : {"f1", "f2", "f3"}) {
            WriteFile(Directory / "to" / name, "old");
            SetModifiedTime(Directory / "to" / name, kAnySecond);
        }
    }

    // Returns the kinds of the questions that were asked.
    std::vector<Kind> Run(const std::vector<std::string>& Names, const std::vector<Act>& Answers) {
        std::vector<std::pair<fs::path, fs::path>> items;
        for (const std::string& name : Names) {
            items.emplace_back(Directory / "from" / name, Directory / "to" / name);
        }
        std::vector<PreparedAnswer> prepared;
        for (const Act answer : Answers) {
            prepared.push_back({answer, "", {}});
        }
        AnsweringInterface interface(Job, prepared);
        RunTarvaneTransferJob(SharedJob, PlanOf(kCopy, items, Policy::Ask));
        std::vector<Kind> kinds;
        for (const TarvaneTransferConflict& question : interface.Stop()) {
            kinds.push_back(question.Kind);
        }
        return kinds;
    }

    std::string At(const std::string& Name) { return ReadFile(Directory / "to" / Name); }
    std::string FinalMessage() { return Job.MakeUiSnapshot().MessageText; }
};

TEST_F(RememberedAnswer, OverwriteAllReplacesEveryLaterFile) {
    EXPECT_EQ(Run({"f1", "f2", "f3"}, {Act::OverwriteAll}), (std::vector{Kind::File}));
    EXPECT_EQ(At("f1") + At("f2") + At("f3"), "newnewnew");
    EXPECT_EQ(FinalMessage(), "Copied 3 item(s).");
    EXPECT_EQ(DoneBy(Job), (Counted{3, 9}));
}

TEST_F(RememberedAnswer, SkipAllLeavesEveryLaterFile) {
    EXPECT_EQ(Run({"f1", "f2", "f3"}, {Act::Overwrite, Act::SkipAll}),
              (std::vector{Kind::File, Kind::File}));
    EXPECT_EQ(At("f1") + At("f2") + At("f3"), "newoldold");
    EXPECT_EQ(FinalMessage(), "Copied 3 item(s).");
    EXPECT_EQ(DoneBy(Job), (Counted{3, 9}));
}

TEST_F(RememberedAnswer, OverwriteAllOlderDecidesEveryLaterFileByItsAge) {
    SetModifiedTime(Directory / "from/f1", kAnySecond + 1);
    SetModifiedTime(Directory / "from/f2", kAnySecond - 1);
    SetModifiedTime(Directory / "from/f3", kAnySecond + 1);
    EXPECT_EQ(Run({"f1", "f2", "f3"}, {Act::OverwriteAllOlder}), (std::vector{Kind::File}));
    EXPECT_EQ(At("f1") + At("f2") + At("f3"), "newoldnew");
}

TEST_F(RememberedAnswer, MergeAllMergesEveryLaterDirectory) {
    EXPECT_EQ(Run({"d1", "d2"}, {Act::MergeAll}), (std::vector{Kind::Directory}));
    EXPECT_EQ(At("d1/own") + At("d1/own.other"), "newother");
    EXPECT_EQ(At("d2/own") + At("d2/own.other"), "newother");
}

TEST_F(RememberedAnswer, SkipAllLeavesEveryLaterDirectory) {
    EXPECT_EQ(Run({"d1", "d2"}, {Act::SkipAll}), (std::vector{Kind::Directory}));
    EXPECT_FALSE(fs::exists(Directory / "to/d1/own"));
    EXPECT_FALSE(fs::exists(Directory / "to/d2/own"));
    EXPECT_EQ(DoneBy(Job), (Counted{4, 6}));
}

TEST_F(RememberedAnswer, ForFilesDoesNotAnswerForDirectories) {
    EXPECT_EQ(Run({"f1", "d1", "f2"}, {Act::SkipAll, Act::Merge}),
              (std::vector{Kind::File, Kind::Directory}));
    EXPECT_EQ(At("f1") + At("d1/own") + At("f2"), "oldnewold");
}

TEST_F(RememberedAnswer, ForDirectoriesDoesNotAnswerForFiles) {
    EXPECT_EQ(Run({"d1", "f1", "d2"}, {Act::SkipAll, Act::Overwrite}),
              (std::vector{Kind::Directory, Kind::File}));
    EXPECT_FALSE(fs::exists(Directory / "to/d2/own"));
    EXPECT_EQ(At("f1"), "new");
}

TEST_F(RememberedAnswer, ReachesIntoDirectories) {
    WriteFile(Directory / "to/d1/own", "old");
    WriteFile(Directory / "to/d2/own", "old");
    EXPECT_EQ(Run({"d1", "d2"}, {Act::MergeAll, Act::SkipAll}),
              (std::vector{Kind::Directory, Kind::File}));
    EXPECT_EQ(At("d1/own") + At("d2/own"), "oldold");
}

TEST_F(RememberedAnswer, IsNotMadeByAnAnswerForOneConflict) {
    EXPECT_EQ(Run({"f1", "f2", "f3"}, {Act::Overwrite, Act::Skip, Act::CompareByContent}),
              (std::vector{Kind::File, Kind::File, Kind::File}));
    EXPECT_EQ(At("f1") + At("f2") + At("f3"), "newoldnew");
    EXPECT_EQ(FinalMessage(), "Copied 3 item(s).");
}

TEST_F(RememberedAnswer, IsForgottenByTheNextJob) {
    EXPECT_EQ(Run({"f1"}, {Act::SkipAll}), (std::vector{Kind::File}));
    const auto next = std::make_shared<TarvaneTransferJob>(false, 1, "");
    AnsweringInterface interface(*next, {{Act::Overwrite, "", {}}});
    RunTarvaneTransferJob(
        next, PlanOf(kCopy, {{Directory / "from/f2", Directory / "to/f2"}}, Policy::Ask));
    EXPECT_EQ(interface.Stop().size(), 1U);
    EXPECT_EQ(At("f2"), "new");
}

} // namespace
