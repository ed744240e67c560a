// Who can be asked about a taken name: whoever sits at the controlling terminal while the program
// is in its foreground, whatever the standard streams are.

#include "mounts.h"
#include "on_terminal.h"

#include <filesystem>
#include <string>

namespace {

class AskedOnTerminal : public OnTerminal {
protected:
    AskedOnTerminal() {
        for (const char* name : {"a", "b"}) {
            WriteFile(Root / "from" / name, std::string("new ") + name);
            WriteFile(Root / "into" / name, std::string("old ") + name);
        }
    }

    // A shell's command, in which $T is the program.
    void StartInShell(const std::string& Command, const std::string& Shell = "/bin/sh") {
        ProgramInTerminal::Setting setting = Setting({});
        setting.Command = {Shell, "-c", Command};
        setting.Environment.emplace_back("T", TARVANE_PROGRAM);
        Start(setting);
    }

    void StartInteractiveShell() {
        ProgramInTerminal::Setting setting = Setting({});
        setting.Command = {"/bin/bash", "--norc", "--noprofile", "-i"};
        setting.Environment.emplace_back("PS1", "prompt> ");
        setting.Environment.emplace_back("T", TARVANE_PROGRAM);
        Start(setting);
        ASSERT_TRUE(Program->ShowsText("prompt>"));
    }

    std::string Title(const std::string& Name) const {
        return "File exists: " + (Root / "into" / Name).string();
    }
    Tree Destination() const { return TreeOf(Root / "into"); }
    const Tree AsAtFirst{{"a", "file old a"}, {"b", "file old b"}};
    const Tree Overwritten{{"a", "file new a"}, {"b", "file old b"}};
};

TEST_F(AskedOnTerminal, ByXargs) {
    StartInShell("printf 'from/a' | xargs -I{} \"$T\" copy {} into");
    AnswerQuestion(Title("a"), "o");
    EXPECT_TRUE(Program->ExitsWith(0));
    EXPECT_EQ(Destination(), Overwritten);
    ExpectRestoredTerminal();
}

TEST_F(AskedOnTerminal, InALoopThatReadsNames) {
    StartInShell("printf 'from/a\\nfrom/b\\n' | while read -r name; do "
                 "\"$T\" copy \"$name\" into; echo \"$name ends\"; done");
    AnswerQuestion(Title("a"), "o");
    ASSERT_TRUE(Program->ShowsText("from/a ends"));
    AnswerQuestion(Title("b"), "s");
    ASSERT_TRUE(Program->ShowsText("from/b ends"));
    EXPECT_TRUE(Program->ExitsWith(0));
    EXPECT_EQ(Destination(), Overwritten);
}

TEST_F(AskedOnTerminal, WhereStandardInputIsNothing) {
    StartInShell("\"$T\" copy from/a into </dev/null");
    AnswerQuestion(Title("a"), "o");
    EXPECT_TRUE(Program->ExitsWith(0));
    EXPECT_EQ(Destination(), Overwritten);
}

TEST_F(AskedOnTerminal, WhereMessagesGoToAFile) {
    StartInShell("\"$T\" copy from/a into 2>log");
    AnswerQuestion(Title("a"), "o");
    EXPECT_TRUE(Program->ExitsWith(0));
    EXPECT_EQ(Destination(), Overwritten);
    const std::string answer = Title("a") + " | overwrite\n";
    EXPECT_EQ(Program->HistoryAndScreen(), answer);
    EXPECT_TRUE(ReadFile(Root / "log").starts_with(answer)) << ReadFile(Root / "log");
    EXPECT_EQ(ReadFile(Root / "log").find('\x1b'), std::string::npos);
    ExpectRestoredTerminal();
}

TEST_F(AskedOnTerminal, AndEscCancelsWhereMessagesGoToAFile) {
    StartInShell("\"$T\" copy from/a into 2>log");
    AnswerQuestion(Title("a"), kEsc);
    EXPECT_TRUE(Program->ExitsWith(130));
    EXPECT_EQ(Destination(), AsAtFirst);
    ExpectRestoredTerminal();
}

// The shell gets a terminal that echoes and edits, although messages went elsewhere.
TEST_F(AskedOnTerminal, AgainAfterAStopWhereMessagesGoToAFile) {
    StartInteractiveShell();
    Program->Type("\"$T\" copy from/a into 2>log\r");
    ASSERT_TRUE(Program->ShowsText(Title("a")));
    Program->Type(kCtrlZ);
    ASSERT_TRUE(Program->ShowsText("Stopped"));
    ASSERT_TRUE(Program->ShowsNoText(Title("a")));
    Program->Type("echo al''ive\r");
    ASSERT_TRUE(Program->ShowsText("\nalive"));
    Program->Type("fg\r");
    AnswerQuestion(Title("a"), "o");
    ASSERT_TRUE(Program->ShowsText(" | overwrite\n"));
    Program->Type("exit\r");
    EXPECT_TRUE(Program->ExitsWith(0));
    EXPECT_EQ(Destination(), Overwritten);
}

class AskedNowhere : public AskedOnTerminal {
protected:
    // Runs Command, which ends with Status, asks nothing and touches nothing.
    void ExpectUntouched(const std::string& Command, int Status) {
        StartInShell(Command);
        EXPECT_TRUE(Program->ExitsWith(Status));
        EXPECT_EQ(Program->HistoryAndScreen().find("overwrite all"), std::string::npos);
        EXPECT_EQ(Destination(), AsAtFirst);
        ExpectRestoredTerminal();
    }
};

TEST_F(AskedNowhere, InTheBackground) {
    ExpectUntouched("set -m; \"$T\" copy from/a into & wait $!", 1);
    EXPECT_NE(Program->HistoryAndScreen().find((Root / "into/a").string()), std::string::npos);
}

TEST_F(AskedNowhere, InTheBackgroundWhereQuestionsAreInsistedOn) {
    ExpectUntouched("set -m; \"$T\" copy -i from/a into & wait $!", 2);
    EXPECT_NE(Program->HistoryAndScreen().find("nobody can be asked"), std::string::npos);
}

TEST_F(AskedNowhere, OnATerminalThatIsNotTheControllingOne) {
    ExpectUntouched("setsid -w \"$T\" copy from/a into", 1);
}

class AskedLater : public AskedOnTerminal {
protected:
    AskedLater() {
        WriteFile(Root / "big.bin", PatternBytes(20 << 20));
        WriteFile(Root / "disk/a", "old a");
    }

    // On which the copy of a big file takes its time.
    RemovableDisk Disk{Root.Path(), "1\n"};
};

// Ctrl-Z, `bg`, and an answer is needed: that stops the program again.
TEST_F(AskedLater, WhenItIsBackInTheForeground) {
    StartInteractiveShell();
    Program->Type("\"$T\" copy --no-preflight --flush=never big.bin from/a disk\r");
    ASSERT_TRUE(Program->ShowsText(" MB / 20.0 MB"));
    Program->Type(kCtrlZ);
    ASSERT_TRUE(Program->ShowsText("Stopped"));
    Program->Type("set -b; bg\r");
    ASSERT_TRUE(Program->ShowsText("prompt>\n[1]+  Stopped"));
    Program->Type("fg\r");
    AnswerQuestion("File exists: ", "o");
    ASSERT_TRUE(Program->ShowsText("Copied "));
    Program->Type("exit\r");
    EXPECT_TRUE(Program->ExitsWith(0));
    EXPECT_EQ(ReadFile(Root / "disk/a"), "new a");
}

// A shell in the foreground has left it behind, so that it is in the background and nobody can
// bring it back.
TEST_F(AskedLater, EndsWhereNobodyCanBringItBack) {
    StartInteractiveShell();
    Program->Type("sh -c '\"$T\" copy --no-preflight --flush=never big.bin from/a disk & "
                  "until test -e disk/big.bin; do :; done'\r");
    EXPECT_TRUE(Program->ShowsText("Copy canceled."));
    EXPECT_EQ(ReadFile(Root / "disk/a"), "old a");
    Program->Type("exit\r");
    EXPECT_TRUE(Program->ExitsWith(0));
}

} // namespace
