// The new name that the question about a taken name asks for.

#include "conflict_question.h"

#include <string>

#include <gtest/gtest.h>

#include "asked_conflict.h"

namespace {

using RenameQuestion = AskedConflict;

std::string NewName(const ConflictQuestion& Question) {
    return Question.NewName() ? Question.NewName()->Text() : "(none)";
}

} // namespace

TEST_F(RenameQuestion, ProposesAFreeName) {
    ConflictQuestion question = Ask(FileConflict());
    EXPECT_EQ(question.Handle(Letter('r')), std::nullopt);
    EXPECT_EQ(NewName(question), "cover-2.jpg");
}

TEST_F(RenameQuestion, ProposesTheTakenNameWhenNoneIsFree) {
    FreePath.clear();
    ConflictQuestion question = Ask(FileConflict());
    question.Handle(Letter('r'));
    EXPECT_EQ(NewName(question), "cover.jpg");
}

TEST_F(RenameQuestion, SendsTheFullPath) {
    ConflictQuestion question = Ask(FileConflict());
    Type(question, "r");
    Type(question, "x");
    EXPECT_EQ(question.Handle(kEnter),
              (ConflictAnswer{Action::Rename, "/media/usb0/Backup/cover-2.jpgx", {}, {}}));
    EXPECT_EQ(Checked, Texts{"/media/usb0/Backup/cover-2.jpgx"});
    EXPECT_EQ(question.AnswerLine(), "File exists: /media/usb0/Backup/cover.jpg | rename | "
                                     "/media/usb0/Backup/cover-2.jpgx");
}

TEST_F(RenameQuestion, TakesAFullPathAsItIs) {
    ConflictQuestion question = Ask(FileConflict());
    Type(question, "r");
    question.Handle({KeyCode::ClearLine, {}});
    Type(question, "/tmp/so");
    EXPECT_EQ(question.Handle(kEnter), (ConflictAnswer{Action::Rename, "/tmp/so", {}, {}}));
}

TEST_F(RenameQuestion, KeepsTheBytesOfTheName) {
    FreePath = "/x/bad\xFF\xFE\n-2.bin";
    ConflictQuestion question = Ask(FileConflict());
    question.Handle(Letter('r'));
    EXPECT_EQ(NewName(question), "bad\xFF\xFE\n-2.bin");
    EXPECT_EQ(question.Handle(kEnter),
              (ConflictAnswer{Action::Rename, "/media/usb0/Backup/bad\xFF\xFE\n-2.bin", {}, {}}));
}

TEST_F(RenameQuestion, StaysOpenWhenTheNameIsRefused) {
    Refusal = "That name exists already.";
    ConflictQuestion question = Ask(FileConflict());
    Type(question, "r");
    EXPECT_EQ(question.Handle(kEnter), std::nullopt);
    EXPECT_EQ(question.WhyNotTaken(), "That name exists already.");
    EXPECT_EQ(NewName(question), "cover-2.jpg");
    Refusal.clear();
    Type(question, "3");
    EXPECT_EQ(question.WhyNotTaken(), "");
    EXPECT_EQ(question.Handle(kEnter),
              (ConflictAnswer{Action::Rename, "/media/usb0/Backup/cover-2.jpg3", {}, {}}));
}

TEST_F(RenameQuestion, RefusesAnEmptyName) {
    ConflictQuestion question = Ask(FileConflict());
    Type(question, "r");
    question.Handle({KeyCode::ClearLine, {}});
    EXPECT_EQ(question.Handle(kEnter), std::nullopt);
    EXPECT_EQ(question.WhyNotTaken(), "The name is empty.");
    EXPECT_TRUE(Checked.empty());
}

TEST_F(RenameQuestion, GoesBackToTheAnswersOnEscape) {
    ConflictQuestion question = Ask(FileConflict());
    Type(question, "r");
    EXPECT_EQ(question.Handle(kEscape), std::nullopt);
    EXPECT_FALSE(question.NewName().has_value());
    EXPECT_EQ(question.Handle(Letter('s')), (ConflictAnswer{Action::Skip, {}, {}, {}}));
}
