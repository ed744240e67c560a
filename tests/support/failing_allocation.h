// Memory that runs out.
//
// Requires: the executable links failing_allocation.cpp, which replaces operator new.

#pragma once

#include <cstddef>

// Lets this thread's next Allowed allocations succeed and all after them fail with std::bad_alloc,
// for its lifetime; one object a thread at a time.
class FailingAllocation {
public:
    explicit FailingAllocation(std::size_t Allowed);
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;
    ~FailingAllocation();

    // Whether an allocation has failed.
    bool Failed() const;
};
