// The umask that the user has chosen, and the one of those who keep what they make private.

#pragma once

#include <sys/types.h>

// The calling thread's umask, or what it was before others have made that of the whole program
// private.
//
// Threads: any. Where the system does not tell the umask it is set for a moment, in which others
// may make something private.
mode_t UserUmask();

// While it lives, what its thread makes is for this user alone. Where the system lets no thread
// have an umask of its own, the program's is changed until the last such object is gone, which is
// too strict for others but never too open.
//
// Threads: the one that has made it destroys it.
class PrivateUmask {
public:
    PrivateUmask();
    ~PrivateUmask();
    PrivateUmask(const PrivateUmask&) = delete;
    PrivateUmask& operator=(const PrivateUmask&) = delete;

private:
    const bool bOwn;
    mode_t Before = 0;
};
