// Gives the terminal its modes back however the program ends.

#pragma once

// From now on std::exit, std::terminate and a crash call RestoreTerminalNow. Call it before the
// modes are changed; more calls do nothing.
void RestoreOnEveryEnd();
