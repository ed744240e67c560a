#include "preloaded_drive.h"

#include "drive_description.h"
#include "sanitizer_options.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

PreloadedDrives::PreloadedDrives() {
    // The dynamic linker cannot take a path with a blank in it, as the build's may have.
    std::filesystem::create_symlink(DRIVE_PRELOAD_LIBRARY, Directory / "drives.so");
    Describe(std::vector<FakeDrive>{});
}

void PreloadedDrives::Describe(const std::vector<FakeDrive>& Drives) {
    std::ofstream list(Directory / "list");
    list << "CD-ROM information, Id: cdrom.c 3.20 2003/12/17\n\ndrive name:";
    // The driver names the drive that it found last first.
    for (auto drive = Drives.rbegin(); drive != Drives.rend(); ++drive) {
        list << "\t\t" << std::filesystem::path(drive->Device).filename().string();
    }
    list << "\ndrive speed:\t\t24\n";
    WriteDriveDescription({Directory / "log", Directory / "list", Drives},
                          Directory / "description");
}

void PreloadedDrives::Describe(const FakeDisc& Disc) {
    Describe(std::vector<FakeDrive>{{"/dev/sr0", {Disc}, 0, 0}});
}

std::vector<std::pair<std::string, std::string>> PreloadedDrives::Environment() const {
    EnvironmentVariables variables{{"LD_PRELOAD", Directory / "drives.so"},
                                   {"TEST_DRIVES", (Directory / "description").string()}};
    LetLibrariesPrecedeIt(variables);
    return variables;
}

std::vector<std::string> PreloadedDrives::Calls() const {
    std::vector<std::string> calls;
    std::ifstream log(Directory / "log");
    for (std::string line; std::getline(log, line);) {
        calls.push_back(line);
    }
    return calls;
}

int PreloadedDrives::CountCalls(const std::string& Call) const {
    const std::vector<std::string> calls = Calls();
    return static_cast<int>(std::count(calls.begin(), calls.end(), Call));
}

void PreloadedDrives::ForgetCalls() {
    std::filesystem::remove(Directory / "log");
}

int PreloadedDrives::OpenDescriptors() const {
    int open = 0;
    for (const std::string& call : Calls()) {
        if (call.ends_with(": open")) {
            ++open;
        } else if (call.ends_with(": close")) {
            --open;
        }
    }
    return open;
}
