// What the program says and exits with when not all is there that was asked for.

#include "becomes_true.h"
#include "file_tree.h"
#include "mounts.h"
#include "needs.h"
#include "run_program.h"
#include "temporary_directory.h"
#include "without_time.h"

#include <thread>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

namespace fs = std::filesystem;

class EndOfRun : public testing::Test {
protected:
    // As an ordinary user.
    ProgramResult RunAsNobody(const std::vector<std::string>& Arguments) const {
        NeedRoot();
        fs::permissions(Root.Path(), fs::perms(0755));
        // A program that counts what it runs says so where it must not write its counters.
        const std::string counters = PathOf("counters");
        fs::create_directories(counters);
        fs::permissions(counters, fs::perms(0777));
        std::vector<std::string> command = {
            "env",           "GCOV_PREFIX=" + counters, "setpriv",      "--reuid=65534",
            "--regid=65534", "--clear-groups",          TARVANE_PROGRAM};
        command.insert(command.end(), Arguments.begin(), Arguments.end());
        return RunProgram(command, Root.Path().string());
    }

    static void ExpectEnd(const ProgramResult& Result, int Status, const std::string& Errors) {
        EXPECT_EQ(Result.Status, Status);
        EXPECT_EQ(Result.Output, "");
        EXPECT_EQ(WithoutTime(Result.Errors), Errors);
    }

    std::string PathOf(const std::string& Name) const { return (Root / Name).string(); }

    TemporaryDirectory Root;
};

TEST_F(EndOfRun, NamesTheDirectoriesThatCameOutEmpty) {
    WriteFile(Root / "from/a/secret/file", "data");
    WriteFile(Root / "from/b", "data");
    fs::create_directory(Root / "to");
    fs::permissions(Root / "to", fs::perms(0777));
    fs::permissions(Root / "from/a/secret", fs::perms(0700));
    for (const char* look : {"--follow-links", "--no-preflight"}) {
        const ProgramResult result = RunAsNobody({"copy", "-n", look, "from", "to"});
        EXPECT_EQ(result.Status, 1);
        EXPECT_TRUE(WithoutTime(result.Errors)
                        .ends_with("\ntarvane: a directory could not be read and is empty now: '" +
                                   PathOf("from/a/secret") + "'\nCopied 4 entries, 4 B.\n"))
            << result.Errors;
        EXPECT_EQ(TreeOf(Root / "to"), (Tree{{"from", "dir"},
                                             {"from/a", "dir"},
                                             {"from/a/secret", "dir"},
                                             {"from/b", "file data"}}));
        fs::remove_all(Root / "to/from");
    }
}

TEST_F(EndOfRun, NamesTheFileThatMustNotBeRead) {
    WriteFile(Root / "from/secret", "data");
    fs::create_directory(Root / "to");
    fs::permissions(Root / "to", fs::perms(0777));
    fs::permissions(Root / "from/secret", fs::perms(0600));
    ExpectEnd(RunAsNobody({"copy", "-n", "--no-preflight", "from", "to"}), 1,
              "tarvane: " + PathOf("from/secret") +
                  ": Failed to open source file. (Permission denied)\nCopied 1 entry.\n");
}

TEST_F(EndOfRun, NamesTheFileThatMustNotBeWritten) {
    WriteFile(Root / "from/file", "new");
    WriteFile(Root / "to/file", "old");
    fs::permissions(Root / "to/file", fs::perms(0444));
    ExpectEnd(RunAsNobody({"copy", "-f", "--no-preflight", "from/file", "to"}), 1,
              "tarvane: " + PathOf("to/file") +
                  ": Failed to open destination file. (Permission denied)\nNothing copied.\n");
}

TEST_F(EndOfRun, NamesTheDiskThatIsFull) {
    EnterPrivateMountNamespace();
    const ScopedMount disk = MountLoopDisk(Root / "disk", 8);
    WriteFile(Root / "small", "data");
    WriteFile(Root / "big", PatternBytes(9 << 20));
    const ProgramResult result = RunProgram(
        {TARVANE_PROGRAM, "copy", "-n", "--no-preflight", "--flush=never", "small", "big", "disk"},
        Root.Path().string());
    EXPECT_EQ(result.Status, 1);
    EXPECT_TRUE(std::regex_match(
        WithoutTime(result.Errors),
        std::regex("tarvane: " + PathOf("disk/big") +
                   R"(: Failed while writing destination file\. \(No space left on )" +
                   PathOf("disk") +
                   R"(: 9\.0 MB needed, [0-9.]+ MB free\)\nCopied 1 entry, 4 B\.\n)")))
        << result.Errors;
}

TEST_F(EndOfRun, RecordsThePathInFull) {
    const std::string directory = std::string(100, 'd');
    WriteFile(Root / directory / "link", "");
    fs::remove(Root / directory / "link");
    fs::create_symlink("nowhere", Root / directory / "link");
    const ProgramResult result = RunProgram(
        {TARVANE_PROGRAM, "copy", "-n", "--no-preflight", "--progress=json", directory, "to"},
        Root.Path().string());
    EXPECT_EQ(result.Status, 1);
    EXPECT_NE(result.Output.find("\"status\":\"" + PathOf(directory + "/link") +
                                 ": No such file or directory\""),
              std::string::npos)
        << result.Output;
}

// A copy to a slow disk, so that sources can change after they have been counted. The big file
// comes first.
class ChangingSources : public EndOfRun {
protected:
    ChangingSources() {
        WriteFile(Root / "big.bin", PatternBytes(12 << 20));
        WriteFile(Root / "tree/a", "data");
        WriteFile(Root / "tree/b", "data");
    }

    // Change is made when the big file has been begun.
    ProgramResult CopyWhile(const std::function<void()>& Change,
                            const std::vector<std::string>& Options = {}) {
        std::vector<std::string> command = {TARVANE_PROGRAM, "copy", "-n", "--flush=never"};
        command.insert(command.end(), Options.begin(), Options.end());
        command.insert(command.end(), {"big.bin", "tree", "disk"});
        ProgramResult result;
        std::thread copy([&] { result = RunProgram(command, Root.Path().string()); });
        EXPECT_TRUE(BecomesTrue("the copy has begun", [this] {
            std::error_code ec;
            return fs::file_size(Root / "disk/big.bin", ec) > 0 && !ec;
        }));
        Change();
        copy.join();
        return result;
    }
    std::function<void()> Resizing(std::uintmax_t Bytes) const {
        return [this, Bytes] { fs::resize_file(Root / "big.bin", Bytes); };
    }

    const RemovableDisk Disk{Root.Path(), "1\n"};
};

TEST_F(ChangingSources, AreMissedWhenTheyVanish) {
    ExpectEnd(CopyWhile([this] {
                  fs::remove(Root / "tree/a");
                  fs::remove(Root / "tree/b");
              }),
              1,
              "tarvane: 2 entries vanished before the turn came to them\n"
              "Copied 2 entries, 12.0 MB.\n");
    EXPECT_EQ(TreeOf(Root / "disk/tree"), Tree());
}

TEST_F(ChangingSources, AreMissedWhenTheyBecomeShorter) {
    ExpectEnd(CopyWhile(Resizing(10 << 20)), 1,
              "tarvane: files have become shorter since they were counted, by 2.0 MB; 1 copy is "
              "not as long as its source was:\n  " +
                  (Root / "disk/big.bin").string() + "\nCopied 4 entries, 10.0 MB.\n");
    EXPECT_EQ(fs::file_size(Root / "disk/big.bin"), 10U << 20);
}

TEST_F(ChangingSources, AreRecordedAsShorterThanCounted) {
    const ProgramResult result = CopyWhile(Resizing(10 << 20), {"--progress=json"});
    EXPECT_EQ(result.Status, 1);
    EXPECT_NE(result.Output.find(R"("less_than_counted":true)"), std::string::npos)
        << result.Output;
}

TEST_F(ChangingSources, AreNamedWhenTheyGrow) {
    ExpectEnd(CopyWhile(Resizing(13 << 20)), 1,
              "tarvane: 1 copy is not as long as its source was:\n  " +
                  (Root / "disk/big.bin").string() + "\nCopied 4 entries, 13.0 MB.\n");
}

TEST_F(ChangingSources, MayGrowWhereNobodyRemembersTheirLength) {
    ExpectEnd(CopyWhile(Resizing(13 << 20), {"--no-preserve"}), 0, "Copied 4 entries, 13.0 MB.\n");
}

} // namespace
