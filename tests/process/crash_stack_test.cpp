#include "crash_stack.h"

#include <array>
#include <csignal>
#include <cstddef>
#include <thread>

#include <gtest/gtest.h>

namespace {

stack_t StackForHandlers() {
    stack_t stack{};
    sigaltstack(nullptr, &stack);
    return stack;
}

} // namespace

TEST(CrashStack, GivesAThreadAStackForHandlers) {
    std::thread([] {
        ArmCrashStack();
        EXPECT_EQ(StackForHandlers().ss_flags & SS_DISABLE, 0);
    }).join();
}

TEST(CrashStack, LeavesTheStackAloneThatAThreadHas) {
    std::thread([] {
        // A sanitizer gives every thread one and wants it back.
        const stack_t before = StackForHandlers();
        static std::array<std::byte, 65536> room;
        const stack_t own{.ss_sp = room.data(), .ss_flags = 0, .ss_size = room.size()};
        ASSERT_EQ(sigaltstack(&own, nullptr), 0);
        ArmCrashStack();
        EXPECT_EQ(StackForHandlers().ss_sp, room.data());
        sigaltstack(&before, nullptr);
    }).join();
}
