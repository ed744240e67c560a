// Links, devices and the like at the destination: what is left on disk by choices and by answers.

#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <gtest/gtest.h>

#include "desk_run.h"
#include "mounts.h"
#include "needs.h"
#include "plan_fixture.h"

namespace {

namespace fs = std::filesystem;
using EntryChoice = FileConflictChoice;
using EntryAction = TarvaneTransferConflictAction;

constexpr const char* kCopied = "Copied 1 item(s).";
constexpr const char* kCanceled = "Copy canceled. Partial destination files may remain.";

// tree/sub/x comes to dest/tree/sub/, where something else than a file has its name.
class EntriesInTheWay : public PlanFixture {
protected:
    EntriesInTheWay() {
        fs::remove(Directory / "tree/inner.txt");
        WriteFile(Directory / "tree/sub/x", "new");
        fs::create_directories(Directory / "dest/tree/sub");
        WriteFile(Directory / "elsewhere/precious", "precious");
        SetModifiedTime(Directory / "elsewhere/precious", 1000);
    }

    fs::path InTheWay() const { return Directory / "dest/tree/sub/x"; }
    void LinkTo(const fs::path& Target) const { fs::create_symlink(Target, InTheWay()); }
    void LinkToPrecious() const { LinkTo(Directory / "elsewhere/precious"); }

    // A node that takes no byte, as /dev/full does.
    void MakeFullDevice(const fs::path& Path) const {
        NeedRoot();
        ASSERT_EQ(mknod(Path.c_str(), S_IFCHR | 0666, makedev(1, 7)), 0);
    }

    DeskRun CopyTree(EntryChoice Choice, const Person& Answers = NobodyThere) const {
        TransferRequest request = Copy({"tree", "dest"});
        request.OnConflict = Choice;
        return RunAtDesk(Plan(request), request, Answers);
    }

    // With --follow-links.
    DeskRun OverwriteThroughLinks() const {
        TransferRequest request = Copy({"tree", "dest"});
        request.OnConflict = EntryChoice::Overwrite;
        request.bFollowLinks = true;
        return RunAtDesk(Plan(request), request);
    }

    // A person who answers like this about files and merges directories.
    static Person Saying(EntryAction Answer) {
        return [Answer](const TakenName& Name) {
            const bool bDirectory = Name.Conflict.Kind == TarvaneTransferConflictKind::Directory;
            return ConflictAnswer{.Action = bDirectory ? EntryAction::Merge : Answer};
        };
    }

    std::string AtTheName() const { return TreeOf(Directory / "dest/tree/sub")["x"]; }
    std::string Precious() const { return ReadFile(Directory / "elsewhere/precious"); }

    std::string SpecialRefusal() const {
        return "cannot overwrite special file '" + InTheWay().native() + "' with '" +
               (Directory / "tree/sub/x").native() + "'";
    }
};

TEST_F(EntriesInTheWay, ChoicesReplaceALinkToAFileAndNotTheFile) {
    for (const EntryChoice choice : {EntryChoice::Overwrite, EntryChoice::Older,
                                     EntryChoice::Compare, EntryChoice::SizeDiffers}) {
        fs::remove(InTheWay());
        LinkToPrecious();
        EXPECT_EQ(CopyTree(choice).Message, kCopied);
        EXPECT_EQ(AtTheName(), "file new");
        EXPECT_EQ(Precious(), "precious");
    }
}

// Also one of another source, which would be lost.
TEST_F(EntriesInTheWay, ChoicesReplaceAHardLinkAndNotTheFile) {
    for (const EntryChoice choice : {EntryChoice::Overwrite, EntryChoice::Older,
                                     EntryChoice::Compare, EntryChoice::SizeDiffers}) {
        fs::remove(InTheWay());
        fs::create_hard_link(Directory / "elsewhere/precious", InTheWay());
        EXPECT_EQ(CopyTree(choice).Message, kCopied);
        EXPECT_EQ(AtTheName(), "file new");
        EXPECT_EQ(Precious(), "precious");
    }
}

TEST_F(EntriesInTheWay, AFollowedHardLinkIsWrittenThrough) {
    fs::create_hard_link(Directory / "elsewhere/precious", InTheWay());
    EXPECT_EQ(OverwriteThroughLinks().Message, kCopied);
    EXPECT_EQ(AtTheName(), "file new");
    EXPECT_EQ(Precious(), "new");
}

TEST_F(EntriesInTheWay, ChoicesThatDoNotReplaceLeaveTheLink) {
    LinkToPrecious();
    EXPECT_EQ(CopyTree(EntryChoice::Larger).Message, kCopied);
    EXPECT_EQ(CopyTree(EntryChoice::Skip).Message, kCopied);
    EXPECT_EQ(CopyTree(EntryChoice::KeepBoth).Message, kCopied);
    const std::string link = "link " + (Directory / "elsewhere/precious").native();
    EXPECT_EQ(TreeOf(Directory / "dest/tree/sub"), Tree({{"x", link}, {"x-2", "file new"}}));
    EXPECT_EQ(Precious(), "precious");
}

TEST_F(EntriesInTheWay, AFollowedLinkIsWrittenThrough) {
    LinkToPrecious();
    EXPECT_EQ(OverwriteThroughLinks().Message, kCopied);
    EXPECT_EQ(AtTheName(), "link " + (Directory / "elsewhere/precious").native());
    EXPECT_EQ(Precious(), "new");
}

TEST_F(EntriesInTheWay, ALinkToADirectoryOrADeviceIsReplacedItself) {
    LinkTo(Directory / "elsewhere");
    EXPECT_EQ(CopyTree(EntryChoice::Overwrite).Message, kCopied);
    EXPECT_EQ(AtTheName(), "file new");
    EXPECT_EQ(Precious(), "precious");
    fs::remove(InTheWay());
    LinkTo("/dev/null");
    EXPECT_EQ(CopyTree(EntryChoice::Overwrite).Message, kCopied);
    EXPECT_EQ(AtTheName(), "file new");
}

TEST_F(EntriesInTheWay, APersonsOverwriteReplacesTheLinkToo) {
    for (const EntryAction answer : {EntryAction::Overwrite, EntryAction::CompareByContent}) {
        fs::remove(InTheWay());
        LinkToPrecious();
        EXPECT_EQ(CopyTree(EntryChoice::Ask, Saying(answer)).Message, kCopied);
        EXPECT_EQ(AtTheName(), "file new");
        EXPECT_EQ(Precious(), "precious");
    }
}

TEST_F(EntriesInTheWay, ALinkThatTookTheNameSinceTheQuestionIsReplacedToo) {
    WriteFile(InTheWay(), "old");
    const DeskRun run = CopyTree(EntryChoice::Ask, [this](const TakenName& Name) {
        if (Name.Conflict.DestinationPath == InTheWay()) {
            fs::remove(InTheWay());
            LinkToPrecious();
        }
        return Saying(EntryAction::Overwrite)(Name);
    });
    EXPECT_EQ(run.Message, kCopied);
    EXPECT_EQ(AtTheName(), "file new");
    EXPECT_EQ(Precious(), "precious");
}

TEST_F(EntriesInTheWay, ALinkThatCannotBeRemovedEndsTheJobWithTheReason) {
    NeedRoot();
    LinkToPrecious();
    fs::permissions(Directory / "dest/tree/sub", fs::perms::owner_read | fs::perms::owner_exec |
                                                     fs::perms::others_read |
                                                     fs::perms::others_exec);
    fs::permissions(Directory.Path(), fs::perms::all);
    DeskRun run;
    {
        const ActingAsNobody nobody;
        run = CopyTree(EntryChoice::Overwrite);
    }
    EXPECT_EQ(run.Sentence, "cannot remove '" + InTheWay().native() + "': Permission denied");
    EXPECT_EQ(run.Message, kCanceled);
    EXPECT_EQ(AtTheName(), "link " + (Directory / "elsewhere/precious").native());
}

TEST_F(EntriesInTheWay, SpecialFilesAreNeitherWrittenToNorRemovedByAChoice) {
    const auto expectKept = [this](const std::string& Kind) {
        for (const EntryChoice choice :
             {EntryChoice::Overwrite, EntryChoice::Older, EntryChoice::Compare, EntryChoice::Larger,
              EntryChoice::SizeDiffers}) {
            const DeskRun run = CopyTree(choice);
            EXPECT_EQ(run.Sentence, SpecialRefusal());
            EXPECT_EQ(run.Message, kCanceled);
        }
        EXPECT_EQ(CopyTree(EntryChoice::Skip).Message, kCopied);
        EXPECT_EQ(TreeOf(Directory / "dest/tree/sub"), Tree({{"x", Kind}}));
        EXPECT_EQ(CopyTree(EntryChoice::KeepBoth).Message, kCopied);
        EXPECT_EQ(TreeOf(Directory / "dest/tree/sub"), Tree({{"x", Kind}, {"x-2", "file new"}}));
        fs::remove(Directory / "dest/tree/sub/x-2");
        fs::remove(InTheWay());
    };
    MakeFifo(InTheWay());
    expectKept("fifo");
    MakeSocket(InTheWay());
    expectKept("socket");
    MakeFullDevice(InTheWay());
    expectKept("device");
}

TEST_F(EntriesInTheWay, AFollowedLinkToADeviceIsNotWrittenThrough) {
    MakeFullDevice(Directory / "elsewhere/full");
    LinkTo(Directory / "elsewhere/full");
    EXPECT_EQ(OverwriteThroughLinks().Sentence, SpecialRefusal());
    EXPECT_EQ(AtTheName(), "link " + (Directory / "elsewhere/full").native());
    EXPECT_EQ(TreeOf(Directory / "elsewhere")["full"], "device");
}

TEST_F(EntriesInTheWay, NobodysAnswerDestroysASpecialFile) {
    MakeFullDevice(InTheWay());
    for (const EntryAction answer : {EntryAction::Overwrite, EntryAction::CompareByContent}) {
        const DeskRun run = CopyTree(EntryChoice::Ask, Saying(answer));
        EXPECT_EQ(run.Sentence, SpecialRefusal());
        EXPECT_EQ(run.Message, kCanceled);
        EXPECT_EQ(run.Answers.back().Action, EntryAction::Cancel);
        EXPECT_TRUE(run.Answers.back().bByUser);
        EXPECT_EQ(AtTheName(), "device");
    }
}

TEST_F(EntriesInTheWay, ALinkToADirectoryIsNotEntered) {
    fs::remove_all(Directory / "dest/tree/sub");
    fs::create_symlink(Directory / "elsewhere", Directory / "dest/tree/sub");
    const DeskRun run = CopyTree(EntryChoice::Overwrite);
    EXPECT_EQ(run.Sentence, "not writing through symlink '" +
                                (Directory / "dest/tree/sub").native() + "' to directory '" +
                                (Directory / "elsewhere").native() +
                                "'; pass --follow-links to allow it");
    EXPECT_EQ(TreeOf(Directory / "elsewhere"), Tree({{"precious", "file precious"}}));
    EXPECT_EQ(OverwriteThroughLinks().Message, kCopied);
    EXPECT_EQ(ReadFile(Directory / "elsewhere/x"), "new");
}

TEST_F(EntriesInTheWay, TheDestinationThatWasNamedMayBeALink) {
    fs::create_symlink(Directory / "elsewhere", Directory / "named");
    TransferRequest request = Copy({"tree/sub", "named"});
    request.bNoTargetDirectory = true;
    request.OnConflict = EntryChoice::Overwrite;
    EXPECT_EQ(RunAtDesk(Plan(request), request).Message, kCopied);
    EXPECT_EQ(ReadFile(Directory / "elsewhere/x"), "new");
}

// x/x comes to the directory x that holds it.
TEST_F(EntriesInTheWay, ADirectoryThatHoldsTheSourceStaysWhoeverAnswers) {
    WriteFile(Directory / "holder/x/x", "bytes");
    const TransferRequest request = Copy({"holder/x/x", "holder"});
    const std::string refusal = "cannot overwrite directory '" + (Directory / "holder/x").native() +
                                "' with '" + (Directory / "holder/x/x").native() +
                                "', which is inside it";
    for (const EntryAction answer : {EntryAction::Overwrite, EntryAction::CompareByContent}) {
        const DeskRun run = RunAtDesk(Plan(request), request, Saying(answer));
        EXPECT_EQ(run.Sentence, refusal);
        EXPECT_EQ(run.Message, kCanceled);
        EXPECT_EQ(ReadFile(Directory / "holder/x/x"), "bytes");
    }
}

} // namespace
