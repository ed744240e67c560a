#include "preflight_run.h"

#include <exception>
#include <new>
#include <string_view>
#include <sys/mman.h>
#include <system_error>
#include <unistd.h>

namespace {

PreflightControl* MapShared() {
    static_assert(decltype(PreflightControl::EntriesSeen)::is_always_lock_free);
    void* memory = mmap(nullptr, sizeof(PreflightControl), PROT_READ | PROT_WRITE,
                        MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        throw std::bad_alloc();
    }
    return new (memory) PreflightControl;
}

void Unmap(PreflightControl* Mapped) {
    munmap(Mapped, sizeof(PreflightControl));
}

PreflightEnd Look(const PreflightTask& Task, PreflightControl& Control) {
    try {
        return {RunPreflight(Task, Control), {}};
    } catch (const std::exception& error) {
        return {{}, error.what()};
    }
}

} // namespace

// The record's file is the only one of ours that is open in the process.
PreflightRun::PreflightRun(PreflightTask Task) : Control(MapShared(), Unmap) {
    const int record =
        Task.Record != nullptr ? Task.Record->FileDescriptor() : WorkerProcess::kNoInput;
    Task.RecordDescriptor = STDIN_FILENO;
    try {
        Process.emplace(
            [&Task, &control = *Control, reply = std::string()]() mutable {
                reply = ReplyFrom(Look(Task, control));
                return std::string_view(reply);
            },
            record);
    } catch (const std::system_error& error) {
        End = {{}, error.what()};
    }
}

bool PreflightRun::IsOver() {
    if (End) {
        return true;
    }
    if (const std::optional<std::string> reply = Process->TakeReply()) {
        End = EndFrom(*reply);
    }
    return End.has_value();
}
