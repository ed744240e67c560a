// The arguments of the program, each up to a zero byte.

#include <algorithm>
#include <string>
#include <variant>
#include <vector>

#include "command_line.h"
#include "fuzz_target.h"
#include "screen_text.h"

namespace {

using Strings = std::vector<std::string>;

Strings ArgumentsIn(std::string_view Input) {
    Strings arguments{"tarvane"};
    for (InputReader reader(Input); !reader.IsAtEnd();) {
        arguments.push_back(reader.Name());
    }
    return arguments;
}

CommandLine Parse(Strings Arguments) {
    std::vector<char*> pointers;
    for (std::string& argument : Arguments) {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);
    const std::vector<char*> before = pointers;
    CommandLine parsed = ParseCommandLine(static_cast<int>(Arguments.size()), pointers.data());
    Expect(pointers.back() == nullptr && std::ranges::is_permutation(pointers, before),
           "arguments change nothing but their places");
    return parsed;
}

bool IsAmong(const Strings& Arguments, const std::string& Name) {
    return std::ranges::find(Arguments, Name) != Arguments.end();
}

void Check(const PanesRequest& Request, const Strings& Arguments) {
    for (const std::filesystem::path& place : {Request.Left, Request.Right}) {
        Expect(place == "." || IsAmong(Arguments, place), "a place was typed");
    }
}

void Check(const PromptRequest& Request, const Strings& Arguments) {
    const TransferRequest& transfer = Request.Transfer;
    const std::size_t fewest = transfer.TargetDirectory ? 1 : 2;
    Expect(transfer.Operands.size() >= fewest, "a transfer has a source and a destination");
    Expect(!transfer.TargetDirectory || !transfer.bNoTargetDirectory,
           "options that contradict each other are refused");
    for (const std::filesystem::path& operand : transfer.Operands) {
        Expect(!operand.empty() && IsAmong(Arguments, operand), "an operand is what was typed");
    }
    Expect(!DestinationOf(transfer).empty(), "there is a destination");
    Expect(Request.IntervalSeconds >= 0.1 && Request.IntervalSeconds <= 3600.0,
           "the time between two lines is one that is offered");
}

void Check(const TracksRequest& Request, const Strings& Arguments) {
    Expect(Request.Device.empty() || IsAmong(Arguments, Request.Device), "a drive was typed");
}

void Check(const InformationText& Information, const Strings&) {
    Expect(Information.Text.ends_with('\n'), "what is told is a text");
}

void Check(const UsageError& Mistakes, const Strings&) {
    Expect(!Mistakes.Sentences.empty(), "a refusal has a reason");
    for (const std::string& sentence : Mistakes.Sentences) {
        Expect(!sentence.empty() && !sentence.ends_with('.'), "a reason is a sentence");
        ExpectClean(CleanForScreen(sentence));
    }
}

} // namespace

void RunInput(std::string_view Input) {
    const Strings arguments = ArgumentsIn(Input);
    const CommandLine parsed = Parse(arguments);
    std::visit([&](const auto& Meant) { Check(Meant, arguments); }, parsed);
    // The library's reader of options has a state, and one that is left behind would show.
    Expect(Parse(arguments).index() == parsed.index(), "the same means the same");
}
