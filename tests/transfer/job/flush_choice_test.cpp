// Which file systems are flushed after a job. Needs root for the mounts.

#include "flusher.h"
#include "mounts.h"
#include "temporary_directory.h"
#include "transfer_fixture.h"

#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

using Paths = std::vector<fs::path>;

class FlushChoiceTest : public testing::Test {
protected:
    TemporaryDirectory Room;
};

TEST_F(FlushChoiceTest, OfAlwaysTakesEachDirectoryThatIsWrittenTo) {
    fs::create_directory(Room / "merged");
    const TarvaneTransferPlan plan = PlanOf(false, {{"/s/a", Room / "a"},
                                                    {"/s/b", Room / "b"},
                                                    {"/s/merged", Room / "merged"},
                                                    {"/s/c", Room / "new/c"}});
    EXPECT_EQ(DirectoriesToFlush(plan, FlushChoice::Always),
              (Paths{Room.Path(), Room / "merged", Room / "new"}));
}

TEST_F(FlushChoiceTest, OfNeverTakesNone) {
    const TarvaneTransferPlan plan = PlanOf(false, {{"/s/a", Room / "a"}});
    EXPECT_EQ(DirectoriesToFlush(plan, FlushChoice::Never), Paths());
}

TEST_F(FlushChoiceTest, OfAutoTakesDisksThatCanBeUnplugged) {
    RemovableDisk disk(Room.Path(), "1\n");
    const TarvaneTransferPlan plan =
        PlanOf(false, {{"/s/a", Room / "a"}, {"/s/b", disk.Path() / "new/b"}});
    EXPECT_EQ(DirectoriesToFlush(plan, FlushChoice::Auto), Paths{disk.Path() / "new"});
    disk.SetAttribute("0\n");
    EXPECT_EQ(DirectoriesToFlush(plan, FlushChoice::Auto), Paths());
}

} // namespace
