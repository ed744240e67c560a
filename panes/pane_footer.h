// What a pane tells below its list.

#pragma once

#include "browse_list.h"
#include "screen.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

// What a pane shows beside its list.
struct PaneState {
    // It has the keys.
    bool bActive = false;
    // What is being read, where that takes more than a moment.
    std::optional<std::filesystem::path> Reading = {};
    // What went wrong last, as a sentence like that of Listing; empty when nothing did.
    std::string Message = {};
    // What somebody types to find an entry.
    std::optional<std::string> Search = {};
};

struct FooterLine {
    std::string CleanText;
    CellRole Role = CellRole::Plain;
};

// One line at least, none wider than Columns: what is searched for, read, or went wrong, else the
// entry under the cursor in full.
std::vector<FooterLine> PaneFooter(const BrowseList& List, const PaneState& State, int Columns);

// "Marked 2: 47.1 KB and 1 directory", shorter where that is wider than Columns; empty for none.
std::string MarkedText(const BrowseList::MarkTotals& Marked, int Columns);
