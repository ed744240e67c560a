// Which path a sentence of the engine is about.

#include "failure_reason.h"

#include "file_tree.h"
#include "temporary_directory.h"

#include <utility>

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

class FailureReason : public testing::Test {
protected:
    // from/tree and from/b become to/tree and to/b.
    FailureReason() {
        WriteFile(Root / "from/tree/sub/file", "data");
        WriteFile(Root / "from/b", "data");
        WriteFile(Root / "to/other", "data");
        for (const char* name : {"tree", "b"}) {
            TarvaneTransferItemPlan item;
            item.SourcePath = Root / "from" / name;
            item.DestinationPath = Root / "to" / name;
            Plan.Items.push_back(item);
        }
        Answer.Conflict.SourcePath = PathOf("from/tree/sub/file");
        Answer.Conflict.DestinationPath = PathOf("to/tree/sub/file");
    }

    std::string PathOf(const std::string& Name) const { return (Root / Name).string(); }
    std::string Text(const std::string& Sentence, const std::string& Current = "from/tree/sub/file",
                     const AnsweredConflict* LastAnswer = nullptr) const {
        return FailureText({.Sentence = Sentence,
                            .Plan = Plan,
                            .CurrentPath = Current.empty() ? fs::path() : Root / Current,
                            .CurrentBytes = 4,
                            .DoneEntries = Done,
                            .LastAnswer = LastAnswer});
    }

    TemporaryDirectory Root;
    TarvaneTransferPlan Plan;
    std::uint64_t Done = 0;
    AnsweredConflict Answer;
};

TEST_F(FailureReason, NamesTheSource) {
    EXPECT_EQ(Text("Failed to open source file."),
              PathOf("from/tree/sub/file") + ": Failed to open source file.");
    fs::remove(Root / "from/tree/sub/file");
    EXPECT_EQ(Text("Failed while reading source file."),
              PathOf("from/tree/sub/file") +
                  ": Failed while reading source file. (No such file or directory)");
}

TEST_F(FailureReason, NamesTheDestination) {
    for (const char* sentence :
         {"Failed while writing destination file.", "Failed to flush destination file."}) {
        EXPECT_EQ(Text(sentence), PathOf("to/tree/sub/file") + ": " + sentence);
        EXPECT_EQ(Text(sentence, "from/b"), PathOf("to/b") + ": " + sentence);
    }
    EXPECT_EQ(Text("Failed to open destination file.", "from/b"),
              PathOf("to/b") + ": Failed to open destination file.");
}

TEST_F(FailureReason, NamesTheNewNameThatWasGiven) {
    EXPECT_EQ(Text("Failed to flush destination file.", "from/tree/sub/file", &Answer),
              PathOf("to/tree/sub/file") + ": Failed to flush destination file.");
    Answer.RenamePath = PathOf("to/elsewhere");
    EXPECT_EQ(Text("Failed to flush destination file.", "from/tree/sub/file", &Answer),
              PathOf("to/elsewhere") + ": Failed to flush destination file.");
    EXPECT_EQ(Text("Failed to flush destination file.", "from/b", &Answer),
              PathOf("to/b") + ": Failed to flush destination file.");
    EXPECT_EQ(Text("Failed checking rename target: Input/output error", "from/b", &Answer),
              PathOf("to/elsewhere") + ": Failed checking rename target: Input/output error");
    EXPECT_EQ(Text("Failed to replace destination directory: Busy", "from/b", &Answer),
              PathOf("to/tree/sub/file") + ": Failed to replace destination directory: Busy");
}

TEST_F(FailureReason, NamesNoDestinationThatIsNotCertain) {
    TarvaneTransferItemPlan inner;
    inner.SourcePath = Root / "from/tree/sub";
    inner.DestinationPath = Root / "to/sub";
    Plan.Items.push_back(inner);
    EXPECT_EQ(Text("Failed to open destination file."), "Failed to open destination file.");
    EXPECT_EQ(Text("Failed to replace destination directory: Busy"),
              "Failed to replace destination directory: Busy");
}

TEST_F(FailureReason, NamesTheDirectoryThatIsMissing) {
    const std::string sentence = "Failed to create destination directory: Not a directory";
    fs::create_directory(Root / "to/tree");
    EXPECT_EQ(Text(sentence, "from/tree/sub"), PathOf("to/tree/sub") + ": " + sentence);
    Plan.Items[1].DestinationPath = Root / "to/other/b";
    EXPECT_EQ(Text(sentence, "from/tree"), PathOf("to/other") + ": " + sentence);
}

TEST_F(FailureReason, NamesTheOperandThatCannotBeFound) {
    fs::remove(Root / "from/b");
    EXPECT_EQ(Text("Source does not exist.", ""), PathOf("from/b") + ": Source does not exist.");
}

TEST_F(FailureReason, NamesTheOperandThatIsRefused) {
    const std::string same = "Source and destination are the same path.";
    const std::string inside = "Destination cannot be inside the source directory.";
    EXPECT_EQ(Text(same), same);
    Plan.Items[1].DestinationPath = Root / "from/b";
    EXPECT_EQ(Text(same), same);
    std::swap(Plan.Items[0], Plan.Items[1]);
    EXPECT_EQ(Text(same), PathOf("from/b") + ": " + same);
    EXPECT_EQ(Text(inside), inside);
    Plan.Items = {Plan.Items[1]};
    Plan.Items[0].DestinationPath = Root / "from/tree/sub/new";
    EXPECT_EQ(Text(inside), PathOf("from/tree") + ": " + inside);
}

// The copies of links to a device lead to the same as they do.
TEST_F(FailureReason, NamesNoOperandThatIsDone) {
    Plan.Items.erase(Plan.Items.begin());
    for (const char* name : {"from/null", "to/null"}) {
        fs::create_symlink("/dev/null", Root / name);
    }
    TarvaneTransferItemPlan null;
    null.SourcePath = Root / "from/null";
    null.DestinationPath = Root / "to/null";
    Plan.Items.insert(Plan.Items.begin(), null);
    Plan.Items[1].DestinationPath = Root / "from/b";
    const std::string same = "Source and destination are the same path.";
    EXPECT_EQ(Text(same), PathOf("from/null") + ": " + same);
    Done = 1;
    EXPECT_EQ(Text(same), PathOf("from/b") + ": " + same);
    Done = 2;
    EXPECT_EQ(Text(same), same);
    // A directory that is moved has taken its name along.
    fs::rename(Root / "from/tree", Root / "to/tree");
    Plan.Items[0].SourcePath = Root / "from/tree";
    Plan.Items[0].DestinationPath = Root / "to/tree";
    Done = 1;
    EXPECT_EQ(Text(same), same);
}

TEST_F(FailureReason, NamesTheOperandThatIsAPipe) {
    EXPECT_EQ(Text("Invalid argument"), "Invalid argument");
    fs::remove(Root / "from/b");
    MakeFifo(Root / "from/b");
    EXPECT_EQ(Text("Invalid argument"), "Invalid argument");
    std::swap(Plan.Items[0], Plan.Items[1]);
    EXPECT_EQ(Text("Invalid argument"),
              PathOf("from/b") +
                  ": Invalid argument (pipes, sockets and devices cannot be copied)");
}

TEST_F(FailureReason, NamesTheEntryThatASystemTextIsAbout) {
    fs::create_symlink("nowhere", Root / "from/tree/link");
    EXPECT_EQ(Text("No such file or directory", "from/tree/link"),
              PathOf("from/tree/link") + ": No such file or directory");
    EXPECT_EQ(Text("No such file or directory"), "No such file or directory");
    EXPECT_EQ(Text("No such file or directory", ""), "No such file or directory");
}

TEST_F(FailureReason, AddsNothingWhereThePathIsNamed) {
    for (const char* sentence : {"Source does not exist: /x", "Could not read source file '/x': Y",
                                 "Transfer stopped: std::bad_alloc"}) {
        EXPECT_EQ(Text(sentence), sentence);
    }
}

} // namespace
