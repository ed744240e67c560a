// One transfer at one moment, as the progress dialog shows it.

#pragma once

#include "progress_texts.h"
#include "progress_watch.h"
#include "rate_graph.h"
#include "run_outcome.h"
#include "tarvanetransfer.h"

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

// The sources are looked through.
struct LookingScene {
    std::uint64_t EntriesSeen = 0;
};

struct CopyingScene {
    TarvaneTransferUiSnapshot Snapshot;
    ProgressClaims Claims;
};

// Modes and dates are set.
struct FinishingScene {
    FinishProgress Progress;
};

struct FlushingScene {
    FlushProgress Progress;
};

struct OverScene {
    RunResult Result = RunResult::Failed;
    // All that is to be said at the end.
    std::vector<std::string> Lines;
    // As the job was at its end; nothing when there was none.
    std::optional<CopyingScene> Job = {};

    bool CanRunAgain() const {
        return Result == RunResult::Failed || Result == RunResult::Canceled;
    }
};

// None of its texts is cleaned for a screen.
struct ProgressScene {
    // "Copy: /home/u/Music".
    std::string Title;
    std::variant<LookingScene, CopyingScene, FinishingScene, FlushingScene, OverScene> Moment;
    // Null for none. Outlives the scene.
    const RateHistory* Rates = nullptr;
    // The transfer goes on only when somebody answers.
    bool bQuestionWaits = false;
    // It does not need anybody, but another one does.
    bool bOtherQuestionWaits = false;

    bool IsOver() const { return std::holds_alternative<OverScene>(Moment); }
};
