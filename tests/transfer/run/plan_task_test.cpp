// Plans of requests that name disks and drives, which are waited for without holding anybody. Needs
// root for the mount.

#include "plan_task.h"

#include "becomes_true.h"
#include "child_processes.h"
#include "fake_drive.h"
#include "hanging_file_system.h"
#include "plan_fixture.h"

#include <optional>
#include <unistd.h>

namespace {

class PlanTaskTest : public PlanFixture {
protected:
    // As a loop that comes by now and then.
    static BuiltPlan PlanOf(PlanTask& Task) {
        std::optional<BuiltPlan> plan;
        EXPECT_TRUE(BecomesTrue("the plan is there", [&] {
            plan = Task.TakePlan();
            return plan.has_value();
        }));
        return plan.value_or(PlanRefusal());
    }

    static std::vector<std::string> SourcesIn(const BuiltPlan& Built) {
        std::vector<std::string> sources;
        for (const auto& item : std::get<TarvaneTransferPlan>(Built).Items) {
            sources.push_back(item.SourcePath);
        }
        return sources;
    }

    const std::string Disc = std::string("cdda:") + kFakeDevice;
};

TEST_F(PlanTaskTest, HasThePlanWhereNoDriveIsNamed) {
    PlanTask task(Copy({"a.txt", "dest"}));
    EXPECT_EQ(SourcesIn(PlanOf(task)), (Names{Directory / "a.txt"}));
    EXPECT_EQ(task.WaitsFor(), "");
    EXPECT_TRUE(task.Discs().empty());
}

TEST_F(PlanTaskTest, AsksTheDriveAndPlansWithItsTracks) {
    const ScopedDrive drive(AudioDisc({150, 18783}, 40500));
    PlanTask task(Copy({"a.txt", Disc, "dest"}));
    EXPECT_EQ(SourcesIn(PlanOf(task)),
              (Names{Directory / "a.txt", Disc + "/Track 01.wav", Disc + "/Track 02.wav"}));
    EXPECT_EQ(task.WaitsFor(), "");
    EXPECT_EQ(std::get<TrackList>(task.Discs().at(kFakeDevice)).Tracks.size(), 2U);
}

TEST_F(PlanTaskTest, SaysWhyADriveHasNoTracks) {
    PlanTask task(Copy({"cdda:/dev/null", "dest"}));
    const BuiltPlan plan = PlanOf(task);
    const auto* refusal = std::get_if<PlanRefusal>(&plan);
    ASSERT_NE(refusal, nullptr);
    EXPECT_EQ(refusal->Kind, PlanRefusalKind::Failed);
    ASSERT_EQ(refusal->Sentences.size(), 1U);
    EXPECT_NE(refusal->Sentences[0].find("/dev/null"), std::string::npos) << refusal->Sentences[0];
}

TEST_F(PlanTaskTest, CanBeLetGoOfWhileADriveGetsReady) {
    ScopedDrive drive(AudioDisc({150}, 40500));
    drive.Before = [](const std::string&) {
        while (true) {
            pause();
        }
    };
    {
        PlanTask task(Copy({Disc, "dest"}));
        EXPECT_TRUE(BecomesTrue("the drive is asked", [&task] {
            return !task.TakePlan().has_value() && task.WaitsFor() == kFakeDevice;
        }));
        EXPECT_FALSE(task.TakePlan().has_value());
    }
    EXPECT_TRUE(NoChildIsLeft());
}

TEST_F(PlanTaskTest, CanBeLetGoOfWhileADiskDoesNotAnswer) {
    EnterPrivateMountNamespace();
    for (const bool bDestination : {false, true}) {
        std::optional<HangingFileSystem> hung;
        hung.emplace(Directory / "hung");
        {
            const Names operands =
                bDestination ? Names{"a.txt", "hung/to"} : Names{"hung/a", "dest"};
            PlanTask task(Copy(operands));
            ASSERT_TRUE(BecomesTrue("it hangs", [&hung] { return hung->IsHolding(); }));
            EXPECT_FALSE(task.TakePlan().has_value());
            EXPECT_FALSE(task.TakePlan().has_value());
            EXPECT_EQ(task.WaitsFor(), "");
        }
        EXPECT_EQ(ChildProcesses().size(), 1U);
        hung.reset();
        EXPECT_TRUE(NoChildIsLeft());
    }
}

} // namespace
