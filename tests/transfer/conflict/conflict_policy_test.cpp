// Conflicts are described by how the source compares with the destination, decisions by one word.

#include "conflict_policy.h"

#include <array>
#include <optional>
#include <string>

#include <gtest/gtest.h>

namespace {

using Action = TarvaneTransferConflictAction;
using Kind = TarvaneTransferConflictKind;

constexpr bool kLinksStay = false;

enum class Relation { Greater, Less, Equal, SourceUnknown, DestinationUnknown };

constexpr std::array kRelations{Relation::Greater, Relation::Less, Relation::Equal,
                                Relation::SourceUnknown, Relation::DestinationUnknown};

// One expected word for each of kRelations.
using Row = std::array<const char*, kRelations.size()>;

constexpr Row kOverwrittenWhenGreater{"overwrite", "skip", "skip", "skip", "skip"};
constexpr Row kOverwrittenWhenUnequal{"overwrite", "overwrite", "skip", "skip", "skip"};
constexpr Row kComparedWhenKnown{"compare", "compare", "compare", "skip", "skip"};

TarvaneTransferConflict FileOntoFile(Relation Age, Relation Size) {
    TarvaneTransferConflict conflict;
    conflict.SourcePath = "/source/a.txt";
    conflict.DestinationPath = "/destination/a.txt";
    conflict.bSourceHasModifiedTime = Age != Relation::SourceUnknown;
    conflict.bDestinationHasModifiedTime = Age != Relation::DestinationUnknown;
    // What is not known is 0, which is less than any size and between these ticks, so that reading
    // it regardless of its flag would look like a difference.
    if (conflict.bSourceHasModifiedTime) {
        conflict.SourceModifiedTicks = Age == Relation::DestinationUnknown ? 10 : -10;
    }
    if (conflict.bDestinationHasModifiedTime) {
        conflict.DestinationModifiedTicks =
            Age == Relation::Less ? 10 : (Age == Relation::Equal ? -10 : -20);
    }
    conflict.bSourceHasSize = Size != Relation::SourceUnknown;
    conflict.bDestinationHasSize = Size != Relation::DestinationUnknown;
    conflict.SourceSizeBytes = conflict.bSourceHasSize ? (Size == Relation::Less ? 1 : 2) : 0;
    conflict.DestinationSizeBytes =
        conflict.bDestinationHasSize ? (Size == Relation::Greater ? 1 : 2) : 0;
    return conflict;
}

TarvaneTransferConflict FileOntoDirectory() {
    TarvaneTransferConflict conflict = FileOntoFile(Relation::Greater, Relation::Greater);
    conflict.bDestinationDirectory = true;
    conflict.bDestinationHasSize = false;
    conflict.DestinationSizeBytes = 0;
    return conflict;
}

TarvaneTransferConflict DirectoryOntoDirectory() {
    TarvaneTransferConflict conflict;
    conflict.Kind = Kind::Directory;
    conflict.SourcePath = "/source/d";
    conflict.DestinationPath = "/destination/d";
    conflict.bSourceDirectory = true;
    conflict.bDestinationDirectory = true;
    return conflict;
}

TarvaneTransferConflict DirectoryOntoFile() {
    TarvaneTransferConflict conflict = DirectoryOntoDirectory();
    conflict.bDestinationDirectory = false;
    return conflict;
}

std::string WordFor(Action Answer) {
    switch (Answer) {
    case Action::Merge:
        return "merge";
    case Action::Skip:
        return "skip";
    case Action::Overwrite:
        return "overwrite";
    case Action::CompareByContent:
        return "compare";
    case Action::Rename:
        return "rename";
    case Action::MergeAll:
    case Action::OverwriteAll:
    case Action::SkipAll:
    case Action::OverwriteAllOlder:
    case Action::Cancel:
        break;
    }
    return "unexpected action " + std::to_string(static_cast<int>(Answer));
}

std::string Describe(const ConflictDecision& Decision) {
    switch (Decision.Outcome) {
    case ConflictDecision::Verdict::Answer:
        EXPECT_EQ(Decision.Sentence, "");
        return WordFor(Decision.Action) + (Decision.bReplacesLink ? ", link removed" : "");
    case ConflictDecision::Verdict::AskUser:
        EXPECT_EQ(Decision.Sentence, "");
        return "ask";
    case ConflictDecision::Verdict::Fail:
        return "fail: " + Decision.Sentence;
    }
    return "no verdict";
}

ConflictPolicy Policy(FileConflictChoice ForFiles,
                      std::optional<DirectoryConflictChoice> ForDirectories = std::nullopt) {
    return ConflictPolicy({.ForFiles = ForFiles, .ForDirectories = ForDirectories});
}

// The conflict about an entry that is no link.
TakenName Plain(const TarvaneTransferConflict& Conflict) {
    TakenEntry entry;
    entry.LeadsTo =
        Conflict.bDestinationDirectory ? TakenEntry::Kind::Directory : TakenEntry::Kind::File;
    return MakeTakenName(Conflict, entry, kLinksStay);
}

std::string Decide(FileConflictChoice Choice, const TarvaneTransferConflict& Conflict) {
    return Describe(Policy(Choice).Decide(Plain(Conflict)));
}

void ExpectByAge(FileConflictChoice Choice, const Row& Expected) {
    for (std::size_t age = 0; age < kRelations.size(); ++age) {
        for (const Relation size : kRelations) {
            EXPECT_EQ(Decide(Choice, FileOntoFile(kRelations[age], size)), Expected[age])
                << "age " << age << ", size " << static_cast<int>(size);
        }
    }
}

void ExpectBySize(FileConflictChoice Choice, const Row& Expected) {
    for (std::size_t size = 0; size < kRelations.size(); ++size) {
        for (const Relation age : kRelations) {
            EXPECT_EQ(Decide(Choice, FileOntoFile(age, kRelations[size])), Expected[size])
                << "age " << static_cast<int>(age) << ", size " << size;
        }
    }
}

void ExpectAlways(FileConflictChoice Choice, const char* Expected) {
    ExpectByAge(Choice, {Expected, Expected, Expected, Expected, Expected});
}

TEST(FilePolicy, AskLeavesEveryFileToTheUser) {
    ExpectAlways(FileConflictChoice::Ask, "ask");
}

TEST(FilePolicy, OverwriteReplacesEveryFile) {
    ExpectAlways(FileConflictChoice::Overwrite, "overwrite");
}

TEST(FilePolicy, SkipSkipsEveryFileByItself) {
    ExpectAlways(FileConflictChoice::Skip, "skip");
}

TEST(FilePolicy, OlderReplacesWhatIsKnownToBeOlder) {
    ExpectByAge(FileConflictChoice::Older, kOverwrittenWhenGreater);
}

TEST(FilePolicy, CompareComparesFilesWhoseSizesAreKnown) {
    ExpectBySize(FileConflictChoice::Compare, kComparedWhenKnown);
}

TEST(FilePolicy, LargerReplacesWhatIsKnownToBeSmaller) {
    ExpectBySize(FileConflictChoice::Larger, kOverwrittenWhenGreater);
}

TEST(FilePolicy, SizeDiffersReplacesWhatIsKnownToBeOfAnotherSize) {
    ExpectBySize(FileConflictChoice::SizeDiffers, kOverwrittenWhenUnequal);
}

TEST(FilePolicy, FailNamesTheTakenFile) {
    ExpectAlways(FileConflictChoice::Fail, "fail: cannot create '/destination/a.txt': File exists");
}

TEST(FilePolicy, KeepBothRenames) {
    ExpectAlways(FileConflictChoice::KeepBoth, "rename");
}

TEST(FilePolicy, NeverPutsAFileInADirectorysPlace) {
    const std::string refusal = "fail: cannot overwrite directory '/destination/a.txt' with "
                                "non-directory '/source/a.txt'";
    EXPECT_EQ(Decide(FileConflictChoice::Overwrite, FileOntoDirectory()), refusal);
    EXPECT_EQ(Decide(FileConflictChoice::Older, FileOntoDirectory()), refusal);
    EXPECT_EQ(Decide(FileConflictChoice::Compare, FileOntoDirectory()), refusal);
    EXPECT_EQ(Decide(FileConflictChoice::Larger, FileOntoDirectory()), refusal);
    EXPECT_EQ(Decide(FileConflictChoice::SizeDiffers, FileOntoDirectory()), refusal);
}

TEST(FilePolicy, AsksSkipsAndFailsAtADirectoryAsAtAFile) {
    EXPECT_EQ(Decide(FileConflictChoice::Ask, FileOntoDirectory()), "ask");
    EXPECT_EQ(Decide(FileConflictChoice::Skip, FileOntoDirectory()), "skip");
    EXPECT_EQ(Decide(FileConflictChoice::Fail, FileOntoDirectory()),
              "fail: cannot create '/destination/a.txt': File exists");
}

TEST(FilePolicy, KeepBothKeepsADirectoryToo) {
    EXPECT_EQ(Decide(FileConflictChoice::KeepBoth, FileOntoDirectory()), "rename");
}

TEST(DirectoryPolicy, DefaultsToAskWithAskAndToMergeOtherwise) {
    EXPECT_EQ(Decide(FileConflictChoice::Ask, DirectoryOntoDirectory()), "ask");
    EXPECT_EQ(Decide(FileConflictChoice::Overwrite, DirectoryOntoDirectory()), "merge");
    EXPECT_EQ(Decide(FileConflictChoice::Skip, DirectoryOntoDirectory()), "merge");
    EXPECT_EQ(Decide(FileConflictChoice::Older, DirectoryOntoDirectory()), "merge");
    EXPECT_EQ(Decide(FileConflictChoice::KeepBoth, DirectoryOntoDirectory()), "merge");
    EXPECT_EQ(Decide(FileConflictChoice::Fail, DirectoryOntoDirectory()), "merge");
}

TEST(DirectoryPolicy, ItsOwnChoiceWinsWhateverFilesGet) {
    for (const FileConflictChoice forFiles :
         {FileConflictChoice::Ask, FileConflictChoice::Overwrite, FileConflictChoice::Skip,
          FileConflictChoice::KeepBoth, FileConflictChoice::Fail}) {
        const auto decide = [&](DirectoryConflictChoice ForDirectories) {
            return Describe(
                Policy(forFiles, ForDirectories).Decide(Plain(DirectoryOntoDirectory())));
        };
        EXPECT_EQ(decide(DirectoryConflictChoice::Ask), "ask");
        EXPECT_EQ(decide(DirectoryConflictChoice::Merge), "merge");
        EXPECT_EQ(decide(DirectoryConflictChoice::Skip), "skip");
        EXPECT_EQ(decide(DirectoryConflictChoice::Fail),
                  "fail: cannot create '/destination/d': File exists");
    }
}

TEST(DirectoryPolicy, MergeNeverPutsADirectoryInAFilesPlace) {
    const std::string refusal =
        "fail: cannot overwrite non-directory '/destination/d' with directory '/source/d'";
    EXPECT_EQ(Decide(FileConflictChoice::Overwrite, DirectoryOntoFile()), refusal);
    EXPECT_EQ(Decide(FileConflictChoice::Older, DirectoryOntoFile()), refusal);
    EXPECT_EQ(Decide(FileConflictChoice::Compare, DirectoryOntoFile()), refusal);
    EXPECT_EQ(Decide(FileConflictChoice::Larger, DirectoryOntoFile()), refusal);
    EXPECT_EQ(Decide(FileConflictChoice::SizeDiffers, DirectoryOntoFile()), refusal);
    EXPECT_EQ(Decide(FileConflictChoice::KeepBoth, DirectoryOntoFile()), refusal);
}

TEST(DirectoryPolicy, SkippingFilesSkipsThisDirectoryAloneWhereAFileStands) {
    EXPECT_EQ(Decide(FileConflictChoice::Skip, DirectoryOntoFile()), "skip");
}

TEST(DirectoryPolicy, FailNamesTheFileThatStandsThere) {
    EXPECT_EQ(Decide(FileConflictChoice::Fail, DirectoryOntoFile()),
              "fail: cannot create '/destination/d': File exists");
}

TEST(DirectoryPolicy, MergeAsksWhereAFileStandsAndFilesAreAskedAbout) {
    const ConflictPolicy policy = Policy(FileConflictChoice::Ask, DirectoryConflictChoice::Merge);
    EXPECT_EQ(Describe(policy.Decide(Plain(DirectoryOntoFile()))), "ask");
    EXPECT_EQ(Describe(policy.Decide(Plain(DirectoryOntoDirectory()))), "merge");
}

TEST(RememberedChoice, AnswersLaterFiles) {
    ConflictPolicy policy = Policy(FileConflictChoice::Ask);
    policy.RememberForAll(FileConflictChoice::Compare);
    EXPECT_EQ(Describe(policy.Decide(Plain(FileOntoFile(Relation::Equal, Relation::Equal)))),
              "compare");
    EXPECT_EQ(Describe(policy.Decide(Plain(DirectoryOntoDirectory()))), "ask");
}

TEST(RememberedChoice, AnswersLaterDirectories) {
    ConflictPolicy policy = Policy(FileConflictChoice::Ask);
    policy.RememberForAll(DirectoryConflictChoice::Merge);
    EXPECT_EQ(Describe(policy.Decide(Plain(DirectoryOntoDirectory()))), "merge");
    EXPECT_EQ(Describe(policy.Decide(Plain(FileOntoFile(Relation::Equal, Relation::Equal)))),
              "ask");
}

TEST(RememberedChoice, AsksAgainWhereOneKindWouldReplaceTheOther) {
    ConflictPolicy policy = Policy(FileConflictChoice::Ask);
    policy.RememberForAll(FileConflictChoice::Overwrite);
    policy.RememberForAll(DirectoryConflictChoice::Merge);
    EXPECT_EQ(Describe(policy.Decide(Plain(FileOntoDirectory()))), "ask");
    EXPECT_EQ(Describe(policy.Decide(Plain(DirectoryOntoFile()))), "ask");
}

} // namespace
