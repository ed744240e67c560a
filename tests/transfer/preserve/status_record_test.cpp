// The record of what the sources were like: what is read is what was written, in memory and in the
// file, across processes.

#include "file_tree.h"
#include "status_record.h"
#include "temporary_directory.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <system_error>

namespace {

using Kind = RecordedEntry::Kind;

RecordedStatus StatusNumber(std::uint64_t Number) {
    const auto part = static_cast<unsigned>(Number);
    return {.Mode = S_IFREG | (part & 07777),
            .Owner = part,
            .Group = part + 1,
            .Accessed = {static_cast<time_t>(Number) - 100, 1},
            .Modified = {-static_cast<time_t>(Number), 999999999},
            .SizeBytes = Number << 20};
}

bool AreEqual(const timespec& First, const timespec& Second) {
    return First.tv_sec == Second.tv_sec && First.tv_nsec == Second.tv_nsec;
}

void ExpectStatus(const RecordedStatus& Status, const RecordedStatus& Wanted) {
    EXPECT_EQ(Status.Mode, Wanted.Mode);
    EXPECT_EQ(Status.Owner, Wanted.Owner);
    EXPECT_EQ(Status.Group, Wanted.Group);
    EXPECT_TRUE(AreEqual(Status.Accessed, Wanted.Accessed));
    EXPECT_TRUE(AreEqual(Status.Modified, Wanted.Modified));
    EXPECT_EQ(Status.SizeBytes, Wanted.SizeBytes);
}

void WriteFiles(StatusRecord& Record, int Descriptor, std::uint64_t Count) {
    StatusRecord::Writer writer(Record, Descriptor);
    for (std::uint64_t number = 0; number < Count; ++number) {
        const std::string name = "file-" + std::to_string(number);
        writer.Add({.What = Kind::File, .Name = name, .Source = StatusNumber(number)});
    }
    writer.Finish();
}

void ExpectFiles(const StatusRecord& Record, std::uint64_t Count) {
    EXPECT_EQ(Record.Entries(), Count);
    StatusRecord::Reader reader(Record);
    for (std::uint64_t number = 0; number < Count; ++number) {
        const std::optional<RecordedEntry> entry = reader.Next();
        ASSERT_TRUE(entry);
        ASSERT_EQ(entry->Name, "file-" + std::to_string(number));
        ASSERT_EQ(entry->Source.SizeBytes, StatusNumber(number).SizeBytes);
    }
    EXPECT_FALSE(reader.Next());
}

std::uint64_t FileBytes(const StatusRecord& Record) {
    struct stat status {};
    EXPECT_EQ(::fstat(Record.FileDescriptor(), &status), 0);
    return static_cast<std::uint64_t>(status.st_size);
}

TEST(StatusRecord, KeepsEntriesInTheirOrder) {
    StatusRecord record;
    StatusRecord::Writer writer(record, record.FileDescriptor());
    const RecordedTarget there{
        .Identity = {7, 8}, .Mode = S_IFDIR | 0755, .Modified = {-5, 6}, .bLink = true};
    const std::string longest(4095, 'x');
    writer.Add(
        {.What = Kind::Directory, .Name = longest, .Source = StatusNumber(3), .There = there});
    writer.Add({.What = Kind::File, .Name = "a", .Source = StatusNumber(4)});
    writer.Add({.What = Kind::End});
    writer.Finish();

    EXPECT_EQ(record.Entries(), 2U);
    StatusRecord::Reader reader(record);
    std::optional<RecordedEntry> entry = reader.Next();
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->What, Kind::Directory);
    EXPECT_EQ(entry->Name, longest);
    ExpectStatus(entry->Source, StatusNumber(3));
    ASSERT_TRUE(entry->There);
    EXPECT_EQ(entry->There->Identity, there.Identity);
    EXPECT_EQ(entry->There->Mode, there.Mode);
    EXPECT_TRUE(AreEqual(entry->There->Modified, there.Modified));
    EXPECT_TRUE(entry->There->bLink);
    entry = reader.Next();
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->What, Kind::File);
    EXPECT_EQ(entry->Name, "a");
    ExpectStatus(entry->Source, StatusNumber(4));
    EXPECT_FALSE(entry->There);
    entry = reader.Next();
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->What, Kind::End);
    EXPECT_FALSE(reader.Next());
}

TEST(StatusRecord, CanBeReadTwice) {
    StatusRecord record;
    WriteFiles(record, record.FileDescriptor(), 10);
    ExpectFiles(record, 10);
    ExpectFiles(record, 10);
}

TEST(StatusRecord, TakesUpNoFileBelow16MiB) {
    StatusRecord record;
    WriteFiles(record, record.FileDescriptor(), 100000);
    EXPECT_EQ(FileBytes(record), 0U);
    ExpectFiles(record, 100000);
}

TEST(StatusRecord, HoldsAMillionEntriesInLessThan100MiBOfFile) {
    StatusRecord record;
    WriteFiles(record, record.FileDescriptor(), 1000000);
    EXPECT_GT(FileBytes(record), 0U);
    EXPECT_LT(FileBytes(record), 100U << 20);
    ExpectFiles(record, 1000000);
}

TEST(StatusRecord, IsWrittenByAnotherProcess) {
    StatusRecord record;
    const pid_t child = ::fork();
    if (child == 0) {
        WriteFiles(record, record.FileDescriptor(), 400000);
        ::_exit(0);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_GT(FileBytes(record), 0U);
    ExpectFiles(record, 400000);
}

TEST(StatusRecord, HasAFileWithoutAName) {
    const TemporaryDirectory room;
    ASSERT_EQ(::setenv("TMPDIR", room.Path().c_str(), 1), 0);
    const StatusRecord record;
    ASSERT_EQ(::unsetenv("TMPDIR"), 0);
    struct stat status {};
    struct stat directory {};
    ASSERT_EQ(::fstat(record.FileDescriptor(), &status), 0);
    ASSERT_EQ(::stat(room.Path().c_str(), &directory), 0);
    EXPECT_EQ(status.st_dev, directory.st_dev);
    EXPECT_EQ(status.st_nlink, 0U);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
    EXPECT_TRUE(std::filesystem::is_empty(room.Path()));
}

TEST(StatusRecord, SaysWhenItsFileCannotBeWritten) {
    StatusRecord record;
    const int readOnly = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    try {
        WriteFiles(record, readOnly, 400000);
        ADD_FAILURE() << "no error";
    } catch (const std::system_error& error) {
        EXPECT_STREQ(error.what(), "cannot write a temporary file: Bad file descriptor");
    }
    ::close(readOnly);
}

} // namespace
