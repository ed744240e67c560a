// Copying and moving one path of any kind, directories with everything in them.

#include "engine_source.h"

#include "engine_hooks.h"
#include "mounts.h"
#include "transfer_fixture.h"

namespace {

using Policy = TarvaneTransferConflictPolicy;
using Result = TransferCopyResult;

class PathCopier : public TransferTest {
protected:
    Result Run(const fs::path& Source, const fs::path& Destination, bool bMove = kCopy,
               Policy WithPolicy = Policy::Overwrite) {
        return CopyPathWithProgress(Directory / Source, Directory / Destination, Job, WithPolicy,
                                    bMove, Message);
    }

    void Write(const std::string& Name, std::string_view Bytes) {
        WriteFile(Directory / Name, Bytes);
    }

    Tree OnDisk() { return TreeOf(Directory.Path()); }
};

TEST_F(PathCopier, CopiesARegularFile) {
    Write("from", "data");
    EXPECT_EQ(Run("from", "to"), Result::Succeeded);
    EXPECT_EQ(OnDisk(), (Tree{{"from", "file data"}, {"to", "file data"}}));
    EXPECT_EQ(DoneBy(Job), (Counted{1, 4}));
    EXPECT_EQ(Message, "a message from before");
}

TEST_F(PathCopier, CopiesALinkToAFileAsTheFile) {
    Write("file", "data");
    fs::create_symlink("file", Directory / "from");
    EXPECT_EQ(Run("from", "to"), Result::Succeeded);
    EXPECT_EQ(OnDisk(), (Tree{{"file", "file data"}, {"from", "link file"}, {"to", "file data"}}));
}

TEST_F(PathCopier, RemovesTheLinkAndNotTheFileWhenALinkToAFileIsMoved) {
    Write("file", "data");
    fs::create_symlink("file", Directory / "from");
    EXPECT_EQ(Run("from", "to", kMove), Result::Succeeded);
    EXPECT_EQ(OnDisk(), (Tree{{"file", "file data"}, {"to", "file data"}}));
}

TEST_F(PathCopier, FailsForAMissingSource) {
    EXPECT_EQ(Run("missing", "to"), Result::Failed);
    EXPECT_EQ(Message, "Source does not exist: " + (Directory / "missing").string());
    EXPECT_EQ(DoneBy(Job), Counted{});
}

TEST_F(PathCopier, FailsForADanglingLink) {
    fs::create_symlink("nowhere", Directory / "dangling");
    EXPECT_EQ(Run("dangling", "to"), Result::Failed);
    EXPECT_EQ(Message, "Source does not exist: " + (Directory / "dangling").string());
}

TEST_F(PathCopier, FailsForALinkThatLeadsToItselfWithoutTheSystemText) {
    fs::create_symlink("loop", Directory / "loop");
    EXPECT_EQ(Run("loop", "to"), Result::Failed);
    EXPECT_EQ(Message, "Source does not exist: " + (Directory / "loop").string());
}

// The kernel follows forty links in one path: the last one's own, but not those and one before.
TEST_F(PathCopier, MissesASourceBehindMoreLinksThanAPathMayHave) {
    Write("links/0", "data");
    for (int link = 1; link < 40; ++link) {
        fs::create_symlink(std::to_string(link - 1), Directory / "links" / std::to_string(link));
    }
    fs::create_directory(Directory / "from");
    fs::create_symlink("../links/39", Directory / "from/last");
    fs::create_directory_symlink("from", Directory / "link");
    EXPECT_EQ(Run("link", "to"), Result::Failed);
    EXPECT_EQ(Message, "Source does not exist: " + (Directory / "link/last").string());
    EXPECT_EQ(DoneBy(Job), (Counted{1, 0}));
}

TEST_F(PathCopier, MissesASourceWhosePathIsTooLongThroughALink) {
    const std::string name(250, 'd');
    fs::path deep = Directory / "deep";
    while (deep.native().size() + name.size() < PATH_MAX - name.size()) {
        deep /= name;
    }
    fs::create_directories(deep);
    Write("file", "data");
    fs::create_hard_link(Directory / "file", deep / name);
    fs::create_directories(Directory / "from");
    fs::create_directory_symlink("../deep", Directory / "from" / name);
    EXPECT_EQ(Run("from", "to"), Result::Failed);
    EXPECT_EQ(Message.substr(0, Message.find('/')), "Source does not exist: ");
    EXPECT_TRUE(Message.ends_with(name));
}

TEST_F(PathCopier, RefusesToCopyAFileOntoItself) {
    Write("file", "data");
    fs::create_symlink("file", Directory / "link");
    fs::create_hard_link(Directory / "file", Directory / "hard");
    for (const char* same : {"file", "./file", "link", "hard"}) {
        Message.clear();
        EXPECT_EQ(Run("file", same, kMove), Result::Failed) << same;
        EXPECT_EQ(Message, "Source and destination are the same path.") << same;
    }
    EXPECT_EQ(ReadFile(Directory / "file"), "data");
}

TEST_F(PathCopier, RefusesToCopyAnEntryOntoItself) {
    Write("from/sub/file", "data");
    fs::create_directories(Directory / "to/sub");
    fs::create_hard_link(Directory / "from/sub/file", Directory / "to/sub/file");
    EXPECT_EQ(Run("from", "to", kMove), Result::Failed);
    EXPECT_EQ(Message, "Source and destination are the same path.");
    EXPECT_EQ(ReadFile(Directory / "from/sub/file"), "data");
    EXPECT_EQ(ReadFile(Directory / "to/sub/file"), "data");
}

TEST_F(PathCopier, RefusesAnItemWithTheSameTextWhetherOrNotItIsThere) {
    Write("away/file", "data");
    fs::create_directory(Directory / "away/sub");
    fs::create_symlink("away/sub", Directory / "link");
    EXPECT_EQ(Run("link/../file", "file"), Result::Failed);
    EXPECT_EQ(Message, "Source and destination are the same path.");
}

TEST_F(PathCopier, RefusesToCopyASpecialEntryOntoItself) {
    MakeFifo(Directory / "fifo");
    EXPECT_EQ(Run("fifo", "fifo", kMove), Result::Failed);
    EXPECT_EQ(Message, "Source and destination are the same path.");
    EXPECT_EQ(OnDisk(), (Tree{{"fifo", "fifo"}}));
}

TEST_F(PathCopier, RefusesADirectoryOntoItselfBeforeLookingWhetherItIsInside) {
    Write("from/file", "data");
    EXPECT_EQ(Run("from", "from"), Result::Failed);
    EXPECT_EQ(Message, "Source and destination are the same path.");
}

TEST_F(PathCopier, RefusesADirectoryIntoItself) {
    Write("from/sub/file", "data");
    for (const char* inside : {"from/new", "from/sub/new", "from/sub/../new"}) {
        Message.clear();
        EXPECT_EQ(Run("from", inside, kMove), Result::Failed) << inside;
        EXPECT_EQ(Message, "Destination cannot be inside the source directory.") << inside;
    }
    EXPECT_EQ(OnDisk(),
              (Tree{{"from", "dir"}, {"from/sub", "dir"}, {"from/sub/file", "file data"}}));
    EXPECT_EQ(DoneBy(Job), Counted{});
}

TEST_F(PathCopier, CopiesADirectoryNextToItsNamesake) {
    Write("from/file", "data");
    EXPECT_EQ(Run("from", "from-2"), Result::Succeeded);
    EXPECT_EQ(ReadFile(Directory / "from-2/file"), "data");
}

// What cannot be told of it is more than that it exists.
TEST_F(PathCopier, FailsForASourceThatCannotBeInspected) {
    Write("from", "data");
    EngineHooks hooks;
    hooks.Status = [this](const fs::path& path) {
        return path == Directory / "from" ? std::make_error_code(std::errc::value_too_large)
                                          : std::error_code();
    };
    EXPECT_EQ(Run("from", "to"), Result::Failed);
    EXPECT_EQ(Message, "Could not inspect source '" + (Directory / "from").string() +
                           "': Value too large for defined data type");
    EXPECT_EQ(OnDisk(), (Tree{{"from", "file data"}}));
}

class DirectoryCopier : public PathCopier {};

TEST_F(DirectoryCopier, CopiesEverythingInIt) {
    Write("from/file", "0123456789");
    Write("from/sub/deep/file", "01234");
    fs::create_directory(Directory / "from/empty");
    EXPECT_EQ(Run("from", "to"), Result::Succeeded);
    EXPECT_EQ(TreeOf(Directory / "to"), TreeOf(Directory / "from"));
    EXPECT_EQ(DoneBy(Job), (Counted{6, 15}));
    EXPECT_EQ(Message, "a message from before");
}

TEST_F(DirectoryCopier, RemovesEverythingThatWasMoved) {
    Write("from/file", "0123456789");
    Write("from/sub/deep/file", "01234");
    const Tree before = TreeOf(Directory / "from");
    EXPECT_EQ(Run("from", "to", kMove), Result::Succeeded);
    EXPECT_FALSE(fs::exists(Directory / "from"));
    EXPECT_EQ(TreeOf(Directory / "to"), before);
    EXPECT_EQ(DoneBy(Job), (Counted{5, 15}));
}

TEST_F(DirectoryCopier, CountsAnEmptyDirectoryAsOneItem) {
    fs::create_directory(Directory / "from");
    EXPECT_EQ(Run("from", "to"), Result::Succeeded);
    EXPECT_EQ(OnDisk(), (Tree{{"from", "dir"}, {"to", "dir"}}));
    EXPECT_EQ(DoneBy(Job), (Counted{1, 0}));
    EXPECT_EQ(Job.MakeUiSnapshot().PathText, "Current: " + (Directory / "from").string());
}

TEST_F(DirectoryCopier, RemovesAnEmptyDirectoryThatWasMoved) {
    fs::create_directory(Directory / "from");
    EXPECT_EQ(Run("from", "to", kMove), Result::Succeeded);
    EXPECT_EQ(OnDisk(), (Tree{{"to", "dir"}}));
    EXPECT_EQ(DoneBy(Job), (Counted{1, 0}));
}

TEST_F(DirectoryCopier, CreatesEveryMissingParentOfTheDestination) {
    Write("from/file", "data");
    EXPECT_EQ(Run("from", "a/b/to"), Result::Succeeded);
    EXPECT_EQ(ReadFile(Directory / "a/b/to/file"), "data");
}

TEST_F(DirectoryCopier, CopiesALinkedDirectoryAsARealOne) {
    Write("linked/file", "data");
    fs::create_directory(Directory / "from");
    fs::create_directory_symlink("../linked", Directory / "from/link");
    EXPECT_EQ(Run("from", "to"), Result::Succeeded);
    EXPECT_EQ(TreeOf(Directory / "to"), (Tree{{"link", "dir"}, {"link/file", "file data"}}));
    EXPECT_EQ(TreeOf(Directory / "from"), (Tree{{"link", "link ../linked"}}));
    EXPECT_EQ(DoneBy(Job), (Counted{3, 4}));
}

TEST_F(DirectoryCopier, RemovesTheFilesInALinkedDirectoryAndThenTheLinkWhenMoved) {
    Write("linked/file", "data");
    fs::create_directory(Directory / "from");
    fs::create_directory_symlink("../linked", Directory / "from/link");
    EXPECT_EQ(Run("from", "to", kMove), Result::Succeeded);
    EXPECT_EQ(
        OnDisk(),
        (Tree{
            {"linked", "dir"}, {"to", "dir"}, {"to/link", "dir"}, {"to/link/file", "file data"}}));
}

TEST_F(DirectoryCopier, MovesALinkToADirectoryGivenByItself) {
    Write("linked/file", "data");
    fs::create_directory_symlink("linked", Directory / "from");
    EXPECT_EQ(Run("from", "to", kMove), Result::Succeeded);
    EXPECT_EQ(OnDisk(), (Tree{{"linked", "dir"}, {"to", "dir"}, {"to/file", "file data"}}));
}

// A link to a directory above it never ends by itself; the kernel's limit on links ends it.
TEST_F(DirectoryCopier, EndsAtALinkThatLeadsBackUp) {
    fs::create_directory(Directory / "from");
    fs::create_directory_symlink(".", Directory / "from/again");
    EXPECT_EQ(Run("from", "to"), Result::Failed);
    // The system counts links twice where it has to begin a lookup again, so the path may be too
    // deep for the listing although it was found.
    const std::string tooDeep =
        std::make_error_code(std::errc::too_many_symbolic_link_levels).message();
    EXPECT_TRUE(Message.starts_with("Source does not exist: ") || Message == tooDeep) << Message;
}

TEST_F(DirectoryCopier, KeepsSkippedEntriesOfAMoveInTheSource) {
    Write("from/skipped", "new");
    Write("from/sub/skipped", "new");
    Write("from/sub/moved", "data");
    Write("from/gone/moved", "data");
    Write("to/skipped", "old");
    Write("to/sub/skipped", "old");
    EXPECT_EQ(Run("from", "to", kMove, Policy::Skip), Result::Succeeded);
    EXPECT_EQ(TreeOf(Directory / "from"),
              (Tree{{"skipped", "file new"}, {"sub", "dir"}, {"sub/skipped", "file new"}}));
    EXPECT_EQ(TreeOf(Directory / "to"), (Tree{{"skipped", "file old"},
                                              {"sub", "dir"},
                                              {"sub/skipped", "file old"},
                                              {"sub/moved", "file data"},
                                              {"gone", "dir"},
                                              {"gone/moved", "file data"}}));
    EXPECT_EQ(DoneBy(Job), (Counted{7, 14}));
    EXPECT_EQ(Message, "a message from before");
}

} // namespace
