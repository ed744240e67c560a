// Panes as they come out on screens of several sizes.

#include "pane_view.h"

#include <gtest/gtest.h>

#include "key_bar.h"
#include "link_names.h"
#include "panes_layout.h"
#include "sample_places.h"

namespace {

int gEntriesLookedAt = 0;

} // namespace

const ListedEntry* RealEntryAt(const BrowseList&, std::size_t) REAL(EntryAt);
const ListedEntry* WrappedEntryAt(const BrowseList&, std::size_t) WRAPPED(EntryAt);

const ListedEntry* WrappedEntryAt(const BrowseList& List, std::size_t Row) {
    ++gEntriesLookedAt;
    return RealEntryAt(List, Row);
}

namespace {

class PaneViews : public PaneTest {
protected:
    PaneViews() {
        Left.MoveCursorTo("Live");
        Left.ToggleMark(Left.Cursor());
        Left.MoveCursorTo("cover.jpg");
        Left.ToggleMark(Left.Cursor());
    }

    void Draw(TerminalSize Window, const PaneState& LeftState = {.bActive = true}) {
        Screen = std::make_unique<MemoryScreen>(Window);
        DrawAgain(LeftState);
    }
    void DrawAgain(const PaneState& LeftState = {.bActive = true}) {
        const PanesLayout layout = LayOutPanes(Screen->Size()).value();
        Screen->Erase();
        LeftView.Draw(*Screen, layout.Left, Left, LeftState);
        RightView.Draw(*Screen, layout.Right, Right, {});
        DrawKeyBar(*Screen, layout.KeyRow);
    }
    // The part of a row that the left pane takes at 80x24.
    std::string LeftRow(int Row) const { return WrapAtColumns(Screen->Row(Row), 40).front(); }

    BrowseList Left = Music();
    BrowseList Right = Disc();
    PaneView LeftView;
    PaneView RightView;
    std::unique_ptr<MemoryScreen> Screen;
};

} // namespace

TEST_F(PaneViews, FillAUsualWindow) {
    Draw({80, 24});
    EXPECT_EQ(Screen->Text(),
              R"(┌─────────── /home/u/Music ────────────┐┌──────── Audio CD in /dev/sr0 ────────┐
│  Name ↑                    │     Size││  Name ↑                    │     Size│
│ /..                        │   UP-DIR││ /..                        │   UP-DIR│
│ ~Elsewhere                 │      DIR││  Track 01.wav              │  38.1 MB│
│*/Live                      │      DIR││  Track 02.wav              │  45.9 MB│
│ /日本の音楽                │      DIR││                            │         │
│  bad��name.bin             │  15.3 KB││                            │         │
│* cover.jpg                 │  47.1 KB││                            │         │
│ @link                      │     12 B││                            │         │
│  long name that does not f~│  41.0 MB││                            │         │
│ !lost link                 │         ││                            │         │
│  new?line.txt              │      0 B││                            │         │
│ =pipe                      │         ││                            │         │
│  play                      │    812 B││                            │         │
│  étude no 3.flac           │  38.4 MB││                            │         │
│                            │         ││                            │         │
│                            │         ││                            │         │
│                            │         ││                            │         │
│                            │         ││                            │         │
├─ Marked 2: 47.1 KB and 1 directory ──┤├──────────────────────────────────────┤
│ cover.jpg  47.1 KB  2024-03-07 14:05 ││ /..                                  │
└──────────── 12.0 GB free ────────────┘└──────────────────────────────────────┘

1Help   2Rename 3View   4Edit   5Copy   6Move   7Mkdir  8Delete 9Jobs   10Quit
)");
}

TEST_F(PaneViews, FillASmallWindow) {
    Draw({61, 16});
    EXPECT_EQ(Screen->Text(), R"(┌────── /home/u/Music ───────┐┌─── Audio CD in /dev/sr0 ────┐
│  Name ↑          │     Size││  Name ↑           │     Size│
│ /..              │   UP-DIR││ /..               │   UP-DIR│
│ ~Elsewhere       │      DIR││  Track 01.wav     │  38.1 MB│
│*/Live            │      DIR││  Track 02.wav     │  45.9 MB│
│ /日本の音楽      │      DIR││                   │         │
│  bad��name.bin   │  15.3 KB││                   │         │
│* cover.jpg       │  47.1 KB││                   │         │
│ @link            │     12 B││                   │         │
│  long name that ~│  41.0 MB││                   │         │
│ !lost link       │         ││                   │         │
├──── Marked 2: 47.1 KB ─────┤├─────────────────────────────┤
│ cover.jpg                  ││ /..                         │
└─────── 12.0 GB free ───────┘└─────────────────────────────┘

1Help 2Ren  3View 4Edit 5Copy 6Move 7Dir  8Del  9Jobs 10Quit
)");
}

TEST_F(PaneViews, ShowDatesWhereThereIsRoom) {
    Draw({200, 60});
    const std::string blank44(44, ' ');
    const auto expectRow = [this](int Row, const std::string& Wanted) {
        EXPECT_EQ(WrapAtColumns(Screen->Row(Row), 100).front(), Wanted);
    };
    expectRow(1, "│  Name ↑" + blank44 + std::string(19, ' ') + "│     Size│Date            │");
    expectRow(2, "│ /..    " + blank44 + std::string(19, ' ') + "│   UP-DIR│                │");
    expectRow(4, "│*/Live  " + blank44 + std::string(19, ' ') + "│      DIR│2024-03-07 14:05│");
    expectRow(9, "│  long name that does not fit into any column.flac" + std::string(21, ' ') +
                     "│  41.0 MB│2024-03-07 14:05│");
    expectRow(56, "│ cover.jpg " + blank44 + "47.1 KB (48230 bytes)  2024-03-07 14:05:09 │");
}

TEST_F(PaneViews, ShowDatesFrom55ColumnsOn) {
    Draw({109, 24});
    EXPECT_EQ(Screen->Row(1), "│  Name ↑                                  │     Size│"
                              "│  Name ↑                  │     Size│Date            │");
}

TEST_F(PaneViews, ShowWhatIsWhatByTheirRoles) {
    Draw({80, 24});
    EXPECT_EQ(Screen->TextWithRole(CellRole::Link).substr(0, 11), " ~Elsewhere");
    EXPECT_EQ(Screen->RoleAt(2, 5), CellRole::Directory);
    EXPECT_EQ(Screen->RoleAt(2, 6), CellRole::Plain);
    EXPECT_EQ(Screen->RoleAt(2, 10), CellRole::Special);
    EXPECT_EQ(Screen->RoleAt(2, 12), CellRole::Special);
    EXPECT_EQ(Screen->RoleAt(2, 13), CellRole::Executable);
    EXPECT_EQ(Screen->RoleAt(38, 13), CellRole::Executable);
    EXPECT_EQ(Screen->RoleAt(29, 13), CellRole::Frame);
}

TEST_F(PaneViews, LetMarksAndTheCursorStandOut) {
    Draw({80, 24});
    EXPECT_EQ(Screen->TextWithRole(CellRole::MarkedCursor),
              "* cover.jpg                 │  47.1 KB");
    EXPECT_EQ(Screen->RoleAt(1, 4), CellRole::Marked);
    EXPECT_EQ(Screen->TextWithRole(CellRole::QuietCursor),
              " /..                        │   UP-DIR");
    Left.MoveCursorTo("play");
    DrawAgain();
    EXPECT_EQ(Screen->TextWithRole(CellRole::Cursor), "  play                      │    812 B");
    EXPECT_EQ(Screen->TextWithRole(CellRole::MarkedCursor), "");
}

TEST_F(PaneViews, ShowWhichOneHasTheKeys) {
    Draw({80, 24});
    EXPECT_EQ(Screen->RoleAt(15, 0), CellRole::Title);
    EXPECT_EQ(Screen->RoleAt(55, 0), CellRole::Frame);
    DrawAgain({});
    EXPECT_EQ(Screen->RoleAt(15, 0), CellRole::Frame);
    EXPECT_EQ(Screen->TextWithRole(CellRole::MarkedCursor), "");
}

TEST_F(PaneViews, SayHowTheyAreSorted) {
    const auto titlesFor = [this](EntryOrder Order) {
        Left.SetOrder(Order);
        Draw({110, 24});
        return WrapAtColumns(Screen->Row(1), 55).front();
    };
    EXPECT_EQ(titlesFor({.Key = OrderKey::Name, .bReversed = true}),
              "│  Name ↓                  │     Size│Date            │");
    EXPECT_EQ(titlesFor({.Key = OrderKey::Extension}),
              "│  Extension ↑             │     Size│Date            │");
    EXPECT_EQ(titlesFor({.Key = OrderKey::Size}),
              "│  Name                    │   Size ↓│Date            │");
    EXPECT_EQ(titlesFor({.Key = OrderKey::Date, .bReversed = true}),
              "│  Name                    │     Size│Date ↑          │");
}

TEST_F(PaneViews, ShowDaysForSizesWhereTheyAreSortedByDate) {
    Left.SetOrder({.Key = OrderKey::Date});
    Draw({80, 24});
    EXPECT_EQ(LeftRow(1), "│  Name                     │Date ↓    │");
    EXPECT_EQ(LeftRow(4), "│*/Live                     │2024-03-07│");
    EXPECT_EQ(LeftRow(6), "│  play                     │2024-03-08│");
}

TEST_F(PaneViews, NeedNothingBeyondAscii) {
    MemoryScreen screen({40, 10}, false);
    Right.SetOrder({.Key = OrderKey::Size});
    RightView.Draw(screen, {0, 0, 40, 10}, Right, {.bActive = true});
    EXPECT_EQ(screen.Text(), R"(+-------- Audio CD in /dev/sr0 --------+
|  Name                      |   Size v|
| /..                        |   UP-DIR|
|  Track 01.wav              |  38.1 MB|
|  Track 02.wav              |  45.9 MB|
|                            |         |
|                            |         |
+--------------------------------------+
| /..                                  |
+--------------------------------------+
)");
}

TEST_F(PaneViews, ShortenAPlaceInItsMiddle) {
    BrowseList deep;
    deep.Take({.Place = "/home/u/Music/2024-02-11 Stadthalle/esc\x1b[2J/Encore"});
    Left = deep;
    Draw({80, 24});
    EXPECT_EQ(LeftRow(0), "┌─ /home/u/Music/2...e/esc?[2J/Encore ─┐");
}

TEST_F(PaneViews, MakeRoomForASentence) {
    Left.MoveCursorTo("étude no 3.flac");
    Draw({61, 16},
         {.bActive = true, .Message = "cannot read /home/u/Music/secret: Permission denied"});
    const auto row = [this](int Row) { return WrapAtColumns(Screen->Row(Row), 30).front(); };
    EXPECT_EQ(row(8), "│  étude no 3.flac │  38.4 MB│");
    EXPECT_EQ(row(9), "├──── Marked 2: 47.1 KB ─────┤");
    EXPECT_EQ(row(10), "│ Cannot read                │");
    EXPECT_EQ(row(11), "│ /home/u/Music/secret:      │");
    EXPECT_EQ(row(12), "│ Permission denied.         │");
}

TEST_F(PaneViews, ShowWhereSomebodyTypes) {
    Draw({80, 24}, {.bActive = true, .Search = "cov"});
    EXPECT_EQ(LeftRow(20), "│ Find: cov                            │");
    EXPECT_TRUE(Screen->bCursor);
    EXPECT_EQ(Screen->CursorColumn, 11);
    EXPECT_EQ(Screen->CursorRow, 20);
    DrawAgain();
    EXPECT_FALSE(Screen->bCursor);
}

TEST_F(PaneViews, KeepTheCursorInSightAndStandStillOtherwise) {
    Left = ManyFiles(100000);
    Draw({80, 24});
    EXPECT_EQ(LeftView.VisibleRows(), 17);
    Left.MoveCursorTo("a000016");
    DrawAgain();
    EXPECT_EQ(LeftRow(2).substr(0, 12), "│  a000000");
    EXPECT_EQ(LeftRow(18).substr(0, 12), "│  a000016");
    Left.MoveCursorBy(-16);
    DrawAgain();
    EXPECT_EQ(LeftRow(2).substr(0, 12), "│  a000000");
    Left.MoveCursorTo("a099999");
    DrawAgain();
    EXPECT_EQ(LeftRow(2).substr(0, 12), "│  a099983");
    EXPECT_EQ(LeftRow(18).substr(0, 12), "│  a099999");
}

TEST_F(PaneViews, LookAtNoMoreEntriesThanTheyShow) {
    Left = ManyFiles(100000);
    Left.MoveCursorTo(50000);
    Draw({80, 24});
    gEntriesLookedAt = 0;
    DrawAgain();
    EXPECT_GE(gEntriesLookedAt, 17);
    EXPECT_LE(gEntriesLookedAt, 30);
}

TEST_F(PaneViews, TellWhichRowIsWhere) {
    Left = ManyFiles(100);
    Left.MoveCursorTo(40);
    Draw({80, 24});
    EXPECT_EQ(LeftView.RowAt(1, 18), 40U);
    EXPECT_EQ(LeftView.RowAt(38, 2), 24U);
    EXPECT_EQ(LeftView.RowAt(0, 2), std::nullopt);
    EXPECT_EQ(LeftView.RowAt(1, 1), std::nullopt);
    EXPECT_EQ(LeftView.RowAt(1, 19), std::nullopt);
    EXPECT_EQ(RightView.RowAt(41, 4), 2U);
    EXPECT_EQ(RightView.RowAt(41, 5), std::nullopt);
}
