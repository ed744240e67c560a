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

TEST(PreflightVerdict, SaysThatThereIsMoreBehindALookThatWasEndedEarly) {
    PreflightResult result = Counted(1, 10);
    result.bCanceled = true;
    EXPECT_EQ(DryRunText(result),
              "Would copy 1 entry, 10 B (10 bytes). There is more: the look was ended early.");
}

TEST(FindingSentences, KeepSoManyOfEachKindAndCountTheRest) {
    const std::string link =
        "the directory that the link '/a' leads to will be copied with its contents";
    const std::string stop = "the job will stop at the link '/b', which leads nowhere";
    const PreflightResult result = Found({kLink, kLink, kStop, kLink, kStop});
    EXPECT_EQ(DescribeFindings(result.Findings, 2),
              (Texts{link, link, stop, stop, "and 1 more of these"}));
    EXPECT_EQ(DescribeFindings(result.Findings, 3), (Texts{link, link, stop, link, stop}));
    EXPECT_EQ(DescribeFindings(PreflightFindings(), 3), Texts());
}

TEST(FindingSentences, CountWhatWasNotEvenKept) {
    PreflightFindings findings;
    for (std::size_t i = 0; i < PreflightFindings::kKeptPerKind + 7; ++i) {
        findings.Add(kStop);
    }
    const Texts sentences = DescribeFindings(findings, PreflightFindings::kKeptPerKind);
    EXPECT_EQ(sentences.size(), PreflightFindings::kKeptPerKind + 1);
    EXPECT_EQ(sentences.back(), "and 7 more of these");
}
