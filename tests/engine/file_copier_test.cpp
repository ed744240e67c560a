// Copying and moving one regular file.

#include "engine_source.h"

#include "answering_interface.h"
#include "transfer_fixture.h"

#include <sys/stat.h>

namespace {

using Act = TarvaneTransferConflictAction;
using Policy = TarvaneTransferConflictPolicy;
using Result = TransferCopyResult;

class FileCopier : public TransferTest {
protected:
    FileCopier() { WriteFile(Source, "0123456789"); }

    Result Run(bool bMove = kCopy, Policy WithPolicy = Policy::Overwrite) {
        return CopyFileWithProgress(Source, Destination, Job, WithPolicy, bMove, Message);
    }

    const fs::path Source = Directory / "source";
    const fs::path Destination = Directory / "destination";
};

TEST_F(FileCopier, CopiesTheBytesAndKeepsTheSource) {
    EXPECT_EQ(Run(), Result::Succeeded);
    EXPECT_EQ(TreeOf(Directory.Path()),
              (Tree{{"source", "file 0123456789"}, {"destination", "file 0123456789"}}));
    EXPECT_EQ(DoneBy(Job), (Counted{1, 10}));
    EXPECT_EQ(Message, "a message from before");
}

TEST_F(FileCopier, RemovesTheSourceOfAMove) {
    EXPECT_EQ(Run(kMove), Result::Succeeded);
    EXPECT_EQ(TreeOf(Directory.Path()), (Tree{{"destination", "file 0123456789"}}));
    EXPECT_EQ(DoneBy(Job), (Counted{1, 10}));
}

TEST_F(FileCopier, LeavesAnEmptyFileForAnEmptySource) {
    WriteFile(Source, "");
    EXPECT_EQ(Run(), Result::Succeeded);
    EXPECT_EQ(TreeOf(Directory.Path()), (Tree{{"source", "file "}, {"destination", "file "}}));
    EXPECT_EQ(DoneBy(Job), (Counted{1, 0}));
}

TEST_F(FileCopier, CopiesSizesAroundTheBlock) {
    for (const std::size_t size :
         {kTransferBufferBytes, kTransferBufferBytes - 1, kTransferBufferBytes + 1,
          2 * kTransferBufferBytes, 5 * kTransferBufferBytes + 4711}) {
        const std::string bytes = PatternBytes(size);
        WriteFile(Source, bytes);
        const Counted before = DoneBy(Job);
        EXPECT_EQ(Run(), Result::Succeeded) << size;
        EXPECT_TRUE(ReadFile(Destination) == bytes) << size;
        EXPECT_EQ(DoneBy(Job), (Counted{before.Items + 1, before.Bytes + size}));
    }
}

TEST_F(FileCopier, ShowsTheFileAndItsProgress) {
    EXPECT_EQ(Run(), Result::Succeeded);
    const TarvaneTransferUiSnapshot snapshot = Job.MakeUiSnapshot();
    EXPECT_EQ(snapshot.PathText, "Current: " + Source.string());
    EXPECT_EQ(snapshot.CurrentFileTotalBytes, 10U);
    EXPECT_EQ(snapshot.CurrentFileDoneBytes, 10U);
}

TEST_F(FileCopier, TruncatesALongerDestination) {
    WriteFile(Destination, "something that is longer than the source");
    EXPECT_EQ(Run(), Result::Succeeded);
    EXPECT_EQ(ReadFile(Destination), "0123456789");
}

TEST_F(FileCopier, GivesTheDestinationThePermissionsOfANewFile) {
    fs::permissions(Source, fs::perms::owner_all | fs::perms::set_uid);
    SetModifiedTime(Source, 1000000000);
    const mode_t previous = ::umask(0027);
    EXPECT_EQ(Run(), Result::Succeeded);
    ::umask(previous);
    EXPECT_EQ(fs::status(Destination).permissions(), static_cast<fs::perms>(0640));
    EXPECT_NE(fs::last_write_time(Destination), fs::last_write_time(Source));
}

TEST_F(FileCopier, WritesThroughALinkAtTheDestination) {
    WriteFile(Directory / "file", "old");
    fs::create_symlink("file", Destination);
    EXPECT_EQ(Run(), Result::Succeeded);
    EXPECT_EQ(TreeOf(Directory.Path()), (Tree{{"source", "file 0123456789"},
                                              {"destination", "link file"},
                                              {"file", "file 0123456789"}}));
}

TEST_F(FileCopier, CreatesTheFolderOfTheDestination) {
    EXPECT_EQ(CopyFileWithProgress(Source, Directory / "a/b/new", Job, Policy::Ask, kCopy, Message),
              Result::Succeeded);
    EXPECT_EQ(ReadFile(Directory / "a/b/new"), "0123456789");
}

TEST_F(FileCopier, ComparesWithWhatStandsAtTheDestination) {
    WriteFile(Destination, "0123456789");
    AnsweringInterface interface(
        Job, {{Act::CompareByContent, "", nullptr}, {Act::CompareByContent, "", nullptr}});
    EXPECT_EQ(Run(kCopy, Policy::Ask), Result::Skipped);
    WriteFile(Destination, "0123456780");
    EXPECT_EQ(Run(kCopy, Policy::Ask), Result::Succeeded);
    EXPECT_EQ(ReadFile(Destination), "0123456789");
}

TEST_F(FileCopier, WritesToTheNameThatTheAnswerGives) {
    WriteFile(Destination, "old");
    const fs::path renamed = Directory / "folder/renamed";
    AnsweringInterface interface(Job, {{Act::Rename, renamed, nullptr}});
    EXPECT_EQ(Run(kMove, Policy::Ask), Result::Succeeded);
    EXPECT_EQ(TreeOf(Directory.Path()), (Tree{{"destination", "file old"},
                                              {"folder", "dir"},
                                              {"folder/renamed", "file 0123456789"}}));
}

TEST_F(FileCopier, CountsASkippedFileWithItsWholeSize) {
    WriteFile(Destination, "old");
    EXPECT_EQ(Run(kMove, Policy::Skip), Result::Skipped);
    EXPECT_EQ(DoneBy(Job), (Counted{1, 10}));
    EXPECT_EQ(SkippedBy(Job), (Counted{1, 10}));
    EXPECT_EQ(TreeOf(Directory.Path()),
              (Tree{{"source", "file 0123456789"}, {"destination", "file old"}}));
    const TarvaneTransferUiSnapshot snapshot = Job.MakeUiSnapshot();
    EXPECT_EQ(snapshot.PathText, "Current: " + Source.string());
    EXPECT_EQ(snapshot.CurrentFileTotalBytes, 10U);
    EXPECT_EQ(snapshot.CurrentFileDoneBytes, 10U);
}

TEST_F(FileCopier, ReplacesADirectoryAtTheDestinationWithAllItsContents) {
    WriteFile(Destination / "sub/file", "x");
    WriteFile(Destination / "other", "x");
    EXPECT_EQ(Run(), Result::Succeeded);
    EXPECT_EQ(TreeOf(Directory.Path()),
              (Tree{{"source", "file 0123456789"}, {"destination", "file 0123456789"}}));
}

TEST_F(FileCopier, ReplacesALinkToADirectoryAndKeepsTheDirectory) {
    WriteFile(Directory / "folder/file", "stays");
    fs::create_directory_symlink("folder", Destination);
    EXPECT_EQ(Run(), Result::Succeeded);
    EXPECT_EQ(TreeOf(Directory.Path()), (Tree{{"source", "file 0123456789"},
                                              {"destination", "file 0123456789"},
                                              {"folder", "dir"},
                                              {"folder/file", "file stays"}}));
}

} // namespace
