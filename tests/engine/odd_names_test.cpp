// Names are bytes, and links lead anywhere.

#include "transfer_fixture.h"

#include <climits>

namespace {

namespace fs = std::filesystem;

struct OddNameCase {
    std::string Word;
    std::string Name;
};

// Tells of a failing case without writing its bytes.
void PrintTo(const OddNameCase& Case, std::ostream* Out) {
    *Out << Case.Word;
}

class OddName : public TransferTest, public testing::WithParamInterface<OddNameCase> {
protected:
    OddName() {
        WriteFile(From / Name, "data");
        WriteFile(From / "inside" / Name / Name, "data");
    }

    const std::string Name = GetParam().Name;
    const fs::path From = Directory / "from";
    const fs::path To = Directory / "to";
};

TEST_P(OddName, IsCopiedAsItIs) {
    RunTarvaneTransferJob(SharedJob, PlanOf(kCopy, {{From, To}}));
    EXPECT_EQ(Job.MakeUiSnapshot().MessageText, "Copied 1 item(s).");
    EXPECT_EQ(TreeOf(To), TreeOf(From));
}

TEST_P(OddName, IsMovedAsItIs) {
    const Tree before = TreeOf(From);
    fs::create_directory(To);
    RunTarvaneTransferJob(SharedJob, PlanOf(kMove, {{From, To}}));
    EXPECT_EQ(Job.MakeUiSnapshot().MessageText, "Moved 1 item(s).");
    EXPECT_EQ(TreeOf(To), before);
    EXPECT_FALSE(fs::exists(From));
}

TEST_P(OddName, StandsInAMessageAsItIs) {
    fs::remove(From / Name);
    fs::create_symlink(Name, From / Name);
    RunTarvaneTransferJob(SharedJob, PlanOf(kCopy, {{To, From / Name}}));
    EXPECT_EQ(Job.MakeUiSnapshot().MessageText, "Source does not exist.");
    const auto next = std::make_shared<TarvaneTransferJob>(false, 1, "");
    RunTarvaneTransferJob(next, PlanOf(kCopy, {{From / "inside", From / Name}}));
    EXPECT_EQ(next->MakeUiSnapshot().MessageText, "Failed checking destination '" +
                                                      (From / Name).string() +
                                                      "': Too many levels of symbolic links");
}

const OddNameCase kNames[] = {
    {"Blank", "with blank"},
    {"Newline", "with\nnewline"},
    {"Tab", "\t"},
    {"InvalidUtf8", "\xff\xfe invalid \x80"},
    {"Utf8", "caf\xc3\xa9"},
    {"Options", "-rf"},
    {"TwoDashes", "--"},
    {"Brackets", "[brackets]*?"},
    {"Commas", "comma,and;more"},
    {"SingleQuotes", "'quoted'"},
    {"DoubleQuotes", "\"quoted\""},
    {"Backslash", "back\\slash"},
    {"Variable", "$HOME"},
    {"Tilde", "~"},
    {"ThreeDots", "..."},
    {"AsLongAsCanBe", std::string(NAME_MAX, 'x')},
};

INSTANTIATE_TEST_SUITE_P(All, OddName, testing::ValuesIn(kNames),
                         [](const auto& Info) { return Info.param.Word; });

class OddLink : public TransferTest {
protected:
    std::string Run(bool bMove, const fs::path& Source, const fs::path& Destination) {
        RunTarvaneTransferJob(SharedJob,
                              PlanOf(bMove, {{Directory / Source, Directory / Destination}}));
        return Job.MakeUiSnapshot().MessageText;
    }
};

TEST_F(OddLink, ToItselfIsNoSource) {
    fs::create_symlink("loop", Directory / "loop");
    EXPECT_EQ(Run(kMove, "loop", "to"), "Source does not exist.");
}

TEST_F(OddLink, ThatDanglesIsNoSource) {
    fs::create_symlink("nowhere", Directory / "link");
    EXPECT_EQ(Run(kMove, "link", "to"), "Source does not exist.");
}

TEST_F(OddLink, ThatDanglesInADirectoryEndsTheJobBeforeAnythingIsCopied) {
    WriteFile(Directory / "from/file", "data");
    fs::create_symlink("nowhere", Directory / "from/link");
    EXPECT_EQ(Run(kCopy, "from", "to"), "No such file or directory");
    EXPECT_FALSE(fs::exists(Directory / "to"));
}

// A link to a directory is one entry for the scan, and a directory with entries for the copy.
TEST_F(OddLink, ToADirectoryMakesMoreItemsThanTheScanFound) {
    WriteFile(Directory / "linked/file", "0123456789");
    fs::create_directory(Directory / "from");
    fs::create_directory_symlink("../linked", Directory / "from/link");
    EXPECT_EQ(Run(kCopy, "from", "to"), "Copied 1 item(s).");
    const TarvaneTransferUiSnapshot end = Job.MakeUiSnapshot();
    EXPECT_EQ(end.TotalItems, 2U);
    EXPECT_EQ(end.TotalBytes, 0U);
    EXPECT_EQ(DoneBy(Job), (Counted{3, 10}));
    EXPECT_EQ(end.OverallProgress01, 1.0);
}

// The destination is the directory that the link leads to, so the copy would land in itself.
TEST_F(OddLink, BackIntoTheSourceIsRefused) {
    WriteFile(Directory / "from/file", "data");
    fs::create_directory_symlink("from", Directory / "link");
    EXPECT_EQ(Run(kCopy, "from", "link/to"), "Destination cannot be inside the source directory.");
    EXPECT_EQ(TreeOf(Directory / "from"), (Tree{{"file", "file data"}}));
}

TEST_F(OddLink, AtTheDestinationOfADirectoryIsMergedThrough) {
    WriteFile(Directory / "from/file", "data");
    fs::create_directory(Directory / "real");
    fs::create_directory_symlink("real", Directory / "to");
    EXPECT_EQ(Run(kCopy, "from", "to"), "Copied 1 item(s).");
    EXPECT_EQ(TreeOf(Directory / "real"), (Tree{{"file", "file data"}}));
    EXPECT_TRUE(fs::is_symlink(Directory / "to"));
}

TEST_F(OddLink, ThatDanglesAtTheDestinationOfADirectoryFails) {
    fs::create_directory(Directory / "from");
    fs::create_symlink("nowhere", Directory / "to");
    EXPECT_EQ(Run(kCopy, "from", "to"), "Failed to create destination directory: File exists");
}

} // namespace
