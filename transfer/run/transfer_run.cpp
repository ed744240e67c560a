#include "transfer_run.h"

#include <csignal>
#include <system_error>
#include <utility>

namespace {

// A run gives out no descriptor to wait on, so somebody has to come by.
constexpr std::chrono::milliseconds kBetweenLooks{20};

// Nobody writes them down.
constexpr bool kWantsTotals = false;
constexpr bool kTellsEachName = false;
constexpr bool kCanAsk = true;

} // namespace

TransferRun::TransferRun(TransferRequest Request, TarvaneTransferPlan PlanToRun,
                         const KnownDiscs& Discs)
    : Wanted(std::move(Request)), Planned(std::move(PlanToRun)) {
    try {
        Record = RecordFor(Wanted, Planned);
        Look.emplace(Wanted, Planned, Discs, kWantsTotals, Record.get());
    } catch (const std::system_error& error) {
        EndWith(EndWithoutRecord(error));
    }
}

bool TransferRun::Attend(TimePoint Now) {
    for (std::optional<Stage> before; before != At;) {
        before = At;
        AttendStage(Now);
    }
    return At == Stage::Over;
}

void TransferRun::AttendStage(TimePoint Now) {
    switch (At) {
    case Stage::Looking:
        if (Look->Attend()) {
            Judge();
        }
        return;
    case Stage::Copying:
        if (Copy->Attend()) {
            EndJob();
        }
        return;
    case Stage::Finishing:
        if (EndSignal) {
            Finish->EndBy(*EndSignal, Now);
        }
        if (Finish->Attend(Now)) {
            EndFinishing();
        }
        return;
    case Stage::Flushing:
        if (Flush->Attend()) {
            EndFlush(std::nullopt);
        }
        return;
    case Stage::Judged:
    case Stage::Over:
        return;
    }
}

void TransferRun::Enter(Stage Next) {
    At = Next;
    bCanceled = false;
}

void TransferRun::Judge() {
    if (const PreflightResult* const result = Look->Result()) {
        LookResult = *result;
    }
    Judgement = Look->Judge(kCanAsk);
    FoundForJob = Look->Found();
    SeenEntries = Look->EntriesSeen();
    Look.reset();
    switch (Judgement->Decision) {
    case PreflightVerdict::Kind::GoOn:
        StartJob();
        return;
    case PreflightVerdict::Kind::Ask:
        Enter(Stage::Judged);
        return;
    case PreflightVerdict::Kind::Stop:
        EndWith(Judgement->Outcome);
        return;
    }
}

void TransferRun::GoOn() {
    if (At == Stage::Judged) {
        StartJob();
    }
}

void TransferRun::StartJob() {
    Flush.emplace(Planned, DirectoriesToFlush(Planned, Wanted.Flush));
    if (Record) {
        Preparation.emplace(Wanted, Planned, *Record);
    }
    Copy.emplace(Wanted, Planned, std::move(FoundForJob), kTellsEachName,
                 Preparation ? &Preparation->Notes() : nullptr);
    Enter(Stage::Copying);
}

// A signal that ends programs decides the status even when the job was faster.
void TransferRun::EndJob() {
    End = Copy->Finish();
    if (EndSignal) {
        End.EndSignal = EndSignal;
    }
    if (!Record) {
        StartFlush();
        return;
    }
    Finish.emplace(Preparation->TaskAfter(End));
    Enter(Stage::Finishing);
}

void TransferRun::EndFinishing() {
    Finish->NoteEnd(End);
    Finished = Finish->Progress();
    Finish.reset();
    Record.reset();
    StartFlush();
}

void TransferRun::StartFlush() {
    JobLines = JobEndLines(Wanted, End);
    if (Flush->IsNeededAfter(End) && !EndSignal) {
        Flush->Start(End);
        Enter(Stage::Flushing);
        return;
    }
    if (Flush->IsNeededAfter(End)) {
        Flush->NoteLeftOut(End);
    }
    Flush.reset();
    Enter(Stage::Over);
}

void TransferRun::EndFlush(std::optional<int> EndedBy) {
    Flush->NoteEnd(EndedBy, End);
    Flushed = Flush->Progress();
    Flush.reset();
    Enter(Stage::Over);
}

// Before there was a job.
void TransferRun::EndWith(RunOutcome Outcome) {
    if (Look) {
        SeenEntries = Look->EntriesSeen();
        Look.reset();
    }
    Record.reset();
    End = std::move(Outcome);
    JobLines = JobEndLines(Wanted, End);
    Enter(Stage::Over);
}

void TransferRun::Cancel() {
    switch (At) {
    case Stage::Looking:
    case Stage::Judged:
        EndWith(CanceledBeforehand(EndSignal));
        return;
    case Stage::Copying:
        bCanceled = true;
        Copy->Cancel();
        return;
    case Stage::Finishing:
        bCanceled = true;
        Finish->Cancel();
        return;
    case Stage::Flushing:
        EndFlush(EndSignal.value_or(SIGINT));
        return;
    case Stage::Over:
        return;
    }
}

// The finishing may take the time that the signal leaves for it.
void TransferRun::EndBy(int Signal) {
    EndSignal = Signal;
    if (At != Stage::Finishing) {
        Cancel();
    }
}

std::chrono::microseconds TransferRun::LongestWait() const {
    switch (At) {
    case Stage::Copying:
        return Copy->LongestWait();
    case Stage::Looking:
    case Stage::Finishing:
    case Stage::Flushing:
        return kBetweenLooks;
    case Stage::Judged:
    case Stage::Over:
        break;
    }
    return std::chrono::hours(1);
}

std::uint64_t TransferRun::EntriesSeen() const {
    return Look ? Look->EntriesSeen() : SeenEntries;
}

JobView TransferRun::View(TimePoint Now) {
    return Copy ? Copy->View(Now) : JobView();
}

void TransferRun::Answer(std::uint64_t QuestionId, const ConflictAnswer& Answer) {
    if (Copy) {
        Copy->Answer(QuestionId, Answer);
    }
}

FinishProgress TransferRun::FinishingProgress() const {
    return Finish ? Finish->Progress() : Finished;
}

FlushProgress TransferRun::FlushingProgress() const {
    return Flush ? Flush->Progress() : Flushed;
}

std::vector<std::string> TransferRun::EndLines() const {
    std::vector<std::string> lines;
    for (const std::vector<EndLine>& part : {JobLines, FlushEndLines(End)}) {
        for (const EndLine& line : part) {
            lines.push_back(line.Text);
        }
    }
    return lines;
}
