// What the phases of a run at a prompt work with.

#pragma once

class InterfaceLoop;
class Prompt;
class Reporter;
class Terminal;

// All of it outlives the phases.
struct PromptContext {
    Terminal& Screen;
    Prompt& Shown;
    InterfaceLoop& Loop;
    Reporter& Report;
};
