// A file or a special entry that is to replace a directory which its own path leads into: removing
// that would remove the source, so nothing is removed and the item fails as it would afterwards.

#include "engine_source.h"

#include "answering_interface.h"
#include "mounts.h"
#include "transfer_fixture.h"

namespace {

using Act = TarvaneTransferConflictAction;
using Policy = TarvaneTransferConflictPolicy;
using Result = TransferCopyResult;

class SourceInsideTarget : public TransferTest {
protected:
    SourceInsideTarget() {
        WriteFile(Target / "deep/x", "0123456789");
        WriteFile(Target / "other", "stays");
        fs::create_directory(Directory / "elsewhere");
    }

    // Copies or moves From onto To, which fails with a sentence and leaves everything.
    void ExpectNothingRemoved(const fs::path& From, const fs::path& To, const std::string& Sentence,
                              bool bMove = kCopy, Policy WithPolicy = Policy::Overwrite) {
        const Tree before = TreeOf(Directory.Path());
        EXPECT_EQ(CopyPathWithProgress(From, To, Job, WithPolicy, bMove, Message), Result::Failed);
        EXPECT_EQ(Message, Sentence);
        EXPECT_EQ(TreeOf(Directory.Path()), before);
        EXPECT_EQ(DoneBy(Job), Counted{});
    }

    void ExpectFileStays(const fs::path& From, const fs::path& To) {
        ExpectNothingRemoved(From, To, "Failed to open source file.");
    }

    const fs::path Target = Directory / "x";
    const fs::path Source = Target / "deep/x";
};

TEST_F(SourceInsideTarget, StaysWhenItIsCopied) {
    ExpectFileStays(Source, Target);
    EXPECT_EQ(Job.GetCurrentPath(), Source.string());
    EXPECT_EQ(Job.MakeUiSnapshot().CurrentFileTotalBytes, 10U);
}

TEST_F(SourceInsideTarget, StaysWhenItIsMoved) {
    ExpectNothingRemoved(Source, Target, "Failed to open source file.", kMove);
}

TEST_F(SourceInsideTarget, StaysWhenTheUserAnswersOverwrite) {
    AnsweringInterface interface(Job, {{Act::Overwrite, "", nullptr}});
    ExpectNothingRemoved(Source, Target, "Failed to open source file.", kMove, Policy::Ask);
    EXPECT_EQ(interface.Stop().size(), 1U);
}

TEST_F(SourceInsideTarget, StaysWhenAWholeJobOverwrites) {
    const Tree before = TreeOf(Directory.Path());
    RunTarvaneTransferJob(SharedJob, PlanOf(kMove, {{Source, Target}}));
    const TarvaneTransferUiSnapshot end = Job.MakeUiSnapshot();
    EXPECT_EQ(end.StageText, "Stage: Failed | Failed to open source file.");
    EXPECT_EQ(TreeOf(Directory.Path()), before);
}

TEST_F(SourceInsideTarget, StaysWhereLinksHideIt) {
    fs::create_directory_symlink("../x/deep", Directory / "elsewhere/in");
    fs::create_directory_symlink("..", Directory / "elsewhere/up");
    ExpectFileStays(Directory / "elsewhere/in/x", Directory / "elsewhere/up/x");
}

TEST_F(SourceInsideTarget, StaysWhereASecondMountHidesIt) {
    EnterPrivateMountNamespace();
    const ScopedMount second = BindReadOnly(Target, Directory / "elsewhere");
    ExpectFileStays(second.Path() / "deep/x", Target);
}

TEST_F(SourceInsideTarget, StaysWhenTheTargetIsALinkThatItsPathGoesThrough) {
    fs::create_directory_symlink("x", Directory / "link");
    ExpectFileStays(Directory / "link/deep/x", Directory / "link");
}

TEST_F(SourceInsideTarget, StaysWhenTheTargetIsALinkThatALinkOnItsPathGoesThrough) {
    fs::create_directory_symlink("x", Directory / "link");
    fs::create_directory_symlink("../link/deep", Directory / "elsewhere/in");
    ExpectFileStays(Directory / "elsewhere/in/x", Directory / "link");
}

TEST_F(SourceInsideTarget, StaysWhenALinkOnItsPathLeadsToALinkInside) {
    WriteFile(Directory / "file", "data");
    fs::create_symlink("../file", Target / "link");
    fs::create_symlink("../x/link", Directory / "elsewhere/in");
    ExpectFileStays(Directory / "elsewhere/in", Target);
}

TEST_F(SourceInsideTarget, ReplacesALinkToItsDirectory) {
    fs::create_directory_symlink("x", Directory / "link");
    EXPECT_EQ(
        CopyPathWithProgress(Source, Directory / "link", Job, Policy::Overwrite, kMove, Message),
        Result::Succeeded);
    EXPECT_EQ(fs::symlink_status(Directory / "link").type(), fs::file_type::regular);
    EXPECT_EQ(ReadFile(Directory / "link"), "0123456789");
    EXPECT_EQ(ReadFile(Target / "other"), "stays");
}

TEST_F(SourceInsideTarget, StaysWhenOnlyTheLinkToItIsInside) {
    WriteFile(Directory / "elsewhere/file", "data");
    fs::create_symlink("../elsewhere/file", Target / "link");
    ExpectFileStays(Target / "link", Target);
}

TEST_F(SourceInsideTarget, StaysWhenItsPathLeadsInAndOutAgain) {
    WriteFile(Directory / "elsewhere/file", "data");
    fs::create_directory_symlink("../../elsewhere", Target / "deep/out");
    fs::create_directory_symlink("x/deep", Directory / "in");
    ExpectFileStays(Directory / "in/out/file", Target);
}

TEST_F(SourceInsideTarget, StaysWhenItIsALinkToADevice) {
    fs::create_symlink("/dev/null", Target / "device");
    ExpectNothingRemoved(Target / "device", Target, "No such file or directory", kMove);
}

TEST_F(SourceInsideTarget, StaysWhenItIsAPipe) {
    MakeFifo(Target / "deep/fifo");
    ExpectNothingRemoved(Target / "deep/fifo", Target, "No such file or directory");
}

TEST_F(SourceInsideTarget, StaysWhenItIsSpecialAndTheUserAnswersOverwrite) {
    fs::create_symlink("/dev/null", Target / "device");
    AnsweringInterface interface(Job, {{Act::Overwrite, "", nullptr}});
    ExpectNothingRemoved(Target / "device", Target, "No such file or directory", kCopy,
                         Policy::Ask);
}

TEST_F(SourceInsideTarget, MayHaveATargetWhoseNameBeginsLikeItsOwnDirectory) {
    WriteFile(Directory / "x2/file", "data");
    EXPECT_EQ(
        CopyPathWithProgress(Directory / "x2/file", Target, Job, Policy::Overwrite, kCopy, Message),
        Result::Succeeded);
    EXPECT_EQ(ReadFile(Target), "data");
}

} // namespace
