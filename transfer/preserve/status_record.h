// What the sources of a transfer were like before it. A move has removed them when it is over.

#pragma once

#include "file_identity.h"
#include "owned_descriptor.h"

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include <sys/stat.h>
#include <sys/types.h>

// Of an entry that is copied, links followed.
struct RecordedStatus {
    mode_t Mode = 0;
    uid_t Owner = 0;
    gid_t Group = 0;
    timespec Accessed{};
    timespec Modified{};
    std::uint64_t SizeBytes = 0;
};

RecordedStatus RecordedStatusOf(const struct stat& Status);

// What stood at its destination then, links followed.
struct RecordedTarget {
    FileIdentity Identity;
    mode_t Mode = 0;
    timespec Modified{};
    // The entry itself was a link.
    bool bLink = false;
};

struct RecordedEntry {
    enum class Kind : std::uint8_t {
        // Anything but a directory.
        File,
        // Followed by the entries in it, and then by an End.
        Directory,
        End,
    };
    Kind What = Kind::End;
    // In its directory; of an item its full destination.
    std::string_view Name = {};
    RecordedStatus Source = {};
    // Nothing where the name was free.
    std::optional<RecordedTarget> There = {};
};

// Entries in the order in which they are added. The first 16 MiB are kept in memory, which is
// shared with processes that are started after it was made, and the rest in a temporary file
// without a name.
class StatusRecord {
public:
    // Errors: std::system_error without memory or a file.
    StatusRecord();

    // For a process that writes and keeps nothing else open.
    int FileDescriptor() const { return File.Get(); }

    class Writer {
    public:
        // Descriptor leads to the record's file. One for each record, which must outlive it.
        Writer(StatusRecord& RecordToFill, int Descriptor);

        // Errors: std::system_error when the file cannot be written.
        void Add(const RecordedEntry& Entry);
        // Something that may be copied could not be looked at.
        void NoteGap();
        // Comes after the last one; what was not finished cannot be read. Errors: as Add.
        void Finish();

    private:
        void Flush();

        StatusRecord& Record;
        const int File;
        std::uint64_t Entries = 0;
        std::vector<std::byte> Buffer;
    };

    class Reader {
    public:
        // From the start of a finished record, which must outlive it.
        explicit Reader(const StatusRecord& RecordToRead);

        // Nothing after the last one. The name is good until the next call. Errors:
        // std::system_error when the file cannot be read.
        std::optional<RecordedEntry> Next();

    private:
        const std::byte* Take(std::size_t Size);

        const StatusRecord& Record;
        std::size_t Position = 0;
        off_t FilePosition = 0;
        std::vector<std::byte> Buffer;
        std::size_t BufferPosition = 0;
    };

    // Of files and directories.
    std::uint64_t Entries() const;
    // What is not in it need not have come late.
    bool HasGaps() const;

private:
    struct Shared;

    const std::unique_ptr<Shared, void (*)(Shared*)> Memory;
    const OwnedDescriptor File;
};
