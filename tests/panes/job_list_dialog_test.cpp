#include "job_list_dialog.h"

#include "dialog_place.h"
#include "memory_screen.h"
#include "screen_text.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Wish = JobListDialog::Wish;
using WishForJob = JobListDialog::WishForJob;

constexpr TerminalSize kUsualSize{80, 24};
constexpr TerminalSize kSmallSize{61, 16};
constexpr TerminalSize kLargeSize{200, 60};

JobListRow CopyingRow() {
    return {.Id = 1,
            .Texts = {"/home/u/Music", "Copy", "Copying", "13%",
                      "/home/u/Music/Live/2024-02-11 Stadthalle (.../07 - Encore with the whole "
                      "orchestra.flac | Rate 6.0 MB/s | Spent 04:16 | Remaining 29:52"}};
}

JobListRow WaitingRow() {
    return {.Id = 2,
            .Texts = {"Tarvane", "Move", "Waiting for conflict choice", "40%",
                      "/srv/pub/a.iso | Rate -- | Spent 00:12 | Remaining --"},
            .bWaitsForAnswer = true};
}

JobListRow FailedRow() {
    return {.Id = 3,
            .Texts = {"/home/u/Books", "Copy", "Failed", "62%", "No space left on device"},
            .bFinished = true,
            .bCanRunAgain = true,
            .EndLines = {"Copied 3 entries, 1.5 GB, in 04:16 (6.0 MB/s).",
                         "Failed while writing destination file: No space left on device "
                         "('/media/usb0/Books/atlas.pdf')."},
            .Answers = {"File exists: '/media/usb0/Books/a.pdf': skip"}};
}

JobListRow DoneRow() {
    return {.Id = 4,
            .Texts = {"Audio CD", "Copy", "Completed", "100%", "Copied 2 item(s)."},
            .bFinished = true,
            .EndLines = {"Copied 2 entries, 84.0 MB, in 01:12 (1.2 MB/s)."}};
}

// Many that go on, with ids from 1.
std::vector<JobListRow> ManyRows(std::uint64_t Count) {
    std::vector<JobListRow> rows;
    for (std::uint64_t id = 1; id <= Count; ++id) {
        rows.push_back(
            {.Id = id, .Texts = {"Source " + std::to_string(id), "Copy", "Copying", "1%", ""}});
    }
    return rows;
}

class JobListOnScreen : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(EnsureUtf8Locale()); }

    std::string Drawn(JobListDialog& Dialog, TerminalSize Size = kUsualSize) {
        Screen.Resize(Size);
        Screen.Erase();
        Dialog.Draw(Screen, {});
        return BoxOn(Screen);
    }
    std::string Selected(JobListDialog& Dialog, TerminalSize Size = kUsualSize) {
        Drawn(Dialog, Size);
        const std::string row = Screen.TextWithRole(CellRole::Cursor);
        return row.substr(0, row.find("  "));
    }
    static WishForJob WishAfter(JobListDialog& Dialog, const KeyPress& Key) {
        Dialog.TakeKey(Key, {});
        return Dialog.TakeWish();
    }

    MemoryScreen Screen;
};

} // namespace

TEST_F(JobListOnScreen, ShowsWhatGoesOnFirst) {
    JobListDialog dialog({FailedRow(), CopyingRow(), DoneRow(), WaitingRow()});
    EXPECT_EQ(Drawn(dialog), R"(
┌──────────────────────────────────── Jobs ────────────────────────────────────┐
│ Source          Job  State                       Done Detail                 │
│ /home/u/Music   Copy Copying                      13% /home/u/Music/Live/20~ │
│ Tarvane         Move Waiting for conflict choice  40% /srv/pub/a.iso | Rate~ │
│ /home/u/Books   Copy Failed                       62% No space left on devi~ │
│ Audio CD        Copy Completed                   100% Copied 2 item(s).      │
├──────────────────────────────────────────────────────────────────────────────┤
│ /home/u/Music/Live/2024-02-11 Stadthalle (.../07 - Encore with the whole     │
│ orchestra.flac | Rate 6.0 MB/s | Spent 04:16 | Remaining 29:52               │
│                                                                              │
│                                                                              │
│                                                                              │
│                                                                              │
│                                                                              │
│ [ Show ] [ Cancel transfer ] [ Close ]                                       │
└──────────────────────────────────────────────────────────────────────────────┘
)");
    EXPECT_EQ(RowsAbove(Screen), 3);
    EXPECT_EQ(Drawn(dialog, kSmallSize), R"(
┌────────────────────────── Jobs ───────────────────────────┐
│ Source              Job  State                       Done │
│ /home/u/Music       Copy Copying                      13% │
│ Tarvane             Move Waiting for conflict choice  40% │
│ /home/u/Books       Copy Failed                       62% │
│ Audio CD            Copy Completed                   100% │
├───────────────────────────────────────────────────────────┤
│ /home/u/Music/Live/2024-02-11 Stadthalle (.../07 - Encore │
│ with the whole orchestra.flac | Rate 6.0 MB/s | Spent     │
│ 04:16 | Remaining 29:52                                   │
│                                                           │
│                                                           │
│                                                           │
│                                                           │
│ [ Show ] [ Cancel transfer ] [ Close ]                    │
└───────────────────────────────────────────────────────────┘
)");
}

TEST_F(JobListOnScreen, HasRoomForWholeDetailsInALargeWindow) {
    JobListDialog dialog({FailedRow(), CopyingRow(), DoneRow(), WaitingRow()});
    EXPECT_EQ(Drawn(dialog, kLargeSize), R"(
┌────────────────────────────────────────────────────────────────── Jobs ──────────────────────────────────────────────────────────────────┐
│ Source                      Job  State                       Done Detail                                                                 │
│ /home/u/Music               Copy Copying                      13% /home/u/Music/Live/2024-02-11 Stadthalle (.../07 - Encore with the wh~ │
│ Tarvane                     Move Waiting for conflict choice  40% /srv/pub/a.iso | Rate -- | Spent 00:12 | Remaining --                  │
│ /home/u/Books               Copy Failed                       62% No space left on device                                                │
│ Audio CD                    Copy Completed                   100% Copied 2 item(s).                                                      │
├──────────────────────────────────────────────────────────────────────────────────────────────────────────────────────────────────────────┤
│ /home/u/Music/Live/2024-02-11 Stadthalle (.../07 - Encore with the whole orchestra.flac | Rate 6.0 MB/s | Spent 04:16 | Remaining 29:52  │
│                                                                                                                                          │
│                                                                                                                                          │
│                                                                                                                                          │
│                                                                                                                                          │
│                                                                                                                                          │
│                                                                                                                                          │
│                                                                                                                                          │
│                                                                                                                                          │
│                                                                                                                                          │
│                                                                                                                                          │
│                                                                                                                                          │
│                                                                                                                                          │
│                                                                                                                                          │
│                                                                                                                                          │
│ [ Show ] [ Cancel transfer ] [ Close ]                                                                                                   │
└──────────────────────────────────────────────────────────────────────────────────────────────────────────────────────────────────────────┘
)");
    EXPECT_EQ(ColumnsBefore(Screen), 30);
}

TEST_F(JobListOnScreen, ShowsTheDetailOfWhatIsSelected) {
    JobListDialog dialog({CopyingRow(), WaitingRow()});
    EXPECT_EQ(Drawn(dialog), R"(
┌──────────────────────────────────── Jobs ────────────────────────────────────┐
│ Source          Job  State                       Done Detail                 │
│ /home/u/Music   Copy Copying                      13% /home/u/Music/Live/20~ │
│ Tarvane         Move Waiting for conflict choice  40% /srv/pub/a.iso | Rate~ │
│                                                                              │
├──────────────────────────────────────────────────────────────────────────────┤
│ /home/u/Music/Live/2024-02-11 Stadthalle (.../07 - Encore with the whole     │
│ orchestra.flac | Rate 6.0 MB/s | Spent 04:16 | Remaining 29:52               │
│                                                                              │
│                                                                              │
│                                                                              │
│                                                                              │
│                                                                              │
│                                                                              │
│ [ Show ] [ Cancel transfer ] [ Close ]                                       │
└──────────────────────────────────────────────────────────────────────────────┘
)");
    dialog.TakeKey(Key(KeyCode::Down), {});
    EXPECT_EQ(Drawn(dialog), R"(
┌──────────────────────────────────── Jobs ────────────────────────────────────┐
│ Source          Job  State                       Done Detail                 │
│ /home/u/Music   Copy Copying                      13% /home/u/Music/Live/20~ │
│ Tarvane         Move Waiting for conflict choice  40% /srv/pub/a.iso | Rate~ │
│                                                                              │
├──────────────────────────────────────────────────────────────────────────────┤
│ It waits for an answer: press a.                                             │
│ /srv/pub/a.iso | Rate -- | Spent 00:12 | Remaining --                        │
│                                                                              │
│                                                                              │
│                                                                              │
│                                                                              │
│                                                                              │
│                                                                              │
│ [ Show ] [ Answer ] [ Cancel transfer ] [ Close ]                            │
└──────────────────────────────────────────────────────────────────────────────┘
)");
    EXPECT_EQ(Screen.TextWithRole(CellRole::Warning), "It waits for an answer: press a.");
}

TEST_F(JobListOnScreen, WarnsOfARowThatWaits) {
    JobListDialog dialog({CopyingRow(), WaitingRow()});
    Drawn(dialog, kSmallSize);
    EXPECT_EQ(Screen.TextWithRole(CellRole::Warning),
              "Tarvane             Move Waiting for conflict choice  40%");
}

TEST_F(JobListOnScreen, SaysThatThereIsMoreThanFits) {
    JobListRow row = FailedRow();
    row.Answers.assign(30, "File exists: '/media/usb0/Books/a.pdf': skip");
    JobListDialog dialog({row});
    EXPECT_EQ(Drawn(dialog, kSmallSize), R"(
┌────────────────────────── Jobs ───────────────────────────┐
│ Source              Job  State                       Done │
│ /home/u/Books       Copy Failed                       62% │
│                                                           │
│                                                           │
├───────────────────────────────────────────────────────────┤
│ Copied 3 entries, 1.5 GB, in 04:16 (6.0 MB/s).            │
│ Failed while writing destination file: No space left on   │
│ device ('/media/usb0/Books/atlas.pdf').                   │
│ Asked:                                                    │
│ File exists: '/media/usb0/Books/a.pdf': skip              │
│ File exists: '/media/usb0/Books/a.pdf': skip              │
│ File exists: '/media/usb0/Books/a.pdf': skip              │
│ 27 more lines: Show                                       │
│ [ Show ] [ Run again ] [ Close ]                          │
└───────────────────────────────────────────────────────────┘
)");
}

TEST_F(JobListOnScreen, SaysThatThereIsNothing) {
    JobListDialog dialog({});
    EXPECT_EQ(Drawn(dialog), R"(
┌──────────────────────────────────── Jobs ────────────────────────────────────┐
│ Source          Job  State                       Done Detail                 │
│ Nothing has been copied or moved yet.                                        │
│                                                                              │
│                                                                              │
├──────────────────────────────────────────────────────────────────────────────┤
│                                                                              │
│                                                                              │
│                                                                              │
│                                                                              │
│                                                                              │
│                                                                              │
│                                                                              │
│                                                                              │
│ [ Close ]                                                                    │
└──────────────────────────────────────────────────────────────────────────────┘
)");
    dialog.TakeKey(Key(KeyCode::Down), {});
    EXPECT_EQ(WishAfter(dialog, Key(KeyCode::Enter)), (WishForJob{Wish::Close}));
    EXPECT_TRUE(dialog.IsClosed());
}

TEST_F(JobListOnScreen, CleansTextsForTheScreen) {
    JobListRow row = CopyingRow();
    row.Texts.Source = "new\nline";
    row.Texts.Detail = "bad\xFF name";
    JobListDialog dialog({row});
    Drawn(dialog);
    EXPECT_EQ(Screen.TextWithRole(CellRole::Cursor).substr(0, 8), "new?line");
}

TEST_F(JobListOnScreen, MovesThroughTheList) {
    JobListDialog dialog(ManyRows(20));
    EXPECT_EQ(Selected(dialog), "Source 1");
    dialog.TakeKey(Key(KeyCode::Down), {});
    EXPECT_EQ(Selected(dialog), "Source 2");
    dialog.TakeKey(Key(KeyCode::End), {});
    EXPECT_EQ(Selected(dialog), "Source 20");
    dialog.TakeKey(Key(KeyCode::Up), {});
    EXPECT_EQ(Selected(dialog), "Source 19");
    dialog.TakeKey(Key(KeyCode::PageUp), {});
    EXPECT_EQ(Selected(dialog), "Source 15");
    dialog.TakeKey(Key(KeyCode::PageDown), {});
    EXPECT_EQ(Selected(dialog), "Source 19");
    dialog.TakeKey(Key(KeyCode::Home), {});
    EXPECT_EQ(Selected(dialog), "Source 1");
}

TEST_F(JobListOnScreen, StaysOnTheSameTransferWhenRowsChange) {
    JobListDialog dialog({CopyingRow(), WaitingRow(), DoneRow()});
    JobListRow ended = CopyingRow();
    ended.bFinished = true;
    dialog.SetRows({WaitingRow(), DoneRow(), ended});
    EXPECT_EQ(Selected(dialog), "/home/u/Music");
    EXPECT_EQ(WishAfter(dialog, Letter("c")), WishForJob());
    EXPECT_EQ(WishAfter(dialog, Key(KeyCode::Enter)), (WishForJob{Wish::Show, 1}));
}

TEST_F(JobListOnScreen, StaysNearbyWhenATransferHasGone) {
    JobListDialog dialog(ManyRows(3));
    dialog.TakeKey(Key(KeyCode::End), {});
    dialog.SetRows(ManyRows(2));
    EXPECT_EQ(Selected(dialog), "Source 2");
    dialog.SetRows({});
    EXPECT_EQ(Selected(dialog), "");
    dialog.SetRows(ManyRows(2));
    EXPECT_EQ(Selected(dialog), "Source 1");
}

TEST_F(JobListOnScreen, TakesOnlyTheKeysThatHaveAMeaning) {
    JobListDialog copying({CopyingRow()});
    EXPECT_EQ(WishAfter(copying, Letter("c")), (WishForJob{Wish::Cancel, 1}));
    EXPECT_EQ(WishAfter(copying, Letter("a")), WishForJob());
    EXPECT_EQ(WishAfter(copying, Letter("r")), WishForJob());
    JobListDialog waiting({WaitingRow()});
    EXPECT_EQ(WishAfter(waiting, Letter("a")), (WishForJob{Wish::Answer, 2}));
    JobListDialog failed({FailedRow()});
    EXPECT_EQ(WishAfter(failed, Letter("r")), (WishForJob{Wish::RunAgain, 3}));
    EXPECT_EQ(WishAfter(failed, Letter("c")), WishForJob());
    JobListDialog done({DoneRow()});
    EXPECT_EQ(WishAfter(done, Letter("r")), WishForJob());
    EXPECT_EQ(WishAfter(done, Key(KeyCode::Enter)), (WishForJob{Wish::Show, 4}));
    EXPECT_FALSE(done.IsClosed());
    EXPECT_EQ(WishAfter(done, Key(KeyCode::Escape)), (WishForJob{Wish::Close}));
    EXPECT_TRUE(done.IsClosed());
}

TEST_F(JobListOnScreen, OffersNoSecondCancel) {
    JobListRow row = CopyingRow();
    row.bCancelRequested = true;
    JobListDialog dialog({row});
    EXPECT_EQ(WishAfter(dialog, Letter("c")), WishForJob());
}

TEST_F(JobListOnScreen, ForgetsTheButtonOnTheNextRow) {
    JobListDialog dialog(ManyRows(2));
    dialog.TakeKey(Key(KeyCode::Tab), {});
    dialog.TakeKey(Key(KeyCode::Down), {});
    EXPECT_EQ(WishAfter(dialog, Key(KeyCode::Enter)), (WishForJob{Wish::Show, 2}));
}

TEST_F(JobListOnScreen, KeepsTheButtonWhenRowsChange) {
    JobListDialog dialog(ManyRows(2));
    dialog.TakeKey(Key(KeyCode::Tab), {});
    dialog.SetRows(ManyRows(3));
    EXPECT_EQ(WishAfter(dialog, Key(KeyCode::Enter)), (WishForJob{Wish::Cancel, 1}));
}

TEST_F(JobListOnScreen, TakesTheMouse) {
    JobListDialog dialog(ManyRows(20));
    dialog.TakeKey(Key(KeyCode::End), {});
    Drawn(dialog);
    EXPECT_EQ(WishAfter(dialog, ClickOn(Screen, "Source 18")), WishForJob());
    EXPECT_EQ(Selected(dialog), "Source 18");
    EXPECT_EQ(WishAfter(dialog, ClickOn(Screen, "Source 18")), (WishForJob{Wish::Show, 18}));
    EXPECT_EQ(WishAfter(dialog, ClickOn(Screen, "Cancel transfer")),
              (WishForJob{Wish::Cancel, 18}));
    dialog.TakeKey(WheelUp(), {});
    EXPECT_EQ(Selected(dialog), "Source 15");
}

TEST_F(JobListOnScreen, TakesTheMouseWhenRowsHaveComeSinceTheFrame) {
    JobListDialog dialog(ManyRows(1));
    Drawn(dialog);
    dialog.SetRows(ManyRows(2));
    EXPECT_EQ(WishAfter(dialog, ClickOn(Screen, "Cancel transfer")), (WishForJob{Wish::Cancel, 1}));
}

TEST_F(JobListOnScreen, LeavesAloneWhereNothingIsClicked) {
    JobListDialog empty({});
    Drawn(empty);
    EXPECT_EQ(WishAfter(empty, ClickOn(Screen, "Nothing has")), WishForJob());
    JobListDialog dialog(ManyRows(20));
    Drawn(dialog);
    const int detailRow = Screen.Size().Rows / 2 + 1;
    EXPECT_EQ(WishAfter(dialog, Click(5, detailRow)), WishForJob());
    EXPECT_EQ(Selected(dialog), "Source 1");
}
