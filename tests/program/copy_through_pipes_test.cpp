// `tarvane copy` and `tarvane move` as a script runs them: no terminal anywhere. The program is the
// real one.

#include "file_tree.h"
#include "mounts.h"
#include "needs.h"
#include "run_program.h"
#include "temporary_directory.h"
#include "without_time.h"

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

class ThroughPipes : public testing::Test {
protected:
    ProgramResult Tarvane(std::vector<std::string> Arguments) {
        Arguments.insert(Arguments.begin(), TARVANE_PROGRAM);
        return RunProgram(Arguments, Root.Path().string());
    }

    TemporaryDirectory Root;
};

#define EXPECT_RESULT(Result, WantedStatus, WantedOutput, WantedErrors)                            \
    do {                                                                                           \
        const ProgramResult result = (Result);                                                     \
        EXPECT_EQ(result.Status, WantedStatus);                                                    \
        EXPECT_EQ(result.Output, WantedOutput);                                                    \
        EXPECT_EQ(WithoutTime(result.Errors), WantedErrors);                                       \
    } while (false)

TEST_F(ThroughPipes, CopiesARealTreeByteForByteAndPrintsOneLine) {
    const ProgramResult copied =
        Tarvane({"copy", "--on-conflict=skip", "/usr/include/linux", "copied"});
    EXPECT_EQ(copied.Status, 0);
    EXPECT_EQ(copied.Output, "");
    EXPECT_TRUE(std::regex_match(WithoutTime(copied.Errors),
                                 std::regex(R"(Copied [0-9,]+ entries, [0-9.]+ MB\.\n)")))
        << copied.Errors;
    EXPECT_RESULT(RunProgram({"diff", "-r", "/usr/include/linux", (Root / "copied").string()}), 0,
                  "", "");
}

TEST_F(ThroughPipes, EndsTheExampleOfTheReadmeAsTheReadmeSays) {
    const std::string source = TARVANE_SOURCE_DIRECTORY;
    const std::string readme = ReadFile(source + "/README.md");
    EXPECT_NE(readme.find("\n    tools/run copy -nT completions /tmp/completions\n"),
              std::string::npos);
    const ProgramResult copied =
        RunProgram({TARVANE_PROGRAM, "copy", "-nT", "completions", Root / "new"}, source);
    EXPECT_EQ(copied.Status, 0);
    EXPECT_NE(readme.find("\n    " + WithoutTime(copied.Errors)), std::string::npos)
        << copied.Errors;
}

// Each level of a tree takes a descriptor, and the soft limit is the usual one.
TEST_F(ThroughPipes, CopiesATreeOfMoreLevelsThanTheSoftLimitOfDescriptors) {
    constexpr int kLevels = 1200;
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
    if (limit.rlim_max < rlim_t{2} * kLevels) {
        SkipTest("needs a hard limit of 2,400 descriptors");
    }
    std::string below;
    for (int level = 0; level < kLevels; ++level) {
        fs::create_directory(Root / ("tree" + below));
        below += "/d";
    }
    WriteFile(Root / ("tree" + below), "data");
    const ProgramResult result = RunProgram(
        {"/bin/sh", "-c", "ulimit -S -n 1024; exec \"$0\" copy --on-conflict=skip tree copied",
         TARVANE_PROGRAM},
        Root.Path().string());
    EXPECT_EQ(result.Status, 0) << result.Errors;
    EXPECT_EQ(ReadFile(Root / ("copied" + below)), "data");
    // The library would need as many descriptors to remove the trees.
    RunProgram({"rm", "-r", "tree", "copied"}, Root.Path().string());
}

TEST_F(ThroughPipes, CopiesNamesThatAreAnyBytes) {
    const std::vector<std::string> names = {
        " leading blank",  "new\nline",   "-rf",  "[z]", "[a,b]",  "a,b",
        "bad\xFF\xFE.bin", "\x1b[31mred", "日本", "*",   "quo'te", "back\\slash"};
    for (const std::string& name : names) {
        WriteFile(Root / "from" / name, "contents of " + name);
    }
    fs::create_directory(Root / "into");
    std::vector<std::string> arguments = {"copy", "--on-conflict=skip", "-t", "../into", "--"};
    arguments.insert(arguments.begin(), TARVANE_PROGRAM);
    arguments.insert(arguments.end(), names.begin(), names.end());
    EXPECT_RESULT(RunProgram(arguments, (Root / "from").string()), 0, "",
                  "Copied 12 entries, 220 B.\n");
    EXPECT_EQ(TreeOf(Root / "into"), TreeOf(Root / "from"));
}

// As some shells and services start their programs.
TEST_F(ThroughPipes, FlushesWhereTheSignalOfEndedChildrenIsIgnored) {
    constexpr double kLimitSeconds = 20.0;
    EnterPrivateMountNamespace();
    fs::create_directory(Root / "disk");
    const ScopedMount disk = MountLoopDisk(Root / "disk", 8);
    WriteFile(Root / "file", "data");
    EXPECT_RESULT(RunProgram({"env", "--ignore-signal=CHLD", TARVANE_PROGRAM, "copy",
                              "--on-conflict=skip", "--flush=always", "file", "disk"},
                             Root.Path().string(), {}, kLimitSeconds),
                  0, "",
                  "Copied 1 entry, 4 B.\nEverything is written. It is safe to unplug the disk.\n");
}

TEST_F(ThroughPipes, MovesATreeAcrossFileSystems) {
    EnterPrivateMountNamespace();
    fs::create_directory(Root / "other");
    const ScopedMount other = MountTmpfs(Root / "other", "size=16m");
    WriteFile(Root / "tree/a", PatternBytes(300000));
    WriteFile(Root / "tree/sub/b", "b");
    fs::create_directory(Root / "tree/empty");
    const Tree before = TreeOf(Root / "tree");
    EXPECT_RESULT(Tarvane({"move", "--on-conflict=skip", "tree", "other"}), 0, "",
                  "Moved 5 entries, 293.0 KB.\n");
    EXPECT_EQ(TreeOf(Root / "other/tree"), before);
    EXPECT_FALSE(fs::exists(Root / "tree"));
}

TEST_F(ThroughPipes, MovesWithinAFileSystemByRenaming) {
    WriteFile(Root / "from", "data");
    struct stat before {};
    ASSERT_EQ(stat((Root / "from").c_str(), &before), 0);
    EXPECT_RESULT(Tarvane({"move", "--on-conflict=skip", "from", "to"}), 0, "",
                  "Moved 1 entry, 4 B.\n");
    struct stat after {};
    ASSERT_EQ(stat((Root / "to").c_str(), &after), 0);
    EXPECT_EQ(before.st_ino, after.st_ino);
}

TEST_F(ThroughPipes, RefusesToAskWhereNobodyCanAnswer) {
    WriteFile(Root / "from", "data");
    for (const char* option : {"-i", "--on-conflict=ask"}) {
        EXPECT_RESULT(Tarvane({"copy", option, "from", "to"}), 2, "",
                      "tarvane: nobody can be asked about taken names without a terminal; pass "
                      "--on-conflict=overwrite, skip or another choice\n");
    }
    EXPECT_FALSE(fs::exists(Root / "to"));
}

TEST_F(ThroughPipes, NamesEveryMistakeAndWhereToRead) {
    EXPECT_RESULT(Tarvane({"copy", "--forse", "-a", "from"}), 2, "",
                  "tarvane: unrecognized option '--forse'; did you mean '--force'?\n"
                  "tarvane: invalid option -- 'a'; links are followed and not copied, so there "
                  "is no archive mode; --preserve=all carries over modes, times and owners\n"
                  "tarvane: missing destination file operand after 'from'\n"
                  "Try 'tarvane --help'.\n");
    EXPECT_RESULT(Tarvane({"cpoy"}), 2, "",
                  "tarvane: unknown command 'cpoy'; did you mean 'copy'?\n"
                  "Try 'tarvane --help'.\n");
}

TEST_F(ThroughPipes, SaysWhyTheHelpCannotBeWritten) {
    NeedDeviceNode("/dev/full");
    EXPECT_RESULT(RunProgram({"sh", "-c", "exec \"$0\" --help >/dev/full", TARVANE_PROGRAM}), 1, "",
                  "tarvane: write error: No space left on device\n");
}

TEST_F(ThroughPipes, NeedsNoChoiceWhereNoNameIsTaken) {
    WriteFile(Root / "from", "data");
    EXPECT_RESULT(Tarvane({"copy", "from", "to"}), 0, "", "Copied 1 entry, 4 B.\n");
    EXPECT_EQ(ReadFile(Root / "to"), "data");
}

TEST_F(ThroughPipes, FailsAtATakenNameByItself) {
    WriteFile(Root / "from", "new");
    WriteFile(Root / "to", "old");
    const ProgramResult result = Tarvane({"copy", "from", "to"});
    EXPECT_EQ(result.Status, 1);
    EXPECT_NE(result.Errors.find("'" + (Root / "to").string() + "'"), std::string::npos)
        << result.Errors;
    EXPECT_EQ(ReadFile(Root / "to"), "old");
}

TEST_F(ThroughPipes, CountsSkippedEntriesAsDone) {
    WriteFile(Root / "from", "new");
    WriteFile(Root / "to", "old");
    EXPECT_RESULT(Tarvane({"copy", "--on-conflict=skip", "from", "to"}), 0, "",
                  "Nothing copied; 1 skipped.\n");
    EXPECT_EQ(ReadFile(Root / "to"), "old");
}

TEST_F(ThroughPipes, OverwritesWhenToldTo) {
    WriteFile(Root / "from", "new");
    WriteFile(Root / "to", "longer old contents");
    EXPECT_RESULT(Tarvane({"copy", "--on-conflict=overwrite", "from", "to"}), 0, "",
                  "Copied 1 entry, 3 B; 1 replaced.\n");
    EXPECT_EQ(ReadFile(Root / "to"), "new");
}

TEST_F(ThroughPipes, MakesTheMissingParentOfANewName) {
    WriteFile(Root / "from", "data");
    EXPECT_RESULT(Tarvane({"copy", "--on-conflict=skip", "from", "deep/er/to"}), 0, "",
                  "The job makes directories that do not exist:\n  " + (Root / "deep/er").string() +
                      "\nCopied 1 entry, 4 B.\n");
    EXPECT_EQ(ReadFile(Root / "deep/er/to"), "data");
}

TEST_F(ThroughPipes, NamesEveryMissingSourceBeforeAnythingIsTouched) {
    WriteFile(Root / "there", "data");
    fs::create_directory(Root / "into");
    const ProgramResult result =
        Tarvane({"copy", "--on-conflict=skip", "gone", "there", "lost", "into"});
    EXPECT_EQ(result.Status, 1);
    EXPECT_EQ(result.Output, "");
    EXPECT_NE(result.Errors.find("gone"), std::string::npos);
    EXPECT_NE(result.Errors.find("lost"), std::string::npos);
    EXPECT_EQ(TreeOf(Root / "into"), Tree());
}

TEST_F(ThroughPipes, NamesMissingSourcesAndTheTargetThatIsNoDirectory) {
    WriteFile(Root / "there", "data");
    WriteFile(Root / "target", "data");
    EXPECT_RESULT(Tarvane({"move", "missing", "there", "target"}), 2, "",
                  "tarvane: cannot stat 'missing': No such file or directory\n"
                  "tarvane: target 'target': Not a directory\n");
    EXPECT_TRUE(fs::exists(Root / "there"));
}

TEST_F(ThroughPipes, RefusesTwoSourcesThatWouldLandOnOneName) {
    WriteFile(Root / "a/same", "1");
    WriteFile(Root / "b/same", "2");
    fs::create_directory(Root / "into");
    const ProgramResult result =
        Tarvane({"copy", "--on-conflict=overwrite", "a/same", "b/same", "into"});
    EXPECT_EQ(result.Status, 2);
    EXPECT_NE(result.Errors.find("same"), std::string::npos);
    EXPECT_EQ(TreeOf(Root / "into"), Tree());
}

TEST_F(ThroughPipes, FailsOnAFullFileSystemWithoutAPartialFile) {
    EnterPrivateMountNamespace();
    fs::create_directory(Root / "small");
    const ScopedMount small = MountTmpfs(Root / "small", "size=1m");
    WriteFile(Root / "big", PatternBytes(3 << 20));
    const ProgramResult result =
        Tarvane({"copy", "--no-preflight", "--on-conflict=skip", "big", "small"});
    EXPECT_EQ(result.Status, 1);
    EXPECT_EQ(result.Output, "");
    EXPECT_EQ(result.Errors, "tarvane: " + (Root / "small/big").string() +
                                 ": Failed while writing destination file. (No space left on " +
                                 (Root / "small").string() +
                                 ": 3.0 MB needed, 1.0 MB free)\nNothing copied.\n");
    EXPECT_EQ(TreeOf(Root / "small"), Tree());
}

TEST_F(ThroughPipes, NeverSendsEscapeSequences) {
    WriteFile(Root / "\x1b[2Jclear", "data");
    const ProgramResult result =
        Tarvane({"copy", "-v", "--progress=lines", "--on-conflict=skip", "\x1b[2Jclear", "to"});
    EXPECT_EQ(result.Status, 0);
    EXPECT_EQ((result.Output + result.Errors).find('\x1b'), std::string::npos);
}

// The program does not die of the write: it cancels and removes the partial file. The disk makes
// the copy slow enough for that.
TEST_F(ThroughPipes, CancelsWhenNobodyReadsTheOutput) {
    const RemovableDisk disk(Root.Path(), "1\n");
    WriteFile(Root / "big.bin", PatternBytes(20 << 20));
    EXPECT_RESULT(RunProgram({"/bin/bash", "-c",
                              "exec > >(:); wait $!; exec \"$0\" copy -v --no-preflight "
                              "--on-conflict=skip big.bin disk",
                              TARVANE_PROGRAM},
                             Root.Path().string()),
                  128 + SIGPIPE, "",
                  "Copy canceled. Partial destination files may remain.\nNothing copied.\n");
    EXPECT_EQ(TreeOf(Root / "disk").count("big.bin"), 0U);
}

} // namespace
