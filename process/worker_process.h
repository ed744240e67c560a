// A process that a loop can wait for, and let go of.

#pragma once

#include "owned_descriptor.h"

#include <cstring>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <type_traits>

// Does work that nothing can interrupt, as a request to a drive or a disk is, in a process of its
// own: a thread would hold up even the end of the program. The process ends with the thread that
// has made it, all but faults are blocked in it, and nothing of ours is open there: its standard
// input is Input, its standard output goes to TakeReply and its standard error nowhere.
//
// Threads: one thread makes, uses and destroys it.
class WorkerProcess {
public:
    // Runs in the process and returns its reply, the bytes of which it keeps.
    using Work = std::function<std::string_view()>;
    static constexpr int kNoInput = -1;

    // Starts at once. Where other threads run, Work must not wait for a lock that one of them may
    // hold at that moment, as nobody opens the copy of it. Of the C library's own locks only those
    // of memory are safe, so what can be made before is better made before. Requires: the program's
    // standard streams are open, be it to /dev/null. Errors: std::system_error when the process
    // cannot be started.
    explicit WorkerProcess(const Work& WorkToDo, int Input = kNoInput);
    // Kills a process that still works. Never waits.
    ~WorkerProcess();
    WorkerProcess(const WorkerProcess&) = delete;
    WorkerProcess& operator=(const WorkerProcess&) = delete;

    // Becomes readable when TakeReply has something to read, and stays so at the end; for poll.
    int OverFd() const { return Output.Get(); }
    // Nothing while the process works. Empty when it has died without a word, or cannot be read.
    std::optional<std::string> TakeReply();

private:
    OwnedDescriptor Output;
    pid_t Process = -1;
    std::string Received;
};

// A value as a reply, and back; nothing when the reply is none.
template <typename Value>
std::string_view AsReply(const Value& Source) {
    static_assert(std::is_trivially_copyable_v<Value>);
    return {reinterpret_cast<const char*>(&Source), sizeof(Source)};
}

template <typename Value>
std::optional<Value> FromReply(std::string_view Reply) {
    static_assert(std::is_trivially_copyable_v<Value>);
    if (Reply.size() != sizeof(Value)) {
        return std::nullopt;
    }
    Value value;
    std::memcpy(&value, Reply.data(), sizeof(Value));
    return value;
}
