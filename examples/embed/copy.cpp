// Copies a file or a directory: copy SOURCE DESTINATION

#include <tarvanetransfer.h>

#include <chrono>
#include <cmath>
#include <exception>
#include <iostream>
#include <memory>
#include <thread>

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "Usage: copy SOURCE DESTINATION\n";
        return 2;
    }
    TarvaneTransferPlan plan;
    plan.ConflictPolicy = TarvaneTransferConflictPolicy::Skip;
    TarvaneTransferItemPlan& item = plan.Items.emplace_back();
    item.SourcePath = argv[1];
    item.DestinationPath = argv[2];

    const auto job = std::make_shared<TarvaneTransferJob>(plan.bMove, plan.Items.size(), "");
    std::thread worker([job, plan] {
        try {
            RunTarvaneTransferJob(job, plan);
        } catch (const std::exception& error) {
            if (!job->IsFinished()) {
                job->FinishFailure(error.what());
            }
        }
    });
    const auto show = [&job] {
        const TarvaneTransferUiSnapshot now = job->MakeUiSnapshot();
        std::cout << '\r' << std::lround(now.OverallProgress01 * 100) << "% | " << now.OverallText
                  << "\033[K" << std::flush;
        return now;
    };
    while (!job->IsFinished()) {
        show();
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    worker.join();
    const TarvaneTransferUiSnapshot end = show();
    std::cout << '\n' << end.MessageText << '\n';
    return end.bSucceeded ? 0 : 1;
}
