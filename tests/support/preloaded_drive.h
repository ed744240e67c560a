// CD drives for a program that runs unchanged: a library that is preloaded into it answers for
// them.

#pragma once

#include "fake_disc.h"
#include "temporary_directory.h"

#include <string>
#include <utility>
#include <vector>

// The drives of the machine, as programs that get Environment see them. Describe is the only way to
// change them, for programs that start afterwards.
class PreloadedDrives {
public:
    // No drive at all.
    PreloadedDrives();

    void Describe(const std::vector<FakeDrive>& Drives);

    // One drive, /dev/sr0, with one disc in it.
    void Describe(const FakeDisc& Disc);

    // What a program needs in its environment to see the drives.
    std::vector<std::pair<std::string, std::string>> Environment() const;

    // Every call that reached a drive so far, in order: "/dev/sr0: open", "/dev/sr0: read 150 16".
    // Other calls are "header", "entry 3" and "close".
    std::vector<std::string> Calls() const;

    // How many of them are Call.
    int CountCalls(const std::string& Call) const;

    // Forgets them.
    void ForgetCalls();

    // Of all drives and programs so far. A program that was killed leaves its own open for ever.
    int OpenDescriptors() const;

private:
    TemporaryDirectory Directory;
};
