// The command line: the program's arguments become a request of one of its commands.

#pragma once

#include <string>
#include <variant>
#include <vector>

#include "panes_request.h"
#include "prompt_request.h"
#include "tracks_command.h"

// What help, --help and --version answer: a text for standard output.
struct InformationText {
    std::string Text;
};

// All that is wrong with the arguments: sentences without the program's name, a period or a line
// end, in the words of the GNU tools. They may hold arguments as they were given, so they are not
// fit for a screen before they are cleaned.
struct UsageError {
    std::vector<std::string> Sentences;
};

using CommandLine =
    std::variant<PanesRequest, PromptRequest, TracksRequest, InformationText, UsageError>;

// Reads the program's whole argument vector, of which Argv[1] is the command; where it is a
// directory or a disc instead, and where it is missing, the panes are asked for. Operands stay the
// bytes they are. The file system is looked at for directories to show only. An option that asks
// for a text gets it unless there is a mistake before it.
//
// Requires: no other thread that reads arguments; options and operands in Argv change places.
CommandLine ParseCommandLine(int Argc, char** Argv);
