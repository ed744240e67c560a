// What a private job has made without a record gets what its source or the user's umask gives, and
// nothing else does.

#include "unrecorded.h"

#include "finisher_fixture.h"
#include "mounts.h"
#include "needs.h"

#include <sys/mount.h>
#include <tuple>

namespace {

namespace fs = std::filesystem;

using Action = TarvaneTransferConflictAction;
using Paths = std::vector<fs::path>;

constexpr mode_t kUmask = 027;

class Unrecorded : public FinisherTest {
protected:
    FinishTask UnrecordedTask() {
        FinishTask task = Task();
        task.Umask = kUmask;
        return task;
    }

    static std::uint64_t OpenUpAll(const FinishTask& ToDo, std::uint64_t RecordedThere = 0) {
        const std::atomic<bool> bCancel{false};
        return OpenUpUnrecorded(ToDo, RecordedThere, bCancel);
    }

    static void MakeFile(const fs::path& Path, mode_t Mode = 0600) {
        WriteFile(Path, "contents");
        ASSERT_EQ(::chmod(Path.c_str(), Mode), 0);
    }

    static void MakeDirectory(const fs::path& Path, mode_t Mode = 0700) {
        fs::create_directories(Path);
        ASSERT_EQ(::chmod(Path.c_str(), Mode), 0);
    }

    TarvaneTransferPlan PlanTo(const Paths& Destinations, const char* Source = "/from") const {
        TarvaneTransferPlan plan;
        for (const fs::path& destination : Destinations) {
            TarvaneTransferItemPlan& item = plan.Items.emplace_back();
            item.SourcePath = Source;
            item.DestinationPath = destination;
        }
        return plan;
    }

    static constexpr const char* kTrack = "cdda:/dev/sr0/1";
};

class MadeParents : public Unrecorded {};

TEST_F(MadeParents, AreThoseThatAreMissingBefore) {
    EXPECT_EQ(MissingParents(PlanTo({To / "a/b/file", To / "a/b/other", To / "a/c/file"})),
              Paths({To / "a", To / "a/b", To / "a/c"}));
    EXPECT_EQ(MissingParents(PlanTo({To / "file"})), Paths());
}

TEST_F(MadeParents, GetTheirModesFromTheUmask) {
    FinishTask task = UnrecordedTask();
    task.MadeParents = {To / "a", To / "a/b", To / "not-made"};
    MakeDirectory(To / "a/b");
    MakeDirectory(To / "a");
    OpenUpAll(task);
    EXPECT_EQ(ModeOf(To / "a"), 0750U);
    EXPECT_EQ(ModeOf(To / "a/b"), 0750U);
}

TEST_F(MadeParents, KeepTheBitThatGivesTheirGroupOn) {
    FinishTask task = UnrecordedTask();
    task.MadeParents = {To / "a"};
    MakeDirectory(To / "a", 02700);
    OpenUpAll(task);
    EXPECT_EQ(ModeOf(To / "a"), 02750U);
}

TEST_F(MadeParents, AreLeftAloneWhereSomebodyHasOpenedThem) {
    FinishTask task = UnrecordedTask();
    task.MadeParents = {To / "a"};
    MakeDirectory(To / "a", 0711);
    OpenUpAll(task);
    EXPECT_EQ(ModeOf(To / "a"), 0711U);
}

TEST_F(MadeParents, AreLeftAloneWhereSomethingElseStands) {
    FinishTask task = UnrecordedTask();
    task.MadeParents = {To / "link", To / "file"};
    MakeDirectory(To / "secret");
    fs::create_symlink("secret", To / "link");
    MakeFile(To / "file");
    OpenUpAll(task);
    EXPECT_EQ(ModeOf(To / "secret"), 0700U);
    EXPECT_EQ(ModeOf(To / "file"), 0600U);
}

TEST_F(MadeParents, AreLeftAloneWhereTheyAreSomebodyElses) {
    NeedRoot();
    FinishTask task = UnrecordedTask();
    task.MadeParents = {To / "a"};
    MakeDirectory(To / "a");
    const uid_t somebody = 1234;
    ASSERT_EQ(::chown((To / "a").c_str(), somebody, somebody), 0);
    OpenUpAll(task);
    EXPECT_EQ(ModeOf(To / "a"), 0700U);
}

class MadeTracks : public Unrecorded {
protected:
    // 01.wav, to 01-2.wav.
    void RenameTrack() {
        AnsweredConflict answered;
        answered.Conflict.SourcePath = kTrack;
        answered.Conflict.DestinationPath = To / "01.wav";
        answered.Action = Action::Rename;
        answered.RenamePath = To / "01-2.wav";
        Names.Add(answered);
    }
};

TEST_F(MadeTracks, AreThoseWithAFreeName) {
    MakeFile(To / "taken.wav");
    EXPECT_EQ(FreeTrackNames(PlanTo({To / "01.wav", To / "taken.wav"}, kTrack)),
              Paths({To / "01.wav"}));
    EXPECT_EQ(FreeTrackNames(PlanTo({To / "file"})), Paths());
}

TEST_F(MadeTracks, GetTheirModesFromTheUmask) {
    FinishTask task = UnrecordedTask();
    task.MadeFiles = {To / "01.wav", To / "canceled.wav"};
    MakeFile(To / "01.wav");
    OpenUpAll(task);
    EXPECT_EQ(ModeOf(To / "01.wav"), 0640U);
}

TEST_F(MadeTracks, AreFoundByTheirNewNames) {
    RenameTrack();
    FinishTask task = UnrecordedTask();
    // Somebody has taken the name in the last moment.
    task.MadeFiles = {To / "01.wav"};
    MakeFile(To / "01.wav");
    MakeFile(To / "01-2.wav");
    OpenUpAll(task);
    EXPECT_EQ(ModeOf(To / "01.wav"), 0600U);
    EXPECT_EQ(ModeOf(To / "01-2.wav"), 0640U);
}

TEST_F(MadeTracks, KeepTheirModesWhereNoneAreCarriedOver) {
    RenameTrack();
    FinishTask task = UnrecordedTask();
    task.Preserve.bMode = false;
    MakeFile(To / "01-2.wav");
    OpenUpAll(task);
    EXPECT_EQ(ModeOf(To / "01-2.wav"), 0600U);
}

TEST_F(MadeTracks, AreLeftAloneWhereSomethingElseStands) {
    FinishTask task = UnrecordedTask();
    task.MadeFiles = {To / "link.wav", To / "directory.wav", To / "linked.wav", To / "skipped.wav"};
    MakeFile(To / "secret");
    fs::create_symlink("secret", To / "link.wav");
    MakeDirectory(To / "directory.wav");
    MakeFile(To / "other-name");
    fs::create_hard_link(To / "other-name", To / "linked.wav");
    MakeFile(To / "skipped.wav");
    Answer("skipped.wav", Action::Skip);
    OpenUpAll(task);
    EXPECT_EQ(ModeOf(To / "secret"), 0600U);
    EXPECT_EQ(ModeOf(To / "directory.wav"), 0700U);
    EXPECT_EQ(ModeOf(To / "other-name"), 0600U);
    EXPECT_EQ(ModeOf(To / "skipped.wav"), 0600U);
}

// The tree holds the private file "known", and in "inner" another one.
class LateEntry : public Unrecorded {
protected:
    void MakeTree() {
        fs::create_directories(From / "tree/inner");
        MakeSource("tree/known", 0600);
        MakeSource("tree/inner/known", 0600);
    }

    // Of a job that has copied one more than what is in the record, and that begins now.
    FinishTask TaskOfJob() {
        const timespec started = TimeNow();
        EXPECT_TRUE(BecomesTrue("the clock of new entries has got there",
                                [&] { return !IsBefore(TimeOfNewEntries(), started); }));
        FinishTask task = UnrecordedTask();
        task.JobStarted = started;
        Plan = PlanTo({To / "tree"}, (From / "tree").c_str());
        task.Plan = &Plan;
        task.CopiedEntries = Kept.Entries() + 1;
        return task;
    }

    FinishTask TaskOfCopiedTree() {
        MakeTree();
        Record("tree");
        FinishTask task = TaskOfJob();
        Copy("tree");
        return task;
    }

    std::uint64_t OpenUpLate(const FinishTask& ToDo) { return OpenUpAll(ToDo, Kept.Entries()); }

    // A source that nobody has looked at, and its copy.
    void MakeLate(const std::string& Name, mode_t Mode = kLate) {
        MakeSource(Name, Mode);
        MakeFile(To / Name);
    }

    // That no umask gives.
    static constexpr mode_t kLate = 0604;
    TarvaneTransferPlan Plan;

    // Never after that of an entry that is made now, and before that of one made earlier.
    static timespec TimeOfNewEntries() {
        timespec now{};
        ::clock_gettime(CLOCK_REALTIME_COARSE, &now);
        return now;
    }

    static bool IsBefore(const timespec& First, const timespec& Second) {
        return std::tie(First.tv_sec, First.tv_nsec) < std::tie(Second.tv_sec, Second.tv_nsec);
    }
};

TEST_F(LateEntry, GetsTheModeOfItsSource) {
    const FinishTask task = TaskOfCopiedTree();
    MakeLate("tree/late");
    MakeLate("tree/inner/late");
    OpenUpLate(task);
    EXPECT_EQ(ModeOf(To / "tree/late"), kLate);
    EXPECT_EQ(ModeOf(To / "tree/inner/late"), kLate);
    EXPECT_EQ(ModeOf(To / "tree/known"), 0600U);
    EXPECT_EQ(ModeOf(To / "tree/inner/known"), 0600U);
    EXPECT_EQ(ModeOf(To / "tree/inner"), 0700U);
}

TEST_F(LateEntry, GetsTheTimesOfItsSource) {
    const FinishTask task = TaskOfCopiedTree();
    MakeLate("tree/late");
    OpenUpLate(task);
    EXPECT_EQ(StatusText(To / "tree/late"), StatusText(From / "tree/late"));
}

TEST_F(LateEntry, IsOpenedUpWithAllThatIsInIt) {
    const FinishTask task = TaskOfCopiedTree();
    MakeDirectory(From / "tree/late/deep");
    MakeDirectory(To / "tree/late/deep");
    MakeDirectory(To / "tree/late");
    MakeLate("tree/late/deep/file");
    Dress(From / "tree/late/deep", 0555);
    Dress(From / "tree/late", 0705);
    EXPECT_EQ(OpenUpLate(task), 0U);
    for (const char* const name : {"tree/late", "tree/late/deep", "tree/late/deep/file"}) {
        EXPECT_EQ(StatusText(To / name), StatusText(From / name)) << name;
    }
}

TEST_F(LateEntry, StaysAsPrivateAsItsSource) {
    const FinishTask task = TaskOfCopiedTree();
    MakeLate("tree/late", 0600);
    EXPECT_EQ(OpenUpLate(task), 0U);
    EXPECT_EQ(ModeOf(To / "tree/late"), 0600U);
}

// A move has removed its source; or somebody else has made it.
TEST_F(LateEntry, StaysPrivateWithoutASource) {
    const FinishTask task = TaskOfCopiedTree();
    MakeFile(To / "tree/moved");
    MakeDirectory(To / "tree/inner/moved");
    MakeFile(To / "tree/inner/moved/file");
    EXPECT_EQ(OpenUpLate(task), 2U);
    EXPECT_EQ(ModeOf(To / "tree/moved"), 0600U);
    EXPECT_EQ(ModeOf(To / "tree/inner/moved"), 0700U);
    EXPECT_EQ(ModeOf(To / "tree/inner/moved/file"), 0600U);
}

TEST_F(LateEntry, StaysPrivateWhereItsSourceIsOfAnotherKind) {
    const FinishTask task = TaskOfCopiedTree();
    MakeFile(To / "tree/file");
    MakeDirectory(From / "tree/file", 0755);
    MakeDirectory(To / "tree/directory");
    MakeSource("tree/directory", 0644);
    EXPECT_EQ(OpenUpLate(task), 2U);
    EXPECT_EQ(ModeOf(To / "tree/file"), 0600U);
    EXPECT_EQ(ModeOf(To / "tree/directory"), 0700U);
}

TEST_F(LateEntry, IsFoundInAllItemsOfThePlan) {
    MakeTree();
    fs::create_directory(From / "last");
    MakeSource("file");
    Record("tree");
    Record("file");
    Record("last");
    const FinishTask task = TaskOfJob();
    Plan = PlanTo({To / "skipped", To / "tree", To / "file", To / "last"});
    for (TarvaneTransferItemPlan& item : Plan.Items) {
        item.SourcePath = From / item.DestinationPath.filename();
    }
    Copy("tree");
    Copy("last");
    MakeLate("tree/late");
    MakeLate("last/late");
    EXPECT_EQ(OpenUpLate(task), 0U);
    EXPECT_EQ(ModeOf(To / "tree/late"), kLate);
    EXPECT_EQ(ModeOf(To / "last/late"), kLate);
}

TEST_F(LateEntry, IsTakenForOneOnlyIfItWasMadeDuringTheJob) {
    MakeTree();
    MakeFile(To / "tree/old");
    MakeDirectory(To / "tree/old-directory");
    Record("tree");
    const FinishTask task = TaskOfJob();
    Copy("tree");
    MakeLate("tree/late");
    MakeFile(To / "tree/old-directory/new");
    OpenUpLate(task);
    EXPECT_EQ(ModeOf(To / "tree/late"), kLate);
    EXPECT_EQ(ModeOf(To / "tree/old"), 0600U);
    EXPECT_EQ(ModeOf(To / "tree/old-directory"), 0700U);
    EXPECT_EQ(ModeOf(To / "tree/old-directory/new"), 0600U);
}

TEST_F(LateEntry, IsNotLookedForWhereTheRecordHasAllThatWasCopied) {
    MakeTree();
    Record("tree");
    FinishTask task = TaskOfJob();
    task.CopiedEntries = Kept.Entries();
    Copy("tree");
    MakeFile(To / "tree/unknown");
    OpenUpLate(task);
    EXPECT_EQ(ModeOf(To / "tree/unknown"), 0600U);
}

// Its source could not be looked at, and may be private.
TEST_F(LateEntry, IsNotLookedForWhereTheRecordHasAGap) {
    MakeTree();
    Record("tree");
    StatusRecord::Writer(Kept, Kept.FileDescriptor()).NoteGap();
    const FinishTask task = TaskOfJob();
    Copy("tree");
    MakeFile(To / "tree/unknown");
    OpenUpLate(task);
    EXPECT_EQ(ModeOf(To / "tree/unknown"), 0600U);
}

// The source of one that is gone was not copied.
TEST_F(LateEntry, IsLookedForWhereTheRecordHasEntriesThatAreNotThere) {
    MakeTree();
    Record("tree");
    FinishTask task = TaskOfJob();
    task.CopiedEntries = Kept.Entries();
    Copy("tree");
    fs::remove(To / "tree/known");
    MakeLate("tree/late");
    OpenUpAll(task, Kept.Entries() - 1);
    EXPECT_EQ(ModeOf(To / "tree/late"), kLate);
}

TEST_F(LateEntry, IsNoneByDefault) {
    MakeTree();
    Record("tree");
    FinishTask task = UnrecordedTask();
    task.CopiedEntries = Kept.Entries() + 1;
    Copy("tree");
    MakeFile(To / "tree/unknown");
    OpenUpLate(task);
    EXPECT_EQ(ModeOf(To / "tree/unknown"), 0600U);
}

TEST_F(LateEntry, IsNoCopyThatGotAnotherName) {
    MakeTree();
    Record("tree");
    Answer("tree/known", Action::Rename, To / "tree/known-2");
    Answer("tree/inner/known", Action::Rename, To / "tree/made/../elsewhere");
    const FinishTask task = TaskOfJob();
    Copy("tree");
    fs::create_directory(To / "tree/made");
    MakeFile(To / "tree/known-2");
    MakeFile(To / "tree/elsewhere");
    MakeLate("tree/late");
    OpenUpLate(task);
    EXPECT_EQ(ModeOf(To / "tree/late"), kLate);
    EXPECT_EQ(ModeOf(To / "tree/known-2"), 0600U);
    EXPECT_EQ(ModeOf(To / "tree/elsewhere"), 0600U);
}

TEST_F(LateEntry, IsNotReachedThroughALink) {
    const FinishTask task = TaskOfCopiedTree();
    MakeFile(To / "secret/file");
    MakeDirectory(To / "secret");
    fs::create_directory_symlink(To / "secret", To / "tree/late");
    fs::rename(To / "tree/inner", To / "elsewhere");
    fs::create_directory_symlink(To / "secret", To / "tree/inner");
    OpenUpLate(task);
    EXPECT_EQ(ModeOf(To / "secret"), 0700U);
    EXPECT_EQ(ModeOf(To / "secret/file"), 0600U);
}

// With links followed at the destination.
TEST_F(LateEntry, IsReachedThroughALinkThatTheJobHasFollowed) {
    MakeTree();
    fs::create_directory(To / "real");
    fs::create_directory_symlink("real", To / "tree");
    Record("tree");
    const FinishTask task = TaskOfJob();
    Copy("tree");
    MakeSource("tree/late", kLate);
    MakeFile(To / "real/late");
    OpenUpLate(task);
    EXPECT_EQ(ModeOf(To / "real/late"), kLate);
}

TEST_F(LateEntry, IsNotLookedForInADirectoryThatWasSkipped) {
    MakeTree();
    fs::create_directories(To / "tree/inner");
    Record("tree");
    Answer("tree/inner", Action::Skip);
    const FinishTask task = TaskOfJob();
    MakeFile(To / "tree/inner/unknown");
    MakeLate("tree/late");
    OpenUpLate(task);
    EXPECT_EQ(ModeOf(To / "tree/inner/unknown"), 0600U);
    EXPECT_EQ(ModeOf(To / "tree/late"), kLate);
}

TEST_F(LateEntry, StaysPrivateAfterACancel) {
    const FinishTask task = TaskOfCopiedTree();
    MakeLate("tree/late");
    const std::atomic<bool> bCancel{true};
    OpenUpUnrecorded(task, Kept.Entries(), bCancel);
    EXPECT_EQ(ModeOf(To / "tree/late"), 0600U);
}

// Where the file system tells no birth, what was there before may have changed only.
TEST_F(LateEntry, IsOnlySeenInNewDirectoriesWithoutTimesOfBirth) {
    NeedRoot();
    EnterPrivateMountNamespace();
    fs::create_directory(Room / "ramfs");
    ASSERT_EQ(::mount("none", (Room / "ramfs").c_str(), "ramfs", 0, nullptr), 0);
    const ScopedMount ramfs(Room / "ramfs");
    From = ramfs.Path() / "from";
    To = ramfs.Path() / "to";
    fs::create_directory(From);
    fs::create_directory(To);
    MakeTree();
    fs::create_directory(To / "tree");
    MakeFile(To / "tree/old");
    Record("tree");
    const FinishTask task = TaskOfJob();
    Copy("tree");
    ASSERT_EQ(::chmod((To / "tree/old").c_str(), 0600), 0);
    MakeLate("tree/inner/late");
    OpenUpLate(task);
    EXPECT_EQ(ModeOf(To / "tree/old"), 0600U);
    EXPECT_EQ(ModeOf(To / "tree/inner/late"), kLate);
}

class UnrecordedByFinisher : public LateEntry {};

TEST_F(UnrecordedByFinisher, IsOpenedUpWhenTheRecordIsThrough) {
    FinishTask task = TaskOfCopiedTree();
    MakeLate("tree/late");
    MakeDirectory(To / "parent");
    task.MadeParents = {To / "parent"};
    Finish(task);
    EXPECT_EQ(ModeOf(To / "tree/late"), kLate);
    EXPECT_EQ(ModeOf(To / "tree/known"), 0600U);
    EXPECT_EQ(ModeOf(To / "parent"), 0750U);
}

// A job counts directories too that were there before.
TEST_F(UnrecordedByFinisher, IsNotLookedForWhereAllCopiesAreInTheRecord) {
    MakeTree();
    fs::create_directory(To / "tree");
    Record("tree");
    FinishTask task = TaskOfJob();
    task.CopiedEntries = Kept.Entries();
    Copy("tree");
    MakeFile(To / "tree/unknown");
    Finish(task);
    EXPECT_EQ(ModeOf(To / "tree/unknown"), 0600U);
}

// A job does not count as copied what it has found equal.
TEST_F(UnrecordedByFinisher, IsLookedForAlsoWhereEntriesWereFoundEqual) {
    MakeTree();
    Copy("tree");
    Record("tree");
    Answer("tree/known", Action::CompareByContent);
    FinishTask task = TaskOfJob();
    task.CopiedEntries = Kept.Entries();
    Copy("tree/inner/known");
    MakeLate("tree/late");
    Finish(task);
    EXPECT_EQ(ModeOf(To / "tree/late"), kLate);
}

} // namespace
