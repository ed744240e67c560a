// Lists that are longer than their room.

#pragma once

#include "key_press.h"

#include <cstddef>
#include <optional>

// How many rows a key, or the wheel, moves down in a list; negative for up, and further than any
// list is long for its ends. Nothing for a key that does not move.
std::optional<std::ptrdiff_t> RowsDown(const KeyPress& Key, int VisibleRows);

// The row that is so many below Row, no further than the ends. 0 in an empty list.
std::size_t MovedRow(std::size_t Row, std::ptrdiff_t Down, std::size_t RowCount);

// Which row comes first, so that Cursor is in sight, nothing moves that need not, and no room below
// the last row is wasted. Rows are counted from 0.
std::size_t ScrolledTo(std::size_t Cursor, std::size_t FirstRow, std::size_t VisibleRows,
                       std::size_t RowCount);
