// The command line: the program's arguments become a request of one of its commands.

#pragma once

#include <string>
#include <variant>

#include "prompt_request.h"
#include "tracks_command.h"

// What --help and --version answer: a text for standard output.
struct InformationText {
    std::string Text;
};

// What is wrong with the arguments: one sentence without the program's name, a period or a line
// end, in the words of the GNU tools. It may hold arguments as they were given, so it is not fit
// for a screen before it is cleaned.
struct UsageError {
    std::string Sentence;
};

using CommandLine = std::variant<PromptRequest, TracksRequest, InformationText, UsageError>;

// Reads the program's whole argument vector, of which Argv[1] is the command. Operands stay the
// bytes they are. The file system is not looked at. The first mistake, or the first option that
// asks for a text, decides.
//
// Requires: no other thread that reads arguments; options and operands in Argv change places.
CommandLine ParseCommandLine(int Argc, char** Argv);
