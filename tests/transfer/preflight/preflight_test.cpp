// What a look through the sources of a copy finds and counts, against what the engine does with
// them.

#include "needs.h"
#include "preflight_fixture.h"

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace fs = std::filesystem;

namespace {

const Strings kNothing;

class PreflightCopy : public PreflightTest {};

// Lowers the number of files that may be open, until the end of the scope.
class FewOpenFiles {
public:
    explicit FewOpenFiles(rlim_t Most) {
        getrlimit(RLIMIT_NOFILE, &Before);
        const rlimit limit{Most, Before.rlim_max};
        setrlimit(RLIMIT_NOFILE, &limit);
    }
    ~FewOpenFiles() { setrlimit(RLIMIT_NOFILE, &Before); }
    FewOpenFiles(const FewOpenFiles&) = delete;
    FewOpenFiles& operator=(const FewOpenFiles&) = delete;

private:
    rlimit Before{};
};

TEST_F(PreflightCopy, CountsAnOrdinaryTreeAsTheEngineDoes) {
    WriteFile(From / "tree/a", "0123456789");
    WriteFile(From / "tree/sub/b", std::string(20, 'b'));
    fs::create_directory(From / "tree/empty");
    fs::create_symlink("a", From / "tree/link");
    PlanToCopy({{From / "tree", To / "tree"}, {From / "tree/a", To / "a"}});
    const PreflightResult result = Look();
    const TarvaneTransferUiSnapshot done = Transfer();
    EXPECT_EQ(InWords(result), kNothing);
    EXPECT_EQ(result.Entries, 7U);
    EXPECT_EQ(result.Bytes, 50U);
    EXPECT_EQ(result.Entries, done.TotalItems);
    EXPECT_EQ(result.Bytes, done.TotalBytes);
    EXPECT_EQ(result.CopiedEntries, done.DoneItems);
    EXPECT_EQ(result.CopiedBytes, done.DoneBytes);
    EXPECT_EQ(Control.EntriesSeen, 7U);
    EXPECT_TRUE(result.bComplete);
}

TEST_F(PreflightCopy, CountsNoBytesForAnItemThatIsALink) {
    WriteFile(From / "file", "0123456789");
    fs::create_symlink("file", From / "link");
    PlanToCopy({{From / "link", To / "link"}});
    const PreflightResult result = Look();
    const TarvaneTransferUiSnapshot done = Transfer();
    EXPECT_EQ(InWords(result), kNothing);
    EXPECT_EQ(result.Bytes, 0U);
    EXPECT_EQ(result.Bytes, done.TotalBytes);
    EXPECT_EQ(result.CopiedBytes, 10U);
    EXPECT_EQ(result.CopiedBytes, done.DoneBytes);
}

TEST_F(PreflightCopy, FindsALinkThatLeadsNowhere) {
    fs::create_directory(From / "tree");
    fs::create_symlink("missing", From / "tree/link");
    PlanToCopy({{From / "tree", To / "tree"}});
    EXPECT_EQ(Found(), Strings{"dangling-link from/tree/link, stops"});
    EXPECT_EQ(TransferMessage(), "No such file or directory");
}

TEST_F(PreflightCopy, FindsALinkToItself) {
    fs::create_directory(From / "tree");
    fs::create_symlink("link", From / "tree/link");
    PlanToCopy({{From / "tree", To / "tree"}});
    EXPECT_EQ(Found(), Strings{"dangling-link from/tree/link, stops"});
    EXPECT_EQ(TransferMessage(), "Too many levels of symbolic links");
}

TEST_F(PreflightCopy, FindsALinkThatLeadsThroughAFile) {
    WriteFile(From / "tree/file", "");
    fs::create_symlink("file/below", From / "tree/link");
    PlanToCopy({{From / "tree", To / "tree"}});
    EXPECT_EQ(Found(), Strings{"dangling-link from/tree/link, stops"});
    EXPECT_EQ(TransferMessage(), "Not a directory");
}

TEST_F(PreflightCopy, FindsAnItemThatLeadsNowhere) {
    fs::create_symlink("missing", From / "link");
    PlanToCopy({{From / "link", To / "link"}});
    EXPECT_EQ(Found(), Strings{"dangling-link from/link, stops"});
    EXPECT_EQ(TransferMessage(), "Source does not exist.");
}

TEST_F(PreflightCopy, FindsAnItemThatIsMissing) {
    PlanToCopy({{From / "missing", To / "missing"}});
    const PreflightResult result = Look();
    EXPECT_EQ(InWords(result), Strings{"uninspectable-entry from/missing, stops"});
    EXPECT_EQ(result.Findings.Kept().front().Reason, "No such file or directory");
    EXPECT_EQ(TransferMessage(), "Source does not exist.");
}

TEST_F(PreflightCopy, FindsPipesSocketsAndDevices) {
    NeedRoot();
    fs::create_directory(From / "tree");
    MakeFifo(From / "tree/pipe");
    MakeSocket(From / "tree/socket");
    ASSERT_EQ(mknod((From / "tree/device").c_str(), S_IFCHR | 0644, makedev(1, 3)), 0);
    PlanToCopy({{From / "tree", To / "tree"}});
    EXPECT_EQ(Found(), (Strings{"special-entry from/tree/device, stops",
                                "special-entry from/tree/pipe, stops",
                                "special-entry from/tree/socket, stops"}));
    EXPECT_FALSE(Transfer().bSucceeded);
}

TEST_F(PreflightCopy, FindsAPipeThatIsAnItem) {
    MakeFifo(From / "pipe");
    PlanToCopy({{From / "pipe", To / "pipe"}});
    EXPECT_EQ(Found(), Strings{"special-entry from/pipe, stops"});
    EXPECT_FALSE(Transfer().bSucceeded);
}

TEST_F(PreflightCopy, LeavesALinkToAPipeAlone) {
    fs::create_directory(From / "tree");
    MakeFifo(Room / "pipe");
    fs::create_symlink(Room / "pipe", From / "tree/link");
    PlanToCopy({{From / "tree", To / "tree"}});
    EXPECT_EQ(Found(), kNothing);
    EXPECT_EQ(TransferMessage(), "Copied 1 item(s).");
}

TEST_F(PreflightCopy, FindsADestinationInsideTheSource) {
    fs::create_directories(From / "tree/sub");
    PlanToCopy({{From / "tree", From / "tree/sub/new/tree"}});
    EXPECT_EQ(Found(), (Strings{"destination-inside-source from/tree, stops",
                                "made-directory from/tree/sub/new"}));
    EXPECT_EQ(TransferMessage(), "Destination cannot be inside the source directory.");
}

TEST_F(PreflightCopy, FindsADestinationInsideADirectoryThatALinkLeadsTo) {
    fs::create_directory(From / "tree");
    fs::create_symlink("../..", From / "tree/up");
    PlanToCopy({{From / "tree", To / "tree"}});
    EXPECT_EQ(Found(), Strings{"destination-inside-source from/tree/up, stops"});
    EXPECT_EQ(TransferMessage(), "Destination cannot be inside the source directory.");
}

TEST_F(PreflightCopy, FindsALinkToTheDestinationThatIsMergedInto) {
    fs::create_directory(From / "tree");
    fs::create_directory(To / "tree");
    fs::create_symlink(To / "tree", From / "tree/there");
    PlanToCopy({{From / "tree", To / "tree"}});
    EXPECT_EQ(Found(), Strings{"destination-inside-source from/tree/there, stops"});
    EXPECT_EQ(TransferMessage(), "Destination cannot be inside the source directory.");
}

TEST_F(PreflightCopy, FindsAnItemThatIsItsOwnDestination) {
    fs::create_directory(From / "tree");
    WriteFile(From / "file", "");
    fs::create_hard_link(From / "file", To / "file");
    PlanToCopy({{From / "tree", From / "tree"}, {From / "file", To / "file"}});
    EXPECT_EQ(Found(), (Strings{"source-is-destination from/file, stops",
                                "source-is-destination from/tree, stops"}));
    EXPECT_EQ(TransferMessage(), "Source and destination are the same path.");
}

TEST_F(PreflightCopy, KeepsTheFirstHundredOfAKindAndCountsTheRest) {
    fs::create_directory(From / "tree");
    for (int number = 0; number < 150; ++number) {
        fs::create_symlink("missing", From / "tree" / std::to_string(number));
    }
    MakeFifo(From / "tree/pipe");
    PlanToCopy({{From / "tree", To / "tree"}});
    const PreflightFindings findings = Look().Findings;
    EXPECT_EQ(findings.Kept().size(), 101U);
    EXPECT_EQ(findings.Count(PreflightFindingKind::DanglingLink), 150U);
    EXPECT_EQ(findings.Count(PreflightFindingKind::SpecialEntry), 1U);
    EXPECT_EQ(findings.Count(), 151U);
}

TEST_F(PreflightCopy, TellsWhetherAnythingEndsTheJob) {
    fs::create_directory(From / "tree");
    fs::create_directory(Room / "outside");
    fs::create_symlink(Room / "outside", From / "tree/link");
    PlanToCopy({{From / "tree", To / "tree"}});
    EXPECT_FALSE(Look().Findings.AnyStopsJob());
    MakeFifo(From / "tree/pipe");
    EXPECT_TRUE(Look().Findings.AnyStopsJob());
}

TEST_F(PreflightCopy, KeepsOneDirectoryOpenHoweverDeepTheTree) {
    fs::path deepest = From / "tree";
    for (int level = 0; level < 200; ++level) {
        deepest /= "d";
    }
    WriteFile(deepest / "file", "x");
    PlanToCopy({{From / "tree", To / "tree"}});
    const FewOpenFiles few(20);
    const PreflightResult result = Look();
    EXPECT_EQ(InWords(result), kNothing);
    EXPECT_EQ(result.Entries, 202U);
    EXPECT_EQ(result.Bytes, 1U);
}

TEST_F(PreflightCopy, ReadsADirectoryOfMoreThanOneBuffer) {
    fs::create_directory(From / "tree");
    const std::string longName(200, 'n');
    for (int number = 0; number < 400; ++number) {
        WriteFile(From / "tree" / (longName + std::to_string(number)), "x");
    }
    PlanToCopy({{From / "tree", To / "tree"}});
    EXPECT_EQ(Look().Entries, 401U);
}

} // namespace
