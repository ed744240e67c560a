// A real worker asks; the desk is the interface's side.

#include "conflict_desk.h"

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "becomes_true.h"
#include "file_tree.h"
#include "temporary_directory.h"

namespace {

using Action = TarvaneTransferConflictAction;
using Kind = TarvaneTransferConflictKind;
using std::chrono::microseconds;

TarvaneTransferConflict ConflictAbout(const std::string& Name, Kind OfKind = Kind::File) {
    TarvaneTransferConflict conflict;
    conflict.Kind = OfKind;
    conflict.SourcePath = "/from/" + Name;
    conflict.DestinationPath = "/to/" + Name;
    conflict.bSourceDirectory = conflict.bDestinationDirectory = OfKind == Kind::Directory;
    return conflict;
}

// What the worker was told, or that it was told to stop.
struct Told {
    bool bGoOn = false;
    Action Answer = Action::CompareByContent;
    std::string RenamePath;

    bool operator==(const Told&) const = default;
};

const Told kCanceled{.bGoOn = false, .Answer = Action::Cancel, .RenamePath = ""};

class ConflictDeskTest : public testing::Test {
protected:
    ~ConflictDeskTest() override {
        Job.RequestCancel();
        if (Worker.joinable()) {
            Worker.join();
        }
    }

    ConflictDesk DeskWith(FileConflictChoice ForFiles,
                          std::optional<DirectoryConflictChoice> ForDirectories = {}) {
        return {Job, ConflictPolicy({.ForFiles = ForFiles, .ForDirectories = ForDirectories})};
    }

    ConflictDesk DeskThatLeavesSkippingToTheEngine(FileConflictChoice ForFiles) {
        return {
            Job,
            ConflictPolicy({.ForFiles = ForFiles, .ForDirectories = DirectoryConflictChoice::Skip}),
            EngineAnswers::SkipFiles};
    }

    // What the worker hears where the engine may replace by itself.
    std::vector<Told> HeardOf(FileConflictChoice ForFiles,
                              std::vector<TarvaneTransferConflict> Conflicts) {
        ConflictDesk desk(Job, ConflictPolicy({.ForFiles = ForFiles}),
                          EngineAnswers::SkipOrReplaceFiles);
        const std::size_t count = Conflicts.size();
        std::atomic<bool> bThrough{false};
        std::thread worker([&] {
            for (const TarvaneTransferConflict& conflict : Conflicts) {
                Told told;
                told.bGoOn = Job.WaitForConflict(conflict, told.Answer, told.RenamePath);
                Heard.push_back(told);
            }
            bThrough = true;
        });
        EXPECT_TRUE(BecomesTrue("all are answered", [&] {
            desk.Attend();
            return bThrough.load();
        }));
        worker.join();
        EXPECT_EQ(Heard.size(), count);
        bLeftReplacing = desk.LeavesReplacingToEngine();
        return Heard;
    }

    // Asks about these names on a thread of its own.
    void WorkOn(std::vector<TarvaneTransferConflict> Conflicts) {
        Worker = std::thread([this, conflicts = std::move(Conflicts)] {
            for (const TarvaneTransferConflict& conflict : conflicts) {
                Told told;
                told.bGoOn = Job.WaitForConflict(conflict, told.Answer, told.RenamePath);
                Heard.push_back(told);
            }
        });
    }

    // What the worker has heard when it is through.
    std::vector<Told> AllHeard() {
        Worker.join();
        return Heard;
    }

    void WaitUntilPending() {
        EXPECT_TRUE(BecomesTrue("a conflict is posted", [this] {
            TarvaneTransferConflict ignored;
            return Job.GetPendingConflict(ignored);
        }));
    }

    // Attends until a question is open.
    static void OpenOne(ConflictDesk& Desk) {
        EXPECT_TRUE(BecomesTrue("a question is open", [&Desk] {
            Desk.Attend();
            return Desk.OpenQuestion().has_value();
        }));
    }

    TarvaneTransferJob Job{false, 1, ""};
    std::thread Worker;
    std::vector<Told> Heard;
    bool bLeftReplacing = false;
};

TEST_F(ConflictDeskTest, HasNothingToSayWhileNothingIsTaken) {
    ConflictDesk desk = DeskWith(FileConflictChoice::Ask);
    EXPECT_EQ(desk.Attend(), nullptr);
    EXPECT_FALSE(desk.OpenQuestion().has_value());
    EXPECT_EQ(desk.AnsweredCount(), 0U);
    EXPECT_EQ(desk.FailSentence(), "");
}

TEST_F(ConflictDeskTest, ResolvesWhatThePolicyDecides) {
    ConflictDesk desk = DeskWith(FileConflictChoice::Overwrite);
    WorkOn({ConflictAbout("a")});
    WaitUntilPending();
    const AnsweredConflict* answered = desk.Attend();
    ASSERT_NE(answered, nullptr);
    EXPECT_EQ(answered->Conflict.DestinationPath, "/to/a");
    EXPECT_EQ(answered->Action, Action::Overwrite);
    EXPECT_EQ(answered->RenamePath, "");
    EXPECT_FALSE(answered->bByUser);
    EXPECT_FALSE(desk.OpenQuestion().has_value());
    EXPECT_EQ(AllHeard(), (std::vector<Told>{{true, Action::Overwrite, ""}}));
}

TEST_F(ConflictDeskTest, HandsOutAQuestionWhereAPersonIsNeeded) {
    ConflictDesk desk = DeskWith(FileConflictChoice::Ask);
    WorkOn({ConflictAbout("a")});
    WaitUntilPending();
    EXPECT_EQ(desk.Attend(), nullptr);
    ASSERT_TRUE(desk.OpenQuestion().has_value());
    const ConflictDesk::Question question = *desk.OpenQuestion();
    EXPECT_EQ(question.Name.Conflict.DestinationPath, "/to/a");
    EXPECT_EQ(desk.Attend(), nullptr);
    ASSERT_TRUE(desk.OpenQuestion().has_value());
    EXPECT_EQ(desk.OpenQuestion()->Id, question.Id);
    const AnsweredConflict* answered =
        desk.Answer(question.Id, {.Action = Action::Rename, .RenamePath = "/to/b"});
    ASSERT_NE(answered, nullptr);
    EXPECT_EQ(answered->Conflict.SourcePath, "/from/a");
    EXPECT_EQ(answered->Action, Action::Rename);
    EXPECT_EQ(answered->RenamePath, "/to/b");
    EXPECT_TRUE(answered->bByUser);
    EXPECT_FALSE(desk.OpenQuestion().has_value());
    EXPECT_EQ(AllHeard(), (std::vector<Told>{{true, Action::Rename, "/to/b"}}));
}

TEST_F(ConflictDeskTest, RemembersAnswersForAllFilesAndForAllDirectories) {
    ConflictDesk desk = DeskWith(FileConflictChoice::Ask);
    WorkOn({ConflictAbout("a"), ConflictAbout("d", Kind::Directory), ConflictAbout("b"),
            ConflictAbout("e", Kind::Directory)});
    OpenOne(desk);
    desk.Answer(desk.OpenQuestion()->Id,
                {.Action = Action::Overwrite, .ForAllFiles = FileConflictChoice::Overwrite});
    OpenOne(desk);
    EXPECT_EQ(desk.OpenQuestion()->Name.Conflict.DestinationPath, "/to/d");
    desk.Answer(desk.OpenQuestion()->Id,
                {.Action = Action::Merge, .ForAllDirectories = DirectoryConflictChoice::Merge});
    EXPECT_TRUE(BecomesTrue("all are answered", [&desk] {
        desk.Attend();
        return desk.AnsweredCount() == 4;
    }));
    EXPECT_EQ(AllHeard(), (std::vector<Told>{{true, Action::Overwrite, ""},
                                             {true, Action::Merge, ""},
                                             {true, Action::Overwrite, ""},
                                             {true, Action::Merge, ""}}));
    EXPECT_TRUE(desk.Answered()[0].bByUser);
    EXPECT_TRUE(desk.Answered()[1].bByUser);
    EXPECT_FALSE(desk.Answered()[2].bByUser);
    EXPECT_FALSE(desk.Answered()[3].bByUser);
}

TEST_F(ConflictDeskTest, LeavesTheFilesToTheEngineWhereAllAreSkipped) {
    ConflictDesk desk = DeskThatLeavesSkippingToTheEngine(FileConflictChoice::Skip);
    WorkOn({ConflictAbout("a"), ConflictAbout("b"), ConflictAbout("d", Kind::Directory)});
    EXPECT_TRUE(BecomesTrue("a file and the directory are answered", [&desk] {
        desk.Attend();
        return desk.AnsweredCount() == 2;
    }));
    EXPECT_EQ(AllHeard(), (std::vector<Told>{{true, Action::SkipAll, ""},
                                             {true, Action::Skip, ""},
                                             {true, Action::Skip, ""}}));
    EXPECT_EQ(desk.Answered().back().Conflict.DestinationPath, "/to/d");
}

TEST_F(ConflictDeskTest, LeavesTheFilesToTheEngineAfterAPersonsSkipAll) {
    ConflictDesk desk = DeskThatLeavesSkippingToTheEngine(FileConflictChoice::Ask);
    WorkOn({ConflictAbout("a"), ConflictAbout("b"), ConflictAbout("c")});
    OpenOne(desk);
    desk.Answer(desk.OpenQuestion()->Id, {.Action = Action::Skip});
    OpenOne(desk);
    desk.Answer(desk.OpenQuestion()->Id,
                {.Action = Action::Skip, .ForAllFiles = FileConflictChoice::Skip});
    EXPECT_EQ(AllHeard(), (std::vector<Told>{{true, Action::Skip, ""},
                                             {true, Action::SkipAll, ""},
                                             {true, Action::Skip, ""}}));
}

TEST_F(ConflictDeskTest, LeavesNothingElseThanSkippingToTheEngine) {
    ConflictDesk desk = DeskThatLeavesSkippingToTheEngine(FileConflictChoice::Older);
    WorkOn({ConflictAbout("a"), ConflictAbout("d", Kind::Directory)});
    EXPECT_TRUE(BecomesTrue("both are answered", [&desk] {
        desk.Attend();
        return desk.AnsweredCount() == 2;
    }));
    EXPECT_EQ(AllHeard(), (std::vector<Told>{{true, Action::Skip, ""}, {true, Action::Skip, ""}}));
}

TEST_F(ConflictDeskTest, LeavesReplacingToTheEngineWhereItMay) {
    EXPECT_EQ(HeardOf(FileConflictChoice::Overwrite,
                      {ConflictAbout("d", Kind::Directory), ConflictAbout("a"), ConflictAbout("b"),
                       ConflictAbout("e", Kind::Directory)}),
              (std::vector<Told>{{true, Action::Merge, ""},
                                 {true, Action::OverwriteAll, ""},
                                 {true, Action::Overwrite, ""},
                                 {true, Action::Merge, ""}}));
    EXPECT_TRUE(bLeftReplacing);
}

TEST_F(ConflictDeskTest, LeavesTheDatesToTheEngineWhereItMay) {
    EXPECT_EQ(HeardOf(FileConflictChoice::Older, {ConflictAbout("a"), ConflictAbout("b")}),
              (std::vector<Told>{{true, Action::OverwriteAllOlder, ""},
                                 {true, Action::OverwriteAllOlder, ""}}));
    EXPECT_TRUE(bLeftReplacing);
}

TEST_F(ConflictDeskTest, LeavesNoSizesToTheEngine) {
    EXPECT_EQ(HeardOf(FileConflictChoice::Larger, {ConflictAbout("a"), ConflictAbout("b")}),
              (std::vector<Told>{{true, Action::Skip, ""}, {true, Action::Skip, ""}}));
    EXPECT_FALSE(bLeftReplacing);
}

// It has come there since somebody looked.
TEST_F(ConflictDeskTest, ReplacesALinkItselfBeforeItLeavesTheRestToTheEngine) {
    const TemporaryDirectory directory;
    WriteFile(directory / "target", "data");
    std::filesystem::create_symlink("target", directory / "link");
    TarvaneTransferConflict conflict = ConflictAbout("a");
    conflict.DestinationPath = (directory / "link").native();
    EXPECT_EQ(HeardOf(FileConflictChoice::Overwrite, {conflict, ConflictAbout("b")}),
              (std::vector<Told>{{true, Action::Overwrite, ""}, {true, Action::OverwriteAll, ""}}));
    EXPECT_FALSE(std::filesystem::is_symlink(directory / "link"));
}

TEST_F(ConflictDeskTest, FindsAFreeNameToKeepBoth) {
    const TemporaryDirectory directory;
    WriteFile(directory / "a.txt", "old");
    WriteFile(directory / "a-2.txt", "older");
    TarvaneTransferConflict conflict = ConflictAbout("a.txt");
    conflict.DestinationPath = (directory / "a.txt").native();
    ConflictDesk desk = DeskWith(FileConflictChoice::KeepBoth);
    WorkOn({conflict});
    WaitUntilPending();
    const AnsweredConflict* answered = desk.Attend();
    ASSERT_NE(answered, nullptr);
    const std::string freeName = (directory / "a-3.txt").native();
    EXPECT_EQ(answered->RenamePath, freeName);
    EXPECT_EQ(AllHeard(), (std::vector<Told>{{true, Action::Rename, freeName}}));
}

TEST_F(ConflictDeskTest, CancelsTheJobWithoutAFreeName) {
    TarvaneTransferConflict conflict = ConflictAbout("a.txt");
    conflict.DestinationPath = "/" + std::string(5000, 'd') + "/a.txt";
    ConflictDesk desk = DeskWith(FileConflictChoice::KeepBoth);
    WorkOn({conflict});
    WaitUntilPending();
    const AnsweredConflict* answered = desk.Attend();
    ASSERT_NE(answered, nullptr);
    EXPECT_EQ(answered->Action, Action::Cancel);
    EXPECT_EQ(desk.FailSentence(), "no free name found beside '" + conflict.DestinationPath + "'");
    EXPECT_EQ(AllHeard(), (std::vector<Told>{kCanceled}));
}

// As when the same job is shown in two places.
TEST_F(ConflictDeskTest, AnAnswerThatComesTooLateDoesNotHitTheNextQuestion) {
    ConflictDesk desk = DeskWith(FileConflictChoice::Ask);
    WorkOn({ConflictAbout("a"), ConflictAbout("precious")});
    OpenOne(desk);
    const std::uint64_t first = desk.OpenQuestion()->Id;
    EXPECT_NE(desk.Answer(first, {.Action = Action::Skip}), nullptr);
    EXPECT_EQ(desk.Answer(first, {.Action = Action::Overwrite}), nullptr);
    OpenOne(desk);
    EXPECT_NE(desk.OpenQuestion()->Id, first);
    const ConflictAnswer late{.Action = Action::Overwrite,
                              .RenamePath = "",
                              .ForAllFiles = FileConflictChoice::Overwrite,
                              .ForAllDirectories = DirectoryConflictChoice::Merge};
    EXPECT_EQ(desk.Answer(first, late), nullptr);
    EXPECT_TRUE(desk.OpenQuestion().has_value());
    EXPECT_EQ(desk.AnsweredCount(), 1U);
    desk.Answer(desk.OpenQuestion()->Id, {.Action = Action::Skip});
    EXPECT_EQ(AllHeard(), (std::vector<Told>{{true, Action::Skip, ""}, {true, Action::Skip, ""}}));
}

// The file has made way for a directory while the person thought.
TEST_F(ConflictDeskTest, AsksAgainWhereSomethingElseStandsThanTheQuestionHasShown) {
    const TemporaryDirectory directory;
    WriteFile(directory / "a", "old");
    TarvaneTransferConflict conflict = ConflictAbout("a");
    conflict.DestinationPath = (directory / "a").native();
    ConflictDesk desk = DeskWith(FileConflictChoice::Ask);
    WorkOn({conflict});
    OpenOne(desk);
    const std::uint64_t first = desk.OpenQuestion()->Id;
    std::filesystem::remove(directory / "a");
    std::filesystem::create_directory(directory / "a");
    const ConflictAnswer overwrite{.Action = Action::Overwrite, .RenamePath = ""};
    EXPECT_EQ(desk.Answer(first, overwrite), nullptr);
    ASSERT_TRUE(desk.OpenQuestion().has_value());
    EXPECT_NE(desk.OpenQuestion()->Id, first);
    EXPECT_TRUE(IsDirectory(desk.OpenQuestion()->Name.Entry));
    EXPECT_NE(desk.Answer(desk.OpenQuestion()->Id, overwrite), nullptr);
    EXPECT_EQ(AllHeard(), (std::vector<Told>{{true, Action::Overwrite, ""}}));
}

TEST_F(ConflictDeskTest, ALateAnswerForAllIsNotRemembered) {
    ConflictDesk desk = DeskWith(FileConflictChoice::Ask);
    WorkOn({ConflictAbout("a"), ConflictAbout("b")});
    OpenOne(desk);
    const std::uint64_t first = desk.OpenQuestion()->Id;
    desk.Answer(first, {.Action = Action::Skip});
    desk.Answer(first, {.Action = Action::Overwrite, .ForAllFiles = FileConflictChoice::Overwrite});
    OpenOne(desk);
    EXPECT_EQ(desk.OpenQuestion()->Name.Conflict.DestinationPath, "/to/b");
}

TEST_F(ConflictDeskTest, ClosesTheQuestionWhenTheJobIsCanceled) {
    ConflictDesk desk = DeskWith(FileConflictChoice::Ask);
    WorkOn({ConflictAbout("a")});
    OpenOne(desk);
    const std::uint64_t id = desk.OpenQuestion()->Id;
    Job.RequestCancel();
    EXPECT_EQ(AllHeard(), (std::vector<Told>{kCanceled}));
    EXPECT_EQ(desk.Answer(id, {.Action = Action::Overwrite}), nullptr);
    EXPECT_EQ(desk.Attend(), nullptr);
    EXPECT_FALSE(desk.OpenQuestion().has_value());
    EXPECT_EQ(desk.AnsweredCount(), 0U);
}

TEST_F(ConflictDeskTest, CancelsTheJobWhereAChoiceFails) {
    ConflictDesk desk = DeskWith(FileConflictChoice::Fail);
    WorkOn({ConflictAbout("a")});
    WaitUntilPending();
    const AnsweredConflict* answered = desk.Attend();
    ASSERT_NE(answered, nullptr);
    EXPECT_EQ(answered->Action, Action::Cancel);
    EXPECT_FALSE(answered->bByUser);
    EXPECT_EQ(desk.FailSentence(), "cannot create '/to/a': File exists");
    EXPECT_EQ(AllHeard(), (std::vector<Told>{kCanceled}));
}

TEST_F(ConflictDeskTest, LooksLessAndLessOftenTheLongerNoNameIsTaken) {
    ConflictDesk desk = DeskWith(FileConflictChoice::Skip);
    EXPECT_EQ(desk.Pause(), microseconds(10));
    microseconds waited{0};
    while (waited < microseconds(22000)) {
        waited += desk.Pause();
        desk.Attend();
    }
    // The root of 64 us times what went by.
    EXPECT_NEAR(static_cast<double>(desk.Pause().count()), 1220, 50);
    for (int looks = 0; looks < 1000; ++looks) {
        desk.Attend();
    }
    EXPECT_EQ(desk.Pause(), microseconds(20000));
}

TEST_F(ConflictDeskTest, LooksOftenAfterEachAnswer) {
    ConflictDesk desk = DeskWith(FileConflictChoice::Skip);
    for (int looks = 0; looks < 20; ++looks) {
        desk.Attend();
    }
    WorkOn({ConflictAbout("a"), ConflictAbout("b")});
    for (int answers = 0; answers < 2; ++answers) {
        WaitUntilPending();
        desk.Attend();
        EXPECT_EQ(desk.Pause(), microseconds(10));
    }
    Worker.join();
}

// A person takes seconds.
TEST_F(ConflictDeskTest, LooksLessAndLessWhileAQuestionWaits) {
    ConflictDesk desk = DeskWith(FileConflictChoice::Ask);
    WorkOn({ConflictAbout("a")});
    WaitUntilPending();
    for (int looks = 0; looks < 1000; ++looks) {
        desk.Attend();
    }
    ASSERT_TRUE(desk.OpenQuestion());
    EXPECT_EQ(desk.Pause(), microseconds(20000));
    desk.Answer(desk.OpenQuestion()->Id, {.Action = Action::Skip});
    EXPECT_EQ(desk.Pause(), microseconds(10));
}

TEST_F(ConflictDeskTest, KeepsTheLatestAnswersAndCountsAll) {
    ConflictDesk desk = DeskWith(FileConflictChoice::Overwrite);
    std::vector<TarvaneTransferConflict> conflicts;
    for (std::size_t i = 0; i < ConflictDesk::kKeptAnswers + 2; ++i) {
        conflicts.push_back(ConflictAbout(std::to_string(i)));
    }
    WorkOn(conflicts);
    EXPECT_TRUE(BecomesTrue("all are answered", [&desk] {
        for (int looks = 0; looks < 1000; ++looks) {
            desk.Attend();
        }
        return desk.AnsweredCount() == ConflictDesk::kKeptAnswers + 2;
    }));
    EXPECT_EQ(AllHeard().size(), ConflictDesk::kKeptAnswers + 2);
    ASSERT_EQ(desk.Answered().size(), ConflictDesk::kKeptAnswers);
    EXPECT_EQ(desk.Answered().front().Conflict.SourcePath, "/from/2");
    EXPECT_EQ(desk.Answered().back().Conflict.SourcePath, "/from/1001");
}

} // namespace
