#include "status_record.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <system_error>
#include <type_traits>
#include <unistd.h>
#include <utility>

namespace {

constexpr std::size_t kMemoryBytes = std::size_t{16} * 1024 * 1024;
constexpr std::size_t kBufferBytes = std::size_t{256} * 1024;

// What is stored of an entry before its name.
struct StoredEntry {
    RecordedEntry::Kind What;
    bool bThere;
    std::uint16_t NameBytes;
};
static_assert(std::is_trivially_copyable_v<RecordedStatus> &&
              std::is_trivially_copyable_v<RecordedTarget>);

[[noreturn]] void ThrowError(int Error, const char* What) {
    throw std::system_error(Error, std::generic_category(), What);
}

// Where there is no room for files, it is kept in memory.
OwnedDescriptor MakeTemporaryFile() {
    const char* const chosen = std::getenv("TMPDIR");
    for (const char* directory : {chosen, "/var/tmp", "/tmp"}) {
        const int file = directory == nullptr
                             ? -1
                             : ::open(directory, O_TMPFILE | O_RDWR | O_EXCL | O_CLOEXEC, 0600);
        if (file >= 0) {
            return OwnedDescriptor(file);
        }
    }
    OwnedDescriptor memory(::memfd_create("tarvane-status-record", MFD_CLOEXEC));
    if (memory.Get() < 0) {
        ThrowError(errno, "no temporary file");
    }
    return memory;
}

template <typename Value>
void Append(std::vector<std::byte>& Out, const Value& Appended) {
    const auto* const bytes = reinterpret_cast<const std::byte*>(&Appended);
    Out.insert(Out.end(), bytes, bytes + sizeof(Value));
}

template <typename Value>
Value ValueAt(const std::byte* Bytes) {
    Value value;
    std::memcpy(&value, Bytes, sizeof(Value));
    return value;
}

} // namespace

struct StatusRecord::Shared {
    std::uint64_t Entries = 0;
    std::size_t MemoryBytes = 0;
    std::uint64_t FileBytes = 0;
    bool bHasGaps = false;
    std::array<std::byte, kMemoryBytes> Bytes;
};

RecordedStatus RecordedStatusOf(const struct stat& Status) {
    return {.Mode = Status.st_mode,
            .Owner = Status.st_uid,
            .Group = Status.st_gid,
            .Accessed = Status.st_atim,
            .Modified = Status.st_mtim,
            .SizeBytes = static_cast<std::uint64_t>(Status.st_size)};
}

StatusRecord::StatusRecord()
    : Memory(
          [] {
              void* const memory = ::mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE,
                                          MAP_SHARED | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
              if (memory == MAP_FAILED) {
                  ThrowError(errno, "no memory to share");
              }
              // Its pages are zeros already, and touching them would take them up.
              return static_cast<Shared*>(memory);
          }(),
          [](Shared* Mapped) { ::munmap(Mapped, sizeof(Shared)); }),
      File(MakeTemporaryFile()) {}

std::uint64_t StatusRecord::Entries() const {
    return Memory->Entries;
}

bool StatusRecord::HasGaps() const {
    return Memory->bHasGaps;
}

StatusRecord::Writer::Writer(StatusRecord& RecordToFill, int Descriptor)
    : Record(RecordToFill), File(Descriptor) {
    Buffer.reserve(kBufferBytes);
}

// An entry is in memory or in the file as a whole.
void StatusRecord::Writer::Add(const RecordedEntry& Entry) {
    Shared& memory = *Record.Memory;
    const std::size_t start = Buffer.size();
    Append(Buffer, StoredEntry{Entry.What, Entry.There.has_value(),
                               static_cast<std::uint16_t>(Entry.Name.size())});
    if (Entry.What != RecordedEntry::Kind::End) {
        ++Entries;
        Append(Buffer, Entry.Source);
    }
    if (Entry.There) {
        Append(Buffer, *Entry.There);
    }
    const auto* const name = reinterpret_cast<const std::byte*>(Entry.Name.data());
    Buffer.insert(Buffer.end(), name, name + Entry.Name.size());
    if (start == 0 && memory.FileBytes == 0 && memory.MemoryBytes + Buffer.size() <= kMemoryBytes) {
        std::memcpy(memory.Bytes.data() + memory.MemoryBytes, Buffer.data(), Buffer.size());
        memory.MemoryBytes += Buffer.size();
        Buffer.clear();
    } else if (Buffer.size() >= kBufferBytes) {
        Flush();
    }
}

void StatusRecord::Writer::Flush() {
    std::size_t done = 0;
    while (done < Buffer.size()) {
        const ssize_t written = ::write(File, Buffer.data() + done, Buffer.size() - done);
        if (written < 0 && errno != EINTR) {
            ThrowError(errno, "cannot write a temporary file");
        }
        done += static_cast<std::size_t>(std::max<ssize_t>(written, 0));
    }
    Record.Memory->FileBytes += done;
    Buffer.clear();
}

void StatusRecord::Writer::Finish() {
    Flush();
    Record.Memory->Entries = Entries;
}

void StatusRecord::Writer::NoteGap() {
    Record.Memory->bHasGaps = true;
}

StatusRecord::Reader::Reader(const StatusRecord& RecordToRead) : Record(RecordToRead) {}

// The next bytes, which are in one piece until the next call; nothing at the end.
const std::byte* StatusRecord::Reader::Take(std::size_t Size) {
    const Shared& memory = *Record.Memory;
    if (Position < memory.MemoryBytes) {
        return memory.Bytes.data() + std::exchange(Position, Position + Size);
    }
    const auto fileBytes = static_cast<off_t>(memory.FileBytes);
    while (Buffer.size() - BufferPosition < Size && FilePosition < fileBytes) {
        Buffer.erase(Buffer.begin(), Buffer.begin() + static_cast<std::ptrdiff_t>(BufferPosition));
        BufferPosition = 0;
        const std::size_t kept = Buffer.size();
        Buffer.resize(kept + kBufferBytes);
        const ssize_t read =
            ::pread(Record.File.Get(), Buffer.data() + kept, kBufferBytes, FilePosition);
        Buffer.resize(kept + static_cast<std::size_t>(std::max<ssize_t>(read, 0)));
        if (read == 0 || (read < 0 && errno != EINTR)) {
            ThrowError(read == 0 ? EIO : errno, "cannot read a temporary file");
        }
        FilePosition += std::max<ssize_t>(read, 0);
    }
    if (Buffer.size() - BufferPosition < Size) {
        return nullptr;
    }
    return Buffer.data() + std::exchange(BufferPosition, BufferPosition + Size);
}

std::optional<RecordedEntry> StatusRecord::Reader::Next() {
    const std::byte* const start = Take(sizeof(StoredEntry));
    if (start == nullptr) {
        return std::nullopt;
    }
    const auto stored = ValueAt<StoredEntry>(start);
    RecordedEntry entry{.What = stored.What};
    if (stored.What != RecordedEntry::Kind::End) {
        entry.Source = ValueAt<RecordedStatus>(Take(sizeof(RecordedStatus)));
    }
    if (stored.bThere) {
        entry.There = ValueAt<RecordedTarget>(Take(sizeof(RecordedTarget)));
    }
    if (stored.NameBytes > 0) {
        const std::byte* const name = Take(stored.NameBytes);
        entry.Name = {reinterpret_cast<const char*>(name), stored.NameBytes};
    }
    return entry;
}
