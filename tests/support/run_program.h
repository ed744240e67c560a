// Runs a real program through pipes, as a script does.

#pragma once

#include <string>
#include <utility>
#include <vector>

struct ProgramResult {
    // As a shell shows it: 128 + the signal's number for a program that a signal ended.
    int Status = -1;
    std::string Output;
    std::string Errors;
};

// Runs Command with standard input from /dev/null until it ends. Environment adds variables; an
// empty value removes one.
// Errors: throws std::system_error when it cannot be started; a program that runs longer than
// LimitSeconds is killed, which shows as status 137.
ProgramResult RunProgram(const std::vector<std::string>& Command,
                         const std::string& WorkingDirectory = "",
                         const std::vector<std::pair<std::string, std::string>>& Environment = {},
                         double LimitSeconds = 60.0);
