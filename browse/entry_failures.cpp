#include "entry_failures.h"

#include "reply_bytes.h"

#include <utility>

namespace {

struct FailureHead {
    std::int32_t Error = 0;
    std::uint32_t Length = 0;
};

std::optional<EntryFailure> TakeFailure(std::string_view& Rest) {
    const std::optional<FailureHead> head = TakeValue<FailureHead>(Rest);
    const auto what = head ? Take(Rest, head->Length) : std::nullopt;
    return what ? std::optional(EntryFailure{std::string(*what), head->Error}) : std::nullopt;
}

} // namespace

void EntryFailures::Add(EntryFailure Failure) {
    ++Count;
    if (HasRoom()) {
        First.push_back(std::move(Failure));
    }
}

std::string ReplyFrom(const EntryFailures& Failures) {
    std::string reply;
    reply += AsReply(Failures.Count);
    for (const EntryFailure& failure : Failures.First) {
        reply +=
            AsReply(FailureHead{failure.Error, static_cast<std::uint32_t>(failure.What.size())});
        reply += failure.What;
    }
    return reply;
}

std::optional<EntryFailures> FailuresFrom(std::string_view Reply) {
    const std::optional<std::uint64_t> count = TakeValue<std::uint64_t>(Reply);
    EntryFailures failures;
    while (count && failures.Count < *count && failures.HasRoom()) {
        std::optional<EntryFailure> failure = TakeFailure(Reply);
        if (!failure) {
            return std::nullopt;
        }
        failures.Add(std::move(*failure));
    }
    if (!count || !Reply.empty()) {
        return std::nullopt;
    }
    failures.Count = *count;
    return failures;
}
