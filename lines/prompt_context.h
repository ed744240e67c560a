// What the phases of a run at a prompt work with.

#pragma once

class InterfaceLoop;
class LineQueue;
class Prompt;
class Reporter;
class Terminal;

// All of it outlives the phases.
struct PromptContext {
    Terminal& Screen;
    Prompt& Shown;
    InterfaceLoop& Loop;
    Reporter& Report;
    // Takes what -v says; none when it says nothing.
    LineQueue* Verbose = nullptr;
};
