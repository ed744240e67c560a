// What the tests of runs share: a directory "from" with the files "a" and "b", an empty directory
// "to", and a run from the one to the other that somebody attends.

#pragma once

#include "becomes_true.h"
#include "file_tree.h"
#include "temporary_directory.h"
#include "transfer_run.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

class RunFixture : public testing::Test {
protected:
    using Stage = TransferRun::Stage;
    using Strings = std::vector<std::string>;

    RunFixture() {
        // Nobody wants to hear the tests: the bell stands in for the sound then.
        setenv("SSH_CONNECTION", "somewhere", 1);
        for (const char* name : {"a", "b"}) {
            WriteFile(Root / "from" / name, "new");
            EXPECT_EQ(::chmod((Root / "from" / name).c_str(), 0640), 0);
        }
        std::filesystem::create_directory(Root / "to");
        Request.TargetDirectory = Root / "to";
        Request.Flush = FlushChoice::Never;
    }

    std::string PathOf(const std::string& Name) const { return (Root / Name).string(); }

    TarvaneTransferPlan PlanOf(const Strings& Names, const std::string& Destination = "to") const {
        TarvaneTransferPlan plan;
        plan.bMove = Request.bMove;
        for (const std::string& name : Names) {
            TarvaneTransferItemPlan& item = plan.Items.emplace_back();
            item.SourcePath = Root / "from" / name;
            item.DestinationPath = Root / Destination / name;
        }
        return plan;
    }

    // Attends the run until it is at the stage.
    testing::AssertionResult Reaches(TransferRun& Run, Stage Wanted) {
        return BecomesTrue("the run is at its stage", [&] {
            Run.Attend(Now);
            return Run.CurrentStage() == Wanted;
        });
    }
    testing::AssertionResult Ends(TransferRun& Run) { return Reaches(Run, Stage::Over); }
    testing::AssertionResult Asks(TransferRun& Run) {
        return BecomesTrue("the run asks", [&] {
            Run.Attend(Now);
            return Run.OpenQuestion().has_value();
        });
    }

    static void Answer(TransferRun& Run, TarvaneTransferConflictAction Action) {
        Run.Answer(Run.OpenQuestion()->Id, {.Action = Action});
    }

    mode_t ModeOf(const std::string& Name) const {
        struct stat status {};
        EXPECT_EQ(::stat((Root / Name).c_str(), &status), 0) << Name;
        return status.st_mode & 07777;
    }

    const TemporaryDirectory Root;
    TransferRequest Request;
    // Goes on only where a test says so.
    TransferRun::TimePoint Now;
};
