// Progress as JSON Lines: one object a line, in ASCII, told apart by "event".
//
// "preflight": something found before the start.
//     kind        "dangling-link", "link-to-directory", ...
//     path        of the entry
//     text        one sentence about it
//     stops_job   true when the job ends there
// "totals": what the look before the start has counted.
//     entries, bytes                 what the job's own totals will be
//     copied_entries, copied_bytes   what will really be copied, links to directories followed
//     complete                       false when only what guards was looked at
// "progress": at the start of a job that is not over at once, after every interval, when a cancel
//     is asked for, and at the end.
//     stage       "Preparing", "Copying", ...
//     status      the job's own words
//     path        what it works on; null before the first
//     percent     of the whole, 100 only at the end; null before everything is counted
//     done_bytes, total_bytes, done_items, total_items   the totals null before they are counted
//     file_done_bytes, file_total_bytes
//     rate        bytes a second, null when unknown
//     elapsed, remaining   seconds; remaining null when unknown
//     stalled     seconds without any progress, 0 below four
//     more_than_counted    true when the totals have turned out too low
//     less_than_counted    true when a file has turned out shorter
//     cancel_requested
// "conflict": a taken name, the answer it got, and what became of it; every one has a record, once
//     the next name is found taken or the job is over.
//     kind        "file" or "directory", which is what the source is
//     source, destination
//     source_size, destination_size    bytes, null when unknown or a directory
//     source_date, destination_date    local time, "2024-03-07 14:05:09", null when unknown
//     destination_is_directory
//     answer      "merge", "skip", "overwrite", "compare", "rename" or "cancel"
//     rename_path with "rename", otherwise null
//     by          "user" or "choice"
//     outcome     "replaced", "merged", "renamed", "skipped", or "unfinished" where the job has
//                 ended before
// "finishing": how far the setting of modes, times and owners is after the job; at the end, and
//     before it only when it takes longer than a second.
//     done, total entries
//     finished    false at the end when it was canceled or has broken off
// "flush": what is still on its way to the disks after the job.
//     remaining_bytes, rate    null when unknown
//     finished
//     error       one sentence, or null
// "done": the last line; missing when the program had to leave at once, or has refused operands or
//     options.
//     result      "succeeded", "failed" or "canceled"
//     status      how far the job came, or why it did not end well, or why there was none
//     exit_status of the program
//     flushed     true or false, null when that was not waited for
//     entries, bytes     what was copied or moved, without what was skipped; these and the
//                        following are null when there was no job
//     elapsed     seconds
//     skipped     entries
//     replaced, renamed  taken names
//     finished    entries that have what was to be carried over; this and the following are null
//                 when nothing was
//     left_alone  entries that were gone by then, or replaced by something else
//     changed_length     copies that are not as long as their sources were
//     unreached   entries that a cancel has left as the job made them, readable by their owner only
//
// A text that is not UTF-8 is given with U+FFFD for each invalid byte, and a member of the same
// name with "_hex" behind it, which only then exists, has its exact bytes in hexadecimal.

#pragma once

#include "reporter.h"

#include <string>

std::string PreflightRecord(const PreflightFinding& Finding);
std::string TotalsRecord(const PreflightResult& Result);
std::string ProgressRecord(const ProgressView& View);
std::string ConflictRecord(const SettledConflict& Settled);
std::string FinishingRecord(const FinishProgress& Progress);
std::string FlushRecord(const FlushProgress& Progress);
std::string DoneRecord(const RunOutcome& Outcome, int ExitStatus);
