// Which entries are the job's: what was there before keeps its own, and no link leads anywhere.

#include "finisher_fixture.h"

namespace fs = std::filesystem;

namespace {

using Action = TarvaneTransferConflictAction;

class FinisherEntries : public FinisherTest {
protected:
    // What stands at the destination before the job.
    fs::path MakeOld(const std::string& Name, mode_t Mode = 0604) {
        const fs::path path = To / Name;
        WriteFile(path, "old");
        Dress(path, Mode);
        return path;
    }

    // What an entry must not have become.
    fs::path MakeOutside(const std::string& Name) {
        const fs::path path = Room / "outside" / Name;
        WriteFile(path, "contents");
        Dress(path, 0600);
        return path;
    }

    // As a desk notes it that has taken away what others may.
    static MadePrivate NoteOf(const fs::path& Path) {
        struct stat status {};
        EXPECT_EQ(::lstat(Path.c_str(), &status), 0) << Path;
        return {Path.string(), 0664, status.st_mtim, status.st_dev, status.st_ino, S_IFREG | 0640};
    }

    static std::string WithFolder(const fs::path& Path) {
        return StatusText(Path.parent_path()) + ", " + StatusText(Path);
    }
};

TEST_F(FinisherEntries, ChangesWhatWasReplacedAndNothingElse) {
    MakeSource("tree/replaced", 0640);
    MakeSource("tree/not-reached", 0640);
    MakeSource("tree/new", 0640);
    const fs::path replaced = MakeOld("tree/replaced");
    const fs::path notReached = MakeOld("tree/not-reached");
    Dress(To / "tree", 0705);
    Record("tree");
    const std::string before = StatusText(notReached);
    const std::string directory = StatusText(To / "tree");
    WriteFile(replaced, "contents");
    WriteFile(To / "tree/new", "contents");
    SetTimes(To / "tree", {1000000006, 123456789}, {1100000006, 987654321});
    const FinishResult result = Finish();
    EXPECT_EQ(StatusText(replaced), Wanted[replaced]);
    EXPECT_EQ(StatusText(To / "tree/new"), Wanted[To / "tree/new"]);
    EXPECT_EQ(StatusText(notReached), before);
    EXPECT_EQ(StatusText(To / "tree"), directory);
    EXPECT_EQ(result.Finished, 2U);
    ExpectAllFinished(result);
}

TEST_F(FinisherEntries, ChangesADirectoryThatReplacedAFile) {
    MakeSource("tree/file", 0640);
    Dress(From / "tree", 0750);
    MakeOld("tree");
    Record("tree");
    fs::remove(To / "tree");
    Copy("tree");
    ExpectAllFinished(Finish());
    EXPECT_EQ(StatusesOf(To / "tree"), Wanted);
}

TEST_F(FinisherEntries, ChangesWhatWasFoundEqual) {
    MakeSource("equal", 0640);
    const fs::path equal = MakeOld("equal");
    WriteFile(equal, "contents");
    Record("equal");
    Answer("equal", Action::CompareByContent);
    const FinishResult result = Finish();
    EXPECT_EQ(StatusText(equal), Wanted[equal]);
    EXPECT_EQ(result.Finished, 1U);
}

TEST_F(FinisherEntries, LeavesOutWhatWasSkipped) {
    MakeSource("tree/file", 0640);
    MakeSource("tree/folder/inner", 0640);
    MakeSource("tree/gone/inner", 0640);
    Record("tree");
    Copy("tree");
    fs::remove_all(To / "tree/gone");
    Answer("tree/file", Action::Skip);
    Answer("tree/folder", Action::SkipAll);
    Answer("tree/gone", Action::Skip);
    const std::string file = StatusText(To / "tree/file");
    const std::string inner = StatusText(To / "tree/folder/inner");
    const FinishResult result = Finish();
    EXPECT_EQ(StatusText(To / "tree/file"), file);
    EXPECT_EQ(StatusText(To / "tree/folder/inner"), inner);
    EXPECT_EQ(result.Finished, 1U);
    ExpectAllFinished(result);
}

TEST_F(FinisherEntries, FindsWhatGotAnotherName) {
    MakeSource("tree/beside", 0640);
    MakeSource("tree/elsewhere", 0604);
    MakeSource("item", 0600);
    const fs::path beside = MakeOld("tree/beside");
    MakeOld("tree/elsewhere");
    MakeOld("item");
    Record("tree");
    Record("item");
    const Statuses before = StatusesOf(To);
    const fs::path other = To / "tree/beside-2";
    const fs::path far = Room / "far/elsewhere";
    const fs::path item = To / "item-2";
    for (const fs::path& path : {other, far, item}) {
        WriteFile(path, "contents");
    }
    // Even if its times are those of what stood in its way.
    SetTimes(other, {1, 0}, {1100000004, 987654321});
    Answer("tree/beside", Action::Rename, other);
    Answer("tree/elsewhere", Action::Rename, far);
    Answer("item", Action::Rename, item);
    const FinishResult result = Finish();
    EXPECT_EQ(StatusText(other), Wanted[beside]);
    EXPECT_EQ(StatusText(far), Wanted[To / "tree/elsewhere"]);
    EXPECT_EQ(StatusText(item), Wanted[To / "item"]);
    EXPECT_EQ(StatusText(beside), before.at(beside));
    EXPECT_EQ(result.Finished, 3U);
    ExpectAllFinished(result);
}

TEST_F(FinisherEntries, FindsItemsInSeveralFolders) {
    for (const char* folder : {"one", "two", "three"}) {
        for (const char* name : {"/file", "/tree/file"}) {
            MakeSource(std::string(folder) + name, 0640);
        }
        Record(std::string(folder) + "/file");
        Record(std::string(folder) + "/tree");
        Copy(folder);
    }
    const FinishResult result = Finish();
    EXPECT_EQ(result.Finished, 9U);
    for (const auto& [path, status] : Wanted) {
        EXPECT_EQ(StatusText(path), status);
    }
    ExpectAllFinished(result);
}

TEST_F(FinisherEntries, CountsWhatIsGone) {
    MakeSource("tree/file", 0640);
    MakeSource("tree/folder/inner/one", 0640);
    MakeSource("tree/folder/two", 0640);
    MakeSource("item", 0640);
    Record("tree");
    Record("item");
    Copy("tree");
    fs::remove(To / "tree/file");
    fs::remove_all(To / "tree/folder");
    FinishTask task = Task();
    FinishResult result = Finish(task);
    EXPECT_EQ(result.LeftAlone, 3U);
    EXPECT_EQ(result.Finished, 1U);
    EXPECT_EQ(result.Failures, 0U);
    EXPECT_EQ(EntriesDone, Kept.Entries());

    // It was not reached.
    task.bWhole = false;
    result = Finish(task);
    EXPECT_EQ(result.LeftAlone, 0U);
    EXPECT_EQ(result.Finished, 1U);
    ExpectAllFinished(result);
}

TEST_F(FinisherEntries, CountsWhatCannotBeFoundAtAll) {
    MakeSource("file", 0640);
    Record("file");
    MakeSource("tree/file", 0640);
    Record("tree");
    fs::remove_all(To);
    EXPECT_EQ(Finish().LeftAlone, 2U);
}

TEST_F(FinisherEntries, FollowsNoLinkInThePlaceOfAFile) {
    MakeSource("tree/file", 0644);
    Record("tree");
    Copy("tree");
    const fs::path outside = MakeOutside("file");
    fs::remove(To / "tree/file");
    fs::create_symlink(outside, To / "tree/file");
    const std::string before = StatusText(outside);
    const FinishResult result = Finish();
    EXPECT_EQ(StatusText(outside), before);
    EXPECT_EQ(result.LeftAlone, 1U);
    EXPECT_EQ(result.Finished, 1U);
    EXPECT_EQ(result.Failures, 0U);
}

TEST_F(FinisherEntries, FollowsNoLinkInThePlaceOfAFolder) {
    MakeSource("tree/made/file", 0644);
    MakeSource("tree/merged/file", 0644);
    fs::create_directories(To / "tree/merged");
    Record("tree");
    Copy("tree");
    const fs::path outside = MakeOutside("file");
    for (const char* folder : {"tree/made", "tree/merged"}) {
        fs::remove_all(To / folder);
        fs::create_directory_symlink(outside.parent_path(), To / folder);
    }
    const std::string before = WithFolder(outside);
    const FinishResult result = Finish();
    EXPECT_EQ(WithFolder(outside), before);
    EXPECT_EQ(result.LeftAlone, 2U);
    EXPECT_EQ(result.Finished, 0U);
    EXPECT_EQ(result.Failures, 0U);
}

TEST_F(FinisherEntries, FollowsNoLinkInThePlaceOfAnItem) {
    MakeSource("tree/file", 0644);
    Record("tree");
    const fs::path outside = MakeOutside("file");
    fs::create_directory_symlink(outside.parent_path(), To / "tree");
    const std::string before = WithFolder(outside);
    EXPECT_EQ(Finish().LeftAlone, 1U);
    EXPECT_EQ(WithFolder(outside), before);
}

TEST_F(FinisherEntries, GoesThroughTheLinkThatTheJobWentThrough) {
    MakeSource("tree/folder/file", 0640);
    MakeSource("tree/z", 0640);
    fs::create_directories(Room / "outside/folder");
    fs::create_directory_symlink(Room / "outside", To / "tree");
    fs::create_directory_symlink(Room / "outside/folder", Room / "other");
    Record("tree");
    Copy("tree");
    const FinishResult result = Finish();
    EXPECT_EQ(StatusText(Room / "outside/folder/file"), Wanted[To / "tree/folder/file"]);
    EXPECT_EQ(StatusText(Room / "outside/z"), Wanted[To / "tree/z"]);
    EXPECT_EQ(result.Finished, 2U);
    ExpectAllFinished(result);
}

TEST_F(FinisherEntries, GoesThroughNoLinkThatHasChanged) {
    MakeSource("tree/file", 0640);
    fs::create_directory(Room / "before");
    fs::create_directory_symlink(Room / "before", To / "tree");
    Record("tree");
    Copy("tree");
    const fs::path outside = MakeOutside("file");
    fs::remove(To / "tree");
    fs::create_directory_symlink(outside.parent_path(), To / "tree");
    const std::string before = StatusText(outside);
    EXPECT_EQ(Finish().LeftAlone, 1U);
    EXPECT_EQ(StatusText(outside), before);
}

TEST_F(FinisherEntries, ChangesTheFileThatReplacedALink) {
    MakeSource("replaced", 0640);
    MakeSource("kept", 0640);
    const fs::path outside = MakeOutside("file");
    fs::create_symlink(outside, To / "replaced");
    fs::create_symlink(outside, To / "kept");
    Record("replaced");
    Record("kept");
    fs::remove(To / "replaced");
    Copy("replaced");
    // Even if its times are those of what the link led to.
    SetTimes(To / "replaced", {1000000003, 0}, {1100000003, 987654321});
    const std::string before = StatusText(outside);
    const FinishResult result = Finish();
    EXPECT_EQ(StatusText(To / "replaced"), Wanted[To / "replaced"]);
    EXPECT_EQ(StatusText(outside), before);
    EXPECT_EQ(result.Finished, 1U);
    ExpectAllFinished(result);
}

// Who may write there could have put the name of another's file in its place.
TEST_F(FinisherEntries, LeavesAFileOfSeveralNamesAlone) {
    MakeSource("file", 0666);
    Record("file");
    const fs::path outside = MakeOutside("file");
    fs::create_hard_link(outside, To / "file");
    const std::string before = StatusText(outside);
    EXPECT_EQ(Finish().LeftAlone, 1U);
    EXPECT_EQ(StatusText(outside), before);
}

TEST_F(FinisherEntries, LeavesAnotherKindAlone) {
    MakeSource("tree/file", 0640);
    MakeSource("tree/folder/file", 0640);
    Record("tree");
    fs::create_directories(To / "tree/file");
    WriteFile(To / "tree/folder", "contents");
    const std::string before = StatusText(To / "tree/folder");
    const FinishResult result = Finish();
    EXPECT_EQ(result.LeftAlone, 2U);
    EXPECT_EQ(StatusText(To / "tree/folder"), before);
    EXPECT_TRUE(fs::is_directory(To / "tree/file"));
}

TEST_F(FinisherEntries, GivesBackTheModeOfWhatWasNotReplaced) {
    FinishTask task = [&] {
        for (const char* name : {"replaced", "kept", "equal", "put-there"}) {
            MakeSource(std::string("tree/") + name, 0640);
            MakeOld(std::string("tree/") + name, 0600);
        }
        Record("tree");
        return Task();
    }();
    for (const fs::path& old : ListingOf(To / "tree")) {
        task.Privates.push_back(NoteOf(old));
    }
    WriteFile(To / "tree/replaced", "contents");
    WriteFile(To / "tree/equal", "contents");
    SetTimes(To / "tree/equal", {1000000006, 0}, {1100000006, 987654321});
    for (MadePrivate& each : task.Privates) {
        if (each.Path == To / "tree/equal") {
            each.Modified = {1100000006, 987654321};
        }
    }
    Answer("tree/equal", Action::CompareByContent);
    // Another file with the same times.
    const fs::path outside = MakeOutside("file");
    for (const MadePrivate& each : task.Privates) {
        if (each.Path == To / "tree/put-there") {
            SetTimes(outside, each.Modified, each.Modified);
        }
    }
    fs::rename(outside, To / "tree/put-there");
    task.bWhole = false;
    const FinishResult result = Finish(task);
    EXPECT_EQ(ModeOf(To / "tree/kept"), 0664U);
    EXPECT_EQ(ModeOf(To / "tree/put-there"), 0600U);
    EXPECT_EQ(StatusText(To / "tree/replaced"), Wanted[To / "tree/replaced"]);
    EXPECT_EQ(StatusText(To / "tree/equal"), Wanted[To / "tree/equal"]);
    EXPECT_EQ(result.Finished, 2U);
    ExpectAllFinished(result);
}

// The times of a file system may be too coarse to show that it was replaced.
TEST_F(FinisherEntries, GivesNoModeBackToWhatASuccessfulJobHasReplaced) {
    MakeSource("file", 0600);
    const fs::path file = MakeOld("file", 0600);
    Record("file");
    FinishTask task = Task();
    task.Privates = {NoteOf(file)};
    Finish(task);
    EXPECT_EQ(ModeOf(file), 0600U);
}

TEST_F(FinisherEntries, FinishesWhatASuccessfulJobHasReplacedAtTheSameTime) {
    MakeSource("file", 0644);
    const fs::path file = MakeOld("file", 0600);
    Record("file");
    FinishTask task = Task();
    task.Privates = {NoteOf(file)};
    const FinishResult result = Finish(task);
    EXPECT_EQ(StatusText(file), Wanted[file]);
    EXPECT_EQ(result.Finished, 1U);
}

TEST_F(FinisherEntries, GivesBackTheModeOfWhatHasNoRecord) {
    fs::create_directory(From / "tree");
    Record("tree");
    FinishTask task = Task();
    for (const char* name : {"replaced", "kept", "put-there"}) {
        task.Privates.push_back(NoteOf(MakeOld(std::string("tree/") + name, 0600)));
    }
    WriteFile(To / "tree/replaced", "contents");
    fs::rename(MakeOutside("file"), To / "tree/put-there");
    task.bWhole = false;
    ExpectAllFinished(Finish(task));
    EXPECT_EQ(ModeOf(To / "tree/replaced"), 0640U);
    EXPECT_EQ(ModeOf(To / "tree/kept"), 0664U);
    EXPECT_EQ(ModeOf(To / "tree/put-there"), 0600U);
}

TEST_F(FinisherEntries, TakesWhatHasNoRecordForReplacedByASuccessfulJob) {
    const fs::path file = MakeOld("file", 0600);
    FinishTask task = Task();
    task.Privates = {NoteOf(file)};
    ExpectAllFinished(Finish(task));
    EXPECT_EQ(ModeOf(file), 0640U);
}

TEST_F(FinisherEntries, LeavesDirectoriesOpenToASecondRun) {
    MakeSource("tree/folder/there", 0400);
    MakeSource("tree/folder/missing", 0400);
    Dress(From / "tree/folder", 0555);
    Dress(From / "tree", 02070);
    Record("tree");
    Copy("tree");
    fs::remove(To / "tree/folder/missing");
    FinishTask task = Task();
    task.bWhole = false;
    const FinishResult result = Finish(task);
    EXPECT_EQ(ModeOf(To / "tree/folder"), 0755U);
    EXPECT_EQ(ModeOf(To / "tree"), 02770U);
    EXPECT_EQ(StatusText(To / "tree/folder/there"), Wanted[To / "tree/folder/there"]);
    EXPECT_EQ(result.Finished, 3U);
    ExpectAllFinished(result);
}

} // namespace
