#include "progress_parts.h"

#include "screen_text.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace {

// "Current: " and the longest path that the engine writes.
constexpr int kWidestPath = 97;

constexpr char kQuestion[] = "This transfer waits for an answer: press a.";
constexpr char kOtherQuestion[] = "Another transfer waits for an answer: press a.";
constexpr char kRunAgain[] = "Run again leaves alone what is already there and the same.";

using Parts = std::vector<ProgressPart>;

ProgressPart LinesPart(int Importance, std::vector<std::string> Lines, CellRole Role) {
    const int rows = static_cast<int>(Lines.size());
    return {Importance, rows, [lines = std::move(Lines), Role](Screen& On, const Area& Where) {
                DrawLines(On, Where, lines, Role);
            }};
}

ProgressPart WordsPart(int Importance, const std::string& Text, int Columns,
                       CellRole Role = CellRole::Dialog) {
    if (Text.empty()) {
        return LinesPart(Importance, {}, Role);
    }
    return LinesPart(Importance, WrapAtWords(CleanForScreen(Text), Columns), Role);
}

// As high as the longest path would be, so that nothing below it moves from file to file.
ProgressPart PathPart(int Importance, const std::string& Text, int Columns) {
    std::vector<std::string> lines = WrapAtColumns(CleanForScreen(Text), Columns);
    const auto rows = static_cast<std::size_t>((kWidestPath + Columns - 1) / Columns);
    lines.resize(std::max(lines.size(), rows));
    return LinesPart(Importance, std::move(lines), CellRole::Dialog);
}

ProgressPart BarPart(int Importance, int Percent) {
    return {Importance, 1, [Percent](Screen& On, const Area& Where) {
                DrawBar(On, Where.Column, Where.Row, Where.Columns, Percent);
            }};
}

ProgressPart BlankPart(int Importance) {
    return {Importance, 1, [](Screen&, const Area&) {}};
}

ProgressPart GraphPart(int Importance, const RateHistory* Rates, int Rows) {
    return {Importance, Rates == nullptr ? 0 : Rows, [Rates](Screen& On, const Area& Where) {
                if (Rates != nullptr) {
                    DrawRateGraph(On, Where, *Rates);
                }
            }};
}

Parts JobParts(const CopyingScene& Job, const RateHistory* Rates, int Columns, int GraphRows) {
    const TarvaneTransferUiSnapshot& snapshot = Job.Snapshot;
    const bool bFailed = snapshot.bFinished && !snapshot.bSucceeded && !snapshot.bCanceled;
    const std::string hint = snapshot.bFinished ? std::string() : snapshot.HintText;
    return {
        WordsPart(10, snapshot.StageText, Columns, bFailed ? CellRole::Warning : CellRole::Dialog),
        PathPart(6, snapshot.PathText, Columns),
        BlankPart(1),
        WordsPart(9, snapshot.OverallText, Columns),
        BarPart(14, Job.Claims.Percent),
        WordsPart(3, "Current file", Columns),
        BarPart(4, FilePercent(snapshot, Job.Claims)),
        WordsPart(13, snapshot.IoText, Columns),
        GraphPart(5, Rates, GraphRows),
        WordsPart(12, StalledText(Job.Claims), Columns, CellRole::Warning),
        WordsPart(11, WrongTotalsText(Job.Claims), Columns, CellRole::Warning),
        BlankPart(0),
        WordsPart(8, hint, Columns),
    };
}

// What is beside the job: a text, what is known of how far it is, and what Esc does.
Parts WaitParts(const std::string& Text, std::optional<int> Percent, const char* Hint,
                int Columns) {
    Parts parts = {WordsPart(3, Text, Columns)};
    if (Percent) {
        parts.push_back(BarPart(2, *Percent));
    }
    parts.push_back(BlankPart(0));
    parts.push_back(WordsPart(1, Hint, Columns));
    return parts;
}

std::optional<int> PercentOf(const FinishProgress& Progress) {
    if (Progress.Total == 0) {
        return std::nullopt;
    }
    return static_cast<int>(std::min(Progress.Done, Progress.Total) * 100 / Progress.Total);
}

struct PartsOfMoment {
    const RateHistory* Rates;
    int Columns;
    int GraphRows;

    Parts operator()(const LookingScene& Scene) const {
        return WaitParts(PreflightText(Scene.EntriesSeen), {}, kPreflightHint, Columns);
    }
    Parts operator()(const CopyingScene& Scene) const {
        return JobParts(Scene, Rates, Columns, GraphRows);
    }
    Parts operator()(const FinishingScene& Scene) const {
        return WaitParts(FinishText(Scene.Progress), PercentOf(Scene.Progress), kFinishHint,
                         Columns);
    }
    Parts operator()(const FlushingScene& Scene) const {
        return WaitParts(FlushText(Scene.Progress), {}, kFlushHint, Columns);
    }
    Parts operator()(const OverScene& Scene) const {
        return Scene.Job ? JobParts(*Scene.Job, Rates, Columns, GraphRows) : Parts();
    }
};

} // namespace

std::vector<ProgressPart> PartsOf(const ProgressScene& Scene, int Columns, int GraphRows) {
    return std::visit(PartsOfMoment{Scene.Rates, Columns, GraphRows}, Scene.Moment);
}

ProgressPart FootOf(const ProgressScene& Scene, int Columns) {
    const auto* over = std::get_if<OverScene>(&Scene.Moment);
    const bool bCanRunAgain = over != nullptr && over->CanRunAgain();
    if (Scene.bQuestionWaits || Scene.bOtherQuestionWaits) {
        return WordsPart(0, Scene.bQuestionWaits ? kQuestion : kOtherQuestion, Columns,
                         CellRole::Warning);
    }
    return WordsPart(0, bCanRunAgain ? kRunAgain : "", Columns);
}

int RowsOf(const std::vector<ProgressPart>& Parts) {
    int rows = 0;
    for (const ProgressPart& part : Parts) {
        rows += part.Rows;
    }
    return rows;
}

std::vector<ProgressPart> FitToRows(std::vector<ProgressPart> Parts, int Rows) {
    while (RowsOf(Parts) > Rows) {
        Parts.erase(std::ranges::min_element(Parts, {}, &ProgressPart::Importance));
    }
    return Parts;
}

std::vector<std::string> EndLinesOf(const ProgressScene& Scene, int Columns) {
    std::vector<std::string> lines;
    const auto* over = std::get_if<OverScene>(&Scene.Moment);
    if (over == nullptr) {
        return lines;
    }
    for (const std::string& line : over->Lines) {
        std::ranges::move(WrapAtWords(CleanForScreen(line), Columns), std::back_inserter(lines));
    }
    return lines;
}

void DrawLines(Screen& On, const Area& Where, const std::vector<std::string>& CleanLines,
               CellRole Role) {
    int row = Where.Row;
    for (const std::string& line : CleanLines) {
        On.Put(Where.Column, row, line, Role);
        ++row;
    }
}
