// What programs under a sanitizer are told where the sanitizer would be in the way of a test. Each
// function adds to the environment of a program; one that is under no sanitizer does not mind.

#pragma once

#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

using EnvironmentVariables = std::vector<std::pair<std::string, std::string>>;

// What whoever runs the tests has set stays.
inline void AddSanitizerOptions(EnvironmentVariables& Added, const std::string& Sanitizer,
                                const std::string& Options) {
    const std::string variable = Sanitizer + "_OPTIONS";
    const char* set = std::getenv(variable.c_str());
    Added.emplace_back(variable, (set == nullptr ? "" : std::string(set) + ":") + Options);
}

// A signal ends the program, instead of a report about it.
inline void LetSignalsEndIt(EnvironmentVariables& Added) {
    AddSanitizerOptions(Added, "ASAN", "handle_segv=0:handle_abort=0");
    AddSanitizerOptions(Added, "TSAN", "handle_segv=0:handle_abort=0");
}

// The address sanitizer insists on being loaded first, though a library that is preloaded comes
// between it and the program with a few calls only.
inline void LetLibrariesPrecedeIt(EnvironmentVariables& Added) {
    AddSanitizerOptions(Added, "ASAN", "verify_asan_link_order=0");
}

// Leaks cannot be looked for in a program that is traced, and the sanitizer would make it fail.
inline void LetItBeTraced(EnvironmentVariables& Added) {
    AddSanitizerOptions(Added, "ASAN", "detect_leaks=0");
}
