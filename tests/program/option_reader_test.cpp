#include "option_reader.h"

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "parsed_command_line.h"

namespace {

TEST(OptionReader, LongOptionsMayBeShortened) {
    EXPECT_TRUE(WholeRequest({"copy", "--verb", "a", "b"}).bVerbose);
    EXPECT_EQ(Request({"copy", "--on-c=fail", "a", "b"}).OnConflict, FileConflictChoice::Fail);
    EXPECT_TRUE(Tracks({"--j"}).bJson);
}

TEST(OptionReader, ShortensAmongTheOptionsOfItsCommandOnly) {
    EXPECT_EQ(Operands({"copy", "--r", "a", "b"}), Words({"a", "b"}));
    EXPECT_EQ(Mistake({"move", "--r", "a", "b"}), "unrecognized option '--r'");
    EXPECT_EQ(Mistake({"copy", "--ver", "a", "b"}),
              "option '--ver' is ambiguous; possibilities: '--verbose' '--version'");
    EXPECT_TRUE(Information({"tracks", "--ver"}).starts_with("tarvane "));
}

TEST(OptionReader, RefusesTheOptionsOfOtherCommands) {
    EXPECT_EQ(Mistake({"copy", "--json", "a", "b"}), "unrecognized option '--json'");
    EXPECT_EQ(Mistake({"move", "--json", "a", "b"}), "unrecognized option '--json'");
    EXPECT_EQ(Mistake({"tracks", "--flush=always"}), "unrecognized option '--flush=always'");
    EXPECT_EQ(Mistake({"tracks", "-v"}), "invalid option -- 'v'");
    EXPECT_EQ(Mistake({"tracks", "-r"}), "invalid option -- 'r'");
}

TEST(OptionReader, ACopyAcceptsTheRecursiveHabit) {
    for (const char* habit : {"-r", "-R", "--recursive"}) {
        EXPECT_EQ(Operands({"copy", habit, "a", "b"}), Words({"a", "b"}));
    }
}

TEST(OptionReader, AMoveSaysThatItNeedsNoRecursiveHabit) {
    const std::string instead = "; directories are always moved whole";
    EXPECT_EQ(Mistake({"move", "-r", "a", "b"}), "invalid option -- 'r'" + instead);
    EXPECT_EQ(Mistake({"move", "-R", "a", "b"}), "invalid option -- 'R'" + instead);
    EXPECT_EQ(Mistake({"move", "--recursive", "a", "b"}),
              "unrecognized option '--recursive'" + instead);
}

TEST(OptionReader, RefusesToPretendToArchive) {
    const std::string instead = "; links are followed and not copied, so there is no archive mode; "
                                "--preserve=all carries over modes, times and owners";
    EXPECT_EQ(Mistake({"copy", "-a", "a", "b"}), "invalid option -- 'a'" + instead);
    EXPECT_EQ(Mistake({"copy", "-va", "a", "b"}), "invalid option -- 'a'" + instead);
    EXPECT_EQ(Mistake({"copy", "--archive", "a", "b"}),
              "unrecognized option '--archive'" + instead);
}

TEST(OptionReader, SaysWhatIsSoInsteadOfWhatCpAndMvOffer) {
    const std::vector<std::pair<Words, std::string>> answers = {
        {{"-d", "-H", "-L", "-P"}, "links are always followed"},
        {{"-l", "-s"}, "files are always copied, never linked"},
        {{"-b", "-S"}, "there are no backups, but --on-conflict=keep-both keeps both files"},
        {{"-x"}, "what is mounted below a source is always copied too"},
    };
    for (const auto& [options, instead] : answers) {
        for (const std::string& option : options) {
            EXPECT_EQ(Mistake({"copy", option, "a", "b"}),
                      "invalid option -- '" + option.substr(1) + "'; " + instead);
        }
    }
    EXPECT_EQ(Mistake({"copy", "--no-dereference", "a", "b"}),
              "unrecognized option '--no-dereference'; links are always followed");
    EXPECT_EQ(Mistake({"copy", "--one-file-system", "a", "b"}),
              "unrecognized option '--one-file-system'; what is mounted below a source is always "
              "copied too");
    EXPECT_EQ(Mistake({"move", "--backup=numbered", "a", "b"}),
              "unrecognized option '--backup=numbered'; there are no backups, but "
              "--on-conflict=keep-both keeps both files");
}

TEST(OptionReader, SaysNothingAboutWhatItsCommandHasNowhere) {
    EXPECT_EQ(Mistake({"move", "-L", "a", "b"}), "invalid option -- 'L'");
    EXPECT_EQ(Mistake({"tracks", "-a"}), "invalid option -- 'a'");
    EXPECT_EQ(Mistake({"copy", "--parents", "a", "b"}), "unrecognized option '--parents'");
}

TEST(OptionReader, AsksWhetherANearOptionWasMeant) {
    EXPECT_EQ(Mistake({"copy", "--forse", "a", "b"}),
              "unrecognized option '--forse'; did you mean '--force'?");
    EXPECT_EQ(Mistake({"copy", "--on-confict=skip", "a", "b"}),
              "unrecognized option '--on-confict=skip'; did you mean '--on-conflict'?");
    EXPECT_EQ(Mistake({"move", "--noclobber", "a", "b"}),
              "unrecognized option '--noclobber'; did you mean '--no-clobber'?");
    EXPECT_EQ(Mistake({"tracks", "--jsno"}),
              "unrecognized option '--jsno'; did you mean '--json'?");
}

TEST(OptionReader, NamesUnknownOptionsAsGetoptDoes) {
    EXPECT_EQ(Mistake({"copy", "--foo", "a", "b"}), "unrecognized option '--foo'");
    EXPECT_EQ(Mistake({"copy", "--foo=3", "a", "b"}), "unrecognized option '--foo=3'");
    EXPECT_EQ(Mistake({"copy", "-y", "a", "b"}), "invalid option -- 'y'");
    EXPECT_EQ(Mistake({"copy", "--verbose", "-zv", "a", "b"}), "invalid option -- 'z'");
    EXPECT_EQ(Mistake({"copy", "-\xff", "a", "b"}), "invalid option -- '\xff'");
    EXPECT_EQ(Mistake({"copy", "-:", "a", "b"}), "invalid option -- ':'");
    EXPECT_EQ(Mistake({"tracks", "--foo"}), "unrecognized option '--foo'");
    EXPECT_EQ(Mistake({"tracks", "/dev/sr0", "--foo=3"}), "unrecognized option '--foo=3'");
    EXPECT_EQ(Mistake({"tracks", "-x"}), "invalid option -- 'x'");
}

TEST(OptionReader, NamesAmbiguousOptionsAsGetoptDoes) {
    EXPECT_EQ(Mistake({"copy", "--on=skip", "a", "b"}),
              "option '--on=skip' is ambiguous; possibilities: '--on-conflict' "
              "'--on-directory-conflict'");
    EXPECT_EQ(Mistake({"copy", "a", "b", "--no"}),
              "option '--no' is ambiguous; possibilities: '--no-clobber' "
              "'--no-target-directory' '--no-preserve' '--no-preflight'");
}

TEST(OptionReader, NamesMissingAndUnwantedValuesAsGetoptDoes) {
    EXPECT_EQ(Mistake({"copy", "a", "b", "--on-conflict"}),
              "option '--on-conflict' requires an argument");
    EXPECT_EQ(Mistake({"copy", "a", "b", "-t"}), "option requires an argument -- 't'");
    EXPECT_EQ(Mistake({"copy", "--verbose=3", "a", "b"}),
              "option '--verbose' doesn't allow an argument");
    EXPECT_EQ(Mistake({"copy", "a", "b", "--target-directory"}),
              "option '--target-directory' requires an argument");
    EXPECT_EQ(Mistake({"tracks", "--json=1"}), "option '--json' doesn't allow an argument");
    EXPECT_EQ(Mistake({"tracks", "--js=1"}), "option '--json' doesn't allow an argument");
}

TEST(OptionReader, EveryMistakeIsNamedInItsPlace) {
    EXPECT_EQ(
        Mistakes({"copy", "--foo", "-zqy", "a", "--progress=bar", "b", "--verbose=3", "-t"}),
        Words({"unrecognized option '--foo'", "invalid option -- 'z'", "invalid option -- 'y'",
               ("invalid argument 'bar' for '--progress'; valid are auto, live, lines, json, "
                "none"),
               "option '--verbose' doesn't allow an argument",
               "option requires an argument -- 't'"}));
    EXPECT_EQ(Mistakes({"tracks", "--foo", "-x"}),
              Words({"unrecognized option '--foo'", "invalid option -- 'x'"}));
}

} // namespace
