// The bell in place of the sound of a finished transfer.

#pragma once

// True once after transfers have completed whose sound cannot be played, or has not begun within
// 100 ms; the front end then rings the terminal's bell. Never waits.
//
// Threads: one, the front end's.
bool TakeTarvaneCompletionBell() noexcept;

// The same for a program that ends right after its last transfer: waits until the sound has begun
// or the bell is due.
bool AwaitTarvaneCompletionBell() noexcept;
