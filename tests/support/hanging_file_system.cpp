#include "hanging_file_system.h"

#include "needs.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <linux/fuse.h>
#include <poll.h>
#include <string>
#include <sys/eventfd.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <system_error>
#include <unistd.h>

namespace {

std::filesystem::path NeededDevice() {
    const std::filesystem::path node = "/dev/fuse";
    NeedDeviceNode(node);
    return node;
}

std::filesystem::path MountFuse(const std::filesystem::path& Where, int Device) {
    std::filesystem::create_directories(Where);
    const std::string options =
        "fd=" + std::to_string(Device) + ",rootmode=40000,user_id=0,group_id=0,allow_other";
    if (mount("hanging", Where.c_str(), "fuse", 0, options.c_str()) != 0) {
        throw std::system_error(errno, std::generic_category(), "mounting a FUSE file system");
    }
    return Where;
}

template <typename Reply>
void Send(int Device, const fuse_in_header& To, Reply Body) {
    fuse_out_header header{sizeof(header) + sizeof(Body), 0, To.unique};
    const std::array<iovec, 2> parts{{{&header, sizeof(header)}, {&Body, sizeof(Body)}}};
    [[maybe_unused]] const ssize_t written = writev(Device, parts.data(), parts.size());
}

fuse_init_out Agreement() {
    fuse_init_out reply{};
    reply.major = FUSE_KERNEL_VERSION;
    reply.minor = FUSE_KERNEL_MINOR_VERSION;
    reply.max_write = 4096;
    return reply;
}

fuse_attr_out RootStatus() {
    fuse_attr_out reply{};
    reply.attr.ino = FUSE_ROOT_ID;
    reply.attr.mode = S_IFDIR | 0755;
    reply.attr.nlink = 2;
    return reply;
}

} // namespace

HangingFileSystem::HangingFileSystem(const std::filesystem::path& Where)
    : Device(open(NeededDevice().c_str(), O_RDWR | O_CLOEXEC)), Stop(eventfd(0, EFD_CLOEXEC)),
      Mount(MountFuse(Where, Device.Get())), Server(&HangingFileSystem::Serve, this) {}

HangingFileSystem::~HangingFileSystem() {
    eventfd_write(Stop.Get(), 1);
    Server.join();
}

void HangingFileSystem::Serve() {
    alignas(fuse_in_header) std::array<char, FUSE_MIN_READ_BUFFER> request;
    while (true) {
        std::array<pollfd, 2> events{{{Device.Get(), POLLIN, 0}, {Stop.Get(), POLLIN, 0}}};
        poll(events.data(), events.size(), -1);
        if (events[1].revents != 0 || read(Device.Get(), request.data(), request.size()) <= 0) {
            return;
        }
        if (!Answer(request.data())) {
            bHolding = true;
        }
    }
}

bool HangingFileSystem::Answer(const char* Request) {
    fuse_in_header header;
    std::memcpy(&header, Request, sizeof(header));
    switch (header.opcode) {
    case FUSE_INIT:
        Send(Device.Get(), header, Agreement());
        return true;
    case FUSE_GETATTR:
        Send(Device.Get(), header, RootStatus());
        return true;
    default:
        return false;
    }
}
