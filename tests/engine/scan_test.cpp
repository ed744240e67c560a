// Counting what an item comprises before anything is copied.

#include "engine_source.h"

#include "engine_hooks.h"
#include "mounts.h"
#include "no_descriptors_left.h"
#include "transfer_fixture.h"

namespace {

std::error_code IoError() {
    return std::make_error_code(std::errc::io_error);
}

class Scan : public TransferTest {
protected:
    bool Run(const fs::path& Source) {
        return ScanTransferPath(Directory / Source, Job, Totals, Message);
    }

    Counted Counts() const { return {Totals.ItemCount, Totals.ByteCount}; }

    TransferTotals Totals;
};

TEST_F(Scan, CountsADirectoryWithTwoFilesAndASubdirectoryAsFourItems) {
    WriteFile(Directory / "tree/ten", "0123456789");
    WriteFile(Directory / "tree/twenty", "01234567890123456789");
    fs::create_directory(Directory / "tree/sub");
    EXPECT_TRUE(Run("tree"));
    EXPECT_EQ(Counts(), (Counted{4, 30}));
    EXPECT_EQ(Message, "a message from before");
}

// No copy could open it by its path.
TEST_F(Scan, FailsForAFileWhosePathIsTooLong) {
    const std::string name(200, 'n');
    fs::create_directory(Directory / "tree");
    int level = ::open((Directory / "tree").c_str(), O_RDONLY | O_DIRECTORY);
    for (int i = 0; i < 21; ++i) {
        ASSERT_EQ(::mkdirat(level, name.c_str(), 0755), 0);
        const int below = ::openat(level, name.c_str(), O_RDONLY | O_DIRECTORY);
        ::close(level);
        level = below;
    }
    EXPECT_TRUE(Run("tree"));
    EXPECT_EQ(Counts(), (Counted{22, 0}));
    ::close(::openat(level, "file", O_WRONLY | O_CREAT, 0644));
    ::close(level);
    EXPECT_FALSE(Run("tree"));
    EXPECT_EQ(Message, "File name too long");
}

TEST_F(Scan, CountsWhatIsFurtherDown) {
    WriteFile(Directory / "tree/a/b/c/ten", "0123456789");
    EXPECT_TRUE(Run("tree"));
    EXPECT_EQ(Counts(), (Counted{5, 10}));
}

TEST_F(Scan, CountsNothingAsDone) {
    WriteFile(Directory / "tree/ten", "0123456789");
    EXPECT_TRUE(Run("tree"));
    EXPECT_EQ(DoneBy(Job), Counted{});
}

TEST_F(Scan, CountsAFileWithItsSize) {
    WriteFile(Directory / "ten", "0123456789");
    EXPECT_TRUE(Run("ten"));
    EXPECT_EQ(Counts(), (Counted{1, 10}));
    EXPECT_EQ(Job.MakeUiSnapshot().PathText, "Current: " + (Directory / "ten").string());
}

TEST_F(Scan, CountsSizesBeyondFourGigabytes) {
    WriteFile(Directory / "tree/huge", "");
    fs::resize_file(Directory / "tree/huge", 5000000000000);
    EXPECT_TRUE(Run("tree"));
    EXPECT_EQ(Counts(), (Counted{2, 5000000000000}));
}

TEST_F(Scan, ShowsEachEntryAsTheCurrentPath) {
    WriteFile(Directory / "tree/file", "x");
    EXPECT_TRUE(Run("tree"));
    const TarvaneTransferUiSnapshot snapshot = Job.MakeUiSnapshot();
    EXPECT_EQ(snapshot.PathText, "Current: " + (Directory / "tree/file").string());
    EXPECT_EQ(snapshot.CurrentFileTotalBytes, 0U);
}

TEST_F(Scan, DoesNotFollowALinkGivenByItself) {
    WriteFile(Directory / "tree/ten", "0123456789");
    fs::create_directory_symlink("tree", Directory / "to-folder");
    fs::create_symlink("tree/ten", Directory / "to-file");
    for (const char* link : {"to-folder", "to-file"}) {
        EXPECT_TRUE(Run(link));
        EXPECT_EQ(Counts(), (Counted{1, 0})) << link;
    }
}

TEST_F(Scan, CountsALinkToAFileInADirectoryWithTheSizeOfTheFile) {
    WriteFile(Directory / "ten", "0123456789");
    fs::create_directory(Directory / "tree");
    fs::create_symlink("../ten", Directory / "tree/link");
    EXPECT_TRUE(Run("tree"));
    EXPECT_EQ(Counts(), (Counted{2, 10}));
}

TEST_F(Scan, CountsALinkToADirectoryInADirectoryAsOneEntry) {
    WriteFile(Directory / "other/ten", "0123456789");
    fs::create_directory(Directory / "tree");
    fs::create_directory_symlink("../other", Directory / "tree/link");
    fs::create_directory_symlink("..", Directory / "tree/up");
    EXPECT_TRUE(Run("tree"));
    EXPECT_EQ(Counts(), (Counted{3, 0}));
}

TEST_F(Scan, CountsSpecialEntriesWithoutBytes) {
    fs::create_directory(Directory / "tree");
    MakeFifo(Directory / "tree/fifo");
    MakeSocket(Directory / "tree/socket");
    fs::create_symlink("/dev/null", Directory / "tree/device");
    EXPECT_TRUE(Run("tree"));
    EXPECT_EQ(Counts(), (Counted{4, 0}));
    EXPECT_TRUE(Run("tree/fifo"));
    EXPECT_EQ(Counts(), (Counted{1, 0}));
}

TEST_F(Scan, FailsForAMissingSource) {
    EXPECT_FALSE(Run("missing"));
    EXPECT_EQ(Message, "Source does not exist.");
    EXPECT_EQ(Job.MakeUiSnapshot().PathText, "Current: Waiting...");
}

TEST_F(Scan, FailsForADanglingLink) {
    fs::create_symlink("nowhere", Directory / "link");
    EXPECT_FALSE(Run("link"));
    EXPECT_EQ(Message, "Source does not exist.");
}

TEST_F(Scan, FailsForASourceThatCannotBeLookedAt) {
    fs::create_symlink("loop", Directory / "loop");
    EXPECT_FALSE(Run("loop"));
    EXPECT_EQ(Message, "Source does not exist.");
}

TEST_F(Scan, FailsForADanglingLinkInADirectoryWithTheSystemTextAlone) {
    fs::create_directory(Directory / "tree");
    fs::create_symlink("nowhere", Directory / "tree/link");
    EXPECT_FALSE(Run("tree"));
    EXPECT_EQ(Message, "No such file or directory");
}

TEST_F(Scan, FailsForALinkToItselfInADirectoryWithTheSystemTextAlone) {
    fs::create_directory(Directory / "tree");
    fs::create_symlink("loop", Directory / "tree/loop");
    EXPECT_FALSE(Run("tree"));
    EXPECT_EQ(Message, "Too many levels of symbolic links");
}

TEST_F(Scan, CountsASubdirectoryThatMayNotBeReadAsOneItem) {
    WriteFile(Directory / "tree/locked/file", "secret");
    fs::permissions(Directory / "tree/locked", fs::perms::none);
    const ActingAsNobody nobody;
    EXPECT_TRUE(Run("tree"));
    EXPECT_EQ(Counts(), (Counted{2, 0}));
    EXPECT_TRUE(Run("tree/locked"));
    EXPECT_EQ(Counts(), (Counted{1, 0}));
}

TEST_F(Scan, FailsForADirectoryThatCannotBeOpenedWithTheSystemTextAlone) {
    fs::create_directory(Directory / "tree");
    const fs::path tree = Directory / "tree";
    TarvaneTransferJob job(false, 1, "");
    std::string message;
    bool result = true;
    {
        const NoDescriptorsLeft limit;
        TransferTotals totals;
        result = ScanTransferPath(tree, job, totals, message);
    }
    EXPECT_FALSE(result);
    EXPECT_EQ(message, "Too many open files");
}

TEST_F(Scan, FailsForAListingThatFailsWithTheSystemTextAlone) {
    WriteFile(Directory / "tree/a", "x");
    WriteFile(Directory / "tree/b", "x");
    EngineHooks hooks;
    hooks.Advance = [](const fs::path&) { return IoError(); };
    EXPECT_FALSE(Run("tree"));
    EXPECT_EQ(Message, "Input/output error");
}

TEST_F(Scan, FailsForASizeThatCannotBeReadWithTheSystemTextAlone) {
    WriteFile(Directory / "tree/file", "x");
    EngineHooks hooks;
    hooks.FileSize = [](const fs::path&) { return IoError(); };
    hooks.EntryStatus = [](const fs::path&) { return IoError(); };
    for (const char* source : {"tree", "tree/file"}) {
        Message.clear();
        EXPECT_FALSE(Run(source));
        EXPECT_EQ(Message, "Input/output error") << source;
    }
}

TEST_F(Scan, FailsWithoutATextWhenItCannotTellALink) {
    WriteFile(Directory / "file", "x");
    EngineHooks hooks;
    hooks.SymlinkStatus = [](const fs::path&) { return IoError(); };
    Message.clear();
    EXPECT_FALSE(Run("file"));
    EXPECT_EQ(Message, "");
}

// It was seen to exist before.
TEST_F(Scan, FailsForASourceThatCannotBeLookedAtAgainWithTheSystemTextAlone) {
    WriteFile(Directory / "file", "x");
    EngineHooks hooks;
    int looks = 0;
    hooks.Status = [&](const fs::path&) {
        return ++looks == 1 ? std::error_code()
                            : std::make_error_code(std::errc::permission_denied);
    };
    EXPECT_FALSE(Run("file"));
    EXPECT_EQ(Message, "Permission denied");
}

} // namespace
