// Room at the destination: free space, and the largest file that its file system can hold. Needs
// root for the mounts.

#include "own_mount_namespace.h"
#include "preflight_fixture.h"

#include <limits>
#include <linux/magic.h>
#include <sys/statfs.h>

namespace fs = std::filesystem;

namespace {

const Strings kNothing;
constexpr std::size_t kMegabyte = 1048576;
constexpr std::uintmax_t kLargestFatFile = 4294967295;

// While set, every file system says that it is a FAT, that its blocks have no size, or that names
// are short.
bool gbPretendFat = false;
bool gbHideBlockSize = false;
bool gbShortenNames = false;

class PreflightSpace : public PreflightTest {
protected:
    ~PreflightSpace() override {
        gbPretendFat = false;
        gbHideBlockSize = false;
        gbShortenNames = false;
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
    if (gbShortenNames) {
        OutStatus->f_namelen = 14;
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

TEST_F(PreflightSpace, OfRootContainsWhatIsReserved) {
    const ScopedMount disk = MountLoopDisk(Room / "disk", 8, "-m 50");
    WriteFile(From / "file", std::string(4 * kMegabyte, 'x'));
    PlanToCopy({{From / "file", disk.Path() / "file"}});
    fs::permissions(disk.Path(), fs::perms::all);
    {
        const ActingAsNobody nobody;
        EXPECT_EQ(Found(), Strings{"too-little-space disk, stops"});
    }
    EXPECT_EQ(Found(), kNothing);
    EXPECT_EQ(TransferMessage(), "Copied 1 item(s).");
}

// Together they take more than a number holds.
TEST_F(PreflightSpace, IsTooLittleForTheLargestFiles) {
    const ScopedMount sources = MountTmpfs(Room / "sources", "size=1m");
    Items items;
    for (const char* name : {"one", "two", "three"}) {
        WriteFile(sources.Path() / name, "");
        fs::resize_file(sources.Path() / name, std::numeric_limits<std::int64_t>::max());
        items.emplace_back(sources.Path() / name, Small.Path() / name);
        PlanToCopy(items);
        EXPECT_EQ(Found(), Strings{"too-little-space small, stops"}) << name;
    }
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
    EXPECT_EQ(Found(), (Strings{"made-directory small/new", "too-little-space small, stops"}));
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

TEST_F(PreflightSpace, IsNotTakenAgainByWhatIsThereAlready) {
    WriteFile(From / "tree/file", std::string(kMegabyte, 'x'));
    WriteFile(Small.Path() / "tree/file", std::string(kMegabyte, 'y'));
    PlanToCopy({{From / "tree", Small.Path() / "tree"}});
    for (const FileConflictChoice choice : {FileConflictChoice::Overwrite, FileConflictChoice::Skip,
                                            FileConflictChoice::Compare, FileConflictChoice::Ask}) {
        Rules.ForFiles = choice;
        EXPECT_EQ(Found(), kNothing);
    }
    EXPECT_EQ(TransferMessage(), "Copied 1 item(s).");
}

TEST_F(PreflightSpace, IsTakenByTheGrowthOfWhatIsReplaced) {
    WriteFile(From / "tree/file", std::string(kMegabyte * 5 / 4, 'x'));
    WriteFile(Small.Path() / "tree/file", std::string(kMegabyte / 2, 'y'));
    PlanToCopy({{From / "tree", Small.Path() / "tree"}});
    const PreflightResult result = Look();
    ASSERT_EQ(InWords(result), Strings{"too-little-space small, stops"});
    EXPECT_EQ(result.Findings.Kept().front().NeededBytes, kMegabyte * 3 / 4);
    EXPECT_EQ(result.Findings.Kept().front().AvailableBytes, kMegabyte / 2);
    EXPECT_FALSE(Transfer().bSucceeded);
}

// What is surely needed: the replaced file makes room before or after the new one needs it.
TEST_F(PreflightSpace, IsSaidToBeTheLeastThatIsNeededWhereThatIsTooMuch) {
    WriteFile(From / "tree/new", std::string(2 * kMegabyte, 'x'));
    WriteFile(From / "tree/old", "");
    WriteFile(Small.Path() / "tree/old", std::string(kMegabyte / 2, 'y'));
    PlanToCopy({{From / "tree", Small.Path() / "tree"}});
    const PreflightResult result = Look();
    ASSERT_EQ(InWords(result), Strings{"too-little-space small, stops"});
    EXPECT_EQ(result.Findings.Kept().front().NeededBytes, kMegabyte * 3 / 2);
}

TEST_F(PreflightSpace, IsNotFreedByAFileThatHasOtherNames) {
    WriteFile(From / "tree/file", std::string(kMegabyte * 3 / 4, 'x'));
    WriteFile(Small.Path() / "tree/file", std::string(kMegabyte / 2, 'y'));
    std::filesystem::create_hard_link(Small.Path() / "tree/file", Small.Path() / "other");
    PlanToCopy({{From / "tree", Small.Path() / "tree"}});
    EXPECT_EQ(Found(), Strings{"too-little-space small, stops"});
}

// Whether it fits depends on what the answers, or the contents, will say.
TEST_F(PreflightSpace, MayBeTakenByWhatIsAskedAboutOrCompared) {
    WriteFile(From / "tree/file", std::string(kMegabyte * 5 / 4, 'x'));
    WriteFile(Small.Path() / "tree/file", std::string(kMegabyte / 2, 'y'));
    PlanToCopy({{From / "tree", Small.Path() / "tree"}});
    for (const FileConflictChoice choice : {FileConflictChoice::Compare, FileConflictChoice::Ask}) {
        Rules.ForFiles = choice;
        EXPECT_EQ(Found(), Strings{"too-little-space small"});
    }
}

// The large one has to be replaced first.
TEST_F(PreflightSpace, MayBeMadeByWhatIsReplacedBySomethingSmaller) {
    WriteFile(From / "tree/a", std::string(kMegabyte * 3 / 4, 'x'));
    WriteFile(From / "tree/b", "x");
    WriteFile(Small.Path() / "tree/b", std::string(kMegabyte * 3 / 4, 'y'));
    PlanToCopy({{From / "tree", Small.Path() / "tree"}});
    EXPECT_EQ(Found(), Strings{"too-little-space small"});
}

TEST_F(PreflightSpace, IsTakenByASecondCopyThatIsKeptBesideTheFirst) {
    WriteFile(From / "file", std::string(kMegabyte * 3 / 4, 'x'));
    WriteFile(Small.Path() / "file", std::string(kMegabyte * 3 / 4, 'y'));
    PlanToCopy({{From / "file", Small.Path() / "file"}});
    Rules.ForFiles = FileConflictChoice::KeepBoth;
    EXPECT_EQ(Found(), Strings{"too-little-space small, stops"});
    Rules.ForFiles = FileConflictChoice::Skip;
    EXPECT_EQ(Found(), kNothing);
}

TEST_F(PreflightSpace, IsNotTakenByADirectoryThatIsSkipped) {
    WriteFile(From / "tree/file", std::string(2 * kMegabyte, 'x'));
    fs::create_directory(Small.Path() / "tree");
    PlanToCopy({{From / "tree", Small.Path() / "tree"}});
    Rules.ForDirectories = DirectoryConflictChoice::Skip;
    const PreflightResult result = Look();
    EXPECT_EQ(InWords(result), kNothing);
    EXPECT_EQ(result.SkippedEntries, 2U);
    EXPECT_EQ(result.SkippedBytes, 2 * kMegabyte);
}

// A disk that is mounted inside the destination has its own room.
TEST_F(PreflightSpace, IsTakenWhereTheMergedDirectoryIs) {
    WriteFile(From / "tree/sub/file", std::string(2 * kMegabyte, 'x'));
    const ScopedMount inside = MountTmpfs(To / "tree/sub", "size=1m");
    PlanToCopy({{From / "tree", To / "tree"}});
    const PreflightResult result = Look();
    EXPECT_EQ(InWords(result), Strings{"too-little-space to/tree/sub, stops"});
    EXPECT_FALSE(Transfer().bSucceeded);
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

TEST_F(PreflightSpace, OfANameEndsSomewhere) {
    WriteFile(From / "tree/12345678901234", "x");
    WriteFile(From / "tree/123456789012345", "x");
    fs::create_directory(From / "tree/directory123456");
    PlanToCopy({{From / "tree", Small.Path() / "tree"}});
    EXPECT_EQ(Found(), kNothing);
    gbShortenNames = true;
    EXPECT_EQ(Found(), (Strings{"name-too-long from/tree/123456789012345, stops",
                                "name-too-long from/tree/directory123456, stops"}));
    EXPECT_EQ(Look().Findings.Kept().front().AvailableBytes, 14U);
}

} // namespace
