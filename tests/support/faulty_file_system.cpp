#include "faulty_file_system.h"

#include "fuse_device.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <memory>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/stat.h>
#include <unistd.h>

// One request as it comes from the kernel.
struct FaultyFileSystem::Request {
    fuse_in_header Header{};
    std::string Body;

    // What stands at the beginning of the body.
    template <typename Part>
    Part Leading() const {
        Part part{};
        std::memcpy(&part, Body.data(), std::min(sizeof(part), Body.size()));
        return part;
    }
    // The text that comes after that many bytes.
    std::string NameAfter(std::size_t Bytes) const { return Body.c_str() + Bytes; }
};

namespace {

constexpr std::uint64_t kFirstNumber = FUSE_ROOT_ID + 1;

fuse_attr RootAttributes() {
    fuse_attr attributes{};
    attributes.ino = FUSE_ROOT_ID;
    attributes.mode = S_IFDIR | 0755;
    attributes.nlink = 2;
    return attributes;
}

fuse_attr AttributesOf(std::uint64_t Number, const FaultyFileSystem::File& Shown) {
    fuse_attr attributes{};
    attributes.ino = Number;
    attributes.size = Shown.ToldSizeBytes.value_or(Shown.Bytes.size());
    attributes.mode = S_IFREG | 0644;
    attributes.nlink = 1;
    return attributes;
}

fuse_attr_out NotKept(const fuse_attr& Attributes) {
    fuse_attr_out reply{};
    reply.attr = Attributes;
    return reply;
}

fuse_statfs_out Room() {
    fuse_statfs_out reply{};
    reply.st.bsize = 4096;
    reply.st.frsize = 4096;
    reply.st.namelen = 1024;
    reply.st.blocks = reply.st.bfree = reply.st.bavail = 1U << 20U;
    return reply;
}

std::string DirectoryEntry(std::uint64_t Number, std::uint64_t Next, const std::string& Name) {
    fuse_dirent entry{};
    entry.ino = Number;
    entry.off = Next;
    entry.namelen = static_cast<std::uint32_t>(Name.size());
    entry.type = S_IFREG >> 12;
    std::string bytes(reinterpret_cast<const char*>(&entry), FUSE_NAME_OFFSET);
    bytes += Name;
    bytes.resize(FUSE_REC_ALIGN(bytes.size()));
    return bytes;
}

} // namespace

FaultyFileSystem::FaultyFileSystem(const std::filesystem::path& Where, Files AtFirst, Fault Failing)
    : Contents(std::move(AtFirst)), WhatFails(std::move(Failing)), Device(OpenFuseDevice()),
      Stop(eventfd(0, EFD_CLOEXEC)), Mount(MountFuse(Where, Device)),
      Server(&FaultyFileSystem::Serve, this) {}

FaultyFileSystem::~FaultyFileSystem() {
    eventfd_write(Stop.Get(), 1);
    Server.join();
}

std::set<std::string> FaultyFileSystem::Names() const {
    const std::lock_guard lock(Mutex);
    std::set<std::string> names;
    for (const auto& [name, file] : Contents) {
        names.insert(name);
    }
    return names;
}

void FaultyFileSystem::Serve() {
    std::vector<char> bytes(FUSE_MIN_READ_BUFFER + kFuseWriteBytes);
    while (true) {
        std::array<pollfd, 2> events{{{Device.Get(), POLLIN, 0}, {Stop.Get(), POLLIN, 0}}};
        poll(events.data(), events.size(), -1);
        const ssize_t count =
            events[1].revents != 0 ? 0 : read(Device.Get(), bytes.data(), bytes.size());
        if (count < static_cast<ssize_t>(sizeof(fuse_in_header))) {
            return;
        }
        Request asked;
        std::memcpy(&asked.Header, bytes.data(), sizeof(asked.Header));
        asked.Body.assign(bytes.data() + sizeof(asked.Header), bytes.data() + count);
        const int error = WhatFails ? WhatFails(asked.Header.opcode) : 0;
        if (error != 0) {
            SendToFuse(Device, asked.Header, error);
        } else {
            Answer(asked);
        }
    }
}

void FaultyFileSystem::Answer(const Request& Asked) {
    const std::lock_guard lock(Mutex);
    switch (Asked.Header.opcode) {
    case FUSE_INIT:
        return SendToFuse(Device, Asked.Header, FuseAgreement());
    case FUSE_FORGET:
    case FUSE_BATCH_FORGET:
    case FUSE_INTERRUPT:
        return;
    case FUSE_STATFS:
        return SendToFuse(Device, Asked.Header, Room());
    case FUSE_LOOKUP:
    case FUSE_CREATE:
    case FUSE_UNLINK:
        return AnswerByName(Asked);
    case FUSE_OPENDIR:
        return SendToFuse(Device, Asked.Header, fuse_open_out{});
    case FUSE_READDIR:
        return List(Asked);
    default:
        break;
    }
    if (Asked.Header.nodeid == FUSE_ROOT_ID) {
        return Asked.Header.opcode == FUSE_GETATTR
                   ? SendToFuse(Device, Asked.Header, NotKept(RootAttributes()))
                   : SendToFuse(Device, Asked.Header, ENOSYS);
    }
    const auto meant = Contents.find(NamesByNumber.at(Asked.Header.nodeid - kFirstNumber));
    if (meant == Contents.end()) {
        return SendToFuse(Device, Asked.Header, ENOENT);
    }
    AnswerByNumber(Asked, meant->second);
}

void FaultyFileSystem::AnswerByName(const Request& Asked) {
    const bool bCreates = Asked.Header.opcode == FUSE_CREATE;
    const std::string name = Asked.NameAfter(bCreates ? sizeof(fuse_create_in) : 0);
    if (bCreates) {
        Contents[name] = File();
    } else if (Contents.count(name) == 0) {
        return SendToFuse(Device, Asked.Header, ENOENT);
    }
    if (Asked.Header.opcode == FUSE_UNLINK) {
        Contents.erase(name);
        return SendToFuse(Device, Asked.Header, 0);
    }
    NamesByNumber.push_back(name);
    fuse_entry_out entry{};
    entry.nodeid = kFirstNumber + NamesByNumber.size() - 1;
    entry.attr = AttributesOf(entry.nodeid, Contents[name]);
    if (!bCreates) {
        return SendToFuse(Device, Asked.Header, entry);
    }
    const struct {
        fuse_entry_out Entry;
        fuse_open_out Opened;
    } created{entry, {}};
    SendToFuse(Device, Asked.Header, created);
}

void FaultyFileSystem::AnswerByNumber(const Request& Asked, File& Meant) {
    switch (Asked.Header.opcode) {
    case FUSE_SETATTR: {
        const auto wanted = Asked.Leading<fuse_setattr_in>();
        if ((wanted.valid & FATTR_SIZE) != 0) {
            Meant.Bytes.resize(wanted.size);
        }
        return SendToFuse(Device, Asked.Header, NotKept(AttributesOf(Asked.Header.nodeid, Meant)));
    }
    case FUSE_GETATTR:
        return SendToFuse(Device, Asked.Header, NotKept(AttributesOf(Asked.Header.nodeid, Meant)));
    case FUSE_OPEN:
        return SendToFuse(Device, Asked.Header, fuse_open_out{});
    case FUSE_READ: {
        const auto wanted = Asked.Leading<fuse_read_in>();
        const std::size_t from = std::min<std::size_t>(wanted.offset, Meant.Bytes.size());
        const std::size_t count = std::min<std::size_t>(wanted.size, Meant.Bytes.size() - from);
        return SendToFuse(Device, Asked.Header, 0, Meant.Bytes.data() + from, count);
    }
    case FUSE_WRITE: {
        const auto given = Asked.Leading<fuse_write_in>();
        Meant.Bytes.resize(std::max<std::size_t>(Meant.Bytes.size(), given.offset + given.size));
        Meant.Bytes.replace(given.offset, given.size, Asked.Body, sizeof(given), given.size);
        return SendToFuse(Device, Asked.Header, fuse_write_out{given.size, 0});
    }
    case FUSE_FLUSH:
    case FUSE_RELEASE:
        return SendToFuse(Device, Asked.Header, 0);
    default:
        return SendToFuse(Device, Asked.Header, ENOSYS);
    }
}

void FaultyFileSystem::List(const Request& Asked) const {
    const auto wanted = Asked.Leading<fuse_read_in>();
    std::string listing;
    std::uint64_t place = 0;
    for (const auto& [name, file] : Contents) {
        const std::string entry = DirectoryEntry(kFirstNumber + place, place + 1, name);
        if (place >= wanted.offset && listing.size() + entry.size() <= wanted.size) {
            listing += entry;
        }
        ++place;
    }
    SendToFuse(Device, Asked.Header, 0, listing.data(), listing.size());
}

FaultyFileSystem::Fault FailsFrom(std::uint32_t Operation, int Nth, int Error) {
    const auto remaining = std::make_shared<int>(Nth);
    return [=](std::uint32_t Asked) { return Asked == Operation && --*remaining <= 0 ? Error : 0; };
}
