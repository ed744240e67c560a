#include "worker_thread.h"

#include "crash_stack.h"
#include "signals_blocked.h"

#include <cerrno>
#include <sys/eventfd.h>
#include <system_error>
#include <utility>

WorkerThread::WorkerThread(std::function<void()> Work)
    : OverEvent(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (OverEvent.Get() < 0) {
        throw std::system_error(errno, std::generic_category());
    }
    // A new thread inherits the mask, so there is no moment in which it could take a signal.
    const SignalsBlocked blocked;
    Thread = std::jthread([this, work = std::move(Work)] { Run(work); });
}

void WorkerThread::Run(const std::function<void()>& Work) noexcept {
    ArmCrashStack();
    Work();
    bOver = true;
    eventfd_write(OverEvent.Get(), 1);
}
