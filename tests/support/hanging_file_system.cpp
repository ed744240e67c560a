#include "hanging_file_system.h"

#include "fuse_device.h"

#include <array>
#include <cstring>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

fuse_attr_out RootStatus() {
    fuse_attr_out reply{};
    reply.attr.ino = FUSE_ROOT_ID;
    reply.attr.mode = S_IFDIR | 0755;
    reply.attr.nlink = 2;
    return reply;
}

} // namespace

HangingFileSystem::HangingFileSystem(const std::filesystem::path& Where)
    : Device(OpenFuseDevice()), Stop(eventfd(0, EFD_CLOEXEC)), Mount(MountFuse(Where, Device)),
      Server(&HangingFileSystem::Serve, this) {}

HangingFileSystem::~HangingFileSystem() {
    eventfd_write(Stop.Get(), 1);
    Server.join();
}

void HangingFileSystem::Serve() {
    std::vector<char> request(FUSE_MIN_READ_BUFFER + kFuseWriteBytes);
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
        SendToFuse(Device, header, FuseAgreement());
        return true;
    case FUSE_GETATTR:
        SendToFuse(Device, header, RootStatus());
        return true;
    default:
        return false;
    }
}
