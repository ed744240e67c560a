#include "failing_allocation.h"

#include <cstdlib>
#include <new>

namespace {

thread_local bool gLimited = false;
thread_local bool gFailed = false;
thread_local std::size_t gAllowed = 0;

bool MayAllocate() {
    if (!gLimited) {
        return true;
    }
    if (gAllowed == 0) {
        gFailed = true;
        return false;
    }
    --gAllowed;
    return true;
}

} // namespace

// The address sanitizer has one of its own, which does not go with the delete below.
void* operator new(std::size_t Size, const std::nothrow_t&) noexcept {
    return MayAllocate() ? std::malloc(Size == 0 ? 1 : Size) : nullptr;
}

void* operator new(std::size_t Size) {
    void* memory = operator new(Size, std::nothrow);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void* operator new[](std::size_t Size) {
    return operator new(Size);
}

void operator delete(void* Memory, const std::nothrow_t&) noexcept {
    std::free(Memory);
}

void operator delete(void* Memory) noexcept {
    std::free(Memory);
}

void operator delete(void* Memory, std::size_t) noexcept {
    std::free(Memory);
}

void operator delete[](void* Memory) noexcept {
    std::free(Memory);
}

void operator delete[](void* Memory, std::size_t) noexcept {
    std::free(Memory);
}

FailingAllocation::FailingAllocation(std::size_t Allowed) {
    gFailed = false;
    gAllowed = Allowed;
    gLimited = true;
}

FailingAllocation::~FailingAllocation() {
    gLimited = false;
}

bool FailingAllocation::Failed() const {
    return gFailed;
}
