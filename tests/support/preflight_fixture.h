// What the tests of the look through the sources share: a room with source and destination, and the
// engine's own verdict on the same plan.

#pragma once

#include "file_tree.h"
#include "preflight.h"
#include "temporary_directory.h"
#include "transfer_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

using Strings = std::vector<std::string>;

class PreflightTest : public testing::Test {
protected:
    using Items = std::vector<std::pair<std::filesystem::path, std::filesystem::path>>;

    PreflightTest() {
        std::filesystem::create_directory(From);
        std::filesystem::create_directory(To);
    }

    void PlanToCopy(const Items& Given) { Plan = PlanOf(kCopy, Given); }
    void PlanToMove(const Items& Given) { Plan = PlanOf(kMove, Given); }

    PreflightTask Task() const { return {Plan, Rules, Scope}; }
    PreflightResult Look() { return RunPreflight(Task(), Control); }

    // The findings as "dangling-link from/link, stops", sorted.
    Strings Found() { return InWords(Look()); }
    Strings InWords(const PreflightResult& Result) const {
        Strings words;
        for (const PreflightFinding& finding : Result.Findings.Kept()) {
            const std::filesystem::path path = finding.Path.lexically_relative(Room.Path());
            words.push_back(std::string(PreflightFindingName(finding.Kind)) + " " + path.string() +
                            (finding.bStopsJob ? ", stops" : ""));
        }
        std::sort(words.begin(), words.end());
        return words;
    }

    // Lets the engine carry the plan out.
    TarvaneTransferUiSnapshot Transfer() {
        const auto job = std::make_shared<TarvaneTransferJob>(Plan.bMove, Plan.Items.size(), "");
        RunTarvaneTransferJob(job, Plan);
        return job->MakeUiSnapshot();
    }
    std::string TransferMessage() { return Transfer().MessageText; }

    TemporaryDirectory Room;
    const std::filesystem::path From = Room / "from";
    const std::filesystem::path To = Room / "to";
    TarvaneTransferPlan Plan;
    ConflictRules Rules{.ForFiles = FileConflictChoice::Overwrite};
    PreflightScope Scope = PreflightScope::Everything;
    PreflightControl Control;
};
