// Transfers that somebody starts from the panes: their dialogs, their questions, the list of them,
// and every way in which they end.

#include "mounts.h"
#include "occurrences.h"
#include "own_mount_namespace.h"
#include "panes_on_terminal.h"
#include "preloaded_drive.h"
#include "without_time.h"

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <regex>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

// The words of a dialog that is as wide as the window, with one blank between them.
std::string Words(const std::string& Screen) {
    return std::regex_replace(Screen, std::regex("(│|[ \n])+"), " ");
}

class PanesTransfers : public PanesOnTerminal {
protected:
    static constexpr const char* kF5 = "\x1b[15~";
    static constexpr const char* kF6 = "\x1b[17~";
    static constexpr const char* kEnter = "\r";
    static constexpr const char* kLeft = "\x1b[D";

    static constexpr const char* kDialog = "Enter begins. Tab and the arrows lead to the choices.";
    static constexpr const char* kDirectoryQuestion = "Directory already exists";
    static constexpr const char* kFileQuestion = "File already exists";
    static constexpr const char* kWaits = "A transfer waits for an answer: press a";
    static constexpr const char* kCanceled = "Copy canceled. Partial destination files may remain.";

    PanesTransfers() {
        fs::create_directory(Root / "from");
        fs::create_directory(Root / "into");
    }

    // Waits until both panes are there and Name is in one of them.
    void StartOn(const std::string& Name, int WindowColumns = 80, int WindowRows = 24,
                 const std::string& Into = "into") {
        ProgramInTerminal::Setting setting = Setting({"from", Into});
        setting.Columns = WindowColumns;
        setting.Rows = WindowRows;
        StartPanes(setting);
        ASSERT_TRUE(Program->ShowsText(Name + " "));
    }

    void Mark(const std::string& Pattern) {
        Program->Type("+");
        ASSERT_TRUE(Program->ShowsText("Pattern:"));
        Program->Type(kCtrlU + Pattern + kEnter);
        ASSERT_TRUE(Program->ShowsText(" Marked "));
    }

    void OpenDialog(const std::string& Key = "c") {
        Program->Type(Key);
        ASSERT_TRUE(Program->ShowsText(kDialog));
    }

    void Begin(const std::string& Key = "c") {
        OpenDialog(Key);
        Program->Type(kEnter);
    }

    void BeginInBackground() {
        OpenDialog();
        Program->Type(kUp + std::string("b"));
        ASSERT_TRUE(Program->ShowsNoText("[ In background ]"));
    }

    // Waits until the screen shows Text, however long the transfer took.
    testing::AssertionResult ShowsTimeless(const std::string& Text) {
        constexpr int kLooks = 1000;
        for (int looks = 0; looks < kLooks; ++looks) {
            if (WithoutTime(Program->Screen()).find(Text) != std::string::npos) {
                return testing::AssertionSuccess();
            }
            Program->Watch(0.02);
        }
        return testing::AssertionFailure() << "no \"" << Text << "\" on:\n" << Program->Screen();
    }

    // Waits for the dialog of a transfer that is over and closes it.
    void CloseEnd(const std::string& Line) {
        ASSERT_TRUE(ShowsTimeless(Line));
        ASSERT_TRUE(Program->ShowsText("[ Close ]"));
        Program->Type(kEsc);
        ASSERT_TRUE(Program->ShowsNoText("[ Close ]"));
    }

    // Presses the left button of the mouse where Text stands.
    void Click(const std::string& Text) {
        const std::string screen = Program->Screen();
        const std::size_t at = screen.find(Text);
        ASSERT_NE(at, std::string::npos) << screen;
        const std::string above = screen.substr(0, at);
        const auto row = 1 + std::ranges::count(above, '\n');
        const auto column =
            1 + std::ranges::count_if(above.substr(above.rfind('\n') + 1), [](char Byte) {
                return (static_cast<unsigned char>(Byte) & 0xc0U) != 0x80U;
            });
        const std::string place = std::to_string(column) + ";" + std::to_string(row);
        Program->Type("\x1b[<0;" + place + "M\x1b[<0;" + place + "m");
    }

    void ExpectQuits() {
        Program->Type("q");
        EXPECT_TRUE(Program->ExitsWith(0));
        ExpectRestoredTerminal();
    }

    std::string InTo(const std::string& Name) { return ReadFile(Root / "into" / Name); }
};

TEST_F(PanesTransfers, F5CopiesTheMarkedEntriesToTheOtherPane) {
    WriteFile(Root / "from/Live/song", "la la");
    WriteFile(Root / "from/a.txt", "aaa");
    fs::permissions(Root / "from/a.txt", fs::perms(0640));
    fs::permissions(Root / "from/Live", fs::perms(0750));
    SetModifiedTime(Root / "from/a.txt", 1709820309);
    SetModifiedTime(Root / "from/Live", 1703440800);
    StartOn("a.txt");
    Program->Type("*");
    ASSERT_TRUE(Program->ShowsText("│*/Live "));
    Begin(kF5);
    CloseEnd("│ Copied 3 entries, 8 B.");
    EXPECT_TRUE(Program->ShowsText(
        "│ /..                        │   UP-DIR││ /..                        │   UP-DIR│\n"
        "│ /Live                      │      DIR││ /Live                      │      DIR│\n"
        "│  a.txt                     │      3 B││  a.txt                     │      3 B│\n"));
    EXPECT_EQ(Program->Screen().find("Marked"), std::string::npos);
    EXPECT_EQ(TreeOf(Root / "into"), TreeOf(Root / "from"));
    for (const char* name : {"a.txt", "Live"}) {
        const fs::path copy = Root / "into" / name;
        const fs::path source = Root / "from" / name;
        EXPECT_EQ(fs::status(copy).permissions(), fs::status(source).permissions()) << name;
        EXPECT_EQ(fs::last_write_time(copy), fs::last_write_time(source)) << name;
    }
    ExpectQuits();
}

TEST_F(PanesTransfers, CCopiesTheCurrentEntryToTheNameThatIsTyped) {
    WriteFile(Root / "from/a.txt", "aaa");
    StartOn("a.txt");
    Program->Type(kDown);
    OpenDialog();
    ASSERT_TRUE(Program->ShowsText("Copy 'a.txt' to:"));
    Program->Type("/new.txt\r");
    CloseEnd("│ Copied 1 entry, 3 B.");
    EXPECT_TRUE(Program->ShowsText("│  new.txt "));
    EXPECT_EQ(TreeOf(Root / "into"), (Tree{{"new.txt", "file aaa"}}));
}

TEST_F(PanesTransfers, ADestinationWithoutASlashIsBesideTheSource) {
    WriteFile(Root / "from/a.txt", "aaa");
    StartOn("a.txt");
    Program->Type(kDown);
    OpenDialog();
    Program->Type(kCtrlU + std::string("b.txt\r"));
    CloseEnd("│ Copied 1 entry, 3 B.");
    EXPECT_TRUE(Program->ShowsText("│  b.txt "));
    EXPECT_EQ(TreeOf(Root / "from"), (Tree{{"a.txt", "file aaa"}, {"b.txt", "file aaa"}}));
    EXPECT_EQ(TreeOf(Root / "into"), Tree());
}

TEST_F(PanesTransfers, EscInTheDialogTouchesNothing) {
    WriteFile(Root / "from/a.txt", "aaa");
    StartOn("a.txt");
    Mark("*.txt");
    OpenDialog();
    Program->Type(kEsc);
    ASSERT_TRUE(Program->ShowsNoText("[ In background ]"));
    EXPECT_NE(Program->Screen().find("│*"), std::string::npos);
    ExpectQuits();
    EXPECT_EQ(TreeOf(Root / "into"), Tree());
}

TEST_F(PanesTransfers, MMoves) {
    WriteFile(Root / "from/Live/song", "la la");
    WriteFile(Root / "from/a.txt", "aaa");
    StartOn("Live");
    Mark("a.txt");
    Begin("m");
    CloseEnd("│ Moved 1 entry, 3 B.");
    EXPECT_TRUE(Program->ShowsText("│ /Live                      │      DIR││  a.txt "));
    Mark("Live");
    Begin(kF6);
    CloseEnd("│ Moved 2 entries, 5 B.");
    EXPECT_TRUE(Program->ShowsText("│                            │         ││ /Live "));
    EXPECT_EQ(TreeOf(Root / "from"), Tree());
    EXPECT_EQ(TreeOf(Root / "into"),
              (Tree{{"Live", "dir"}, {"Live/song", "file la la"}, {"a.txt", "file aaa"}}));
}

class PanesQuestions : public PanesTransfers {
protected:
    PanesQuestions() {
        WriteFile(Root / "from/Live/new", "n");
        WriteFile(Root / "into/Live/old", "o");
        for (const char* name : {"a.txt", "b.txt", "c.txt"}) {
            WriteFile(Root / "from" / name, std::string("new ") + name[0]);
            WriteFile(Root / "into" / name, std::string("old ") + name[0]);
        }
    }

    // Wide enough for the last line in one.
    void BeginWith(const std::string& Pattern) {
        StartOn("a.txt", 100, 30);
        Mark(Pattern);
        Begin();
    }

    // The question about a.txt, which has just appeared, does not take Keys yet, but is answered
    // later.
    void ExpectAnswersOnlyLater(const std::string& Keys) {
        Program->Type(Keys);
        Program->Watch(1.2);
        EXPECT_NE(Program->Screen().find(kFileQuestion), std::string::npos);
        EXPECT_EQ(InTo("a.txt"), "old a");
        Program->Type("o");
        CloseEnd("│ Copied 1 entry, 5 B; 1 replaced.");
        EXPECT_EQ(InTo("a.txt"), "new a");
    }
};

TEST_F(PanesQuestions, AreAnsweredWithKeys) {
    BeginWith("*");
    AnswerQuestion(kDirectoryQuestion, "m");
    AnswerQuestion("/from/a.txt", "o");
    AnswerQuestion("/from/b.txt", "r");
    ASSERT_TRUE(Program->ShowsText("Rename to: b-2.txt"));
    Program->Type(kCtrlU + std::string("c.txt\r"));
    ASSERT_TRUE(Program->ShowsText("exists already"));
    Program->Type(kCtrlU + std::string("free.txt\r"));
    AnswerQuestion("/from/c.txt", kEnter);
    CloseEnd("│ Copied 3 entries, 11 B; 1 skipped, 1 replaced, 1 renamed.");
    EXPECT_EQ(TreeOf(Root / "into"), (Tree{{"Live", "dir"},
                                           {"Live/new", "file n"},
                                           {"Live/old", "file o"},
                                           {"a.txt", "file new a"},
                                           {"b.txt", "file old b"},
                                           {"c.txt", "file old c"},
                                           {"free.txt", "file new b"}}));
    ExpectQuits();
}

TEST_F(PanesQuestions, AreAnsweredWithButtons) {
    BeginWith("*");
    AnswerQuestion(kDirectoryQuestion, std::string(kLeft) + kLeft + kEnter);
    AwaitQuestion("/from/a.txt");
    Click("overwrite ]");
    AwaitQuestion("/from/b.txt");
    Click("keep both ]");
    // Skip stands between the first button and the one that cancels.
    AnswerQuestion("/from/c.txt", "\x1b[Z\x1b[Z\x1b[Z\t\t\t\r");
    CloseEnd("│ Copied 3 entries, 11 B; 1 skipped, 1 replaced, 1 renamed.");
    EXPECT_EQ(TreeOf(Root / "into"), (Tree{{"Live", "dir"},
                                           {"Live/new", "file n"},
                                           {"Live/old", "file o"},
                                           {"a.txt", "file new a"},
                                           {"b-2.txt", "file new b"},
                                           {"b.txt", "file old b"},
                                           {"c.txt", "file old c"}}));
}

TEST_F(PanesQuestions, EscCancelsTheTransfer) {
    const Tree before = TreeOf(Root / "into");
    BeginWith("*.txt");
    ASSERT_TRUE(Program->ShowsText(kFileQuestion));
    Program->Type(kEsc);
    ASSERT_TRUE(Program->ShowsText("Stage: Canceled | "));
    CloseEnd("│ Nothing copied.");
    EXPECT_EQ(TreeOf(Root / "into"), before);
    ExpectQuits();
}

TEST_F(PanesQuestions, KeysTypedAheadDoNotAnswer) {
    StartOn("a.txt");
    Mark("a.txt");
    OpenDialog();
    Program->Type("\roO");
    ASSERT_TRUE(Program->ShowsText(kFileQuestion));
    ExpectAnswersOnlyLater("o\r");
}

TEST_F(PanesQuestions, WaitUntilTheWindowHasRoomForThem) {
    BeginWith("a.txt");
    AwaitQuestion("/from/a.txt");
    Resize(40, 12);
    ASSERT_TRUE(Program->ShowsScreen("Terminal too small (60x16 needed)\n"));
    Program->Type("o");
    Program->Watch(1.2);
    Resize(100, 30);
    ASSERT_TRUE(Program->ShowsText(kFileQuestion));
    ExpectAnswersOnlyLater("o");
}

TEST_F(PanesQuestions, TheDialogCanSayOverwriteBeforehand) {
    StartOn("a.txt");
    Mark("*.txt");
    OpenDialog();
    Program->Type("\to");
    ASSERT_TRUE(Program->ShowsText("(*) Overwrite"));
    Program->Type(kEnter);
    CloseEnd("│ Copied 3 entries, 15 B; 3 replaced.");
    EXPECT_EQ(InTo("a.txt") + InTo("b.txt") + InTo("c.txt"), "new anew bnew c");
}

TEST_F(PanesQuestions, TheDialogCanSayKeepBothBeforehand) {
    StartOn("a.txt");
    Mark("a.txt");
    OpenDialog();
    Program->Type("\tk");
    ASSERT_TRUE(Program->ShowsText("(*) Keep both"));
    Program->Type(kEnter);
    CloseEnd("│ Copied 1 entry, 5 B; 1 renamed.");
    EXPECT_EQ(InTo("a.txt") + InTo("a-2.txt"), "old anew a");
}

// Without modes and dates, and into the directory that is there.
TEST_F(PanesQuestions, TheOtherChoicesOfTheDialogAreUsedToo) {
    fs::permissions(Root / "from/Live/new", fs::perms(0600));
    SetModifiedTime(Root / "from/Live/new", 1703440800);
    StartOn("a.txt");
    Mark("Live");
    OpenDialog();
    Click("Merge");
    Click("Modes and dates");
    ASSERT_TRUE(Program->ShowsText("[ ] Modes and dates"));
    ASSERT_TRUE(Program->ShowsText("(*) Merge"));
    Program->Type(kEnter);
    CloseEnd("│ Copied 1 entry, 1 B.");
    EXPECT_EQ(InTo("Live/new"), "n");
    EXPECT_NE(fs::last_write_time(Root / "into/Live/new"),
              fs::last_write_time(Root / "from/Live/new"));
}

TEST_F(PanesQuestions, ATransferThatIsOverIsShownUntilItIsClosed) {
    WriteFile(Root / "from/d.txt", "ddd");
    StartOn("d.txt");
    Mark("d.txt");
    Begin();
    ASSERT_TRUE(Program->ShowsText("│ Copied 1 entry, 3 B."));
    ASSERT_TRUE(Program->ShowsText("[ Close ]"));
    Program->Watch(0.3);
    // Below the dialog stands how much is free, which others may change.
    const auto shownDialog = [&] {
        const std::string screen = Program->Screen();
        return screen.substr(0, screen.find("[ Close ]"));
    };
    const std::string shown = shownDialog();
    Program->Watch(1.5);
    Program->Type("x");
    Program->Watch(0.3);
    EXPECT_EQ(shownDialog(), shown);
    EXPECT_TRUE(Program->ShowsText("[ Close ]"));
    Program->Type(kEnter);
    ASSERT_TRUE(Program->ShowsNoText("[ Close ]"));
    EXPECT_NE(Program->Screen().find("\n Copied 1 entry, 3 B.\n"), std::string::npos)
        << Program->Screen();
}

// One that is out of sight.
TEST_F(PanesQuestions, RingTheBellAndWaitUntilSomebodyAsks) {
    StartOn("a.txt");
    Mark("a.txt");
    const std::size_t before = Occurrences(Program->Output(), "\a");
    BeginInBackground();
    ASSERT_TRUE(Program->ShowsText(kWaits));
    Program->Watch(0.5);
    EXPECT_EQ(Occurrences(Program->Output(), "\a") - before, 1U);
    EXPECT_EQ(Program->Screen().find(kFileQuestion), std::string::npos);
    Program->Type("a");
    AnswerQuestion(kFileQuestion, "o");
    ASSERT_TRUE(ShowsTimeless("\n Copied 1 entry, 5 B; 1 replaced.\n"));
    EXPECT_EQ(InTo("a.txt"), "new a");
    ExpectQuits();
}

TEST_F(PanesQuestions, CanBeAnsweredFromTheJobList) {
    StartOn("a.txt");
    Mark("a.txt");
    BeginInBackground();
    ASSERT_TRUE(Program->ShowsText(kWaits));
    Program->Type("j");
    ASSERT_TRUE(Program->ShowsText("It waits for an answer: press a."));
    Program->Type("a");
    AnswerQuestion(kFileQuestion, "o");
    ASSERT_TRUE(Program->ShowsText("into/a.txt: overwrite"));
    EXPECT_NE(Program->Screen().find(" Done "), std::string::npos) << Program->Screen();
    EXPECT_EQ(InTo("a.txt"), "new a");
}

// A removable disk: the engine writes 6 MB a second to it, so transfers can be watched.
class PanesSlowTransfers : public PanesTransfers {
protected:
    PanesSlowTransfers() {
        WriteFile(Root / "attribute", "1\n");
        Attribute.emplace(Root / "attribute", RemovableAttributeOf(Disk.Path()));
    }

    void BeginSlowCopy(int WindowColumns = 80, int WindowRows = 24, int Megabytes = 90) {
        WriteFile(Root / "from/big.bin", PatternBytes(static_cast<std::size_t>(Megabytes) << 20U));
        StartOn("big.bin", WindowColumns, WindowRows, "disk");
        Mark("big.bin");
        Begin();
        ASSERT_TRUE(Program->ShowsText("Stage: Copying | Copying items"));
        ASSERT_TRUE(Program->ShowsText(" MB / " + std::to_string(Megabytes) + ".0 MB"));
    }

    // Two that wait for an answer behind one that runs, all out of sight.
    void BeginThree() {
        for (const char* name : {"a.txt", "b.txt"}) {
            WriteFile(Root / "from" / name, "new");
            WriteFile(Root / "disk" / name, "old");
        }
        BeginSlowCopy(160, 40);
        Program->Type("b");
        for (const char* name : {"a.txt", "b.txt"}) {
            Mark(name);
            BeginInBackground();
            ASSERT_TRUE(Program->ShowsNoText(" Marked "));
            ASSERT_TRUE(Program->ShowsText(kWaits));
        }
    }

    struct BoundAttribute {
        BoundAttribute(const fs::path& What, const fs::path& Where)
            : Mount(BindFile(What, Where)) {}
        ScopedMount Mount;
    };

    OwnMountNamespace Namespace;
    ScopedMount Disk{MountLoopDisk(Root / "disk", 128)};
    std::optional<BoundAttribute> Attribute;
};

TEST_F(PanesSlowTransfers, AreListedCanceledAndShownAgain) {
    BeginThree();
    Program->Type("j");
    ASSERT_TRUE(Program->ShowsText(" Job  State  "));
    // The engine's own rows.
    ASSERT_TRUE(Program->ShowsText("/from Copy Copying  "));
    EXPECT_TRUE(Program->ShowsText("/big.bin | Rate "));
    for (const char* const name : {"a.txt", "b.txt"}) {
        ASSERT_TRUE(Program->ShowsText("/from Copy Waiting for conflict choice   0% " +
                                       (Root / "from" / name).string() + " | Rate "));
    }
    ASSERT_TRUE(Program->ShowsText("[ Close ]"));
    EXPECT_EQ(Occurrences(Program->Screen(), "/from Copy Waiting for conflict choice "), 2U)
        << Program->Screen();
    Program->Type(std::string(kDown) + kDown + "c");
    ASSERT_TRUE(Program->ShowsText("/from Copy Canceled "));
    EXPECT_EQ(Occurrences(Program->Screen(), "/from Copy Waiting for conflict choice "), 1U);
    EXPECT_EQ(ReadFile(Root / "disk/b.txt"), "old");
    Program->Type("\x1b[H\r");
    ASSERT_TRUE(Program->ShowsText("Stage: Copying | Copying items"));
    Program->Type("b");
    ASSERT_TRUE(Program->ShowsNoText("Stage: Copying"));
    Program->Type(std::string(kDown) + "a");
    AnswerQuestion("/from/a.txt", "o");
    ASSERT_TRUE(Program->ShowsText("disk/a.txt: overwrite"));
    EXPECT_EQ(ReadFile(Root / "disk/a.txt"), "new");
    EXPECT_NE(Program->Screen().find("/from Copy Copying  "), std::string::npos);
}

TEST_F(PanesSlowTransfers, CtrlCCancelsOnlyTheOneThatIsShown) {
    WriteFile(Root / "from/a.txt", "new");
    WriteFile(Root / "disk/a.txt", "old");
    StartOn("a.txt", 80, 24, "disk");
    Mark("a.txt");
    BeginInBackground();
    ASSERT_TRUE(Program->ShowsText(kWaits));
    WriteFile(Root / "from/big.bin", PatternBytes(90 << 20));
    Program->Type("\x12");
    ASSERT_TRUE(Program->ShowsText("big.bin"));
    Mark("big.bin");
    Begin();
    ASSERT_TRUE(Program->ShowsText(" MB / 90.0 MB"));
    Program->Type(kCtrlC);
    ASSERT_TRUE(Program->ShowsText("Stage: Canceled | "));
    CloseEnd("│ Nothing copied.");
    EXPECT_FALSE(fs::exists(Root / "disk/big.bin"));
    ASSERT_TRUE(Program->ShowsText(kWaits));
    Program->Type("a");
    AnswerQuestion(kFileQuestion, "o");
    ASSERT_TRUE(ShowsTimeless("\n Copied 1 entry, 3 B; 1 replaced.\n"));
    EXPECT_EQ(ReadFile(Root / "disk/a.txt"), "new");
    ExpectQuits();
}

TEST_F(PanesSlowTransfers, EscCancelsTheOneThatIsShown) {
    BeginSlowCopy();
    Program->Type(kEsc);
    ASSERT_TRUE(Program->ShowsText("Stage: Canceled | "));
    CloseEnd("│ Nothing copied.");
    EXPECT_FALSE(fs::exists(Root / "disk/big.bin"));
    ExpectQuits();
}

TEST_F(PanesSlowTransfers, QuittingAsksAndCancelsThem) {
    BeginThree();
    Program->Type("q");
    ASSERT_TRUE(Program->ShowsText("3 transfers run. Cancel and quit?"));
    Program->Type("n");
    ASSERT_TRUE(Program->ShowsNoText("Cancel and quit?"));
    Program->Type("j");
    ASSERT_TRUE(Program->ShowsText("/from Copy Copying  "));
    ASSERT_TRUE(Program->ShowsText("/from/a.txt | Rate "));
    ASSERT_TRUE(Program->ShowsText("/from/b.txt | Rate "));
    Program->Type(kEsc);
    ASSERT_TRUE(Program->ShowsNoText("/from Copy "));
    Program->Type("q");
    ASSERT_TRUE(Program->ShowsText("3 transfers run. Cancel and quit?"));
    Program->Type("y");
    EXPECT_TRUE(Program->ExitsWith(0));
    ExpectRestoredTerminal();
    EXPECT_EQ(TreeOf(Root / "disk"),
              (Tree{{"a.txt", "file old"}, {"b.txt", "file old"}, {"lost+found", "dir"}}));
}

// The program leaves behind what is half written where that takes longer than two seconds.
TEST_F(PanesSlowTransfers, SigtermCancelsThem) {
    BeginThree();
    Program->Signal(SIGTERM);
    EXPECT_TRUE(Program->ExitsWith(143, 10.0));
    ExpectRestoredTerminal();
    EXPECT_EQ(TreeOf(Root / "disk"),
              (Tree{{"a.txt", "file old"}, {"b.txt", "file old"}, {"lost+found", "dir"}}));
}

TEST_F(PanesSlowTransfers, AClosedTerminalCancelsThem) {
    BeginThree();
    Program->HangUp();
    EXPECT_TRUE(Program->ExitsWith(129));
    EXPECT_EQ(TreeOf(Root / "disk"),
              (Tree{{"a.txt", "file old"}, {"b.txt", "file old"}, {"lost+found", "dir"}}));
}

TEST_F(PanesSlowTransfers, TheDialogFollowsTheWindow) {
    BeginSlowCopy();
    Program->Resize(120, 40);
    ASSERT_TRUE(Program->ShowsText("10Quit"));
    ASSERT_TRUE(Program->ShowsText("[ In background ] [ Cancel ]"));
    EXPECT_EQ(Occurrences(Program->Screen(), "┌"), 3U) << Program->Screen();
    Program->Resize(61, 16);
    ASSERT_TRUE(Program->ShowsText("[ In background ] [ Cancel ]"));
    ASSERT_TRUE(Program->ShowsText(" MB / 90.0 MB"));
    Program->Resize(59, 15);
    ASSERT_TRUE(Program->ShowsScreen("Terminal too small (60x16 needed)\n"));
    Program->Resize(80, 24);
    ASSERT_TRUE(Program->ShowsText("[ In background ] [ Cancel ]"));
    ASSERT_TRUE(Program->ShowsText("Stage: Copying | Copying items"));
    EXPECT_EQ(Occurrences(Program->Screen(), "Stage: "), 1U);
    Program->Type(kEsc);
    CloseEnd("│ Nothing copied.");
}

TEST_F(PanesSlowTransfers, SendLittleOverASlowLine) {
    for (const auto& [columns, rows] : {std::pair(80, 24), std::pair(200, 60)}) {
        BeginSlowCopy(columns, rows);
        const std::size_t before = Program->Output().size();
        Program->Watch(5.0);
        EXPECT_LT(Program->Output().size() - before, 5U * 2000U);
        EXPECT_GT(Program->Output().size() - before, 500U);
        Program->Type(kEsc);
        CloseEnd("│ Nothing copied.");
        ExpectQuits();
    }
}

// A disk with too little room.
class PanesFullDisk : public PanesTransfers {
protected:
    PanesFullDisk() {
        WriteFile(Root / "from/a.txt", "aaa");
        WriteFile(Root / "from/big.bin", PatternBytes(3 << 20));
        WriteFile(Root / "disk/other", PatternBytes(2 << 20));
    }

    void BeginBoth() {
        StartOn("big.bin", 80, 24, "disk");
        Program->Type("*");
        Begin();
        ASSERT_TRUE(Program->ShowsText("There is not enough room at the destination:"));
        AwaitQuestion("Go on with the copy?");
    }

    OwnMountNamespace Namespace;
    ScopedMount Disk{MountTmpfs(Root / "disk", "size=4m")};
};

TEST_F(PanesFullDisk, NoToTheQuestionTouchesNothing) {
    BeginBoth();
    Program->Type(kEnter);
    CloseEnd("│ Canceled before anything was touched.");
    EXPECT_TRUE(Program->ShowsText(" Marked 2: "));
    EXPECT_EQ(ListingOf(Root / "disk"), (std::vector<fs::path>{Root / "disk/other"}));
    ExpectQuits();
}

TEST_F(PanesFullDisk, AFailureIsToldAndRunAgainOnceItsReasonIsGone) {
    BeginBoth();
    Program->Type("y");
    ASSERT_TRUE(Program->ShowsText("Stage: Failed | "));
    ASSERT_TRUE(Program->ShowsText("[ Close ] [ Run again ]"));
    const std::string disk = (Root / "disk").string();
    EXPECT_NE(Words(Program->Screen())
                  .find(disk +
                        "/big.bin: Failed while writing destination file. (No space left on " +
                        disk + ": 3.0 MB needed, 2.0 MB free) Copied 1 entry, 3 B."),
              std::string::npos)
        << Program->Screen();
    EXPECT_FALSE(fs::exists(Root / "disk/big.bin"));
    EXPECT_EQ(ReadFile(Root / "disk/a.txt"), "aaa");
    WriteFile(Root / "disk/a.txt", "changed");
    fs::remove(Root / "disk/other");
    Program->Type("r");
    CloseEnd("│ Copied 1 entry, 3.0 MB; 1 skipped.");
    EXPECT_TRUE(Program->ShowsNoText(" Marked "));
    EXPECT_EQ(ReadFile(Root / "disk/a.txt"), "changed");
    EXPECT_EQ(ReadFile(Root / "disk/big.bin"), PatternBytes(3 << 20));
    ExpectQuits();
}

class PanesFollowedLink : public PanesTransfers {
protected:
    PanesFollowedLink() {
        WriteFile(Root / "elsewhere/song", "la la");
        fs::create_symlink("../elsewhere", Root / "from/link");
    }

    void BeginMove() {
        StartOn("link", 100, 30, "disk");
        Mark("link");
        Begin("m");
        ASSERT_TRUE(Program->ShowsText("the contents of which will be copied and removed"));
        AwaitQuestion("Go on with the move?");
    }

    OwnMountNamespace Namespace;
    // On the same disk the link itself would be moved.
    ScopedMount Disk{MountTmpfs(Root / "disk", "size=4m")};
};

TEST_F(PanesFollowedLink, NoLeavesItAlone) {
    BeginMove();
    Program->Type("n");
    CloseEnd("│ Canceled before anything was touched.");
    EXPECT_EQ(ReadFile(Root / "elsewhere/song"), "la la");
    EXPECT_EQ(TreeOf(Root / "disk"), Tree());
}

TEST_F(PanesFollowedLink, YesMovesWhatIsBehindIt) {
    BeginMove();
    Click("[ Yes ]");
    CloseEnd("│ Moved ");
    EXPECT_EQ(TreeOf(Root / "disk"), (Tree{{"link", "dir"}, {"link/song", "file la la"}}));
    EXPECT_FALSE(fs::exists(Root / "elsewhere/song"));
}

class PanesWithDisc : public PanesTransfers {
protected:
    PanesWithDisc() {
        Drives.Describe(AudioDisc({150, 1000, 1017}, 2000, kDisc));
        ProgramInTerminal::Setting setting = Setting({"cdda:/dev/sr0", "into"});
        for (const auto& variable : Drives.Environment()) {
            setting.Environment.push_back(variable);
        }
        Start(setting);
    }

    static constexpr std::uint32_t kDisc = 7;
    PreloadedDrives Drives;
};

TEST_F(PanesWithDisc, ListsTheTracksAndCopiesOne) {
    ASSERT_TRUE(Program->ShowsText("│  Track 01.wav              │   1.9 MB│"));
    ASSERT_TRUE(Program->ShowsText("│  Track 02.wav              │  39.1 KB│"));
    ASSERT_TRUE(Program->ShowsText("│  Track 03.wav              │   2.2 MB│"));
    Mark("Track 02*");
    Begin();
    CloseEnd("│ Copied 1 entry, 39.0 KB.");
    ASSERT_TRUE(Program->ShowsText("│   1.9 MB││  Track 02.wav              │  39.1 KB│"));
    const std::string wav = InTo("Track 02.wav");
    ASSERT_EQ(wav.size(), 44U + 17U * kFakeFrameBytes);
    EXPECT_TRUE(wav.substr(44) == FakeFrames(kDisc, 1000, 17));
    EXPECT_EQ(Drives.OpenDescriptors(), 0);
    ExpectQuits();
}

TEST_F(PanesWithDisc, NothingIsWrittenToIt) {
    ASSERT_TRUE(Program->ShowsText("Track 03.wav"));
    WriteFile(Root / "into/a.txt", "aaa");
    Program->Type("\t\x12");
    ASSERT_TRUE(Program->ShowsText("│  a.txt "));
    Mark("a.txt");
    Program->Type("c");
    ASSERT_TRUE(Program->ShowsText("Nothing can be written to a disc."));
}

} // namespace
