// What kind of storage holds a path, as the kernel describes real loop devices. Needs root.

#include "block_device.h"

#include "file_tree.h"
#include "mounts.h"
#include "temporary_directory.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <linux/blkpg.h>
#include <optional>
#include <string>
#include <sys/ioctl.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

// A disk image on a real loop device, with one partition that the kernel is told of.
class PartitionedDisk {
public:
    explicit PartitionedDisk(const fs::path& Image) {
        WriteFile(Image, "");
        fs::resize_file(Image, 2 * kPartitionBytes);
        const std::string command = "losetup --find --show --partscan '" + Image.string() + "'";
        FILE* output = ::popen(command.c_str(), "r");
        std::array<char, 64> line{};
        if (std::fgets(line.data(), line.size(), output) != nullptr) {
            Node = line.data();
            Node.resize(Node.find_last_not_of('\n') + 1);
        }
        ::pclose(output);
        AddPartition();
    }
    ~PartitionedDisk() {
        [[maybe_unused]] const int result = std::system(("losetup -d " + Node).c_str());
    }
    PartitionedDisk(const PartitionedDisk&) = delete;
    PartitionedDisk& operator=(const PartitionedDisk&) = delete;

    std::string Partition() const { return Node + "p1"; }
    std::string Name() const { return fs::path(Node).filename(); }

private:
    static constexpr std::uintmax_t kPartitionBytes = 2U << 20U;

    void AddPartition() const {
        blkpg_partition partition{};
        partition.start = kPartitionBytes;
        partition.length = kPartitionBytes;
        partition.pno = 1;
        blkpg_ioctl_arg request{};
        request.op = BLKPG_ADD_PARTITION;
        request.datalen = sizeof(partition);
        request.data = &partition;
        const int descriptor = ::open(Node.c_str(), O_RDWR);
        EXPECT_EQ(::ioctl(descriptor, BLKPG, &request), 0);
        ::close(descriptor);
    }

    std::string Node;
};

TEST(StorageOfRealPartition, IsThatOfItsDisk) {
    EnterPrivateMountNamespace();
    NeedLoopDevices();
    const TemporaryDirectory room;
    const PartitionedDisk disk(room / "image");
    const fs::path where = room / "mounted";
    fs::create_directory(where);
    const std::string partition = disk.Partition();
    ASSERT_EQ(std::system(("mkfs.ext4 -q -F " + partition).c_str()), 0);
    ASSERT_EQ(std::system(("mount " + partition + " " + where.string()).c_str()), 0);
    const ScopedMount mounted(where);
    const fs::path disksDirectory = fs::path("/sys/devices/virtual/block") / disk.Name();
    EXPECT_EQ(BlockDeviceDirectoryOf(where), disksDirectory / (disk.Name() + "p1"));
    EXPECT_FALSE(StorageOf(where).bRemovable);
    WriteFile(room / "one", "1\n");
    const ScopedMount attribute = BindFile(room / "one", disksDirectory / "removable");
    EXPECT_TRUE(StorageOf(where).bRemovable);
}

TEST(StorageOfRealDisk, CountsWhatHasBeenWritten) {
    constexpr std::size_t kBytes = 1U << 20U;
    EnterPrivateMountNamespace();
    const TemporaryDirectory room;
    const ScopedMount disk = MountLoopDisk(room / "disk", 8);
    const fs::path directory = BlockDeviceDirectoryOf(disk.Path());
    const std::optional<std::uint64_t> before = BytesWrittenTo(directory);
    WriteFile(disk.Path() / "file", std::string(kBytes, 'x'));
    const int descriptor = ::open(disk.Path().c_str(), O_RDONLY);
    EXPECT_EQ(::syncfs(descriptor), 0);
    ::close(descriptor);
    ASSERT_TRUE(before.has_value());
    EXPECT_GE(BytesWrittenTo(directory).value_or(0), *before + kBytes);
}

} // namespace
