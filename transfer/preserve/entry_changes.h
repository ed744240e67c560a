// Gives entries the mode, times and owner of their sources, with no call that is not needed.

#pragma once

#include "preserve_choice.h"
#include "status_record.h"

#include <bitset>
#include <ctime>
#include <map>
#include <optional>

#include <sys/stat.h>
#include <sys/types.h>

// An entry of an open folder, or an open folder itself.
struct EntryPlace {
    int Folder = -1;
    // Null for the folder itself.
    const char* Name = nullptr;
};

struct ChangeFailure {
    // "set the mode of"
    const char* What = nullptr;
    // An errno.
    int Error = 0;
};

bool AreSameTimes(const timespec& First, const timespec& Second);

// What a file system cannot hold is no failure: the rest of the entry is carried over, and what the
// file system refuses is not tried there again.
class EntryChanges {
public:
    explicit EntryChanges(PreserveChoice Choice);

    // Status is what the entry is like now. Follows no link. Errors: the first one; what could be
    // changed is.
    std::optional<ChangeFailure> Carry(const EntryPlace& Place, const struct stat& Status,
                                       const RecordedStatus& Source);
    // The twelve bits only.
    std::optional<ChangeFailure> SetMode(const EntryPlace& Place, mode_t Mode) const;

    // Whether a file system could not hold something of an entry.
    bool AreModesLost() const { return bModesLost; }
    bool AreTimesLost() const { return bTimesLost; }
    bool AreOwnersLost() const { return bOwnersLost; }

private:
    // What is known of a file system.
    struct Device {
        bool bRefusesModes = false;
        bool bRefusesTimes = false;
        bool bRefusesOwners = false;
        // Those that have been looked at after they were set.
        std::bitset<010000> SeenModes;
        std::bitset<6> SeenTimes;
    };

    struct Entry {
        const EntryPlace& Place;
        const RecordedStatus& Source;
        // As it is now, as far as that is known.
        struct stat Status;
        Device& On;
        std::optional<ChangeFailure> Failure = {};
        bool bLookAtMode = false;
        bool bLookAtTimes = false;
    };

    void CarryOwner(Entry& InOut);
    void CarryMode(Entry& InOut);
    void CarryTimes(Entry& InOut);
    void LookAgain(const Entry& Changed);
    bool IsRefusal(int Error, const struct stat& Status) const;
    int ChangeMode(const EntryPlace& Place, mode_t Mode) const;

    const PreserveChoice Preserve;
    const uid_t User;
    const bool bHasModeCall;
    std::map<dev_t, Device> Devices;
    bool bModesLost = false;
    bool bTimesLost = false;
    bool bOwnersLost = false;
};
