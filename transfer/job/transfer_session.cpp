#include "transfer_session.h"

#include <exception>
#include <string>
#include <utility>

namespace {

void FailUnlessFinished(TarvaneTransferJob& Job, const std::string& Reason) noexcept {
    try {
        if (!Job.IsFinished()) {
            Job.FinishFailure(Reason);
        }
    } catch (const std::exception&) {
        // The finisher has set its flags before anything in it can fail; only the text is missing.
    }
}

void Work(const std::shared_ptr<TarvaneTransferJob>& Job, TarvaneTransferPlan Plan) noexcept {
    try {
        RunTarvaneTransferJob(Job, std::move(Plan));
    } catch (const std::exception& error) {
        FailUnlessFinished(*Job, std::string("Transfer stopped: ") + error.what());
    } catch (...) {
        FailUnlessFinished(*Job, "Transfer stopped by an unknown error.");
    }
}

} // namespace

TransferSession::TransferSession(TarvaneTransferPlan Plan)
    : Running(
          std::make_shared<TarvaneTransferJob>(Plan.bMove, Plan.Items.size(), Plan.SourceLabel)) {
    RegisterTarvaneTransferJob(Running);
    try {
        Worker.emplace(
            [job = Running, plan = std::move(Plan)]() mutable { Work(job, std::move(plan)); });
    } catch (const std::exception& error) {
        FailUnlessFinished(*Running, std::string("Failed to start the transfer: ") + error.what());
    }
}
