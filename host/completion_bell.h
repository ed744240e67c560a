// The bell in place of the sound of a finished transfer.

#pragma once

// True once after transfers have completed whose sound cannot be played; the front end then rings
// the terminal's bell. Waits up to 100 ms for a sound that is just being started, so that a program
// may end right after its last transfer.
//
// Threads: one, the front end's.
bool TakeTarvaneCompletionBell() noexcept;
