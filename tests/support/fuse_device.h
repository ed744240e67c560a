// The side of the kernel's user-space file systems that a server in the test's own process needs.

#pragma once

#include "mounts.h"
#include "owned_descriptor.h"

#include <cstddef>
#include <filesystem>
#include <type_traits>

#include <linux/fuse.h>

// What the kernel hands over at once when a file is written.
inline constexpr std::size_t kFuseWriteBytes = 131072;

// Closing the device ends the file system, and what waits for it with an error. Needs root and
// /dev/fuse.
OwnedDescriptor OpenFuseDevice();

// A mount point that is missing is created.
ScopedMount MountFuse(const std::filesystem::path& Where, const OwnedDescriptor& Device);

// The answer to FUSE_INIT.
fuse_init_out FuseAgreement();

// Error is an errno or 0, which Size bytes at Body go with.
void SendToFuse(const OwnedDescriptor& Device, const fuse_in_header& To, int Error,
                const void* Body = nullptr, std::size_t Size = 0);

template <typename Reply>
void SendToFuse(const OwnedDescriptor& Device, const fuse_in_header& To, const Reply& Body) {
    static_assert(std::is_trivially_copyable_v<Reply> && !std::is_integral_v<Reply>);
    constexpr int kNoError = 0;
    SendToFuse(Device, To, kNoError, &Body, sizeof(Body));
}
