#include "scripted_wait.h"

#include "link_names.h"

#include <condition_variable>
#include <mutex>
#include <stdexcept>

namespace {

thread_local ScriptedWait* gScript = nullptr;

} // namespace

void RealWait(std::condition_variable* Condition, std::unique_lock<std::mutex>& Lock)
    REAL(ConditionWait);
void WrappedWait(std::condition_variable* Condition, std::unique_lock<std::mutex>& Lock)
    WRAPPED(ConditionWait);

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
