// Room at the destination: free space, and the largest file that its file system can hold. Needs
// root for the mounts.

#include "own_mount_namespace.h"
#include "preflight_fixture.h"

#include <linux/magic.h>
#include <sys/statfs.h>

namespace fs = std::filesystem;

namespace {

const Strings kNothing;
constexpr std::size_t kMegabyte = 1048576;
constexpr std::uintmax_t kLargestFatFile = 4294967295;

// While set, every file system says that it is a FAT, or that its blocks have no size.
bool gbPretendFat = false;
bool gbHideBlockSize = false;

class PreflightSpace : public PreflightTest {
protected:
    ~PreflightSpace() override {
        gbPretendFat = false;
        gbHideBlockSize = false;
    }

    const OwnMountNamespace Namespace;
    const ScopedMount Small{MountTmpfs(Room / "small", "size=1m")};
};

extern "C" {
int __real_statfs(const char* Path, struct statfs* OutStatus);
int __wrap_statfs(const char* Path, struct statfs* OutStatus);
}

int __wrap_statfs(const char* Path, struct statfs* OutStatus) {
    const int result = __real_statfs(Path, OutStatus);
    if (gbPretendFat) {
        OutStatus->f_type = MSDOS_SUPER_MAGIC;
    }
    if (gbHideBlockSize) {
        OutStatus->f_frsize = 0;
    }
    return result;
}

TEST_F(PreflightSpace, IsFoundToBeTooLittle) {
    WriteFile(From / "file", std::string(2 * kMegabyte, 'x'));
    PlanToCopy({{From / "file", Small.Path() / "file"}});
    const PreflightResult result = Look();
    ASSERT_EQ(InWords(result), Strings{"too-little-space small, stops"});
    EXPECT_EQ(result.Findings.Kept().front().NeededBytes, 2 * kMegabyte);
    EXPECT_EQ(result.Findings.Kept().front().AvailableBytes, kMegabyte);
    EXPECT_EQ(TransferMessage(), "Failed while writing destination file.");
}

TEST_F(PreflightSpace, MayBeTakenToTheLastByte) {
    WriteFile(From / "file", std::string(kMegabyte, 'x'));
    PlanToCopy({{From / "file", Small.Path() / "file"}});
    EXPECT_EQ(Found(), kNothing);
    EXPECT_EQ(TransferMessage(), "Copied 1 item(s).");
}

TEST_F(PreflightSpace, IsTakenInWholeBlocks) {
    for (int number = 0; number < 300; ++number) {
        WriteFile(From / "tree" / std::to_string(number), "x");
    }
    PlanToCopy({{From / "tree", Small.Path() / "tree"}});
    EXPECT_EQ(Found(), Strings{"too-little-space small, stops"});
    EXPECT_FALSE(Transfer().bSucceeded);
}

TEST_F(PreflightSpace, IsTakenByAllItemsTogether) {
    WriteFile(From / "one", std::string(kMegabyte * 3 / 4, 'x'));
    WriteFile(From / "two", std::string(kMegabyte * 3 / 4, 'x'));
    PlanToCopy({{From / "one", Small.Path() / "one"}, {From / "two", Small.Path() / "new/two"}});
    EXPECT_EQ(Found(), Strings{"too-little-space small, stops"});
    EXPECT_FALSE(Transfer().bSucceeded);
}

TEST_F(PreflightSpace, IsTakenOnEachFileSystemOfItsOwn) {
    WriteFile(From / "one", std::string(kMegabyte * 3 / 4, 'x'));
    WriteFile(From / "two", std::string(kMegabyte * 3 / 4, 'x'));
    const ScopedMount other = MountTmpfs(Room / "other", "size=1m");
    PlanToCopy({{From / "one", Small.Path() / "one"}, {From / "two", other.Path() / "two"}});
    EXPECT_EQ(Found(), kNothing);
    EXPECT_EQ(TransferMessage(), "Copied 2 item(s).");
}

TEST_F(PreflightSpace, IsTakenByWhatLinksLeadTo) {
    WriteFile(Room / "outside/file", std::string(2 * kMegabyte, 'x'));
    fs::create_symlink(Room / "outside", From / "link");
    PlanToCopy({{From / "link", Small.Path() / "link"}});
    EXPECT_EQ(Found(), (Strings{"link-to-directory from/link", "too-little-space small, stops"}));
    EXPECT_FALSE(Transfer().bSucceeded);
}

// What is there already may be skipped or overwritten.
TEST_F(PreflightSpace, MayBeEnoughForAMerge) {
    WriteFile(From / "tree/file", std::string(kMegabyte, 'x'));
    WriteFile(Small.Path() / "tree/file", std::string(kMegabyte, 'y'));
    PlanToCopy({{From / "tree", Small.Path() / "tree"}});
    const PreflightResult result = Look();
    EXPECT_EQ(InWords(result), Strings{"too-little-space small/tree"});
    EXPECT_FALSE(result.Findings.AnyStopsJob());
    EXPECT_EQ(TransferMessage(), "Copied 1 item(s).");
}

TEST_F(PreflightSpace, IsNotTakenByAMoveWithinTheFileSystem) {
    WriteFile(Small.Path() / "tree/a", std::string(kMegabyte / 4, 'x'));
    WriteFile(Small.Path() / "tree/b", std::string(kMegabyte / 4, 'x'));
    WriteFile(Small.Path() / "tree/c", std::string(kMegabyte / 4, 'x'));
    fs::create_directories(Small.Path() / "to/tree");
    PlanToMove({{Small.Path() / "tree", Small.Path() / "to/tree"}});
    EXPECT_EQ(Found(), kNothing);
    EXPECT_EQ(TransferMessage(), "Moved 1 item(s).");
}

TEST_F(PreflightSpace, IsUnlimitedWhereTheFileSystemHasNoSize) {
    const ScopedMount endless = MountTmpfs(Room / "endless", "size=0");
    WriteFile(From / "file", "x");
    PlanToCopy({{From / "file", endless.Path() / "file"}});
    EXPECT_EQ(Found(), kNothing);
    EXPECT_EQ(TransferMessage(), "Copied 1 item(s).");
}

TEST_F(PreflightSpace, IsUnknownWhereBlocksHaveNoSize) {
    WriteFile(From / "file", std::string(2 * kMegabyte, 'x'));
    PlanToCopy({{From / "file", Small.Path() / "file"}});
    gbHideBlockSize = true;
    EXPECT_EQ(Found(), kNothing);
}

TEST_F(PreflightSpace, OfAFatHasNoRoomForALargerFile) {
    const ScopedMount big = MountTmpfs(Room / "big", "size=100g");
    WriteFile(From / "fits", "");
    fs::resize_file(From / "fits", kLargestFatFile);
    WriteFile(From / "larger", "");
    fs::resize_file(From / "larger", kLargestFatFile + 1);
    PlanToCopy({{From / "fits", big.Path() / "fits"}, {From / "larger", big.Path() / "larger"}});
    EXPECT_EQ(Found(), kNothing);
    gbPretendFat = true;
    const PreflightResult result = Look();
    ASSERT_EQ(InWords(result), Strings{"file-too-large from/larger, stops"});
    EXPECT_EQ(result.Findings.Kept().front().NeededBytes, kLargestFatFile + 1);
    EXPECT_EQ(result.Findings.Kept().front().AvailableBytes, kLargestFatFile);
}

} // namespace
