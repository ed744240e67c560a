// What a look records for those who come after the copy: everything that is going to be copied, as
// it was before, and what stood in its place. Needs root for the mounts.

#include "becomes_true.h"
#include "needs.h"
#include "own_mount_namespace.h"
#include "preflight_fixture.h"
#include "preflight_run.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <optional>
#include <system_error>

namespace fs = std::filesystem;

namespace {

class PreflightRecord : public PreflightTest {
protected:
    PreflightRecord() { PlanToCopy({{Tree, To / "tree"}}); }

    // Of a record that is new.
    PreflightTask RecordingTask() {
        Record.emplace();
        PreflightTask task = Task();
        task.Record = &*Record;
        return task;
    }
    PreflightResult LookAndRecord() { return RunPreflight(RecordingTask(), Control); }

    // Sorted, with a slash after directories: "to/tree/sub/", "to/tree/file, taken".
    Strings Recorded() {
        LookAndRecord();
        return InRecord();
    }
    Strings InRecord() {
        Strings words;
        ForEach([&](const fs::path& path, const RecordedEntry& entry) {
            words.push_back(path.lexically_relative(Room.Path()).string() +
                            (entry.What == RecordedEntry::Kind::Directory ? "/" : "") +
                            (!entry.There         ? ""
                             : entry.There->bLink ? ", taken by a link"
                                                  : ", taken"));
        });
        std::sort(words.begin(), words.end());
        return words;
    }

    // The copy of one entry that is recorded once.
    std::optional<RecordedEntry> At(const fs::path& Copy) {
        std::optional<RecordedEntry> found;
        ForEach([&](const fs::path& path, const RecordedEntry& entry) {
            if (path == Copy) {
                EXPECT_FALSE(found) << path;
                found = entry;
            }
        });
        EXPECT_TRUE(found) << Copy;
        return found;
    }

    void ExpectStatus(const fs::path& Copy, const struct stat& Wanted) {
        const std::optional<RecordedEntry> entry = At(Copy);
        ASSERT_TRUE(entry);
        EXPECT_EQ(entry->Source.Mode, Wanted.st_mode) << Copy;
        EXPECT_EQ(entry->Source.Owner, Wanted.st_uid);
        EXPECT_EQ(entry->Source.Group, Wanted.st_gid);
        EXPECT_EQ(entry->Source.SizeBytes, static_cast<std::uint64_t>(Wanted.st_size));
        ExpectTime(entry->Source.Accessed, Wanted.st_atim);
        ExpectTime(entry->Source.Modified, Wanted.st_mtim);
    }
    static void ExpectTime(const timespec& Time, const timespec& Wanted) {
        EXPECT_EQ(Time.tv_sec, Wanted.tv_sec);
        EXPECT_EQ(Time.tv_nsec, Wanted.tv_nsec);
    }
    static struct stat StatusOf(const fs::path& Path) {
        struct stat status {};
        EXPECT_EQ(::stat(Path.c_str(), &status), 0) << Path;
        return status;
    }

    const fs::path Tree = From / "tree";
    const fs::path Outside = Room / "outside";
    std::optional<StatusRecord> Record;

private:
    // With the full path that the directories around an entry give it.
    template <typename Visitor>
    void ForEach(const Visitor& Visit) {
        StatusRecord::Reader reader(*Record);
        std::vector<fs::path> around;
        std::uint64_t entries = 0;
        while (const std::optional<RecordedEntry> entry = reader.Next()) {
            if (entry->What == RecordedEntry::Kind::End) {
                ASSERT_FALSE(around.empty());
                around.pop_back();
                continue;
            }
            ++entries;
            const bool bName = entry->Name.find('/') == std::string_view::npos;
            EXPECT_EQ(bName, !around.empty()) << entry->Name;
            const fs::path path = around.empty() ? entry->Name : around.back() / entry->Name;
            Visit(path, *entry);
            if (entry->What == RecordedEntry::Kind::Directory) {
                around.push_back(path);
            }
        }
        EXPECT_TRUE(around.empty());
        EXPECT_EQ(entries, Record->Entries());
    }
};

TEST_F(PreflightRecord, HasFilesAndNestedDirectories) {
    WriteFile(Tree / "file", "x");
    WriteFile(Tree / "a/b/deep", "x");
    WriteFile(Tree / "a/beside", "x");
    fs::create_directory(Tree / "empty");
    EXPECT_EQ(Recorded(), (Strings{"to/tree/", "to/tree/a/", "to/tree/a/b/", "to/tree/a/b/deep",
                                   "to/tree/a/beside", "to/tree/empty/", "to/tree/file"}));
}

TEST_F(PreflightRecord, IsWrittenByALookInAProcessOfItsOwn) {
    WriteFile(Tree / "a/file", "12345");
    PreflightRun run(RecordingTask());
    ASSERT_TRUE(BecomesTrue("the look is over", [&run] { return run.IsOver(); }));
    EXPECT_EQ(run.Failure(), "");
    EXPECT_EQ(InRecord(), (Strings{"to/tree/", "to/tree/a/", "to/tree/a/file"}));
    ExpectStatus(To / "tree/a/file", StatusOf(Tree / "a/file"));
}

TEST_F(PreflightRecord, HasWhatEachWasLikeBeforeTheLook) {
    WriteFile(Tree / "sub/file", "12345");
    const std::array times{timespec{-86400, 1}, timespec{-172800, 999999999}};
    for (const fs::path& path : {Tree / "sub/file", Tree / "sub", Tree}) {
        ASSERT_EQ(::chmod(path.c_str(), 07751), 0);
        ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times.data(), 0), 0);
    }
    const struct stat tree = StatusOf(Tree);
    const struct stat sub = StatusOf(Tree / "sub");
    const struct stat file = StatusOf(Tree / "sub/file");
    LookAndRecord();
    ExpectStatus(To / "tree", tree);
    ExpectStatus(To / "tree/sub", sub);
    ExpectStatus(To / "tree/sub/file", file);
}

TEST_F(PreflightRecord, HasWhatLinksLeadTo) {
    WriteFile(Outside / "file", "12345");
    WriteFile(Outside / "sub/deep", "x");
    fs::create_directory(Tree);
    fs::create_symlink(Outside / "file", Tree / "to-file");
    fs::create_symlink(Outside, Tree / "to-directory");
    const struct stat outside = StatusOf(Outside);
    const struct stat sub = StatusOf(Outside / "sub");
    EXPECT_EQ(Recorded(), (Strings{"to/tree/", "to/tree/to-directory/", "to/tree/to-directory/file",
                                   "to/tree/to-directory/sub/", "to/tree/to-directory/sub/deep",
                                   "to/tree/to-file"}));
    ExpectStatus(To / "tree/to-file", StatusOf(Outside / "file"));
    ExpectStatus(To / "tree/to-directory", outside);
    ExpectStatus(To / "tree/to-directory/sub", sub);
}

TEST_F(PreflightRecord, HasWhatASecondLinkLeadsToOnceMoreAndFindsItOnce) {
    WriteFile(Outside / "sub/deep", "x");
    MakeFifo(Outside / "pipe");
    fs::create_directory(Tree);
    fs::create_symlink(Outside, Tree / "first");
    fs::create_symlink(Outside, Tree / "second");
    const PreflightResult without = Look();
    const PreflightResult result = LookAndRecord();
    EXPECT_EQ(InWords(result), InWords(without));
    EXPECT_EQ(result.Findings.Count(PreflightFindingKind::SpecialEntry), 1U);
    EXPECT_EQ(result.CopiedEntries, without.CopiedEntries);
    EXPECT_EQ(result.CopiedBytes, without.CopiedBytes);
    EXPECT_EQ(InRecord(),
              (Strings{"to/tree/", "to/tree/first/", "to/tree/first/sub/", "to/tree/first/sub/deep",
                       "to/tree/second/", "to/tree/second/sub/", "to/tree/second/sub/deep"}));
}

TEST_F(PreflightRecord, EndsWhereALinkWouldGoRoundInCircles) {
    WriteFile(Tree / "sub/file", "x");
    fs::create_symlink("..", Tree / "sub/up");
    EXPECT_EQ(Recorded(),
              (Strings{"to/tree/", "to/tree/sub/", "to/tree/sub/file", "to/tree/sub/up/"}));
}

// What the engine makes a link of, and what ends its job.
TEST_F(PreflightRecord, LeavesOutWhatIsNeitherFileNorDirectory) {
    fs::create_directory(Tree);
    MakeFifo(Tree / "pipe");
    fs::create_symlink("/dev/null", Tree / "to-device");
    fs::create_symlink("nowhere", Tree / "dangling");
    EXPECT_EQ(Recorded(), Strings{"to/tree/"});
}

TEST_F(PreflightRecord, HasItemsByTheirFullNames) {
    WriteFile(From / "one", "x");
    WriteFile(Tree / "two", "x");
    fs::create_symlink("one", From / "link");
    PlanToCopy({{From / "one", To / "new/first"}, {Tree, To / "tree"}, {From / "link", To / "3"}});
    EXPECT_EQ(Recorded(), (Strings{"to/3", "to/new/first", "to/tree/", "to/tree/two"}));
}

TEST_F(PreflightRecord, HasAGapWhereALinkLeadsNowhere) {
    WriteFile(Tree / "file", "x");
    LookAndRecord();
    EXPECT_FALSE(Record->HasGaps());
    fs::create_symlink("missing", Tree / "link");
    LookAndRecord();
    EXPECT_TRUE(Record->HasGaps());
}

TEST_F(PreflightRecord, HasADirectoryThatCannotBeReadAsAnEmptyOne) {
    NeedRoot();
    WriteFile(Tree / "locked/file", "x");
    WriteFile(Tree / "open/file", "x");
    ASSERT_EQ(::chmod((Tree / "locked").c_str(), 0711), 0);
    ASSERT_EQ(::chmod(To.c_str(), 0777), 0);
    const struct stat locked = StatusOf(Tree / "locked");
    PreflightTask task = RecordingTask();
    {
        const ActingAsNobody nobody;
        RunPreflight(task, Control);
    }
    EXPECT_EQ(InRecord(),
              (Strings{"to/tree/", "to/tree/locked/", "to/tree/open/", "to/tree/open/file"}));
    ExpectStatus(To / "tree/locked", locked);
}

// Both trees have a file, a directory with a file, and one more that only the source has.
class PreflightRecordOfTaken : public PreflightRecord {
protected:
    PreflightRecordOfTaken() {
        for (const fs::path& root : {Tree, To / "tree"}) {
            WriteFile(root / "old", "data");
            WriteFile(root / "sub/old", "data");
        }
        WriteFile(Tree / "sub/new", "data");
    }

    Strings RecordedFor(FileConflictChoice Choice) {
        Rules.ForFiles = Choice;
        return Recorded();
    }
};

TEST_F(PreflightRecordOfTaken, HasWhatMayBeReplacedRenamedOrAskedAbout) {
    Rules.ForDirectories = DirectoryConflictChoice::Merge;
    for (const FileConflictChoice choice :
         {FileConflictChoice::Overwrite, FileConflictChoice::Compare, FileConflictChoice::KeepBoth,
          FileConflictChoice::Ask}) {
        EXPECT_EQ(RecordedFor(choice),
                  (Strings{"to/tree/, taken", "to/tree/old, taken", "to/tree/sub/, taken",
                           "to/tree/sub/new", "to/tree/sub/old, taken"}));
    }
}

TEST_F(PreflightRecordOfTaken, LeavesOutWhatIsSkippedOrRefused) {
    Rules.ForDirectories = DirectoryConflictChoice::Merge;
    for (const FileConflictChoice choice :
         {FileConflictChoice::Skip, FileConflictChoice::SizeDiffers, FileConflictChoice::Larger,
          FileConflictChoice::Fail}) {
        for (const PreflightScope scope :
             {PreflightScope::Everything, PreflightScope::Findings, PreflightScope::GuardsOnly}) {
            Scope = scope;
            EXPECT_EQ(RecordedFor(choice),
                      (Strings{"to/tree/, taken", "to/tree/sub/, taken", "to/tree/sub/new"}));
        }
    }
}

TEST_F(PreflightRecordOfTaken, HasTheNewerOnesWhereOlderOnesAreReplaced) {
    SetModifiedTime(Tree / "old", 1700000000);
    SetModifiedTime(To / "tree/old", 1600000000);
    SetModifiedTime(Tree / "sub/old", 1600000000);
    SetModifiedTime(To / "tree/sub/old", 1700000000);
    EXPECT_EQ(RecordedFor(FileConflictChoice::Older),
              (Strings{"to/tree/, taken", "to/tree/old, taken", "to/tree/sub/, taken",
                       "to/tree/sub/new"}));
}

TEST_F(PreflightRecordOfTaken, LeavesOutDirectoriesThatAreSkippedOrRefused) {
    PlanToCopy({{Tree / "sub", To / "tree/sub"}, {Tree / "old", To / "free"}});
    for (const DirectoryConflictChoice choice :
         {DirectoryConflictChoice::Skip, DirectoryConflictChoice::Fail}) {
        Rules.ForDirectories = choice;
        EXPECT_EQ(Recorded(), Strings{"to/free"});
    }
}

TEST_F(PreflightRecordOfTaken, HasDirectoriesThatSomebodyIsAskedAbout) {
    PlanToCopy({{Tree / "sub", To / "tree/sub"}});
    EXPECT_EQ(RecordedFor(FileConflictChoice::Ask),
              (Strings{"to/tree/sub/, taken", "to/tree/sub/new", "to/tree/sub/old, taken"}));
}

TEST_F(PreflightRecordOfTaken, HasADirectoryForAFileWithAllThatIsInIt) {
    PlanToCopy({{Tree / "sub", To / "tree/old"}});
    EXPECT_EQ(RecordedFor(FileConflictChoice::Ask),
              (Strings{"to/tree/old/, taken", "to/tree/old/new", "to/tree/old/old"}));
}

TEST_F(PreflightRecordOfTaken, TellsWhatStandsThere) {
    ASSERT_EQ(::chmod((To / "tree/sub/old").c_str(), 04751), 0);
    SetModifiedTime(To / "tree/sub/old", -5, 6);
    Recorded();
    for (const char* const name : {"tree/sub/old", "tree/sub"}) {
        const std::optional<RecordedEntry> entry = At(To / name);
        ASSERT_TRUE(entry && entry->There);
        const struct stat wanted = StatusOf(To / name);
        EXPECT_EQ(entry->There->Identity, IdentityOf(wanted));
        EXPECT_EQ(entry->There->Mode, wanted.st_mode);
        ExpectTime(entry->There->Modified, wanted.st_mtim);
        EXPECT_FALSE(entry->There->bLink);
    }
}

TEST_F(PreflightRecordOfTaken, FollowsALinkThatStandsThere) {
    WriteFile(Outside / "file", "x");
    fs::remove(To / "tree/old");
    fs::create_symlink(Outside / "file", To / "tree/old");
    Recorded();
    const std::optional<RecordedEntry> entry = At(To / "tree/old");
    ASSERT_TRUE(entry && entry->There);
    EXPECT_EQ(entry->There->Identity, IdentityOf(StatusOf(Outside / "file")));
    EXPECT_TRUE(entry->There->bLink);
}

// The file is made where it leads.
TEST_F(PreflightRecordOfTaken, SaysOfALinkThatLeadsNowhereThatItIsOne) {
    fs::remove(To / "tree/old");
    fs::create_symlink("nowhere", To / "tree/old");
    Rules.bFollowLinks = true;
    Recorded();
    const std::optional<RecordedEntry> entry = At(To / "tree/old");
    ASSERT_TRUE(entry && entry->There);
    EXPECT_EQ(entry->There->Identity, FileIdentity());
    EXPECT_EQ(entry->There->Mode, 0U);
    EXPECT_TRUE(entry->There->bLink);
}

// To the same file system, or to another one.
class PreflightRecordOfMove : public PreflightRecord {
protected:
    PreflightRecordOfMove() { WriteFile(Tree / "sub/file", "x"); }

    const OwnMountNamespace Namespace;
    const ScopedMount Away{MountTmpfs(Room / "away", "size=4m")};
};

TEST_F(PreflightRecordOfMove, LeavesOutWhatIsOnlyRenamed) {
    WriteFile(From / "file", "x");
    PlanToMove({{Tree, To / "tree"}, {From / "file", Away.Path() / "file"}});
    EXPECT_EQ(Recorded(), Strings{"away/file"});
}

TEST_F(PreflightRecordOfMove, HasWhatGoesToAnotherFileSystem) {
    PlanToMove({{Tree, Away.Path() / "tree"}});
    EXPECT_EQ(Recorded(), (Strings{"away/tree/", "away/tree/sub/", "away/tree/sub/file"}));
}

TEST_F(PreflightRecordOfMove, HasWhatGoesIntoADirectoryThatIsThere) {
    fs::create_directories(To / "tree");
    PlanToMove({{Tree, To / "tree"}});
    EXPECT_EQ(Recorded(), (Strings{"to/tree/, taken", "to/tree/sub/", "to/tree/sub/file"}));
}

// Root would have nothing to guard where all names are free.
TEST_F(PreflightRecord, HasEverythingInALookForGuardsAndFindsNoMore) {
    WriteFile(Tree / "a/b/file", "x");
    MakeFifo(Tree / "a/pipe");
    fs::create_symlink("..", Tree / "a/up");
    fs::create_symlink(Outside, Tree / "link");
    WriteFile(Outside / "file", "x");
    const Strings all = Recorded();
    EXPECT_EQ(all.size(), 7U);
    Scope = PreflightScope::Findings;
    EXPECT_EQ(Recorded(), all);
    EXPECT_EQ(InWords(LookAndRecord()), Found());
    Scope = PreflightScope::GuardsOnly;
    EXPECT_EQ(Recorded(), all);
    EXPECT_EQ(InWords(LookAndRecord()), Strings{});
}

// More than is kept in memory: 16 MiB, at more than 300 bytes an entry.
class PreflightRecordInAFile : public PreflightRecord {
protected:
    PreflightRecordInAFile() {
        const std::string end(240, 'x');
        for (int number = 0; number < kFiles; ++number) {
            WriteFile(Outside / (std::to_string(number) + end), "");
        }
        fs::create_directory(Tree);
        for (int number = 0; number < kLinks; ++number) {
            fs::create_symlink(Outside, Tree / std::to_string(number));
        }
    }

    static constexpr int kFiles = 1000;
    static constexpr int kLinks = 60;
    static constexpr std::uint64_t kEntries = 1 + kLinks + kLinks * kFiles;
};

TEST_F(PreflightRecordInAFile, IsWrittenByALookInAProcessOfItsOwn) {
    PreflightRun run(RecordingTask());
    ASSERT_TRUE(BecomesTrue("the look is over", [&run] { return run.IsOver(); }));
    EXPECT_EQ(run.Failure(), "");
    EXPECT_EQ(InRecord().size(), kEntries);
    EXPECT_GT(StatusOf("/proc/self/fd/" + std::to_string(Record->FileDescriptor())).st_size, 0);
}

TEST_F(PreflightRecordInAFile, BreaksOffWhenItCannotBeWritten) {
    PreflightTask task = RecordingTask();
    const OwnedDescriptor readOnly(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    task.RecordDescriptor = readOnly.Get();
    EXPECT_THROW(RunPreflight(task, Control), std::system_error);
    EXPECT_EQ(Record->Entries(), 0U);
}

} // namespace
