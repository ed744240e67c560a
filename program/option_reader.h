// The options of every command, read by getopt_long and refused in our own words.

#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <getopt.h>

// Each is a bit, so that commands make a set.
enum class Command : unsigned {
    Copy = 1,
    Move = 2,
    Tracks = 4,
};

enum class Option {
    OnConflict,
    Update,
    OnDirectoryConflict,
    TargetDirectory,
    NoTargetDirectory,
    Progress,
    Interval,
    Quiet,
    Verbose,
    DryRun,
    NoPreflight,
    FollowLinks,
    Flush,
    Preserve,
    NoPreserve,
    Recursive,
    Json,
    Help,
    Version,
    // No option of the command.
    Mistake,
};

struct TypedOption {
    Option Meaning = Option::Help;
    // Empty for an option that takes none. For a mistake what is wrong: a sentence as UsageError
    // holds them.
    std::string Value;
};

// Reads the options of one command in their order, wherever they stand among the operands.
//
// Requires: no other reader at the same time, because getopt_long has one state for all.
class OptionReader {
public:
    // CommandArguments[0] is the name of the command, and a null pointer stands behind the last
    // one. They change places: what is no option moves to the end.
    OptionReader(Command CommandToRead, std::span<char*> CommandArguments);

    // Nothing behind the last option.
    std::optional<TypedOption> Next();

    // Requires: Next has returned nothing.
    std::span<char* const> Operands() const;

private:
    std::string SentenceForRefused(int Result) const;
    std::string SentenceForRefusedWord(const std::string& Argument) const;
    std::string NearOption(std::string_view Typed) const;

    Command Reading;
    std::span<char*> Arguments;
    // The command's options as getopt_long takes them.
    std::string Letters;
    std::vector<option> Words;
};
