// Every policy and every answer, for every kind of source and of destination, as a copy and as a
// move: how the job ends, what is on disk and what is counted.

#include "answering_interface.h"
#include "transfer_fixture.h"

#include <array>
#include <optional>
#include <tuple>

namespace {

namespace fs = std::filesystem;

using Act = TarvaneTransferConflictAction;
using Policy = TarvaneTransferConflictPolicy;

enum class EntryKind { File, Directory };

enum class Outcome {
    // The source is at the destination; an existing directory keeps its other entries.
    Done,
    // The source is at the name that came with the answer.
    Renamed,
    Skipped,
    // The answer does not suit the conflict.
    Refused,
    Canceled,
};

// What is to happen when something stands at the destination.
struct Decision {
    const char* Name;
    Policy WithPolicy;
    std::optional<Act> Answer;
    Outcome ForFile;
    Outcome ForDirectory;
};

constexpr std::array kDecisions{
    Decision{"Overwrite", Policy::Overwrite, {}, Outcome::Done, Outcome::Done},
    Decision{"Skip", Policy::Skip, {}, Outcome::Skipped, Outcome::Done},
    Decision{"AskMerge", Policy::Ask, Act::Merge, Outcome::Refused, Outcome::Done},
    Decision{"AskMergeAll", Policy::Ask, Act::MergeAll, Outcome::Refused, Outcome::Done},
    Decision{"AskSkip", Policy::Ask, Act::Skip, Outcome::Skipped, Outcome::Skipped},
    Decision{"AskSkipAll", Policy::Ask, Act::SkipAll, Outcome::Skipped, Outcome::Skipped},
    Decision{"AskOverwrite", Policy::Ask, Act::Overwrite, Outcome::Done, Outcome::Refused},
    Decision{"AskRename", Policy::Ask, Act::Rename, Outcome::Renamed, Outcome::Refused},
    Decision{"AskOverwriteAll", Policy::Ask, Act::OverwriteAll, Outcome::Done, Outcome::Refused},
    Decision{"AskCompareByContent", Policy::Ask, Act::CompareByContent, Outcome::Done,
             Outcome::Refused},
    Decision{"AskOverwriteAllOlder", Policy::Ask, Act::OverwriteAllOlder, Outcome::Done,
             Outcome::Refused},
    Decision{"AskCancel", Policy::Ask, Act::Cancel, Outcome::Canceled, Outcome::Canceled},
};

// Decision, source, destination, whether it is a move.
using Parameters = std::tuple<Decision, EntryKind, EntryKind, bool>;

class PolicyMatrix : public TransferTest, public testing::WithParamInterface<Parameters> {
protected:
    PolicyMatrix() {
        constexpr std::int64_t anySecond = 1700000000;
        if (SourceKind == EntryKind::File) {
            WriteFile(Source, "new data");
        } else {
            WriteFile(Source / "new", "new data");
        }
        if (DestinationKind == EntryKind::File) {
            WriteFile(Destination, "old");
        } else {
            WriteFile(Destination / "old", "old");
        }
        SetModifiedTime(Destination, anySecond);
    }

    Outcome Expected() const {
        return SourceKind == EntryKind::File ? Decided.ForFile : Decided.ForDirectory;
    }

    static void Put(Tree& Into, const std::string& Name, EntryKind Kind, const std::string& Entry,
                    const std::string& Bytes) {
        Into[Name] = Kind == EntryKind::File ? "file " + Bytes : "dir";
        if (Kind == EntryKind::Directory) {
            Into[Name + "/" + Entry] = "file " + Bytes;
        }
    }

    Tree ExpectedOnDisk() const {
        Tree tree;
        const bool done = Expected() == Outcome::Done;
        const bool merged = SourceKind == EntryKind::Directory;
        if (!done || (merged && DestinationKind == EntryKind::Directory)) {
            Put(tree, "to", DestinationKind, "old", "old");
        }
        if (done) {
            Put(tree, "to", SourceKind, "new", "new data");
        }
        if (Expected() == Outcome::Renamed) {
            Put(tree, "renamed", SourceKind, "new", "new data");
        }
        if (!bMove || !(done || Expected() == Outcome::Renamed)) {
            Put(tree, "from", SourceKind, "new", "new data");
        }
        return tree;
    }

    std::string ExpectedMessage() const {
        switch (Expected()) {
        case Outcome::Done:
        case Outcome::Renamed:
        case Outcome::Skipped:
            return bMove ? "Moved 1 item(s)." : "Copied 1 item(s).";
        case Outcome::Refused:
            return SourceKind == EntryKind::File ? "Invalid file conflict decision."
                                                 : "Invalid directory merge decision.";
        case Outcome::Canceled:
            return bMove ? "Move canceled. Partial destination files may remain."
                         : "Copy canceled. Partial destination files may remain.";
        }
        return "";
    }

    Counted ExpectedCounts() const {
        if (Expected() == Outcome::Refused || Expected() == Outcome::Canceled) {
            return {};
        }
        return SourceKind == EntryKind::File ? Counted{1, 8} : Counted{2, 8};
    }

    const Decision Decided = std::get<0>(GetParam());
    const EntryKind SourceKind = std::get<1>(GetParam());
    const EntryKind DestinationKind = std::get<2>(GetParam());
    const bool bMove = std::get<3>(GetParam());
    const fs::path Source = Directory / "from";
    const fs::path Destination = Directory / "to";
};

TEST_P(PolicyMatrix, EndsAsTheDecisionSays) {
    std::vector<PreparedAnswer> answers;
    if (Decided.Answer) {
        const bool renames = Decided.Answer == Act::Rename;
        answers.push_back({*Decided.Answer, renames ? (Directory / "renamed").string() : "", {}});
    }
    const std::size_t expectedQuestions = answers.size();
    AnsweringInterface interface(Job, answers);
    RunTarvaneTransferJob(SharedJob, PlanOf(bMove, {{Source, Destination}}, Decided.WithPolicy));

    EXPECT_EQ(interface.Stop().size(), expectedQuestions);
    const TarvaneTransferUiSnapshot snapshot = Job.MakeUiSnapshot();
    EXPECT_EQ(snapshot.MessageText, ExpectedMessage());
    EXPECT_TRUE(snapshot.bFinished);
    EXPECT_EQ(snapshot.bCanceled, Expected() == Outcome::Canceled);
    EXPECT_EQ(snapshot.bSucceeded,
              Expected() != Outcome::Canceled && Expected() != Outcome::Refused);
    EXPECT_EQ(DoneBy(Job), ExpectedCounts());
    EXPECT_EQ(TreeOf(Directory.Path()), ExpectedOnDisk());
}

std::string NameOf(const testing::TestParamInfo<Parameters>& Info) {
    const auto& [decision, source, destination, move] = Info.param;
    const auto word = [](EntryKind Kind) { return Kind == EntryKind::File ? "File" : "Directory"; };
    return std::string(decision.Name) + "_" + (move ? "Move" : "Copy") + word(source) + "Onto" +
           word(destination);
}

INSTANTIATE_TEST_SUITE_P(All, PolicyMatrix,
                         testing::Combine(testing::ValuesIn(kDecisions),
                                          testing::Values(EntryKind::File, EntryKind::Directory),
                                          testing::Values(EntryKind::File, EntryKind::Directory),
                                          testing::Bool()),
                         NameOf);

} // namespace
