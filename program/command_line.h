// The command line of `tarvane copy` and `tarvane move`: arguments become a request.

#pragma once

#include <string>
#include <variant>

#include "line_request.h"

// What --help and --version answer: a text for standard output; the program then ends with
// kExitDone.
struct InformationText {
    std::string Text;
};

// What is wrong with the arguments: one sentence without the program's name, a period or a line
// end, in the words of the GNU tools. It may hold operands as they were given, so it is not fit for
// a screen before it is cleaned. The program then ends with kExitUsage.
struct UsageError {
    std::string Sentence;
};

using CommandLine = std::variant<LineRequest, InformationText, UsageError>;

// Reads the program's whole argument vector, of which Argv[1] is the command. Operands stay the
// bytes they are. The file system is not looked at.
//
// Requires: no other thread that reads arguments; options and operands in Argv change places.
CommandLine ParseCommandLine(int Argc, char** Argv);
