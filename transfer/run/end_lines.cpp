#include "end_lines.h"

#include "finish_texts.h"
#include "progress_texts.h"

using Kind = EndLine::Kind;

std::vector<EndLine> JobEndLines(const TransferRequest& Request, const RunOutcome& Outcome) {
    const FinishResult finishing = Outcome.Finishing.value_or(FinishResult());
    std::vector<EndLine> lines;
    if (Outcome.Result == RunResult::Failed) {
        lines.push_back(
            {Kind::Problem, Outcome.Text + (finishing.FirstChanged.empty() ? "" : ":")});
        for (const std::string& path : finishing.FirstChanged) {
            lines.push_back({Kind::Detail, "  " + path});
        }
    } else {
        lines.push_back({Kind::Done, Outcome.Text});
    }
    if (finishing.Unreached > 0) {
        lines.push_back(
            {Kind::Problem, UnreachedText(finishing.Unreached, Request.Preserve.bMode)});
    }
    if (Outcome.Counts && Outcome.Result != RunResult::Succeeded) {
        lines.push_back({Kind::Done, CountsText(*Outcome.Counts, Request.bMove)});
    }
    if (const std::string remark = FinishRemark(finishing); !remark.empty()) {
        lines.push_back({Kind::Done, remark});
    }
    return lines;
}

std::vector<EndLine> FlushEndLines(const RunOutcome& Outcome) {
    if (!Outcome.FlushError.empty()) {
        return {{Kind::Problem, Outcome.FlushError}};
    }
    if (Outcome.bFlushed) {
        return {{Kind::Done, Outcome.FlushText}};
    }
    return {};
}
