#include "facts.h"

#include <cstdio>
#include <functional>

std::string Shown(const std::string& Bytes) {
    std::string shown;
    for (const char byte : Bytes) {
        if (byte >= ' ' && byte <= '~') {
            shown += byte;
            continue;
        }
        char escape[5];
        std::snprintf(escape, sizeof escape, "\\x%02x", static_cast<unsigned>(byte) & 0xffU);
        shown += escape;
    }
    return shown;
}

std::string FileFact(const std::string& Contents) {
    constexpr std::size_t kShownWhole = 32;
    if (Contents.size() <= kShownWhole) {
        return "file '" + Contents + "'";
    }
    return "file of " + std::to_string(Contents.size()) + " bytes, hash " +
           std::to_string(std::hash<std::string>()(Contents));
}

namespace {

std::string SideFact(const std::string& Path, bool bDirectory, bool bHasSize, std::uint64_t Size,
                     bool bHasTime) {
    return "'" + Path + "'" + (bDirectory ? " directory" : "") +
           (bHasSize ? " of " + std::to_string(Size) + " bytes" : "") + (bHasTime ? " timed" : "");
}

} // namespace

std::string QuestionFact(const TarvaneTransferConflict& Question) {
    const bool bNewer = Question.SourceModifiedTicks > Question.DestinationModifiedTicks;
    return std::string(Question.Kind == TarvaneTransferConflictKind::Directory ? "directory "
                                                                               : "file ") +
           SideFact(Question.SourcePath, Question.bSourceDirectory, Question.bSourceHasSize,
                    Question.SourceSizeBytes, Question.bSourceHasModifiedTime) +
           (bNewer ? " newer than " : " onto ") +
           SideFact(Question.DestinationPath, Question.bDestinationDirectory,
                    Question.bDestinationHasSize, Question.DestinationSizeBytes,
                    Question.bDestinationHasModifiedTime);
}

std::string Differences(const Facts& Expected, const Facts& Actual) {
    constexpr int kMost = 8;
    std::string lines;
    int count = 0;
    Facts names = Expected;
    names.insert(Actual.begin(), Actual.end());
    for (const auto& [name, value] : names) {
        const auto expected = Expected.find(name);
        const auto actual = Actual.find(name);
        const auto shown = [](const Facts& Of, Facts::const_iterator At) {
            return At == Of.end() ? "nothing" : Shown(At->second);
        };
        const bool bSame = expected != Expected.end() && actual != Actual.end() &&
                           expected->second == actual->second;
        if (!bSame && ++count <= kMost) {
            lines += "    " + Shown(name) + ": expected " + shown(Expected, expected) + ", is " +
                     shown(Actual, actual) + "\n";
        }
    }
    return lines;
}
