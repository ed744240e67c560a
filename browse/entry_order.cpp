#include "entry_order.h"

#include <algorithm>
#include <climits>
#include <cwchar>
#include <cwctype>
#include <utility>

namespace {

bool IsAscii(char Byte) {
    return static_cast<unsigned char>(Byte) < 0x80;
}

bool IsDigit(char Byte) {
    return Byte >= '0' && Byte <= '9';
}

char SmallAscii(char Byte) {
    return Byte >= 'A' && Byte <= 'Z' ? static_cast<char>(Byte - 'A' + 'a') : Byte;
}

// Takes the first character of Rest, or its first byte where that begins none.
void AppendSmallCharacter(std::string& OutSmall, std::string_view& InOutRest) {
    wchar_t character = 0;
    std::mbstate_t state{};
    std::size_t length = std::mbrtowc(&character, InOutRest.data(), InOutRest.size(), &state);
    if (length > InOutRest.size()) {
        length = 1;
        OutSmall += InOutRest.front();
    } else {
        const std::wint_t small = std::towlower(static_cast<std::wint_t>(character));
        char bytes[MB_LEN_MAX];
        OutSmall.append(bytes, std::wcrtomb(bytes, static_cast<wchar_t>(small), &state));
    }
    InOutRest.remove_prefix(length);
}

// A number as its count of digits and the digits, so that its bytes sort as its value does. It
// begins with a digit, which is where people expect numbers among other characters.
void AppendNumber(std::string& OutKey, std::string_view Digits) {
    Digits.remove_prefix(std::min(Digits.find_first_not_of('0'), Digits.size()));
    OutKey += '0';
    std::size_t count = Digits.size();
    for (; count >= UCHAR_MAX; count -= UCHAR_MAX) {
        OutKey += static_cast<char>(UCHAR_MAX);
    }
    OutKey += static_cast<char>(count);
    OutKey += Digits;
}

// Bytes that sort as people do. Comparing keys is quick, and as they are no more than bytes, no
// three of them can contradict each other.
std::string NaturalKey(std::string_view Text) {
    const std::string small = WithoutCase(Text);
    std::string key;
    key.reserve(small.size() + 8);
    for (auto at = small.begin(); at != small.end();) {
        if (!IsDigit(*at)) {
            key += *at++;
            continue;
        }
        const auto end = std::find_if_not(at, small.end(), IsDigit);
        AppendNumber(key, std::string_view(at, end));
        at = end;
    }
    return key;
}

// What follows the last dot; nothing for a name whose only dot is its first byte.
std::string_view ExtensionOf(std::string_view Name) {
    const std::size_t dot = Name.rfind('.');
    return dot == std::string_view::npos || dot == 0 ? std::string_view() : Name.substr(dot + 1);
}

template <typename Value>
int Compare(const Value& First, const Value& Second) {
    return First < Second ? -1 : Second < First ? 1 : 0;
}

// An entry with what it is compared by.
struct SortItem {
    std::string NameKey;
    std::string ExtensionKey;
    ListedEntry* Entry;
};

int CompareNames(const SortItem& First, const SortItem& Second) {
    const int byKey = First.NameKey.compare(Second.NameKey);
    return byKey != 0 ? byKey : First.Entry->Name.compare(Second.Entry->Name);
}

// The same for all tracks, so that these go by their names and thus by their numbers.
std::uint64_t SizeToSortBy(const ListedEntry& Entry) {
    return Entry.What == ListedEntry::Kind::Track ? 0 : Entry.SizeBytes;
}

int CompareByKey(const SortItem& First, const SortItem& Second, OrderKey Key) {
    const ListedEntry& first = *First.Entry;
    const ListedEntry& second = *Second.Entry;
    switch (Key) {
    case OrderKey::Name:
        return CompareNames(First, Second);
    case OrderKey::Extension:
        return First.ExtensionKey.compare(Second.ExtensionKey);
    case OrderKey::Size:
        return Compare(SizeToSortBy(second), SizeToSortBy(first));
    case OrderKey::Date:
        return Compare(second.Modified, first.Modified);
    }
    return 0;
}

bool IsBefore(const SortItem& First, const SortItem& Second, EntryOrder Order) {
    if (First.Entry->IsDirectory() != Second.Entry->IsDirectory()) {
        return First.Entry->IsDirectory();
    }
    const int byKey = CompareByKey(First, Second, Order.Key);
    if (byKey != 0) {
        return Order.bReversed ? byKey > 0 : byKey < 0;
    }
    return CompareNames(First, Second) < 0;
}

SortItem ItemFor(ListedEntry& Entry, OrderKey Key) {
    const bool bByExtension = Key == OrderKey::Extension && !Entry.IsDirectory();
    return {NaturalKey(Entry.Name),
            bByExtension ? NaturalKey(ExtensionOf(Entry.Name)) : std::string(), &Entry};
}

} // namespace

std::string WithoutCase(std::string_view Text) {
    std::string small;
    small.reserve(Text.size());
    while (!Text.empty()) {
        if (IsAscii(Text.front())) {
            small += SmallAscii(Text.front());
            Text.remove_prefix(1);
        } else {
            AppendSmallCharacter(small, Text);
        }
    }
    return small;
}

void Sort(std::vector<ListedEntry>& Entries, EntryOrder Order) {
    std::vector<SortItem> items;
    items.reserve(Entries.size());
    for (ListedEntry& entry : Entries) {
        items.push_back(ItemFor(entry, Order.Key));
    }
    std::sort(items.begin(), items.end(), [Order](const SortItem& First, const SortItem& Second) {
        return IsBefore(First, Second, Order);
    });
    std::vector<ListedEntry> sorted;
    sorted.reserve(Entries.size());
    for (const SortItem& item : items) {
        sorted.push_back(std::move(*item.Entry));
    }
    Entries = std::move(sorted);
}
