// Files that are copied into a folder which the copy has made itself, where nothing is expected to
// stand: they are opened as new files, without a look before.

#include "engine_source.h"

#include "engine_hooks.h"
#include "mounts.h"
#include "transfer_fixture.h"

namespace {

using Policy = TarvaneTransferConflictPolicy;
using Result = TransferCopyResult;

class NewFolder : public TransferTest {
protected:
    // Runs AtCopy when the engine is about to copy from/file, its folder being made and listed.
    Result RunWith(const std::function<void()>& AtCopy, bool bMove = kCopy,
                   Policy WithPolicy = Policy::Overwrite) {
        WriteFile(From / "file", "new");
        Hooks.PathMet = [&](const std::string& path) {
            if (path == (From / "file").string()) {
                AtCopy();
            }
        };
        return CopyPathWithProgress(From, To, Job, WithPolicy, bMove, Message);
    }

    const fs::path From = Directory / "from";
    const fs::path To = Directory / "to";
    EngineHooks Hooks;
};

TEST_F(NewFolder, IsNotLookedIntoBeforeAFileIsMade) {
    std::vector<fs::path> asked;
    Hooks.Status = [&](const fs::path& path) {
        asked.push_back(path);
        return std::error_code();
    };
    EXPECT_EQ(RunWith([&] { asked.clear(); }), Result::Succeeded);
    // Of the file that is open: which device it is on.
    EXPECT_EQ(asked, std::vector{To / "file"});
    EXPECT_EQ(ReadFile(To / "file"), "new");
    EXPECT_EQ(DoneBy(Job), (Counted{2, 3}));
}

TEST_F(NewFolder, LeavesWhatAppearedInItToThePolicy) {
    EXPECT_EQ(RunWith([this] { WriteFile(To / "file", "someone's"); }, kMove, Policy::Skip),
              Result::Succeeded);
    EXPECT_EQ(ReadFile(To / "file"), "someone's");
    EXPECT_EQ(ReadFile(From / "file"), "new");
    EXPECT_EQ(SkippedBy(Job), (Counted{1, 3}));
}

TEST_F(NewFolder, OverwritesWhatAppearedInItWhereThatIsThePolicy) {
    EXPECT_EQ(RunWith([this] { WriteFile(To / "file", "someone's"); }), Result::Succeeded);
    EXPECT_EQ(ReadFile(To / "file"), "new");
    EXPECT_EQ(DoneBy(Job), (Counted{2, 3}));
}

// As anywhere: through the link.
TEST_F(NewFolder, WritesThroughALinkThatAppearedInIt) {
    WriteFile(Directory / "linked", "old");
    EXPECT_EQ(RunWith([this] { fs::create_symlink("../linked", To / "file"); }), Result::Succeeded);
    EXPECT_EQ(ReadFile(Directory / "linked"), "new");
    EXPECT_TRUE(fs::is_symlink(To / "file"));
}

TEST_F(NewFolder, IsMadeAgainWhereItWasTakenAway) {
    EXPECT_EQ(RunWith([this] { fs::remove_all(To); }), Result::Succeeded);
    EXPECT_EQ(ReadFile(To / "file"), "new");
}

TEST_F(NewFolder, StaysEmptyWhereTheSourceCannotBeOpened) {
    EXPECT_EQ(RunWith([this] { fs::remove(From / "file"); }), Result::Failed);
    EXPECT_EQ(Message, "Failed to open source file.");
    EXPECT_TRUE(fs::is_empty(To));
}

TEST_F(NewFolder, StaysEmptyAfterACancel) {
    EXPECT_EQ(RunWith([this] { Job.RequestCancel(); }), Result::Failed);
    EXPECT_EQ(Message, "Transfer canceled.");
    EXPECT_TRUE(fs::is_empty(To));
    EXPECT_EQ(DoneBy(Job), (Counted{1, 0}));
    EXPECT_EQ(Job.MakeUiSnapshot().PathText, "Current: " + From.string());
}

} // namespace
