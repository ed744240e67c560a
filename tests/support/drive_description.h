// Drives and discs as a text file, which reaches a preloaded program:
//
//   log /tmp/x/log                  where the calls that reach a drive are noted
//   driver-list /tmp/x/list         stands for the driver's list of the machine's drives
//   device /dev/sr0                 begins a drive
//   change-after 12                 the next disc is in it after so many requests
//   disc 7                          begins a disc; the number sets its content
//   track 1 150 audio               number, first frame, and "audio" or "data"
//   lead-out 40500
//   empty                           no disc at all
//   strict                          refuses to read past the lead-out
//   fault 5 0 read 1000             an error number, milliseconds of delay, and the request
//
// Requests are named as in fake_disc.h.

#pragma once

#include "fake_disc.h"

#include <string>
#include <vector>

struct DriveDescription {
    std::string LogFile;
    std::string DriverListFile;
    std::vector<FakeDrive> Drives;
};

void WriteDriveDescription(const DriveDescription& Description, const std::string& File);

// Aborts on a text that WriteDriveDescription has not written: there is nobody to tell.
DriveDescription ReadDriveDescription(const std::string& File);
