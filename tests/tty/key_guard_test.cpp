#include "key_guard.h"

#include <gtest/gtest.h>

namespace {

using std::chrono::milliseconds;

const KeyGuard::TimePoint kNow = std::chrono::steady_clock::now();
const KeyPress kLetter{KeyCode::Text, "y"};
const KeyPress kEnter{KeyCode::Enter, {}};
const KeyPress kEscape{KeyCode::Escape, {}};

} // namespace

TEST(KeyGuard, KeepsKeysDeadForAMomentAfterAQuestionHasAppeared) {
    KeyGuard guard;
    guard.QuestionAppears(kNow);
    EXPECT_FALSE(guard.LetsThrough(kLetter, kNow));
    EXPECT_TRUE(guard.LetsThrough(kEnter, kNow + milliseconds(700)));
}

TEST(KeyGuard, KeepsKeysDeadUntilAMomentAfterTheLastDeadOne) {
    KeyGuard guard;
    guard.QuestionAppears(kNow);
    EXPECT_FALSE(guard.LetsThrough(kLetter, kNow + milliseconds(699)));
    EXPECT_FALSE(guard.LetsThrough(kEnter, kNow + milliseconds(699 + 699)));
    EXPECT_TRUE(guard.LetsThrough(kLetter, kNow + milliseconds(699 + 699 + 700)));
    EXPECT_TRUE(guard.LetsThrough(kLetter, kNow + milliseconds(699 + 699 + 700)));
}

TEST(KeyGuard, IsLongForWhoeverTypedWhenNothingWasAsked) {
    KeyGuard guard;
    guard.AnswerIsGiven(kNow);
    guard.KeyIsDead(kNow + milliseconds(100));
    guard.QuestionAppears(kNow + milliseconds(200));
    EXPECT_FALSE(guard.LetsThrough(kLetter, kNow + milliseconds(799)));
    EXPECT_TRUE(guard.LetsThrough(kLetter, kNow + milliseconds(799 + 700)));
}

TEST(KeyGuard, NeverKeepsEscDead) {
    KeyGuard guard;
    guard.QuestionAppears(kNow);
    EXPECT_TRUE(guard.LetsThrough(kEscape, kNow));
}

TEST(KeyGuard, IsShortForWhoeverHasJustAnswered) {
    KeyGuard guard;
    guard.AnswerIsGiven(kNow);
    guard.QuestionAppears(kNow + milliseconds(1999));
    KeyGuard same = guard;
    EXPECT_FALSE(same.LetsThrough(kLetter, kNow + milliseconds(1999 + 199)));
    EXPECT_TRUE(guard.LetsThrough(kLetter, kNow + milliseconds(1999 + 200)));
}

TEST(KeyGuard, IsLongAgainForWhoeverMayHaveTurnedAway) {
    KeyGuard guard;
    guard.AnswerIsGiven(kNow);
    guard.QuestionAppears(kNow + milliseconds(2000));
    KeyGuard same = guard;
    EXPECT_FALSE(same.LetsThrough(kLetter, kNow + milliseconds(2000 + 699)));
    EXPECT_TRUE(guard.LetsThrough(kLetter, kNow + milliseconds(2000 + 700)));
}
