#include "block_device.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace fs = std::filesystem;

namespace {

// How many volumes may be stacked on each other above a disk.
constexpr int kMaxStackedVolumes = 8;
constexpr std::uint64_t kSectorBytes = 512;

constexpr std::array<std::string_view, 16> kNetworkTypes = {
    "9p",        "afs",        "ceph", "cifs",  "coda",           "davfs",          "ncpfs",
    "nfs",       "nfs4",       "smb3", "smbfs", "fuse.curlftpfs", "fuse.glusterfs", "fuse.rclone",
    "fuse.s3fs", "fuse.sshfs",
};

struct Mount {
    std::string Type;
    std::string Source;
};

Mount MountOf(const fs::path& Path) {
    struct statx status {};
    if (::statx(AT_FDCWD, Path.c_str(), 0, STATX_MNT_ID, &status) != 0) {
        return {};
    }
    const std::string id = std::to_string(status.stx_mnt_id) + " ";
    constexpr std::string_view kEndOfOptionalFields = " - ";
    std::ifstream table("/proc/self/mountinfo");
    for (std::string line; std::getline(table, line);) {
        const std::size_t end = line.find(kEndOfOptionalFields);
        if (line.starts_with(id) && end != std::string::npos) {
            Mount mount;
            std::istringstream(line.substr(end + kEndOfOptionalFields.size())) >> mount.Type >>
                mount.Source;
            return mount;
        }
    }
    return {};
}

fs::path DirectoryOfDevice(dev_t Device) {
    std::error_code ec;
    const std::string number = std::to_string(major(Device)) + ":" + std::to_string(minor(Device));
    const fs::path directory = fs::canonical(fs::path("/sys/dev/block") / number, ec);
    return ec ? fs::path() : directory;
}

std::string FirstWordOf(const fs::path& File) {
    std::string word;
    std::ifstream(File) >> word;
    return word;
}

bool IsUsbBus(const fs::path& Component) {
    return Component.native().starts_with("usb");
}

void AddTraitsOfDisk(const fs::path& DeviceDirectory, int StackedVolumes, StorageTraits& Out) {
    std::error_code ec;
    const bool bPartition = fs::exists(DeviceDirectory / "partition", ec);
    const fs::path disk = bPartition ? DeviceDirectory.parent_path() : DeviceDirectory;
    // Readers of memory cards call themselves fixed.
    const bool bMemoryCard = FirstWordOf(disk / "device" / "type") == "SD";
    Out.bRemovable = Out.bRemovable || bMemoryCard || FirstWordOf(disk / "removable") == "1";
    Out.bUsb = Out.bUsb || std::any_of(disk.begin(), disk.end(), IsUsbBus);
    if (StackedVolumes == kMaxStackedVolumes) {
        return;
    }
    for (const fs::directory_entry& below : fs::directory_iterator(disk / "slaves", ec)) {
        const fs::path directory = fs::canonical(below.path(), ec);
        if (!ec) {
            AddTraitsOfDisk(directory, StackedVolumes + 1, Out);
        }
    }
}

} // namespace

StorageTraits StorageOf(const fs::path& Path) {
    StorageTraits traits;
    const std::string type = MountOf(Path).Type;
    traits.bNetwork =
        std::find(kNetworkTypes.begin(), kNetworkTypes.end(), type) != kNetworkTypes.end();
    const fs::path directory = BlockDeviceDirectoryOf(Path);
    if (!directory.empty()) {
        constexpr int kNoVolumes = 0;
        AddTraitsOfDisk(directory, kNoVolumes, traits);
    }
    return traits;
}

fs::path BlockDeviceDirectoryOf(const fs::path& Path) {
    struct stat status {};
    if (::stat(Path.c_str(), &status) != 0) {
        return {};
    }
    const fs::path directory = DirectoryOfDevice(status.st_dev);
    if (!directory.empty()) {
        return directory;
    }
    // Some file systems number themselves; their mount still names one of their devices.
    const std::string source = MountOf(Path).Source;
    if (::stat(source.c_str(), &status) != 0 || !S_ISBLK(status.st_mode)) {
        return {};
    }
    return DirectoryOfDevice(status.st_rdev);
}

std::optional<std::uint64_t> BytesWrittenTo(const fs::path& DeviceDirectory) {
    constexpr int kFieldsBefore = 6;
    std::ifstream counters(DeviceDirectory / "stat");
    std::uint64_t value = 0;
    for (int field = 0; field <= kFieldsBefore; ++field) {
        counters >> value;
    }
    return counters ? std::optional(value * kSectorBytes) : std::nullopt;
}
