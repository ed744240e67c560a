// In which order entries are listed.

#pragma once

#include "listed_entry.h"

#include <string>
#include <string_view>
#include <vector>

enum class OrderKey {
    Name,
    Extension,
    Size,
    Date,
};

struct EntryOrder {
    OrderKey Key = OrderKey::Name;
    bool bReversed = false;

    bool operator==(const EntryOrder&) const = default;
};

// Without the difference between small letters and capitals, as the locale knows them; bytes that
// are no character of it stay as they are.
std::string WithoutCase(std::string_view Text);

// Names go as people sort: digits by their value, upper and lower case alike; what is the same by
// that goes by its bytes.
//
// Directories come first in every order, and by name for Extension. What has no extension comes
// first by Extension, the largest by Size, the latest by Date. What is the same by the key goes by
// name, in reversed orders too. Tracks go by their numbers, whatever the key.
void Sort(std::vector<ListedEntry>& Entries, EntryOrder Order);
