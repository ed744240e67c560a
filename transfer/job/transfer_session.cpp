#include "transfer_session.h"

#include "private_umask.h"

#include <chrono>
#include <exception>
#include <new>
#include <optional>
#include <string>
#include <thread>
#include <utility>

namespace {

void FailUnlessFinished(TarvaneTransferJob& Job, const std::string& Reason) noexcept {
    try {
        if (!Job.IsFinished()) {
            Job.FinishFailure(Reason);
        }
    } catch (const std::exception&) {
        // FinishFailure sets the flags before anything in it can fail; only the text is missing.
    }
}

void Work(const std::shared_ptr<TarvaneTransferJob>& Job, TarvaneTransferPlan Plan,
          bool bPrivate) noexcept {
    std::optional<PrivateUmask> privateUmask;
    if (bPrivate) {
        privateUmask.emplace();
    }
    try {
        RunTarvaneTransferJob(Job, std::move(Plan));
    } catch (const std::exception& error) {
        FailUnlessFinished(*Job, std::string("Transfer stopped: ") + error.what());
    } catch (...) {
        FailUnlessFinished(*Job, "Transfer stopped by an unknown error.");
    }
}

} // namespace

TransferSession::TransferSession(TarvaneTransferPlan Plan, bool bPrivate)
    : Running(
          std::make_shared<TarvaneTransferJob>(Plan.bMove, Plan.Items.size(), Plan.SourceLabel)) {
    RegisterTarvaneTransferJob(Running);
    try {
        Worker.emplace([job = Running, plan = std::move(Plan), bPrivate]() mutable {
            Work(job, std::move(plan), bPrivate);
        });
    } catch (const std::exception& error) {
        FailUnlessFinished(*Running, std::string("Failed to start the transfer: ") + error.what());
    }
}

TransferSession::~TransferSession() {
    constexpr std::chrono::milliseconds kPause{1};
    constexpr int kMostPauses = 1000;
    for (int pauses = 0; !IsOver() && pauses < kMostPauses; ++pauses) {
        try {
            Running->RequestCancel();
            return;
        } catch (const std::bad_alloc&) {
            // A request that finds no memory changes nothing, and an exception from here would end
            // the program in the middle of a file. The worker gives back memory as it goes on.
            std::this_thread::sleep_for(kPause);
        }
    }
    if (!IsOver()) {
        Running->RequestCancel();
    }
}
