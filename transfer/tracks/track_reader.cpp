#include "track_reader.h"

#include "table_of_contents.h"

#include <system_error>
#include <utility>

TrackReader::TrackReader(std::string DeviceToRead) : Device(std::move(DeviceToRead)) {
    try {
        Process.emplace([device = Device.c_str(), table = TableOfContents()]() mutable {
            ReadTableOfContents(device, table);
            return AsReply(table);
        });
    } catch (const std::system_error& error) {
        StartFailure = std::string("cannot start reading the drive: ") + error.what();
    }
}

std::optional<std::variant<TrackList, TrackListFailure>> TrackReader::TakeResult() {
    if (!Process) {
        return TrackListFailure{StartFailure};
    }
    const std::optional<std::string> reply = Process->TakeReply();
    if (!reply) {
        return std::nullopt;
    }
    const std::optional<TableOfContents> table = FromReply<TableOfContents>(*reply);
    return table ? TracksOf(*table, Device) : TrackListFailure{"cannot read the table of contents"};
}
