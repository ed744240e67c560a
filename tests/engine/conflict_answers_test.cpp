// The answers to a taken name that look further: at contents, at ages, at a new name.

#include "engine_source.h"

#include "answering_interface.h"
#include "transfer_fixture.h"

namespace {

using Act = TarvaneTransferConflictAction;
using Policy = TarvaneTransferConflictPolicy;

class FileConflictAnswer : public TransferTest {
protected:
    FileConflictAnswer() {
        WriteFile(Source, "new data");
        WriteFile(Destination, "old data");
    }

    // Resolves with one and the same variable as destination and result, as the copiers do.
    bool Resolve(Policy WithPolicy = Policy::Overwrite) {
        return ResolveLocalFileConflict(Job, Source, Target, WithPolicy, Target, bSkip, Message);
    }

    bool Answered(Act Action, const std::string& RenamePath = "",
                  std::function<void()> Before = nullptr) {
        AnsweringInterface interface(Job, {{Action, RenamePath, std::move(Before)}});
        const bool result = Resolve(Policy::Ask);
        Questions = interface.Stop();
        return result;
    }

    // Ages the destination against the source, by nanoseconds.
    void DateSourceAfterDestination(std::int64_t Nanoseconds) {
        constexpr std::int64_t anySecond = 1700000000;
        constexpr std::int64_t middle = 500000000;
        SetModifiedTime(Destination, anySecond, middle);
        SetModifiedTime(Source, anySecond, middle + Nanoseconds);
    }

    const fs::path Source = Directory / "source";
    const fs::path Destination = Directory / "destination";
    fs::path Target = Destination;
    bool bSkip = true;
    std::vector<TarvaneTransferConflict> Questions;
};

TEST_F(FileConflictAnswer, IsSkippedAfterAComparisonWhenTheContentsAreEqual) {
    WriteFile(Destination, "new data");
    bSkip = false;
    EXPECT_TRUE(Answered(Act::CompareByContent));
    EXPECT_TRUE(bSkip);
}

TEST_F(FileConflictAnswer, IsOverwrittenAfterAComparisonWhenTheContentsDiffer) {
    EXPECT_TRUE(Answered(Act::CompareByContent));
    EXPECT_FALSE(bSkip);
    EXPECT_EQ(Target, Destination);
}

TEST_F(FileConflictAnswer, IsOverwrittenAfterAComparisonThatFails) {
    WriteFile(Destination, "new data");
    EXPECT_TRUE(Answered(Act::CompareByContent, "", [this] { fs::remove(Source); }));
    EXPECT_FALSE(bSkip);
}

TEST_F(FileConflictAnswer, IsAskedAboutEachTimeWhenComparedByContent) {
    EXPECT_TRUE(Answered(Act::CompareByContent));
    EXPECT_TRUE(Answered(Act::CompareByContent));
    EXPECT_EQ(Questions.size(), 1U);
}

TEST_F(FileConflictAnswer, OverwritesAnOlderDestination) {
    DateSourceAfterDestination(1);
    EXPECT_TRUE(Answered(Act::OverwriteAllOlder));
    EXPECT_FALSE(bSkip);
}

TEST_F(FileConflictAnswer, SkipsADestinationOfTheSameAge) {
    DateSourceAfterDestination(0);
    EXPECT_TRUE(Answered(Act::OverwriteAllOlder));
    EXPECT_TRUE(bSkip);
}

TEST_F(FileConflictAnswer, SkipsANewerDestination) {
    DateSourceAfterDestination(-1);
    EXPECT_TRUE(Answered(Act::OverwriteAllOlder));
    EXPECT_TRUE(bSkip);
}

TEST_F(FileConflictAnswer, SkipsWhenTheTimeOfTheSourceCannotBeRead) {
    constexpr std::int64_t year2300 = 10413792000;
    SetModifiedTime(Source, year2300);
    EXPECT_TRUE(Answered(Act::OverwriteAllOlder));
    EXPECT_TRUE(bSkip);
}

TEST_F(FileConflictAnswer, SkipsWhenTheTimeOfTheDestinationCannotBeRead) {
    constexpr std::int64_t year2300 = 10413792000;
    SetModifiedTime(Destination, year2300);
    EXPECT_TRUE(Answered(Act::OverwriteAllOlder));
    EXPECT_TRUE(bSkip);
}

TEST_F(FileConflictAnswer, DecidesEveryLaterFileByItsOwnAge) {
    DateSourceAfterDestination(1);
    EXPECT_TRUE(Answered(Act::OverwriteAllOlder));
    EXPECT_FALSE(bSkip);
    DateSourceAfterDestination(-1);
    EXPECT_TRUE(Resolve(Policy::Ask));
    EXPECT_TRUE(bSkip);
}

// The record that was shown decides, also when the files change during the question.
TEST_F(FileConflictAnswer, DecidesTheAgeFromWhatWasShown) {
    DateSourceAfterDestination(1);
    EXPECT_TRUE(Answered(Act::OverwriteAllOlder, "", [this] { DateSourceAfterDestination(-1); }));
    EXPECT_FALSE(bSkip);
}

TEST_F(FileConflictAnswer, TakesTheNewNameWhole) {
    const fs::path renamed = Directory / "other folder/new name";
    EXPECT_TRUE(Answered(Act::Rename, renamed));
    EXPECT_EQ(Target, renamed);
    EXPECT_FALSE(bSkip);
}

TEST_F(FileConflictAnswer, RefusesANewNameThatIsTaken) {
    WriteFile(Directory / "taken", "x");
    const fs::path taken = Directory / "taken";
    EXPECT_FALSE(Answered(Act::Rename, taken));
    EXPECT_EQ(Message, "Rename target already exists: " + taken.string());
    EXPECT_EQ(Questions.size(), 1U);
}

TEST_F(FileConflictAnswer, RefusesItsOwnNameAsTheNewName) {
    EXPECT_FALSE(Answered(Act::Rename, Destination));
    EXPECT_EQ(Message, "Rename target already exists: " + Destination.string());
}

TEST_F(FileConflictAnswer, FailsAtANewNameThatCannotBeLookedAt) {
    fs::create_symlink("loop", Directory / "loop");
    EXPECT_FALSE(Answered(Act::Rename, Directory / "loop"));
    EXPECT_EQ(Message, "Failed checking rename target: Too many levels of symbolic links");
}

// The handshake refuses an empty name, so this holds one step further in.
TEST_F(FileConflictAnswer, RefusesAnEmptyNewName) {
    EXPECT_FALSE(ApplyFileAnswer(Act::Rename, "", {}, Target, bSkip, Message));
    EXPECT_EQ(Message, "Rename target cannot be empty.");
    EXPECT_EQ(Target, Destination);
}

} // namespace
