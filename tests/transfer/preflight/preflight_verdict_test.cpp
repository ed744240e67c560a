#include "preflight_verdict.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Kind = PreflightVerdict::Kind;
using Texts = std::vector<std::string>;

TransferRequest Copy() {
    return {};
}

TransferRequest Move() {
    TransferRequest request;
    request.bMove = true;
    return request;
}

TransferRequest FollowingLinks(TransferRequest Request) {
    Request.bFollowLinks = true;
    return Request;
}

TransferRequest DryRun(TransferRequest Request) {
    Request.bDryRun = true;
    return Request;
}

PreflightResult Found(const std::vector<PreflightFinding>& Findings) {
    PreflightResult result;
    for (const PreflightFinding& finding : Findings) {
        result.Findings.Add(finding);
    }
    return result;
}

const PreflightFinding kLink{.Kind = PreflightFindingKind::LinkToDirectory, .Path = "/a"};
const PreflightFinding kMovedLink{.Kind = PreflightFindingKind::LinkToDirectoryOnMove,
                                  .Path = "/a"};
const PreflightFinding kStop{
    .Kind = PreflightFindingKind::DanglingLink, .Path = "/b", .bStopsJob = true};

PreflightResult RemovesUnselected() {
    PreflightResult result = Found({kMovedLink});
    result.bRemovesUnselected = true;
    return result;
}

PreflightVerdict WithSomebody(const TransferRequest& Request, const PreflightResult& Result) {
    constexpr bool bCanAsk = true;
    return JudgePreflight(Request, Result, bCanAsk);
}

PreflightVerdict WithNobody(const TransferRequest& Request, const PreflightResult& Result) {
    constexpr bool bCanAsk = false;
    return JudgePreflight(Request, Result, bCanAsk);
}

PreflightResult Counted(std::uint64_t Entries, std::uint64_t Bytes) {
    PreflightResult result;
    result.Entries = result.CopiedEntries = Entries;
    result.Bytes = result.CopiedBytes = Bytes;
    return result;
}

std::string DryRunText(const PreflightResult& Result) {
    return WithNobody(DryRun(Copy()), Result).Outcome.Text;
}

} // namespace

TEST(PreflightVerdict, GoesOnWhenNothingWasFound) {
    EXPECT_EQ(WithSomebody(Copy(), Found({})).Decision, Kind::GoOn);
    EXPECT_EQ(WithNobody(Move(), Found({})).Decision, Kind::GoOn);
}

TEST(PreflightVerdict, AsksSomebodyAboutWhateverWasFound) {
    const PreflightVerdict copy = WithSomebody(Copy(), Found({kLink}));
    EXPECT_EQ(copy.Decision, Kind::Ask);
    EXPECT_EQ(copy.Question, "Go on with the copy?");
    const PreflightVerdict move = WithSomebody(Move(), RemovesUnselected());
    EXPECT_EQ(move.Decision, Kind::Ask);
    EXPECT_EQ(move.Question, "Go on with the move?");
}

TEST(PreflightVerdict, GoesOnWhereNobodyCanBeAsked) {
    EXPECT_EQ(WithNobody(Copy(), Found({kLink, kStop})).Decision, Kind::GoOn);
    EXPECT_EQ(WithNobody(Move(), Found({kMovedLink})).Decision, Kind::GoOn);
}

TEST(PreflightVerdict, StopsAMoveThatRemovesWhatWasNotSelected) {
    const PreflightVerdict verdict = WithNobody(Move(), RemovesUnselected());
    EXPECT_EQ(verdict.Decision, Kind::Stop);
    EXPECT_EQ(verdict.Outcome.Result, RunResult::Failed);
    EXPECT_EQ(verdict.Outcome.Text, "the move would remove entries that were not selected; pass "
                                    "--follow-links to allow it");
    EXPECT_FALSE(verdict.Outcome.EndSignal.has_value());
}

TEST(PreflightVerdict, GoesOnWithLinksThatTheRequestFollows) {
    EXPECT_EQ(WithNobody(FollowingLinks(Move()), RemovesUnselected()).Decision, Kind::GoOn);
    EXPECT_EQ(WithSomebody(FollowingLinks(Move()), RemovesUnselected()).Decision, Kind::GoOn);
    EXPECT_EQ(WithSomebody(FollowingLinks(Copy()), Found({kLink})).Decision, Kind::GoOn);
}

TEST(PreflightVerdict, AsksAboutOtherFindingsBesideAllowedLinks) {
    EXPECT_EQ(WithSomebody(FollowingLinks(Copy()), Found({kLink, kStop})).Decision, Kind::Ask);
}

TEST(PreflightVerdict, EndsADryRunWithTheTotals) {
    const PreflightVerdict verdict = WithSomebody(DryRun(Copy()), Counted(2, 2048));
    EXPECT_EQ(verdict.Decision, Kind::Stop);
    EXPECT_EQ(verdict.Outcome.Result, RunResult::Succeeded);
    EXPECT_EQ(verdict.Outcome.Text, "Would copy 2 entries, 2.0 KB (2048 bytes).");
    EXPECT_EQ(WithNobody(DryRun(Move()), Counted(1, 1)).Outcome.Text,
              "Would move 1 entry, 1 B (1 byte).");
}

TEST(PreflightVerdict, FailsADryRunOfWhatWouldFail) {
    EXPECT_EQ(WithSomebody(DryRun(Copy()), Found({kStop})).Outcome.Result, RunResult::Failed);
    EXPECT_EQ(WithNobody(DryRun(Move()), RemovesUnselected()).Outcome.Result, RunResult::Failed);
    EXPECT_EQ(WithNobody(DryRun(FollowingLinks(Move())), RemovesUnselected()).Outcome.Result,
              RunResult::Succeeded);
    EXPECT_EQ(WithNobody(DryRun(Copy()), Found({kLink})).Outcome.Result, RunResult::Succeeded);
}

TEST(PreflightVerdict, SaysWhatIsReallyCopiedWhereThatDiffers) {
    PreflightResult result = Counted(1, 10);
    result.CopiedEntries = 3;
    EXPECT_EQ(DryRunText(result), "Would copy 1 entry, 10 B (10 bytes). Really to be copied: 3 "
                                  "entries, 10 B (10 bytes).");
    result.CopiedEntries = 1;
    result.CopiedBytes = 20;
    EXPECT_EQ(DryRunText(result), "Would copy 1 entry, 10 B (10 bytes). Really to be copied: 1 "
                                  "entry, 20 B (20 bytes).");
}

TEST(PreflightVerdict, LeavesDirectoriesThatAreThereOutOfWhatCountsThem) {
    PreflightResult result = Counted(28, 10);
    result.CopiedEntries = 38;
    result.CopiedBytes = 10;
    result.Taken.Merged = 12;
    result.Taken.MergedBehindLinks = 10;
    EXPECT_EQ(DryRunText(result), "Would copy 26 entries, 10 B (10 bytes).");
}

TEST(PreflightVerdict, LeavesWhatIsSkippedOutOfTheTotals) {
    PreflightResult result = Counted(5, 50);
    result.SkippedEntries = 3;
    result.SkippedBytes = 30;
    result.CopiedEntries = 2;
    result.CopiedBytes = 20;
    result.Taken.Skipped = 2;
    EXPECT_EQ(DryRunText(result), "Would copy 2 entries, 20 B (20 bytes); 2 skipped.");
}

TEST(PreflightVerdict, SaysWhatTheChoicesWouldDo) {
    PreflightResult result = Counted(12345, 10);
    result.Taken = {
        .Replaced = 1000, .Skipped = 2, .Renamed = 3, .Compared = 4, .Asked = 5, .Refused = 6};
    EXPECT_EQ(DryRunText(result),
              "Would copy 12,345 entries, 10 B (10 bytes); 1,000 replaced, 2 skipped, "
              "3 renamed, 4 compared, 5 to be asked about, 6 in the way.");
}

TEST(PreflightVerdict, FailsADryRunOfADirectoryThatComesOutEmpty) {
    for (const PreflightFindingKind kind : {PreflightFindingKind::UnreadableDirectory,
                                            PreflightFindingKind::UnreadableDirectoryOnMove}) {
        const PreflightResult result = Found({{.Kind = kind, .Path = "/a"}});
        EXPECT_EQ(WithNobody(DryRun(Copy()), result).Outcome.Result, RunResult::Failed);
    }
}

TEST(PreflightVerdict, StopsAtARefusedNameWhoeverCouldBeAsked) {
    const PreflightFinding refused{.Kind = PreflightFindingKind::TakenName,
                                   .Path = "/to/a",
                                   .bStopsJob = true,
                                   .Reason = "cannot create '/to/a': File exists"};
    for (const PreflightVerdict& verdict :
         {WithSomebody(Copy(), Found({kLink, refused})),
          WithNobody(FollowingLinks(Move()), Found({kStop, refused}))}) {
        EXPECT_EQ(verdict.Decision, Kind::Stop);
        EXPECT_EQ(verdict.Outcome.Result, RunResult::Failed);
        EXPECT_EQ(verdict.Outcome.Text, "cannot create '/to/a': File exists");
    }
    EXPECT_EQ(WithNobody(Copy(), Found({refused, refused})).Outcome.Text,
              "nothing was touched: 2 names are in the way");
    EXPECT_EQ(WithSomebody(DryRun(Copy()), Found({refused})).Outcome.Result, RunResult::Failed);
}
