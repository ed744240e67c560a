// What each choice for taken names does to the disk, and the records and lines for programs: the
// real program without a terminal.

#include "file_tree.h"
#include "run_program.h"
#include "temporary_directory.h"
#include "without_time.h"

#include <filesystem>
#include <sstream>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

class ChoicesThroughPipes : public testing::Test {
protected:
    // Each name says how the source compares with what is there.
    ChoicesThroughPipes() {
        Pair("newer", "n", "o", 2000, 1000);
        Pair("older", "n", "o", 1000, 2000);
        Pair("larger", "new", "o", 1000, 1000);
        Pair("smaller", "n", "old", 1000, 1000);
        Pair("same", "=", "=", 1000, 1000);
    }

    void Pair(const std::string& Name, const std::string& New, const std::string& Old,
              std::int64_t NewTime, std::int64_t OldTime) {
        WriteFile(Root / "from" / Name, New);
        WriteFile(Root / "into" / Name, Old);
        SetModifiedTime(Root / "from" / Name, NewTime);
        SetModifiedTime(Root / "into" / Name, OldTime);
    }

    ProgramResult Tarvane(std::vector<std::string> Arguments) {
        Arguments.insert(Arguments.begin(), TARVANE_PROGRAM);
        return RunProgram(Arguments, Root.Path().string());
    }

    ProgramResult CopyAll(std::vector<std::string> Options) {
        Options.insert(Options.begin(), "copy");
        for (const char* name : {"newer", "older", "larger", "smaller", "same"}) {
            Options.push_back(std::string("from/") + name);
        }
        Options.emplace_back("into");
        return Tarvane(Options);
    }

    // The names whose old file is gone.
    std::string Replaced() {
        std::string names;
        for (const char* name : {"newer", "older", "larger", "smaller"}) {
            if (ReadFile(Root / "into" / name)[0] == 'n') {
                names += (names.empty() ? "" : " ") + std::string(name);
            }
        }
        return names;
    }

    void ExpectReplaced(const std::vector<std::string>& Options, const std::string& Names,
                        const std::string& LastLine) {
        const ProgramResult result = CopyAll(Options);
        EXPECT_EQ(result.Status, 0);
        EXPECT_EQ(result.Output, "");
        EXPECT_EQ(WithoutTime(result.Errors), LastLine + "\n");
        EXPECT_EQ(Replaced(), Names);
    }

    std::vector<Json> Records(const std::string& Text) {
        std::vector<Json> records;
        std::istringstream lines(Text);
        for (std::string line; std::getline(lines, line);) {
            records.push_back(Json::parse(line));
        }
        return records;
    }

    TemporaryDirectory Root;
};

TEST_F(ChoicesThroughPipes, Overwrite) {
    ExpectReplaced({"--on-conflict=overwrite"}, "newer older larger smaller",
                   "Copied 5 entries, 7 B; 5 replaced.");
}
TEST_F(ChoicesThroughPipes, TheOptionF) {
    ExpectReplaced({"-f"}, "newer older larger smaller", "Copied 5 entries, 7 B; 5 replaced.");
}
TEST_F(ChoicesThroughPipes, Skip) {
    ExpectReplaced({"--on-conflict=skip"}, "", "Nothing copied; 5 skipped.");
}
TEST_F(ChoicesThroughPipes, TheOptionN) {
    ExpectReplaced({"-n"}, "", "Nothing copied; 5 skipped.");
}
TEST_F(ChoicesThroughPipes, Older) {
    ExpectReplaced({"--on-conflict=older"}, "newer", "Copied 1 entry, 1 B; 4 skipped, 1 replaced.");
}
TEST_F(ChoicesThroughPipes, TheOptionU) {
    ExpectReplaced({"-u"}, "newer", "Copied 1 entry, 1 B; 4 skipped, 1 replaced.");
}
TEST_F(ChoicesThroughPipes, Compare) {
    ExpectReplaced({"--on-conflict=compare"}, "newer older larger smaller",
                   "Copied 4 entries, 6 B; 1 skipped, 4 replaced.");
}
TEST_F(ChoicesThroughPipes, Larger) {
    ExpectReplaced({"--on-conflict=larger"}, "larger",
                   "Copied 1 entry, 3 B; 4 skipped, 1 replaced.");
}
TEST_F(ChoicesThroughPipes, SizeDiffers) {
    ExpectReplaced({"--on-conflict=size-differs"}, "larger smaller",
                   "Copied 2 entries, 4 B; 3 skipped, 2 replaced.");
}
TEST_F(ChoicesThroughPipes, TheLastOfContradictingOptionsCounts) {
    ExpectReplaced({"-f", "-n"}, "", "Nothing copied; 5 skipped.");
    ExpectReplaced({"-n", "--on-conflict=larger"}, "larger",
                   "Copied 1 entry, 3 B; 4 skipped, 1 replaced.");
}

TEST_F(ChoicesThroughPipes, KeepBothFindsFreeNames) {
    WriteFile(Root / "into/newer-2", "taken");
    ExpectReplaced({"--on-conflict=keep-both"}, "", "Copied 5 entries, 7 B; 5 renamed.");
    EXPECT_EQ(ReadFile(Root / "into/newer-3"), "n");
    EXPECT_EQ(ReadFile(Root / "into/same-2"), "=");
}

TEST_F(ChoicesThroughPipes, FailNamesThePathAndTouchesNothing) {
    WriteFile(Root / "from/free", "free");
    const Tree before = TreeOf(Root / "into");
    const ProgramResult result =
        Tarvane({"copy", "--on-conflict=fail", "from/free", "from/older", "into"});
    EXPECT_EQ(result.Status, 1);
    EXPECT_EQ(result.Output, "");
    EXPECT_NE(result.Errors.find((Root / "into/older").string()), std::string::npos)
        << result.Errors;
    EXPECT_EQ(TreeOf(Root / "into"), before);
}

TEST_F(ChoicesThroughPipes, FailKeepsWhatStandsInADirectory) {
    const Tree before = TreeOf(Root / "into");
    const ProgramResult result = Tarvane(
        {"copy", "-T", "--on-conflict=fail", "--on-directory-conflict=merge", "from", "into"});
    EXPECT_EQ(result.Status, 1);
    EXPECT_TRUE(result.Errors.starts_with("Names at the destination are taken:\n  /"))
        << result.Errors;
    EXPECT_TRUE(result.Errors.ends_with("tarvane: nothing was touched: 5 names are in the way\n"))
        << result.Errors;
    EXPECT_EQ(TreeOf(Root / "into"), before);
}

TEST_F(ChoicesThroughPipes, DirectoriesAreMergedUnlessToldOtherwise) {
    WriteFile(Root / "from/sub/new", "n");
    WriteFile(Root / "into/sub/old", "o");
    EXPECT_EQ(Tarvane({"copy", "-n", "from/sub", "into"}).Status, 0);
    EXPECT_EQ(TreeOf(Root / "into/sub"), (Tree{{"new", "file n"}, {"old", "file o"}}));
}

TEST_F(ChoicesThroughPipes, DirectoriesAreSkippedWhole) {
    WriteFile(Root / "from/sub/new", "n");
    WriteFile(Root / "into/sub/old", "o");
    const ProgramResult result =
        Tarvane({"copy", "-f", "--on-directory-conflict=skip", "from/sub", "into"});
    EXPECT_EQ(result.Status, 0);
    EXPECT_EQ(WithoutTime(result.Errors), "Nothing copied; 2 skipped.\n");
    EXPECT_EQ(TreeOf(Root / "into/sub"), (Tree{{"old", "file o"}}));
}

TEST_F(ChoicesThroughPipes, DirectoriesCanFail) {
    WriteFile(Root / "from/sub/new", "n");
    WriteFile(Root / "into/sub/old", "o");
    const ProgramResult result =
        Tarvane({"copy", "-f", "--on-directory-conflict=fail", "from/sub", "into"});
    EXPECT_EQ(result.Status, 1);
    EXPECT_NE(result.Errors.find((Root / "into/sub").string()), std::string::npos);
    EXPECT_EQ(TreeOf(Root / "into/sub"), (Tree{{"old", "file o"}}));
}

TEST_F(ChoicesThroughPipes, AMoveRemovesWhatItCopiedAndKeepsWhatItSkipped) {
    const ProgramResult result = Tarvane(
        {"move", "-T", "--on-conflict=larger", "--on-directory-conflict=merge", "from", "into"});
    EXPECT_EQ(result.Status, 0);
    EXPECT_EQ(WithoutTime(result.Errors), "Moved 1 entry, 3 B; 4 skipped, 1 replaced.\n");
    EXPECT_EQ(Replaced(), "larger");
    EXPECT_EQ(
        TreeOf(Root / "from"),
        (Tree{
            {"newer", "file n"}, {"older", "file n"}, {"smaller", "file n"}, {"same", "file ="}}));
}

TEST_F(ChoicesThroughPipes, JsonReportsEveryConflictWithItsAnswerAndTheResult) {
    const ProgramResult result = CopyAll({"--progress=json", "--on-conflict=larger"});
    EXPECT_EQ(result.Status, 0);
    EXPECT_EQ(result.Errors, "");
    std::vector<std::string> answers;
    for (const Json& record : Records(result.Output)) {
        if (record.at("event") == "conflict") {
            answers.push_back(
                fs::path(record.at("destination").get<std::string>()).filename().string() + " " +
                record.at("answer").get<std::string>() + ": " +
                record.at("outcome").get<std::string>());
        }
    }
    EXPECT_EQ(answers, (std::vector<std::string>{"newer skip: skipped", "older skip: skipped",
                                                 "larger overwrite: replaced",
                                                 "smaller skip: skipped", "same skip: skipped"}));
    Json last = Records(result.Output).back();
    EXPECT_GT(last.at("elapsed"), 0.0);
    last.erase("elapsed");
    EXPECT_EQ(WithoutTime(last.at("status")), "Copied 1 entry, 3 B; 4 skipped, 1 replaced.");
    last.erase("status");
    EXPECT_EQ(last, (Json{{"event", "done"},
                          {"result", "succeeded"},
                          {"exit_status", 0},
                          {"flushed", nullptr},
                          {"entries", 1},
                          {"bytes", 3},
                          {"skipped", 4},
                          {"replaced", 1},
                          {"renamed", 0},
                          {"finished", 1},
                          {"left_alone", 0},
                          {"changed_length", 0},
                          {"unreached", 0}}));
}

TEST_F(ChoicesThroughPipes, JsonReportsEveryNameThatKeepsTheRunFromBeginning) {
    const ProgramResult result = Tarvane({"copy", "-T", "--progress=json", "--on-conflict=fail",
                                          "--on-directory-conflict=merge", "from", "into"});
    EXPECT_EQ(result.Status, 1);
    std::vector<std::string> kinds;
    for (const Json& record : Records(result.Output)) {
        if (record.at("event") == "preflight") {
            kinds.push_back(record.at("kind"));
        }
    }
    EXPECT_EQ(kinds, std::vector<std::string>(5, "taken-name"));
    EXPECT_EQ(Records(result.Output).back().at("result"), "failed");
    EXPECT_EQ(Records(result.Output).back().at("status"),
              "nothing was touched: 5 names are in the way");
}

TEST_F(ChoicesThroughPipes, JsonTellsEveryNameThatIsSkipped) {
    const ProgramResult result = CopyAll({"--progress=json", "-n"});
    const std::vector<Json> records = Records(result.Output);
    const auto tellsOne = [](const Json& Record) { return Record.at("event") == "conflict"; };
    EXPECT_EQ(std::ranges::count_if(records, tellsOne), 5);
}

TEST_F(ChoicesThroughPipes, JsonEndsWithTheCountsOfTheWholeJob) {
    const ProgramResult result = CopyAll({"--progress=json", "-n"});
    Json lastProgress;
    for (const Json& record : Records(result.Output)) {
        if (record.at("event") == "progress") {
            lastProgress = record;
        }
    }
    EXPECT_EQ(lastProgress.at("done_items"), 5);
    EXPECT_EQ(lastProgress.at("total_items"), 5);
    EXPECT_EQ(lastProgress.at("done_bytes"), 7);
    EXPECT_EQ(lastProgress.at("total_bytes"), 7);
    EXPECT_EQ(lastProgress.at("percent"), 100);
}

TEST_F(ChoicesThroughPipes, JsonGivesTheBytesOfNamesThatAreNotUtf8) {
    WriteFile(Root / "bad\xFF.bin", "data");
    const ProgramResult result =
        Tarvane({"copy", "--progress=json", "-n", "bad\xFF.bin", "into/bad"});
    EXPECT_EQ(result.Status, 0);
    EXPECT_NE(result.Output.find("626164ff2e62696e"), std::string::npos) << result.Output;
    for (const Json& record : Records(result.Output)) {
        EXPECT_TRUE(record.contains("event"));
    }
}

TEST_F(ChoicesThroughPipes, JsonReportsWhatThePreflightFound) {
    fs::create_symlink("nowhere", Root / "from/dangling");
    const ProgramResult result = Tarvane({"copy", "--progress=json", "-n", "from", "elsewhere"});
    EXPECT_EQ(result.Status, 1);
    const Json first = Records(result.Output).front();
    EXPECT_EQ(first.at("event"), "preflight");
    EXPECT_EQ(first.at("kind"), "dangling-link");
    EXPECT_EQ(first.at("path"), (Root / "from/dangling").string());
    EXPECT_EQ(first.at("stops_job"), true);
    const Json last = Records(result.Output).back();
    EXPECT_EQ(last.at("result"), "failed");
    EXPECT_EQ(last.at("status"), (Root / "from/dangling").string() + ": No such file or directory");
}

TEST_F(ChoicesThroughPipes, LinesEndWithTheFinalLine) {
    const ProgramResult result = CopyAll({"--progress=lines", "--interval=0.1", "-n"});
    EXPECT_EQ(result.Status, 0);
    EXPECT_EQ(result.Output, "");
    EXPECT_TRUE(WithoutTime("\n" + result.Errors).ends_with("\nNothing copied; 5 skipped.\n"))
        << result.Errors;
}

TEST_F(ChoicesThroughPipes, VerboseSaysWhatBecameOfEachTakenName) {
    WriteFile(Root / "from/free", "n");
    const ProgramResult result = Tarvane({"copy", "-v", "-u", "--on-directory-conflict=merge", "-t",
                                          "into", "from/newer", "from/older", "from/free"});
    EXPECT_EQ(result.Status, 0);
    const auto line = [this](const std::string& Name) {
        return "'" + (Root / "from" / Name).string() + "' -> '" + (Root / "into" / Name).string() +
               "'";
    };
    EXPECT_EQ(result.Output, line("newer") + "\n" + line("older") + "\n" + line("free") + "\n" +
                                 line("newer") + ": replaced\n" + line("older") + ": skipped\n");
    EXPECT_EQ(WithoutTime(result.Errors), "Copied 2 entries, 2 B; 1 skipped, 1 replaced.\n");
}

TEST_F(ChoicesThroughPipes, QuietPrintsNothingOnSuccess) {
    const ProgramResult result = CopyAll({"-q", "-n"});
    EXPECT_EQ(result.Status, 0);
    EXPECT_EQ(result.Output + result.Errors, "");
}

TEST_F(ChoicesThroughPipes, VerboseSaysWhatGoesWhere) {
    const ProgramResult result = Tarvane({"copy", "-v", "-n", "from/newer", "elsewhere"});
    EXPECT_EQ(result.Status, 0);
    EXPECT_EQ(result.Output, "'" + (Root / "from/newer").string() + "' -> '" +
                                 (Root / "elsewhere").string() + "'\n");
}

TEST_F(ChoicesThroughPipes, ADryRunTellsTheTotalsAndTouchesNothing) {
    const ProgramResult result = Tarvane({"copy", "--dry-run", "-n", "from", "elsewhere"});
    EXPECT_EQ(result.Status, 0);
    EXPECT_EQ(result.Output, "Would copy 6 entries, 7 B (7 bytes).\n");
    EXPECT_EQ(result.Errors, "");
    EXPECT_FALSE(fs::exists(Root / "elsewhere"));
}

TEST_F(ChoicesThroughPipes, ADryRunTellsWhatTheChoiceWouldDo) {
    const ProgramResult skipped = Tarvane({"copy", "-T", "--dry-run", "-n", "from", "into"});
    EXPECT_EQ(skipped.Status, 0);
    EXPECT_EQ(skipped.Output, "Would copy nothing; 5 skipped.\n");
    const ProgramResult taken =
        Tarvane({"copy", "-T", "--dry-run", "--on-conflict=fail", "from", "into"});
    EXPECT_EQ(taken.Status, 1);
    EXPECT_EQ(taken.Output, "Would copy nothing; 5 in the way.\n");
    const ProgramResult replaced = Tarvane({"copy", "-T", "--dry-run", "-f", "from", "into"});
    EXPECT_EQ(replaced.Status, 0);
    EXPECT_EQ(replaced.Output, "Would copy 5 entries, 7 B (7 bytes); 5 replaced.\n");
}

// The engine would create a file where the link points.
TEST_F(ChoicesThroughPipes, NoPreflightGuardsALinkThatLeadsNowhere) {
    fs::remove(Root / "into/older");
    fs::create_symlink(Root / "elsewhere", Root / "into/older");
    const ProgramResult result = Tarvane({"copy", "-T", "-f", "--no-preflight", "from", "into"});
    EXPECT_EQ(result.Status, 1);
    EXPECT_EQ(result.Errors, "tarvane: not writing through dangling symlink '" +
                                 (Root / "into/older").string() + "'\n");
    EXPECT_FALSE(fs::exists(Root / "elsewhere"));
}

// The target of the link was not selected, and a move that has to copy would remove what is in it.
TEST_F(ChoicesThroughPipes, AMoveThroughALinkStopsUnlessItIsAllowed) {
    fs::create_directory_symlink(Root / "into", Root / "from/link");
    fs::create_directory(Root / "elsewhere");
    fs::create_directory(Root / "elsewhere/from");
    const ProgramResult refused = Tarvane({"move", "-n", "from", "elsewhere"});
    EXPECT_EQ(refused.Status, 1);
    EXPECT_NE(refused.Errors.find("--follow-links"), std::string::npos) << refused.Errors;
    EXPECT_EQ(TreeOf(Root / "elsewhere"), (Tree{{"from", "dir"}}));
    EXPECT_EQ(TreeOf(Root / "into").size(), 5U);

    EXPECT_EQ(Tarvane({"move", "-n", "--follow-links", "from", "elsewhere"}).Status, 0);
    EXPECT_EQ(TreeOf(Root / "into"), Tree());
    EXPECT_EQ(TreeOf(Root / "elsewhere/from/link").size(), 5U);
}

} // namespace
