#include "transfer_options.h"

#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "mounts.h"
#include "needs.h"
#include "parsed_command_line.h"

namespace {

FileConflictChoice FileChoice(const Words& Options) {
    Words arguments{"copy"};
    arguments.insert(arguments.end(), Options.begin(), Options.end());
    arguments.insert(arguments.end(), {"a", "b"});
    return Request(arguments).OnConflict.value();
}

TEST(TransferOptions, KnowsEveryChoiceForFiles) {
    EXPECT_EQ(FileChoice({"--on-conflict=ask"}), FileConflictChoice::Ask);
    EXPECT_EQ(FileChoice({"--on-conflict=overwrite"}), FileConflictChoice::Overwrite);
    EXPECT_EQ(FileChoice({"--on-conflict=skip"}), FileConflictChoice::Skip);
    EXPECT_EQ(FileChoice({"--on-conflict=older"}), FileConflictChoice::Older);
    EXPECT_EQ(FileChoice({"--on-conflict=compare"}), FileConflictChoice::Compare);
    EXPECT_EQ(FileChoice({"--on-conflict=larger"}), FileConflictChoice::Larger);
    EXPECT_EQ(FileChoice({"--on-conflict=size-differs"}), FileConflictChoice::SizeDiffers);
    EXPECT_EQ(FileChoice({"--on-conflict=keep-both"}), FileConflictChoice::KeepBoth);
    EXPECT_EQ(FileChoice({"--on-conflict=fail"}), FileConflictChoice::Fail);
}

TEST(TransferOptions, LettersChooseAsInCpAndMv) {
    EXPECT_EQ(FileChoice({"-f"}), FileConflictChoice::Overwrite);
    EXPECT_EQ(FileChoice({"-n"}), FileConflictChoice::Skip);
    EXPECT_EQ(FileChoice({"-u"}), FileConflictChoice::Older);
    EXPECT_EQ(FileChoice({"-f", "-i"}), FileConflictChoice::Ask);
}

TEST(TransferOptions, WordsChooseAsInCpAndMv) {
    EXPECT_EQ(FileChoice({"--interactive"}), FileConflictChoice::Ask);
    EXPECT_EQ(FileChoice({"--force"}), FileConflictChoice::Overwrite);
    EXPECT_EQ(FileChoice({"--no-clobber"}), FileConflictChoice::Skip);
    EXPECT_EQ(FileChoice({"--update"}), FileConflictChoice::Older);
    EXPECT_EQ(FileChoice({"--update=older"}), FileConflictChoice::Older);
    EXPECT_EQ(FileChoice({"--update=all"}), FileConflictChoice::Overwrite);
    EXPECT_EQ(FileChoice({"--update=none"}), FileConflictChoice::Skip);
    EXPECT_EQ(FileChoice({"--update=none-fail"}), FileConflictChoice::Fail);
}

// As in cp.
TEST(TransferOptions, UpdateTakesNoWordOfItsOwnForItsValue) {
    EXPECT_EQ(Operands({"copy", "--update", "all", "b"}), Words({"all", "b"}));
    EXPECT_EQ(Operands({"copy", "-u", "all", "b"}), Words({"all", "b"}));
}

TEST(TransferOptions, TheLastConflictOptionWins) {
    EXPECT_EQ(FileChoice({"-n", "-f"}), FileConflictChoice::Overwrite);
    EXPECT_EQ(FileChoice({"-fn"}), FileConflictChoice::Skip);
    EXPECT_EQ(FileChoice({"--on-conflict=keep-both", "-u"}), FileConflictChoice::Older);
    EXPECT_EQ(FileChoice({"-u", "--on-conflict", "compare"}), FileConflictChoice::Compare);
}

TEST(TransferOptions, KnowsEveryChoiceForDirectories) {
    const auto choice = [](const std::string& Name) {
        return Request({"copy", "--on-directory-conflict=" + Name, "a", "b"}).OnDirectoryConflict;
    };
    EXPECT_EQ(choice("ask"), DirectoryConflictChoice::Ask);
    EXPECT_EQ(choice("merge"), DirectoryConflictChoice::Merge);
    EXPECT_EQ(choice("skip"), DirectoryConflictChoice::Skip);
    EXPECT_EQ(choice("fail"), DirectoryConflictChoice::Fail);
}

TEST(TransferOptions, KnowsEveryProgressStyle) {
    const auto style = [](const std::string& Name) {
        return WholeRequest({"copy", "--progress", Name, "a", "b"}).Progress;
    };
    EXPECT_EQ(style("auto"), ProgressStyle::Auto);
    EXPECT_EQ(style("live"), ProgressStyle::Live);
    EXPECT_EQ(style("lines"), ProgressStyle::Lines);
    EXPECT_EQ(style("json"), ProgressStyle::Json);
    EXPECT_EQ(style("none"), ProgressStyle::None);
}

TEST(TransferOptions, KnowsEveryFlushChoice) {
    const auto choice = [](const std::string& Name) {
        return Request({"copy", "--flush=" + Name, "a", "b"}).Flush;
    };
    EXPECT_EQ(choice("auto"), FlushChoice::Auto);
    EXPECT_EQ(choice("always"), FlushChoice::Always);
    EXPECT_EQ(choice("never"), FlushChoice::Never);
}

PreserveChoice Preserved(const std::string& Command, const Words& Options) {
    Words arguments{Command};
    arguments.insert(arguments.end(), Options.begin(), Options.end());
    arguments.insert(arguments.end(), {"a", "b"});
    return Request(arguments).Preserve;
}

constexpr PreserveChoice kModeAndTimes{.bMode = true, .bTimes = true};
constexpr PreserveChoice kAll{.bMode = true, .bTimes = true, .bOwner = true};

TEST(TransferOptions, CarriesModesAndTimesOverUnlessItIsTold) {
    EXPECT_EQ(Preserved("copy", {}), kModeAndTimes);
    EXPECT_EQ(Preserved("copy", {"--no-preserve"}), PreserveChoice());
    EXPECT_EQ(Preserved("move", {"--no-preserve"}), PreserveChoice());
}

TEST(TransferOptions, CarriesOwnersOverOnAMoveOfRoot) {
    NeedRoot();
    EXPECT_EQ(Preserved("move", {}), kAll);
}

TEST(TransferOptions, CarriesOwnersOverForNobodyElse) {
    const ActingAsNobody nobody;
    EXPECT_EQ(Preserved("move", {}), kModeAndTimes);
    EXPECT_EQ(Preserved("copy", {"-p"}), kModeAndTimes);
    EXPECT_EQ(Preserved("copy", {"--preserve=owner"}), PreserveChoice());
}

TEST(TransferOptions, KnowsWhatCanBeCarriedOver) {
    NeedRoot();
    const auto listed = [](const std::string& List) {
        return Preserved("copy", {"--preserve=" + List});
    };
    EXPECT_EQ(listed("mode"), PreserveChoice{.bMode = true});
    EXPECT_EQ(listed("times"), PreserveChoice{.bTimes = true});
    EXPECT_EQ(listed("timestamps"), PreserveChoice{.bTimes = true});
    EXPECT_EQ(listed("owner"), PreserveChoice{.bOwner = true});
    EXPECT_EQ(listed("ownership"), PreserveChoice{.bOwner = true});
    EXPECT_EQ(listed("all"), kAll);
    EXPECT_EQ(listed("times,mode"), kModeAndTimes);
    EXPECT_EQ(listed("mode,ownership,timestamps"), kAll);
}

TEST(TransferOptions, PreservesWithoutAListAsCpDoes) {
    NeedRoot();
    EXPECT_EQ(Preserved("copy", {"-p"}), kAll);
    EXPECT_EQ(Preserved("copy", {"--preserve"}), kAll);
    EXPECT_EQ(Preserved("move", {"-p"}), kAll);
    EXPECT_EQ(Operands({"copy", "--preserve", "mode", "b"}), Words({"mode", "b"}));
}

TEST(TransferOptions, ListsOfWhatIsCarriedOverAddUp) {
    NeedRoot();
    EXPECT_EQ(Preserved("copy", {"--preserve=mode", "--preserve=times"}), kModeAndTimes);
    EXPECT_EQ(Preserved("copy", {"-p", "--no-preserve"}), PreserveChoice());
    EXPECT_EQ(Preserved("copy", {"-p", "--no-preserve", "--preserve=times"}),
              PreserveChoice{.bTimes = true});
}

TEST(TransferOptions, RefusesWhatCannotBeCarriedOver) {
    const auto sentence = [](const std::string& Word) {
        return "invalid argument '" + Word +
               "' for '--preserve'; valid are mode, times, owner, all, ownership, timestamps";
    };
    EXPECT_EQ(Mistake({"copy", "--preserve=xattr", "a", "b"}), sentence("xattr"));
    EXPECT_EQ(Mistake({"copy", "--preserve=mode,acl,times", "a", "b"}), sentence("acl"));
    EXPECT_EQ(Mistake({"copy", "--preserve=", "a", "b"}), sentence(""));
    EXPECT_EQ(Mistake({"copy", "--preserve=mode,", "a", "b"}), sentence(""));
    EXPECT_EQ(Mistake({"copy", "--no-preserve=mode", "a", "b"}),
              "option '--no-preserve' doesn't allow an argument");
}

TEST(TransferOptions, ReadsTheTargetDirectoryInEveryForm) {
    const std::vector<Words> forms{{"copy", "-t", "d", "a"},
                                   {"copy", "-td", "a"},
                                   {"copy", "--target-directory=d", "a"},
                                   {"copy", "a", "--target-directory", "d"}};
    for (const Words& form : forms) {
        const TransferRequest request = Request(form);
        EXPECT_EQ(request.TargetDirectory, std::filesystem::path("d"));
        EXPECT_EQ(request.Operands, std::vector<std::filesystem::path>{"a"});
    }
}

TEST(TransferOptions, ReadsTheFlags) {
    EXPECT_TRUE(Request({"copy", "-T", "a", "b"}).bNoTargetDirectory);
    EXPECT_TRUE(Request({"copy", "--no-target-directory", "a", "b"}).bNoTargetDirectory);
    EXPECT_TRUE(WholeRequest({"copy", "-v", "a", "b"}).bVerbose);
    EXPECT_TRUE(WholeRequest({"copy", "--verbose", "a", "b"}).bVerbose);
    EXPECT_TRUE(WholeRequest({"copy", "-q", "a", "b"}).bQuiet);
    EXPECT_TRUE(WholeRequest({"copy", "--quiet", "a", "b"}).bQuiet);
    EXPECT_FALSE(Request({"copy", "--no-preflight", "a", "b"}).bPreflight);
    EXPECT_TRUE(Request({"copy", "--dry-run", "a", "b"}).bDryRun);
    EXPECT_TRUE(Request({"copy", "--follow-links", "a", "b"}).bFollowLinks);
}

TEST(TransferOptions, QuietAndVerboseCancelEachOther) {
    const PromptRequest verbose = WholeRequest({"copy", "-q", "-v", "a", "b"});
    EXPECT_TRUE(verbose.bVerbose);
    EXPECT_FALSE(verbose.bQuiet);
    const PromptRequest quiet = WholeRequest({"copy", "-vq", "a", "b"});
    EXPECT_FALSE(quiet.bVerbose);
    EXPECT_TRUE(quiet.bQuiet);
}

TEST(TransferOptions, ReadsIntervals) {
    const auto interval = [](const std::string& Text) {
        return WholeRequest({"copy", "--interval=" + Text, "a", "b"}).IntervalSeconds;
    };
    EXPECT_EQ(interval("0.1"), 0.1);
    EXPECT_EQ(interval("2"), 2.0);
    EXPECT_EQ(interval("1e2"), 100.0);
    EXPECT_EQ(interval("3600"), 3600.0);
}

TEST(TransferOptions, RefusesIntervalsThatAreNoSuchNumber) {
    for (const char* text : {"0", "0.09", "3600.1", "-1", "nan", "inf", "5s", "", " 5", "1e999"}) {
        EXPECT_EQ(Mistake({"copy", std::string("--interval=") + text, "a", "b"}),
                  std::string("invalid argument '") + text +
                      "' for '--interval'; valid are 0.1 to 3600 seconds");
    }
}

TEST(TransferOptions, RefusesValuesThatAreNotOnTheList) {
    EXPECT_EQ(Mistake({"copy", "--on-conflict=over", "a", "b"}),
              "invalid argument 'over' for '--on-conflict'; valid are ask, overwrite, skip, older, "
              "compare, larger, size-differs, keep-both, fail");
    EXPECT_EQ(Mistake({"copy", "--on-directory-conflict=overwrite", "a", "b"}),
              "invalid argument 'overwrite' for '--on-directory-conflict'; valid are ask, merge, "
              "skip, fail");
    EXPECT_EQ(Mistake({"copy", "--update=newer", "a", "b"}),
              "invalid argument 'newer' for '--update'; valid are older, all, none, none-fail");
    EXPECT_EQ(Mistake({"copy", "--update=", "a", "b"}),
              "invalid argument '' for '--update'; valid are older, all, none, none-fail");
    EXPECT_EQ(Mistake({"copy", "--progress=bar", "a", "b"}),
              "invalid argument 'bar' for '--progress'; valid are auto, live, lines, json, none");
    EXPECT_EQ(Mistake({"copy", "--flush=", "a", "b"}),
              "invalid argument '' for '--flush'; valid are auto, always, never");
}

} // namespace
