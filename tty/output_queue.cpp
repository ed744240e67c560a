#include "output_queue.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace {

// A terminal that is ready may still make a write wait, because it takes less than all of it or is
// stopped meanwhile. Others share the descriptor, so it must not be made non-blocking; the
// controlling terminal can be opened once more. -1 when Descriptor is something else.
int OpenOnceMore(int Descriptor) {
    const bool bControllingTerminal = tcgetpgrp(Descriptor) >= 0;
    return bControllingTerminal ? open("/dev/tty", O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)
                                : -1;
}

bool WaitUntilReady(int Descriptor, int TimeoutMilliseconds) {
    pollfd target{Descriptor, POLLOUT, 0};
    int ready = 0;
    do {
        ready = poll(&target, 1, TimeoutMilliseconds);
    } while (ready < 0 && errno == EINTR);
    return ready > 0;
}

} // namespace

OutputQueue::OutputQueue(int Descriptor) : Target(OpenOnceMore(Descriptor)) {
    bOwnsTarget = Target >= 0;
    if (!bOwnsTarget) {
        Target = Descriptor;
    }
}

OutputQueue::~OutputQueue() {
    if (bOwnsTarget) {
        close(Target);
    }
}

void OutputQueue::Write(std::string_view Bytes) {
    if (FirstError == 0) {
        Kept += Bytes;
        Pump();
    }
}

void OutputQueue::Pump() {
    while (!Kept.empty() && IsReady() && WriteSome()) {}
}

void OutputQueue::Finish() {
    const int forever = -1;
    while (!Kept.empty() && WaitUntilReady(Target, forever)) {
        WriteSome();
    }
}

bool OutputQueue::IsReady() const {
    const int atOnce = 0;
    return WaitUntilReady(Target, atOnce);
}

// False when there was no room after all.
bool OutputQueue::WriteSome() {
    // A pipe that is ready takes this much without waiting.
    const std::size_t size = std::min<std::size_t>(Kept.size(), PIPE_BUF);
    const ssize_t written = write(Target, Kept.data(), size);
    if (written >= 0) {
        Kept.erase(0, static_cast<std::size_t>(written));
    } else if (errno == EAGAIN) {
        return false;
    } else if (errno != EINTR) {
        FirstError = errno;
        Kept.clear();
    }
    return true;
}
