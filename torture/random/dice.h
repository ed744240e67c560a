// Chance that is the same on every machine.

#pragma once

#include <cstddef>
#include <cstdint>
#include <random>

// Numbers from the engine alone: the distributions of the standard library differ between machines.
class Dice {
public:
    Dice(std::uint64_t Seed, std::uint64_t Index, std::uint64_t Attempt) {
        std::seed_seq seeds{Seed, Seed >> 32U, Index, Index >> 32U, Attempt};
        Engine.seed(seeds);
    }
    std::size_t Below(std::size_t End) { return Engine() % End; }
    std::size_t Between(std::size_t First, std::size_t Last) {
        return First + Below(Last - First + 1);
    }
    bool Percent(unsigned Chance) { return Below(100) < Chance; }
    template <typename List>
    const auto& OneOf(const List& Values) {
        return Values[Below(Values.size())];
    }

private:
    std::mt19937_64 Engine;
};
