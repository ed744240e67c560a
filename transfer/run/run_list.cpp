#include "run_list.h"

#include "run_again.h"

#include <algorithm>
#include <utility>

bool ListedRun::WaitsForPerson() const {
    return Run->CurrentStage() == TransferRun::Stage::Judged || Run->OpenQuestion().has_value();
}

std::uint64_t RunList::Start(TransferRequest Request, TarvaneTransferPlan Plan,
                             const KnownDiscs& Discs) {
    auto run = std::make_unique<TransferRun>(std::move(Request), std::move(Plan), Discs);
    Runs.push_back({.Id = ++LastId, .Run = std::move(run)});
    return LastId;
}

std::uint64_t RunList::StartAgain(std::uint64_t Id) {
    const TransferRun& run = *std::ranges::find(Runs, Id, &ListedRun::Id)->Run;
    return Start(RequestToRunAgain(run.Request()), run.Plan());
}

void RunList::GoOn(std::uint64_t Id) {
    ListedRun& listed = *std::ranges::find(Runs, Id, &ListedRun::Id);
    listed.Run->GoOn();
    NumberJob(listed);
}

// Right after each time that one may have begun, before another one does.
void RunList::NumberJob(ListedRun& InOutListed) {
    if (InOutListed.JobNumber == 0 && InOutListed.Run->Job() != nullptr) {
        InOutListed.JobNumber = ++LastJobNumber;
    }
}

void RunList::Attend(TimePoint Now) {
    for (ListedRun& listed : Runs) {
        if (!listed.bEnded) {
            listed.bEnded = listed.Run->Attend(Now);
            listed.bNewEnd = listed.bEnded;
            NumberJob(listed);
        }
    }
}

std::chrono::microseconds RunList::LongestWait() const {
    std::chrono::microseconds wait = std::chrono::hours(1);
    for (const ListedRun& listed : Runs) {
        if (!listed.IsOver()) {
            wait = std::min(wait, listed.Run->LongestWait());
        }
    }
    return wait;
}

ListedRun* RunList::Find(std::uint64_t Id) {
    const auto found = std::ranges::find(Runs, Id, &ListedRun::Id);
    return found == Runs.end() ? nullptr : &*found;
}

std::size_t RunList::CountRunning() const {
    return static_cast<std::size_t>(
        std::ranges::count_if(Runs, [](const ListedRun& Listed) { return !Listed.IsOver(); }));
}

std::optional<std::uint64_t> RunList::FirstWaiting() const {
    const auto waiting = std::ranges::find_if(Runs, &ListedRun::WaitsForPerson);
    return waiting == Runs.end() ? std::nullopt : std::optional(waiting->Id);
}

void RunList::EndAll(int Signal) {
    for (ListedRun& listed : Runs) {
        if (!listed.IsOver()) {
            listed.Run->EndBy(Signal);
        }
    }
}
