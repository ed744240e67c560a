// The two panes, and the keys that stay within them.

#include "file_panes.h"

#include "fake_drive.h"
#include "panes_fixture.h"

#include <optional>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;

class FilePanesTest : public PanesFixture {
protected:
    fs::path ActivePlace() { return Panes.Active().List().Place(); }
    fs::path OtherPlace() { return Panes.Other().List().Place(); }

    // The rows of a window.
    Strings Drawn() {
        MemoryScreen screen({static_cast<int>(2 * kHalf), kRows}, kAscii);
        Panes.Draw(screen, *LayOutPanes(screen.Size()), Now);
        Strings rows;
        for (int row = 0; row < kRows; ++row) {
            rows.push_back(screen.Row(row));
        }
        return rows;
    }
    // Where the name begins in the list of the left half or of the right one.
    MousePress Place(const std::string& Name, bool bRight) {
        const Strings rows = Drawn();
        for (std::size_t row = 1; row < rows.size(); ++row) {
            const std::size_t at = rows[row].find(Name, bRight ? kHalf : 0);
            if (at != std::string::npos && (bRight || at < kHalf)) {
                return {MousePress::Button::Left, static_cast<int>(at), static_cast<int>(row)};
            }
        }
        ADD_FAILURE() << Name << " is not there: " << testing::PrintToString(rows);
        return {};
    }
    // Whether it stands somewhere.
    bool Draws(const std::string& Text) {
        return testing::PrintToString(Drawn()).find(Text) != std::string::npos;
    }
    bool Click(const MousePress& Mouse, milliseconds Later = milliseconds(1000)) {
        Now += Later;
        return Panes.TakeKey({.Code = KeyCode::Mouse, .Mouse = Mouse}, Now);
    }

    static constexpr std::size_t kHalf = 60;
    static constexpr int kRows = 30;
    static constexpr bool kLeft = false;
    static constexpr bool kRight = true;
};

TEST_F(FilePanesTest, BeginsToTheLeftAndShowsWhatIsThere) {
    EXPECT_EQ(ActivePlace(), Root / "from");
    EXPECT_EQ(OtherPlace(), Root / "to");
    EXPECT_EQ(RowsOf(Panes.Active()), (Rows{"/..", "a<", "b"}));
    EXPECT_EQ(RowsOf(Panes.Other()), (Rows{"/..<"}));
}

TEST_F(FilePanesTest, MakesItsPlacesAbsoluteAndLeavesDiscsAlone) {
    const fs::path before = fs::current_path();
    fs::current_path(Root.Path());
    FilePanes panes({.Left = "from/.", .Right = "cdda:/dev/null"});
    fs::current_path(before);
    EXPECT_EQ(panes.Active().List().Place(), Root / "from");
    EXPECT_EQ(panes.Other().List().Place(), "cdda:/dev/null");
}

TEST_F(FilePanesTest, GivesTheKeysToTheOtherPane) {
    EXPECT_TRUE(Press(KeyCode::Tab));
    EXPECT_EQ(ActivePlace(), Root / "to");
    EXPECT_EQ(OtherPlace(), Root / "from");
    Press(KeyCode::Up);
    EXPECT_EQ(RowsOf(Panes.Other()), (Rows{"/..", "a<", "b"}));
    EXPECT_TRUE(Press(KeyCode::BackTab));
    EXPECT_EQ(ActivePlace(), Root / "from");
    Press(KeyCode::Down);
    EXPECT_EQ(RowsOf(Panes.Active()), (Rows{"/..", "a", "b<"}));
}

TEST_F(FilePanesTest, GoesUpAndDown) {
    EXPECT_TRUE(Press(KeyCode::Backspace));
    EXPECT_TRUE(Panes.IsReading());
    ASSERT_TRUE(Shows(Panes.Active(), {"/..", "from<", "to"}));
    Press(KeyCode::Down);
    EXPECT_TRUE(Press(KeyCode::Enter));
    ASSERT_TRUE(Shows(Panes.Active(), {"/..<"}));
    EXPECT_EQ(ActivePlace(), Root / "to");
    Press(KeyCode::Enter);
    EXPECT_TRUE(Shows(Panes.Active(), {"/..", "from", "to<"}));
}

TEST_F(FilePanesTest, LetsTheOtherPaneFollow) {
    EXPECT_TRUE(Press('='));
    ASSERT_TRUE(Shows(Panes.Other(), {"/..<", "a", "b"}));
    EXPECT_EQ(OtherPlace(), Root / "from");
    EXPECT_EQ(ActivePlace(), Root / "from");
}

TEST_F(FilePanesTest, ReadsAgainWhenAsked) {
    EXPECT_TRUE(Press({.Code = KeyCode::Control, .Text = "r"}));
    EXPECT_EQ(Panes.Active().Reading(), Root / "from");
    EXPECT_EQ(Panes.Other().Reading(), std::nullopt);
    ASSERT_TRUE(BothAreRead());
    Panes.ReadAgain();
    EXPECT_EQ(Panes.Active().Reading(), Root / "from");
    EXPECT_EQ(Panes.Other().Reading(), Root / "to");
}

TEST_F(FilePanesTest, ChangesSidesAndKeepsTheKeysWhereTheyAre) {
    const std::string before = Drawn()[0];
    EXPECT_LT(before.find("/from"), before.find("/to "));
    EXPECT_TRUE(Press(KeyCode::ClearLine));
    const std::string after = Drawn()[0];
    EXPECT_GT(after.find("/from"), after.find("/to "));
    EXPECT_EQ(ActivePlace(), Root / "from");
    EXPECT_TRUE(Click(Place("b", kRight)));
    EXPECT_EQ(RowsOf(Panes.Active()), (Rows{"/..", "a", "b<"}));
    Press(KeyCode::ClearLine);
    EXPECT_EQ(Drawn()[0], before);
}

TEST_F(FilePanesTest, TakesAClickForTheCursorAndASecondOneForEnter) {
    fs::create_directory(Root / "to/sub");
    WriteFile(Root / "to/sub/inside", "");
    ASSERT_TRUE(Shows(Panes.Other(), {"/..<", "sub"}));
    const MousePress sub = Place("sub", kRight);
    EXPECT_TRUE(Click(sub));
    EXPECT_EQ(ActivePlace(), Root / "to");
    EXPECT_EQ(RowsOf(Panes.Active()), (Rows{"/..", "sub<"}));
    EXPECT_TRUE(Click(sub, milliseconds(400)));
    EXPECT_FALSE(Panes.IsReading());
    EXPECT_TRUE(Click(sub, milliseconds(399)));
    EXPECT_TRUE(Shows(Panes.Active(), {"/..<", "inside"}));
}

TEST_F(FilePanesTest, TakesClicksOnTwoRowsForTwo) {
    const MousePress up = Place("..", kLeft);
    EXPECT_TRUE(Click(Place("b", kLeft)));
    EXPECT_TRUE(Click(up, milliseconds(10)));
    EXPECT_FALSE(Panes.IsReading());
    EXPECT_EQ(RowsOf(Panes.Active()), (Rows{"/..<", "a", "b"}));
    EXPECT_TRUE(Click(up, milliseconds(10)));
    ASSERT_TRUE(Shows(Panes.Active(), {"/..", "from<", "to"}));
    // A third one begins anew.
    EXPECT_TRUE(Click(up, milliseconds(10)));
    EXPECT_FALSE(Panes.IsReading());
}

TEST_F(FilePanesTest, LeavesOtherMouseKeysAlone) {
    const MousePress b = Place("b", kLeft);
    EXPECT_FALSE(Click({MousePress::Button::Right, b.Column, b.Row}));
    EXPECT_FALSE(Click({MousePress::Button::Left, 0, kRows - 1}));
    EXPECT_EQ(RowsOf(Panes.Active()), (Rows{"/..", "a<", "b"}));
    EXPECT_TRUE(Click({MousePress::Button::WheelDown, b.Column, b.Row}));
    EXPECT_EQ(RowsOf(Panes.Active()), (Rows{"/..", "a", "b<"}));
}

TEST_F(FilePanesTest, SearchesBeforeAllOtherKeys) {
    EXPECT_TRUE(Press('/'));
    EXPECT_TRUE(Press('b'));
    EXPECT_EQ(RowsOf(Panes.Active()), (Rows{"/..", "a", "b<"}));
    EXPECT_TRUE(Press(KeyCode::Backspace));
    EXPECT_EQ(ActivePlace(), Root / "from");
    EXPECT_FALSE(Panes.IsReading());
    EXPECT_TRUE(Press(KeyCode::Escape));
    EXPECT_TRUE(Press(KeyCode::Backspace));
    EXPECT_TRUE(Panes.IsReading());
}

TEST_F(FilePanesTest, DoesNotKnowAllKeys) {
    for (const KeyPress& key : {Letter('c'), FunctionKey(5), Key(KeyCode::Delete), Letter('x')}) {
        EXPECT_FALSE(Panes.TakeKey(key, Now)) << key.Text;
    }
}

TEST_F(FilePanesTest, SaysWhatIsReadWhenThatTakesMoreThanAMoment) {
    ScopedDrive drive(AudioDisc({150}, 40500));
    drive.Before = [](const std::string&) {
        while (true) {
            pause();
        }
    };
    const std::string disc = std::string("cdda:") + kFakeDevice;
    Panes.Active().GoTo(disc);
    Panes.Attend(Now);
    EXPECT_TRUE(Panes.IsReading());
    Now += milliseconds(300);
    Panes.Attend(Now);
    EXPECT_FALSE(Draws(kFakeDevice));
    Now += milliseconds(1);
    EXPECT_TRUE(Draws(kFakeDevice));
    EXPECT_TRUE(Press(KeyCode::Escape));
    EXPECT_FALSE(Panes.IsReading());
    Panes.Attend(Now);
    EXPECT_FALSE(Draws(kFakeDevice));
    EXPECT_EQ(ActivePlace(), Root / "from");
}

} // namespace
