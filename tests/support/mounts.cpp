#include "mounts.h"

#include "needs.h"
#include "require_success.h"

#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace {

constexpr uid_t kNobody = 65534;

void MountOrThrow(const std::string& What, const std::filesystem::path& Where,
                  const std::string& Type, unsigned long Flags, const std::string& Options) {
    RequireSuccess(::mount(What.c_str(), Where.c_str(), Type.c_str(), Flags, Options.c_str()),
                   "mounting " + What + " at " + Where.string());
}

void RunOrThrow(const std::string& Command) {
    if (std::system(Command.c_str()) != 0) {
        throw std::runtime_error("this failed: " + Command);
    }
}

// On a loop device.
ScopedMount MountMade(const std::filesystem::path& Where, int SizeMegabytes,
                      const std::string& MakeCommand, const std::string& MountOptions) {
    NeedLoopDevices();
    std::filesystem::create_directories(Where);
    const std::string image = Where.string() + ".image";
    std::ofstream(image).close();
    std::filesystem::resize_file(image, static_cast<std::uintmax_t>(SizeMegabytes) << 20U);
    RunOrThrow(MakeCommand + " '" + image + "' >/dev/null");
    return MountImage(Where, image, MountOptions);
}

// Big enough for the files of the tests that measure the rate.
constexpr int kDiskMegabytes = 24;

std::filesystem::path InOwnNamespace(const std::filesystem::path& Path) {
    EnterPrivateMountNamespace();
    return Path;
}

std::filesystem::path Written(const std::filesystem::path& Path, const std::string& Text) {
    std::ofstream(Path) << Text;
    return Path;
}

} // namespace

void EnterPrivateMountNamespace() {
    NeedRoot();
    const int result = ::unshare(CLONE_NEWNS);
    if (result != 0 && errno == EPERM) {
        SkipTest("needs the right to mount");
    }
    RequireSuccess(result, "entering a mount namespace");
    MountOrThrow("none", "/", "", MS_REC | MS_PRIVATE, "");
}

void NeedLoopDevices() {
    NeedRoot();
    NeedDeviceNode("/dev/loop-control");
}

ScopedMount::~ScopedMount() {
    ::umount2(MountPoint.c_str(), MNT_DETACH);
}

ScopedMount MountTmpfs(const std::filesystem::path& Where, const std::string& Options) {
    std::filesystem::create_directories(Where);
    MountOrThrow("tmpfs", Where, "tmpfs", 0, Options);
    return ScopedMount(Where);
}

ScopedMount MountLoopDisk(const std::filesystem::path& Where, int SizeMegabytes,
                          const std::string& Options) {
    return MountMade(Where, SizeMegabytes, "mkfs.ext4 -q -F " + Options, "loop");
}

ScopedMount MountVfat(const std::filesystem::path& Where, int SizeMegabytes) {
    std::filesystem::create_directories(Where);
    // Nothing can be mounted from there, but the kernel looks for the file system first.
    if (::mount("none", Where.c_str(), "vfat", 0, "") != 0 && errno == ENODEV) {
        SkipTestEverywhere("needs the file system vfat");
    }
    return MountMade(Where, SizeMegabytes, "mkfs.vfat", "loop,umask=022");
}

ScopedMount MountImage(const std::filesystem::path& Where, const std::filesystem::path& Image,
                       const std::string& Options) {
    NeedLoopDevices();
    std::filesystem::create_directories(Where);
    RunOrThrow("mount -o " + Options + " '" + Image.string() + "' '" + Where.string() + "'");
    return ScopedMount(Where);
}

ScopedMount BindReadOnly(const std::filesystem::path& What, const std::filesystem::path& Where) {
    std::filesystem::create_directories(Where);
    MountOrThrow(What, Where, "", MS_BIND, "");
    MountOrThrow("none", Where, "", MS_BIND | MS_REMOUNT | MS_RDONLY, "");
    return ScopedMount(Where);
}

ScopedMount BindFile(const std::filesystem::path& What, const std::filesystem::path& Where) {
    MountOrThrow(What, Where, "", MS_BIND, "");
    return ScopedMount(Where);
}

std::filesystem::path RemovableAttributeOf(const std::filesystem::path& Path) {
    struct stat info {};
    RequireSuccess(::stat(Path.c_str(), &info), "looking at " + Path.string());
    const std::string number =
        std::to_string(major(info.st_dev)) + ":" + std::to_string(minor(info.st_dev));
    return std::filesystem::path("/sys/dev/block") / number / "removable";
}

RemovableDisk::RemovableDisk(const std::filesystem::path& Room, const std::string& AttributeText)
    : AttributeFile(InOwnNamespace(Written(Room / "attribute", AttributeText))),
      Disk(MountLoopDisk(Room / "disk", kDiskMegabytes)),
      Attribute(BindFile(AttributeFile, RemovableAttributeOf(Disk.Path()))) {}

void RemovableDisk::SetAttribute(const std::string& Text) {
    Written(AttributeFile, Text);
}

ActingAsNobody::ActingAsNobody() {
    NeedRoot();
    RequireSuccess(::setegid(kNobody), "becoming nobody");
    RequireSuccess(::seteuid(kNobody), "becoming nobody");
}

ActingAsNobody::~ActingAsNobody() {
    if (::seteuid(0) != 0 || ::setegid(0) != 0) {
        std::abort();
    }
}
