// `tarvane` on a terminal of its own, as a person starts it.

#pragma once

#include "file_tree.h"
#include "program_in_terminal.h"
#include "temporary_directory.h"

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

// Tests of the real program. Its path is the compile definition TARVANE_PROGRAM.
class OnTerminal : public testing::Test {
protected:
    static constexpr const char* kEsc = "\x1b";
    static constexpr const char* kCtrlC = "\x03";
    static constexpr const char* kCtrlQ = "\x11";
    static constexpr const char* kCtrlS = "\x13";
    static constexpr const char* kCtrlZ = "\x1a";

    // The program with these arguments in the test's directory.
    ProgramInTerminal::Setting Setting(std::vector<std::string> Arguments) const {
        ProgramInTerminal::Setting setting;
        Arguments.insert(Arguments.begin(), TARVANE_PROGRAM);
        setting.Command = std::move(Arguments);
        setting.WorkingDirectory = Root.Path().string();
        setting.Environment = {{"TERM", "xterm-256color"}, {"TZ", "UTC"}};
        return setting;
    }

    void Start(std::vector<std::string> Arguments) { Start(Setting(std::move(Arguments))); }
    void Start(const ProgramInTerminal::Setting& Wanted) {
        Program = std::make_unique<ProgramInTerminal>(Wanted);
    }

    // A question ignores keys for a moment, so that what was typed before cannot answer it.
    // Text may be there before its question is, and a busy machine takes its time.
    void AwaitQuestion(const std::string& Text) {
        ASSERT_TRUE(Program->ShowsText(Text));
        Program->Watch(1.5);
    }
    void AnswerQuestion(const std::string& Text, const std::string& Keys) {
        AwaitQuestion(Text);
        Program->Type(Keys);
    }

    void ExpectRestoredTerminal() const {
        EXPECT_TRUE(SameTerminalSettings(Program->SettingsAtFirst(), Program->Settings()));
        EXPECT_TRUE(Program->DrawsAsAtFirst());
    }

    TemporaryDirectory Root;
    std::unique_ptr<ProgramInTerminal> Program;
};
