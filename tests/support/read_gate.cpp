#include "read_gate.h"

#include "needs.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/fanotify.h>
#include <system_error>
#include <unistd.h>

namespace {

OwnedDescriptor OpenEvents(const std::filesystem::path& File, bool bOpening) {
    NeedRoot();
    OwnedDescriptor events(fanotify_init(FAN_CLASS_CONTENT | FAN_CLOEXEC, O_RDONLY | O_CLOEXEC));
    if (events.Get() < 0 && (errno == EPERM || errno == ENOSYS)) {
        SkipTest("needs the right to hold other programs");
    }
    const std::uint64_t kind = bOpening ? FAN_OPEN_PERM : FAN_ACCESS_PERM;
    if (fanotify_mark(events.Get(), FAN_MARK_ADD, kind, AT_FDCWD, File.c_str()) != 0) {
        throw std::system_error(errno, std::generic_category(), "watching " + File.string());
    }
    return events;
}

} // namespace

ReadGate::ReadGate(const std::filesystem::path& File, Moment When, std::function<void()> MakeChange)
    : Change(std::move(MakeChange)), Remaining(When.Nth), Events(OpenEvents(File, When.bOpening)),
      Stop(eventfd(0, EFD_CLOEXEC)), Server(&ReadGate::Serve, this) {}

ReadGate::~ReadGate() {
    eventfd_write(Stop.Get(), 1);
    Server.join();
}

void ReadGate::Serve() {
    while (true) {
        std::array<pollfd, 2> events{{{Events.Get(), POLLIN, 0}, {Stop.Get(), POLLIN, 0}}};
        poll(events.data(), events.size(), -1);
        if (events[1].revents != 0) {
            return;
        }
        AnswerOne();
    }
}

void ReadGate::AnswerOne() {
    fanotify_event_metadata event{};
    if (read(Events.Get(), &event, sizeof(event)) != sizeof(event)) {
        return;
    }
    const OwnedDescriptor file(event.fd);
    if (--Remaining == 0) {
        Change();
        bReached = true;
    }
    const fanotify_response response{file.Get(), FAN_ALLOW};
    [[maybe_unused]] const ssize_t written = write(Events.Get(), &response, sizeof(response));
}
