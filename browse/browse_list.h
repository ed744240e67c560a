// What somebody has in front of them in a pane: the entries in their order, a cursor, marks.

#pragma once

#include "entry_order.h"
#include "listed_entry.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

// Rows are numbered from 0. Row 0 leads to the place above, where there is one: it has no entry and
// cannot be marked. Where no row is meant, as in an empty list, the cursor is at 0.
//
// Threads: one.
class BrowseList {
public:
    // What a new place, or the same one read again, holds. In the same place the cursor stays on
    // its entry, or on the row of an entry that has gone, and marks stay on the entries that are
    // still there; elsewhere the cursor is on the first row and nothing is marked. CursorOn, where
    // there is an entry of that name, comes before all this. A listing with a failure changes
    // nothing but the free space of the same place.
    void Take(Listing NewListing, const std::string& CursorOn = {});

    const std::filesystem::path& Place() const { return Current.Place; }
    std::optional<std::uint64_t> FreeBytes() const { return Current.FreeBytes; }

    std::size_t RowCount() const { return FirstEntryRow() + Rows.size(); }
    bool HasParentRow() const;
    // Nothing for the row that leads up, and where there is no such row.
    const ListedEntry* EntryAt(std::size_t Row) const;
    bool IsMarked(std::size_t Row) const;

    std::size_t Cursor() const { return CursorRow; }
    const ListedEntry* CurrentEntry() const { return EntryAt(CursorRow); }
    void MoveCursorTo(std::size_t Row);
    void MoveCursorBy(std::ptrdiff_t RowsDown);
    // False when there is none of that name.
    bool MoveCursorTo(std::string_view Name);
    // From Row on, and round the end, to the first entry whose name begins with Beginning, case
    // aside. False, with nothing moved, when there is none.
    bool FindFrom(std::size_t Row, std::string_view Beginning);

    EntryOrder Order() const { return CurrentOrder; }
    void SetOrder(EntryOrder NewOrder);
    bool ShowsHidden() const { return bHidden; }
    // Marks on entries that are hidden then go.
    void ShowHidden(bool bShow);

    void ToggleMark(std::size_t Row);
    // Whether MarkMatching finds any.
    bool HasMatch(const std::string& Pattern) const;
    // Those whose whole name a pattern of the shell matches; directories and, where they are shown,
    // hidden entries too. Case matters.
    void MarkMatching(const std::string& Pattern, bool bMark);
    // Of directories too.
    void InvertMarks();
    // Those of Paths that are in the list.
    void Unmark(const std::vector<std::filesystem::path>& Paths);

    struct MarkTotals {
        std::uint64_t Entries = 0;
        // Links to directories too.
        std::uint64_t Directories = 0;
        // Without such links.
        std::uint64_t RealDirectories = 0;
        // Of what is no directory.
        std::uint64_t Bytes = 0;
    };
    const MarkTotals& Marked() const { return Totals; }

    // Full paths of the marked entries in their order, or, where nothing is marked, of the one
    // under the cursor; empty on the row that leads up.
    std::vector<std::filesystem::path> Chosen() const;
    // Of a track, as TrackPath makes it.
    std::filesystem::path PathOf(const ListedEntry& Entry) const;

private:
    std::size_t FirstEntryRow() const { return HasParentRow() ? 1 : 0; }
    // Empty on the row that leads up.
    std::string NameUnderCursor() const;
    void SetMark(const ListedEntry& Entry, bool bMark);
    // Makes the rows anew, with the marks and the cursor where they belong then.
    void Arrange(const std::string& CursorOn);

    // All entries, hidden ones too.
    Listing Current;
    // Those that are shown, as indexes into them.
    std::vector<std::size_t> Rows;
    std::unordered_set<std::string> Marks;
    MarkTotals Totals;
    EntryOrder CurrentOrder;
    bool bHidden = false;
    std::size_t CursorRow = 0;
};
