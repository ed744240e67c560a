#include "drive_description.h"

#include <cstdlib>
#include <fstream>
#include <sstream>

namespace {

void WriteDisc(const FakeDisc& Disc, std::ostream& Out) {
    Out << "disc " << Disc.Id << "\n";
    for (const FakeTrack& track : Disc.Tracks) {
        Out << "track " << track.Number << " " << track.StartFrame
            << (track.bData ? " data\n" : " audio\n");
    }
    Out << "lead-out " << Disc.LeadOutFrame << "\n";
    Out << (Disc.bPresent ? "" : "empty\n") << (Disc.bStrict ? "strict\n" : "");
    for (const FakeFault& fault : Disc.Faults) {
        Out << "fault " << fault.Error << " " << fault.DelayMilliseconds << " " << fault.Request
            << "\n";
    }
}

FakeTrack ReadTrack(std::istream& Words) {
    FakeTrack track;
    std::string kind;
    Words >> track.Number >> track.StartFrame >> kind;
    track.bData = kind == "data";
    return track;
}

FakeFault ReadFault(std::istream& Words) {
    FakeFault fault;
    Words >> fault.Error >> fault.DelayMilliseconds;
    std::getline(Words >> std::ws, fault.Request);
    return fault;
}

// False when Key says nothing about a disc.
bool ReadDiscLine(const std::string& Key, std::istream& Words, FakeDisc& Disc) {
    if (Key == "track") {
        Disc.Tracks.push_back(ReadTrack(Words));
    } else if (Key == "lead-out") {
        Words >> Disc.LeadOutFrame;
    } else if (Key == "empty") {
        Disc.bPresent = false;
    } else if (Key == "strict") {
        Disc.bStrict = true;
    } else if (Key == "fault") {
        Disc.Faults.push_back(ReadFault(Words));
    } else {
        return false;
    }
    return true;
}

void ReadLine(const std::string& Line, DriveDescription& Out) {
    std::istringstream words(Line);
    std::string key;
    words >> key;
    if (key == "log") {
        std::getline(words >> std::ws, Out.LogFile);
    } else if (key == "driver-list") {
        std::getline(words >> std::ws, Out.DriverListFile);
    } else if (key == "device") {
        Out.Drives.emplace_back();
        std::getline(words >> std::ws, Out.Drives.back().Device);
    } else if (key == "change-after") {
        words >> Out.Drives.back().RequestsPerDisc;
    } else if (key == "disc") {
        Out.Drives.back().Discs.emplace_back();
        words >> Out.Drives.back().Discs.back().Id;
    } else if (!ReadDiscLine(key, words, Out.Drives.back().Discs.back())) {
        std::abort();
    }
    if (words.fail()) {
        std::abort();
    }
}

} // namespace

void WriteDriveDescription(const DriveDescription& Description, const std::string& File) {
    std::ofstream out(File);
    out << "log " << Description.LogFile << "\n";
    out << "driver-list " << Description.DriverListFile << "\n";
    for (const FakeDrive& drive : Description.Drives) {
        out << "device " << drive.Device << "\n";
        out << "change-after " << drive.RequestsPerDisc << "\n";
        for (const FakeDisc& disc : drive.Discs) {
            WriteDisc(disc, out);
        }
    }
}

DriveDescription ReadDriveDescription(const std::string& File) {
    DriveDescription description;
    std::ifstream in(File);
    for (std::string line; std::getline(in, line);) {
        ReadLine(line, description);
    }
    return description;
}
