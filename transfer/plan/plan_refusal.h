// Why there is no plan.

#pragma once

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

// The graver ones come later.
enum class PlanRefusalKind {
    // Something that the request names is missing or cannot be looked at.
    Failed,
    // The request contradicts itself or what is on the disk.
    WrongUsage,
    // The user has ended the wait for a drive; there are no sentences.
    Canceled,
};

// Nothing was touched. Each sentence names one thing that is wrong, without a capital, a period or
// a line end; it may hold operands as they were given, so it is not fit for a screen before it is
// cleaned.
struct PlanRefusal {
    // The gravest of all that is wrong.
    PlanRefusalKind Kind = PlanRefusalKind::Failed;
    std::vector<std::string> Sentences;

    bool IsCanceled() const { return Kind == PlanRefusalKind::Canceled; }
    bool IsRefused() const { return IsCanceled() || !Sentences.empty(); }

    // What is wrong twice is said once.
    void Add(PlanRefusalKind SentenceKind, std::string Sentence) {
        Kind = std::max(Kind, SentenceKind);
        if (std::ranges::find(Sentences, Sentence) == Sentences.end()) {
            Sentences.push_back(std::move(Sentence));
        }
    }
};
