// The choices of a request as groups of a dialog, and back.

#pragma once

#include "choice_group.h"
#include "transfer_request.h"

#include <array>
#include <cstddef>

class TransferChoices {
public:
    static constexpr std::size_t kGroups = 4;

    // bMayPreserveOwner: only root may.
    TransferChoices(const TransferRequest& Request, bool bMayPreserveOwner);

    ChoiceGroup& Group(std::size_t Index) { return Groups.at(Index); }
    const ChoiceGroup& Group(std::size_t Index) const { return Groups.at(Index); }

    // Gives the key to that group. Whether it was for it.
    bool Handle(std::size_t Index, const KeyPress& Key);

    // What is not shown stays as it was.
    void FillIn(TransferRequest& InOutRequest) const;

private:
    void FollowFiles();

    std::array<ChoiceGroup, kGroups> Groups;
    const bool bOffersOwner;
    // Otherwise directories follow what is chosen for files.
    bool bDirectoriesChosen;
    // Somebody has turned them on or off; until then one of the two alone may be on.
    bool bModesAndTimesTouched = false;
};
