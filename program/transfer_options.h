// What the options of `tarvane copy` and `tarvane move` mean.

#pragma once

#include <string>

#include "option_reader.h"
#include "prompt_request.h"

// Puts the option into the request; of two that contradict each other the later one counts, and
// lists of what is to be carried over add up. -r, the options that ask for a text, those of other
// commands and mistakes change nothing.
//
// Returns why its value is refused: a sentence as UsageError holds them. Empty when it is not.
std::string ApplyTransferOption(const TypedOption& Typed, PromptRequest& Out);
