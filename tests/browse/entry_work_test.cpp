// Making and renaming entries, and work as such.

#include "entry_work.h"

#include "becomes_true.h"
#include "child_processes.h"
#include "file_tree.h"
#include "hanging_file_system.h"
#include "no_processes_left.h"
#include "open_descriptors.h"
#include "result_of.h"
#include "temporary_directory.h"

#include <cerrno>
#include <csignal>
#include <functional>
#include <optional>
#include <sys/stat.h>

#include <gtest/gtest.h>

// The names that the linker gives to what replaces renameat2 and to the real one.
int RealRenameat2(int FromDirectory, const char* From, int ToDirectory, const char* To,
                  unsigned int Flags) asm("__real_renameat2");
int WrappedRenameat2(int FromDirectory, const char* From, int ToDirectory, const char* To,
                     unsigned int Flags) asm("__wrap_renameat2");

namespace {

namespace fs = std::filesystem;
using Strings = std::vector<std::string>;

// What renameat2 fails with instead of being called; 0 to call it.
int gRenameError = 0;

Strings FailuresOf(EntryWork Work) {
    return ResultOf(Work).Failures;
}

class EntryWorkTest : public testing::Test {
protected:
    ~EntryWorkTest() override { gRenameError = 0; }

    std::string Named(const std::string& Name) const { return "'" + (Room / Name).string() + "'"; }
    Strings MakeDirectory(const std::string& Name) const {
        return FailuresOf(EntryWork::MakeDirectory(Room / Name));
    }
    Strings Rename(const std::string& From, const std::string& To) const {
        return FailuresOf(EntryWork::Rename(Room / From, Room / To));
    }

    const TemporaryDirectory Room;
};

TEST_F(EntryWorkTest, MakesADirectory) {
    const mode_t before = umask(0027);
    EntryWork work = EntryWork::MakeDirectory(Room / "a\n\xff");
    const EntryWorkResult result = ResultOf(work);
    umask(before);
    EXPECT_EQ(result.Failures, Strings{});
    EXPECT_EQ(result.FailureCount, 0U);
    EXPECT_EQ(result.Done, 0U);
    EXPECT_EQ(TreeOf(Room.Path()), (Tree{{"a\n\xff", "dir"}}));
    EXPECT_EQ(fs::status(Room / "a\n\xff").permissions(), fs::perms(0750));
}

TEST_F(EntryWorkTest, SaysWhyADirectoryCannotBeMade) {
    WriteFile(Room / "taken", "");
    EXPECT_EQ(MakeDirectory("taken"),
              Strings{"cannot create directory " + Named("taken") + ": File exists"});
    EXPECT_EQ(MakeDirectory("no/where"), Strings{"cannot create directory " + Named("no/where") +
                                                 ": No such file or directory"});
    EXPECT_EQ(TreeOf(Room.Path()), (Tree{{"taken", "file "}}));
}

TEST_F(EntryWorkTest, Renames) {
    WriteFile(Room / "\xff", "1");
    fs::create_directory(Room / "directory");
    WriteFile(Room / "directory/inside", "2");
    fs::create_symlink("directory", Room / "link");
    EXPECT_EQ(Rename("\xff", "new\n"), Strings{});
    EXPECT_EQ(Rename("link", "renamed"), Strings{});
    EXPECT_EQ(Rename("directory", "moved"), Strings{});
    EXPECT_EQ(TreeOf(Room.Path()), (Tree{{"new\n", "file 1"},
                                         {"moved", "dir"},
                                         {"moved/inside", "file 2"},
                                         {"renamed", "link directory"}}));
}

TEST_F(EntryWorkTest, NeverRenamesOntoWhatIsThere) {
    WriteFile(Room / "from", "1");
    WriteFile(Room / "file", "2");
    fs::create_symlink("nowhere", Room / "dangling");
    fs::create_hard_link(Room / "from", Room / "twin");
    const Tree before = TreeOf(Room.Path());
    for (const int error : {0, EINVAL}) {
        gRenameError = error;
        for (const char* name : {"file", "dangling", "twin"}) {
            EXPECT_EQ(Rename("from", name), Strings{"cannot rename " + Named("from") + " to " +
                                                    Named(name) + ": File exists"});
        }
        EXPECT_EQ(TreeOf(Room.Path()), before) << error;
    }
}

TEST_F(EntryWorkTest, NeverRenamesADirectoryOntoAnEmptyOne) {
    fs::create_directory(Room / "from");
    fs::create_directory(Room / "empty");
    for (const int error : {0, EINVAL}) {
        gRenameError = error;
        EXPECT_EQ(Rename("from", "empty"), Strings{"cannot rename " + Named("from") + " to " +
                                                   Named("empty") + ": File exists"});
        EXPECT_TRUE(fs::exists(Room / "from")) << error;
    }
}

TEST_F(EntryWorkTest, RenamesWhereTheFileSystemCannotRefuseItself) {
    WriteFile(Room / "from", "1");
    gRenameError = EINVAL;
    EXPECT_EQ(Rename("from", "to"), Strings{});
    EXPECT_EQ(TreeOf(Room.Path()), (Tree{{"to", "file 1"}}));
}

TEST_F(EntryWorkTest, SaysWhyAnEntryCannotBeRenamed) {
    fs::create_directory(Room / "directory");
    EXPECT_EQ(Rename("directory", "directory/inside"),
              Strings{"cannot rename " + Named("directory") + " to " + Named("directory/inside") +
                      ": Invalid argument"});
    EXPECT_EQ(Rename("gone", "new"), Strings{"cannot rename " + Named("gone") + " to " +
                                             Named("new") + ": No such file or directory"});
}

TEST_F(EntryWorkTest, SaysWhyItCannotBeStarted) {
    std::optional<EntryWork> work;
    {
        const NoProcessesLeft limit;
        work.emplace(EntryWork::MakeDirectory(Room / "new"));
    }
    EXPECT_EQ(work->OverFd(), -1);
    EXPECT_EQ(work->EntriesDone(), 0U);
    const EntryWorkResult result = ResultOf(*work);
    EXPECT_EQ(result.Failures, Strings{"cannot start a process: Resource temporarily unavailable"});
    EXPECT_EQ(result.FailureCount, 1U);
    EXPECT_FALSE(fs::exists(Room / "new"));
}

TEST_F(EntryWorkTest, LeavesNothingBehind) {
    ASSERT_TRUE(NoChildIsLeft());
    const auto before = OpenDescriptors();
    EXPECT_EQ(MakeDirectory("new"), Strings{});
    EXPECT_EQ(OpenDescriptors(), before);
    EXPECT_TRUE(NoChildIsLeft());
}

// Needs root for the mount.
class HungEntryWork : public EntryWorkTest {
protected:
    HungEntryWork() {
        EnterPrivateMountNamespace();
        Hung.emplace(Room / "hung");
    }

    testing::AssertionResult HangsSoon() {
        return BecomesTrue("the work hangs", [this] { return Hung->IsHolding(); });
    }
    std::optional<HangingFileSystem> Hung;
};

TEST_F(HungEntryWork, IsLetGoOfAtOnceWhateverItIs) {
    const fs::path inside = Room / "hung/inside";
    const std::vector<std::function<EntryWork()>> starts = {
        [&] { return EntryWork::MakeDirectory(inside); },
        [&] { return EntryWork::Rename(inside, Room / "hung/new"); },
        [&] { return EntryWork::Delete({inside}); },
    };
    for (const std::function<EntryWork()>& start : starts) {
        ASSERT_TRUE(NoChildIsLeft());
        Hung.emplace(Room / "hung");
        const auto before = OpenDescriptors();
        {
            EntryWork work = start();
            ASSERT_TRUE(HangsSoon());
            EXPECT_FALSE(work.TakeResult().has_value());
        }
        EXPECT_EQ(ChildProcesses().size(), 1U);
        EXPECT_EQ(OpenDescriptors(), before);
        Hung.reset();
    }
    EXPECT_TRUE(NoChildIsLeft());
}

TEST_F(HungEntryWork, TellsHowFarItIs) {
    fs::create_directory(Room / "directory");
    WriteFile(Room / "directory/file", "");
    const EntryWork work = EntryWork::Delete({Room / "directory", Room / "hung/old"});
    ASSERT_TRUE(HangsSoon());
    EXPECT_EQ(work.EntriesDone(), 2U);
}

TEST_F(HungEntryWork, SaysThatItWasInterrupted) {
    ASSERT_TRUE(NoChildIsLeft());
    WriteFile(Room / "file", "");
    EntryWork work = EntryWork::Delete({Room / "file", Room / "hung/old"});
    ASSERT_TRUE(HangsSoon());
    ASSERT_EQ(ChildProcesses().size(), 1U);
    kill(ChildProcesses().front(), SIGKILL);
    Hung.reset();
    const EntryWorkResult result = ResultOf(work);
    EXPECT_EQ(result.Failures, Strings{"the work was interrupted"});
    EXPECT_EQ(result.FailureCount, 1U);
    EXPECT_EQ(result.Done, 1U);
}

} // namespace

int WrappedRenameat2(int FromDirectory, const char* From, int ToDirectory, const char* To,
                     unsigned int Flags) {
    if (gRenameError != 0) {
        errno = gRenameError;
        return -1;
    }
    return RealRenameat2(FromDirectory, From, ToDirectory, To, Flags);
}
