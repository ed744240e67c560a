// Pipes, sockets, devices and links that lead to them.

#include "engine_source.h"

#include "answering_interface.h"
#include "mounts.h"
#include "transfer_fixture.h"

namespace {

using Act = TarvaneTransferConflictAction;
using Policy = TarvaneTransferConflictPolicy;
using Result = TransferCopyResult;

class SpecialEntry : public TransferTest {
protected:
    Result Run(bool bMove = kCopy, Policy WithPolicy = Policy::Overwrite) {
        return CopyPathWithProgress(Source, Destination, Job, WithPolicy, bMove, Message);
    }

    void MakeLinkToDevice() { fs::create_symlink("/dev/null", Source); }

    Tree OnDisk() { return TreeOf(Directory.Path()); }

    const fs::path Source = Directory / "from";
    const fs::path Destination = Directory / "to";
};

TEST_F(SpecialEntry, IsRecreatedWhenItIsALinkToADevice) {
    MakeLinkToDevice();
    EXPECT_EQ(Run(), Result::Succeeded);
    EXPECT_EQ(OnDisk(), (Tree{{"from", "link /dev/null"}, {"to", "link /dev/null"}}));
    EXPECT_EQ(DoneBy(Job), (Counted{1, 0}));
    const TarvaneTransferUiSnapshot snapshot = Job.MakeUiSnapshot();
    EXPECT_EQ(snapshot.PathText, "Current: " + Source.string());
    EXPECT_EQ(snapshot.CurrentFileTotalBytes, 0U);
}

TEST_F(SpecialEntry, IsRemovedAfterAMove) {
    MakeLinkToDevice();
    EXPECT_EQ(Run(kMove), Result::Succeeded);
    EXPECT_EQ(OnDisk(), (Tree{{"to", "link /dev/null"}}));
    EXPECT_EQ(DoneBy(Job), (Counted{1, 0}));
}

TEST_F(SpecialEntry, KeepsTheTextOfARelativeLink) {
    MakeFifo(Directory / "fifo");
    fs::create_symlink("./fifo", Source);
    EXPECT_EQ(Run(), Result::Succeeded);
    EXPECT_EQ(OnDisk(), (Tree{{"fifo", "fifo"}, {"from", "link ./fifo"}, {"to", "link ./fifo"}}));
}

TEST_F(SpecialEntry, CreatesTheFolderOfTheDestination) {
    MakeLinkToDevice();
    EXPECT_EQ(CopyPathWithProgress(Source, Directory / "a/b/to", Job, Policy::Ask, kCopy, Message),
              Result::Succeeded);
    EXPECT_EQ(fs::read_symlink(Directory / "a/b/to"), "/dev/null");
}

TEST_F(SpecialEntry, FailsWhereTheFolderCannotBeMade) {
    MakeLinkToDevice();
    WriteFile(Directory / "taken", "x");
    EXPECT_EQ(
        CopyPathWithProgress(Source, Directory / "taken/to", Job, Policy::Ask, kCopy, Message),
        Result::Failed);
    EXPECT_EQ(Message, "Failed to create destination directory: Not a directory");
}

TEST_F(SpecialEntry, IsRefusedByTheStandardCopyWhenItIsAPipe) {
    MakeFifo(Source);
    EXPECT_EQ(Run(kMove), Result::Failed);
    EXPECT_EQ(Message, "Invalid argument");
    EXPECT_EQ(OnDisk(), (Tree{{"from", "fifo"}}));
    EXPECT_EQ(DoneBy(Job), Counted{});
}

TEST_F(SpecialEntry, IsRefusedByTheStandardCopyWhenItIsASocket) {
    MakeSocket(Source);
    EXPECT_EQ(Run(kMove), Result::Failed);
    EXPECT_EQ(Message, "Invalid argument");
    EXPECT_EQ(OnDisk(), (Tree{{"from", "socket"}}));
}

TEST_F(SpecialEntry, IsRefusedByTheStandardCopyWhenItIsADevice) {
    EXPECT_EQ(CopyPathWithProgress("/dev/null", Destination, Job, Policy::Ask, kCopy, Message),
              Result::Failed);
    EXPECT_EQ(Message, "Invalid argument");
    EXPECT_EQ(OnDisk(), Tree{});
}

TEST_F(SpecialEntry, ReplacesADirectoryAtTheDestination) {
    MakeLinkToDevice();
    WriteFile(Destination / "sub/file", "x");
    EXPECT_EQ(Run(), Result::Succeeded);
    EXPECT_EQ(OnDisk(), (Tree{{"from", "link /dev/null"}, {"to", "link /dev/null"}}));
}

// The directory is cleared first, so it is gone although the pipe cannot be copied.
TEST_F(SpecialEntry, HasClearedTheDestinationWhenTheCopyIsRefused) {
    MakeFifo(Source);
    WriteFile(Destination / "file", "x");
    EXPECT_EQ(Run(), Result::Failed);
    EXPECT_EQ(Message, "Invalid argument");
    EXPECT_EQ(OnDisk(), (Tree{{"from", "fifo"}}));
}

// The standard copy recreates a link only where the name is free.
TEST_F(SpecialEntry, DoesNotReplaceAnExistingFileByALink) {
    MakeLinkToDevice();
    WriteFile(Destination, "old");
    EXPECT_EQ(Run(kMove), Result::Failed);
    EXPECT_EQ(Message, "Invalid argument");
    EXPECT_EQ(OnDisk(), (Tree{{"from", "link /dev/null"}, {"to", "file old"}}));
    EXPECT_EQ(DoneBy(Job), Counted{});
}

TEST_F(SpecialEntry, IsCountedWhenItIsSkipped) {
    MakeFifo(Source);
    WriteFile(Destination, "old");
    EXPECT_EQ(Run(kMove, Policy::Skip), Result::Skipped);
    EXPECT_EQ(OnDisk(), (Tree{{"from", "fifo"}, {"to", "file old"}}));
    EXPECT_EQ(DoneBy(Job), (Counted{1, 0}));
    EXPECT_EQ(SkippedBy(Job), (Counted{1, 0}));
    EXPECT_EQ(Job.MakeUiSnapshot().PathText, "Current: " + Source.string());
}

TEST_F(SpecialEntry, TakesTheNameThatTheAnswerGives) {
    MakeLinkToDevice();
    WriteFile(Destination, "old");
    AnsweringInterface interface(Job, {{Act::Rename, Directory / "renamed", nullptr}});
    EXPECT_EQ(Run(kCopy, Policy::Ask), Result::Succeeded);
    EXPECT_EQ(
        OnDisk(),
        (Tree{{"from", "link /dev/null"}, {"renamed", "link /dev/null"}, {"to", "file old"}}));
}

TEST_F(SpecialEntry, IsNotCopiedAfterACanceledQuestion) {
    MakeLinkToDevice();
    WriteFile(Destination, "old");
    AnsweringInterface interface(Job, {{Act::Cancel, "", nullptr}});
    EXPECT_EQ(Run(kCopy, Policy::Ask), Result::Failed);
    EXPECT_EQ(Message, "Transfer canceled.");
    EXPECT_EQ(ReadFile(Destination), "old");
}

// The destination turns into a link to itself while the user thinks about it.
TEST_F(SpecialEntry, FailsAtADestinationThatCannotBeInspected) {
    MakeLinkToDevice();
    WriteFile(Destination, "old");
    AnsweringInterface interface(Job, {{Act::Overwrite, "", [this] {
                                            fs::remove(Destination);
                                            fs::create_symlink("to", Destination);
                                        }}});
    EXPECT_EQ(Run(kCopy, Policy::Ask), Result::Failed);
    EXPECT_EQ(Message, "Could not inspect destination '" + Destination.string() +
                           "': Too many levels of symbolic links");
}

TEST_F(SpecialEntry, FailsWithTheSystemTextWhenADirectoryCannotBeReplaced) {
    MakeLinkToDevice();
    EnterPrivateMountNamespace();
    const ScopedMount busy = MountTmpfs(Destination / "busy", "size=1m");
    EXPECT_EQ(Run(), Result::Failed);
    EXPECT_EQ(Message, "Device or resource busy");
}

TEST_F(SpecialEntry, FailsWithTheSystemTextWhereNothingMayBeCreated) {
    MakeLinkToDevice();
    const ActingAsNobody nobody;
    EXPECT_EQ(Run(), Result::Failed);
    EXPECT_EQ(Message, "Permission denied");
    EXPECT_EQ(OnDisk(), (Tree{{"from", "link /dev/null"}}));
}

TEST_F(SpecialEntry, KeepsTheCopyWhenTheSourceOfAMoveCannotBeRemoved) {
    MakeLinkToDevice();
    fs::create_directory(Directory / "open");
    fs::permissions(Directory / "open", fs::perms::all);
    const ActingAsNobody nobody;
    EXPECT_EQ(CopyPathWithProgress(Source, Directory / "open/to", Job, Policy::Ask, kMove, Message),
              Result::Failed);
    EXPECT_EQ(Message, "Copied data but could not remove original '" + Source.string() +
                           "': Permission denied");
    EXPECT_EQ(TreeOf(Directory / "open"), (Tree{{"to", "link /dev/null"}}));
    EXPECT_EQ(DoneBy(Job), (Counted{1, 0}));
}

} // namespace
