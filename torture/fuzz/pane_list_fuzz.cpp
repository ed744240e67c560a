// Keys in the list of a pane that shows names as no person gives them.

#include <cstdint>
#include <string>
#include <utility>

#include "asked_name.h"
#include "browse_list.h"
#include "checked_screen.h"
#include "fuzz_target.h"
#include "pane_keys.h"
#include "pane_view.h"
#include "panes_layout.h"
#include "quick_search.h"

namespace {

Listing ListingFrom(InputReader& Reader) {
    Listing listing{.Place = "/" + Reader.Name()};
    for (int left = Reader.Number(60); left > 0; --left) {
        ListedEntry entry;
        entry.What = static_cast<ListedEntry::Kind>(Reader.Number(4));
        entry.bLink = Reader.Number(2) == 1;
        entry.SizeBytes = static_cast<std::uint64_t>(Reader.Number(256)) << Reader.Number(64);
        entry.Modified = static_cast<std::int64_t>(Reader.Number(256) - 128) << Reader.Number(56);
        entry.Name = Reader.Name();
        if (!entry.Name.empty()) {
            listing.Entries.push_back(std::move(entry));
        }
    }
    return listing;
}

void ExpectConsistent(const BrowseList& List) {
    const std::size_t rows = List.RowCount();
    Expect(List.Cursor() < rows || (rows == 0 && List.Cursor() == 0), "the cursor is on a row");
    std::uint64_t marked = 0;
    for (std::size_t row = 0; row < rows; ++row) {
        marked += List.IsMarked(row) ? 1 : 0;
        Expect(!List.IsMarked(row) || List.EntryAt(row) != nullptr, "only entries are marked");
    }
    Expect(List.Marked().Entries == marked, "what is marked is counted");
    const std::size_t chosen = List.CurrentEntry() != nullptr ? 1 : 0;
    Expect(List.Chosen().size() == (marked > 0 ? marked : chosen), "what is marked is chosen");
}

} // namespace

void RunInput(std::string_view Input) {
    InputReader reader(Input);
    const TerminalSize window = WindowFrom(reader);
    CheckedScreen screen(window, reader.Number(2) == 1);
    BrowseList list;
    list.Take(ListingFrom(reader));
    Listing next = ListingFrom(reader);
    const std::string pattern = reader.Name();
    PaneView view;
    QuickSearch search;
    const PanesLayout layout = *LayOutPanes(window);
    for (const KeyPress& key : KeysIn(reader.Rest())) {
        const PaneState state{.bActive = true, .Search = search.Text()};
        view.Draw(screen, layout.Right, list, state);
        if (key.Code == KeyCode::Mouse) {
            list.MoveCursorTo(view.RowAt(key.Mouse.Column, key.Mouse.Row).value_or(0));
        } else if (key.Code == KeyCode::Control) {
            list.Take(next);
        } else if (key.Code == KeyCode::Alt) {
            list.MarkMatching(pattern, true);
        } else if (!search.TakeKey(key, list)) {
            HandlePaneKey(key, list, view.VisibleRows());
        }
        ExpectConsistent(list);
    }
}
