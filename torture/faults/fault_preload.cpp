// A library to preload into a program: of all its calls of one kind, counted from main on, the k-th
// goes wrong.

#include "fault_point.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/statvfs.h>
#include <sys/uio.h>
#include <type_traits>
#include <unistd.h>

// Under these names nothing has to be looked up, which would allocate.
extern "C" {
void* __libc_malloc(std::size_t Size);
void* __libc_calloc(std::size_t Count, std::size_t Size);
void* __libc_realloc(void* Memory, std::size_t Size);
void* __libc_memalign(std::size_t Alignment, std::size_t Size);
void __libc_free(void* Memory);
}

namespace {

std::atomic<long> gLiveAllocations{0};

void* Counted(void* Memory) {
    gLiveAllocations += Memory == nullptr ? 0 : 1;
    return Memory;
}

// The system's own function, which the library stands in front of.
template <typename Function>
Function* Real(const char* Name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, Name));
}

template <typename Result>
Result Failure() {
    if constexpr (std::is_pointer_v<Result>) {
        return nullptr;
    } else {
        return static_cast<Result>(-1);
    }
}

using Main = int (*)(int, char**, char**);
Main gMain = nullptr;

int CountingMain(int Count, char** Arguments, char** Environment) {
    BeginToCount();
    return gMain(Count, Arguments, Environment);
}

} // namespace

extern "C" [[gnu::visibility("default")]] long LiveAllocations() {
    return gLiveAllocations;
}

// A function under its name in the system's library. The headers declare it with attributes that
// differ from system to system, so the definition has a name of its own for the compiler.
#define STANDS_FOR(RESULT, NAME, PARAMETERS)                                                       \
    [[gnu::visibility("default")]] RESULT Fault_##NAME PARAMETERS __asm__(#NAME);                  \
    RESULT Fault_##NAME PARAMETERS

#define FAILS(KIND, RESULT, NAME, PARAMETERS, ARGUMENTS, PATH)                                     \
    STANDS_FOR(RESULT, NAME, PARAMETERS) {                                                         \
        const Call call;                                                                           \
        static const auto real = Real<RESULT PARAMETERS>(#NAME);                                   \
        return Passes(call.EffectOf(Kind::KIND, #NAME, PATH)) ? real ARGUMENTS                     \
                                                              : Failure<RESULT>();                 \
    }

// What is closed is gone, also where closing it reports an error.
#define FAILS_AFTERWARDS(KIND, RESULT, NAME, PARAMETERS, ARGUMENTS)                                \
    STANDS_FOR(RESULT, NAME, PARAMETERS) {                                                         \
        const Call call;                                                                           \
        static const auto real = Real<RESULT PARAMETERS>(#NAME);                                   \
        const Effect effect = call.EffectOf(Kind::KIND, #NAME);                                    \
        const RESULT result = real ARGUMENTS;                                                      \
        return Passes(effect) ? result : Failure<RESULT>();                                        \
    }

// The error number is the result.
// NOLINTBEGIN(bugprone-macro-parentheses): PARAMETERS has its own.
#define RETURNS_ERROR(KIND, NAME, PARAMETERS, ARGUMENTS)                                           \
    STANDS_FOR(int, NAME, PARAMETERS) {                                                            \
        const Call call;                                                                           \
        static const auto real = Real<int PARAMETERS>(#NAME);                                      \
        return Passes(call.EffectOf(Kind::KIND, #NAME)) ? real ARGUMENTS : errno;                  \
    }
// NOLINTEND(bugprone-macro-parentheses)

#define MAY_BE_SHORT(KIND, NAME, PARAMETERS, ARGUMENTS)                                            \
    STANDS_FOR(ssize_t, NAME, PARAMETERS) {                                                        \
        const Call call;                                                                           \
        static const auto real = Real<ssize_t PARAMETERS>(#NAME);                                  \
        const Effect effect = call.EffectOf(Kind::KIND, #NAME);                                    \
        Size = Shortened(effect, Size);                                                            \
        return Passes(effect) ? real ARGUMENTS : Failure<ssize_t>();                               \
    }

FAILS(Open, int, open, (const char* Path, int Flags, mode_t Mode), (Path, Flags, Mode), Path)
FAILS(Open, int, open64, (const char* Path, int Flags, mode_t Mode), (Path, Flags, Mode), Path)
FAILS(Open, int, openat, (int At, const char* Path, int Flags, mode_t Mode),
      (At, Path, Flags, Mode), Path)
FAILS(Open, int, openat64, (int At, const char* Path, int Flags, mode_t Mode),
      (At, Path, Flags, Mode), Path)
FAILS(Open, std::FILE*, fopen, (const char* Path, const char* Mode), (Path, Mode), Path)
FAILS(Open, std::FILE*, fopen64, (const char* Path, const char* Mode), (Path, Mode), Path)
FAILS(Stream, std::FILE*, fdopen, (int Descriptor, const char* Mode), (Descriptor, Mode), "")
FAILS(Open, DIR*, opendir, (const char* Path), (Path), Path)
FAILS(Stream, DIR*, fdopendir, (int Descriptor), (Descriptor), "")

MAY_BE_SHORT(Read, read, (int Descriptor, void* Data, std::size_t Size), (Descriptor, Data, Size))
MAY_BE_SHORT(Read, pread, (int Descriptor, void* Data, std::size_t Size, off_t Offset),
             (Descriptor, Data, Size, Offset))
MAY_BE_SHORT(Read, sendfile, (int Out, int In, off_t* Offset, std::size_t Size),
             (Out, In, Offset, Size))
STANDS_FOR(ssize_t, write, (int Descriptor, const void* Data, std::size_t Size)) {
    const Call call;
    static const auto real = Real<ssize_t(int, const void*, std::size_t)>("write");
    const int errorBefore = errno;
    const bool bPeopleRead = Descriptor <= STDERR_FILENO || isatty(Descriptor) == 1;
    errno = errorBefore;
    const Kind kind = bPeopleRead ? Kind::Print : Kind::Write;
    const Effect effect = call.EffectOf(kind, "write");
    return Passes(effect) ? real(Descriptor, Data, Shortened(effect, Size)) : -1;
}

STANDS_FOR(ssize_t, writev, (int Descriptor, const iovec* Parts, int Number)) {
    const Call call;
    static const auto real = Real<ssize_t(int, const iovec*, int)>("writev");
    const Effect effect = call.EffectOf(Kind::Write, "writev");
    if (effect == Effect::Short) {
        const iovec* const end = Parts + Number;
        const iovec* const filled =
            std::find_if(Parts, end, [](const iovec& Part) { return Part.iov_len > 0; });
        iovec half = filled == end ? iovec{} : *filled;
        half.iov_len = std::min(half.iov_len, Shortened(effect, half.iov_len));
        return real(Descriptor, &half, 1);
    }
    return Passes(effect) ? real(Descriptor, Parts, Number) : -1;
}

FAILS(Stat, int, stat, (const char* Path, struct stat* Out), (Path, Out), Path)
FAILS(Stat, int, lstat, (const char* Path, struct stat* Out), (Path, Out), Path)
FAILS(Stat, int, fstat, (int Descriptor, struct stat* Out), (Descriptor, Out), "")
FAILS(Stat, int, fstat64, (int Descriptor, struct stat64* Out), (Descriptor, Out), "")
FAILS(Stat, int, fstatat, (int At, const char* Path, struct stat* Out, int Flags),
      (At, Path, Out, Flags), Path)
FAILS(Stat, int, statx, (int At, const char* Path, int Flags, unsigned Mask, struct statx* Out),
      (At, Path, Flags, Mask, Out), Path)
FAILS(Stat, int, faccessat, (int At, const char* Path, int Mode, int Flags),
      (At, Path, Mode, Flags), Path)
FAILS(Stat, int, statfs, (const char* Path, struct statfs* Out), (Path, Out), Path)
FAILS(Stat, int, fstatfs, (int Descriptor, struct statfs* Out), (Descriptor, Out), "")
FAILS(Stat, int, statvfs, (const char* Path, struct statvfs* Out), (Path, Out), Path)
FAILS(Stat, int, fstatvfs, (int Descriptor, struct statvfs* Out), (Descriptor, Out), "")
FAILS(Stat, ssize_t, readlink, (const char* Path, char* Out, std::size_t Size), (Path, Out, Size),
      Path)
FAILS(Stat, ssize_t, readlinkat, (int At, const char* Path, char* Out, std::size_t Size),
      (At, Path, Out, Size), Path)
FAILS(Stat, char*, realpath, (const char* Path, char* Out), (Path, Out), Path)

FAILS(Mkdir, int, mkdir, (const char* Path, mode_t Mode), (Path, Mode), Path)
FAILS(Mkdir, int, mkdirat, (int At, const char* Path, mode_t Mode), (At, Path, Mode), Path)
FAILS(Unlink, int, unlink, (const char* Path), (Path), Path)
FAILS(Rmdir, int, rmdir, (const char* Path), (Path), Path)
FAILS(Rename, int, rename, (const char* From, const char* To), (From, To), From)
FAILS(Rename, int, renameat2, (int At, const char* From, int AtTo, const char* To, unsigned Flags),
      (At, From, AtTo, To, Flags), From)
FAILS(Link, int, link, (const char* From, const char* To), (From, To), From)
FAILS(Link, int, symlink, (const char* Target, const char* Path), (Target, Path), Path)

STANDS_FOR(int, unlinkat, (int At, const char* Path, int Flags)) {
    const Call call;
    static const auto real = Real<int(int, const char*, int)>("unlinkat");
    const Kind kind = (Flags & AT_REMOVEDIR) != 0 ? Kind::Rmdir : Kind::Unlink;
    return Passes(call.EffectOf(kind, "unlinkat", Path)) ? real(At, Path, Flags) : -1;
}

STANDS_FOR(int, remove, (const char* Path)) {
    const Call call;
    static const auto real = Real<int(const char*)>("remove");
    static const auto status = Real<int(const char*, struct stat*)>("lstat");
    struct stat info {};
    const bool bDirectory = status(Path, &info) == 0 && S_ISDIR(info.st_mode);
    const Kind kind = bDirectory ? Kind::Rmdir : Kind::Unlink;
    return Passes(call.EffectOf(kind, "remove", Path)) ? real(Path) : -1;
}

FAILS(Readdir, dirent*, readdir, (DIR * Directory), (Directory), "")
FAILS(Readdir, dirent64*, readdir64, (DIR * Directory), (Directory), "")
FAILS(Readdir, ssize_t, getdents64, (int Descriptor, void* Data, std::size_t Size),
      (Descriptor, Data, Size), "")
FAILS(Ioctl, int, ioctl, (int Descriptor, unsigned long Request, void* Argument),
      (Descriptor, Request, Argument), "")
STANDS_FOR(int, close, (int Descriptor)) {
    const Call call;
    static const auto real = Real<int(int)>("close");
    const Effect effect = call.EffectOf(Kind::Close, "close");
    const int result = real(Descriptor);
    if (result != 0 && errno == EBADF) {
        NoteSurplusClose();
    }
    return Passes(effect) ? result : -1;
}

FAILS_AFTERWARDS(Close, int, fclose, (std::FILE * Stream), (Stream))
FAILS_AFTERWARDS(Close, int, closedir, (DIR * Directory), (Directory))

FAILS(Chmod, int, chmod, (const char* Path, mode_t Mode), (Path, Mode), Path)
FAILS(Chmod, int, fchmod, (int Descriptor, mode_t Mode), (Descriptor, Mode), "")
FAILS(Chmod, int, fchmodat, (int At, const char* Path, mode_t Mode, int Flags),
      (At, Path, Mode, Flags), Path)
FAILS(Chmod, int, fchown, (int Descriptor, uid_t User, gid_t Group), (Descriptor, User, Group), "")
FAILS(Chmod, int, fchownat, (int At, const char* Path, uid_t User, gid_t Group, int Flags),
      (At, Path, User, Group, Flags), Path)
FAILS(Utimensat, int, utimensat, (int At, const char* Path, const timespec* Times, int Flags),
      (At, Path, Times, Flags), Path)
FAILS(Utimensat, int, futimens, (int Descriptor, const timespec* Times), (Descriptor, Times), "")

FAILS(Eventfd, int, eventfd, (unsigned First, int Flags), (First, Flags), "")
FAILS(Eventfd, int, pipe2, (int* Out, int Flags), (Out, Flags), "")
FAILS(Eventfd, int, memfd_create, (const char* Name, unsigned Flags), (Name, Flags), "")
FAILS(Eventfd, int, signalfd, (int Descriptor, const sigset_t* Signals, int Flags),
      (Descriptor, Signals, Flags), "")
FAILS(Eventfd, int, timerfd_create, (int Clock, int Flags), (Clock, Flags), "")
FAILS(Eventfd, int, inotify_init1, (int Flags), (Flags), "")
FAILS(Fork, pid_t, fork, (), (), "")
FAILS(Sync, int, fsync, (int Descriptor), (Descriptor), "")
FAILS(Sync, int, syncfs, (int Descriptor), (Descriptor), "")
FAILS(Wait, int, poll, (void* Descriptors, unsigned long Number, int Milliseconds),
      (Descriptors, Number, Milliseconds), "")
FAILS(Wait, int, ppoll,
      (void* Descriptors, unsigned long Number, const timespec* Limit, const sigset_t* Signals),
      (Descriptors, Number, Limit, Signals), "")
FAILS(Wait, pid_t, waitpid, (pid_t Process, int* Out, int Options), (Process, Out, Options), "")
RETURNS_ERROR(Thread, pthread_create,
              (pthread_t * Out, const pthread_attr_t* Attributes, void* (*Run)(void*),
               void* Argument),
              (Out, Attributes, Run, Argument))
RETURNS_ERROR(Fork, posix_spawnp,
              (pid_t * Out, const char* File, const posix_spawn_file_actions_t* Actions,
               const posix_spawnattr_t* Attributes, char* const* Arguments,
               char* const* Environment),
              (Out, File, Actions, Attributes, Arguments, Environment))

STANDS_FOR(void*, malloc, (std::size_t Size)) {
    const Call call;
    return Passes(call.EffectOf(Kind::Alloc, "malloc")) ? Counted(__libc_malloc(Size)) : nullptr;
}

STANDS_FOR(void*, calloc, (std::size_t Number, std::size_t Size)) {
    const Call call;
    return Passes(call.EffectOf(Kind::Alloc, "calloc")) ? Counted(__libc_calloc(Number, Size))
                                                        : nullptr;
}

STANDS_FOR(void*, realloc, (void* Memory, std::size_t Size)) {
    const Call call;
    if (!Passes(call.EffectOf(Kind::Alloc, "realloc"))) {
        return nullptr;
    }
    void* const result = __libc_realloc(Memory, Size);
    gLiveAllocations += (result == nullptr ? 0 : 1) - (Memory == nullptr ? 0 : 1);
    return result;
}

STANDS_FOR(void*, aligned_alloc, (std::size_t Alignment, std::size_t Size)) {
    const Call call;
    return Passes(call.EffectOf(Kind::Alloc, "aligned_alloc"))
               ? Counted(__libc_memalign(Alignment, Size))
               : nullptr;
}

STANDS_FOR(void, free, (void* Memory)) {
    gLiveAllocations -= Memory == nullptr ? 0 : 1;
    __libc_free(Memory);
}

STANDS_FOR(int, __libc_start_main,
           (Main Started, int Number, char** Arguments, void (*Init)(), void (*Fini)(),
            void (*LoaderFini)(), void* StackEnd)) {
    gMain = Started;
    return Real<int(Main, int, char**, void (*)(), void (*)(), void (*)(), void*)>(
        "__libc_start_main")(CountingMain, Number, Arguments, Init, Fini, LoaderFini, StackEnd);
}
