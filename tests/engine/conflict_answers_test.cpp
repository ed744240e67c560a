// The answers to a taken name that look further: at contents, at ages, at a new name.

#include "engine_source.h"

#include "file_conflict_fixture.h"

namespace {

class FileConflictAnswer : public FileConflict {
protected:
    // Ages the destination against the source, by nanoseconds.
    void DateSourceAfterDestination(std::int64_t Nanoseconds) {
        constexpr std::int64_t anySecond = 1700000000;
        constexpr std::int64_t middle = 500000000;
        SetModifiedTime(Destination, anySecond, middle);
        SetModifiedTime(Source, anySecond, middle + Nanoseconds);
    }
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
