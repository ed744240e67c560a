// Names that are taken at the destination, at any depth: what the choices will do about them is
// told before the job, and a refusal ends the run before anything is touched.

#include "mounts.h"
#include "needs.h"
#include "preflight_fixture.h"

#include <cstdint>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

const Strings kNothing;
constexpr std::int64_t kOldTime = 1000000000;
constexpr std::int64_t kNewTime = 1700000000;

class PreflightNames : public PreflightTest {
protected:
    PreflightNames() {
        fs::create_directories(From / "tree/sub");
        fs::create_directories(To / "tree/sub");
        PlanToCopy({{From / "tree", To / "tree"}});
    }

    void Choose(FileConflictChoice Choice) { Rules.ForFiles = Choice; }

    // One name below both trees.
    void Put(const std::string& Name, const std::string& Source, const std::string& Destination) {
        WriteFile(From / "tree/sub" / Name, Source);
        WriteFile(To / "tree/sub" / Name, Destination);
    }

    void PutOnTimes(const std::string& Name, std::int64_t Source, std::int64_t Destination) {
        Put(Name, "1", "2");
        SetModifiedTime(From / "tree/sub" / Name, Source);
        SetModifiedTime(There(Name), Destination);
    }

    std::string ReasonOf(const PreflightResult& Result) const {
        return Result.Findings.Count() == 1 ? Result.Findings.Kept().front().Reason : "not one";
    }
    fs::path There(const std::string& Name) const { return To / "tree/sub" / Name; }
};

// A file that is skipped need not be looked at, but this one would be copied onto itself.
TEST_F(PreflightNames, AreSeenToBeOtherNamesOfTheSourceItself) {
    Put("other", "1", "2");
    WriteFile(From / "tree/sub/same", "1");
    fs::create_hard_link(From / "tree/sub/same", There("same"));
    Choose(FileConflictChoice::Skip);
    for (const PreflightScope scope : {PreflightScope::Everything, PreflightScope::Findings}) {
        Scope = scope;
        const PreflightResult result = Look();
        EXPECT_EQ(InWords(result), Strings{"source-is-destination from/tree/sub/same, stops"});
        EXPECT_EQ(result.Taken.Skipped, 1U);
        EXPECT_EQ(result.SkippedEntries, 1U);
    }
}

TEST_F(PreflightNames, AreCountedByWhatBecomesOfThem) {
    PutOnTimes("old", kOldTime, kNewTime);
    PutOnTimes("new", kNewTime, kOldTime);
    PutOnTimes("newer", kNewTime, kOldTime);
    WriteFile(From / "tree/sub/free", "1");
    Choose(FileConflictChoice::Older);
    const PreflightResult older = Look();
    EXPECT_EQ(InWords(older), kNothing);
    EXPECT_EQ(older.Taken.Replaced, 2U);
    EXPECT_EQ(older.Taken.Skipped, 1U);
    EXPECT_EQ(older.Entries, 6U);
    EXPECT_EQ(older.CopiedEntries, 5U);
    EXPECT_EQ(older.SkippedEntries, 1U);
    EXPECT_EQ(older.SkippedBytes, 1U);
    Choose(FileConflictChoice::KeepBoth);
    EXPECT_EQ(Look().Taken.Renamed, 3U);
    Choose(FileConflictChoice::Compare);
    EXPECT_EQ(Look().Taken.Compared, 3U);
    Choose(FileConflictChoice::Ask);
    // Both directories too.
    EXPECT_EQ(Look().Taken.Asked, 5U);
}

TEST_F(PreflightNames, AreDecidedBySize) {
    Put("larger", "123", "12");
    Put("smaller", "1", "12");
    Put("equal", "12", "34");
    Choose(FileConflictChoice::Larger);
    EXPECT_EQ(Look().Taken.Replaced, 1U);
    Choose(FileConflictChoice::SizeDiffers);
    EXPECT_EQ(Look().Taken.Replaced, 2U);
    EXPECT_EQ(Look().Taken.Skipped, 1U);
}

TEST_F(PreflightNames, AreAllFoundWhereTheyFail) {
    for (int number = 0; number < 14; ++number) {
        Put(std::to_string(number), "1", "2");
    }
    Choose(FileConflictChoice::Fail);
    const PreflightResult result = Look();
    EXPECT_EQ(result.Findings.Count(PreflightFindingKind::TakenName), 14U);
    EXPECT_EQ(result.Taken.Refused, 14U);
    EXPECT_TRUE(result.Findings.AnyStopsJob());
    const std::string path = result.Findings.Kept().front().Path.string();
    EXPECT_TRUE(path.starts_with(There("").string())) << path;
    EXPECT_EQ(result.Findings.Kept().front().Reason, "cannot create '" + path + "': File exists");
}

TEST_F(PreflightNames, OfDirectoriesFailWhereDirectoriesDo) {
    Rules.ForDirectories = DirectoryConflictChoice::Fail;
    const PreflightResult result = Look();
    EXPECT_EQ(InWords(result), Strings{"taken-name to/tree, stops"});
    EXPECT_EQ(ReasonOf(result), "cannot create '" + (To / "tree").string() + "': File exists");
}

TEST_F(PreflightNames, InADirectoryThatIsSkippedAreNotTaken) {
    Put("file", "12345", "2");
    MakeFifo(From / "tree/sub/pipe");
    Rules.ForDirectories = DirectoryConflictChoice::Skip;
    Choose(FileConflictChoice::Fail);
    const PreflightResult result = Look();
    EXPECT_EQ(InWords(result), kNothing);
    EXPECT_EQ(result.Taken.Skipped, 1U);
    EXPECT_EQ(result.Entries, 4U);
    EXPECT_EQ(result.SkippedEntries, 4U);
    EXPECT_EQ(result.SkippedBytes, 5U);
    EXPECT_EQ(result.CopiedEntries, 0U);
}

// The job counts what it skips, and ends at what it cannot count.
TEST_F(PreflightNames, InADirectoryThatIsSkippedDoNotHideALinkThatLeadsNowhere) {
    fs::create_symlink("missing", From / "tree/sub/link");
    Rules.ForDirectories = DirectoryConflictChoice::Skip;
    EXPECT_EQ(Found(), Strings{"dangling-link from/tree/sub/link, stops"});
    EXPECT_EQ(TransferMessage(), "No such file or directory");
}

TEST_F(PreflightNames, OfUnequalKindsAreRefusedAtAnyDepth) {
    WriteFile(From / "tree/sub/file", "1");
    fs::create_directory(There("file"));
    fs::create_directory(From / "tree/sub/directory");
    WriteFile(There("directory"), "1");
    EXPECT_EQ(Found(), (Strings{"unequal-kinds to/tree/sub/directory, stops",
                                "unequal-kinds to/tree/sub/file, stops"}));
    Choose(FileConflictChoice::Skip);
    EXPECT_EQ(Found(), kNothing);
    EXPECT_EQ(Look().Taken.Skipped, 2U);
    Choose(FileConflictChoice::KeepBoth);
    EXPECT_EQ(Found(), Strings{"unequal-kinds to/tree/sub/directory, stops"});
    Choose(FileConflictChoice::Ask);
    EXPECT_EQ(Found(), kNothing);
}

TEST_F(PreflightNames, OfADirectoryThatHoldsItsReplacementAreRefused) {
    WriteFile(From / "x/x", "1");
    PlanToCopy({{From / "x/x", From / "x"}});
    const PreflightResult result = Look();
    EXPECT_EQ(InWords(result), Strings{"destination-holds-source from/x, stops"});
}

// The engine posts no conflict about it, so it is refused whoever could be asked.
TEST_F(PreflightNames, OfLinksThatLeadNowhereAreRefused) {
    WriteFile(From / "tree/sub/file", "1");
    fs::create_symlink(Room / "elsewhere", There("file"));
    for (const FileConflictChoice choice :
         {FileConflictChoice::Overwrite, FileConflictChoice::Skip, FileConflictChoice::KeepBoth,
          FileConflictChoice::Ask}) {
        Choose(choice);
        const PreflightResult result = Look();
        EXPECT_EQ(InWords(result), Strings{"dangling-destination to/tree/sub/file, stops"});
        EXPECT_EQ(ReasonOf(result),
                  "not writing through dangling symlink '" + There("file").string() + "'");
    }
    Rules.bFollowLinks = true;
    EXPECT_EQ(Found(), kNothing);
    EXPECT_EQ(TransferMessage(), "Copied 1 item(s).");
    EXPECT_EQ(ReadFile(Room / "elsewhere"), "1");
}

TEST_F(PreflightNames, OfSpecialEntriesAreNeverReplaced) {
    WriteFile(From / "tree/sub/file", "1");
    fs::create_directory(From / "tree/sub/directory");
    MakeFifo(There("file"));
    MakeFifo(There("directory"));
    EXPECT_EQ(Found(), (Strings{"special-destination to/tree/sub/directory, stops",
                                "special-destination to/tree/sub/file, stops"}));
    Choose(FileConflictChoice::Skip);
    EXPECT_EQ(Found(), kNothing);
}

TEST_F(PreflightNames, OfLinksToDirectoriesAreNotEntered) {
    fs::create_directory(Room / "elsewhere");
    fs::remove(To / "tree/sub");
    fs::create_symlink(Room / "elsewhere", To / "tree/sub");
    const PreflightResult result = Look();
    EXPECT_EQ(InWords(result), Strings{"link-at-destination to/tree/sub, stops"});
    EXPECT_EQ(ReasonOf(result), "not writing through symlink '" + (To / "tree/sub").string() +
                                    "' to directory '" + (Room / "elsewhere").string() +
                                    "'; pass --follow-links to allow it");
    Choose(FileConflictChoice::Ask);
    EXPECT_EQ(Found(), kNothing);
    Choose(FileConflictChoice::Overwrite);
    Rules.bFollowLinks = true;
    EXPECT_EQ(Found(), kNothing);
}

TEST_F(PreflightNames, OfTheDestinationThatTheUserNamedMayBeALink) {
    fs::create_symlink(To / "tree", Room / "named");
    PlanToCopy({{From / "tree", Room / "named"}});
    Rules.NamedDestination = Room / "named";
    EXPECT_EQ(Found(), kNothing);
    Rules.NamedDestination = Room.Path();
    EXPECT_EQ(Found(), Strings{"link-at-destination named, stops"});
}

// The link itself makes room for the file, so what it leads to does not count.
TEST_F(PreflightNames, OfLinksToFilesAreReplaced) {
    WriteFile(From / "tree/sub/file", "1");
    WriteFile(Room / "elsewhere", "2");
    fs::permissions(Room / "elsewhere", fs::perms::owner_read);
    fs::create_symlink(Room / "elsewhere", There("file"));
    fs::permissions(To / "tree/sub", fs::perms::all);
    const ActingAsNobody nobody;
    const PreflightResult result = Look();
    EXPECT_EQ(InWords(result), kNothing);
    EXPECT_EQ(result.Taken.Replaced, 1U);
    Rules.bFollowLinks = true;
    EXPECT_EQ(Found(), Strings{"unwritable-file to/tree/sub/file, stops"});
}

TEST_F(PreflightNames, OfAnItemMayBeALinkThatLeadsNowhere) {
    WriteFile(From / "file", "1");
    fs::create_symlink(Room / "elsewhere", To / "file");
    PlanToMove({{From / "file", To / "file"}});
    EXPECT_EQ(Found(), Strings{"dangling-destination to/file, stops"});
}

TEST_F(PreflightNames, OfADirectoryCannotBeALinkThatLeadsNowhere) {
    fs::remove(To / "tree/sub");
    fs::create_symlink(Room / "elsewhere", To / "tree/sub");
    Rules.bFollowLinks = true;
    EXPECT_EQ(Found(), Strings{"dangling-destination to/tree/sub, stops"});
    EXPECT_EQ(TransferMessage(), "Failed to create destination directory: File exists");
}

TEST_F(PreflightNames, ThatAreTheirOwnSourceAreFoundAtAnyDepth) {
    WriteFile(From / "tree/sub/file", "1");
    fs::create_hard_link(From / "tree/sub/file", There("file"));
    Choose(FileConflictChoice::Skip);
    EXPECT_EQ(Found(), Strings{"source-is-destination from/tree/sub/file, stops"});
    EXPECT_EQ(TransferMessage(), "Source and destination are the same path.");
}

TEST_F(PreflightNames, OfDirectoriesThatAreTheirOwnSourceAreFoundAtAnyDepth) {
    fs::remove(To / "tree/sub");
    fs::create_symlink(From / "tree/sub", To / "tree/sub");
    Rules.bFollowLinks = true;
    EXPECT_EQ(Found(), Strings{"source-is-destination from/tree/sub, stops"});
    EXPECT_EQ(TransferMessage(), "Source and destination are the same path.");
}

TEST_F(PreflightNames, OfADirectoryThatALinkLeadsIntoTheSourceAreFound) {
    fs::create_directories(From / "tree/sub/inner");
    fs::remove(To / "tree/sub");
    fs::create_symlink(From / "tree/sub/inner", To / "tree/sub");
    Rules.bFollowLinks = true;
    EXPECT_EQ(Found(), Strings{"destination-inside-source from/tree/sub, stops"});
    EXPECT_EQ(TransferMessage(), "Destination cannot be inside the source directory.");
}

TEST_F(PreflightNames, OfAPipeThatIsSkippedDoNotStopTheJob) {
    MakeFifo(From / "tree/sub/pipe");
    WriteFile(There("pipe"), "1");
    Choose(FileConflictChoice::Skip);
    EXPECT_EQ(Found(), kNothing);
    Choose(FileConflictChoice::Overwrite);
    EXPECT_EQ(Found(), Strings{"special-entry from/tree/sub/pipe, stops"});
}

TEST_F(PreflightNames, OfAPipeDoNotMakeRoomForIt) {
    MakeFifo(From / "tree/sub/pipe");
    fs::create_directory_symlink("elsewhere", There("pipe"));
    fs::create_directory(To / "tree/sub/elsewhere");
    Choose(FileConflictChoice::Overwrite);
    EXPECT_EQ(Found(), Strings{"special-entry from/tree/sub/pipe, stops"});
}

TEST_F(PreflightNames, OfTheWholeDestinationMayHaveToBeMade) {
    WriteFile(From / "file", "1");
    PlanToCopy({{From / "file", To / "a/b/file"}, {From / "tree", To / "a/b/tree"}});
    const PreflightResult result = Look();
    EXPECT_EQ(InWords(result), Strings{"made-directory to/a/b"});
    EXPECT_FALSE(result.Findings.AnyStopsJob());
    PlanToCopy({{From / "tree", To / "new"}});
    EXPECT_EQ(Found(), kNothing);
}

TEST_F(PreflightNames, AreNotLookedForInADestinationThatIsNew) {
    PlanToCopy({{From / "tree", To / "new"}});
    WriteFile(From / "tree/sub/file", "1");
    Choose(FileConflictChoice::Fail);
    EXPECT_EQ(Found(), kNothing);
}

// What the count of the job leaves out.
TEST_F(PreflightNames, BehindFollowedLinksAddToTheTotals) {
    WriteFile(Room / "outside/a", "12345");
    WriteFile(Room / "outside/b", "123");
    WriteFile(From / "tree/file", "1");
    fs::create_symlink(Room / "outside", From / "tree/link");
    fs::create_symlink(Room / "outside/a", From / "file-link");
    fs::create_directory(To / "tree/link");
    WriteFile(To / "tree/link/b", "123");
    PlanToCopy({{From / "tree", To / "tree"}, {From / "file-link", To / "file-link"}});
    Rules.ForFiles = FileConflictChoice::Skip;
    Rules.bFollowLinks = true;
    const PreflightResult result = Look();
    EXPECT_EQ(result.Entries, 5U);
    EXPECT_EQ(result.Bytes, 1U);
    EXPECT_EQ(result.FollowedEntries, 2U);
    EXPECT_EQ(result.FollowedBytes, 13U);
    EXPECT_EQ(result.CopiedEntries, 6U);
    EXPECT_EQ(result.CopiedBytes, 11U);
}

// A look for guards goes only where there is something to guard.
class PreflightGuards : public PreflightNames {
protected:
    PreflightGuards() { Scope = PreflightScope::GuardsOnly; }
};

TEST_F(PreflightGuards, FindRefusedNamesAtAnyDepth) {
    Put("file", "1", "2");
    fs::create_symlink("missing", There("free"));
    WriteFile(From / "tree/sub/free", "1");
    Choose(FileConflictChoice::Fail);
    EXPECT_EQ(Found(), (Strings{"dangling-destination to/tree/sub/free, stops",
                                "taken-name to/tree/sub/file, stops"}));
    EXPECT_FALSE(Look().bComplete);
}

TEST_F(PreflightGuards, SayNothingOfWhatOnlyInforms) {
    MakeFifo(From / "tree/sub/pipe");
    fs::create_symlink("missing", From / "tree/sub/link");
    PlanToCopy({{From / "tree", To / "tree"}, {From / "tree", To / "a/b/new"}});
    EXPECT_EQ(Found(), kNothing);
}

TEST_F(PreflightGuards, DoNotWalkThroughWhatIsNewOrRenamed) {
    WriteFile(From / "tree/sub/file", "1");
    PlanToCopy({{From / "tree", To / "new"}});
    Look();
    // Where something may not be readable that has to be found out.
    const std::uint64_t all = 3;
    EXPECT_EQ(Control.EntriesSeen, geteuid() == 0 ? 1U : all);
    Control.EntriesSeen = 0;
    PlanToMove({{From / "tree", To / "new"}});
    Look();
    EXPECT_EQ(Control.EntriesSeen, 1U);
}

TEST_F(PreflightGuards, FollowLinksOfAMoveWhereverItCopies) {
    WriteFile(Room / "outside/file", "1");
    fs::create_directory(From / "tree/sub/new");
    fs::create_symlink(Room / "outside", From / "tree/sub/new/link");
    PlanToMove({{From / "tree", To / "tree"}});
    const PreflightResult result = Look();
    EXPECT_EQ(InWords(result), Strings{"link-to-directory-on-move from/tree/sub/new/link"});
    EXPECT_TRUE(result.bRemovesUnselected);
    EXPECT_EQ(TransferMessage(), "Moved 1 item(s).");
    EXPECT_FALSE(fs::exists(Room / "outside/file"));
}

} // namespace
