// What is left when a directory cannot be copied or moved completely, and what counts as complete.

#include "engine_source.h"

#include "answering_interface.h"
#include "engine_hooks.h"
#include "mounts.h"
#include "no_descriptors_left.h"
#include "transfer_fixture.h"

namespace {

using Act = TarvaneTransferConflictAction;
using Policy = TarvaneTransferConflictPolicy;
using Result = TransferCopyResult;

class DirectoryFailure : public TransferTest {
protected:
    Result Run(bool bMove = kCopy, Policy WithPolicy = Policy::Overwrite) {
        return CopyPathWithProgress(Source, Destination, Job, WithPolicy, bMove, Message);
    }

    // Three entries, of which the bad one is the second that the system lists.
    void WriteThreeEntries(const std::function<void(const fs::path&)>& MakeBad) {
        for (const char* name : {"a", "b", "c"}) {
            WriteFile(Source / name, "data");
        }
        Listing = ListingOf(Source);
        fs::remove(Listing[1]);
        MakeBad(Listing[1]);
        // The bad entry may have taken another place in the listing.
        Listing = ListingOf(Source);
    }

    const fs::path Source = Directory / "from";
    const fs::path Destination = Directory / "to";
    std::vector<fs::path> Listing;
};

TEST_F(DirectoryFailure, OfOneEntryEndsTheDirectoryAndKeepsWhatWasCopied) {
    WriteThreeEntries([](const fs::path& path) { fs::create_symlink("nowhere", path); });
    EXPECT_EQ(Run(kMove), Result::Failed);
    Tree copied;
    Tree left;
    bool failed = false;
    for (const fs::path& entry : Listing) {
        const std::string name = entry.filename();
        const bool dangling = fs::is_symlink(fs::symlink_status(entry));
        failed = failed || dangling;
        (failed ? left : copied)[name] = dangling ? "link nowhere" : "file data";
        if (dangling) {
            EXPECT_EQ(Message, "Source does not exist: " + entry.string());
        }
    }
    EXPECT_EQ(TreeOf(Destination), copied);
    EXPECT_EQ(TreeOf(Source), left);
    EXPECT_EQ(DoneBy(Job), (Counted{1 + copied.size(), 4 * copied.size()}));
}

// Further down, the message of the entry stands, not one of the directories around it.
TEST_F(DirectoryFailure, HasTheTextOfTheStepThatFailed) {
    fs::create_directories(Source / "sub/deep");
    fs::create_symlink("nowhere", Source / "sub/deep/dangling");
    EXPECT_EQ(Run(), Result::Failed);
    EXPECT_EQ(Message, "Source does not exist: " + (Source / "sub/deep/dangling").string());
}

TEST_F(DirectoryFailure, IsNoneForASubdirectoryThatMayNotBeRead) {
    WriteFile(Source / "locked/file", "secret");
    fs::permissions(Source / "locked", fs::perms::none);
    fs::permissions(Directory.Path(), fs::perms::all);
    {
        const ActingAsNobody nobody;
        EXPECT_EQ(Run(), Result::Succeeded);
    }
    EXPECT_EQ(TreeOf(Destination), (Tree{{"locked", "dir"}}));
    EXPECT_EQ(DoneBy(Job), (Counted{2, 0}));
    EXPECT_EQ(Message, "a message from before");
}

// What could not be read stays where it is, like what was skipped.
TEST_F(DirectoryFailure, IsNoneForAMoveOfASubdirectoryThatMayNotBeRead) {
    WriteFile(Source / "locked/file", "secret");
    fs::permissions(Source, fs::perms::all);
    fs::permissions(Source / "locked", fs::perms::none);
    fs::permissions(Directory.Path(), fs::perms::all);
    {
        const ActingAsNobody nobody;
        EXPECT_EQ(Run(kMove), Result::Succeeded);
    }
    EXPECT_EQ(TreeOf(Source), (Tree{{"locked", "dir"}, {"locked/file", "file secret"}}));
    EXPECT_EQ(TreeOf(Destination), (Tree{{"locked", "dir"}}));
}

TEST_F(DirectoryFailure, OfTheCheckOfTheDestination) {
    fs::create_directory(Source);
    fs::create_symlink("to", Destination);
    EXPECT_EQ(Run(), Result::Failed);
    EXPECT_EQ(Message, "Failed checking destination '" + Destination.string() +
                           "': Too many levels of symbolic links");
}

// It is there, but nothing can be told of it, as of a file with more bytes than a number holds.
TEST_F(DirectoryFailure, OfTheCheckOfADestinationThatCannotBeTold) {
    fs::create_directory(Source);
    WriteFile(Destination, "old");
    EngineHooks hooks;
    hooks.Status = [this](const fs::path& Path) {
        return Path == Destination ? std::make_error_code(std::errc::value_too_large)
                                   : std::error_code();
    };
    for (const Policy policy : {Policy::Overwrite, Policy::Skip, Policy::Ask}) {
        EXPECT_EQ(Run(kCopy, policy), Result::Failed);
        EXPECT_EQ(Message, "Failed checking destination '" + Destination.string() +
                               "': Value too large for defined data type");
    }
    EXPECT_EQ(ReadFile(Destination), "old");
}

// The destination turns into a link to itself while the user thinks about it.
TEST_F(DirectoryFailure, OfTheSecondCheckOfTheDestination) {
    fs::create_directory(Source);
    fs::create_directory(Destination);
    AnsweringInterface interface(Job, {{Act::Merge, "", [this] {
                                            fs::remove(Destination);
                                            fs::create_symlink("to", Destination);
                                        }}});
    EXPECT_EQ(Run(kCopy, Policy::Ask), Result::Failed);
    EXPECT_EQ(Message, "Failed checking destination '" + Destination.string() +
                           "': Too many levels of symbolic links");
}

TEST_F(DirectoryFailure, OfReplacingAFileAtTheDestination) {
    fs::create_directory(Source);
    WriteFile(Destination, "old");
    const ActingAsNobody nobody;
    EXPECT_EQ(Run(), Result::Failed);
    EXPECT_EQ(Message, "Failed to replace destination path: Permission denied");
    EXPECT_EQ(ReadFile(Destination), "old");
    EXPECT_EQ(DoneBy(Job), Counted{});
}

TEST_F(DirectoryFailure, OfCreatingTheDestination) {
    fs::create_directory(Source);
    const ActingAsNobody nobody;
    EXPECT_EQ(Run(), Result::Failed);
    EXPECT_EQ(Message, "Failed to create destination directory: Permission denied");
    EXPECT_EQ(Job.MakeUiSnapshot().PathText, "Current: " + Source.string());
    EXPECT_EQ(DoneBy(Job), Counted{});
}

// Without a free descriptor no directory can be opened; the destination has been made by then.
TEST_F(DirectoryFailure, OfOpeningTheSourceIsTheSystemTextAlone) {
    WriteFile(Source / "file", "data");
    const fs::path source = Source;
    const fs::path destination = Destination;
    TarvaneTransferJob job(kMove, 1, "");
    std::string message;
    Result result = Result::Succeeded;
    {
        const NoDescriptorsLeft limit;
        result = CopyPathWithProgress(source, destination, job, Policy::Ask, kMove, message);
    }
    EXPECT_EQ(result, Result::Failed);
    EXPECT_EQ(message, "Too many open files");
    EXPECT_EQ(TreeOf(Directory.Path()),
              (Tree{{"from", "dir"}, {"from/file", "file data"}, {"to", "dir"}}));
    EXPECT_EQ(DoneBy(job), (Counted{1, 0}));
}

TEST_F(DirectoryFailure, OfGoingOnInTheSourceIsTheSystemTextAlone) {
    WriteFile(Source / "a", "data");
    WriteFile(Source / "b", "data");
    EngineHooks hooks;
    hooks.Advance = [](const fs::path&) { return std::make_error_code(std::errc::io_error); };
    EXPECT_EQ(Run(), Result::Failed);
    EXPECT_EQ(Message, "Input/output error");
    EXPECT_EQ(DoneBy(Job), (Counted{2, 4}));
}

TEST_F(DirectoryFailure, OfRemovingTheSourceKeepsTheCopy) {
    EnterPrivateMountNamespace();
    const ScopedMount busy = MountTmpfs(Source, "size=1m");
    WriteFile(Source / "file", "data");
    EXPECT_EQ(Run(kMove), Result::Failed);
    EXPECT_EQ(Message, "Copied data but could not remove original '" + Source.string() +
                           "': Device or resource busy");
    EXPECT_EQ(TreeOf(Source), Tree{});
    EXPECT_EQ(TreeOf(Destination), (Tree{{"file", "file data"}}));
    EXPECT_EQ(DoneBy(Job), (Counted{2, 4}));
}

// The system removes no link by a path that ends with a slash.
TEST_F(DirectoryFailure, OfRemovingALinkNamedLikeADirectory) {
    WriteFile(Source / "sub/file", "data");
    fs::create_directory_symlink(Source, Directory / "link");
    const fs::path link = Directory / "link/";
    EXPECT_EQ(CopyPathWithProgress(link, Destination, Job, Policy::Ask, kMove, Message),
              Result::Failed);
    EXPECT_EQ(Message,
              "Copied data but could not remove original '" + link.string() + "': Not a directory");
    EXPECT_EQ(TreeOf(Source), Tree{});
    EXPECT_EQ(TreeOf(Destination), (Tree{{"sub", "dir"}, {"sub/file", "file data"}}));
}

TEST_F(DirectoryFailure, OfCountingASkippedDirectory) {
    WriteFile(Source / "file", "data");
    fs::create_directory(Destination);
    AnsweringInterface interface(Job, {{Act::Skip, "", nullptr}});
    EngineHooks hooks;
    hooks.SymlinkStatus = [](const fs::path&) { return std::make_error_code(std::errc::io_error); };
    EXPECT_EQ(Run(kCopy, Policy::Ask), Result::Failed);
    EXPECT_EQ(Message, "Input/output error");
}

} // namespace
