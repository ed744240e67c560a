#include "command_line.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "help_text.h"
#include "option_reader.h"
#include "quoted.h"

namespace {

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

CommandLine ParseTransfer(bool bMove, int Argc, char** Argv) {
    OptionReader reader(bMove);
    const int firstOperand = reader.Read(Argc, Argv);
    if (reader.Answer) {
        return *reader.Answer;
    }
    LineRequest request = std::move(reader.Request);
    request.Transfer.Operands.assign(Argv + firstOperand, Argv + Argc);
    if (const std::optional<UsageError> mistake = FindOperandMistake(request.Transfer)) {
        return *mistake;
    }
    return request;
}

} // namespace

CommandLine ParseCommandLine(int Argc, char** Argv) {
    if (Argc < 2) {
        return UsageError{"missing command; the commands are copy, move and tracks"};
    }
    const std::string_view command = Argv[1];
    if (command == "copy" || command == "move") {
        return ParseTransfer(command == "move", Argc - 1, Argv + 1);
    }
    if (command == "--help") {
        return InformationText{kHelpText};
    }
    if (command == "--version") {
        return InformationText{kVersionText};
    }
    if (command.starts_with('-')) {
        return UsageError{"unrecognized option " + Quoted(command) + " before the command"};
    }
    return UsageError{"unknown command " + Quoted(command) +
                      "; the commands are copy, move and tracks"};
}
