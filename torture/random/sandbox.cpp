#include "sandbox.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <vector>

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

bool BecomeRootOfUserNamespace() {
    const std::string user = std::to_string(::geteuid());
    const std::string group = std::to_string(::getegid());
    if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) {
        return false;
    }
    std::ofstream("/proc/self/setgroups") << "deny";
    std::ofstream("/proc/self/uid_map") << "0 " << user << " 1";
    std::ofstream("/proc/self/gid_map") << "0 " << group << " 1";
    return ::geteuid() == 0;
}

bool MountInMemory(const std::string& Where) {
    return ::mount("tarvane", Where.c_str(), "tmpfs", 0, "size=256m") == 0;
}

bool HideMounts() {
    return (::unshare(CLONE_NEWNS) == 0 || BecomeRootOfUserNamespace()) &&
           ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

// Listings come in an order of the file system's own, which the model has to know.
ListingOrder MeasuredOrder(const std::string& Directory) {
    std::vector<std::string> made;
    for (const char name : std::string("gatecfhz")) {
        made.push_back(Directory + "/" + name);
        fs::create_directory(made.back());
    }
    std::vector<std::string> listed;
    for (const fs::directory_entry& entry : fs::directory_iterator(Directory)) {
        listed.push_back(entry.path().native());
    }
    for (const std::string& path : made) {
        fs::remove(path);
    }
    if (listed == made) {
        return ListingOrder::OldestFirst;
    }
    if (std::vector(listed.rbegin(), listed.rend()) == made) {
        return ListingOrder::NewestFirst;
    }
    throw std::runtime_error("names are listed in an order that cannot be foreseen in " +
                             Directory);
}

} // namespace

Sandbox::Sandbox() : bMounted(HideMounts()) {
    Base = (bMounted ? fs::temp_directory_path().native() : "/dev/shm") + "/tarvane-random-XXXXXX";
    if (::mkdtemp(Base.data()) == nullptr) {
        throw std::system_error(errno, std::generic_category(), Base);
    }
    RootPath = Base + "/tree";
    const std::string far = RootPath + "/far";
    bMounted = bMounted && MountInMemory(Base);
    fs::create_directories(RootPath);
    OrderOfListing = MeasuredOrder(RootPath);
    fs::create_directories(far);
    bMounted = bMounted && MountInMemory(far);
}

Sandbox::~Sandbox() {
    std::error_code ec;
    ::umount2((RootPath + "/far").c_str(), MNT_DETACH);
    ::umount2(Base.c_str(), MNT_DETACH);
    fs::remove_all(Base, ec);
}
