// Whether a move will be a rename, against what the kernel says when it is tried. Needs root, to be
// somebody else for a while.

#include "mounts.h"
#include "needs.h"
#include "preflight_fixture.h"

#include <array>
#include <cstdio>
#include <linux/capability.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr uid_t kNobody = 65534;
constexpr uid_t kSomebody = 1234;
constexpr std::array<mode_t, 3> kParentModes = {0777, 01777, 0755};
constexpr std::array<uid_t, 3> kOwners = {0, kNobody, kSomebody};

class PreflightRename : public PreflightTest {
protected:
    PreflightRename() { NeedRoot(); }

    void Set(const fs::path& Path, mode_t Mode, uid_t Owner) {
        ASSERT_EQ(::chown(Path.c_str(), Owner, Owner), 0);
        ASSERT_EQ(::chmod(Path.c_str(), Mode), 0);
    }

    // Compares the look's opinion with the kernel's. Leaves everything in its place.
    void ExpectTruth(const fs::path& Source, const fs::path& Destination) {
        PlanToMove({{Source, Destination}});
        const bool bForetold = Look().CopiedEntries == 0;
        const bool bRenamed = std::rename(Source.c_str(), Destination.c_str()) == 0;
        EXPECT_EQ(bForetold, bRenamed);
        if (bRenamed) {
            ASSERT_EQ(std::rename(Destination.c_str(), Source.c_str()), 0);
        }
    }

    // Of the item that is moved, for all owners and modes that can make a difference.
    void ExpectTruthOf(const fs::path& Item, mode_t Mode, const fs::path& Destination) {
        for (const uid_t parentOwner : kOwners) {
            for (const mode_t parentMode : kParentModes) {
                for (const uid_t owner : kOwners) {
                    SCOPED_TRACE(testing::Message()
                                 << std::oct << parentMode << " of " << std::dec << parentOwner
                                 << ", item " << std::oct << Mode << " of " << std::dec << owner);
                    Set(From, parentMode, parentOwner);
                    Set(Item, Mode, owner);
                    const ActingAsNobody nobody;
                    ExpectTruth(Item, Destination);
                }
            }
        }
    }
};

// The process without the right to act for the owners of files, until the end of the scope.
class WithoutActingForOwners {
public:
    WithoutActingForOwners() {
        syscall(SYS_capget, &Header, Sets.data());
        Before = Sets;
        Sets[0].effective &= ~static_cast<std::uint32_t>(CAP_TO_MASK(CAP_FOWNER));
        syscall(SYS_capset, &Header, Sets.data());
    }
    ~WithoutActingForOwners() { syscall(SYS_capset, &Header, Before.data()); }
    WithoutActingForOwners(const WithoutActingForOwners&) = delete;
    WithoutActingForOwners& operator=(const WithoutActingForOwners&) = delete;

private:
    __user_cap_header_struct Header{_LINUX_CAPABILITY_VERSION_3, 0};
    std::array<__user_cap_data_struct, 2> Sets{};
    std::array<__user_cap_data_struct, 2> Before{};
};

TEST_F(PreflightRename, OfADirectoryIntoAnotherOneIsForetold) {
    fs::create_directory(From / "tree");
    Set(To, 0777, 0);
    for (const mode_t mode : {0777U, 0555U}) {
        ExpectTruthOf(From / "tree", mode, To / "tree");
    }
}

// Only a directory that gets another parent must be writable itself.
TEST_F(PreflightRename, OfADirectoryWithinItsOwnIsForetold) {
    fs::create_directory(From / "tree");
    for (const mode_t mode : {0777U, 0555U}) {
        ExpectTruthOf(From / "tree", mode, From / "renamed");
    }
}

TEST_F(PreflightRename, OfAFileIsForetold) {
    WriteFile(From / "file", "x");
    Set(To, 0777, 0);
    ExpectTruthOf(From / "file", 0400, To / "file");
}

TEST_F(PreflightRename, IntoADirectoryThatMustNotBeChangedIsForetold) {
    WriteFile(From / "file", "x");
    Set(From, 0777, 0);
    Set(To, 0755, 0);
    const ActingAsNobody nobody;
    ExpectTruth(From / "file", To / "file");
}

TEST_F(PreflightRename, OfWhatBelongsToOthersTakesTheRightToActForThem) {
    WriteFile(From / "file", "x");
    Set(From, 01777, kNobody);
    Set(From / "file", 0644, kSomebody);
    ExpectTruth(From / "file", To / "file");
    const WithoutActingForOwners limit;
    ExpectTruth(From / "file", To / "file");
}

TEST_F(PreflightRename, OfWhatBelongsToOthersCannotBeACopyEither) {
    WriteFile(From / "file", "x");
    Set(From, 01777, kSomebody);
    Set(From / "file", 0644, kSomebody);
    Set(To, 0777, 0);
    PlanToMove({{From / "file", To / "file"}});
    const ActingAsNobody nobody;
    EXPECT_EQ(Found(), Strings{"unremovable-entry from/file, stops"});
    EXPECT_FALSE(Transfer().bSucceeded);
}

// The new parent is a directory that the move makes in the old one.
TEST_F(PreflightRename, IntoADirectoryThatIsMadeChangesTheParent) {
    fs::create_directory(From / "tree");
    Set(From, 0777, 0);
    Set(From / "tree", 0555, 0);
    PlanToMove({{From / "tree", From / "new/tree"}});
    const ActingAsNobody nobody;
    EXPECT_EQ(Look().CopiedEntries, 1U);
    ASSERT_EQ(::mkdir((From / "new").c_str(), 0777), 0);
    EXPECT_NE(std::rename((From / "tree").c_str(), (From / "new/tree").c_str()), 0);
}

TEST_F(PreflightRename, FindsWhatCannotBeInspectedWithoutTotalsToo) {
    for (const char* name : {"tree/blind/one", "tree/blind/two", "tree/plain/one"}) {
        WriteFile(From / name, "x");
    }
    Set(From, 0777, kNobody);
    Set(From / "tree", 0777, kNobody);
    Set(From / "tree/blind", 0444, kNobody);
    Set(To, 0777, 0);
    PlanToMove({{From / "tree", To / "tree"}});
    const ActingAsNobody nobody;
    const Strings found = Found();
    EXPECT_EQ(found, (Strings{"uninspectable-entry from/tree/blind/one, stops",
                              "uninspectable-entry from/tree/blind/two, stops"}));
    Scope = PreflightScope::Findings;
    EXPECT_EQ(Found(), found);
}

TEST_F(PreflightRename, OutOfAnAppendOnlyDirectoryIsForetold) {
    EnterPrivateMountNamespace();
    const ScopedMount disk = MountLoopDisk(Room / "disk", 8);
    const fs::path log = disk.Path() / "log";
    WriteFile(log / "file", "x");
    ASSERT_EQ(std::system(("chattr +a " + log.string()).c_str()), 0);
    ExpectTruth(log / "file", disk.Path() / "file");
    EXPECT_EQ(Found(), Strings{"unwritable-source-directory disk/log, stops"});
}

} // namespace
