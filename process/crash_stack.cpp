#include "crash_stack.h"

#include <csignal>
#include <cstddef>
#include <memory>
#include <new>

namespace {

constexpr std::size_t kCrashStackBytes = 65536;

class CrashStack {
public:
    CrashStack() {
        stack_t now{};
        if (sigaltstack(nullptr, &now) != 0 || (now.ss_flags & SS_DISABLE) == 0) {
            return;
        }
        // Without memory for it the thread does its work all the same.
        Bytes.reset(new (std::nothrow) std::byte[kCrashStackBytes]);
        if (Bytes == nullptr) {
            return;
        }
        const stack_t ours{.ss_sp = Bytes.get(), .ss_flags = 0, .ss_size = kCrashStackBytes};
        sigaltstack(&ours, nullptr);
    }
    ~CrashStack() {
        if (Bytes != nullptr) {
            const stack_t none{.ss_sp = nullptr, .ss_flags = SS_DISABLE, .ss_size = 0};
            sigaltstack(&none, nullptr);
        }
    }
    CrashStack(const CrashStack&) = delete;
    CrashStack& operator=(const CrashStack&) = delete;

private:
    std::unique_ptr<std::byte[]> Bytes;
};

} // namespace

void ArmCrashStack() {
    thread_local const CrashStack stack;
}
