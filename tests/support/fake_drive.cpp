#include "fake_drive.h"

#include <cerrno>
#include <cstdarg>
#include <fcntl.h>
#include <string_view>
#include <utility>

namespace {

ScopedDrive* gDrive = nullptr;

} // namespace

// The names that the linker gives to the calls and to what replaces them.
int RealOpen(const char* Path, int Flags, ...) asm("__real_open");
int WrappedOpen(const char* Path, int Flags, ...) asm("__wrap_open");
int RealIoctl(int Descriptor, unsigned long Code, ...) asm("__real_ioctl");
int WrappedIoctl(int Descriptor, unsigned long Code, ...) asm("__wrap_ioctl");
int RealClose(int Descriptor) asm("__real_close");
int WrappedClose(int Descriptor) asm("__wrap_close");

int WrappedOpen(const char* Path, int Flags, ...) {
    va_list arguments;
    va_start(arguments, Flags);
    const mode_t mode = (Flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    if (gDrive != nullptr && std::string_view(Path) == kFakeDevice) {
        return gDrive->Open(Flags);
    }
    return RealOpen(Path, Flags, mode);
}

int WrappedIoctl(int Descriptor, unsigned long Code, ...) {
    va_list arguments;
    va_start(arguments, Code);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    if (gDrive != nullptr && gDrive->Owns(Descriptor)) {
        return gDrive->Request(Code, argument);
    }
    return RealIoctl(Descriptor, Code, argument);
}

int WrappedClose(int Descriptor) {
    if (gDrive != nullptr && gDrive->Owns(Descriptor)) {
        return gDrive->Close(Descriptor);
    }
    return RealClose(Descriptor);
}

ScopedDrive::ScopedDrive(FakeDisc Disc) : Drive{kFakeDevice, {std::move(Disc)}, 0, 0} {
    gDrive = this;
}

ScopedDrive::~ScopedDrive() {
    gDrive = nullptr;
}

std::vector<std::string> ScopedDrive::Reads() const {
    std::vector<std::string> reads;
    for (const std::string& call : Calls) {
        if (call.starts_with("read ")) {
            reads.push_back(call);
        }
    }
    return reads;
}

void ScopedDrive::Record(const std::string& Call) {
    Calls.push_back(Call);
    if (Before) {
        Before(Call);
    }
}

int ScopedDrive::Open(int Flags) {
    Record("open");
    OpenFlags.push_back(Flags);
    const std::size_t number = OpenFlags.size() - 1;
    if (number < OpenErrors.size() && OpenErrors[number] != 0) {
        errno = OpenErrors[number];
        return -1;
    }
    const int descriptor = RealOpen("/dev/null", O_RDONLY | O_CLOEXEC);
    Descriptors.insert(descriptor);
    return descriptor;
}

int ScopedDrive::Request(unsigned long Code, void* Argument) {
    Record(FakeRequestName(Code, Argument));
    const FakeAnswer answer = AnswerRequest(Drive, Code, Argument);
    if (answer.Error != 0) {
        errno = answer.Error;
        return -1;
    }
    return 0;
}

int ScopedDrive::Close(int Descriptor) {
    Record("close");
    Descriptors.erase(Descriptor);
    const int result = RealClose(Descriptor);
    if (ErrnoAfterClose != 0) {
        errno = ErrnoAfterClose;
    }
    return result;
}
