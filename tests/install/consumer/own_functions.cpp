// What the engine asks of the program around it, as plain as it can be. That it is these functions
// which are called shows in the sound.

#include <cstdio>

#include <ring_sound.h>
#include <tarvaneops.h>
#include <tarvanepane.h>

bool TarvanePathsEquivalentOrSame(const std::filesystem::path& First,
                                  const std::filesystem::path& Second) noexcept {
    return First == Second;
}

bool TarvanePathIsInside(const std::filesystem::path&, const std::filesystem::path&) noexcept {
    return false;
}

bool TarvaneIsCddaPath(const std::string&) {
    return false;
}

std::string TarvaneCddaDeviceFromPath(const std::string&) {
    return {};
}

int TarvaneCddaTrackFromPath(const std::string&) {
    return 0;
}

void PlayTarvaneTransferCompleteSound() noexcept {
    std::puts("The sound of our own.");
}
