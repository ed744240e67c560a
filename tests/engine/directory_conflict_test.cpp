// What a taken name means for a directory: merge, skip, or fail.

#include "engine_source.h"

#include "answering_interface.h"
#include "transfer_fixture.h"

namespace {

using Act = TarvaneTransferConflictAction;
using Kind = TarvaneTransferConflictKind;
using Policy = TarvaneTransferConflictPolicy;
using Result = TransferCopyResult;

class DirectoryConflict : public TransferTest {
protected:
    DirectoryConflict() { WriteFile(Source / "new", "new data"); }

    bool Resolve(Policy WithPolicy) {
        return ResolveLocalDirectoryConflict(Job, Source, Destination, WithPolicy, bSkip, Message);
    }

    bool Answered(Act Action, const std::string& RenamePath = "") {
        AnsweringInterface interface(Job, {{Action, RenamePath, nullptr}});
        const bool result = Resolve(Policy::Ask);
        Questions = interface.Stop();
        return result;
    }

    Result Copied(Policy WithPolicy, bool bMove = kCopy) {
        return CopyPathWithProgress(Source, Destination, Job, WithPolicy, bMove, Message);
    }

    const fs::path Source = Directory / "from";
    const fs::path Destination = Directory / "to";
    bool bSkip = true;
    std::vector<TarvaneTransferConflict> Questions;
};

TEST_F(DirectoryConflict, IsNoneAtAnAbsentDestination) {
    for (const Policy policy : {Policy::Ask, Policy::Overwrite, Policy::Skip}) {
        bSkip = true;
        EXPECT_TRUE(Resolve(policy));
        EXPECT_FALSE(bSkip);
    }
}

TEST_F(DirectoryConflict, IsMergedUnderThePolicySkipToo) {
    WriteFile(Destination / "old", "old");
    WriteFile(Destination / "new", "older");
    EXPECT_EQ(Copied(Policy::Skip), Result::Succeeded);
    EXPECT_EQ(TreeOf(Destination), (Tree{{"old", "file old"}, {"new", "file older"}}));
    EXPECT_EQ(DoneBy(Job), (Counted{2, 8}));
}

TEST_F(DirectoryConflict, IsMergedUnderThePolicyOverwriteAndReplacesFiles) {
    WriteFile(Destination / "old", "old");
    WriteFile(Destination / "new", "older");
    EXPECT_EQ(Copied(Policy::Overwrite), Result::Succeeded);
    EXPECT_EQ(TreeOf(Destination), (Tree{{"old", "file old"}, {"new", "file new data"}}));
}

TEST_F(DirectoryConflict, ShowsTheQuestionWithBothSides) {
    fs::create_directory(Destination);
    EXPECT_TRUE(Answered(Act::Merge));
    ASSERT_EQ(Questions.size(), 1U);
    EXPECT_EQ(Questions[0].Kind, Kind::Directory);
    EXPECT_EQ(Questions[0].SourcePath, Source.string());
    EXPECT_EQ(Questions[0].DestinationPath, Destination.string());
    EXPECT_TRUE(Questions[0].bSourceDirectory);
    EXPECT_TRUE(Questions[0].bDestinationDirectory);
    EXPECT_TRUE(Questions[0].bSourceHasModifiedTime);
}

TEST_F(DirectoryConflict, IsRaisedAtARegularFileAndMergingReplacesTheFile) {
    WriteFile(Destination, "old");
    AnsweringInterface interface(Job, {{Act::Merge, "", nullptr}});
    EXPECT_EQ(Copied(Policy::Ask), Result::Succeeded);
    ASSERT_EQ(interface.Stop().size(), 1U);
    EXPECT_EQ(interface.Stop()[0].Kind, Kind::Directory);
    EXPECT_FALSE(interface.Stop()[0].bDestinationDirectory);
    EXPECT_EQ(interface.Stop()[0].DestinationSizeBytes, 3U);
    EXPECT_EQ(TreeOf(Destination), (Tree{{"new", "file new data"}}));
}

TEST_F(DirectoryConflict, ReplacesARegularFileByTheDirectory) {
    WriteFile(Destination, "old");
    EXPECT_EQ(Copied(Policy::Overwrite), Result::Succeeded);
    EXPECT_EQ(TreeOf(Destination), (Tree{{"new", "file new data"}}));
    EXPECT_EQ(DoneBy(Job), (Counted{2, 8}));
}

TEST_F(DirectoryConflict, ReplacesAPipeByTheDirectory) {
    MakeFifo(Destination);
    EXPECT_EQ(Copied(Policy::Skip), Result::Succeeded);
    EXPECT_EQ(TreeOf(Destination), (Tree{{"new", "file new data"}}));
}

TEST_F(DirectoryConflict, SkippedByAnswerCountsTheWholeTree) {
    fs::create_directory(Source / "sub");
    WriteFile(Source / "sub/empty", "");
    WriteFile(Destination / "old", "old");
    AnsweringInterface interface(Job, {{Act::Skip, "", nullptr}});
    EXPECT_EQ(Copied(Policy::Ask, kMove), Result::Skipped);
    EXPECT_EQ(DoneBy(Job), (Counted{4, 8}));
    EXPECT_EQ(SkippedBy(Job), (Counted{4, 8}));
    EXPECT_EQ(TreeOf(Destination), (Tree{{"old", "file old"}}));
    EXPECT_EQ(TreeOf(Source),
              (Tree{{"new", "file new data"}, {"sub", "dir"}, {"sub/empty", "file "}}));
}

TEST_F(DirectoryConflict, IsAskedAboutAgainFurtherDown) {
    WriteFile(Source / "sub/file", "new");
    WriteFile(Destination / "sub/file", "old");
    AnsweringInterface interface(
        Job, {{Act::Merge, "", nullptr}, {Act::Merge, "", nullptr}, {Act::Skip, "", nullptr}});
    EXPECT_EQ(Copied(Policy::Ask), Result::Succeeded);
    ASSERT_EQ(interface.Stop().size(), 3U);
    EXPECT_EQ(interface.Stop()[1].DestinationPath, (Destination / "sub").string());
    EXPECT_EQ(interface.Stop()[2].DestinationPath, (Destination / "sub/file").string());
    EXPECT_EQ(ReadFile(Destination / "sub/file"), "old");
}

TEST_F(DirectoryConflict, AcceptsTheAnswersForDirectories) {
    fs::create_directory(Destination);
    EXPECT_TRUE(Answered(Act::Merge));
    EXPECT_FALSE(bSkip);
    EXPECT_TRUE(Answered(Act::Skip));
    EXPECT_TRUE(bSkip);
    EXPECT_TRUE(Answered(Act::MergeAll));
    EXPECT_FALSE(bSkip);
}

TEST_F(DirectoryConflict, RefusesTheAnswersForFiles) {
    fs::create_directory(Destination);
    for (const Act action : {Act::Overwrite, Act::OverwriteAll, Act::CompareByContent,
                             Act::OverwriteAllOlder, static_cast<Act>(0)}) {
        Message.clear();
        EXPECT_FALSE(Answered(action));
        EXPECT_EQ(Message, "Invalid directory merge decision.");
    }
    EXPECT_FALSE(Answered(Act::Rename, "/new/name"));
    EXPECT_EQ(Message, "Invalid directory merge decision.");
}

// A new name has no meaning for a directory; it ends up in the message, where nobody looks after a
// success.
TEST_F(DirectoryConflict, KeepsTheNewNameOfAMergeInTheMessage) {
    fs::create_directory(Destination);
    EXPECT_TRUE(Answered(Act::Merge, "/new/name"));
    EXPECT_EQ(Message, "/new/name");
    EXPECT_TRUE(Answered(Act::Merge));
    EXPECT_EQ(Message, "");
}

TEST_F(DirectoryConflict, IsCanceledByAnswer) {
    fs::create_directory(Destination);
    EXPECT_FALSE(Answered(Act::Cancel));
    EXPECT_EQ(Message, "Transfer canceled.");
    EXPECT_FALSE(bSkip);
}

TEST_F(DirectoryConflict, FailsAtADestinationThatCannotBeLookedAt) {
    fs::create_symlink("to", Destination);
    for (const Policy policy : {Policy::Ask, Policy::Overwrite, Policy::Skip}) {
        Message.clear();
        EXPECT_FALSE(Resolve(policy));
        EXPECT_EQ(Message, "Failed checking destination '" + Destination.string() +
                               "': Too many levels of symbolic links");
    }
}

} // namespace
