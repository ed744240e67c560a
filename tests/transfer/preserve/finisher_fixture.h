// A tree of sources, its copy as a job makes it, and the record of the one that is carried over to
// the other.

#pragma once

#include "becomes_true.h"
#include "file_tree.h"
#include "finisher.h"
#include "status_record.h"
#include "temporary_directory.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

// The twelve bits, both times, the user and the group.
inline std::string StatusText(const std::filesystem::path& Path, bool bOwner = false) {
    struct stat status {};
    if (::lstat(Path.c_str(), &status) != 0) {
        return "gone";
    }
    const auto time = [](const timespec& Time) {
        return ' ' + std::to_string(Time.tv_sec) + '.' + std::to_string(Time.tv_nsec);
    };
    std::string text = std::to_string((status.st_mode & 07000U) >> 9U) +
                       std::to_string((status.st_mode & 0700U) >> 6U) +
                       std::to_string((status.st_mode & 070U) >> 3U) +
                       std::to_string(status.st_mode & 07U) + time(status.st_atim) +
                       time(status.st_mtim);
    if (bOwner) {
        text += ' ' + std::to_string(status.st_uid) + ':' + std::to_string(status.st_gid);
    }
    return text;
}

// By path.
using Statuses = std::map<std::string, std::string>;

// Of an entry with all that is in it. Reading a directory sets its time of access, so it is
// described before.
inline void DescribeStatuses(const std::filesystem::path& Path, Statuses& Out) {
    Out.emplace(Path.string(), StatusText(Path));
    if (std::filesystem::is_directory(std::filesystem::symlink_status(Path))) {
        for (const auto& entry : std::filesystem::directory_iterator(Path)) {
            DescribeStatuses(entry.path(), Out);
        }
    }
}

inline Statuses StatusesOf(const std::filesystem::path& Path) {
    Statuses statuses;
    DescribeStatuses(Path, statuses);
    return statuses;
}

inline void SetTimes(const std::filesystem::path& Path, timespec Accessed, timespec Modified) {
    const timespec times[] = {Accessed, Modified};
    ASSERT_EQ(::utimensat(AT_FDCWD, Path.c_str(), times, AT_SYMLINK_NOFOLLOW), 0) << Path;
}

inline mode_t ModeOf(const std::filesystem::path& Path) {
    struct stat status {};
    EXPECT_EQ(::lstat(Path.c_str(), &status), 0) << Path;
    return status.st_mode & 07777U;
}

class FinisherTest : public testing::Test {
protected:
    FinisherTest() {
        std::filesystem::create_directory(From);
        std::filesystem::create_directory(To);
    }

    // Makes a file with this mode and with times of its own.
    std::filesystem::path MakeSource(const std::string& Name, mode_t Mode = 0644,
                                     std::string_view Bytes = "contents") {
        const std::filesystem::path path = From / Name;
        WriteFile(path, Bytes);
        Dress(path, Mode);
        return path;
    }

    // Times and a mode that no new entry has.
    void Dress(const std::filesystem::path& Path, mode_t Mode) {
        ++Dressed;
        SetTimes(Path, {1000000000 + Dressed, 123456789}, {1100000000 + Dressed, 987654321});
        ASSERT_EQ(::chmod(Path.c_str(), Mode), 0);
    }

    // As the pre-flight does: what is at From/Name now, and at To/Name.
    void Record(const std::string& Name) { RecordAt(From / Name, To / Name, (To / Name).string()); }

    // The same where nothing was at To/Name.
    void RecordAsFree(const std::string& Name) {
        bFree = true;
        Record(Name);
    }

    // As the job does, without the check that an entry is free.
    void Copy(const std::string& Name) {
        const mode_t before = ::umask(077);
        CopyAt(From / Name, To / Name);
        ::umask(before);
    }

    FinishTask Task() {
        if (!bFinished) {
            Writer.Finish();
            bFinished = true;
        }
        return {.Record = Kept, .Names = Names, .Preserve = {.bMode = true, .bTimes = true}};
    }

    FinishResult Finish(FinishTask ToDo) {
        Finisher finisher(std::move(ToDo));
        EXPECT_TRUE(BecomesTrue("it is over", [&] { return finisher.IsOver(); }));
        EntriesDone = finisher.EntriesDone();
        return finisher.Result();
    }
    FinishResult Finish() { return Finish(Task()); }

    void Answer(const std::string& Name, TarvaneTransferConflictAction Action,
                const std::string& NewPath = "") {
        AnsweredConflict answered;
        answered.Conflict.DestinationPath = (To / Name).string();
        answered.Action = Action;
        answered.RenamePath = NewPath;
        Names.Add(answered);
    }

    void ExpectAllFinished(const FinishResult& Result) {
        EXPECT_EQ(Result.FirstFailure, "");
        EXPECT_EQ(Result.Broken, "");
        EXPECT_EQ(Result.Failures, 0U);
        EXPECT_EQ(Result.LeftAlone, 0U);
        EXPECT_EQ(Result.ChangedLength, 0U);
        EXPECT_EQ(Result.Unreached, 0U);
        EXPECT_FALSE(Result.bCanceled);
        EXPECT_FALSE(Result.bModesLost || Result.bTimesLost || Result.bOwnersLost);
        EXPECT_EQ(EntriesDone, Kept.Entries());
    }

    TemporaryDirectory Room;
    std::filesystem::path From = Room / "from";
    std::filesystem::path To = Room / "to";
    StatusRecord Kept;
    StatusRecord::Writer Writer{Kept, Kept.FileDescriptor()};
    // Of what was recorded, by the paths of the copies.
    Statuses Wanted;
    AnsweredNames Names;
    std::uint64_t EntriesDone = 0;

private:
    void RecordAt(const std::filesystem::path& Source, const std::filesystem::path& Destination,
                  const std::string& Name) {
        struct stat status {};
        ASSERT_EQ(::stat(Source.c_str(), &status), 0) << Source;
        Wanted.emplace(Destination.string(), StatusText(Source));
        const bool bDirectory = S_ISDIR(status.st_mode);
        Writer.Add({.What = bDirectory ? RecordedEntry::Kind::Directory : RecordedEntry::Kind::File,
                    .Name = Name,
                    .Source = RecordedStatusOf(status),
                    .There = bFree ? std::nullopt : WhatIsAt(Destination)});
        if (bDirectory) {
            for (const auto& entry : std::filesystem::directory_iterator(Source)) {
                const std::string name = entry.path().filename().string();
                RecordAt(entry.path(), Destination / name, name);
            }
            Writer.Add({.What = RecordedEntry::Kind::End});
        }
    }

    static std::optional<RecordedTarget> WhatIsAt(const std::filesystem::path& Path) {
        struct stat status {};
        struct stat itself {};
        if (::stat(Path.c_str(), &status) != 0 || ::lstat(Path.c_str(), &itself) != 0) {
            return std::nullopt;
        }
        return RecordedTarget{.Identity = IdentityOf(status),
                              .Mode = status.st_mode,
                              .Modified = status.st_mtim,
                              .bLink = S_ISLNK(itself.st_mode)};
    }

    static void CopyAt(const std::filesystem::path& Source,
                       const std::filesystem::path& Destination) {
        if (!std::filesystem::is_directory(Source)) {
            WriteFile(Destination, ReadFile(Source));
            return;
        }
        std::filesystem::create_directory(Destination);
        for (const auto& entry : std::filesystem::directory_iterator(Source)) {
            CopyAt(entry.path(), Destination / entry.path().filename());
        }
    }

    int Dressed = 0;
    bool bFree = false;
    bool bFinished = false;
};
