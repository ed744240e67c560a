// What of its sources a transfer carries over beside their contents.

#pragma once

struct PreserveChoice {
    // The twelve bits of the mode.
    bool bMode = false;
    // Of the last access and of the last change, to the nanosecond.
    bool bTimes = false;
    // The user and the group.
    bool bOwner = false;

    bool IsAny() const { return bMode || bTimes || bOwner; }
    bool operator==(const PreserveChoice&) const = default;
};
