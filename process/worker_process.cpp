#include "worker_process.h"

#include "signals_blocked.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <exception>
#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>

namespace {

void EndWithParent(pid_t Parent) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    // It may have ended before.
    if (getppid() != Parent) {
        _exit(0);
    }
}

void KeepOnly(int Input, int Output) {
    constexpr int kNoFlags = 0;
    const int nowhere = open("/dev/null", O_RDWR);
    dup2(Input < 0 ? nowhere : Input, STDIN_FILENO);
    dup2(Output, STDOUT_FILENO);
    dup2(nowhere, STDERR_FILENO);
    close_range(STDERR_FILENO + 1, ~0U, kNoFlags);
}

void Send(std::string_view Reply) {
    while (!Reply.empty()) {
        const ssize_t written = write(STDOUT_FILENO, Reply.data(), Reply.size());
        if (written <= 0) {
            return;
        }
        Reply.remove_prefix(static_cast<std::size_t>(written));
    }
}

// In the process, which may hold copies of locks that are held by threads it does not have: nothing
// here allocates. An exception must not get out, as that would go on as a second program.
[[noreturn]] void DoWork(const WorkerProcess::Work& WorkToDo, pid_t Parent, int Input,
                         int Output) noexcept {
    EndWithParent(Parent);
    KeepOnly(Input, Output);
    Send(WorkToDo());
    _exit(0);
}

bool HasWriter(int Pipe) {
    pollfd event{Pipe, 0, 0};
    const int now = 0;
    return poll(&event, 1, now) == 0;
}

// A killed process ends only when its drive or disk lets go of it, so a thread waits for that.
void Reap(pid_t Process) {
    if (waitpid(Process, nullptr, WNOHANG) != 0) {
        return;
    }
    const SignalsBlocked blocked;
    try {
        std::thread([Process] { waitpid(Process, nullptr, 0); }).detach();
    } catch (const std::exception&) {
        // Without a thread for it the process stays a zombie until the program ends.
    }
}

} // namespace

WorkerProcess::WorkerProcess(const Work& WorkToDo, int Input) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw std::system_error(errno, std::generic_category());
    }
    Output = OwnedDescriptor(ends[0]);
    const OwnedDescriptor writing(ends[1]);
    fcntl(Output.Get(), F_SETFL, O_NONBLOCK);
    // The process inherits the mask: the terminal's signals are meant for the interface, and its
    // handlers must not run twice.
    const SignalsBlocked blocked;
    const pid_t parent = getpid();
    Process = fork();
    if (Process < 0) {
        throw std::system_error(errno, std::generic_category());
    }
    if (Process == 0) {
        DoWork(WorkToDo, parent, Input, writing.Get());
    }
}

WorkerProcess::~WorkerProcess() {
    // One that is over may be reaped already where SIGCHLD is ignored, and its number another's.
    if (HasWriter(Output.Get())) {
        kill(Process, SIGKILL);
    }
    Reap(Process);
}

std::optional<std::string> WorkerProcess::TakeReply() {
    std::array<char, 4096> block;
    ssize_t size = 0;
    while ((size = read(Output.Get(), block.data(), block.size())) > 0) {
        Received.append(block.data(), static_cast<std::size_t>(size));
    }
    if (size < 0 && errno == EAGAIN) {
        return std::nullopt;
    }
    // What cannot be read whole is no reply.
    return size == 0 ? std::exchange(Received, {}) : std::string();
}
