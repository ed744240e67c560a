#include "copy.h"

#include <cstdio>
#include <memory>
#include <utility>

#include <tarvanetransfer.h>

bool Copy(const std::string& Source, const std::string& Destination) {
    TarvaneTransferPlan plan;
    plan.Items.push_back({.Name = "item", .SourcePath = Source, .DestinationPath = Destination});
    const auto job = std::make_shared<TarvaneTransferJob>(plan.bMove, plan.Items.size(), "source");
    RunTarvaneTransferJob(job, std::move(plan));
    const TarvaneTransferUiSnapshot end = job->MakeUiSnapshot();
    std::puts(end.MessageText.c_str());
    return end.bSucceeded;
}
