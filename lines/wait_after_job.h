// What the waits after a job have in common.

#pragma once

#include <csignal>

#include "interface_loop.h"
#include "prompt_context.h"
#include "reporter.h"

// Esc asks for the end, as it does during the job.
class WaitAfterJob : public Activity {
public:
    explicit WaitAfterJob(const PromptContext& ContextToUse) : Context(ContextToUse) {}

    void TakeKey(const KeyPress& Key) override {
        if (Key.Code == KeyCode::Escape) {
            Context.Loop.Requests().Interrupt();
        }
    }

protected:
    // What the user and the system want; the end, too, when nobody reads what is reported.
    EndRequest& Requests() {
        EndRequest& requests = Context.Loop.Requests();
        if (Context.Report.IsBroken() && !requests.IsAsked()) {
            requests.Terminate(SIGPIPE, Context.Loop.Now());
        }
        return requests;
    }

    const PromptContext& Context;
};
