// What a flush has come to, in words for the last line.

#pragma once

#include <string>

#include "flusher.h"
#include "run_outcome.h"
#include "tarvanetransfer.h"

// All that the job, which ended as Outcome says, has done has come as far as Reach.
std::string WrittenText(FlushReach Reach, const TarvaneTransferPlan& Plan,
                        const RunOutcome& Outcome);

// Something may be lost, because of what ErrorText says: of a move, the copies.
std::string LostText(const std::string& ErrorText, const TarvaneTransferPlan& Plan,
                     const RunOutcome& Outcome);

// It was not waited for.
std::string StillWritingText(FlushReach Reach);

// The wait for it was ended. What still flushes then holds the file system and cannot be killed.
std::string LeftFlushText(FlushReach Reach);
