#include "progress_lines.h"

namespace {

void AppendField(std::string& Line, const std::string& Field) {
    if (!Field.empty()) {
        Line += " | " + Field;
    }
}

} // namespace

std::string ProgressLine(const TarvaneTransferUiSnapshot& Snapshot, const ProgressClaims& Claims) {
    if (Snapshot.TotalItems == 0) {
        return Snapshot.StageText;
    }
    std::string line = Snapshot.OverallText;
    AppendField(line, Snapshot.IoText);
    AppendField(line, StalledText(Claims));
    AppendField(line, MoreThanCountedText(Claims));
    if (Snapshot.bCancelRequested) {
        AppendField(line, Snapshot.HintText);
    }
    return line;
}
