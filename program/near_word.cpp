#include "near_word.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace {

// How many letters have to be put in, left out, replaced or swapped with their neighbour to make
// one word of the other.
std::size_t EditDistance(std::string_view First, std::string_view Second) {
    // A row for each beginning of First, in which a column is for one of Second.
    std::vector<std::size_t> beforeLast;
    std::vector<std::size_t> last;
    std::vector<std::size_t> row(Second.size() + 1);
    for (std::size_t column = 0; column <= Second.size(); ++column) {
        row[column] = column;
    }
    for (std::size_t i = 1; i <= First.size(); ++i) {
        beforeLast = std::exchange(last, row);
        row[0] = i;
        for (std::size_t j = 1; j <= Second.size(); ++j) {
            const std::size_t replaced = last[j - 1] + (First[i - 1] == Second[j - 1] ? 0 : 1);
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, replaced});
            if (i > 1 && j > 1 && First[i - 1] == Second[j - 2] && First[i - 2] == Second[j - 1]) {
                row[j] = std::min(row[j], beforeLast[j - 2] + 1);
            }
        }
    }
    return row.back();
}

// In words of two or three letters everything is near to everything.
std::size_t LargestSlip(std::string_view Word) {
    constexpr std::size_t kShort = 4;
    constexpr std::size_t kLong = 8;
    return Word.size() < kShort ? 0 : Word.size() < kLong ? 1 : 2;
}

} // namespace

std::string NearestWord(std::string_view Typed, std::span<const std::string_view> Known) {
    std::string_view nearest;
    std::size_t nearestDistance = 0;
    for (const std::string_view word : Known) {
        const std::size_t distance = EditDistance(Typed, word);
        if (distance <= LargestSlip(word) && (nearest.empty() || distance < nearestDistance)) {
            nearest = word;
            nearestDistance = distance;
        }
    }
    return std::string(nearest);
}
