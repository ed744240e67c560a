// Output for a terminal, pipe or file that may be slow or stand still.

#pragma once

#include <string>
#include <string_view>

// Writes to a descriptor that it does not own without ever making the caller wait: what cannot be
// written now is kept. Ctrl-S, which stops a terminal for as long as the user likes, holds up
// nobody but Finish.
//
// Threads: one at a time.
class OutputQueue {
public:
    explicit OutputQueue(int Descriptor);
    // Drops what is still kept.
    ~OutputQueue();
    OutputQueue(const OutputQueue&) = delete;
    OutputQueue& operator=(const OutputQueue&) = delete;

    // Bytes are written sooner or later, in their order.
    void Write(std::string_view Bytes);
    // Writes what can be written without waiting.
    void Pump();
    // Waits until everything is written or writing fails. Let signals act by themselves meanwhile.
    void Finish();

    bool IsEmpty() const { return Kept.empty(); }
    // Whether there is room now.
    bool IsReady() const;
    // For poll with POLLOUT, after which Pump does something; -1 while nothing is kept.
    int WaitingFd() const { return IsEmpty() ? -1 : Target; }

    // The errno of the write that failed, after which nothing more is written; 0 while all is well.
    int Error() const { return FirstError; }

private:
    bool WriteSome();

    int Target;
    bool bOwnsTarget = false;
    int FirstError = 0;
    std::string Kept;
};
