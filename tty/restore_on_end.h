// Gives the terminal its modes back however the program ends.

#pragma once

// From now on std::exit, std::terminate, a crash and every other signal that ends the program call
// RestoreTerminalNow first. Signals that are ignored or have a handler at the first call are left
// alone, but the handler of a crash runs after it. Call it before the modes are changed; more calls
// do nothing.
void RestoreOnEveryEnd();
