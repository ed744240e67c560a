// Taken names on a real terminal: what the questions show, and what each key does.

#include "on_terminal.h"
#include "without_time.h"

#include <filesystem>

namespace {

namespace fs = std::filesystem;

class QuestionsOnTerminal : public OnTerminal {
protected:
    QuestionsOnTerminal() {
        WriteFile(Root / "from/cover.jpg", std::string(48230, 'n'));
        WriteFile(Root / "into/cover.jpg", std::string(47110, 'o'));
        SetModifiedTime(Root / "from/cover.jpg", 1709820309);
        SetModifiedTime(Root / "into/cover.jpg", 1703440800);
    }

    void StartCopy(std::vector<std::string> Sources = {"from/cover.jpg"}) {
        std::vector<std::string> arguments = {"copy", "-t", "into"};
        arguments.insert(arguments.end(), Sources.begin(), Sources.end());
        Start(arguments);
    }

    std::string InTo(const std::string& Name) { return ReadFile(Root / "into" / Name); }

    static constexpr const char* kOld = "File exists: ";
};

TEST_F(QuestionsOnTerminal, ShowsBothSidesWithSizesDatesAndTheNewerOne) {
    StartCopy();
    EXPECT_TRUE(
        Program->ShowsScreen("File exists: " + (Root / "into/cover.jpg").string() +
                             "\n"
                             "             46.0 KB (47110 bytes)  2023-12-24 18:00:00\n"
                             "Source:      " +
                             (Root / "from/cover.jpg").string() +
                             "\n"
                             "             47.1 KB (48230 bytes)  2024-03-07 14:05:09  newer\n"
                             "Canceling while a file is being overwritten loses the old one.\n"
                             "o           overwrite\n"
                             "O           overwrite all\n"
                             "u           overwrite all older\n"
                             "s or Enter  skip\n"
                             "S           skip all\n"
                             "r           rename\n"
                             "k           keep both\n"
                             "K           keep both for all\n"
                             "b           compare: skip when equal, overwrite when not\n"
                             "B           compare all\n"
                             "Esc         cancel the transfer\n"
                             "?\n"));
    EXPECT_NE(Program->Output().find("\x1b[1ms\x1b[m or \x1b[1mEnter\x1b[m  skip"),
              std::string::npos);
}

TEST_F(QuestionsOnTerminal, OOverwrites) {
    StartCopy();
    AnswerQuestion(kOld, "o");
    EXPECT_TRUE(Program->ExitsWith(0));
    EXPECT_EQ(InTo("cover.jpg"), std::string(48230, 'n'));
    EXPECT_TRUE(WithoutTime(Program->HistoryAndScreen())
                    .ends_with("\nCopied 1 entry, 47.1 KB; 1 replaced.\n"))
        << Program->HistoryAndScreen();
    ExpectRestoredTerminal();
}

TEST_F(QuestionsOnTerminal, EnterAloneNeverDestroys) {
    StartCopy();
    AnswerQuestion(kOld, "\r");
    EXPECT_TRUE(Program->ExitsWith(0));
    EXPECT_EQ(InTo("cover.jpg"), std::string(47110, 'o'));
}

TEST_F(QuestionsOnTerminal, KeysTypedAheadDoNotAnswer) {
    ProgramInTerminal::Setting setting = Setting({"copy", "-t", "into", "from/cover.jpg"});
    Start(setting);
    Program->Type("o\rO");
    ASSERT_TRUE(Program->ShowsText(kOld));
    Program->Type("o\r");
    Program->Watch(1.2);
    EXPECT_NE(Program->Screen().find(kOld), std::string::npos);
    EXPECT_EQ(InTo("cover.jpg"), std::string(47110, 'o'));
    Program->Type("s");
    EXPECT_TRUE(Program->ExitsWith(0));
}

TEST_F(QuestionsOnTerminal, EscCancelsTheTransfer) {
    StartCopy();
    AnswerQuestion(kOld, kEsc);
    EXPECT_TRUE(Program->ExitsWith(130));
    EXPECT_EQ(InTo("cover.jpg"), std::string(47110, 'o'));
    ExpectRestoredTerminal();
}

TEST_F(QuestionsOnTerminal, UOverwritesOnlyWhatIsOlder) {
    WriteFile(Root / "from/newer", "new");
    WriteFile(Root / "into/newer", "kept");
    SetModifiedTime(Root / "from/newer", 1000);
    SetModifiedTime(Root / "into/newer", 2000);
    StartCopy({"from/cover.jpg", "from/newer"});
    AnswerQuestion(kOld, "u");
    EXPECT_TRUE(Program->ExitsWith(0));
    EXPECT_EQ(InTo("cover.jpg"), std::string(48230, 'n'));
    EXPECT_EQ(InTo("newer"), "kept");
}

TEST_F(QuestionsOnTerminal, BComparesByContent) {
    WriteFile(Root / "into/cover.jpg", std::string(48230, 'x'));
    StartCopy();
    AnswerQuestion(kOld, "b");
    EXPECT_TRUE(Program->ExitsWith(0));
    EXPECT_EQ(InTo("cover.jpg"), std::string(48230, 'n'));
}

TEST_F(QuestionsOnTerminal, CapitalKKeepsBothForAllLaterFiles) {
    WriteFile(Root / "from/b.txt", "new b");
    WriteFile(Root / "into/b.txt", "old b");
    StartCopy({"from/cover.jpg", "from/b.txt"});
    AnswerQuestion(kOld, "K");
    EXPECT_TRUE(Program->ExitsWith(0));
    EXPECT_EQ(InTo("cover.jpg"), std::string(47110, 'o'));
    EXPECT_EQ(InTo("cover-2.jpg"), std::string(48230, 'n'));
    EXPECT_EQ(InTo("b.txt"), "old b");
    EXPECT_EQ(InTo("b-2.txt"), "new b");
}

TEST_F(QuestionsOnTerminal, RenameRefusesATakenNameAndGoesOnAsking) {
    WriteFile(Root / "into/taken", "taken");
    StartCopy();
    AnswerQuestion(kOld, "r");
    ASSERT_TRUE(Program->ShowsText("cover-2.jpg"));
    Program->Type("\x15taken\r");
    ASSERT_TRUE(Program->ShowsText("exists already"));
    Program->Type("\x15"
                  "free.jpg\r");
    EXPECT_TRUE(Program->ExitsWith(0));
    EXPECT_EQ(InTo("cover.jpg"), std::string(47110, 'o'));
    EXPECT_EQ(InTo("taken"), "taken");
    EXPECT_EQ(InTo("free.jpg"), std::string(48230, 'n'));
}

TEST_F(QuestionsOnTerminal, ADirectoryIsOfferedMergeAndSkipOnly) {
    WriteFile(Root / "from/Live/new", "n");
    WriteFile(Root / "into/Live/old", "o");
    SetModifiedTime(Root / "from/Live", 1709820309);
    SetModifiedTime(Root / "into/Live", 1703440800);
    StartCopy({"from/Live"});
    EXPECT_TRUE(Program->ShowsScreen("Directory exists: " + (Root / "into/Live").string() +
                                     "\n"
                                     "                  directory  2023-12-24 18:00:00\n"
                                     "Source:           " +
                                     (Root / "from/Live").string() +
                                     "\n"
                                     "                  directory  2024-03-07 14:05:09  newer\n"
                                     "m           merge\n"
                                     "M           merge all\n"
                                     "s or Enter  skip\n"
                                     "S           skip all\n"
                                     "Esc         cancel the transfer\n"
                                     "?\n"));
    AnswerQuestion("Directory exists: ", "m");
    EXPECT_TRUE(Program->ExitsWith(0));
    EXPECT_EQ(TreeOf(Root / "into/Live"), (Tree{{"new", "file n"}, {"old", "file o"}}));
}

TEST_F(QuestionsOnTerminal, ASkippedDirectoryStaysAsItIs) {
    WriteFile(Root / "from/Live/new", "n");
    WriteFile(Root / "into/Live/old", "o");
    StartCopy({"from/Live"});
    AnswerQuestion("Directory exists: ", "s");
    EXPECT_TRUE(Program->ExitsWith(0));
    EXPECT_EQ(TreeOf(Root / "into/Live"), (Tree{{"old", "file o"}}));
}

TEST_F(QuestionsOnTerminal, RemovingAWholeDirectoryTakesASecondKey) {
    fs::remove(Root / "into/cover.jpg");
    WriteFile(Root / "into/cover.jpg/inside", "precious");
    StartCopy();
    AnswerQuestion("Overwriting removes this whole directory with all in it.", "o");
    ASSERT_TRUE(Program->ShowsText("Remove the directory?"));
    EXPECT_EQ(InTo("cover.jpg/inside"), "precious");
    Program->Type(kEsc);
    ASSERT_TRUE(Program->ShowsText("cancel the transfer"));
    EXPECT_EQ(InTo("cover.jpg/inside"), "precious");
    Program->Type("o");
    ASSERT_TRUE(Program->ShowsText("Remove the directory?"));
    Program->Type("y");
    EXPECT_TRUE(Program->ExitsWith(0));
    EXPECT_EQ(InTo("cover.jpg"), std::string(48230, 'n'));
    ExpectRestoredTerminal();
}

TEST_F(QuestionsOnTerminal, FitASmallWindow) {
    ProgramInTerminal::Setting setting = Setting({"copy", "-t", "into", "from/cover.jpg"});
    setting.Columns = 40;
    setting.Rows = 10;
    Start(setting);
    const std::string answers = "o overwrite  O overwrite all\n"
                                "u overwrite all older  s or Enter skip\n"
                                "S skip all  r rename  k keep both\n"
                                "K keep both for all\n"
                                "b compare: skip when equal, overwrite\n"
                                "  when not  B compare all\n"
                                "Esc cancel the transfer\n"
                                "[? details]\n";
    ASSERT_TRUE(Program->ShowsText(answers));
    AnswerQuestion("cover.jpg", "?");
    ASSERT_TRUE(Program->ShowsText("newer"));
    ASSERT_TRUE(Program->ShowsText("[oOusSrkKbB Esc, ? lists]"));
    Program->Type("?");
    ASSERT_TRUE(Program->ShowsText(answers));
    Program->Type("o");
    EXPECT_TRUE(Program->ExitsWith(0));
    EXPECT_EQ(InTo("cover.jpg"), std::string(48230, 'n'));
}

} // namespace
