#include "shrinker.h"

#include <algorithm>

namespace {

// The case without the entry and what is in it or is one of its names.
RandomCase WithoutEntry(RandomCase Case, std::size_t Index) {
    const std::string path = Case.Entries[Index].Path;
    std::erase_if(Case.Entries, [&path](const CaseEntry& Entry) {
        const std::string& target = Entry.Target;
        return Entry.Path == path || Entry.Path.starts_with(path + "/") ||
               (Entry.Kind == EntryKind::HardLink &&
                (target == path || target.starts_with(path + "/")));
    });
    return Case;
}

template <typename Value>
std::vector<Value> Without(std::vector<Value> Values, std::size_t Index) {
    Values.erase(Values.begin() + static_cast<std::ptrdiff_t>(Index));
    return Values;
}

// What may be tried next, the biggest steps first.
std::vector<RandomCase> SmallerCases(const RandomCase& Case) {
    std::vector<RandomCase> smaller;
    for (std::size_t index = 0; index < Case.Items.size(); ++index) {
        smaller.push_back(Case);
        smaller.back().Items = Without(Case.Items, index);
    }
    for (std::size_t index = 0; index < Case.Entries.size(); ++index) {
        smaller.push_back(WithoutEntry(Case, index));
    }
    for (std::size_t index = Case.Answers.size(); index > 0; --index) {
        smaller.push_back(Case);
        smaller.back().Answers = Without(Case.Answers, index - 1);
    }
    for (std::size_t index = 0; index < Case.Entries.size(); ++index) {
        if (Case.Entries[index].Kind == EntryKind::File && Case.Entries[index].Size > 1) {
            smaller.push_back(Case);
            smaller.back().Entries[index].Size = 1;
        }
    }
    return smaller;
}

} // namespace

RandomCase ShrunkCase(const RandomCase& Case, const std::function<bool(const RandomCase&)>& Fails) {
    RandomCase smallest = Case;
    constexpr int kMostSteps = 200;
    for (int step = 0; step < kMostSteps; ++step) {
        const std::vector<RandomCase> candidates = SmallerCases(smallest);
        const auto failing = std::find_if(candidates.begin(), candidates.end(), Fails);
        if (failing == candidates.end()) {
            break;
        }
        smallest = *failing;
    }
    return smallest;
}
