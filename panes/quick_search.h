// Finds an entry by the first letters of its name, while they are typed.

#pragma once

#include "browse_list.h"
#include "key_press.h"
#include "text_field.h"

#include <optional>
#include <string>

class QuickSearch {
public:
    // `/` opens it. Then letters move to the next entry that begins with all of them, where there
    // is one, Up and Down to the one before and after it, Enter and Escape end. Whether the key was
    // for it: any other one ends it too, and is left to the pane.
    bool TakeKey(const KeyPress& Key, BrowseList& List);

    // What has been typed; nothing as long as it is not open.
    std::optional<std::string> Text() const;

private:
    void Type(const KeyPress& Key, BrowseList& List);

    std::optional<TextField> Typed;
};
