// Reading a directory whose file system does not answer. Needs root for the mount.

#include "listing_reader.h"

#include "becomes_true.h"
#include "child_processes.h"
#include "folder_watch.h"
#include "hanging_file_system.h"
#include "open_descriptors.h"
#include "own_mount_namespace.h"
#include "result_of.h"
#include "temporary_directory.h"

#include <csignal>
#include <optional>

#include <gtest/gtest.h>

namespace {

class HungListingReader : public testing::Test {
protected:
    HungListingReader() { Hung.emplace(Room / "hung"); }

    testing::AssertionResult HangsSoon() {
        return BecomesTrue("the reading hangs", [this] { return Hung->IsHolding(); });
    }

    const OwnMountNamespace Namespace;
    const TemporaryDirectory Room;
    const std::filesystem::path Place = Room / "hung";
    std::optional<HangingFileSystem> Hung;
};

TEST_F(HungListingReader, IsLetGoOfAtOnce) {
    ASSERT_TRUE(NoChildIsLeft());
    const auto before = OpenDescriptors();
    {
        ListingReader reader(Place);
        ASSERT_TRUE(HangsSoon());
        EXPECT_FALSE(reader.TakeResult().has_value());
    }
    EXPECT_EQ(ChildProcesses().size(), 1U);
    EXPECT_EQ(OpenDescriptors(), before);
    Hung.reset();
    EXPECT_TRUE(NoChildIsLeft());
}

TEST_F(HungListingReader, LeavesAWatchThatTheNextOneUses) {
    FolderWatch watch;
    {
        const ListingReader reader(Place, watch.Fd());
        ASSERT_TRUE(HangsSoon());
    }
    ListingReader next(Room.Path(), watch.Fd());
    EXPECT_EQ(ResultOf(next).Failure, "");
    EXPECT_FALSE(watch.TakeChange());
    std::filesystem::create_directory(Room / "new");
    EXPECT_TRUE(watch.TakeChange());
}

TEST_F(HungListingReader, SaysThatItWasInterrupted) {
    ASSERT_TRUE(NoChildIsLeft());
    ListingReader reader(Place);
    ASSERT_TRUE(HangsSoon());
    ASSERT_EQ(ChildProcesses().size(), 1U);
    kill(ChildProcesses().front(), SIGKILL);
    Hung.reset();
    EXPECT_EQ(ResultOf(reader).Failure, "the reading of '" + Place.string() + "' was interrupted");
}

} // namespace
