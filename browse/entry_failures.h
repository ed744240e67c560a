// What a process could not do to entries, and how that passes to ours.

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct EntryFailure {
    // "cannot delete '/x/y'"; the reason is put behind it where it is shown.
    std::string What;
    // An errno.
    int Error = 0;
};

struct EntryFailures {
    std::uint64_t Count = 0;
    std::vector<EntryFailure> First = {};

    // Whether the next one would be among the first, so that only these need words.
    bool HasRoom() const { return First.size() < kKept; }
    void Add(EntryFailure Failure);

private:
    static constexpr std::size_t kKept = 10;
};

std::string ReplyFrom(const EntryFailures& Failures);

// Nothing when the reply is not whole, as that of a process that was ended.
std::optional<EntryFailures> FailuresFrom(std::string_view Reply);
