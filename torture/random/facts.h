// What is known of a run: names of facts and their values. The engine and the model each give them,
// and they have to be the same.

#pragma once

#include "tarvanetransfer.h"

#include <cstdint>
#include <map>
#include <string>

using Facts = std::map<std::string, std::string>;

// In ASCII, with everything else as \xNN.
std::string Shown(const std::string& Bytes);

// A file as a fact: short contents whole, longer ones as their size and a hash.
std::string FileFact(const std::string& Contents);

// All of a question that does not depend on the clock: its dates are left out, and of the times
// only which is later.
std::string QuestionFact(const TarvaneTransferConflict& Question);

// One line for each fact that differs, at most a few; empty when none does.
std::string Differences(const Facts& Expected, const Facts& Actual);
