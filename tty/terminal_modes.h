// The modes of the terminal.

#pragma once

#include <string_view>

// Whether the program owns the terminal now: not after Ctrl-Z and `bg`, and not with `&`. A
// terminal without job control counts as owned, and so does what is no terminal.
bool OwnsTerminal(int Descriptor);

// Delivers keys one by one and shows none of them; Ctrl-C, Ctrl-Z and Ctrl-\ stay signals. The
// modes from before are remembered until RestoreTerminalNow. Called again meanwhile it only sets
// the modes again, which a shell may have changed while the program was stopped. Errors: false,
// with nothing changed, when the terminal is not ours or none.
bool EnterKeyModes(int Descriptor);

// The terminal that RestoreTerminalNow has modes to give back to; -1 for none. May be called in a
// signal handler.
int TerminalInKeyModes();

// What RestoreTerminalNow writes first, once: what gives back a terminal that is drawn on as a
// whole. Empty for nothing.
void SendOnRestore(std::string_view Bytes);

// Writes as far as the terminal takes it now: Ctrl-S must not keep anybody from ending. May be
// called in a signal handler.
void WriteWithoutWaiting(int Terminal, std::string_view Bytes);

// Gives the terminal the modes back that it had before EnterKeyModes; does nothing when that was
// not called, or in the background, where the terminal is someone else's. May be called in a signal
// handler and before _exit.
void RestoreTerminalNow();
