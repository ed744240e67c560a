// Room for signal handlers when a thread's own stack has overflowed.

#pragma once

// Lets handlers that are installed with SA_ONSTACK run even when the calling thread's stack is
// full, until the thread ends: the handler that gives the terminal its modes back after a crash is
// one of them. Does nothing when the thread has such a stack already.
void ArmCrashStack();
