// The sound of a finished transfer, defined by the file manager around the engine.

#pragma once

// Threads: called on a worker thread, without a lock. Must return at once, print nothing and throw
// nothing.
void PlayTarvaneTransferCompleteSound() noexcept;
