// Random trees, plans and answers, run by the engine and by a model of its rules.
//
//   tarvane_random_trees [--engine | --program] [--seed N] [--cases N] [--first K]
//
// With --program the program runs them, and what it promises is looked at. Case K of a seed is
// always the same one. Prints each case that fails, made small, and at the end "cases N held M".
// The exit status is 1 when one failed, 2 when something else went wrong.

#include "case_generator.h"
#include "case_run.h"
#include "program_case.h"
#include "program_run.h"
#include "shrinker.h"
#include "undetermined.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <string>

#include <csignal>
#include <unistd.h>

namespace {

struct Mode {
    const char* Option;
    RandomCase (*Generate)(std::uint64_t Seed, std::uint64_t Index, std::uint64_t Attempt);
    // Empty when the case holds.
    std::string (*Judge)(const RandomCase& Case, const Sandbox& Place);
};

constexpr Mode kModes[]{{"--engine", GenerateCase, DifferencesIn},
                        {"--program", GenerateProgramCase, PromisesBrokenBy}};

struct Options {
    const Mode* Chosen = kModes;
    std::uint64_t Seed = 1;
    std::uint64_t Cases = 1000;
    std::uint64_t First = 0;
};

constexpr int kMostFailures = 5;
constexpr unsigned kSecondsForCase = 60;

char gRunningCase[128];

void GiveUp(int) {
    constexpr char kText[] = "a case does not end: ";
    [[maybe_unused]] ssize_t written = ::write(STDOUT_FILENO, kText, sizeof kText - 1);
    written = ::write(STDOUT_FILENO, gRunningCase, std::strlen(gRunningCase));
    ::_exit(EXIT_FAILURE);
}

std::optional<Options> ParsedOptions(int Count, char** Words) {
    Options options;
    for (int index = 1; index < Count; ++index) {
        const std::string word = Words[index];
        const auto* const mode =
            std::find_if(std::begin(kModes), std::end(kModes),
                         [&word](const Mode& Candidate) { return word == Candidate.Option; });
        if (mode != std::end(kModes)) {
            options.Chosen = mode;
            continue;
        }
        std::uint64_t* const number = word == "--seed"    ? &options.Seed
                                      : word == "--cases" ? &options.Cases
                                      : word == "--first" ? &options.First
                                                          : nullptr;
        char* end = nullptr;
        if (number == nullptr || index + 1 == Count) {
            return std::nullopt;
        }
        const char* const value = Words[++index];
        *number = std::strtoull(value, &end, 10);
        if (*value == '\0' || *end != '\0') {
            return std::nullopt;
        }
    }
    return options;
}

bool Fails(const Mode& Of, const RandomCase& Case, const Sandbox& Place) {
    ::alarm(kSecondsForCase);
    try {
        return !Of.Judge(Case, Place).empty();
    } catch (const Undetermined&) {
        return false;
    }
}

void Report(const Mode& Of, const RandomCase& Case, const std::string& Reason,
            const Sandbox& Place) {
    std::printf("failed: %s  because:\n%s", gRunningCase, Reason.c_str());
    std::fflush(stdout);
    const RandomCase smallest =
        ShrunkCase(Case, [&](const RandomCase& Candidate) { return Fails(Of, Candidate, Place); });
    std::printf("  made small:\n%s  because:\n%s", Description(smallest).c_str(),
                Of.Judge(smallest, Place).c_str());
    std::fflush(stdout);
}

// Tries until a case is one that the rules decide.
bool CaseHolds(const Options& Of, std::uint64_t Index, const Sandbox& Place) {
    constexpr std::uint64_t kMostAttempts = 1000;
    for (std::uint64_t attempt = 0; attempt < kMostAttempts; ++attempt) {
        const RandomCase generated = Of.Chosen->Generate(Of.Seed, Index, attempt);
        try {
            const std::string reason = Of.Chosen->Judge(generated, Place);
            if (!reason.empty()) {
                Report(*Of.Chosen, generated, reason, Place);
            }
            return reason.empty();
        } catch (const Undetermined&) {
            continue;
        }
    }
    throw std::runtime_error("no case is found that the rules decide");
}

int Run(const Options& Of) {
    const Sandbox place;
    std::signal(SIGALRM, GiveUp);
    std::uint64_t held = 0;
    std::uint64_t tried = 0;
    for (; tried < Of.Cases && tried - held < kMostFailures; ++tried) {
        const std::uint64_t number = Of.First + tried;
        std::snprintf(gRunningCase, sizeof gRunningCase, "--seed %llu --first %llu --cases 1\n",
                      static_cast<unsigned long long>(Of.Seed),
                      static_cast<unsigned long long>(number));
        ::alarm(kSecondsForCase);
        held += CaseHolds(Of, number, place) ? 1U : 0U;
    }
    ::alarm(0);
    std::printf("cases %llu held %llu\n", static_cast<unsigned long long>(tried),
                static_cast<unsigned long long>(held));
    return held == tried ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

int main(int Count, char** Words) {
    constexpr int kWrongUsage = 2;
    const std::optional<Options> options = ParsedOptions(Count, Words);
    if (!options) {
        std::fputs("usage: tarvane_random_trees [--engine | --program] [--seed N] [--cases N] "
                   "[--first K]\n",
                   stderr);
        return kWrongUsage;
    }
    try {
        return Run(*options);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s%s\n", gRunningCase, error.what());
        return kWrongUsage;
    }
}
