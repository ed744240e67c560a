// The transfers of one program: those that run, and those that have ended.

#pragma once

#include "transfer_run.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

struct ListedRun {
    // Different for every run of the list.
    std::uint64_t Id = 0;
    std::unique_ptr<TransferRun> Run;
    // In which order the jobs have begun, which is that of the engine's list; 0 before.
    std::uint64_t JobNumber = 0;
    // The list has noticed its end, whoever has brought that about.
    bool bEnded = false;
    // The same, and nobody else has taken notice yet.
    bool bNewEnd = false;

    bool IsOver() const { return Run->CurrentStage() == TransferRun::Stage::Over; }
    // Whether nothing goes on before somebody has said a word.
    bool WaitsForPerson() const;
};

// Threads: one.
class RunList {
public:
    using TimePoint = TransferRun::TimePoint;

    std::uint64_t Start(TransferRequest Request, TarvaneTransferPlan Plan,
                        const KnownDiscs& Discs = {});
    // The plan of a run that is over once more, with what is there already and the same left alone.
    std::uint64_t StartAgain(std::uint64_t Id);

    // The yes to what was found before the job.
    void GoOn(std::uint64_t Id);

    void Attend(TimePoint Now);
    // How long to wait at most before the next Attend.
    std::chrono::microseconds LongestWait() const;

    // In the order in which they were started.
    std::vector<ListedRun>& All() { return Runs; }
    const std::vector<ListedRun>& All() const { return Runs; }
    // Null where there is none of that number.
    ListedRun* Find(std::uint64_t Id);
    std::size_t CountRunning() const;
    // The first that waits for a person.
    std::optional<std::uint64_t> FirstWaiting() const;

    // All are to end; they are over when their files are in order.
    void EndAll(int Signal);

private:
    void NumberJob(ListedRun& InOutListed);

    std::vector<ListedRun> Runs;
    std::uint64_t LastId = 0;
    std::uint64_t LastJobNumber = 0;
};
