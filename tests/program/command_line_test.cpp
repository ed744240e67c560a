#include "command_line.h"

#include <filesystem>
#include <regex>
#include <string>

#include <gtest/gtest.h>

#include "parsed_command_line.h"

namespace {

TEST(CommandLineParser, CopyWithoutOptionsChoosesNothingAndLooksFirst) {
    const PromptRequest line = WholeRequest({"copy", "a", "b"});
    const TransferRequest& request = line.Transfer;
    EXPECT_FALSE(request.bMove);
    EXPECT_FALSE(request.OnConflict.has_value());
    EXPECT_FALSE(request.OnDirectoryConflict.has_value());
    EXPECT_FALSE(request.TargetDirectory.has_value());
    EXPECT_FALSE(request.bNoTargetDirectory);
    EXPECT_EQ(line.Progress, ProgressStyle::Auto);
    EXPECT_EQ(line.IntervalSeconds, 5.0);
    EXPECT_EQ(request.Flush, FlushChoice::Auto);
    EXPECT_TRUE(request.bPreflight);
    EXPECT_FALSE(request.bDryRun);
    EXPECT_FALSE(request.bFollowLinks);
    EXPECT_FALSE(line.bQuiet);
    EXPECT_FALSE(line.bVerbose);
}

TEST(CommandLineParser, MoveMoves) {
    EXPECT_TRUE(Request({"move", "a", "b"}).bMove);
}

TEST(CommandLineParser, OperandsKeepTheirBytes) {
    const Words names{"a b",  "new\nline", "[z]",       "[a,b]", "x,y", "\xff\xfe.bin", "'q'",
                      "日本", "-",         "tab\there", "*",     "\\",  "a=b",          "~"};
    Words arguments{"copy"};
    arguments.insert(arguments.end(), names.begin(), names.end());
    EXPECT_EQ(Operands(arguments), names);
}

TEST(CommandLineParser, TwoDashesEndTheOptions) {
    EXPECT_EQ(Operands({"copy", "-v", "--", "-n", "--help", "--"}), Words({"-n", "--help", "--"}));
}

TEST(CommandLineParser, OptionsMayFollowOperands) {
    const TransferRequest request = Request({"copy", "a", "-n", "b", "--dry-run"});
    EXPECT_EQ(request.Operands.size(), 2U);
    EXPECT_EQ(request.OnConflict, FileConflictChoice::Skip);
    EXPECT_TRUE(request.bDryRun);
}

TEST(CommandLineParser, TrailingSlashesAndDotsStayInOperands) {
    EXPECT_EQ(Operands({"copy", "dir//", "./x/../y", "d/."}), Words({"dir//", "./x/../y", "d/."}));
}

TEST(CommandLineParser, NamesMissingOperandsAsCpDoes) {
    EXPECT_EQ(Mistake({"copy"}), "missing file operand");
    EXPECT_EQ(Mistake({"move", "-t", "d"}), "missing file operand");
    EXPECT_EQ(Mistake({"copy", "a"}), "missing destination file operand after 'a'");
    EXPECT_EQ(Mistake({"copy", "-T", "a"}), "missing destination file operand after 'a'");
}

TEST(CommandLineParser, RefusesMoreThanOneSourceForOneName) {
    EXPECT_EQ(Mistake({"copy", "-T", "a", "b", "c"}), "extra operand 'c'");
}

TEST(CommandLineParser, RefusesEmptyNames) {
    EXPECT_EQ(Mistake({"copy", "", "b"}), "a file name is empty");
    EXPECT_EQ(Mistake({"copy", "a", ""}), "a file name is empty");
    EXPECT_EQ(Mistake({"copy", "-t", "", "a"}), "a file name is empty");
}

TEST(CommandLineParser, RefusesContradictoryTargets) {
    EXPECT_EQ(Mistake({"copy", "-T", "-t", "d", "a"}),
              "cannot combine --target-directory (-t) and --no-target-directory (-T)");
    EXPECT_EQ(Mistake({"copy", "-t", "d", "-t", "d", "a"}),
              "multiple target directories specified");
}

TEST(CommandLineParser, NamesEveryMistake) {
    EXPECT_EQ(Mistakes({"copy", "--foo"}),
              Words({"unrecognized option '--foo'", "missing file operand"}));
    EXPECT_EQ(Mistakes({"copy", "-T", "-t", "d"}),
              Words({"cannot combine --target-directory (-t) and --no-target-directory (-T)",
                     "missing file operand"}));
    EXPECT_EQ(Mistakes({"move", "-z", "-T", "a", "", "c"}),
              Words({"invalid option -- 'z'", "a file name is empty", "extra operand 'c'"}));
    EXPECT_EQ(Mistakes({"tracks", "-z", "/dev/sr0", "/dev/sr1"}),
              Words({"invalid option -- 'z'", "more than one drive"}));
}

TEST(CommandLineParser, NoTextIsGivenAfterAMistake) {
    EXPECT_EQ(Mistakes({"copy", "--foo", "--help", "a", "b"}),
              Words({"unrecognized option '--foo'"}));
    EXPECT_EQ(Mistakes({"copy", "--foo", "--version", "a", "b"}),
              Words({"unrecognized option '--foo'"}));
}

TEST(CommandLineParser, HelpAndVersionComeBeforeAndAfterTheCommand) {
    const std::string help = Information({"--help"});
    EXPECT_TRUE(help.starts_with("Usage: tarvane [LEFT [RIGHT]]\n")) << help;
    EXPECT_EQ(Information({"copy", "--help"}), help);
    EXPECT_EQ(Information({"move", "a", "b", "--help", "--foo"}), help);
    EXPECT_EQ(Information({"-h"}), help);
    EXPECT_EQ(Information({"copy", "-vh"}), help);
    const std::string version = Information({"--version"});
    EXPECT_TRUE(std::regex_match(version, std::regex("tarvane \\d+\\.\\d+\\.\\d+\n"))) << version;
    EXPECT_EQ(Information({"copy", "--version"}), version);
}

TEST(CommandLineParser, TracksHasATextOfItsOwnAndTheSameVersion) {
    const std::string help = Information({"tracks", "--help"});
    EXPECT_TRUE(help.starts_with("Usage: tarvane tracks [--json] [DEVICE]\n")) << help;
    EXPECT_EQ(Information({"tracks", "/dev/sr0", "/dev/sr1", "--help", "--foo"}), help);
    EXPECT_EQ(Information({"tracks", "-h"}), help);
    EXPECT_EQ(Information({"tracks", "--version"}), Information({"--version"}));
}

TEST(CommandLineParser, TracksTakesADriveOrNone) {
    EXPECT_EQ(Tracks({}).Device, "");
    EXPECT_FALSE(Tracks({}).bJson);
    EXPECT_EQ(Tracks({"/dev/sr1", "--json"}).Device, "/dev/sr1");
    EXPECT_TRUE(Tracks({"/dev/sr1", "--json"}).bJson);
    EXPECT_EQ(Tracks({"--", "-x"}).Device, "-x");
    EXPECT_EQ(Tracks({"--json", "--", "--json"}).Device, "--json");
    EXPECT_EQ(Tracks({"dri\xff\n"}).Device, "dri\xff\n");
}

TEST(CommandLineParser, TracksRefusesOtherOperands) {
    EXPECT_EQ(Mistake({"tracks", "/dev/sr0", "/dev/sr1"}), "more than one drive");
    EXPECT_EQ(Mistake({"tracks", "--", "-x", "-y"}), "more than one drive");
    EXPECT_EQ(Mistake({"tracks", ""}), "the drive's name is empty");
}

TEST(CommandLineParser, HelpIsACommandToo) {
    const std::string help = Information({"--help"});
    EXPECT_EQ(Information({"help"}), help);
    for (const char* topic : {"copy", "move", "help", "-h", "--help"}) {
        EXPECT_EQ(Information({"help", topic}), help) << topic;
    }
    EXPECT_EQ(Information({"help", "tracks"}), Information({"tracks", "--help"}));
    EXPECT_EQ(Mistake({"help", "track"}), "unknown command 'track'; did you mean 'tracks'?");
    EXPECT_EQ(Mistake({"help", "me"}),
              "unknown command 'me'; the commands are copy, move, tracks and help");
    EXPECT_EQ(Mistake({"help", "copy", "move"}), "extra operand 'move'");
    EXPECT_EQ(Mistake({"hlep"}), "unknown command 'hlep'; did you mean 'help'?");
}

TEST(CommandLineParser, NamesUnknownCommands) {
    EXPECT_EQ(Mistake({"remove"}),
              "unknown command 'remove'; the commands are copy, move, tracks and help");
    EXPECT_EQ(Mistake({"-n", "copy", "a", "b"}), "unrecognized option '-n' before the command");
}

TEST(CommandLineParser, AsksWhetherANearCommandWasMeant) {
    EXPECT_EQ(Mistake({"cpoy", "a", "b"}), "unknown command 'cpoy'; did you mean 'copy'?");
    EXPECT_EQ(Mistake({"mov", "a", "b"}), "unknown command 'mov'; did you mean 'move'?");
    EXPECT_EQ(Mistake({"track"}), "unknown command 'track'; did you mean 'tracks'?");
    EXPECT_EQ(Mistake({"cp", "a", "b"}), "unknown command 'cp'; did you mean 'copy'?");
    EXPECT_EQ(Mistake({"mv", "a", "b"}), "unknown command 'mv'; did you mean 'move'?");
    EXPECT_EQ(Mistake({"--hlep"}),
              "unrecognized option '--hlep' before the command; did you mean '--help'?");
    EXPECT_EQ(Mistake({"--verison"}),
              "unrecognized option '--verison' before the command; did you mean '--version'?");
}

} // namespace
