#include "command_line.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <iterator>
#include <optional>
#include <span>
#include <string_view>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

#include "help_text.h"
#include "near_word.h"
#include "option_reader.h"
#include "quoted.h"
#include "tarvanepane.h"
#include "transfer_options.h"

namespace {

constexpr char kCommands[] = "the commands are copy, move, tracks and help";

// Gives each option to Apply, which returns what is wrong with it or nothing. Returns the text that
// one of them asks for.
template <typename ApplyOption>
std::optional<InformationText> ReadOptions(OptionReader& Options, const char* HelpText,
                                           const ApplyOption& Apply, UsageError& InOutMistakes) {
    std::vector<std::string>& mistakes = InOutMistakes.Sentences;
    while (const std::optional<TypedOption> typed = Options.Next()) {
        if (typed->Meaning == Option::Help && mistakes.empty()) {
            return InformationText{HelpText};
        }
        if (typed->Meaning == Option::Version && mistakes.empty()) {
            return InformationText{kVersionText};
        }
        const bool bMistake = typed->Meaning == Option::Mistake;
        if (std::string mistake = bMistake ? typed->Value : Apply(*typed); !mistake.empty()) {
            mistakes.push_back(std::move(mistake));
        }
    }
    return std::nullopt;
}

// Whoever knows other tools may have meant one of ours, too.
std::string MeantCommand(std::string_view Typed) {
    constexpr std::string_view kNames[] = {"copy", "move", "tracks", "help"};
    return Typed == "cp" ? "copy" : Typed == "mv" ? "move" : NearestWord(Typed, kNames);
}

UsageError OptionBeforeCommand(std::string_view Typed) {
    constexpr std::string_view kNames[] = {"--help", "--version"};
    const std::string meant = NearestWord(Typed, kNames);
    return {{"unrecognized option " + Quoted(Typed) + " before the command" +
             (meant.empty() ? "" : "; did you mean " + Quoted(meant) + "?")}};
}

UsageError UnknownCommand(std::string_view Typed) {
    const std::string meant = MeantCommand(Typed);
    return {{"unknown command " + Quoted(Typed) + "; " +
             (meant.empty() ? kCommands : "did you mean " + Quoted(meant) + "?")}};
}

bool IsEmptyName(const std::filesystem::path& Name) {
    return Name.empty();
}

void FindOperandMistakes(const TransferRequest& Request, UsageError& InOutMistakes) {
    const std::vector<std::filesystem::path>& operands = Request.Operands;
    std::vector<std::string>& mistakes = InOutMistakes.Sentences;
    if (Request.TargetDirectory && Request.bNoTargetDirectory) {
        mistakes.emplace_back(
            "cannot combine --target-directory (-t) and --no-target-directory (-T)");
    }
    if (std::ranges::any_of(operands, IsEmptyName) ||
        (Request.TargetDirectory && Request.TargetDirectory->empty())) {
        mistakes.emplace_back("a file name is empty");
    }
    if (operands.empty()) {
        mistakes.emplace_back("missing file operand");
    } else if (operands.size() == 1 && !Request.TargetDirectory) {
        mistakes.push_back("missing destination file operand after " +
                           Quoted(operands[0].native()));
    } else if (operands.size() > 2 && Request.bNoTargetDirectory && !Request.TargetDirectory) {
        mistakes.push_back("extra operand " + Quoted(operands[2].native()));
    }
}

CommandLine RequestUnless(UsageError Mistakes, CommandLine Request) {
    return Mistakes.Sentences.empty() ? std::move(Request) : CommandLine(std::move(Mistakes));
}

// Only root can give files away; others may ask for it, as they may ask cp.
void FinishPreserveChoice(bool bChosen, TransferRequest& InOutRequest) {
    PreserveChoice& preserve = InOutRequest.Preserve;
    if (!bChosen) {
        preserve = {.bMode = true, .bTimes = true, .bOwner = InOutRequest.bMove};
    }
    preserve.bOwner = preserve.bOwner && geteuid() == 0;
}

CommandLine ParseTransfer(Command Wanted, std::span<char*> Arguments) {
    PromptRequest request;
    request.Transfer.bMove = Wanted == Command::Move;
    OptionReader options(Wanted, Arguments);
    bool bPreserveChosen = false;
    const auto apply = [&](const TypedOption& Typed) {
        const bool bPreserve =
            Typed.Meaning == Option::Preserve || Typed.Meaning == Option::NoPreserve;
        bPreserveChosen = bPreserveChosen || bPreserve;
        return ApplyTransferOption(Typed, request);
    };
    UsageError mistakes;
    if (std::optional<InformationText> text = ReadOptions(options, kHelpText, apply, mistakes)) {
        return std::move(*text);
    }
    FinishPreserveChoice(bPreserveChosen, request.Transfer);
    const std::span<char* const> operands = options.Operands();
    request.Transfer.Operands.assign(operands.begin(), operands.end());
    FindOperandMistakes(request.Transfer, mistakes);
    return RequestUnless(std::move(mistakes), std::move(request));
}

CommandLine ParseTracks(std::span<char*> Arguments) {
    TracksRequest request;
    OptionReader options(Command::Tracks, Arguments);
    const auto apply = [&request](const TypedOption& Typed) {
        request.bJson = request.bJson || Typed.Meaning == Option::Json;
        return std::string();
    };
    UsageError mistakes;
    if (std::optional<InformationText> text =
            ReadOptions(options, kTracksHelpText, apply, mistakes)) {
        return std::move(*text);
    }
    const std::span<char* const> operands = options.Operands();
    if (!operands.empty()) {
        request.Device = operands.front();
    }
    if (operands.size() > 1) {
        mistakes.Sentences.emplace_back("more than one drive");
    } else if (!operands.empty() && request.Device.empty()) {
        mistakes.Sentences.emplace_back("the drive's name is empty");
    }
    return RequestUnless(std::move(mistakes), std::move(request));
}

CommandLine ParseHelp(std::span<char*> Topics) {
    if (Topics.size() > 1) {
        return UsageError{{"extra operand " + Quoted(Topics[1])}};
    }
    const std::string_view topic = Topics.empty() ? "help" : Topics[0];
    if (topic == "tracks") {
        return InformationText{kTracksHelpText};
    }
    constexpr std::string_view kTopicsOfOneText[] = {"copy", "move", "help", "-h", "--help"};
    if (std::ranges::find(kTopicsOfOneText, topic) != std::end(kTopicsOfOneText)) {
        return InformationText{kHelpText};
    }
    return UnknownCommand(topic);
}

// A word that is no command names a place if it is one, or cannot be a slip of the fingers.
bool IsMeantAsPlace(std::string_view Word) {
    std::error_code ec;
    return Word.find('/') != std::string_view::npos || TarvaneIsCddaPath(std::string(Word)) ||
           std::filesystem::is_directory(Word, ec);
}

CommandLine ParsePlaces(std::span<char*> Places) {
    if (Places.size() > 2) {
        return UsageError{{"extra operand " + Quoted(Places[2])}};
    }
    UsageError mistakes;
    for (const char* const place : Places) {
        std::error_code ec;
        if (!TarvaneIsCddaPath(place) && !std::filesystem::is_directory(place, ec)) {
            const auto reason = ec ? ec : std::make_error_code(std::errc::not_a_directory);
            mistakes.Sentences.push_back("cannot show " + Quoted(place) + ": " + reason.message());
        }
    }
    PanesRequest request;
    request.Left = Places.empty() ? request.Left : Places[0];
    request.Right = Places.size() < 2 ? request.Right : Places[1];
    return RequestUnless(std::move(mistakes), std::move(request));
}

} // namespace

CommandLine ParseCommandLine(int Argc, char** Argv) {
    if (Argc < 2) {
        return PanesRequest();
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
    if (command == "help") {
        return ParseHelp(arguments.subspan(1));
    }
    if (command == "--help" || command == "-h") {
        return InformationText{kHelpText};
    }
    if (command == "--version") {
        return InformationText{kVersionText};
    }
    if (command.starts_with('-')) {
        return OptionBeforeCommand(command);
    }
    return IsMeantAsPlace(command) ? ParsePlaces(arguments) : UnknownCommand(command);
}
