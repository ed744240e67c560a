// Real file systems for a test: mounted in a mount table of the test's own, where no other process
// sees them, and taken away at the end of the scope.
//
// All of them need root: a test of an ordinary user is skipped; see needs.h.
// Errors: what root cannot do either throws std::system_error or std::runtime_error.

#pragma once

#include <filesystem>
#include <string>

// Gives the calling thread, and the threads that it starts later, their own mount table.
void EnterPrivateMountNamespace();

// For those who make loop devices themselves.
void NeedLoopDevices();

// One mounted file system or bind mount, unmounted at the end of the scope.
class ScopedMount {
public:
    explicit ScopedMount(std::filesystem::path Where) : MountPoint(std::move(Where)) {}
    ~ScopedMount();
    ScopedMount(const ScopedMount&) = delete;
    ScopedMount& operator=(const ScopedMount&) = delete;

    const std::filesystem::path& Path() const { return MountPoint; }

private:
    std::filesystem::path MountPoint;
};

// The functions below mount in the caller's table, so EnterPrivateMountNamespace comes first. A
// mount point that is missing is created.

// Options is the text that tmpfs takes: "size=1m".
ScopedMount MountTmpfs(const std::filesystem::path& Where, const std::string& Options);

// A fresh ext4 on a loop device, which goes away with the mount. Options are for mkfs.ext4.
ScopedMount MountLoopDisk(const std::filesystem::path& Where, int SizeMegabytes,
                          const std::string& Options = "");

// The same with vfat, for those tests that can do without where the kernel does not have it. All
// entries are root's, with 0755.
ScopedMount MountVfat(const std::filesystem::path& Where, int SizeMegabytes);

// The file system that Image holds, on a loop device.
ScopedMount MountImage(const std::filesystem::path& Where, const std::filesystem::path& Image,
                       const std::string& Options = "loop");

// Shows What at Where, read-only. Both may be the same directory.
ScopedMount BindReadOnly(const std::filesystem::path& What, const std::filesystem::path& Where);

// Makes the file that is at Where look like What.
ScopedMount BindFile(const std::filesystem::path& What, const std::filesystem::path& Where);

// The sysfs attribute that tells whether the block device holding Path is removable.
std::filesystem::path RemovableAttributeOf(const std::filesystem::path& Path);

// A disk whose device says what a test wants about being removable: the given text stands in the
// place of the real attribute. Enters a mount namespace of its own.
class RemovableDisk {
public:
    // Room is a directory for the disk's image, its mount point and the attribute.
    RemovableDisk(const std::filesystem::path& Room, const std::string& AttributeText);

    // Where the disk is mounted.
    const std::filesystem::path& Path() const { return Disk.Path(); }
    void SetAttribute(const std::string& Text);

private:
    const std::filesystem::path AttributeFile;
    ScopedMount Disk;
    ScopedMount Attribute;
};

// Acts as another, powerless user until the end of the scope.
class ActingAsNobody {
public:
    ActingAsNobody();
    ~ActingAsNobody();
    ActingAsNobody(const ActingAsNobody&) = delete;
    ActingAsNobody& operator=(const ActingAsNobody&) = delete;
};
