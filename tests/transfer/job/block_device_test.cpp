// What kind of storage holds a path, as a sysfs of the test describes it. Needs root for the
// mounts.

#include "block_device.h"

#include "file_tree.h"
#include "needs.h"
#include "own_mount_namespace.h"
#include "temporary_directory.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace fs = std::filesystem;

namespace {

// A sysfs of the test's own, which says that a tmpfs is on a block device.
class StorageTest : public testing::Test {
protected:
    // The real /sys/dev/block disappears behind links to directories of the test.
    void DescribeDevice(const fs::path& DeviceDirectory) {
        struct stat status {};
        ASSERT_EQ(::stat(Stick.Path().c_str(), &status), 0);
        fs::create_directories(DeviceDirectory);
        fs::create_directory_symlink(DeviceDirectory, Devices.Path() / NumberOf(status.st_dev));
    }

    // Lets the mount table say this of the mount that holds the stick.
    void DescribeMount(const std::string& Type, const std::string& Source) {
        struct statx status {};
        ASSERT_EQ(::statx(AT_FDCWD, Stick.Path().c_str(), 0, STATX_MNT_ID, &status), 0);
        WriteFile(Room / "mountinfo", "1 0 254:0 / / rw - ext4 /dev/other rw\n" +
                                          std::to_string(status.stx_mnt_id) +
                                          " 1 0:99 / /stick rw,relatime shared:1 master:2 - " +
                                          Type + " " + Source + " rw\n");
        Table.emplace(Room / "mountinfo", "/proc/self/mountinfo");
    }

    static std::string NumberOf(dev_t Device) {
        return std::to_string(major(Device)) + ":" + std::to_string(minor(Device));
    }

    void ExpectTraits(bool bRemovable, bool bUsb, bool bNetwork) {
        const StorageTraits traits = StorageOf(Stick.Path());
        EXPECT_EQ(traits.bRemovable, bRemovable);
        EXPECT_EQ(traits.bUsb, bUsb);
        EXPECT_EQ(traits.bNetwork, bNetwork);
    }

    struct MountTable {
        MountTable(const fs::path& What, const fs::path& Where) : Mount(BindFile(What, Where)) {}
        ScopedMount Mount;
    };

    const OwnMountNamespace Namespace;
    TemporaryDirectory Room;
    const ScopedMount Stick{MountTmpfs(Room / "stick", "size=1m")};
    const ScopedMount Devices{MountTmpfs("/sys/dev/block", "size=1m")};
    const fs::path Disk = Room / "devices/pci0/sdx";
    std::optional<MountTable> Table;
};

TEST_F(StorageTest, IsNothingSpecialWithoutADevice) {
    ExpectTraits(false, false, false);
    EXPECT_EQ(BlockDeviceDirectoryOf(Stick.Path()), "");
}

TEST_F(StorageTest, IsNothingSpecialWhereNothingIs) {
    const StorageTraits traits = StorageOf(Room / "missing");
    EXPECT_FALSE(traits.bRemovable || traits.bUsb || traits.bNetwork);
    EXPECT_EQ(BlockDeviceDirectoryOf(Room / "missing"), "");
}

TEST_F(StorageTest, IsNothingSpecialOnAFixedDisk) {
    DescribeDevice(Disk);
    WriteFile(Disk / "removable", "0\n");
    WriteFile(Disk / "device/type", "0\n");
    ExpectTraits(false, false, false);
}

TEST_F(StorageTest, IsRemovableOnARemovableDisk) {
    DescribeDevice(Disk);
    WriteFile(Disk / "removable", "1\n");
    ExpectTraits(true, false, false);
}

TEST_F(StorageTest, IsRemovableOnAPartitionOfARemovableDisk) {
    DescribeDevice(Disk / "sdx1");
    WriteFile(Disk / "sdx1/partition", "1\n");
    WriteFile(Disk / "removable", "1\n");
    ExpectTraits(true, false, false);
}

TEST_F(StorageTest, IsNotRemovableBecauseTheDirectoryAboveIs) {
    DescribeDevice(Disk / "sdx1");
    WriteFile(Disk / "removable", "1\n");
    ExpectTraits(false, false, false);
}

TEST_F(StorageTest, IsRemovableOnAMemoryCard) {
    DescribeDevice(Disk);
    WriteFile(Disk / "removable", "0\n");
    WriteFile(Disk / "device/type", "SD\n");
    ExpectTraits(true, false, false);
}

TEST_F(StorageTest, IsUsbOnAUsbDisk) {
    const fs::path disk = Room / "devices/pci0/usb2/2-1/host6/block/sdx";
    DescribeDevice(disk / "sdx1");
    WriteFile(disk / "sdx1/partition", "1\n");
    WriteFile(disk / "removable", "0\n");
    ExpectTraits(false, true, false);
}

TEST_F(StorageTest, IsWhatTheDiskBelowAnEncryptedVolumeIs) {
    const fs::path disk = Room / "devices/pci0/usb2/block/sdx";
    WriteFile(disk / "sdx1/partition", "1\n");
    WriteFile(disk / "removable", "1\n");
    const fs::path volume = Room / "devices/virtual/block/dm-0";
    fs::create_directories(volume / "slaves");
    fs::create_directory_symlink(disk / "sdx1", volume / "slaves/sdx1");
    DescribeDevice(volume);
    ExpectTraits(true, true, false);
}

TEST_F(StorageTest, IsFoundOutEvenOfAVolumeOnItself) {
    fs::create_directories(Disk / "slaves");
    fs::create_directory_symlink(Disk, Disk / "slaves/sdx");
    DescribeDevice(Disk);
    ExpectTraits(false, false, false);
}

TEST_F(StorageTest, IsThatOfTheMountedDeviceWhenTheFileSystemHasANumberOfItsOwn) {
    NeedRoot();
    const fs::path node = Room / "sdx";
    ASSERT_EQ(::mknod(node.c_str(), S_IFBLK | 0600, makedev(8, 200)), 0);
    WriteFile(Disk / "removable", "1\n");
    fs::create_directory_symlink(Disk, Devices.Path() / "8:200");
    DescribeMount("btrfs", node.string());
    ExpectTraits(true, false, false);
    EXPECT_EQ(BlockDeviceDirectoryOf(Stick.Path()), Disk);
}

TEST_F(StorageTest, IsNotThatOfAMountWithoutADevice) {
    DescribeMount("overlay", "overlay");
    ExpectTraits(false, false, false);
}

class NetworkStorage : public StorageTest, public testing::WithParamInterface<const char*> {};

TEST_P(NetworkStorage, IsReachedOverANetwork) {
    DescribeMount(GetParam(), "server:/share");
    ExpectTraits(false, false, true);
}

INSTANTIATE_TEST_SUITE_P(Types, NetworkStorage,
                         testing::Values("nfs", "nfs4", "cifs", "smb3", "9p", "ceph", "afs",
                                         "fuse.sshfs", "fuse.rclone"));

TEST_F(StorageTest, OnALocalUserSpaceFileSystemIsNotReachedOverANetwork) {
    DescribeMount("fuse.encfs", "encfs");
    ExpectTraits(false, false, false);
}

TEST_F(StorageTest, HasWrittenNothingThatIsKnownWithoutADevice) {
    EXPECT_EQ(BytesWrittenTo(""), std::nullopt);
}

TEST_F(StorageTest, HasWrittenTheSectorsOfItsSeventhCounter) {
    DescribeDevice(Disk);
    WriteFile(Disk / "stat", "     1  2  3  4  5  6  70  8 9 10 11\n");
    EXPECT_EQ(BytesWrittenTo(BlockDeviceDirectoryOf(Stick.Path())), 70U * 512U);
}

} // namespace
