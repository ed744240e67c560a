// What the conflict choices leave on disk when the engine carries them out.

#include <string>

#include <gtest/gtest.h>

#include "desk_run.h"
#include "plan_fixture.h"

namespace {

class ChoicesOnDisk : public PlanFixture {
protected:
    // tree/ comes to dest/tree/, where some names are taken.
    ChoicesOnDisk() {
        Put("tree/inner.txt", "dest/tree/inner.txt", "new words", "old");
        Put("tree/sub/same.txt", "dest/tree/sub/same.txt", "equal", "equal");
        WriteFile(Directory / "tree/free.txt", "free");
    }

    // The first is newer than the second.
    void Put(const std::string& Source, const std::string& Destination,
             const std::string& SourceBytes, const std::string& DestinationBytes) {
        WriteFile(Directory / Source, SourceBytes);
        WriteFile(Directory / Destination, DestinationBytes);
        SetModifiedTime(Directory / Source, 2000);
        SetModifiedTime(Directory / Destination, 1000);
    }

    // A directory where a file is to go.
    void PutDirectoryInTheWay() {
        WriteFile(Directory / "tree/blocked", "a file");
        WriteFile(Directory / "dest/tree/blocked/precious.txt", "precious");
    }

    // A file where a directory is to go.
    void PutFileInTheWay() {
        WriteFile(Directory / "tree/blocked/new.txt", "new");
        WriteFile(Directory / "dest/tree/blocked", "precious");
    }

    DeskRun Run(const TransferRequest& Request) const { return RunAtDesk(Plan(Request), Request); }

    DeskRun CopyTree(FileConflictChoice Choice) const {
        TransferRequest request = Copy({"tree", "dest"});
        request.OnConflict = Choice;
        return Run(request);
    }

    Tree Destination() const { return TreeOf(Directory / "dest/tree"); }
};

TEST_F(ChoicesOnDisk, SkipCopiesWhatIsNew) {
    const DeskRun result = CopyTree(FileConflictChoice::Skip);
    EXPECT_EQ(result.Message, "Copied 1 item(s).");
    EXPECT_EQ(Destination(), Tree({{"free.txt", "file free"},
                                   {"inner.txt", "file old"},
                                   {"sub", "dir"},
                                   {"sub/same.txt", "file equal"}}));
    EXPECT_EQ(result.Answers.size(), 4U);
}

TEST_F(ChoicesOnDisk, SkipLeavesAFileWhereADirectoryWouldGo) {
    PutFileInTheWay();
    EXPECT_EQ(CopyTree(FileConflictChoice::Skip).Message, "Copied 1 item(s).");
    EXPECT_EQ(ReadFile(Directory / "dest/tree/blocked"), "precious");
    EXPECT_EQ(ReadFile(Directory / "dest/tree/free.txt"), "free");
    EXPECT_EQ(ReadFile(Directory / "dest/tree/sub/same.txt"), "equal");
}

TEST_F(ChoicesOnDisk, OverwriteReplacesEveryFile) {
    const DeskRun result = CopyTree(FileConflictChoice::Overwrite);
    EXPECT_EQ(result.Message, "Copied 1 item(s).");
    EXPECT_EQ(Destination(), TreeOf(Directory / "tree"));
    EXPECT_EQ(result.Answers.size(), 4U);
}

TEST_F(ChoicesOnDisk, OlderReplacesTheOlderFileAlone) {
    SetModifiedTime(Directory / "tree/sub/same.txt", 500);
    WriteFile(Directory / "tree/sub/same.txt", "older");
    SetModifiedTime(Directory / "tree/sub/same.txt", 500);
    EXPECT_EQ(CopyTree(FileConflictChoice::Older).Message, "Copied 1 item(s).");
    EXPECT_EQ(ReadFile(Directory / "dest/tree/inner.txt"), "new words");
    EXPECT_EQ(ReadFile(Directory / "dest/tree/sub/same.txt"), "equal");
}

TEST_F(ChoicesOnDisk, CompareReplacesTheFileThatDiffers) {
    EXPECT_EQ(CopyTree(FileConflictChoice::Compare).Message, "Copied 1 item(s).");
    EXPECT_EQ(ReadFile(Directory / "dest/tree/inner.txt"), "new words");
    EXPECT_EQ(ReadFile(Directory / "dest/tree/sub/same.txt"), "equal");
}

TEST_F(ChoicesOnDisk, LargerReplacesTheSmallerFile) {
    Put("tree/less.txt", "dest/tree/less.txt", "less", "much more");
    EXPECT_EQ(CopyTree(FileConflictChoice::Larger).Message, "Copied 1 item(s).");
    EXPECT_EQ(ReadFile(Directory / "dest/tree/inner.txt"), "new words");
    EXPECT_EQ(ReadFile(Directory / "dest/tree/less.txt"), "much more");
}

TEST_F(ChoicesOnDisk, SizeDiffersLeavesAFileOfTheSameSize) {
    Put("tree/twin.txt", "dest/tree/twin.txt", "new", "old");
    EXPECT_EQ(CopyTree(FileConflictChoice::SizeDiffers).Message, "Copied 1 item(s).");
    EXPECT_EQ(ReadFile(Directory / "dest/tree/inner.txt"), "new words");
    EXPECT_EQ(ReadFile(Directory / "dest/tree/twin.txt"), "old");
}

TEST_F(ChoicesOnDisk, KeepBothLosesNeither) {
    PutDirectoryInTheWay();
    EXPECT_EQ(CopyTree(FileConflictChoice::KeepBoth).Message, "Copied 1 item(s).");
    EXPECT_EQ(Destination(), Tree({{"blocked", "dir"},
                                   {"blocked/precious.txt", "file precious"},
                                   {"blocked-2", "file a file"},
                                   {"free.txt", "file free"},
                                   {"inner-2.txt", "file new words"},
                                   {"inner.txt", "file old"},
                                   {"sub", "dir"},
                                   {"sub/same-2.txt", "file equal"},
                                   {"sub/same.txt", "file equal"}}));
}

TEST_F(ChoicesOnDisk, KeepBothTwiceKeepsThree) {
    CopyTree(FileConflictChoice::KeepBoth);
    CopyTree(FileConflictChoice::KeepBoth);
    EXPECT_EQ(ReadFile(Directory / "dest/tree/inner-3.txt"), "new words");
}

TEST_F(ChoicesOnDisk, FailLeavesTheTakenFile) {
    const DeskRun result = CopyTree(FileConflictChoice::Fail);
    EXPECT_EQ(result.Message, "Copy canceled. Partial destination files may remain.");
    EXPECT_EQ(ReadFile(Directory / "dest/tree/inner.txt"), "old");
    const std::string taken = (Directory / "dest/tree").native();
    EXPECT_TRUE(result.Sentence == "cannot create '" + taken + "/inner.txt': File exists" ||
                result.Sentence == "cannot create '" + taken + "/sub/same.txt': File exists")
        << result.Sentence;
}

TEST_F(ChoicesOnDisk, NoChoiceRemovesADirectory) {
    PutDirectoryInTheWay();
    SetModifiedTime(Directory / "tree/blocked", 4000000000);
    for (const FileConflictChoice choice :
         {FileConflictChoice::Overwrite, FileConflictChoice::Older, FileConflictChoice::Compare,
          FileConflictChoice::Larger, FileConflictChoice::SizeDiffers}) {
        EXPECT_EQ(CopyTree(choice).Sentence,
                  "cannot overwrite directory '" + (Directory / "dest/tree/blocked").native() +
                      "' with non-directory '" + (Directory / "tree/blocked").native() + "'");
        EXPECT_EQ(ReadFile(Directory / "dest/tree/blocked/precious.txt"), "precious");
    }
}

TEST_F(ChoicesOnDisk, NoChoiceReplacesAFileByADirectory) {
    PutFileInTheWay();
    for (const FileConflictChoice choice :
         {FileConflictChoice::Overwrite, FileConflictChoice::Older, FileConflictChoice::KeepBoth}) {
        EXPECT_EQ(CopyTree(choice).Sentence,
                  "cannot overwrite non-directory '" + (Directory / "dest/tree/blocked").native() +
                      "' with directory '" + (Directory / "tree/blocked").native() + "'");
        EXPECT_EQ(ReadFile(Directory / "dest/tree/blocked"), "precious");
    }
}

TEST_F(ChoicesOnDisk, SkippedDirectoriesAreLeftOutWhole) {
    TransferRequest request = Copy({"a.txt", "tree", "dest"});
    request.OnConflict = FileConflictChoice::Overwrite;
    request.OnDirectoryConflict = DirectoryConflictChoice::Skip;
    const Tree before = Destination();
    EXPECT_EQ(Run(request).Message, "Copied 2 item(s).");
    EXPECT_EQ(Destination(), before);
    EXPECT_EQ(ReadFile(Directory / "dest/a.txt"), "a");
}

TEST_F(ChoicesOnDisk, AMoveLeavesWhatWasSkipped) {
    TransferRequest request = Move({"tree", "dest"});
    request.OnConflict = FileConflictChoice::Skip;
    EXPECT_EQ(Run(request).Message, "Moved 1 item(s).");
    EXPECT_EQ(
        TreeOf(Directory / "tree"),
        Tree({{"inner.txt", "file new words"}, {"sub", "dir"}, {"sub/same.txt", "file equal"}}));
    EXPECT_EQ(ReadFile(Directory / "dest/tree/free.txt"), "free");
}

} // namespace
