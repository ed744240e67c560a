#include "entry_work.h"

#include "entry_deletion.h"
#include "entry_failures.h"
#include "quoted.h"

#include <cerrno>
#include <cstdio>
#include <exception>
#include <fcntl.h>
#include <new>
#include <string_view>
#include <sys/mman.h>
#include <sys/stat.h>
#include <system_error>
#include <utility>

namespace {

using Counter = std::atomic<std::uint64_t>;

Counter* MapShared() {
    static_assert(Counter::is_always_lock_free);
    void* memory =
        mmap(nullptr, sizeof(Counter), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        throw std::bad_alloc();
    }
    return new (memory) Counter(0);
}

void Unmap(Counter* Mapped) {
    munmap(Mapped, sizeof(Counter));
}

bool IsThere(const std::filesystem::path& Path) {
    struct stat status {};
    return lstat(Path.c_str(), &status) == 0 || errno != ENOENT;
}

// Returns 0 or an errno.
int RenameToFree(const std::filesystem::path& From, const std::filesystem::path& To) {
    if (renameat2(AT_FDCWD, From.c_str(), AT_FDCWD, To.c_str(), RENAME_NOREPLACE) == 0) {
        return 0;
    }
    if (errno != EINVAL) {
        return errno;
    }
    // Not every file system can do it in one step.
    if (IsThere(To)) {
        return EEXIST;
    }
    return rename(From.c_str(), To.c_str()) == 0 ? 0 : errno;
}

EntryWorkResult ResultFrom(const EntryFailures& Failures) {
    EntryWorkResult result{.FailureCount = Failures.Count};
    for (const EntryFailure& failure : Failures.First) {
        result.Failures.push_back(failure.What + ": " +
                                  std::generic_category().message(failure.Error));
    }
    return result;
}

EntryWorkResult Failed(std::string Sentence) {
    return {.Failures = {std::move(Sentence)}, .FailureCount = 1};
}

} // namespace

EntryWork::EntryWork(const Work& WorkToDo) : Deleted(MapShared(), Unmap) {
    try {
        Process = std::make_unique<WorkerProcess>(
            [&WorkToDo, &deleted = *Deleted, reply = std::string()]() mutable {
                try {
                    EntryFailures failures;
                    WorkToDo(deleted, failures);
                    reply = ReplyFrom(failures);
                } catch (const std::exception&) {
                    // Without memory for it there is no reply.
                }
                return std::string_view(reply);
            });
    } catch (const std::system_error& error) {
        StartFailure = std::string("cannot start a process: ") + error.what();
    }
}

EntryWork EntryWork::MakeDirectory(const std::filesystem::path& Path) {
    return EntryWork([&Path](Counter&, EntryFailures& Failures) {
        constexpr mode_t kAsTheMaskSays = 0777;
        if (const int error = mkdir(Path.c_str(), kAsTheMaskSays) == 0 ? 0 : errno) {
            Failures.Add({"cannot create directory " + Quoted(Path.native()), error});
        }
    });
}

EntryWork EntryWork::Rename(const std::filesystem::path& From, const std::filesystem::path& To) {
    return EntryWork([&From, &To](Counter&, EntryFailures& Failures) {
        if (const int error = RenameToFree(From, To)) {
            Failures.Add(
                {"cannot rename " + Quoted(From.native()) + " to " + Quoted(To.native()), error});
        }
    });
}

EntryWork EntryWork::Delete(std::vector<std::filesystem::path> Paths) {
    return EntryWork([&Paths](Counter& Entries, EntryFailures& Failures) {
        EntryDeletion deletion(Entries, Failures);
        for (const std::filesystem::path& path : Paths) {
            deletion.Delete(path);
        }
    });
}

std::optional<EntryWorkResult> EntryWork::TakeResult() {
    if (!Process) {
        return Failed(StartFailure);
    }
    const std::optional<std::string> reply = Process->TakeReply();
    if (!reply) {
        return std::nullopt;
    }
    const std::optional<EntryFailures> failures = FailuresFrom(*reply);
    EntryWorkResult result = failures ? ResultFrom(*failures) : Failed("the work was interrupted");
    result.Done = *Deleted;
    return result;
}
