// What the child of a fork becomes.

#pragma once

#include <csignal>
#include <cstdlib>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

// Environment adds variables; an empty value removes one. Ends with status 126 where there is no
// WorkingDirectory and with 127 where there is no such program, as a shell does. Signals that end
// programs do, also where the tests themselves ignore some, in the background or with nohup.
[[noreturn]] inline void
BecomeProgram(const std::vector<std::string>& Command, const std::string& WorkingDirectory,
              const std::vector<std::pair<std::string, std::string>>& Environment) {
    for (const auto& [name, value] : Environment) {
        if (value.empty()) {
            unsetenv(name.c_str());
        } else {
            setenv(name.c_str(), value.c_str(), 1);
        }
    }
    if (!WorkingDirectory.empty() && chdir(WorkingDirectory.c_str()) != 0) {
        _exit(126);
    }
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT}) {
        std::signal(signal, SIG_DFL);
    }
    std::vector<char*> arguments;
    for (const std::string& argument : Command) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    execvp(arguments[0], arguments.data());
    _exit(127);
}
