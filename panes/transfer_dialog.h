// What is asked before a copy or a move: where to, and how.

#pragma once

#include "dialog.h"
#include "text_field.h"
#include "transfer_choices.h"
#include "transfer_request.h"
#include "wish_buttons.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>

struct TransferDialogSetup {
    // What is shown at first. Its sources are not touched.
    TransferRequest Request;
    // "2 entries", or a name; not cleaned for a screen.
    std::string What;
    // Where a destination begins that is written without a slash at its start.
    std::filesystem::path Base;
    // Only root may.
    bool bMayPreserveOwner = false;
};

struct TransferWish {
    TransferRequest Request;
    bool bInBackground = false;
};

// All choices are in sight in the smallest window too: a group goes on in the next line where it is
// too wide, and blank lines go first. Below them stands what the choice that has the keys does.
//
// Tab and the arrows up and down lead from one group to the next, those to the left and right and
// single letters choose within it. Enter begins, from everywhere but the other buttons.
class TransferDialog : public Dialog {
public:
    explicit TransferDialog(TransferDialogSetup WhatIsAsked);

    void Draw(Screen& On, TimePoint Now) override;
    void TakeKey(const KeyPress& Key, TimePoint Now) override;
    bool IsClosed() const override { return bClosed; }

    // What was asked for; nothing before that, and when it was canceled.
    std::optional<TransferWish> TakeWish() { return std::exchange(Asked, std::nullopt); }

private:
    enum class Button {
        Begin,
        Background,
        Cancel,
    };
    // The field of the destination comes first, then the groups, then the buttons.
    static constexpr std::size_t kField = 0;
    static constexpr std::size_t kFirstGroup = 1;
    static constexpr std::size_t kButtons = kFirstGroup + TransferChoices::kGroups;

    bool HasGroupFocus() const { return Focus != kField && Focus != kButtons; }
    bool MovesFocus(const KeyPress& Key);
    void FocusOn(std::size_t Control);
    void TakeClick(const KeyPress& Key);
    void Press(Button What);
    TransferRequest Filled() const;
    std::string HintText() const;
    void DrawDestination(Screen& On, const Area& Where);
    int DrawGroups(Screen& On, Area Where);

    const TransferDialogSetup Setup;
    const std::string FirstDestination;
    TextField Destination;
    TransferChoices Choices;
    WishButtons<Button> Buttons;
    std::size_t Focus = kField;
    Area FieldArea;
    // Somebody wanted to begin without a destination.
    bool bDestinationMissing = false;
    std::optional<TransferWish> Asked;
    bool bClosed = false;
};
