#include "end_request.h"

#include <csignal>

void EndRequest::Interrupt() {
    bLeave = IsAsked();
    if (!IsAsked()) {
        EndSignal = SIGINT;
    }
}

void EndRequest::FulfillInterrupt() {
    if (EndSignal == SIGINT) {
        EndSignal.reset();
    }
}

void EndRequest::Terminate(int Signal, TimePoint Now) {
    EndSignal = Signal;
    if (!Deadline) {
        Deadline = Now + kCleanUpTime;
    }
}

void EndRequest::Quit(int Signal) {
    EndSignal = Signal;
    bLeave = true;
}
