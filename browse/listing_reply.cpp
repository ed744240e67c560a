#include "listing_reply.h"

#include "reply_bytes.h"

#include <utility>

namespace {

// Both have no bytes that nobody sets.
struct ReplyHead {
    std::uint64_t EntryCount = 0;
    std::uint64_t FreeBytes = 0;
    std::int32_t Error = 0;
    std::uint32_t IsFreeKnown = 0;
};

struct EntryHead {
    std::uint64_t SizeBytes = 0;
    std::int64_t Modified = 0;
    std::uint32_t NameLength = 0;
    std::uint16_t What = 0;
    std::uint16_t Flags = 0;
};

constexpr std::uint16_t kLink = 1;
constexpr std::uint16_t kExecutable = 2;
constexpr std::uint16_t kDated = 4;

EntryHead HeadOf(const ListedEntry& Entry) {
    const int flags = (Entry.bLink ? kLink : 0) | (Entry.bExecutable ? kExecutable : 0) |
                      (Entry.Modified ? kDated : 0);
    return {.SizeBytes = Entry.SizeBytes,
            .Modified = Entry.Modified.value_or(0),
            .NameLength = static_cast<std::uint32_t>(Entry.Name.size()),
            .What = static_cast<std::uint16_t>(Entry.What),
            .Flags = static_cast<std::uint16_t>(flags)};
}

ListedEntry EntryFrom(const EntryHead& Head, std::string_view Name) {
    ListedEntry entry;
    entry.Name = Name;
    entry.What = static_cast<ListedEntry::Kind>(Head.What);
    entry.bLink = (Head.Flags & kLink) != 0;
    entry.bExecutable = (Head.Flags & kExecutable) != 0;
    entry.SizeBytes = Head.SizeBytes;
    if ((Head.Flags & kDated) != 0) {
        entry.Modified = Head.Modified;
    }
    return entry;
}

std::optional<ListedEntry> TakeEntry(std::string_view& Rest) {
    const std::optional<EntryHead> head = TakeValue<EntryHead>(Rest);
    if (!head || head->What > static_cast<std::uint16_t>(ListedEntry::Kind::Track)) {
        return std::nullopt;
    }
    const std::optional<std::string_view> name = Take(Rest, head->NameLength);
    return name ? std::optional(EntryFrom(*head, *name)) : std::nullopt;
}

} // namespace

std::string ReplyFrom(const DirectoryContents& Contents) {
    std::string reply;
    reply += AsReply(ReplyHead{.EntryCount = Contents.Entries.size(),
                               .FreeBytes = Contents.FreeBytes.value_or(0),
                               .Error = Contents.Error,
                               .IsFreeKnown = Contents.FreeBytes ? 1U : 0U});
    for (const ListedEntry& entry : Contents.Entries) {
        reply += AsReply(HeadOf(entry));
        reply += entry.Name;
    }
    return reply;
}

std::optional<DirectoryContents> ContentsFrom(std::string_view Reply) {
    const std::optional<ReplyHead> head = TakeValue<ReplyHead>(Reply);
    if (!head) {
        return std::nullopt;
    }
    DirectoryContents contents{.Error = head->Error};
    if (head->IsFreeKnown != 0) {
        contents.FreeBytes = head->FreeBytes;
    }
    while (!Reply.empty()) {
        std::optional<ListedEntry> entry = TakeEntry(Reply);
        if (!entry) {
            return std::nullopt;
        }
        contents.Entries.push_back(std::move(*entry));
    }
    return contents.Entries.size() == head->EntryCount ? std::optional(std::move(contents))
                                                       : std::nullopt;
}
