// The exit statuses of the program.

#pragma once

#include "run_outcome.h"

inline constexpr int kExitDone = 0;
inline constexpr int kExitFailed = 1;
inline constexpr int kExitUsage = 2;
// As shells show a program that a signal has ended: this and the signal's number.
inline constexpr int kExitBySignal = 128;
// The end by SIGINT, which Esc stands for too.
inline constexpr int kExitCanceled = 130;

inline int ExitStatusOf(const RunOutcome& Outcome) {
    if (Outcome.EndSignal) {
        return kExitBySignal + *Outcome.EndSignal;
    }
    switch (Outcome.Result) {
    case RunResult::Succeeded:
        return kExitDone;
    case RunResult::Failed:
        return kExitFailed;
    case RunResult::Canceled:
        return kExitCanceled;
    case RunResult::WrongUsage:
        return kExitUsage;
    }
    return kExitFailed;
}
