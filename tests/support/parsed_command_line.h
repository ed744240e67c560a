// What the parser makes of the words behind the program's name.

#pragma once

#include "command_line.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <variant>
#include <vector>

using Words = std::vector<std::string>;

inline CommandLine Parse(Words Arguments) {
    Arguments.insert(Arguments.begin(), "tarvane");
    std::vector<char*> argv;
    for (std::string& argument : Arguments) {
        argv.push_back(argument.data());
    }
    argv.push_back(nullptr);
    return ParseCommandLine(static_cast<int>(Arguments.size()), argv.data());
}

// What Arguments are parsed to; a default one, after a failed expectation, when it is no Kind.
template <typename Kind>
Kind ParsedAs(const Words& Arguments) {
    const CommandLine line = Parse(Arguments);
    const auto* parsed = std::get_if<Kind>(&line);
    const auto* error = std::get_if<UsageError>(&line);
    EXPECT_NE(parsed, nullptr) << (error != nullptr ? error->Sentences.front() : "no usage error");
    return parsed != nullptr ? *parsed : Kind{};
}

inline PromptRequest WholeRequest(const Words& Arguments) {
    return ParsedAs<PromptRequest>(Arguments);
}

inline TransferRequest Request(const Words& Arguments) {
    return WholeRequest(Arguments).Transfer;
}

inline Words Operands(const Words& Arguments) {
    Words names;
    for (const std::filesystem::path& operand : Request(Arguments).Operands) {
        names.push_back(operand.native());
    }
    return names;
}

// The places for the left pane and for the right one.
inline Words Panes(const Words& Arguments) {
    const PanesRequest request = ParsedAs<PanesRequest>(Arguments);
    return {request.Left.native(), request.Right.native()};
}

// Of `tracks` with Arguments behind it.
inline TracksRequest Tracks(Words Arguments) {
    Arguments.insert(Arguments.begin(), "tracks");
    return ParsedAs<TracksRequest>(Arguments);
}

inline std::string Information(const Words& Arguments) {
    return ParsedAs<InformationText>(Arguments).Text;
}

inline Words Mistakes(const Words& Arguments) {
    return ParsedAs<UsageError>(Arguments).Sentences;
}

// The only one that there is.
inline std::string Mistake(const Words& Arguments) {
    const Words mistakes = Mistakes(Arguments);
    EXPECT_EQ(mistakes.size(), 1U) << (mistakes.size() > 1 ? mistakes[1] : "");
    return mistakes.empty() ? std::string() : mistakes[0];
}
