#include "json_records.h"

#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;

// Escapes all but ASCII: somebody may look at the records on a terminal, which obeys more than the
// control characters of ASCII.
std::string Dump(const Json& Value) {
    constexpr int kOnOneLine = -1;
    constexpr bool kAscii = true;
    return Value.dump(kOnOneLine, ' ', kAscii, Json::error_handler_t::replace);
}

bool IsUtf8(const std::string& Text) {
    try {
        return !Json(Text).dump().empty();
    } catch (const Json::type_error&) {
        return false;
    }
}

std::string Hex(const std::string& Bytes) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (const char byte : Bytes) {
        const auto value = static_cast<unsigned char>(byte);
        text += {kDigits[value >> 4], kDigits[value & 15]};
    }
    return text;
}

Json Record(const char* Event) {
    return Json{{"event", Event}};
}

void Put(Json& Out, const std::string& Name, const std::string& Text) {
    Out[Name] = Text;
    if (!IsUtf8(Text)) {
        Out[Name + "_hex"] = Hex(Text);
    }
}

void PutOrNull(Json& Out, const std::string& Name, const std::string& Text) {
    if (Text.empty()) {
        Out[Name] = nullptr;
    } else {
        Put(Out, Name, Text);
    }
}

template <typename Number>
Json NumberOrNull(bool bKnown, Number Value) {
    return bKnown ? Json(Value) : Json(nullptr);
}

const char* AnswerName(TarvaneTransferConflictAction Action) {
    switch (Action) {
    case TarvaneTransferConflictAction::Merge:
        return "merge";
    case TarvaneTransferConflictAction::Skip:
        return "skip";
    case TarvaneTransferConflictAction::Overwrite:
        return "overwrite";
    case TarvaneTransferConflictAction::Rename:
        return "rename";
    case TarvaneTransferConflictAction::CompareByContent:
        return "compare";
    // The desk answers each name by itself.
    case TarvaneTransferConflictAction::MergeAll:
    case TarvaneTransferConflictAction::SkipAll:
    case TarvaneTransferConflictAction::OverwriteAll:
    case TarvaneTransferConflictAction::OverwriteAllOlder:
    case TarvaneTransferConflictAction::Cancel:
        break;
    }
    return "cancel";
}

const char* OutcomeName(ConflictOutcome Outcome) {
    switch (Outcome) {
    case ConflictOutcome::Replaced:
        return "replaced";
    case ConflictOutcome::Merged:
        return "merged";
    case ConflictOutcome::Renamed:
        return "renamed";
    case ConflictOutcome::Skipped:
        return "skipped";
    case ConflictOutcome::Unfinished:
        return "unfinished";
    }
    return "unfinished";
}

const char* ResultName(RunResult Result) {
    switch (Result) {
    case RunResult::Succeeded:
        return "succeeded";
    case RunResult::Failed:
        return "failed";
    case RunResult::Canceled:
        return "canceled";
    case RunResult::WrongUsage:
        break;
    }
    return "failed";
}

} // namespace

std::string PreflightRecord(const PreflightFinding& Finding) {
    Json record = Record("preflight");
    record["kind"] = PreflightFindingName(Finding.Kind);
    Put(record, "path", Finding.Path.native());
    Put(record, "text", DescribeFinding(Finding));
    record["stops_job"] = Finding.bStopsJob;
    return Dump(record);
}

std::string TotalsRecord(const PreflightResult& Result) {
    Json record = Record("totals");
    record["entries"] = Result.Entries;
    record["bytes"] = Result.Bytes;
    record["copied_entries"] = Result.CopiedEntries;
    record["copied_bytes"] = Result.CopiedBytes;
    record["complete"] = Result.bComplete;
    return Dump(record);
}

std::string ProgressRecord(const ProgressView& View) {
    const TarvaneTransferUiSnapshot& snapshot = View.Snapshot;
    const bool bCounted = snapshot.TotalItems > 0;
    Json record = Record("progress");
    Put(record, "stage", View.Job.MakeJobSnapshot().State);
    Put(record, "status", snapshot.MessageText);
    PutOrNull(record, "path", View.Job.GetCurrentPath());
    record["percent"] = NumberOrNull(bCounted || snapshot.bFinished, View.Claims.Percent);
    record["done_bytes"] = snapshot.DoneBytes;
    record["total_bytes"] = NumberOrNull(bCounted, snapshot.TotalBytes);
    record["done_items"] = snapshot.DoneItems;
    record["total_items"] = NumberOrNull(bCounted, snapshot.TotalItems);
    record["file_done_bytes"] = snapshot.CurrentFileDoneBytes;
    record["file_total_bytes"] = snapshot.CurrentFileTotalBytes;
    record["rate"] =
        NumberOrNull(snapshot.TransferRateBytesPerSecond > 0, snapshot.TransferRateBytesPerSecond);
    record["elapsed"] = snapshot.ElapsedSeconds;
    record["remaining"] = NumberOrNull(snapshot.RemainingSeconds >= 0.0, snapshot.RemainingSeconds);
    record["stalled"] = View.Claims.StalledSeconds;
    record["more_than_counted"] = View.Claims.bMoreThanCounted;
    record["less_than_counted"] = View.Claims.bLessThanCounted;
    record["cancel_requested"] = snapshot.bCancelRequested;
    return Dump(record);
}

std::string ConflictRecord(const SettledConflict& Settled) {
    const AnsweredConflict& answer = Settled.Answered;
    const TarvaneTransferConflict& conflict = answer.Conflict;
    const bool bDirectory = conflict.Kind == TarvaneTransferConflictKind::Directory;
    Json record = Record("conflict");
    record["kind"] = bDirectory ? "directory" : "file";
    Put(record, "source", conflict.SourcePath);
    Put(record, "destination", conflict.DestinationPath);
    record["source_size"] = NumberOrNull(conflict.bSourceHasSize, conflict.SourceSizeBytes);
    record["destination_size"] =
        NumberOrNull(conflict.bDestinationHasSize, conflict.DestinationSizeBytes);
    PutOrNull(record, "source_date", conflict.SourceDate);
    PutOrNull(record, "destination_date", conflict.DestinationDate);
    record["destination_is_directory"] = conflict.bDestinationDirectory;
    record["answer"] = AnswerName(answer.Action);
    PutOrNull(record, "rename_path", answer.RenamePath);
    record["by"] = answer.bByUser ? "user" : "choice";
    record["outcome"] = OutcomeName(Settled.Outcome);
    return Dump(record);
}

std::string FinishingRecord(const FinishProgress& Progress) {
    Json record = Record("finishing");
    record["done"] = Progress.Done;
    record["total"] = Progress.Total;
    record["finished"] = Progress.bFinished;
    return Dump(record);
}

std::string FlushRecord(const FlushProgress& Progress) {
    Json record = Record("flush");
    record["remaining_bytes"] =
        NumberOrNull(Progress.RemainingBytes.has_value(), Progress.RemainingBytes.value_or(0));
    record["rate"] = NumberOrNull(Progress.BytesPerSecond > 0, Progress.BytesPerSecond);
    record["finished"] = Progress.bFinished;
    PutOrNull(record, "error", Progress.ErrorText);
    return Dump(record);
}

std::string DoneRecord(const RunOutcome& Outcome, int ExitStatus) {
    Json record = Record("done");
    record["result"] = ResultName(Outcome.Result);
    Put(record, "status", Outcome.Text);
    record["exit_status"] = ExitStatus;
    record["flushed"] =
        NumberOrNull(Outcome.bFlushed.has_value(), Outcome.bFlushed.value_or(false));
    const bool bCounted = Outcome.Counts.has_value();
    const TransferCounts counts = Outcome.Counts.value_or(TransferCounts());
    record["entries"] = NumberOrNull(bCounted, counts.Entries);
    record["bytes"] = NumberOrNull(bCounted, counts.Bytes);
    record["elapsed"] = NumberOrNull(bCounted, counts.Seconds);
    record["skipped"] = NumberOrNull(bCounted, counts.Skipped);
    record["replaced"] = NumberOrNull(bCounted, counts.Replaced);
    record["renamed"] = NumberOrNull(bCounted, counts.Renamed);
    const bool bFinishing = Outcome.Finishing.has_value();
    const FinishResult finishing = Outcome.Finishing.value_or(FinishResult());
    record["finished"] = NumberOrNull(bFinishing, finishing.Finished);
    record["left_alone"] = NumberOrNull(bFinishing, finishing.LeftAlone);
    record["changed_length"] = NumberOrNull(bFinishing, finishing.ChangedLength);
    record["unreached"] = NumberOrNull(bFinishing, finishing.Unreached);
    return Dump(record);
}
