// A file that is replaced is never more open than its source while it gets the source's contents: a
// real worker asks and looks at the file when it has its answer.

#include "conflict_desk.h"
#include "desk_notes.h"

#include "becomes_true.h"
#include "file_tree.h"
#include "mounts.h"
#include "needs.h"
#include "temporary_directory.h"

#include <atomic>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include <gtest/gtest.h>

namespace {

using Action = TarvaneTransferConflictAction;
using Choice = FileConflictChoice;

class PrivateDesk : public testing::Test {
protected:
    PrivateDesk() {
        WriteFile(Source, "new");
        WriteFile(There, "old");
        SetModifiedTime(There, -5, 7);
        SetMode(Source, 0600);
        SetMode(There, 0644);
    }

    static void SetMode(const std::filesystem::path& Path, mode_t Mode) {
        EXPECT_EQ(::chmod(Path.c_str(), Mode), 0) << Path;
    }

    static mode_t ModeOf(const std::filesystem::path& Path) {
        struct stat status {};
        EXPECT_EQ(::stat(Path.c_str(), &status), 0) << Path;
        return status.st_mode & 07777U;
    }

    TarvaneTransferConflict Conflict() const {
        TarvaneTransferConflict conflict;
        conflict.SourcePath = SourcePath;
        conflict.DestinationPath = There.native();
        conflict.bSourceHasSize = conflict.bDestinationHasSize = true;
        return conflict;
    }

    // The mode of the file when the worker goes on; 0 where there is none.
    mode_t ModeAfterAnswer(const ConflictRules& Rules, DeskNotes* NotesToFill,
                           const ConflictAnswer& ByPerson = {}) {
        TarvaneTransferJob job{false, 1, ""};
        ConflictDesk desk(job, ConflictPolicy(Rules), EngineAnswers::None, NotesToFill);
        mode_t mode = 0;
        std::atomic<bool> bOver{false};
        std::thread worker([&] {
            Action action = Action::Cancel;
            std::string renamePath;
            job.WaitForConflict(Conflict(), action, renamePath);
            struct stat status {};
            mode = ::stat(There.c_str(), &status) == 0 ? status.st_mode & 07777U : 0U;
            bOver = true;
        });
        EXPECT_TRUE(BecomesTrue("the worker has its answer", [&] {
            desk.Attend();
            if (desk.OpenQuestion()) {
                desk.Answer(desk.OpenQuestion()->Id, ByPerson);
            }
            return bOver.load();
        }));
        job.RequestCancel();
        worker.join();
        return mode;
    }

    mode_t ModeAfter(Choice ForFiles) { return ModeAfterAnswer({.ForFiles = ForFiles}, &Notes); }

    const TemporaryDirectory Directory;
    const std::filesystem::path Source = Directory / "source";
    const std::filesystem::path There = Directory / "there";
    // As the job has it.
    std::string SourcePath = Source.native();
    DeskNotes Notes{.bMakesPrivate = true};
};

TEST_F(PrivateDesk, MakesAFilePrivateBeforeItIsReplaced) {
    SetMode(There, 04755);
    EXPECT_EQ(ModeAfter(Choice::Overwrite), 0700U);
    ASSERT_EQ(Notes.Privates.size(), 1U);
    EXPECT_EQ(Notes.Privates[0].Path, There.native());
    EXPECT_EQ(Notes.Privates[0].Mode, 04755U);
    EXPECT_EQ(Notes.Privates[0].Modified.tv_sec, -5);
    EXPECT_EQ(Notes.Privates[0].Modified.tv_nsec, 7);
    EXPECT_EQ(Notes.Privates[0].SourceMode & 07777U, 0600U);
}

TEST_F(PrivateDesk, MakesAFilePrivateBeforeItIsCompared) {
    EXPECT_EQ(ModeAfter(Choice::Compare), 0600U);
    EXPECT_EQ(Notes.Privates.size(), 1U);
}

TEST_F(PrivateDesk, MakesAFilePrivateWhereAPersonReplacesIt) {
    EXPECT_EQ(ModeAfterAnswer({.ForFiles = Choice::Ask}, &Notes, {.Action = Action::Overwrite}),
              0600U);
    EXPECT_EQ(Notes.Privates.size(), 1U);
}

TEST_F(PrivateDesk, LeavesAFileThatIsNoMoreOpen) {
    SetMode(There, 0640);
    SetMode(Source, 0664);
    EXPECT_EQ(ModeAfter(Choice::Overwrite), 0640U);
    EXPECT_TRUE(Notes.Privates.empty());
}

TEST_F(PrivateDesk, TakesAnotherOwnerOrGroupForMoreOpen) {
    NeedRoot();
    SetMode(There, 0640);
    SetMode(Source, 0644);
    const uid_t somebody = 1234;
    const auto unchanged = static_cast<uid_t>(-1);
    ASSERT_EQ(::chown(There.c_str(), somebody, unchanged), 0);
    EXPECT_EQ(ModeAfter(Choice::Overwrite), 0600U);
    SetMode(There, 0640);
    ASSERT_EQ(::chown(There.c_str(), ::getuid(), somebody), 0);
    EXPECT_EQ(ModeAfter(Choice::Overwrite), 0600U);
    EXPECT_EQ(Notes.Privates.size(), 2U);
}

// Its owner can read it whatever is done.
TEST_F(PrivateDesk, LeavesAFileOfSomebodyElse) {
    NeedRoot();
    SetMode(There, 0666);
    const ActingAsNobody nobody;
    EXPECT_EQ(ModeAfter(Choice::Overwrite), 0666U);
    EXPECT_TRUE(Notes.Privates.empty());
}

TEST_F(PrivateDesk, LeavesAFileThatIsNotReplaced) {
    EXPECT_EQ(ModeAfter(Choice::Skip), 0644U);
    EXPECT_EQ(ModeAfter(Choice::KeepBoth), 0644U);
    EXPECT_TRUE(Notes.Privates.empty());
}

TEST_F(PrivateDesk, LeavesFilesUnlessSomebodyWantsTheNotes) {
    EXPECT_EQ(ModeAfterAnswer({.ForFiles = Choice::Overwrite}, nullptr), 0644U);
}

TEST_F(PrivateDesk, LeavesTheFileThatAReplacedLinkLeadsTo) {
    std::filesystem::rename(There, Directory / "target");
    std::filesystem::create_symlink("target", There);
    EXPECT_EQ(ModeAfter(Choice::Overwrite), 0U);
    EXPECT_EQ(ModeOf(Directory / "target"), 0644U);
    EXPECT_TRUE(Notes.Privates.empty());
}

TEST_F(PrivateDesk, LeavesTheOtherNamesOfAReplacedFile) {
    std::filesystem::create_hard_link(There, Directory / "other");
    EXPECT_EQ(ModeAfter(Choice::Overwrite), 0U);
    EXPECT_EQ(ModeOf(Directory / "other"), 0644U);
    EXPECT_TRUE(Notes.Privates.empty());
}

TEST_F(PrivateDesk, MakesTheFilePrivateThatIsWrittenThroughALink) {
    std::filesystem::rename(There, Directory / "target");
    std::filesystem::create_symlink("target", There);
    EXPECT_EQ(ModeAfterAnswer({.ForFiles = Choice::Overwrite, .bFollowLinks = true}, &Notes),
              0600U);
    EXPECT_TRUE(std::filesystem::is_symlink(There));
    ASSERT_EQ(Notes.Privates.size(), 1U);
    EXPECT_EQ(Notes.Privates[0].Path, There.native());
    EXPECT_EQ(Notes.Privates[0].Mode, 0644U);
}

TEST_F(PrivateDesk, LeavesADirectoryThatMakesWay) {
    std::filesystem::remove(There);
    std::filesystem::create_directory(There);
    SetMode(There, 0755);
    EXPECT_EQ(ModeAfterAnswer({.ForFiles = Choice::Ask}, &Notes, {.Action = Action::Overwrite}),
              0755U);
    EXPECT_TRUE(Notes.Privates.empty());
}

TEST_F(PrivateDesk, LeavesTheFileWhereTheSourceCannotBeLookedAt) {
    SourcePath = Directory / "gone";
    EXPECT_EQ(ModeAfter(Choice::Overwrite), 0644U);
    EXPECT_TRUE(Notes.Privates.empty());
}

// A path like that of a track can be one of a file too.
TEST_F(PrivateDesk, LeavesTheFileThatATrackReplaces) {
    std::filesystem::current_path(Directory.Path());
    SourcePath = "cdda:/dev/sr0/1";
    WriteFile(Directory / "cdda:/dev/sr0/1", "");
    SetMode(Directory / "cdda:/dev/sr0/1", 0600);
    EXPECT_EQ(ModeAfter(Choice::Overwrite), 0644U);
    EXPECT_TRUE(Notes.Privates.empty());
    std::filesystem::current_path("/");
}

TEST_F(PrivateDesk, TellsWhatBecameOfEachName) {
    ModeAfter(Choice::Skip);
    EXPECT_TRUE(Notes.Names.WasSkipped(There.native()));
    ModeAfter(Choice::Compare);
    EXPECT_TRUE(Notes.Names.WasCompared(There.native()));
    const std::string newName = Directory / "new-name";
    ModeAfterAnswer({.ForFiles = Choice::Ask}, &Notes,
                    {.Action = Action::Rename, .RenamePath = newName});
    ASSERT_NE(Notes.Names.NewNameOf(There.native()), nullptr);
    EXPECT_EQ(*Notes.Names.NewNameOf(There.native()), newName);
}

} // namespace
