#include "fuse_device.h"

#include "needs.h"
#include "require_success.h"

#include <array>
#include <fcntl.h>
#include <string>
#include <sys/mount.h>
#include <sys/uio.h>

OwnedDescriptor OpenFuseDevice() {
    NeedRoot();
    NeedDeviceNode("/dev/fuse");
    return OwnedDescriptor(open("/dev/fuse", O_RDWR | O_CLOEXEC));
}

ScopedMount MountFuse(const std::filesystem::path& Where, const OwnedDescriptor& Device) {
    std::filesystem::create_directories(Where);
    const std::string options =
        "fd=" + std::to_string(Device.Get()) + ",rootmode=40000,user_id=0,group_id=0,allow_other";
    RequireSuccess(mount("served", Where.c_str(), "fuse", 0, options.c_str()),
                   "mounting a FUSE file system");
    return ScopedMount(Where);
}

fuse_init_out FuseAgreement() {
    fuse_init_out reply{};
    reply.major = FUSE_KERNEL_VERSION;
    reply.minor = FUSE_KERNEL_MINOR_VERSION;
    reply.flags = FUSE_BIG_WRITES;
    reply.max_write = kFuseWriteBytes;
    return reply;
}

void SendToFuse(const OwnedDescriptor& Device, const fuse_in_header& To, int Error,
                const void* Body, std::size_t Size) {
    fuse_out_header header{static_cast<std::uint32_t>(sizeof(header) + Size), -Error, To.unique};
    const std::array<iovec, 2> parts{{{&header, sizeof(header)}, {const_cast<void*>(Body), Size}}};
    [[maybe_unused]] const ssize_t written = writev(Device.Get(), parts.data(), parts.size());
}
