// Which call goes wrong, of those that the library stands in front of, and how.
//
//   FAULT="KIND K EFFECT"   KIND is one of Kind, in small letters, or "any" for all but allocations
//                           and waits, whose numbers differ from run to run; K from 1. EFFECT is
//                           an error number, one with a "+" to fail from then on, "short" for half
//                           of what was to be read or written, "cancel" for the program's function
//                           CancelJob, or "signal N" to the first process
//   FAULT_RECORD=FILE       of the size of FaultRecord; says how far the program got
//
// Counting goes on in forked processes. A program that has a function CancelJob says by itself,
// with CountCalls, which of its threads counts and when.

#pragma once

#include <cstddef>
#include <cstdint>

enum class Kind : std::size_t {
    Open,
    Read,
    Write,
    Stat,
    Mkdir,
    Unlink,
    Rmdir,
    Rename,
    Readdir,
    Ioctl,
    Close,
    Chmod,
    Utimensat,
    Alloc,
    Thread,
    Eventfd,
    Fork,
    Link,
    Sync,
    Wait,
    Stream,
    // Writing what people read.
    Print,
};

enum class Effect : std::uint8_t { None, Error, ErrorsFromThenOn, Short, Cancel, Signal };

// The calls that a call makes in turn are part of it.
class Call {
public:
    Call();
    ~Call();
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    // What is to become of it.
    Effect EffectOf(Kind Of, const char* Function, const char* Path = "") const;

private:
    const bool bOutermost;
};

// Whether the call is to be made at all; otherwise errno is set.
bool Passes(Effect What);

// How much of Size is to be read or written.
std::size_t Shortened(Effect What, std::size_t Size);

// A close of what is not open, which may hit what another thread has opened.
void NoteSurplusClose();

// Reads the two variables; without them nothing goes wrong.
void BeginToCount();
