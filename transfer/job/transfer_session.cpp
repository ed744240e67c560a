#include "transfer_session.h"

#include <csignal>
#include <cstdint>
#include <exception>
#include <sys/eventfd.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "signals_blocked.h"

TransferSession::TransferSession(TarvaneTransferPlan Plan)
    : Job(std::make_shared<TarvaneTransferJob>(Plan.bMove, Plan.Items.size(), Plan.SourceLabel)),
      OverEvent(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    RegisterTarvaneTransferJob(Job);
    // A new thread inherits the mask, so there is no moment in which it could take a signal.
    const SignalsBlocked blocked;
    try {
        Worker = std::thread(&TransferSession::Work, this, std::move(Plan));
    } catch (const std::system_error& error) {
        FailUnlessFinished(std::string("Failed to start the transfer: ") + error.what());
        bOver = true;
    }
}

TransferSession::~TransferSession() {
    if (Worker.joinable()) {
        Job->RequestCancel();
        Worker.join();
    }
    if (OverEvent >= 0) {
        close(OverEvent);
    }
}

void TransferSession::Work(TarvaneTransferPlan Plan) noexcept {
    try {
        RunTarvaneTransferJob(Job, std::move(Plan));
    } catch (const std::exception& error) {
        FailUnlessFinished(std::string("Transfer stopped: ") + error.what());
    } catch (...) {
        FailUnlessFinished("Transfer stopped by an unknown error.");
    }
    bOver = true;
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = write(OverEvent, &one, sizeof(one));
}

void TransferSession::FailUnlessFinished(const std::string& Reason) noexcept {
    try {
        if (!Job->IsFinished()) {
            Job->FinishFailure(Reason);
        }
    } catch (const std::exception&) {
        // The finisher has set its flags before anything in it can fail; only the text is missing.
    }
}
