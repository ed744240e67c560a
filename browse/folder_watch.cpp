#include "folder_watch.h"

#include <array>
#include <charconv>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <string_view>
#include <sys/inotify.h>
#include <unistd.h>

namespace {

// IN_MODIFY lets sizes grow while a file is written, and IN_ATTRIB tells modes and times.
constexpr std::uint32_t kChanges = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_ATTRIB |
                                   IN_MODIFY | IN_CLOSE_WRITE | IN_DELETE_SELF | IN_MOVE_SELF;

constexpr std::size_t kLargestEvent = sizeof(inotify_event) + NAME_MAX + 1;

// Of whole events. That a watch is no more is news of WatchOnly: where the directory is gone,
// another event has said so.
bool TellsOfChange(std::string_view Events) {
    while (!Events.empty()) {
        inotify_event event;
        std::memcpy(&event, Events.data(), sizeof(event));
        if ((event.mask & ~std::uint32_t{IN_IGNORED}) != 0) {
            return true;
        }
        Events.remove_prefix(sizeof(event) + event.len);
    }
    return false;
}

// Only the kernel knows what is watched: a process that was told to watch something may have been
// ended before it could say so. Of that there is little, and its list begins with it.
void ForgetAll(int Watch) {
    const std::string path = "/proc/self/fdinfo/" + std::to_string(Watch);
    const OwnedDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    std::array<char, 4096> block;
    const ssize_t size = read(file.Get(), block.data(), block.size());
    std::string_view rest(block.data(), size < 0 ? 0 : static_cast<std::size_t>(size));
    constexpr std::string_view kBeforeNumber = "inotify wd:";
    constexpr int kHexadecimal = 16;
    for (std::size_t at = 0; (at = rest.find(kBeforeNumber)) != rest.npos;) {
        rest.remove_prefix(at + kBeforeNumber.size());
        int number = 0;
        std::from_chars(rest.data(), rest.data() + rest.size(), number, kHexadecimal);
        inotify_rm_watch(Watch, number);
    }
}

} // namespace

FolderWatch::FolderWatch() : Watch(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {}

// A read that leaves room in the block has taken all there was, so it ends however fast more comes.
bool FolderWatch::TakeChange() {
    std::array<char, 65536> block;
    bool bChanged = false;
    std::size_t taken = 0;
    do {
        const ssize_t size = read(Watch.Get(), block.data(), block.size());
        taken = size < 0 ? 0 : static_cast<std::size_t>(size);
        bChanged = bChanged || TellsOfChange({block.data(), taken});
    } while (taken > block.size() - kLargestEvent);
    return bChanged;
}

void WatchOnly(int Watch, const std::filesystem::path& Place) {
    ForgetAll(Watch);
    inotify_add_watch(Watch, Place.c_str(), kChanges | IN_ONLYDIR);
}
