// Another program that has the terminal for a while.

#pragma once

#include "owned_descriptor.h"

#include <optional>
#include <string>
#include <termios.h>
#include <vector>

// The arguments that run Command, the value of a variable like PAGER, which may hold options, with
// a file whose name may hold any byte.
std::vector<std::string> ShellArguments(const std::string& Command, const std::string& File);

// Runs with its standard streams on the terminal, signals as a shell hands them on, in our process
// group: keys that send signals send them to both. Leave key mode and the screen before. The
// terminal gets the modes back that it had where a signal has ended the program.
//
// Threads: one thread makes, uses and destroys it.
class ForegroundProgram {
public:
    // Starts at once. Requires: Arguments is not empty. Errors: std::runtime_error with a sentence.
    explicit ForegroundProgram(const std::vector<std::string>& Arguments);
    // Lets a program that still runs go on.
    ~ForegroundProgram() = default;

    // Becomes readable when it has ended; for poll.
    int OverFd() const { return Process.Get(); }
    // As a shell gives it, 128 + the signal's number for a program that a signal has ended; nothing
    // while it runs. Not to be called again once it has given one.
    std::optional<int> TakeExitStatus();
    // Asks it to end, as the program that has lent the terminal does. Does not wait.
    void Terminate() const;

private:
    OwnedDescriptor Process;
    std::optional<termios> ModesBefore;
};
