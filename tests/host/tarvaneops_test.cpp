// The path comparisons that keep the engine from copying a file onto itself or a directory into
// itself, on real files.

#include "tarvaneops.h"

#include "failing_allocation.h"
#include "file_tree.h"
#include "mounts.h"
#include "no_descriptors_left.h"
#include "open_descriptors.h"
#include "temporary_directory.h"

#include <algorithm>
#include <cstring>
#include <filesystem>

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

// What statx does otherwise during a test.
struct FakeStatx {
    FakeStatx() { gFake = this; }
    ~FakeStatx() { gFake = nullptr; }
    FakeStatx(const FakeStatx&) = delete;
    FakeStatx& operator=(const FakeStatx&) = delete;

    // As kernels before 5.8 do.
    bool bTellsMounts = true;
    // Finds "name" under "NAME", too, as a file system does that ignores case.
    bool bIgnoresCase = false;
    // Gives the directory "subvolume" and what is in it a device of their own inside its mount.
    bool bHasSubvolumes = false;
    int Calls = 0;

    static FakeStatx* gFake;
};

FakeStatx* FakeStatx::gFake = nullptr;

int StatxCallsFor(const fs::path& Directory, const fs::path& Path) {
    const FakeStatx kernel;
    EXPECT_FALSE(TarvanePathIsInside(Directory, Path));
    return kernel.Calls;
}

// Relative paths start in the test's directory, and so does the process for the test's duration.
class PathsOnDisk : public testing::Test {
protected:
    void SetUp() override { fs::current_path(Directory.Path()); }
    void TearDown() override { fs::current_path("/"); }

    fs::path At(const std::string& Name) const { return Directory / Name; }

    const TemporaryDirectory Directory;
};

class PathsEquivalentOrSame : public PathsOnDisk {};
class PathIsInside : public PathsOnDisk {};

} // namespace

extern "C" {
int __real_statx(int Directory, const char* Path, int Flags, unsigned Mask, struct statx* Out);
int __wrap_statx(int Directory, const char* Path, int Flags, unsigned Mask, struct statx* Out);
}

int __wrap_statx(int Directory, const char* Path, int Flags, unsigned Mask, struct statx* Out) {
    FakeStatx* const fake = FakeStatx::gFake;
    const bool bOtherCase = fake != nullptr && fake->bIgnoresCase && std::strcmp(Path, "NAME") == 0;
    const int result = __real_statx(Directory, bOtherCase ? "name" : Path, Flags, Mask, Out);
    if (fake != nullptr) {
        ++fake->Calls;
    }
    if (fake != nullptr && fake->bHasSubvolumes) {
        const fs::path opened = "/proc/self/fd/" + std::to_string(Directory);
        const fs::path full = Directory < 0 ? Path : fs::read_symlink(opened) / Path;
        Out->stx_dev_minor += std::ranges::count(full, "subvolume") > 0 ? 1000U : 0U;
    }
    if (fake != nullptr && !fake->bTellsMounts) {
        Out->stx_mask &= ~unsigned{STATX_MNT_ID};
        Out->stx_mnt_id = 0;
    }
    return result;
}

TEST_F(PathsEquivalentOrSame, HoldsForAFileAndItself) {
    WriteFile(At("a"), "text");
    EXPECT_TRUE(TarvanePathsEquivalentOrSame("a", "a"));
}

TEST_F(PathsEquivalentOrSame, IsFalseForTwoFilesOfEqualContents) {
    WriteFile(At("a"), "text");
    WriteFile(At("b"), "text");
    EXPECT_FALSE(TarvanePathsEquivalentOrSame("a", "b"));
}

TEST_F(PathsEquivalentOrSame, HoldsForHardLinksOfOneFile) {
    WriteFile(At("a"), "text");
    fs::create_hard_link("a", "b");
    EXPECT_TRUE(TarvanePathsEquivalentOrSame("a", "b"));
}

TEST_F(PathsEquivalentOrSame, FollowsALinkOnEitherSide) {
    WriteFile(At("a"), "text");
    fs::create_symlink("a", "link");
    EXPECT_TRUE(TarvanePathsEquivalentOrSame("link", "a"));
    EXPECT_TRUE(TarvanePathsEquivalentOrSame("a", "link"));
}

TEST_F(PathsEquivalentOrSame, HoldsForOneDirectoryReachedThroughALink) {
    fs::create_directories("real/sub");
    fs::create_directory_symlink("real", "link");
    EXPECT_TRUE(TarvanePathsEquivalentOrSame("real/sub", "link/sub"));
}

TEST_F(PathsEquivalentOrSame, HoldsForADirectoryMountedASecondTime) {
    EnterPrivateMountNamespace();
    fs::create_directory("real");
    const ScopedMount second = BindReadOnly(At("real"), At("second"));
    EXPECT_TRUE(TarvanePathsEquivalentOrSame("real", "second"));
}

TEST_F(PathsEquivalentOrSame, IsFalseForEqualInodesOfTwoFileSystems) {
    EnterPrivateMountNamespace();
    const ScopedMount first = MountTmpfs(At("first"), "size=64k");
    const ScopedMount second = MountTmpfs(At("second"), "size=64k");
    EXPECT_FALSE(TarvanePathsEquivalentOrSame("first", "second"));
}

TEST_F(PathsEquivalentOrSame, HoldsForARelativeAndAnAbsolutePathOfOneFile) {
    WriteFile(At("a"), "text");
    EXPECT_TRUE(TarvanePathsEquivalentOrSame("a", At("a")));
}

TEST_F(PathsEquivalentOrSame, HoldsForARelativeAndAnAbsolutePathThatAreMissing) {
    EXPECT_TRUE(TarvanePathsEquivalentOrSame("missing", At("missing")));
}

TEST_F(PathsEquivalentOrSame, ComparesMissingPathsByTheirNormalTexts) {
    EXPECT_TRUE(TarvanePathsEquivalentOrSame("missing/./a/../b", "missing//b"));
    EXPECT_TRUE(TarvanePathsEquivalentOrSame("missing/b/", "missing/b"));
    EXPECT_FALSE(TarvanePathsEquivalentOrSame("missing/b", "missing/bc"));
    EXPECT_FALSE(TarvanePathsEquivalentOrSame("missing/b", "missing"));
}

TEST_F(PathsEquivalentOrSame, IsFalseWhenOnlyOneExists) {
    WriteFile(At("a"), "text");
    EXPECT_FALSE(TarvanePathsEquivalentOrSame("a", "missing"));
    EXPECT_FALSE(TarvanePathsEquivalentOrSame("missing", "a"));
}

TEST_F(PathsEquivalentOrSame, IgnoresTrailingSlashesOfADirectory) {
    fs::create_directory("dir");
    EXPECT_TRUE(TarvanePathsEquivalentOrSame("dir/", "dir"));
    EXPECT_TRUE(TarvanePathsEquivalentOrSame("dir", "dir///"));
}

TEST_F(PathsEquivalentOrSame, HoldsForTheRootInEveryWriting) {
    EXPECT_TRUE(TarvanePathsEquivalentOrSame("/", "/.."));
    EXPECT_TRUE(TarvanePathsEquivalentOrSame("/", "/."));
}

TEST_F(PathsEquivalentOrSame, StepsBackFromWhereALinkLeads) {
    fs::create_directories("real/sub");
    WriteFile(At("real/a"), "text");
    fs::create_directory_symlink("real/sub", "link");
    EXPECT_TRUE(TarvanePathsEquivalentOrSame("link/../a", "real/a"));
}

TEST_F(PathsEquivalentOrSame, ComparesADanglingLinkByItsText) {
    fs::create_symlink("missing", "dangling");
    EXPECT_TRUE(TarvanePathsEquivalentOrSame("dangling", "./dangling"));
    EXPECT_FALSE(TarvanePathsEquivalentOrSame("dangling", "missing"));
}

TEST_F(PathsEquivalentOrSame, ComparesALoopOfLinksByItsText) {
    fs::create_symlink("two", "one");
    fs::create_symlink("one", "two");
    EXPECT_TRUE(TarvanePathsEquivalentOrSame("one", "./one"));
    EXPECT_FALSE(TarvanePathsEquivalentOrSame("one", "two"));
}

TEST_F(PathsEquivalentOrSame, ComparesByTextWhereNothingMayBeLookedAt) {
    WriteFile(At("locked/a"), "text");
    fs::create_hard_link("locked/a", "locked/b");
    fs::permissions("locked", fs::perms::owner_all);
    const ActingAsNobody nobody;
    EXPECT_TRUE(TarvanePathsEquivalentOrSame("locked/a", "locked/./a"));
    EXPECT_FALSE(TarvanePathsEquivalentOrSame("locked/a", "locked/b"));
}

TEST_F(PathsEquivalentOrSame, TakesNamesAsBytes) {
    WriteFile(At("new\nline \xff"), "text");
    EXPECT_TRUE(TarvanePathsEquivalentOrSame("new\nline \xff", At("new\nline \xff")));
    EXPECT_FALSE(TarvanePathsEquivalentOrSame("new\nline \xff", "new\nline \xfe"));
}

TEST_F(PathsEquivalentOrSame, ComparesRelativeTextsInADirectoryThatWasRemoved) {
    fs::create_directory("gone");
    fs::current_path("gone");
    fs::remove(At("gone"));
    EXPECT_TRUE(TarvanePathsEquivalentOrSame("a", "./a"));
    EXPECT_FALSE(TarvanePathsEquivalentOrSame("a", "b"));
}

TEST_F(PathsEquivalentOrSame, KeepsStepsAboveADirectoryThatWasRemoved) {
    fs::create_directory("gone");
    fs::current_path("gone");
    fs::remove(At("gone"));
    EXPECT_TRUE(TarvanePathsEquivalentOrSame("../missing", "./../b/../missing"));
    EXPECT_FALSE(TarvanePathsEquivalentOrSame("../missing", "missing"));
    EXPECT_FALSE(TarvanePathsEquivalentOrSame("missing", "/missing"));
    EXPECT_FALSE(TarvanePathsEquivalentOrSame("", "."));
}

TEST_F(PathsEquivalentOrSame, ComparesStepsBackInMissingAbsolutePaths) {
    EXPECT_TRUE(TarvanePathsEquivalentOrSame("/missing/a/b/../../c", "/missing/c"));
    EXPECT_TRUE(TarvanePathsEquivalentOrSame("/missing/a/../b/../c", "/missing/c"));
    EXPECT_TRUE(TarvanePathsEquivalentOrSame("/../../missing", "/missing/."));
    EXPECT_FALSE(TarvanePathsEquivalentOrSame("/missing/a/../b", "/missing/a"));
    EXPECT_FALSE(TarvanePathsEquivalentOrSame("/missing/a/b", "/missing/c/b"));
    EXPECT_FALSE(TarvanePathsEquivalentOrSame("/missing/a", "/a"));
}

TEST_F(PathsEquivalentOrSame, HoldsForAnEmptyPathOnlyWithAnother) {
    EXPECT_TRUE(TarvanePathsEquivalentOrSame("", ""));
    EXPECT_FALSE(TarvanePathsEquivalentOrSame("", "."));
    EXPECT_FALSE(TarvanePathsEquivalentOrSame("a", ""));
}

// The engine asks for every entry.
TEST_F(PathsEquivalentOrSame, NeedsNoMemoryForAbsolutePaths) {
    WriteFile(At("source/a"), "text");
    const fs::path source = At("source/a");
    const fs::path destination = At("destination/source/a");
    const FailingAllocation memory(0);
    EXPECT_FALSE(TarvanePathsEquivalentOrSame(source, destination));
    EXPECT_FALSE(memory.Failed());
}

TEST_F(PathsEquivalentOrSame, HoldsToBeSafeWhenMemoryRunsOut) {
    const fs::path first = "one name that is too long to fit into the text object itself";
    const fs::path second = "another name that is too long to fit into the text object itself";
    ASSERT_FALSE(TarvanePathsEquivalentOrSame(first, second));
    const FailingAllocation memory(0);
    EXPECT_TRUE(TarvanePathsEquivalentOrSame(first, second));
    EXPECT_TRUE(memory.Failed());
}

TEST_F(PathIsInside, HoldsForEveryDepthBelow) {
    fs::create_directories("a/b/c");
    EXPECT_TRUE(TarvanePathIsInside("a", "a/b"));
    EXPECT_TRUE(TarvanePathIsInside("a", "a/b/c"));
}

TEST_F(PathIsInside, IsFalseForADirectoryAndItself) {
    fs::create_directory("a");
    fs::create_directory_symlink("a", "link");
    EXPECT_FALSE(TarvanePathIsInside("a", "a"));
    EXPECT_FALSE(TarvanePathIsInside("a", "a/"));
    EXPECT_FALSE(TarvanePathIsInside("a/.", At("a")));
    EXPECT_FALSE(TarvanePathIsInside("a", "link"));
    EXPECT_FALSE(TarvanePathIsInside("/", "/"));
}

TEST_F(PathIsInside, IsFalseForTheDirectoryAbove) {
    fs::create_directories("a/b");
    EXPECT_FALSE(TarvanePathIsInside("a/b", "a"));
    EXPECT_FALSE(TarvanePathIsInside("a/b", "/"));
}

TEST_F(PathIsInside, ComparesWholeComponents) {
    fs::create_directories("a/b");
    fs::create_directories("a/bc");
    EXPECT_FALSE(TarvanePathIsInside("a/b", "a/bc"));
    EXPECT_FALSE(TarvanePathIsInside("a/b", "a/bc/d"));
    EXPECT_FALSE(TarvanePathIsInside("a/bc", "a/b/c"));
}

TEST_F(PathIsInside, HoldsForEverythingBelowTheRoot) {
    EXPECT_TRUE(TarvanePathIsInside("/", "/missing"));
    EXPECT_TRUE(TarvanePathIsInside("/", "a"));
}

TEST_F(PathIsInside, HoldsForAPathThatDoesNotExistYet) {
    fs::create_directory("a");
    EXPECT_TRUE(TarvanePathIsInside("a", "a/new"));
    EXPECT_TRUE(TarvanePathIsInside("a", "a/new/deep/er"));
    EXPECT_FALSE(TarvanePathIsInside("a", "new/a/b"));
}

TEST_F(PathIsInside, HoldsForTextsOfWhichNothingExists) {
    EXPECT_TRUE(TarvanePathIsInside("missing", "missing/b"));
    EXPECT_FALSE(TarvanePathIsInside("missing", "missing"));
    EXPECT_FALSE(TarvanePathIsInside("missing/b", "missing/bc/d"));
    EXPECT_FALSE(TarvanePathIsInside("/missing", "/other/b"));
}

TEST_F(PathIsInside, MixesRelativeAndAbsolutePaths) {
    fs::create_directory("a");
    EXPECT_TRUE(TarvanePathIsInside("a", At("a/new")));
    EXPECT_TRUE(TarvanePathIsInside(At("a"), "a/new"));
    EXPECT_TRUE(TarvanePathIsInside(".", "a"));
    EXPECT_FALSE(TarvanePathIsInside("a", "."));
}

TEST_F(PathIsInside, IgnoresTrailingAndRepeatedSlashes) {
    fs::create_directory("a");
    EXPECT_TRUE(TarvanePathIsInside("a/", "a/new/"));
    EXPECT_TRUE(TarvanePathIsInside("a//", At("a").string() + "//new"));
}

TEST_F(PathIsInside, StepsBackInExistingDirectories) {
    fs::create_directories("a/b");
    EXPECT_TRUE(TarvanePathIsInside("a", "a/b/../new"));
    EXPECT_FALSE(TarvanePathIsInside("a", "a/b/../../new"));
    EXPECT_FALSE(TarvanePathIsInside("a/b", "a/b/../new"));
    EXPECT_TRUE(TarvanePathIsInside("a/b/..", "a/new"));
}

TEST_F(PathIsInside, StepsBackOverWhatDoesNotExist) {
    fs::create_directory("a");
    EXPECT_TRUE(TarvanePathIsInside("a", "missing/../a/new"));
    EXPECT_FALSE(TarvanePathIsInside("a", "a/missing/../../new"));
}

TEST_F(PathIsInside, ResolvesALinkBehindAStepBackOverWhatDoesNotExist) {
    fs::create_directory("a");
    fs::create_directory_symlink("a", "link");
    fs::create_directory_symlink(At("a"), "absolute");
    EXPECT_TRUE(TarvanePathIsInside("a", "missing/../link/new"));
    EXPECT_TRUE(TarvanePathIsInside("a", "missing/../absolute/new"));
}

TEST_F(PathIsInside, StepsBackFromWhereALinkLeads) {
    fs::create_directories("a/b");
    fs::create_directory_symlink("a/b", "link");
    EXPECT_TRUE(TarvanePathIsInside("a", "link/../new"));
}

TEST_F(PathIsInside, ResolvesLinksInEitherPath) {
    fs::create_directories("real/b");
    fs::create_directory_symlink("real", "link");
    EXPECT_TRUE(TarvanePathIsInside("real", "link/new"));
    EXPECT_TRUE(TarvanePathIsInside("link", "real/new"));
    EXPECT_TRUE(TarvanePathIsInside("link/b", "real/b/new/er"));
}

TEST_F(PathIsInside, ResolvesLinksWhereNothingMoreCanBeOpened) {
    fs::create_directories("real/b");
    fs::create_directory_symlink("real", "link");
    bool bBelow = false;
    bool bBeside = true;
    {
        const NoDescriptorsLeft none;
        bBelow = TarvanePathIsInside("real", "link/b/new");
        bBeside = TarvanePathIsInside("real/b", "link/new");
    }
    EXPECT_TRUE(bBelow);
    EXPECT_FALSE(bBeside);
}

TEST_F(PathIsInside, ResolvesLinksToAbsolutePathsAndToLinks) {
    fs::create_directory("real");
    fs::create_directory_symlink(At("real"), "first");
    fs::create_directory_symlink("./first", "second");
    EXPECT_TRUE(TarvanePathIsInside("real", "second/new"));
    EXPECT_TRUE(TarvanePathIsInside("first", "real/new"));
    EXPECT_TRUE(TarvanePathIsInside("second", "real/new"));
}

TEST_F(PathIsInside, IsFalseForALinkInsideThatLeadsOutside) {
    fs::create_directory("a");
    fs::create_directory("outside");
    fs::create_directory_symlink("../outside", "a/link");
    EXPECT_FALSE(TarvanePathIsInside("a", "a/link/new"));
}

TEST_F(PathIsInside, ResolvesALinkToWhatDoesNotExistYet) {
    fs::create_directory("a");
    fs::create_symlink("a/new", "dangling");
    EXPECT_TRUE(TarvanePathIsInside("a", "dangling"));
    EXPECT_TRUE(TarvanePathIsInside("a", "dangling/er"));
}

TEST_F(PathIsInside, TakesALoopOfLinksAsItIsWritten) {
    fs::create_directory("a");
    fs::create_symlink("two", "a/one");
    fs::create_symlink("one", "a/two");
    EXPECT_TRUE(TarvanePathIsInside("a", "a/one/new"));
    EXPECT_FALSE(TarvanePathIsInside("b", "a/one/new"));
}

TEST_F(PathIsInside, HoldsForADirectoryMountedASecondTime) {
    EnterPrivateMountNamespace();
    fs::create_directory("real");
    const ScopedMount second = BindReadOnly(At("real"), At("second"));
    EXPECT_TRUE(TarvanePathIsInside("real", "second/new"));
    EXPECT_TRUE(TarvanePathIsInside("real/missing/..", "second/new"));
    EXPECT_FALSE(TarvanePathIsInside("real", "second"));
}

TEST_F(PathIsInside, HoldsFarBelowADirectoryMountedASecondTime) {
    EnterPrivateMountNamespace();
    fs::create_directories("real/a/b");
    const ScopedMount second = BindReadOnly(At("real"), At("deeper/second"));
    EXPECT_TRUE(TarvanePathIsInside("real", "deeper/second/a/b/c/new"));
    EXPECT_TRUE(TarvanePathIsInside("real/a", "deeper/second/a/b"));
    EXPECT_FALSE(TarvanePathIsInside("real/a/b", "deeper/second/a/c"));
}

TEST_F(PathIsInside, HoldsFarBelowASecondMountWhereTheKernelTellsNoMounts) {
    EnterPrivateMountNamespace();
    fs::create_directories("real/a/b");
    const ScopedMount second = BindReadOnly(At("real"), At("deeper/second"));
    FakeStatx kernel;
    kernel.bTellsMounts = false;
    EXPECT_TRUE(TarvanePathIsInside("real/a", "deeper/second/a/b/c/new"));
    EXPECT_FALSE(TarvanePathIsInside("real/a/b", "deeper/second/a/c"));
}

TEST_F(PathIsInside, HoldsForADirectoryAboveASubvolumeInItsSecondMount) {
    EnterPrivateMountNamespace();
    fs::create_directories("real/a/subvolume/b");
    const ScopedMount second = BindReadOnly(At("real"), At("deeper/second"));
    FakeStatx kernel;
    kernel.bHasSubvolumes = true;
    EXPECT_TRUE(TarvanePathIsInside("real/a", "deeper/second/a/subvolume/b/new"));
}

TEST_F(PathIsInside, HoldsForADirectoryAboveAFileSystemThatIsMountedInItsSecondMount) {
    EnterPrivateMountNamespace();
    fs::create_directories("real/a/disk/b");
    const ScopedMount second = BindReadOnly(At("real"), At("second"));
    const ScopedMount disk = MountTmpfs(At("second/a/disk"), "size=64k");
    fs::create_directories("second/a/disk/b/c");
    EXPECT_TRUE(TarvanePathIsInside("real/a", "second/a/disk/b/c/new"));
    EXPECT_FALSE(TarvanePathIsInside("real/a/disk", "second/a/disk/b/c/new"));
    EXPECT_FALSE(TarvanePathIsInside("real/a/disk/b", "second/a/disk/b/c/new"));
}

// Both paths are in the mount that shows them, and that is mounted inside the directory itself.
TEST_F(PathIsInside, HoldsBelowADirectoryThatIsMountedInsideItself) {
    EnterPrivateMountNamespace();
    fs::create_directories("real/a/mirror");
    fs::create_directories("real/b");
    const ScopedMount mirror = BindReadOnly(At("real"), At("real/a/mirror"));
    EXPECT_TRUE(TarvanePathIsInside("real/a/mirror/a", "real/a/mirror/b/new"));
    EXPECT_FALSE(TarvanePathIsInside("real/a/mirror/b", "real/a/mirror/a/new"));
}

TEST_F(PathIsInside, HoldsForADirectoryThatItsFileSystemFindsInAnotherWriting) {
    fs::create_directories("name/a");
    FakeStatx kernel;
    kernel.bIgnoresCase = true;
    EXPECT_TRUE(TarvanePathIsInside("NAME", "name/a/new"));
    EXPECT_FALSE(TarvanePathIsInside("NAME", "name"));
}

TEST_F(PathIsInside, AsksNoMoreForADeepPathThanForAFlatOne) {
    fs::create_directories(At("source/d/d/d/d/d/d"));
    fs::create_directories(At("destination/d/d/d/d/d/d"));
    EXPECT_EQ(StatxCallsFor(At("source/d/d/d/d/d/d"), At("destination/d/d/d/d/d/d/new")),
              StatxCallsFor(At("source/d"), At("destination/d/new")));
}

TEST_F(PathIsInside, AsksNoMoreForADeepPathOnAnotherFileSystem) {
    EnterPrivateMountNamespace();
    const ScopedMount disk = MountTmpfs(At("destination"), "size=64k");
    fs::create_directories(At("source/d/d/d/d/d/d"));
    fs::create_directories(At("destination/d/d/d/d/d/d"));
    EXPECT_EQ(StatxCallsFor(At("source/d/d/d/d/d/d"), At("destination/d/d/d/d/d/d/new")),
              StatxCallsFor(At("source/d"), At("destination/d/new")));
}

// Nothing leads up from such a directory but the path above it.
TEST_F(PathIsInside, HoldsBelowADirectoryThatMayNotBeSearched) {
    EnterPrivateMountNamespace();
    fs::create_directories("real/locked");
    fs::permissions("real/locked", fs::perms::none);
    fs::permissions(Directory.Path(), fs::perms::all);
    const ScopedMount second = BindReadOnly(At("real"), At("second"));
    const ActingAsNobody nobody;
    EXPECT_TRUE(TarvanePathIsInside("real", "second/locked/new"));
}

TEST_F(PathIsInside, TakesPathsAsTheyAreWrittenWhereNothingMayBeLookedAt) {
    fs::create_directories("locked/a");
    fs::permissions("locked", fs::perms::owner_all);
    const ActingAsNobody nobody;
    EXPECT_TRUE(TarvanePathIsInside("locked/a", "locked/a/new"));
    EXPECT_FALSE(TarvanePathIsInside("locked/a", "locked/b"));
}

TEST_F(PathIsInside, TakesNamesAsBytes) {
    fs::create_directory("new\nline \xff");
    EXPECT_TRUE(TarvanePathIsInside("new\nline \xff", "new\nline \xff/ "));
    EXPECT_FALSE(TarvanePathIsInside("new\nline \xff", "new\nline \xfe/ "));
}

TEST_F(PathIsInside, HoldsToBeSafeForARelativePathInADirectoryThatWasRemoved) {
    fs::create_directory("gone");
    fs::current_path("gone");
    fs::remove(At("gone"));
    EXPECT_TRUE(TarvanePathIsInside("/usr", "a"));
}

TEST_F(PathIsInside, HoldsToBeSafeWhenMemoryRunsOut) {
    const fs::path outside = At("outside");
    ASSERT_FALSE(TarvanePathIsInside(Directory / "a", outside));
    const FailingAllocation memory(0);
    EXPECT_TRUE(TarvanePathIsInside(outside, outside));
    EXPECT_TRUE(memory.Failed());
}

TEST_F(PathIsInside, LeavesNothingOpenWhereverMemoryRunsOut) {
    fs::create_directories("a/b");
    const fs::path directory = At("a");
    const fs::path path = At("a/b/c");
    const auto before = OpenDescriptors();
    bool bFailed = true;
    for (std::size_t allowed = 0; bFailed; ++allowed) {
        ASSERT_LT(allowed, 100U);
        {
            const FailingAllocation memory(allowed);
            EXPECT_TRUE(TarvanePathIsInside(directory, path));
            bFailed = memory.Failed();
        }
        EXPECT_EQ(OpenDescriptors(), before);
    }
}
