#include "end_request.h"

#include "exit_status.h"

void EndRequest::Interrupt() {
    bLeave = IsAsked();
    if (!IsAsked()) {
        Status = kExitCanceled;
    }
}

void EndRequest::Terminate(int Signal, TimePoint Now) {
    Status = kExitBySignal + Signal;
    if (!Deadline) {
        Deadline = Now + kCleanUpTime;
    }
}

void EndRequest::Quit(int Signal) {
    Status = kExitBySignal + Signal;
    bLeave = true;
}
