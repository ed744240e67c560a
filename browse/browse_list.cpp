#include "browse_list.h"

#include <algorithm>
#include <utility>

#include <fnmatch.h>

namespace {

bool Matches(const std::string& Pattern, const std::string& Name) {
    constexpr int kNoFlags = 0;
    return fnmatch(Pattern.c_str(), Name.c_str(), kNoFlags) == 0;
}

} // namespace

void BrowseList::Take(Listing NewListing, const std::string& CursorOn) {
    const bool bSamePlace = NewListing.Place == Current.Place;
    if (!NewListing.Failure.empty()) {
        if (bSamePlace) {
            Current.FreeBytes = NewListing.FreeBytes;
        }
        return;
    }
    if (!bSamePlace) {
        CursorRow = 0;
        Marks.clear();
    }
    const std::string nameUnderCursor = bSamePlace ? NameUnderCursor() : std::string();
    Current = std::move(NewListing);
    Sort(Current.Entries, CurrentOrder);
    Arrange(nameUnderCursor);
    MoveCursorTo(CursorOn);
}

bool BrowseList::HasParentRow() const {
    return !Current.Place.empty() && Current.Place != "/";
}

const ListedEntry* BrowseList::EntryAt(std::size_t Row) const {
    const std::size_t first = FirstEntryRow();
    return Row < first || Row >= RowCount() ? nullptr : &Current.Entries[Rows[Row - first]];
}

bool BrowseList::IsMarked(std::size_t Row) const {
    const ListedEntry* const entry = EntryAt(Row);
    return entry != nullptr && Marks.contains(entry->Name);
}

void BrowseList::MoveCursorTo(std::size_t Row) {
    CursorRow = RowCount() == 0 ? 0 : std::min(Row, RowCount() - 1);
}

void BrowseList::MoveCursorBy(std::ptrdiff_t RowsDown) {
    const auto rowsDown = static_cast<std::size_t>(RowsDown);
    if (RowsDown >= 0) {
        MoveCursorTo(CursorRow + rowsDown);
    } else {
        MoveCursorTo(CursorRow - std::min(CursorRow, std::size_t{0} - rowsDown));
    }
}

bool BrowseList::MoveCursorTo(std::string_view Name) {
    const auto found = std::find_if(Rows.begin(), Rows.end(), [this, Name](std::size_t Index) {
        return Current.Entries[Index].Name == Name;
    });
    if (found == Rows.end()) {
        return false;
    }
    CursorRow = FirstEntryRow() + static_cast<std::size_t>(found - Rows.begin());
    return true;
}

bool BrowseList::FindFrom(std::size_t Row, std::string_view Beginning) {
    const std::string wanted = WithoutCase(Beginning);
    const std::size_t first = Row < RowCount() ? Row : 0;
    for (std::size_t i = 0; i < RowCount(); ++i) {
        const std::size_t row = (first + i) % RowCount();
        const ListedEntry* const entry = EntryAt(row);
        if (entry != nullptr && WithoutCase(entry->Name).starts_with(wanted)) {
            CursorRow = row;
            return true;
        }
    }
    return false;
}

void BrowseList::SetOrder(EntryOrder NewOrder) {
    const std::string nameUnderCursor = NameUnderCursor();
    CurrentOrder = NewOrder;
    Sort(Current.Entries, CurrentOrder);
    Arrange(nameUnderCursor);
}

void BrowseList::ShowHidden(bool bShow) {
    const std::string nameUnderCursor = NameUnderCursor();
    bHidden = bShow;
    Arrange(nameUnderCursor);
}

void BrowseList::ToggleMark(std::size_t Row) {
    if (const ListedEntry* const entry = EntryAt(Row)) {
        SetMark(*entry, !Marks.contains(entry->Name));
    }
}

bool BrowseList::HasMatch(const std::string& Pattern) const {
    return std::ranges::any_of(
        Rows, [&](std::size_t Index) { return Matches(Pattern, Current.Entries[Index].Name); });
}

void BrowseList::MarkMatching(const std::string& Pattern, bool bMark) {
    for (const std::size_t index : Rows) {
        const ListedEntry& entry = Current.Entries[index];
        if (Matches(Pattern, entry.Name)) {
            SetMark(entry, bMark);
        }
    }
}

void BrowseList::InvertMarks() {
    for (const std::size_t index : Rows) {
        const ListedEntry& entry = Current.Entries[index];
        SetMark(entry, !Marks.contains(entry.Name));
    }
}

void BrowseList::Unmark(const std::vector<std::filesystem::path>& Paths) {
    constexpr bool bMark = false;
    std::unordered_set<std::string> wanted;
    for (const std::filesystem::path& path : Paths) {
        wanted.insert(path.native());
    }
    for (const std::size_t index : Rows) {
        const ListedEntry& entry = Current.Entries[index];
        if (Marks.contains(entry.Name) && wanted.contains(PathOf(entry).native())) {
            SetMark(entry, bMark);
        }
    }
}

std::vector<std::filesystem::path> BrowseList::Chosen() const {
    std::vector<std::filesystem::path> paths;
    if (Marks.empty()) {
        if (const ListedEntry* const entry = CurrentEntry()) {
            paths.push_back(PathOf(*entry));
        }
        return paths;
    }
    for (const std::size_t index : Rows) {
        const ListedEntry& entry = Current.Entries[index];
        if (Marks.contains(entry.Name)) {
            paths.push_back(PathOf(entry));
        }
    }
    return paths;
}

std::filesystem::path BrowseList::PathOf(const ListedEntry& Entry) const {
    return Current.Place / Entry.Name;
}

std::string BrowseList::NameUnderCursor() const {
    const ListedEntry* const entry = CurrentEntry();
    return entry == nullptr ? std::string() : entry->Name;
}

void BrowseList::SetMark(const ListedEntry& Entry, bool bMark) {
    const bool bChanged = bMark ? Marks.insert(Entry.Name).second : Marks.erase(Entry.Name) > 0;
    if (!bChanged) {
        return;
    }
    // What is taken away wraps round to the right sum.
    const std::uint64_t sign = bMark ? 1 : std::uint64_t{0} - 1;
    Totals.Entries += sign;
    if (Entry.IsDirectory()) {
        Totals.Directories += sign;
        Totals.RealDirectories += Entry.IsRealDirectory() ? sign : 0;
    } else {
        Totals.Bytes += sign * Entry.SizeBytes;
    }
}

void BrowseList::Arrange(const std::string& CursorOn) {
    constexpr bool bMark = true;
    Rows.clear();
    const std::unordered_set<std::string> marksBefore = std::exchange(Marks, {});
    Totals = {};
    // Some file systems list a name twice when their directory changes meanwhile.
    std::unordered_set<std::string_view> seen;
    for (std::size_t i = 0; i < Current.Entries.size(); ++i) {
        const ListedEntry& entry = Current.Entries[i];
        if ((entry.IsHidden() && !bHidden) || !seen.insert(entry.Name).second) {
            continue;
        }
        Rows.push_back(i);
        if (marksBefore.contains(entry.Name)) {
            SetMark(entry, bMark);
        }
    }
    if (!MoveCursorTo(CursorOn)) {
        MoveCursorTo(CursorRow);
    }
}
