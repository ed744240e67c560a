// The destination changes in the middle of a copy or a move.

#include "midway_fixture.h"

#include <cstdint>
#include <fcntl.h>
#include <fstream>
#include <sys/ioctl.h>
#include <sys/mount.h>

namespace {

class DestinationMidway : public Midway {
protected:
    DestinationMidway() { fs::create_directory(To); }

    const ScopedMount Memory = MountTmpfs(Root / "disk", "size=4m");
};

INSTANTIATE_TEST_SUITE_P(Verbs, DestinationMidway, kBothVerbs);

TEST_P(DestinationMidway, FillsUp) {
    const End end = RunWhile([this] { std::ofstream(To / "else") << std::string(8 << 20, 'x'); });
    EXPECT_EQ(end, (End{1,
                        "disk/to/big: Failed while writing destination file. (No space left on "
                        "disk: 1.0 MB needed, 512.0 KB free)",
                        1, 3}));
    fs::remove(To / "else");
    ExpectTree({"first"}, Arrived({"first"}));
}

TEST_P(DestinationMidway, IsRemountedReadOnly) {
    const End end = RunWhileLastIsOpened([this] {
        EXPECT_EQ(mount("none", Memory.Path().c_str(), "", MS_REMOUNT | MS_RDONLY, ""), 0);
    });
    EXPECT_EQ(end, (End{1,
                        "disk/to/last/file: Failed to open destination file. (Read-only file "
                        "system); cannot set the mode of 'disk/to/first': Read-only file system, "
                        "and 2 entries more could not be changed",
                        3, 1048579}));
    ExpectTree({"first", "big"}, Arrived({"first", "big", "last"}));
}

TEST_P(DestinationMidway, IsRemoved) {
    Note("loss: a move has removed the sources of what was in it; it is made again for the rest");
    EXPECT_EQ(RunWhile([this] { fs::remove_all(To); }), Whole);
    ExpectTree(All, Arrived({"last", "last/file"}));
}

TEST_P(DestinationMidway, BecomesALink) {
    Note("the rest goes where the link leads");
    const End end = RunWhile([this] {
        fs::rename(To, Root / "disk/old");
        fs::create_directory_symlink("../outside", To);
    });
    EXPECT_EQ(end, Whole);
    ExpectTree(All, {{"disk", "dir"},
                     {"disk/to", "link ../outside"},
                     {"disk/old", "dir"},
                     {"disk/old/first", AtFirst("first")},
                     {"disk/old/big", AtFirst("big")},
                     {"outside/last", "dir"},
                     {"outside/last/file", AtFirst("last/file")}});
}

TEST_P(DestinationMidway, BecomesAFile) {
    const End end = RunWhile([this] {
        fs::rename(To, Root / "disk/old");
        WriteFile(To, "new");
    });
    EXPECT_EQ(end, (End{1, "disk/to: Failed to create destination directory: Not a directory", 2,
                        1048579}));
    ExpectTree({"first", "big"}, {{"disk", "dir"},
                                  {"disk/to", "file new"},
                                  {"disk/old", "dir"},
                                  {"disk/old/first", AtFirst("first")},
                                  {"disk/old/big", AtFirst("big")}});
}

class DiskMidway : public Midway {
protected:
    DiskMidway() { fs::create_directory(To); }

    // The disk itself is no longer looked at.
    void ExpectTreeBesideDisk(const std::vector<std::string>& Taken, const Tree& Others = {}) {
        umount2(Disk.Path().c_str(), MNT_DETACH);
        fs::rename(Root / "disk.image", Image);
        Tree tree{{"disk", "dir"}};
        tree.insert(Others.begin(), Others.end());
        ExpectTree(Taken, tree);
    }

    // Neither the modes nor the partial file can be seen to.
    static End Failed(const std::string& Error) {
        return {1,
                "disk/to/big: Failed while writing destination file; cannot set the mode of "
                "'disk/to/first': " +
                    Error +
                    ", and 1 entry more could not be changed; 1 copy is not as long as its source "
                    "was",
                1, 3};
    }

    const TemporaryDirectory Elsewhere;
    const fs::path Image = Elsewhere / "image";
    // Read-only after an error, as the disks of a system are.
    const ScopedMount Disk = MountLoopDisk(Root / "disk", 8, "-e remount-ro");
};

INSTANTIATE_TEST_SUITE_P(Verbs, DiskMidway, kBothVerbs);

TEST_P(DiskMidway, TurnsReadOnlyAfterAnError) {
    const fs::path device = fs::read_symlink(RemovableAttributeOf(To).parent_path()).filename();
    const fs::path trigger = "/sys/fs/ext4" / device / "trigger_fs_error";
    Note("the partial file cannot be removed, and is named");
    EXPECT_EQ(RunWhile([&] { std::ofstream(trigger) << "torture"; }),
              Failed("Read-only file system"));
    Tree left = TreeOf(To);
    EXPECT_EQ(left.erase("big"), 1U);
    EXPECT_EQ(left, (Tree{{"first", AtFirst("first")}}));
    ExpectTreeBesideDisk({"first"});
}

TEST_P(DiskMidway, Breaks) {
    Note(
        "loss: what a move has brought before may not have reached the disk; --flush=always tells");
    const End end = RunWhile([this] {
        const OwnedDescriptor root(open(To.c_str(), O_RDONLY | O_CLOEXEC));
        std::uint32_t withoutLog = 2;
        EXPECT_EQ(ioctl(root.Get(), _IOR('X', 125, std::uint32_t), &withoutLog), 0);
    });
    EXPECT_EQ(end, Failed("Input/output error"));
    ExpectTreeBesideDisk({"first"});
}

TEST_P(DiskMidway, IsUnmountedLazily) {
    Note("the rest goes into the directory beneath; --flush=always tells");
    const End end = RunWhile([this] { EXPECT_EQ(umount2(Disk.Path().c_str(), MNT_DETACH), 0); });
    EXPECT_EQ(end, Whole);
    ExpectTreeBesideDisk(
        All,
        {{"disk/to", "dir"}, {"disk/to/last", "dir"}, {"disk/to/last/file", AtFirst("last/file")}});
    const ScopedMount again = MountImage(Elsewhere / "disk", Image);
    EXPECT_EQ(TreeOf(again.Path() / "to"),
              (Tree{{"first", AtFirst("first")}, {"big", AtFirst("big")}}));
}

TEST_P(DiskMidway, IsUnmountedLazilyAndMissedByTheFlush) {
    const End end = RunWhile([this] { EXPECT_EQ(umount2(Disk.Path().c_str(), MNT_DETACH), 0); },
                             {"--flush=always"});
    EXPECT_EQ(end, (End{1,
                        std::string("cannot write everything to 'disk/to': it is no longer on the "
                                    "file system that the transfer began on") +
                            (IsMove() ? "; the sources that were moved are gone, and "
                                        "'disk/to/first', 'disk/to/big' and 'disk/to/last' may be "
                                        "incomplete"
                                      : ""),
                        4, 1048584}));
}

} // namespace
