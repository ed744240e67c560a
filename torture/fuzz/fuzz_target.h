// What the fuzz targets have in common: each defines RunInput, which libFuzzer calls with one input
// after the other.

#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

// Tries one input. What must hold is expected; what is undefined the sanitizers see.
void RunInput(std::string_view Input);

// Ends the program where it does not hold, so that libFuzzer keeps the input. What says what does
// not.
void Expect(bool bHolds, const char* What);

// Expects text that a screen can be given: valid, on one line, without a byte that drives it.
void ExpectClean(std::string_view Text);

// Cuts an input into numbers and names. Behind its end are zeros and empty names, so that every
// input means something.
class InputReader {
public:
    explicit InputReader(std::string_view Input) : Left(Input) {}

    bool IsAtEnd() const { return Left.empty(); }

    // Below Limit, which is at most 256.
    int Number(int Limit) {
        const std::string_view byte = Take(1);
        return byte.empty() ? 0 : static_cast<unsigned char>(byte[0]) % Limit;
    }

    // Up to the next zero byte, which no name can hold.
    std::string Name() {
        const std::string name(Take(std::min(Left.find('\0'), Left.size())));
        Take(1);
        return name;
    }

    std::string_view Rest() const { return Left; }

private:
    std::string_view Take(std::size_t Count) {
        const std::string_view taken = Left.substr(0, Count);
        Left.remove_prefix(taken.size());
        return taken;
    }

    std::string_view Left;
};
