// What the user of a job may not read or write. Needs root, to be somebody else for a while.

#include "needs.h"
#include "own_mount_namespace.h"
#include "preflight_fixture.h"

#include <array>
#include <cstdint>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr uid_t kNobody = 65534;
const Strings kNothing;

class PreflightAccess : public PreflightTest {
protected:
    PreflightAccess() {
        WriteFile(File, "x");
        fs::permissions(To, fs::perms::all);
        PlanToCopy({{Tree, To / "tree"}});
    }

    const fs::path Tree = From / "tree";
    const fs::path File = Tree / "file";
};

void SetMode(const fs::path& Path, mode_t Mode) {
    ASSERT_EQ(::chmod(Path.c_str(), Mode), 0);
}

void Give(const fs::path& Path, uid_t User, gid_t Group) {
    NeedRoot();
    ASSERT_EQ(::chown(Path.c_str(), User, Group), 0);
}

// Lets User read the file beside what its permission bits say.
void AddReaderToAccessList(const fs::path& Path, std::uint32_t User) {
    struct Entry {
        std::uint16_t Tag;
        std::uint16_t Permissions;
        std::uint32_t Id;
    };
    constexpr std::uint32_t kNoId = 0xFFFFFFFF;
    struct {
        std::uint32_t Version = 2;
        std::array<Entry, 5> Entries;
    } const list{2,
                 {{{0x01, 6, kNoId},
                   {0x02, 4, User},
                   {0x04, 0, kNoId},
                   {0x10, 4, kNoId},
                   {0x20, 0, kNoId}}}};
    ASSERT_EQ(::setxattr(Path.c_str(), "system.posix_acl_access", &list, sizeof(list), 0), 0);
}

TEST_F(PreflightAccess, FindsAFileThatCannotBeRead) {
    SetMode(File, 0600);
    const ActingAsNobody nobody;
    EXPECT_EQ(Found(), Strings{"unreadable-file from/tree/file, stops"});
    EXPECT_EQ(TransferMessage(), "Failed to open source file.");
}

TEST_F(PreflightAccess, OfRootIsUnlimited) {
    SetMode(File, 0);
    Give(File, kNobody, kNobody);
    EXPECT_EQ(Found(), kNothing);
    EXPECT_EQ(TransferMessage(), "Copied 1 item(s).");
}

TEST_F(PreflightAccess, OfTheOwnerIsTheOwnersOnly) {
    Give(File, kNobody, kNobody);
    SetMode(File, 0044);
    {
        const ActingAsNobody nobody;
        EXPECT_EQ(Found(), Strings{"unreadable-file from/tree/file, stops"});
        EXPECT_EQ(TransferMessage(), "Failed to open source file.");
    }
    SetMode(File, 0400);
    const ActingAsNobody nobody;
    EXPECT_EQ(Found(), kNothing);
}

TEST_F(PreflightAccess, OfTheGroupIsTheGroupsOnly) {
    Give(File, 0, kNobody);
    SetMode(File, 0604);
    {
        const ActingAsNobody nobody;
        EXPECT_EQ(Found(), Strings{"unreadable-file from/tree/file, stops"});
        EXPECT_EQ(TransferMessage(), "Failed to open source file.");
    }
    SetMode(File, 0640);
    const ActingAsNobody nobody;
    EXPECT_EQ(Found(), kNothing);
}

TEST_F(PreflightAccess, GrantedByAnAccessListCounts) {
    SetMode(File, 0600);
    AddReaderToAccessList(File, kNobody);
    const ActingAsNobody nobody;
    EXPECT_EQ(Found(), kNothing);
    EXPECT_EQ(TransferMessage(), "Copied 1 item(s).");
}

TEST_F(PreflightAccess, FindsADirectoryThatComesOutEmpty) {
    SetMode(Tree, 0711);
    const ActingAsNobody nobody;
    EXPECT_EQ(Found(), Strings{"unreadable-directory from/tree"});
    EXPECT_EQ(TransferMessage(), "Copied 1 item(s).");
    EXPECT_EQ(TreeOf(To), (::Tree{{"tree", "dir"}}));
}

// Its names can be listed, but nothing can be learned about them.
TEST_F(PreflightAccess, FindsAFileInADirectoryThatMustNotBeSearched) {
    SetMode(Tree, 0744);
    const ActingAsNobody nobody;
    const PreflightResult result = Look();
    EXPECT_EQ(InWords(result), Strings{"uninspectable-entry from/tree/file, stops"});
    EXPECT_EQ(result.Findings.Kept().front().Reason, "Permission denied");
    EXPECT_EQ(TransferMessage(), "Permission denied");
}

TEST_F(PreflightAccess, FindsADirectoryInOneThatMustNotBeSearched) {
    fs::remove(File);
    fs::create_directory(Tree / "sub");
    SetMode(Tree, 0744);
    const ActingAsNobody nobody;
    EXPECT_EQ(Found(), Strings{"uninspectable-entry from/tree/sub, stops"});
    EXPECT_EQ(TransferMessage(), "Source does not exist: " + (Tree / "sub").string());
}

TEST_F(PreflightAccess, FindsALinkIntoADirectoryThatMustNotBeSearched) {
    WriteFile(Room / "locked/file", "x");
    fs::create_symlink(Room / "locked/file", Tree / "link");
    SetMode(Room / "locked", 0700);
    const ActingAsNobody nobody;
    EXPECT_EQ(Found(), Strings{"uninspectable-entry from/tree/link, stops"});
    EXPECT_EQ(TransferMessage(), "Permission denied");
}

TEST_F(PreflightAccess, FindsADestinationThatCannotBeWritten) {
    WriteFile(From / "second", "x");
    SetMode(To, 0755);
    PlanToCopy({{File, To / "file"}, {From / "second", To / "second"}});
    const ActingAsNobody nobody;
    EXPECT_EQ(Found(), Strings{"unwritable-destination to, stops"});
    EXPECT_EQ(TransferMessage(), "Failed to open destination file.");
}

TEST_F(PreflightAccess, FindsThatTheDestinationsParentCannotBeMade) {
    SetMode(To, 0755);
    PlanToCopy({{File, To / "new/dir/file"}});
    const ActingAsNobody nobody;
    EXPECT_EQ(Found(), (Strings{"made-directory to/new/dir", "unwritable-destination to, stops"}));
    EXPECT_EQ(TransferMessage(), "Failed to create destination directory: Permission denied");
}

TEST_F(PreflightAccess, ToAFileThatIsOverwrittenIsNotLookedAt) {
    WriteFile(To / "file", "old");
    SetMode(To / "file", 0666);
    SetMode(To, 0755);
    PlanToCopy({{File, To / "file"}});
    const ActingAsNobody nobody;
    EXPECT_EQ(Found(), kNothing);
    EXPECT_EQ(TransferMessage(), "Copied 1 item(s).");
}

// Away is on another file system.
class PreflightAccessOfMove : public PreflightAccess {
protected:
    const OwnMountNamespace Namespace;
    const ScopedMount Away{MountTmpfs(Room / "away", "size=1m,mode=777")};
};

TEST_F(PreflightAccessOfMove, FindsADirectoryThatStaysBehind) {
    SetMode(From, 0777);
    SetMode(Tree, 0733);
    PlanToMove({{Tree, Away.Path() / "tree"}});
    const ActingAsNobody nobody;
    EXPECT_EQ(Found(), Strings{"unreadable-directory-on-move from/tree"});
    EXPECT_EQ(TransferMessage(), "Moved 1 item(s).");
    EXPECT_TRUE(fs::exists(Tree));
}

// A rename takes along what cannot be read.
TEST_F(PreflightAccess, IsNotNeededToRename) {
    SetMode(File, 0600);
    fs::create_directory(Tree / "locked");
    SetMode(Tree / "locked", 0700);
    SetMode(From, 0777);
    SetMode(Tree, 0777);
    PlanToMove({{Tree, To / "tree"}});
    const ActingAsNobody nobody;
    EXPECT_EQ(Found(), kNothing);
    EXPECT_EQ(TransferMessage(), "Moved 1 item(s).");
}

} // namespace
