// How lists move that are longer than their room.

#include "scrolling.h"

#include <limits>

#include <gtest/gtest.h>

namespace {

constexpr int kVisible = 10;
constexpr std::size_t kCount = 100;

std::optional<std::ptrdiff_t> By(KeyCode Code) {
    return RowsDown({.Code = Code}, kVisible);
}

std::size_t FirstRowFor(std::size_t Cursor, std::size_t FirstRow) {
    return ScrolledTo(Cursor, FirstRow, kVisible, kCount);
}

} // namespace

TEST(Scrolling, KnowsTheKeysThatMove) {
    EXPECT_EQ(By(KeyCode::Up), -1);
    EXPECT_EQ(By(KeyCode::Down), 1);
    EXPECT_EQ(RowsDown({.Code = KeyCode::Control, .Text = "p"}, kVisible), -1);
    EXPECT_EQ(RowsDown({.Code = KeyCode::Control, .Text = "n"}, kVisible), 1);
    EXPECT_EQ(By(KeyCode::PageUp), -9);
    EXPECT_EQ(By(KeyCode::PageDown), 9);
    EXPECT_EQ(By(KeyCode::Left), std::nullopt);
    EXPECT_EQ(RowsDown({.Code = KeyCode::Text, .Text = "n"}, kVisible), std::nullopt);
}

TEST(Scrolling, ReachesTheEnds) {
    EXPECT_EQ(MovedRow(50, By(KeyCode::Home).value(), kCount), 0U);
    EXPECT_EQ(MovedRow(50, By(KeyCode::End).value(), kCount), 99U);
    EXPECT_EQ(MovedRow(50, 1, kCount), 51U);
    EXPECT_EQ(MovedRow(0, By(KeyCode::End).value(), 0), 0U);
}

TEST(Scrolling, FollowsTheWheelAndNoClick) {
    const auto by = [](MousePress::Button Pressed) {
        return RowsDown({.Code = KeyCode::Mouse, .Mouse = {.Pressed = Pressed}}, kVisible);
    };
    EXPECT_EQ(by(MousePress::Button::WheelUp), -3);
    EXPECT_EQ(by(MousePress::Button::WheelDown), 3);
    EXPECT_EQ(by(MousePress::Button::Left), std::nullopt);
}

TEST(Scrolling, MovesPagesByARowAtLeast) {
    EXPECT_EQ(RowsDown({.Code = KeyCode::PageDown}, 1), 1);
    EXPECT_EQ(RowsDown({.Code = KeyCode::PageUp}, 0), -1);
}

TEST(Scrolling, StandsStillAsLongAsTheCursorIsInSight) {
    EXPECT_EQ(FirstRowFor(20, 20), 20U);
    EXPECT_EQ(FirstRowFor(29, 20), 20U);
}

TEST(Scrolling, MovesNoFurtherThanTheCursor) {
    EXPECT_EQ(FirstRowFor(30, 20), 21U);
    EXPECT_EQ(FirstRowFor(19, 20), 19U);
}

TEST(Scrolling, WastesNoRoomBelowTheLastRow) {
    EXPECT_EQ(FirstRowFor(99, 95), 90U);
    EXPECT_EQ(ScrolledTo(2, 2, kVisible, 5), 0U);
    EXPECT_EQ(ScrolledTo(0, 7, kVisible, 0), 0U);
}
