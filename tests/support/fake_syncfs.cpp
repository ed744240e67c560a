#include "fake_syncfs.h"

#include <cerrno>

#include <unistd.h>

namespace {

FakeSyncfs* gFake = nullptr;

} // namespace

extern "C" {
int __real_syncfs(int Descriptor);
int __wrap_syncfs(int Descriptor);
void __real_sync();
void __wrap_sync();
int __real_fsync(int Descriptor);
int __wrap_fsync(int Descriptor);
}

int __wrap_syncfs(int Descriptor) {
    return gFake != nullptr && gFake->Syncfs ? gFake->Syncfs(Descriptor)
                                             : __real_syncfs(Descriptor);
}

void __wrap_sync() {
    gFake != nullptr && gFake->Sync ? gFake->Sync() : __real_sync();
}

int __wrap_fsync(int Descriptor) {
    return gFake != nullptr && gFake->Fsync ? gFake->Fsync(Descriptor) : __real_fsync(Descriptor);
}

FakeSyncfs::FakeSyncfs() {
    gFake = this;
}

FakeSyncfs::~FakeSyncfs() {
    gFake = nullptr;
}

std::function<int(int)> FakeSyncfs::FailWith(int Error) {
    return [Error](int) {
        errno = Error;
        return -1;
    };
}

int FakeSyncfs::NeverEnd(int) {
    while (true) {
        ::pause();
    }
}
