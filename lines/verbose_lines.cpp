#include "verbose_lines.h"

#include "screen_text.h"

#include <algorithm>

namespace {

std::string Octal(char Byte) {
    const auto value = static_cast<unsigned char>(Byte);
    std::string text = "\\";
    for (const int shift : {6, 3, 0}) {
        text += static_cast<char>('0' + ((value >> shift) & 7));
    }
    return text;
}

std::string Escaped(std::string_view Bytes) {
    std::string text;
    for (const char byte : Bytes) {
        text += byte == '\n' ? "\\n" : byte == '\t' ? "\\t" : Octal(byte);
    }
    return text;
}

std::string FromTo(const std::string& Source, const std::string& Destination) {
    return QuotedForShell(Source) + " -> " + QuotedForShell(Destination);
}

std::string OutcomeText(const SettledConflict& Settled) {
    switch (Settled.Outcome) {
    case ConflictOutcome::Replaced:
        return "replaced";
    case ConflictOutcome::Merged:
        return "merged";
    case ConflictOutcome::Renamed:
        return "renamed to " + QuotedForShell(Settled.Answered.RenamePath);
    case ConflictOutcome::Skipped:
        return "skipped";
    case ConflictOutcome::Unfinished:
        return "unfinished";
    }
    return {};
}

} // namespace

std::string QuotedForShell(std::string_view Text) {
    std::string quoted = "'";
    bool bEscaping = false;
    while (!Text.empty()) {
        const std::size_t length = std::max<std::size_t>(Utf8SequenceLength(Text), 1);
        const std::string_view character = Text.substr(0, length);
        const bool bPrintable = CleanForScreen(character) == character;
        if (bPrintable == bEscaping) {
            quoted += bPrintable ? "''" : "'$'";
            bEscaping = !bPrintable;
        }
        if (bPrintable) {
            quoted += character == "'" ? "'\\''" : std::string(character);
        } else {
            quoted += Escaped(character);
        }
        Text.remove_prefix(length);
    }
    return quoted + "'";
}

std::string VerboseLine(const TarvaneTransferItemPlan& Item) {
    return FromTo(Item.SourcePath.native(), Item.DestinationPath.native());
}

std::string VerboseLine(const SettledConflict& Settled) {
    const AnsweredConflict& answer = Settled.Answered;
    return FromTo(answer.Conflict.SourcePath, answer.Conflict.DestinationPath) + ": " +
           OutcomeText(Settled);
}
