// The options of `tarvane copy` and `tarvane move`.

#pragma once

#include <optional>
#include <span>
#include <string>
#include <utility>

#include "command_line.h"

template <typename Choice>
using NamedChoices = std::span<const std::pair<const char*, Choice>>;

// Reads the options in their order, the last one of a kind deciding; the first mistake ends it.
class OptionReader {
public:
    explicit OptionReader(bool bMove) { Request.Transfer.bMove = bMove; }

    // Argv[0] is the command. Returns the index of the first operand; operands are moved behind
    // the options for it.
    int Read(int Argc, char** Argv);

    // Without the operands.
    LineRequest Request;
    // The answer to --help or --version, or a mistake. Request then counts for nothing.
    std::optional<CommandLine> Answer;

private:
    void Apply(int Code, bool bLong);
    // The options that take a value or answer with a text.
    void ApplyWithText(int Code);

    void ReadTargetDirectory();
    // A copy takes -r for the habit's sake: directories are always copied whole. mv knows none.
    void AcceptRecursive(int Code, bool bLong);
    template <typename Choice>
    void ReadChoice(int Code, NamedChoices<Choice> Choices, Choice& Out);
    void ReadInterval();
    void Refuse(std::string Sentence) { Answer = UsageError{std::move(Sentence)}; }
};
