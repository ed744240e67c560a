#include "verbose_lines.h"

#include "screen_text.h"

#include <gtest/gtest.h>

namespace {

class VerboseLines : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(EnsureUtf8Locale()); }
};

TEST_F(VerboseLines, SayWhereAnEntryGoes) {
    TarvaneTransferItemPlan item;
    item.SourcePath = "/a/new\nname";
    item.DestinationPath = "/b c/d";
    EXPECT_EQ(VerboseLine(item), "'/a/new'$'\\n''name' -> '/b c/d'");
}

TEST_F(VerboseLines, SayWhatBecameOfATakenName) {
    SettledConflict settled;
    settled.Answered.Conflict.SourcePath = "/a/new\nname";
    settled.Answered.Conflict.DestinationPath = "/b c/d";
    settled.Answered.RenamePath = "/b c/d-2";
    const std::pair<ConflictOutcome, std::string> words[] = {
        {ConflictOutcome::Replaced, "replaced"},
        {ConflictOutcome::Merged, "merged"},
        {ConflictOutcome::Renamed, "renamed to '/b c/d-2'"},
        {ConflictOutcome::Skipped, "skipped"},
        {ConflictOutcome::Unfinished, "unfinished"},
    };
    for (const auto& [outcome, word] : words) {
        settled.Outcome = outcome;
        EXPECT_EQ(VerboseLine(settled), "'/a/new'$'\\n''name' -> '/b c/d': " + word);
    }
}

TEST_F(VerboseLines, QuoteNamesSoThatAShellReadsThem) {
    const std::pair<std::string, std::string> quoted[] = {
        {"", "''"},
        {"plain", "'plain'"},
        {"two words", "'two words'"},
        {"it's", "'it'\\''s'"},
        {"日本 é", "'日本 é'"},
        {"a\tb", "'a'$'\\t''b'"},
        {"\x1B[31m", "''$'\\033''[31m'"},
        {"bad\xFF\xFE", "'bad'$'\\377\\376'"},
        {"\xE2\x80\xAE"
         "gnp",
         "''$'\\342\\200\\256''gnp'"},
        {"$HOME `x` \"", "'$HOME `x` \"'"},
    };
    for (const auto& [text, wanted] : quoted) {
        EXPECT_EQ(QuotedForShell(text), wanted);
    }
}

} // namespace
