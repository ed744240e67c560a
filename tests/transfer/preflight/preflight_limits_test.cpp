// What the destination cannot take: files that must not be overwritten, disks that must not be
// written to, names and paths that are too long. Needs root for the mounts.

#include "own_mount_namespace.h"
#include "preflight_fixture.h"

#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

const Strings kNothing;

class PreflightLimits : public PreflightTest {
protected:
    PreflightLimits() { WriteFile(From / "tree/file", "new"); }

    std::string FirstReason() {
        const PreflightResult result = Look();
        return result.Findings.Count() == 0 ? "none" : result.Findings.Kept().front().Reason;
    }

    const OwnMountNamespace Namespace;
};

TEST_F(PreflightLimits, OfAFileThatMayNotBeWritten) {
    WriteFile(To / "tree/file", "old");
    PlanToCopy({{From / "tree", To / "tree"}});
    const ActingAsNobody nobody;
    EXPECT_EQ(Found(), Strings{"unwritable-file to/tree/file, stops"});
    EXPECT_EQ(FirstReason(), "Permission denied");
    EXPECT_EQ(TransferMessage(), "Failed to open destination file.");
    Rules.ForFiles = FileConflictChoice::Skip;
    EXPECT_EQ(Found(), kNothing);
    Rules.ForFiles = FileConflictChoice::Ask;
    EXPECT_EQ(Found(), Strings{"unwritable-file to/tree/file"});
    Rules.ForFiles = FileConflictChoice::KeepBoth;
    EXPECT_EQ(Found(), Strings{"unwritable-destination to/tree, stops"});
}

TEST_F(PreflightLimits, OfAReadOnlyDiskThatIsThereAlready) {
    WriteFile(To / "tree/file", "old");
    WriteFile(From / "tree/another", "x");
    const ScopedMount readOnly = BindReadOnly(To, To);
    PlanToCopy({{From / "tree", To / "tree"}});
    EXPECT_EQ(Found(), (Strings{"unwritable-destination to/tree, stops",
                                "unwritable-file to/tree/file, stops"}));
    EXPECT_EQ(FirstReason(), "Read-only file system");
    EXPECT_EQ(TransferMessage(), "Failed to open destination file.");
}

TEST_F(PreflightLimits, OfFilesThatEvenRootCannotOverwrite) {
    const ScopedMount disk = MountLoopDisk(Room / "disk", 8);
    WriteFile(disk.Path() / "tree/file", "old");
    WriteFile(From / "tree/log", "new");
    WriteFile(disk.Path() / "tree/log", "old");
    const std::string file = (disk.Path() / "tree/file").string();
    const std::string log = (disk.Path() / "tree/log").string();
    ASSERT_EQ(std::system(("chattr +i " + file + " && chattr +a " + log).c_str()), 0);
    PlanToCopy({{From / "tree", disk.Path() / "tree"}});
    EXPECT_EQ(Found(), (Strings{"unwritable-file disk/tree/file, stops",
                                "unwritable-file disk/tree/log, stops"}));
    EXPECT_EQ(FirstReason(), "Operation not permitted");
    EXPECT_EQ(TransferMessage(), "Failed to open destination file.");
}

// Makes a chain of directories and returns the path of the deepest, which is so many bytes long.
fs::path DirectoryOfLength(const fs::path& Root, std::size_t Length) {
    fs::path path = Root;
    int directory = ::open(Root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    while (path.native().size() < Length) {
        const std::size_t room = Length - path.native().size() - 1;
        const std::string name(room > 400 ? 200 : room > 200 ? room / 2 : room, 'd');
        EXPECT_EQ(::mkdirat(directory, name.c_str(), 0755), 0);
        const int next = ::openat(directory, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        ::close(directory);
        directory = next;
        path /= name;
    }
    ::close(directory);
    return path;
}

TEST_F(PreflightLimits, OfTheLengthOfSourcePaths) {
    const fs::path deepest = DirectoryOfLength(From / "tree", 4085);
    const int directory = ::open(deepest.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_GE(directory, 0);
    for (const char* name : {"123456789", "1234567890"}) {
        ::close(::openat(directory, name, O_CREAT | O_WRONLY | O_CLOEXEC, 0644));
    }
    ::close(directory);
    PlanToCopy({{From / "tree", Room / "t"}});
    const PreflightResult result = Look();
    EXPECT_EQ(InWords(result),
              Strings{"path-too-long " + deepest.lexically_relative(Room.Path()).string() +
                      "/1234567890, stops"});
    EXPECT_FALSE(Transfer().bSucceeded);
}

TEST_F(PreflightLimits, OfThePathsOfDirectoriesThatAreRenamed) {
    const fs::path deepest = DirectoryOfLength(From / "tree", 4085);
    const int directory = ::open(deepest.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    EXPECT_EQ(::mkdirat(directory, "1234567890", 0755), 0);
    ::close(directory);
    PlanToMove({{From / "tree", To / "tree"}});
    EXPECT_EQ(Found(),
              Strings{"uninspectable-entry " + deepest.lexically_relative(Room.Path()).string() +
                      "/1234567890, stops"});
    EXPECT_EQ(FirstReason(), "File name too long");
}

TEST_F(PreflightLimits, OfTheLengthOfDestinationPaths) {
    const fs::path deepest = DirectoryOfLength(From / "tree", 4000);
    WriteFile(deepest / "file", "x");
    fs::create_directory(deepest / "directory");
    fs::create_directories(To / std::string(200, 't'));
    PlanToCopy({{From / "tree", To / std::string(200, 't') / "tree"}});
    const PreflightResult result = Look();
    EXPECT_EQ(result.Findings.Count(), result.Findings.Count(PreflightFindingKind::PathTooLong));
    EXPECT_GE(result.Findings.Count(), 1U);
    EXPECT_TRUE(result.Findings.AnyStopsJob());
    EXPECT_FALSE(Transfer().bSucceeded);
}

} // namespace
