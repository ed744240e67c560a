// What keys do in the list of a pane.

#pragma once

#include "browse_list.h"
#include "key_press.h"

// Moves the cursor, marks, sorts, shows hidden entries. False for a key that does none of these.
bool HandlePaneKey(const KeyPress& Key, BrowseList& List, int VisibleRows);
