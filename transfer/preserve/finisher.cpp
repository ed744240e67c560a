#include "finisher.h"

#include "finish_walk.h"
#include "unrecorded.h"

#include <exception>
#include <utility>

Finisher::Finisher(FinishTask TaskToDo) : Task(std::move(TaskToDo)), Worker([this] { Work(); }) {}

// Memory for the reason may be missing too, which ends the program as it does everywhere else.
void Finisher::Work() noexcept {
    try {
        FinishWalk walk(Task, Outcome, Done);
        walk.Run(bCancel);
        if (!Outcome.bCanceled) {
            Outcome.StayPrivate = OpenUpUnrecorded(Task, walk.CopiesThere(), bCancel);
        }
    } catch (const std::exception& error) {
        Outcome.Broken = error.what();
    }
    Outcome.Unreached = Task.Record.Entries() - Done;
}
