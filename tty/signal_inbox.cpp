#include "signal_inbox.h"

#include <cerrno>
#include <ctime>
#include <sys/signalfd.h>
#include <system_error>
#include <unistd.h>

#include "end_request.h"

namespace {

bool IsIgnored(int Signal) {
    struct sigaction action {};
    return sigaction(Signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

bool EndsTheProgram(int Signal) {
    return Signal == SIGINT || Signal == SIGTERM || Signal == SIGHUP || Signal == SIGQUIT;
}

} // namespace

SignalInbox::SignalInbox() {
    sigemptyset(&Signals);
    for (const int signal :
         {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP, SIGCONT, SIGWINCH, SIGUSR1}) {
        // A blocked signal arrives here even when it is ignored, hence the look.
        if (!IsIgnored(signal)) {
            sigaddset(&Signals, signal);
        }
    }
    Descriptor = signalfd(-1, &Signals, SFD_CLOEXEC | SFD_NONBLOCK);
    if (Descriptor < 0) {
        throw std::system_error(errno, std::generic_category(), "signalfd");
    }
    pthread_sigmask(SIG_BLOCK, &Signals, &MaskBefore);
}

SignalInbox::~SignalInbox() {
    while (const std::optional<int> late = Take()) {
        if (EndsTheProgram(*late)) {
            SendSignalAfter(EndRequest::kCleanUpTime, *late);
        }
    }
    pthread_sigmask(SIG_SETMASK, &MaskBefore, nullptr);
    close(Descriptor);
}

std::optional<int> SignalInbox::Take() {
    signalfd_siginfo received{};
    if (read(Descriptor, &received, sizeof(received)) != ssize_t{sizeof(received)}) {
        return std::nullopt;
    }
    return static_cast<int>(received.ssi_signo);
}

bool SignalInbox::StopBy(int StopSignal) {
    sigset_t only;
    sigemptyset(&only);
    sigaddset(&only, StopSignal);
    sigset_t before;
    raise(StopSignal);
    pthread_sigmask(SIG_UNBLOCK, &only, &before);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    // What has continued it is known by now and must not come a second time.
    sigemptyset(&only);
    sigaddset(&only, SIGCONT);
    constexpr timespec kAtOnce{};
    return sigtimedwait(&only, nullptr, &kAtOnce) == SIGCONT;
}

void SendSignalAfter(std::chrono::seconds Delay, int Signal) {
    sigevent event{};
    event.sigev_notify = SIGEV_SIGNAL;
    event.sigev_signo = Signal;
    timer_t timer{};
    if (timer_create(CLOCK_MONOTONIC, &event, &timer) == 0) {
        const itimerspec once{{0, 0}, {Delay.count(), 0}};
        timer_settime(timer, 0, &once, nullptr);
    }
}
