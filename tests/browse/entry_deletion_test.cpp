// Deleting real trees. Some need root, to be somebody else or to mount.

#include "entry_work.h"

#include "file_tree.h"
#include "mounts.h"
#include "needs.h"
#include "owned_descriptor.h"
#include "result_of.h"
#include "temporary_directory.h"

#include <algorithm>
#include <cstdarg>
#include <fcntl.h>
#include <functional>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

// The names that the linker gives to what replaces openat and to the real one.
int RealOpenat(int Directory, const char* Name, int Flags, ...) asm("__real_openat");
int WrappedOpenat(int Directory, const char* Name, int Flags, ...) asm("__wrap_openat");

namespace {

namespace fs = std::filesystem;
using Strings = std::vector<std::string>;

// In the process that deletes, before each directory that it opens.
std::function<void(const std::string& Name)> gBeforeOpen;

class EntryDeletionTest : public testing::Test {
protected:
    EntryDeletionTest() {
        fs::create_directories(Top);
        fs::create_directories(Outside / "sub");
        WriteFile(Outside / "sub/file", "precious");
        OutsideBefore = TreeOf(Outside);
    }
    ~EntryDeletionTest() override {
        gBeforeOpen = nullptr;
        EXPECT_EQ(TreeOf(Outside), OutsideBefore);
    }

    static EntryWorkResult Delete(const std::vector<fs::path>& Paths) {
        EntryWork work = EntryWork::Delete(Paths);
        return ResultOf(work);
    }
    static std::string Failure(const fs::path& Path, const std::string& Reason) {
        return "cannot delete '" + Path.string() + "': " + Reason;
    }
    static void GiveToNobody(const fs::path& Path) {
        NeedRoot();
        constexpr uid_t kNobody = 65534;
        ASSERT_EQ(chown(Path.c_str(), kNobody, kNobody), 0);
    }
    // With a file in it that can be deleted, as the directory itself can.
    void MakeTopOfNobody() {
        WriteFile(Top / "free", "");
        ASSERT_NO_FATAL_FAILURE(GiveToNobody(Top));
        ASSERT_NO_FATAL_FAILURE(GiveToNobody(Room.Path()));
    }

    const TemporaryDirectory Room;
    const fs::path Top = Room / "top";
    const fs::path Outside = Room / "outside";
    Tree OutsideBefore;
};

TEST_F(EntryDeletionTest, DeletesFilesAndTrees) {
    WriteFile(Top / "a/b/c/file", "");
    WriteFile(Top / "a/file", "");
    fs::create_directories(Top / "a/empty");
    MakeFifo(Top / "pipe");
    WriteFile(Room / "alone", "");
    WriteFile(Room / "stays", "");
    const EntryWorkResult result = Delete({Top, Room / "alone"});
    EXPECT_EQ(result.Failures, Strings{});
    EXPECT_EQ(result.FailureCount, 0U);
    EXPECT_EQ(result.Done, 9U);
    EXPECT_FALSE(fs::exists(Top));
    EXPECT_FALSE(fs::exists(Room / "alone"));
    EXPECT_TRUE(fs::exists(Room / "stays"));
}

TEST_F(EntryDeletionTest, DeletesLinksAndNeverWhatTheyLeadTo) {
    fs::create_symlink(Outside / "sub", Top / "to-directory");
    fs::create_symlink(Outside / "sub/file", Top / "to-file");
    fs::create_symlink("..", Top / "up");
    fs::create_symlink("nowhere", Top / "dangling");
    fs::create_symlink(Outside, Room / "link");
    const EntryWorkResult result = Delete({Top, Room / "link"});
    EXPECT_EQ(result.Failures, Strings{});
    EXPECT_EQ(result.Done, 6U);
    EXPECT_FALSE(fs::exists(Top));
    EXPECT_FALSE(fs::is_symlink(Room / "link"));
}

TEST_F(EntryDeletionTest, DeletesUnderAnyName) {
    const Strings names = {"\xff\xfe", "two\nlines", " ", "-rf", "...", "*", std::string(255, 'x')};
    for (const std::string& name : names) {
        WriteFile(Top / name / name, "");
    }
    const EntryWorkResult result = Delete({Top});
    EXPECT_EQ(result.Failures, Strings{});
    EXPECT_EQ(result.Done, 1 + 2 * names.size());
    EXPECT_FALSE(fs::exists(Top));
}

TEST_F(EntryDeletionTest, DeletesThroughALinkAboveWhatIsAskedFor) {
    WriteFile(Top / "sub/file", "");
    fs::create_symlink("top", Room / "link");
    EXPECT_EQ(Delete({Room / "link/sub"}).Done, 2U);
    EXPECT_TRUE(fs::is_empty(Top));
}

TEST_F(EntryDeletionTest, DeletesTreesDeeperThanPathsMayBeLong) {
    constexpr std::uint64_t kLevels = 2000;
    OwnedDescriptor current(open(Top.c_str(), O_PATH | O_DIRECTORY));
    for (std::uint64_t level = 0; level < kLevels; ++level) {
        ASSERT_EQ(mkdirat(current.Get(), "a directory", 0700), 0);
        current = OwnedDescriptor(
            RealOpenat(current.Get(), "a directory", O_PATH | O_DIRECTORY | O_NOFOLLOW));
    }
    rlimit before{};
    getrlimit(RLIMIT_NOFILE, &before);
    const rlimit few{64, before.rlim_max};
    setrlimit(RLIMIT_NOFILE, &few);
    const EntryWorkResult result = Delete({Top});
    setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_EQ(result.Failures, Strings{});
    EXPECT_EQ(result.Done, kLevels + 1);
    EXPECT_FALSE(fs::exists(Top));
}

TEST_F(EntryDeletionTest, TakesWhatIsGoneForDeleted) {
    const EntryWorkResult result = Delete({Room / "gone", Room / "no/where"});
    EXPECT_EQ(result.Failures, Strings{});
    EXPECT_EQ(result.Done, 0U);
}

TEST_F(EntryDeletionTest, DeletesNothingThatHasNoNameOfItsOwn) {
    WriteFile(Top / "sub/file", "");
    const Tree before = TreeOf(Room.Path());
    const std::vector<fs::path> paths = {Top / "sub/..", Top / ".", Top / "", "/"};
    const EntryWorkResult result = Delete(paths);
    EXPECT_EQ(result.FailureCount, paths.size());
    for (std::size_t i = 0; i < paths.size(); ++i) {
        EXPECT_EQ(result.Failures.at(i), Failure(paths[i], "Invalid argument"));
    }
    EXPECT_EQ(TreeOf(Room.Path()), before);
}

TEST_F(EntryDeletionTest, FollowsNoLinkThatIsPutInThePlaceOfADirectory) {
    WriteFile(Top / "sub/file", "");
    WriteFile(Top / "other", "");
    gBeforeOpen = [this](const std::string& Name) {
        if (Name == "sub") {
            fs::rename(Top / "sub", Room / "away");
            fs::create_symlink(Outside / "sub", Top / "sub");
        }
    };
    const EntryWorkResult result = Delete({Top});
    EXPECT_EQ(result.Failures, Strings{Failure(Top / "sub", "Not a directory")});
    EXPECT_EQ(result.Done, 1U);
    EXPECT_TRUE(fs::exists(Room / "away/file"));
}

TEST_F(EntryDeletionTest, DoesNotGoOnWhereADirectoryIsMovedTo) {
    WriteFile(Top / "sub/file", "");
    WriteFile(Room / "alone", "");
    fs::create_directories(Room / "elsewhere/sub");
    // Once on the way into each directory, and then on the way out.
    gBeforeOpen = [this, ups = 0](const std::string& Name) mutable {
        constexpr int kWayOut = 3;
        if (Name == ".." && ++ups == kWayOut) {
            fs::rename(Top / "sub", Room / "elsewhere/moved");
        }
    };
    const EntryWorkResult result = Delete({Top, Room / "alone"});
    EXPECT_EQ(result.Failures, Strings{Failure(Top / "sub", "No such file or directory")});
    EXPECT_EQ(result.Done, 2U);
    EXPECT_EQ(TreeOf(Room / "elsewhere"), (Tree{{"sub", "dir"}, {"moved", "dir"}}));
    EXPECT_FALSE(fs::exists(Room / "alone"));
}

TEST_F(EntryDeletionTest, LeavesWhatComesMeanwhile) {
    WriteFile(Top / "file", "");
    gBeforeOpen = [this, ups = 0](const std::string& Name) mutable {
        constexpr int kWayOut = 2;
        if (Name == ".." && ++ups == kWayOut) {
            WriteFile(Top / "new", "");
        }
    };
    const EntryWorkResult result = Delete({Top});
    EXPECT_EQ(result.Failures, Strings{Failure(Top, "Directory not empty")});
    EXPECT_EQ(TreeOf(Top), (Tree{{"new", "file "}}));
}

TEST_F(EntryDeletionTest, LeavesOtherFileSystemsAlone) {
    EnterPrivateMountNamespace();
    const ScopedMount other = MountTmpfs(Top / "sub/other", "size=1m");
    WriteFile(other.Path() / "file", "precious");
    WriteFile(Top / "sub/file", "");
    const EntryWorkResult result = Delete({Top});
    EXPECT_EQ(result.Failures, Strings{Failure(other.Path(), "Device or resource busy")});
    EXPECT_EQ(result.FailureCount, 1U);
    EXPECT_EQ(result.Done, 1U);
    EXPECT_EQ(TreeOf(Top),
              (Tree{{"sub", "dir"}, {"sub/other", "dir"}, {"sub/other/file", "file precious"}}));
}

TEST_F(EntryDeletionTest, LeavesAMountedFileSystemAloneThatIsAskedFor) {
    EnterPrivateMountNamespace();
    const ScopedMount other = MountTmpfs(Top, "size=1m");
    WriteFile(Top / "file", "precious");
    EXPECT_EQ(Delete({Top}).Failures, Strings{Failure(Top, "Device or resource busy")});
    EXPECT_EQ(TreeOf(Top), (Tree{{"file", "file precious"}}));
}

TEST_F(EntryDeletionTest, LeavesDirectoriesAloneThatAreShownFromElsewhere) {
    EnterPrivateMountNamespace();
    const fs::path shown = Top / "shown";
    fs::create_directory(shown);
    ASSERT_EQ(mount(Outside.c_str(), shown.c_str(), "", MS_BIND, ""), 0);
    const ScopedMount bind(shown);
    EXPECT_EQ(Delete({Top}).Failures, Strings{Failure(shown, "Device or resource busy")});
}

TEST_F(EntryDeletionTest, LeavesAloneWhatIsMountedMeanwhile) {
    EnterPrivateMountNamespace();
    WriteFile(Top / "sub/file", "");
    gBeforeOpen = [this](const std::string& Name) {
        if (Name == "sub") {
            mount("tmpfs", (Top / "sub").c_str(), "tmpfs", 0, "size=1m");
            WriteFile(Top / "sub/precious", "");
        }
    };
    const EntryWorkResult result = Delete({Top});
    const ScopedMount mounted(Top / "sub");
    EXPECT_EQ(result.Failures, Strings{Failure(Top / "sub", "Device or resource busy")});
    EXPECT_EQ(TreeOf(Top), (Tree{{"sub", "dir"}, {"sub/precious", "file "}}));
}

TEST_F(EntryDeletionTest, DeletesNothingOfAReadOnlyFileSystem) {
    EnterPrivateMountNamespace();
    WriteFile(Top / "sub/file", "");
    const ScopedMount readOnly = BindReadOnly(Top, Top);
    const EntryWorkResult result = Delete({Top / "sub"});
    EXPECT_EQ(result.Failures, Strings{Failure(Top / "sub", "Read-only file system")});
    EXPECT_EQ(result.FailureCount, 1U);
    EXPECT_EQ(result.Done, 0U);
}

TEST_F(EntryDeletionTest, GoesOnAfterWhatNobodyMayDelete) {
    WriteFile(Top / "locked/file", "");
    WriteFile(Top / "sub/file", "");
    ASSERT_NO_FATAL_FAILURE(MakeTopOfNobody());
    ASSERT_NO_FATAL_FAILURE(GiveToNobody(Top / "sub"));
    const ActingAsNobody nobody;
    const EntryWorkResult result = Delete({Top});
    EXPECT_EQ(result.Failures, Strings{Failure(Top / "locked/file", "Permission denied")});
    EXPECT_EQ(result.FailureCount, 1U);
    EXPECT_EQ(result.Done, 3U);
    EXPECT_EQ(TreeOf(Top), (Tree{{"locked", "dir"}, {"locked/file", "file "}}));
}

TEST_F(EntryDeletionTest, SaysThatNobodyMayReadOrEnterADirectory) {
    NeedRoot();
    WriteFile(Top / "unread/file", "");
    WriteFile(Top / "unentered/file", "");
    fs::create_directory(Top / "empty");
    chmod((Top / "unread").c_str(), 0711);
    chmod((Top / "unentered").c_str(), 0744);
    chmod((Top / "empty").c_str(), 0);
    ASSERT_NO_FATAL_FAILURE(MakeTopOfNobody());
    EntryWorkResult result;
    {
        const ActingAsNobody nobody;
        result = Delete({Top});
    }
    std::sort(result.Failures.begin(), result.Failures.end());
    EXPECT_EQ(result.Failures, (Strings{Failure(Top / "unentered", "Permission denied"),
                                        Failure(Top / "unread", "Permission denied")}));
    EXPECT_EQ(result.Done, 2U);
    EXPECT_TRUE(fs::exists(Top / "unentered/file"));
}

TEST_F(EntryDeletionTest, LeavesWholeWhatCannotBeDeletedItself) {
    WriteFile(Top / "free", "");
    ASSERT_NO_FATAL_FAILURE(GiveToNobody(Top));
    const ActingAsNobody nobody;
    EXPECT_EQ(Delete({Top}).Failures, Strings{Failure(Top, "Permission denied")});
    EXPECT_EQ(TreeOf(Top), (Tree{{"free", "file "}}));
}

TEST_F(EntryDeletionTest, NamesTheFirstFailuresAndCountsTheRest) {
    constexpr int kFiles = 25;
    for (int i = 0; i < kFiles; ++i) {
        WriteFile(Top / "locked" / std::to_string(i), "");
    }
    ASSERT_NO_FATAL_FAILURE(MakeTopOfNobody());
    const ActingAsNobody nobody;
    const EntryWorkResult result = Delete({Top});
    EXPECT_EQ(result.Failures.size(), 10U);
    EXPECT_EQ(result.FailureCount, std::uint64_t{kFiles});
    EXPECT_EQ(result.Done, 1U);
}

} // namespace

int WrappedOpenat(int Directory, const char* Name, int Flags, ...) {
    va_list arguments;
    va_start(arguments, Flags);
    const int mode = (Flags & O_CREAT) != 0 ? va_arg(arguments, int) : 0;
    va_end(arguments);
    if (gBeforeOpen) {
        gBeforeOpen(Name);
    }
    return RealOpenat(Directory, Name, Flags, mode);
}
