#include "command_line.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "help_text.h"
#include "option_reader.h"
#include "quoted.h"
#include "transfer_options.h"

namespace {

constexpr char kCommands[] = "the commands are copy, move and tracks";

// Gives each option to Apply, which returns what is wrong with it or nothing. Returns what ends the
// reading before the operands are looked at.
template <typename ApplyOption>
std::optional<CommandLine> ReadOptions(OptionReader& Options, const char* HelpText,
                                       const ApplyOption& Apply) {
    while (const std::optional<TypedOption> typed = Options.Next()) {
        if (typed->Meaning == Option::Help) {
            return InformationText{HelpText};
        }
        if (typed->Meaning == Option::Version) {
            return InformationText{kVersionText};
        }
        if (std::string mistake = Apply(*typed); !mistake.empty()) {
            return UsageError{std::move(mistake)};
        }
    }
    if (!Options.Mistake().empty()) {
        return UsageError{Options.Mistake()};
    }
    return std::nullopt;
}

bool IsEmptyName(const std::filesystem::path& Name) {
    return Name.empty();
}

std::optional<UsageError> FindOperandMistake(const TransferRequest& Request) {
    const std::vector<std::filesystem::path>& operands = Request.Operands;
    if (Request.TargetDirectory && Request.bNoTargetDirectory) {
        return UsageError{"cannot combine --target-directory (-t) and --no-target-directory (-T)"};
    }
    if (operands.empty()) {
        return UsageError{"missing file operand"};
    }
    if (std::ranges::any_of(operands, IsEmptyName) ||
        (Request.TargetDirectory && Request.TargetDirectory->empty())) {
        return UsageError{"a file name is empty"};
    }
    if (Request.TargetDirectory) {
        return std::nullopt;
    }
    if (operands.size() == 1) {
        return UsageError{"missing destination file operand after " + Quoted(operands[0].native())};
    }
    if (Request.bNoTargetDirectory && operands.size() > 2) {
        return UsageError{"extra operand " + Quoted(operands[2].native())};
    }
    return std::nullopt;
}

CommandLine ParseTransfer(Command Wanted, std::span<char*> Arguments) {
    PromptRequest request;
    request.Transfer.bMove = Wanted == Command::Move;
    OptionReader options(Wanted, Arguments);
    const auto apply = [&request](const TypedOption& Typed) {
        return ApplyTransferOption(Typed, request);
    };
    if (std::optional<CommandLine> end = ReadOptions(options, kHelpText, apply)) {
        return std::move(*end);
    }
    const std::span<char* const> operands = options.Operands();
    request.Transfer.Operands.assign(operands.begin(), operands.end());
    if (std::optional<UsageError> mistake = FindOperandMistake(request.Transfer)) {
        return std::move(*mistake);
    }
    return request;
}

CommandLine ParseTracks(std::span<char*> Arguments) {
    TracksRequest request;
    OptionReader options(Command::Tracks, Arguments);
    const auto apply = [&request](const TypedOption& Typed) {
        request.bJson = request.bJson || Typed.Meaning == Option::Json;
        return std::string();
    };
    if (std::optional<CommandLine> end = ReadOptions(options, kTracksHelpText, apply)) {
        return std::move(*end);
    }
    const std::span<char* const> operands = options.Operands();
    if (operands.size() > 1) {
        return UsageError{"more than one drive"};
    }
    if (!operands.empty()) {
        request.Device = operands.front();
        if (request.Device.empty()) {
            return UsageError{"the drive's name is empty"};
        }
    }
    return request;
}

} // namespace

CommandLine ParseCommandLine(int Argc, char** Argv) {
    if (Argc < 2) {
        return UsageError{std::string("missing command; ") + kCommands};
    }
    const std::string_view command = Argv[1];
    const auto arguments = std::span(Argv, static_cast<std::size_t>(Argc)).subspan(1);
    if (command == "copy") {
        return ParseTransfer(Command::Copy, arguments);
    }
    if (command == "move") {
        return ParseTransfer(Command::Move, arguments);
    }
    if (command == "tracks") {
        return ParseTracks(arguments);
    }
    if (command == "--help" || command == "-h") {
        return InformationText{kHelpText};
    }
    if (command == "--version") {
        return InformationText{kVersionText};
    }
    if (command.starts_with('-')) {
        return UsageError{"unrecognized option " + Quoted(command) + " before the command"};
    }
    return UsageError{"unknown command " + Quoted(command) + "; " + kCommands};
}
