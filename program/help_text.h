// What --help and --version print.

#pragma once

extern const char* const kHelpText;
extern const char* const kTracksHelpText;
extern const char* const kVersionText;
