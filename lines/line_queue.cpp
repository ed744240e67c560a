#include "line_queue.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <poll.h>
#include <unistd.h>

void LineQueue::Add(std::string_view Line) {
    if (FirstError == 0) {
        Waiting.append(Line).push_back('\n');
        Pump();
    }
}

void LineQueue::Offer(std::string_view Line) {
    Pump();
    if (Waiting.empty()) {
        Add(Line);
    }
}

void LineQueue::Pump() {
    const int atOnce = 0;
    while (!Waiting.empty() && WaitUntilReady(atOnce)) {
        WriteSome();
    }
}

void LineQueue::Finish() {
    const int forever = -1;
    while (!Waiting.empty() && WaitUntilReady(forever)) {
        WriteSome();
    }
}

bool LineQueue::WaitUntilReady(int TimeoutMilliseconds) const {
    pollfd target{Target, POLLOUT, 0};
    int ready = 0;
    do {
        ready = poll(&target, 1, TimeoutMilliseconds);
    } while (ready < 0 && errno == EINTR);
    return ready > 0;
}

void LineQueue::WriteSome() {
    // A pipe that is ready takes this much without waiting.
    const std::size_t size = std::min<std::size_t>(Waiting.size(), PIPE_BUF);
    const ssize_t written = write(Target, Waiting.data(), size);
    if (written >= 0) {
        Waiting.erase(0, static_cast<std::size_t>(written));
    } else if (errno != EINTR && errno != EAGAIN) {
        FirstError = errno;
        Waiting.clear();
    }
}
