// utimensat as a test wants it, at the link.
//
// Requires: the executable wraps utimensat and links fake_utimensat.cpp.

#pragma once

#include <functional>
#include <utility>

// Stands in for the call for its lifetime; one object at a time.
class FakeUtimensat {
public:
    // Before returns an errno to fail with, or 0, which the real call follows. It runs on whatever
    // thread makes the call.
    explicit FakeUtimensat(std::function<int()> Before);
    ~FakeUtimensat();
    FakeUtimensat(const FakeUtimensat&) = delete;
    FakeUtimensat& operator=(const FakeUtimensat&) = delete;
};
