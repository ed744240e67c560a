// What the finishing of copies has come to, in words for the end of a run.

#pragma once

#include "finisher.h"

#include <cstdint>
#include <string>

// What has gone wrong: a sentence without a capital, a period or a line end; empty when nothing
// has. The names of copies that are not as long as they should be belong below it.
std::string FinishFailureText(const FinishResult& Result);

// What is worth saying though nothing has gone wrong: whole sentences, empty for none.
std::string FinishRemark(const FinishResult& Result);

// That so many entries were not reached, as a sentence like that of a failure; empty for none.
// bPrivate: the job has made them private.
std::string UnreachedText(std::uint64_t Entries, bool bPrivate);
