// A library to preload into a program: its calls of open, ioctl and close that concern chosen
// device paths reach drives that a text file describes, and everything else the system. The program
// runs unchanged. preloaded_drive.h has the test's side of it, and drive_description.h explains the
// text.

#include "drive_description.h"
#include "fake_disc.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <dlfcn.h>
#include <fcntl.h>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <pthread.h>
#include <string>
#include <string_view>
#include <system_error>
#include <unistd.h>

namespace {

constexpr std::string_view kDriverList = "/proc/sys/dev/cdrom/info";

// The system's own function, which the library stands in front of.
template <typename Function>
Function* Real(const char* Name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, Name));
}

// The drives of this process.
//
// Lock: Mutex guards everything but the texts, which never change.
struct Drives {
    DriveDescription Description;
    std::mutex Mutex;
    std::map<int, FakeDrive*> Open;

    // By its name or a link to it.
    FakeDrive* Find(const std::string& Path) {
        std::error_code ec;
        const std::filesystem::path target = std::filesystem::read_symlink(Path, ec);
        for (FakeDrive& drive : Description.Drives) {
            if (drive.Device == Path || drive.Device == target) {
                return &drive;
            }
        }
        return nullptr;
    }

    FakeDrive* FindOpen(int Descriptor) {
        const std::lock_guard lock(Mutex);
        const auto found = Open.find(Descriptor);
        return found == Open.end() ? nullptr : found->second;
    }

    // One line a call, so that the log of a process that was killed is good as well.
    void Log(const FakeDrive& Drive, const std::string& Call) const {
        const std::string line = Drive.Device + ": " + Call + "\n";
        const int log = Real<int(const char*, int, ...)>("open")(
            Description.LogFile.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
        if (write(log, line.data(), line.size()) < 0) {
            std::abort();
        }
        Real<int(int)>("close")(log);
    }
};

// Empty until the library is ready; calls that come earlier concern no drive.
std::unique_ptr<Drives> gDrives;

[[gnu::constructor]] void ReadDescription() {
    const char* file = std::getenv("TEST_DRIVES");
    if (file == nullptr) {
        return;
    }
    auto drives = std::make_unique<Drives>();
    drives->Description = ReadDriveDescription(file);
    gDrives = std::move(drives);
    // A process forked by one thread while another holds the lock could not take it any more.
    const auto lock = [] { gDrives->Mutex.lock(); };
    const auto unlock = [] { gDrives->Mutex.unlock(); };
    if (pthread_atfork(lock, unlock, unlock) != 0) {
        std::abort();
    }
}

// As in the kernel, no signal ends the wait early.
void WaitMilliseconds(int Milliseconds) {
    timespec left{Milliseconds / 1000, Milliseconds % 1000 * 1000000L};
    while (nanosleep(&left, &left) != 0 && errno == EINTR) {}
}

int OpenFake(FakeDrive& Drive, int Flags) {
    gDrives->Log(Drive, "open");
    const int descriptor =
        Real<int(const char*, int, ...)>("open")("/dev/null", O_RDONLY | (Flags & O_CLOEXEC));
    const std::lock_guard lock(gDrives->Mutex);
    gDrives->Open[descriptor] = &Drive;
    return descriptor;
}

int OpenAny(const char* Function, const char* Path, int Flags, mode_t Mode) {
    FakeDrive* drive = gDrives == nullptr ? nullptr : gDrives->Find(Path);
    if (drive != nullptr) {
        return OpenFake(*drive, Flags);
    }
    return Real<int(const char*, int, ...)>(Function)(Path, Flags, Mode);
}

std::FILE* OpenStream(const char* Function, const char* Path, const char* Mode) {
    if (gDrives != nullptr && Path == kDriverList) {
        Path = gDrives->Description.DriverListFile.c_str();
    }
    return Real<std::FILE*(const char*, const char*)>(Function)(Path, Mode);
}

int RequestFake(FakeDrive& Drive, unsigned long Code, void* Argument) {
    gDrives->Log(Drive, FakeRequestName(Code, Argument));
    FakeAnswer answer;
    {
        const std::lock_guard lock(gDrives->Mutex);
        answer = AnswerRequest(Drive, Code, Argument);
    }
    WaitMilliseconds(answer.DelayMilliseconds);
    if (answer.Error != 0) {
        errno = answer.Error;
        return -1;
    }
    return 0;
}

mode_t ModeOf(int Flags, va_list Arguments) {
    return (Flags & O_CREAT) != 0 ? va_arg(Arguments, mode_t) : 0;
}

} // namespace

extern "C" {

int open(const char* Path, int Flags, ...) {
    va_list arguments;
    va_start(arguments, Flags);
    const mode_t mode = ModeOf(Flags, arguments);
    va_end(arguments);
    return OpenAny("open", Path, Flags, mode);
}

int open64(const char* Path, int Flags, ...) {
    va_list arguments;
    va_start(arguments, Flags);
    const mode_t mode = ModeOf(Flags, arguments);
    va_end(arguments);
    return OpenAny("open64", Path, Flags, mode);
}

int openat(int Directory, const char* Path, int Flags, ...) {
    va_list arguments;
    va_start(arguments, Flags);
    const mode_t mode = ModeOf(Flags, arguments);
    va_end(arguments);
    FakeDrive* drive = gDrives == nullptr ? nullptr : gDrives->Find(Path);
    if (drive != nullptr) {
        return OpenFake(*drive, Flags);
    }
    return Real<int(int, const char*, int, ...)>("openat")(Directory, Path, Flags, mode);
}

std::FILE* fopen(const char* Path, const char* Mode) {
    return OpenStream("fopen", Path, Mode);
}

std::FILE* fopen64(const char* Path, const char* Mode) {
    return OpenStream("fopen64", Path, Mode);
}

int ioctl(int Descriptor, unsigned long Code, ...) noexcept {
    va_list arguments;
    va_start(arguments, Code);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    FakeDrive* drive = gDrives == nullptr ? nullptr : gDrives->FindOpen(Descriptor);
    if (drive != nullptr) {
        return RequestFake(*drive, Code, argument);
    }
    return Real<int(int, unsigned long, ...)>("ioctl")(Descriptor, Code, argument);
}

int close(int Descriptor) {
    FakeDrive* drive = gDrives == nullptr ? nullptr : gDrives->FindOpen(Descriptor);
    if (drive != nullptr) {
        gDrives->Log(*drive, "close");
        const std::lock_guard lock(gDrives->Mutex);
        gDrives->Open.erase(Descriptor);
    }
    return Real<int(int)>("close")(Descriptor);
}

} // extern "C"
