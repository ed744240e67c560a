#include "scripted_wait.h"

#include <condition_variable>
#include <mutex>
#include <stdexcept>

namespace {

thread_local ScriptedWait* gScript = nullptr;

} // namespace

// The names that the linker gives to a wait and to what replaces it.
void RealWait(std::condition_variable* Condition, std::unique_lock<std::mutex>& Lock) asm(
    "__real__ZNSt18condition_variable4waitERSt11unique_lockISt5mutexE");
void WrappedWait(std::condition_variable* Condition, std::unique_lock<std::mutex>& Lock) asm(
    "__wrap__ZNSt18condition_variable4waitERSt11unique_lockISt5mutexE");

void WrappedWait(std::condition_variable* Condition, std::unique_lock<std::mutex>& Lock) {
    if (gScript == nullptr) {
        RealWait(Condition, Lock);
        return;
    }
    Lock.unlock();
    gScript->TakeStep();
    Lock.lock();
}

ScriptedWait::ScriptedWait(std::initializer_list<Step> Steps) : Script(Steps) {
    gScript = this;
}

ScriptedWait::~ScriptedWait() {
    gScript = nullptr;
}

void ScriptedWait::TakeStep() {
    if (NextStep == Script.size()) {
        throw std::logic_error("The wait goes on after the last step.");
    }
    const Step& step = Script[NextStep++];
    if (step) {
        step();
    }
}
