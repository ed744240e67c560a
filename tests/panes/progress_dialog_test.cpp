#include "progress_dialog.h"

#include "dialog_place.h"
#include "memory_screen.h"
#include "progress_scenes.h"
#include "screen_text.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace {

using Wish = ProgressDialog::Wish;

constexpr TerminalSize kUsualSize{80, 24};
constexpr TerminalSize kSmallSize{61, 16};
constexpr TerminalSize kLargeSize{200, 60};

class ProgressDialogOnScreen : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(EnsureUtf8Locale()); }

    void Draw(ProgressDialog& Dialog, TerminalSize Size = kUsualSize) {
        Screen.Resize(Size);
        Screen.Erase();
        Dialog.Draw(Screen, {});
    }
    std::string Drawn(ProgressDialog& Dialog, TerminalSize Size = kUsualSize) {
        Draw(Dialog, Size);
        return BoxOn(Screen);
    }
    std::string Drawn(const ProgressScene& Scene, TerminalSize Size = kUsualSize) {
        ProgressDialog dialog(Scene);
        return Drawn(dialog, Size);
    }

    Wish WishAfter(const ProgressScene& Scene, const KeyPress& Key) {
        ProgressDialog dialog(Scene);
        Draw(dialog);
        dialog.TakeKey(Key, {});
        return dialog.TakeWish();
    }

    static RateHistory RisingRates() {
        RateHistory rates;
        for (std::uint64_t second = 0; second < 20; ++second) {
            rates.Add(second * 1024 * 1024, RateHistory::TimePoint{std::chrono::seconds(second)});
        }
        return rates;
    }

    MemoryScreen Screen;
};

ProgressScene FailedScene() {
    return MusicScene(OverScene{
        .Result = RunResult::Failed,
        .Lines = {"Copied 3 entries, 1.5 GB, in 04:16 (6.0 MB/s).",
                  "Failed while writing destination file: No space left on device "
                  "('/media/usb0/Backup/Live/07 - Encore with the whole orchestra.flac')."},
        .Job = FailedMusic()});
}

ProgressScene LongEndScene(int Lines) {
    OverScene over{.Result = RunResult::Failed, .Lines = {}};
    for (int line = 1; line <= Lines; ++line) {
        over.Lines.push_back("Entry " + std::to_string(line) + " was not copied.");
    }
    return MusicScene(over);
}

} // namespace

TEST_F(ProgressDialogOnScreen, ShowsTheTextsOfTheEngineTheBarsAndTheGraph) {
    const RateHistory rates = RisingRates();
    ProgressScene scene = MusicScene(CopyingMusic());
    scene.Rates = &rates;
    EXPECT_EQ(Drawn(scene), R"(
┌──────────────────────────── Copy: /home/u/Music ─────────────────────────────┐
│ Stage: Copying | Copying items                                               │
│ Current: /home/u/Music/Live/2024-02-11 Stadthalle (.../07 - Encore with the  │
│ whole orchestra.flac                                                         │
│                                                                              │
│ Overall 1.5 GB / 12.0 GB | Items 3 / 12                                      │
│ █████████░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░  13% │
│ Current file                                                                 │
│ ████████████████████████████████████████████░░░░░░░░░░░░░░░░░░░░░░░░░░░  62% │
│ Rate 6.0 MB/s | Spent 04:16 | Remaining 29:52                                │
│                                                    ▁▂▃▄▄▅▆▇█ 18.0 MB/s       │
│                                           ▁▂▃▄▄▅▆▇██████████                 │
│                                                                              │
│ Press Esc to cancel. Partial destination files may remain after a cancel.    │
│                                                                              │
│ [ In background ] [ Cancel ]                                                 │
└──────────────────────────────────────────────────────────────────────────────┘
)");
    EXPECT_EQ(RowsAbove(Screen), 2);
    EXPECT_EQ(Drawn(scene, kSmallSize), R"(
┌─────────────────── Copy: /home/u/Music ───────────────────┐
│ Stage: Copying | Copying items                            │
│ Current: /home/u/Music/Live/2024-02-11 Stadthalle (.../07 │
│  - Encore with the whole orchestra.flac                   │
│                                                           │
│ Overall 1.5 GB / 12.0 GB | Items 3 / 12                   │
│ ██████░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░  13% │
│ Current file                                              │
│ ████████████████████████████████░░░░░░░░░░░░░░░░░░░░  62% │
│ Rate 6.0 MB/s | Spent 04:16 | Remaining 29:52             │
│                                     ▁▂▃▄▄▅▆▇█ 18.0 MB/s   │
│                            ▁▂▃▄▄▅▆▇██████████             │
│ Press Esc to cancel. Partial destination files may remain │
│ after a cancel.                                           │
│ [ In background ] [ Cancel ]                              │
└───────────────────────────────────────────────────────────┘
)");
}

TEST_F(ProgressDialogOnScreen, GrowsNoFurtherThanItsTextsInALargeWindow) {
    const RateHistory rates = RisingRates();
    ProgressScene scene = MusicScene(CopyingMusic());
    scene.Rates = &rates;
    EXPECT_EQ(Drawn(scene, kLargeSize), R"(
┌─────────────────────────────────────── Copy: /home/u/Music ────────────────────────────────────────┐
│ Stage: Copying | Copying items                                                                     │
│ Current: /home/u/Music/Live/2024-02-11 Stadthalle (.../07 - Encore with the whole orchestra.flac   │
│                                                                                                    │
│ Overall 1.5 GB / 12.0 GB | Items 3 / 12                                                            │
│ ████████████░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░  13% │
│ Current file                                                                                       │
│ █████████████████████████████████████████████████████████░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░  62% │
│ Rate 6.0 MB/s | Spent 04:16 | Remaining 29:52                                                      │
│                                                       ▁▃▄▅▇█ 18.0 MB/s                             │
│                                                 ▁▃▄▅▇███████                                       │
│                                           ▁▃▄▅▇█████████████                                       │
│                                                                                                    │
│ Press Esc to cancel. Partial destination files may remain after a cancel.                          │
│                                                                                                    │
│ [ In background ] [ Cancel ]                                                                       │
└────────────────────────────────────────────────────────────────────────────────────────────────────┘
)");
    EXPECT_EQ(ColumnsBefore(Screen), 49);
}

TEST_F(ProgressDialogOnScreen, SaysThatACancelIsRequestedAndOffersNone) {
    EXPECT_EQ(Drawn(MusicScene(CancelingMusic())), R"(
┌──────────────────────────── Copy: /home/u/Music ─────────────────────────────┐
│ Stage: Copying | Cancel requested                                            │
│ Current: /home/u/Music/Live/2024-02-11 Stadthalle (.../07 - Encore with the  │
│ whole orchestra.flac                                                         │
│                                                                              │
│ Overall 1.5 GB / 12.0 GB | Items 3 / 12                                      │
│ █████████░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░  13% │
│ Current file                                                                 │
│ ████████████████████████████████████████████░░░░░░░░░░░░░░░░░░░░░░░░░░░  62% │
│ Rate 6.0 MB/s | Spent 04:16 | Remaining 29:52                                │
│                                                                              │
│ Canceling transfer. Waiting for the current filesystem step to finish.       │
│                                                                              │
│ [ In background ]                                                            │
└──────────────────────────────────────────────────────────────────────────────┘
)");
}

TEST_F(ProgressDialogOnScreen, WarnsOfAStallAndOfWrongTotals) {
    CopyingScene scene = CopyingMusic();
    scene.Claims.StalledSeconds = 12;
    scene.Claims.bMoreThanCounted = true;
    Drawn(MusicScene(scene));
    EXPECT_EQ(Screen.TextWithRole(CellRole::Warning),
              "Stalled: nothing copied for 12 s.|"
              "More was copied than was counted, so the totals are too low.");
}

TEST_F(ProgressDialogOnScreen, LeavesOutBlanksAndTheCurrentFileBeforeAWarning) {
    CopyingScene copying = CopyingMusic();
    copying.Claims.StalledSeconds = 12;
    copying.Claims.bMoreThanCounted = true;
    ProgressScene scene = MusicScene(copying);
    scene.bQuestionWaits = true;
    EXPECT_EQ(Drawn(scene, kSmallSize), R"(
┌─────────────────── Copy: /home/u/Music ───────────────────┐
│ Stage: Copying | Copying items                            │
│ Current: /home/u/Music/Live/2024-02-11 Stadthalle (.../07 │
│  - Encore with the whole orchestra.flac                   │
│ Overall 1.5 GB / 12.0 GB | Items 3 / 12                   │
│ ██████░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░  13% │
│ ████████████████████████████████░░░░░░░░░░░░░░░░░░░░  62% │
│ Rate 6.0 MB/s | Spent 04:16 | Remaining 29:52             │
│ Stalled: nothing copied for 12 s.                         │
│ More was copied than was counted, so the totals are too   │
│ low.                                                      │
│ Press Esc to cancel. Partial destination files may remain │
│ after a cancel.                                           │
│ This transfer waits for an answer: press a.               │
│ [ Answer ] [ In background ] [ Cancel ]                   │
└───────────────────────────────────────────────────────────┘
)");
}

TEST_F(ProgressDialogOnScreen, ShowsWhatIsBeforeAndAfterTheJob) {
    EXPECT_EQ(Drawn(MusicScene(LookingScene{12345})), R"(
┌──────────────────────────── Copy: /home/u/Music ─────────────────────────────┐
│ Looking through the sources: 12,345 entries.                                 │
│                                                                              │
│ Press Esc to cancel.                                                         │
│                                                                              │
│ [ In background ] [ Cancel ]                                                 │
└──────────────────────────────────────────────────────────────────────────────┘
)");
    EXPECT_EQ(Drawn(MusicScene(FinishingScene{{.Done = 20, .Total = 60}})), R"(
┌──────────────────────────── Copy: /home/u/Music ─────────────────────────────┐
│ Setting modes and dates: 20 of 60 entries.                                   │
│ ███████████████████████░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░  33% │
│                                                                              │
│ Esc leaves the rest without them.                                            │
│                                                                              │
│ [ In background ] [ Cancel ]                                                 │
└──────────────────────────────────────────────────────────────────────────────┘
)");
    FlushingScene flushing;
    flushing.Progress.RemainingBytes = 1572864;
    EXPECT_EQ(Drawn(MusicScene(flushing), kSmallSize), R"(
┌─────────────────── Copy: /home/u/Music ───────────────────┐
│ Writing to the disk: at most 1.5 MB left                  │
│                                                           │
│ Not safe to unplug yet. Esc ends the wait; the copied     │
│ files stay.                                               │
│                                                           │
│ [ In background ] [ Cancel ]                              │
└───────────────────────────────────────────────────────────┘
)");
}

TEST_F(ProgressDialogOnScreen, ShowsTheSentenceOfAFailureWhole) {
    EXPECT_EQ(Drawn(FailedScene()), R"(
┌──────────────────────────── Copy: /home/u/Music ─────────────────────────────┐
│ Stage: Failed | Failed while writing destination file.                       │
│ Current: /home/u/Music/Live/2024-02-11 Stadthalle (.../07 - Encore with the  │
│ whole orchestra.flac                                                         │
│                                                                              │
│ Overall 1.5 GB / 12.0 GB | Items 3 / 12                                      │
│ █████████░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░  13% │
│ Current file                                                                 │
│ ████████████████████████████████████████████░░░░░░░░░░░░░░░░░░░░░░░░░░░  62% │
│ Rate 6.0 MB/s | Spent 04:16 | Remaining 29:52 | Failed while writing         │
│ destination file.                                                            │
│                                                                              │
│ Copied 3 entries, 1.5 GB, in 04:16 (6.0 MB/s).                               │
│ Failed while writing destination file: No space left on device               │
│ ('/media/usb0/Backup/Live/07 - Encore with the whole orchestra.flac').       │
│                                                                              │
│ Run again leaves alone what is already there and the same.                   │
│ [ Close ] [ Run again ]                                                      │
└──────────────────────────────────────────────────────────────────────────────┘
)");
    EXPECT_EQ(Drawn(FailedScene(), kSmallSize), R"(
┌─────────────────── Copy: /home/u/Music ───────────────────┐
│ Stage: Failed | Failed while writing destination file.    │
│ Current: /home/u/Music/Live/2024-02-11 Stadthalle (.../07 │
│  - Encore with the whole orchestra.flac                   │
│ Overall 1.5 GB / 12.0 GB | Items 3 / 12                   │
│ ██████░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░░  13% │
│ Rate 6.0 MB/s | Spent 04:16 | Remaining 29:52 | Failed    │
│ while writing destination file.                           │
│ Copied 3 entries, 1.5 GB, in 04:16 (6.0 MB/s).            │
│ Failed while writing destination file: No space left on   │
│ device ('/media/usb0/Backup/Live/07 - Encore with the     │
│ whole orchestra.flac').                                   │
│ Run again leaves alone what is already there and the      │
│ same.                                                     │
│ [ Close ] [ Run again ]                                   │
└───────────────────────────────────────────────────────────┘
)");
}

TEST_F(ProgressDialogOnScreen, OffersNoSecondRunAfterASuccess) {
    EXPECT_EQ(Drawn(MusicScene(OverScene{.Result = RunResult::Succeeded,
                                         .Lines = {"Copied 12 entries, 12.0 GB, in 34:08 (6.0 "
                                                   "MB/s).",
                                                   "Everything is written to the device."}})),
              R"(
┌──────────────────────────── Copy: /home/u/Music ─────────────────────────────┐
│ Copied 12 entries, 12.0 GB, in 34:08 (6.0 MB/s).                             │
│ Everything is written to the device.                                         │
│                                                                              │
│ [ Close ]                                                                    │
└──────────────────────────────────────────────────────────────────────────────┘
)");
    EXPECT_EQ(Screen.TextWithRole(CellRole::Warning), "");
}

TEST_F(ProgressDialogOnScreen, DrawsInAsciiWhereThereIsNothingElse) {
    const bool bUtf8 = false;
    MemoryScreen ascii(kUsualSize, bUtf8);
    ProgressDialog dialog(MusicScene(FinishingScene{{.Done = 20, .Total = 60}}));
    dialog.Draw(ascii, {});
    EXPECT_EQ(BoxOn(ascii), R"(
+---------------------------- Copy: /home/u/Music -----------------------------+
| Setting modes and dates: 20 of 60 entries.                                   |
| #######################................................................  33% |
|                                                                              |
| Esc leaves the rest without them.                                            |
|                                                                              |
| [ In background ] [ Cancel ]                                                 |
+------------------------------------------------------------------------------+
)");
}

TEST_F(ProgressDialogOnScreen, CleansTextsForTheScreen) {
    ProgressScene scene = MusicScene(OverScene{.Lines = {"bad\xFF\x1B[2J name"}});
    scene.Title = "Copy: new\nline";
    EXPECT_EQ(Drawn(scene), R"(
┌─────────────────────────────── Copy: new?line ───────────────────────────────┐
│ bad�?[2J name                                                                │
│                                                                              │
│ Run again leaves alone what is already there and the same.                   │
│ [ Close ] [ Run again ]                                                      │
└──────────────────────────────────────────────────────────────────────────────┘
)");
}

TEST_F(ProgressDialogOnScreen, KeepsItsHeightFromFrameToFrame) {
    ProgressDialog dialog(MusicScene(CopyingMusic()));
    Draw(dialog);
    const int above = RowsAbove(Screen);
    dialog.SetScene(MusicScene(FinishingScene{}));
    Draw(dialog);
    EXPECT_EQ(RowsAbove(Screen), above);
    Draw(dialog, kLargeSize);
    EXPECT_EQ(RowsAbove(Screen), 25);
}

TEST_F(ProgressDialogOnScreen, ScrollsEndLinesThatDoNotFit) {
    ProgressDialog dialog(LongEndScene(30));
    EXPECT_EQ(Drawn(dialog, kSmallSize), R"(
┌─────────────────── Copy: /home/u/Music ───────────────────┐
│ Entry 1 was not copied.                                   │
│ Entry 2 was not copied.                                   │
│ Entry 3 was not copied.                                   │
│ Entry 4 was not copied.                                   │
│ Entry 5 was not copied.                                   │
│ Entry 6 was not copied.                                   │
│ Entry 7 was not copied.                                   │
│ Entry 8 was not copied.                                   │
│ Entry 9 was not copied.                                   │
│ Entry 10 was not copied.                                  │
│ Entry 11 was not copied.                                  │
│ Run again leaves alone what is already there and the      │
│ same.                                                     │
│ [ Close ] [ Run again ]                                   │
└─ Lines 1 to 11 of 30: Up, Down ───────────────────────────┘
)");
    dialog.TakeKey(Key(KeyCode::Up), {});
    Draw(dialog, kSmallSize);
    EXPECT_EQ(Screen.Row(1), "│ Entry 1 was not copied.                                   │");
    dialog.TakeKey(Key(KeyCode::Down), {});
    Draw(dialog, kSmallSize);
    EXPECT_EQ(Screen.Row(1), "│ Entry 2 was not copied.                                   │");
    dialog.TakeKey(Key(KeyCode::PageDown), {});
    Draw(dialog, kSmallSize);
    EXPECT_EQ(Screen.Row(1), "│ Entry 12 was not copied.                                  │");
    dialog.TakeKey(WheelUp(), {});
    Draw(dialog, kSmallSize);
    EXPECT_EQ(Screen.Row(1), "│ Entry 9 was not copied.                                   │");
    dialog.TakeKey(Key(KeyCode::End), {});
    Draw(dialog, kSmallSize);
    EXPECT_EQ(Screen.Row(11), "│ Entry 30 was not copied.                                  │");
    dialog.TakeKey(Key(KeyCode::Home), {});
    Draw(dialog, kSmallSize);
    EXPECT_EQ(Screen.Row(1), "│ Entry 1 was not copied.                                   │");
}

TEST_F(ProgressDialogOnScreen, EscapeCancelsOnceAndThenCloses) {
    const KeyPress escape = Key(KeyCode::Escape);
    EXPECT_EQ(WishAfter(MusicScene(LookingScene{}), escape), Wish::Cancel);
    EXPECT_EQ(WishAfter(MusicScene(CopyingMusic()), escape), Wish::Cancel);
    EXPECT_EQ(WishAfter(MusicScene(CancelingMusic()), escape), Wish::None);
    EXPECT_EQ(WishAfter(MusicScene(FlushingScene{}), escape), Wish::Cancel);
    EXPECT_EQ(WishAfter(FailedScene(), escape), Wish::Close);
}

TEST_F(ProgressDialogOnScreen, TakesLetters) {
    ProgressScene waiting = MusicScene(CopyingMusic());
    waiting.bQuestionWaits = true;
    EXPECT_EQ(WishAfter(waiting, Letter("a")), Wish::Answer);
    EXPECT_EQ(WishAfter(waiting, Letter("b")), Wish::Background);
    EXPECT_EQ(WishAfter(MusicScene(CopyingMusic()), Letter("a")), Wish::None);
    EXPECT_EQ(WishAfter(MusicScene(CopyingMusic()), Letter("r")), Wish::None);
    EXPECT_EQ(WishAfter(FailedScene(), Letter("b")), Wish::None);
    EXPECT_EQ(WishAfter(FailedScene(), Letter("r")), Wish::RunAgain);
    EXPECT_EQ(
        WishAfter(MusicScene(OverScene{.Result = RunResult::Succeeded, .Lines = {}}), Letter("r")),
        Wish::None);
}

TEST_F(ProgressDialogOnScreen, EnterCancelsNothing) {
    const KeyPress enter = Key(KeyCode::Enter);
    EXPECT_EQ(WishAfter(MusicScene(CopyingMusic()), enter), Wish::Background);
    EXPECT_EQ(WishAfter(FailedScene(), enter), Wish::Close);
}

TEST_F(ProgressDialogOnScreen, TakesTheMouse) {
    Drawn(FailedScene());
    EXPECT_EQ(WishAfter(FailedScene(), ClickOn(Screen, "Run again ]")), Wish::RunAgain);
}

TEST_F(ProgressDialogOnScreen, IsClosedByWhatLeavesIt) {
    ProgressScene waiting = MusicScene(CopyingMusic());
    waiting.bQuestionWaits = true;
    ProgressDialog dialog(waiting);
    dialog.TakeKey(Key(KeyCode::Escape), {});
    EXPECT_FALSE(dialog.IsClosed());
    dialog.TakeKey(Letter("a"), {});
    EXPECT_FALSE(dialog.IsClosed());
    EXPECT_EQ(dialog.TakeWish(), Wish::Answer);
    EXPECT_EQ(dialog.TakeWish(), Wish::None);
    dialog.TakeKey(Letter("b"), {});
    EXPECT_TRUE(dialog.IsClosed());
    ProgressDialog over(FailedScene());
    over.TakeKey(Key(KeyCode::Escape), {});
    EXPECT_TRUE(over.IsClosed());
    ProgressDialog again(FailedScene());
    again.TakeKey(Letter("r"), {});
    EXPECT_TRUE(again.IsClosed());
}

TEST_F(ProgressDialogOnScreen, KeepsTheFocusWhenAButtonComes) {
    ProgressScene scene = MusicScene(CopyingMusic());
    ProgressDialog dialog(scene);
    dialog.TakeKey(Key(KeyCode::Tab), {});
    scene.bQuestionWaits = true;
    dialog.SetScene(scene);
    dialog.TakeKey(Key(KeyCode::Enter), {});
    EXPECT_EQ(dialog.TakeWish(), Wish::Cancel);
}
