// A file descriptor that is closed with its owner.

#pragma once

#include <unistd.h>
#include <utility>

class OwnedDescriptor {
public:
    // -1 for none.
    explicit OwnedDescriptor(int Descriptor = -1) : Number(Descriptor) {}
    OwnedDescriptor(OwnedDescriptor&& Other) noexcept : Number(std::exchange(Other.Number, -1)) {}
    OwnedDescriptor& operator=(OwnedDescriptor&& Other) noexcept {
        std::swap(Number, Other.Number);
        return *this;
    }
    ~OwnedDescriptor() {
        if (Number >= 0) {
            close(Number);
        }
    }

    int Get() const { return Number; }

private:
    int Number;
};
