#include "flush_phase.h"

#include "reporters.h"

#include "progress_texts.h"

#include <algorithm>
#include <csignal>

namespace {

// Nothing tells when a flush is over, and most are over soon.
constexpr std::chrono::microseconds kPause{20000};

bool IsToEnd(Prompt& Console, const Reporter& Output) {
    if (Output.IsBroken() && !Console.End().IsAsked()) {
        Console.End().Terminate(SIGPIPE, Prompt::Clock::now());
    }
    return Console.End().IsAsked();
}

// Returns the last look: unfinished when the wait was ended.
FlushProgress AwaitFlush(Flusher& Watch, Prompt& Console, Reporter& Output) {
    FlushProgress progress = Watch.Poll();
    while (!progress.bFinished && !IsToEnd(Console, Output)) {
        for (const KeyPress& key : Console.Wait(std::min(Console.UntilFrame(), kPause), -1)) {
            if (key.Code == KeyCode::Escape) {
                Console.End().Interrupt();
            }
        }
        progress = Watch.Poll();
        if (Console.TakeStatusRequest()) {
            Console.PrintLine(FlushText(progress));
        }
        if (Console.TakeFrame()) {
            Output.Flushing(progress);
        }
    }
    return progress;
}

} // namespace

void RunFlushPhase(Flusher& Watch, Prompt& Console, Reporter& Output, RunOutcome& Outcome) {
    if (IsToEnd(Console, Output)) {
        Outcome.bFlushed = false;
        return;
    }
    Watch.Start();
    const FlushProgress progress = AwaitFlush(Watch, Console, Output);
    Console.Clear();
    Outcome.bFlushed = progress.bFinished && progress.ErrorText.empty();
    if (!progress.bFinished) {
        Outcome.EndSignal = Console.End().Signal();
        return;
    }
    Output.Flushing(progress);
    if (!progress.ErrorText.empty()) {
        Outcome.Result = RunResult::Failed;
        Outcome.Text = progress.ErrorText;
    }
}
