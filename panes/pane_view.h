// One pane on the screen: the place, what is in it, and what is marked.

#pragma once

#include "browse_list.h"
#include "pane_footer.h"
#include "surface.h"

#include <cstddef>
#include <optional>

// All it knows by itself is how far it is scrolled.
class PaneView {
public:
    void Draw(Screen& On, const Area& Where, const BrowseList& List, const PaneState& State);

    // How many rows it had room for when it was last drawn.
    int VisibleRows() const { return Rows.Rows; }
    // Which row of the list stood there then.
    std::optional<std::size_t> RowAt(int Column, int ScreenRow) const;

private:
    std::size_t FirstRow = 0;
    // Of the list as it was last drawn.
    std::size_t RowCount = 0;
    Area Rows;
};
