// A real program on a real pseudo-terminal: keys go in, and the screen that its output draws is
// read back.

#pragma once

#include <string>
#include <string_view>
#include <termios.h>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <sys/types.h>
#include <vterm.h>

// One program with a terminal of its own, whose session it leads.
//
// Threads: one. The terminal is read only inside the methods that wait, so a program that writes a
// lot stands still in between, as it would behind a slow line.
// Errors: whatever cannot be set up throws std::system_error. The destructor kills the program.
class ProgramInTerminal {
public:
    struct Setting {
        std::vector<std::string> Command;
        int Columns = 80;
        int Rows = 24;
        // Added to the environment; an empty value removes the variable.
        std::vector<std::pair<std::string, std::string>> Environment;
        std::string WorkingDirectory;
    };

    explicit ProgramInTerminal(const Setting& Wanted);
    ~ProgramInTerminal();
    ProgramInTerminal(const ProgramInTerminal&) = delete;
    ProgramInTerminal& operator=(const ProgramInTerminal&) = delete;

    // Types bytes, as keys send them: "\r" is Enter, "\x1b" Esc, "\x03" Ctrl-C, "\x1a" Ctrl-Z.
    void Type(std::string_view Keys);

    void Resize(int NewColumns, int NewRows);

    // Sends a signal to the program itself.
    void Signal(int Number) const;

    // Closes the terminal under the program, as a lost connection does.
    void HangUp();

    // Each waits until its condition holds and fails with the screen after Seconds.
    testing::AssertionResult ShowsText(const std::string& Text, double Seconds = 20.0);
    testing::AssertionResult ShowsNoText(const std::string& Text, double Seconds = 20.0);
    // The whole screen, as Screen gives it. What a program draws at once can arrive in pieces, so a
    // text that has come says nothing about what stands behind it.
    testing::AssertionResult ShowsScreen(const std::string& Whole, double Seconds = 20.0);
    // A visible cursor in that place, counted from 0.
    testing::AssertionResult ShowsCursorAt(int Column, int Row, double Seconds = 20.0);
    testing::AssertionResult ExitsWith(int Status, double Seconds = 30.0);

    // Reads the terminal for that long, for what must not happen.
    void Watch(double Seconds);

    // The rows of the screen without trailing blanks, each with a newline; empty rows at the end
    // are left out. History comes before it: what has scrolled off the top.
    std::string Screen() const;
    std::string HistoryAndScreen() const;

    // Everything that came out, byte for byte.
    const std::string& Output() const { return Received; }

    // The terminal's own settings: now, and before the program started.
    termios Settings() const;
    const termios& SettingsAtFirst() const { return AtFirst; }

    // Whether what comes next is drawn as a shell expects it: without emphasis, at a visible
    // cursor, and not on the alternate screen.
    bool DrawsAsAtFirst() const;

    pid_t ProcessId() const { return Child; }

private:
    void StartProgram(const Setting& Wanted);
    bool ReadOnce(double Seconds);
    bool HasExited();
    template <typename Condition>
    bool WaitUntil(double Seconds, Condition Holds);
    std::string RowText(int Row) const;
    static int KeepProperty(VTermProp Property, VTermValue* Value, void* Self);
    static int KeepScrolledLine(int Columns, const VTermScreenCell* Cells, void* Self);

    int Columns;
    int Rows;
    int Terminal = -1;
    termios AtFirst{};
    pid_t Child = -1;
    bool bExited = false;
    // As a shell shows it: 128 + the signal's number for a program that a signal ended.
    int ExitStatus = -1;
    bool bCursorVisible = true;
    bool bAlternateScreen = false;
    VTerm* Emulator;
    VTermScreen* Cells;
    std::string Received;
    std::string History;
};

// True when both settings are the same in everything that a program can change.
bool SameTerminalSettings(const termios& First, const termios& Second);
