// Why there is no plan.

#pragma once

#include <string>
#include <vector>

enum class PlanRefusalKind {
    // The request contradicts itself or what is on the disk.
    WrongUsage,
    // Something that the request names is missing, taken or cannot be read.
    Failed,
    // The user has ended the wait for a drive; there are no sentences.
    Canceled,
};

// Nothing was touched. Each sentence names one thing that is wrong, without a capital, a period or
// a line end; it may hold operands as they were given, so it is not fit for a screen before it is
// cleaned.
struct PlanRefusal {
    PlanRefusalKind Kind = PlanRefusalKind::Failed;
    std::vector<std::string> Sentences;
};
