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

void FailUnlessFinished(TarvaneTransferJob& Job, const char* What, const char* Why) noexcept {
    if (Job.IsFinished()) {
        return;
    }
    try {
        Job.FinishFailure(std::string(What) + Why);
        return;
    } catch (const std::exception&) {
        // There may be no memory for the sentence.
    }
    try {
        Job.FinishFailure({});
    } catch (const std::exception&) {
        // The flags are set before anything in it can fail.
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
        FailUnlessFinished(*Job, "Transfer stopped: ", error.what());
    } catch (...) {
        FailUnlessFinished(*Job, "Transfer stopped by an unknown error.", "");
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
        FailUnlessFinished(*Running, "Failed to start the transfer: ", error.what());
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
