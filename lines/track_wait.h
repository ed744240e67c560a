// The wait for a drive that is being asked what its disc holds.

#pragma once

#include <string>
#include <variant>

#include "prompt_context.h"
#include "track_list.h"

// Reads the table of contents of the disc in Device; a drive that gets ready may take 20 s and
// more. On a terminal it says so when that takes more than a moment. Esc, Ctrl-C and signals that
// end programs end the wait: then there is no reason, and the loop's requests hold the signal.
std::variant<TrackList, TrackListFailure> ListTracksAtPrompt(const std::string& Device,
                                                             const PromptContext& Context);
