#include "counting_sound.h"

#include "ring_sound.h"

#include <atomic>
#include <utility>

namespace {

std::atomic<int> gPlayed{0};
std::function<void()> gListener;

} // namespace

void PlayTarvaneTransferCompleteSound() noexcept {
    ++gPlayed;
    if (gListener) {
        gListener();
    }
}

CountingSound::CountingSound() {
    gPlayed = 0;
}

CountingSound::~CountingSound() {
    gListener = nullptr;
}

void CountingSound::Listen(std::function<void()> Listener) {
    gListener = std::move(Listener);
}

int CountingSound::Played() const {
    return gPlayed;
}
