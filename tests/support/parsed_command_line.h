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

// The request, or a default one after a failed expectation.
inline LineRequest WholeRequest(const Words& Arguments) {
    const CommandLine line = Parse(Arguments);
    const auto* request = std::get_if<LineRequest>(&line);
    if (const auto* error = std::get_if<UsageError>(&line)) {
        ADD_FAILURE() << error->Sentence;
    }
    EXPECT_NE(request, nullptr);
    return request != nullptr ? *request : LineRequest{};
}

inline TransferRequest Request(const Words& Arguments) {
    return WholeRequest(Arguments).Transfer;
}

// The usage sentence, or an empty text after a failed expectation.
inline std::string Mistake(const Words& Arguments) {
    const CommandLine line = Parse(Arguments);
    const auto* error = std::get_if<UsageError>(&line);
    EXPECT_NE(error, nullptr) << "no usage error";
    return error != nullptr ? error->Sentence : "";
}

inline Words Operands(const Words& Arguments) {
    Words names;
    for (const std::filesystem::path& operand : Request(Arguments).Operands) {
        names.push_back(operand.native());
    }
    return names;
}
