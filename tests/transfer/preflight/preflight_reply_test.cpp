// The end of a look on its way between processes.

#include "preflight_reply.h"

#include <string>

#include <gtest/gtest.h>

namespace {

PreflightEnd SomeEnd() {
    PreflightEnd end;
    end.Result.Entries = 1;
    end.Result.Bytes = 2;
    end.Result.CopiedEntries = 3;
    end.Result.CopiedBytes = 4;
    end.Result.SkippedEntries = 7;
    end.Result.SkippedBytes = 8;
    end.Result.FollowedEntries = 9;
    end.Result.FollowedBytes = 10;
    end.Result.Taken.Replaced = 11;
    end.Result.Taken.Refused = 12;
    end.Result.bRemovesUnselected = true;
    end.Result.bTakesOnlyFiles = true;
    end.Result.Findings.Add({.Kind = PreflightFindingKind::TooLittleSpace,
                             .Path = "/to\xFF\n",
                             .bStopsJob = true,
                             .NeededBytes = 5,
                             .AvailableBytes = 6,
                             .Reason = "full"});
    end.Result.Findings.Add({.Kind = PreflightFindingKind::LinkToDirectory, .Path = ""});
    return end;
}

TEST(PreflightReply, KeepsTheResult) {
    const PreflightEnd end = EndFrom(ReplyFrom(SomeEnd()));
    EXPECT_EQ(end.Failure, "");
    EXPECT_EQ(end.Result.Entries, 1U);
    EXPECT_EQ(end.Result.Bytes, 2U);
    EXPECT_EQ(end.Result.CopiedEntries, 3U);
    EXPECT_EQ(end.Result.CopiedBytes, 4U);
    EXPECT_EQ(end.Result.SkippedEntries, 7U);
    EXPECT_EQ(end.Result.SkippedBytes, 8U);
    EXPECT_EQ(end.Result.FollowedEntries, 9U);
    EXPECT_EQ(end.Result.FollowedBytes, 10U);
    EXPECT_EQ(end.Result.Taken.Replaced, 11U);
    EXPECT_EQ(end.Result.Taken.Refused, 12U);
    EXPECT_TRUE(end.Result.bRemovesUnselected);
    EXPECT_TRUE(end.Result.bTakesOnlyFiles);
    EXPECT_TRUE(end.Result.bComplete);
}

TEST(PreflightReply, KeepsTheFindings) {
    const PreflightFindings findings = EndFrom(ReplyFrom(SomeEnd())).Result.Findings;
    ASSERT_EQ(findings.Kept().size(), 2U);
    const PreflightFinding& first = findings.Kept().front();
    EXPECT_EQ(first.Kind, PreflightFindingKind::TooLittleSpace);
    EXPECT_EQ(first.Path, "/to\xFF\n");
    EXPECT_TRUE(first.bStopsJob);
    EXPECT_EQ(first.NeededBytes, 5U);
    EXPECT_EQ(first.AvailableBytes, 6U);
    EXPECT_EQ(first.Reason, "full");
    EXPECT_EQ(findings.Kept().back().Kind, PreflightFindingKind::LinkToDirectory);
    EXPECT_TRUE(findings.AnyStopsJob());
}

TEST(PreflightReply, KeepsTheCountOfFindingsThatAreNotKept) {
    PreflightEnd end;
    for (int i = 0; i < 250; ++i) {
        end.Result.Findings.Add({.Kind = PreflightFindingKind::LinkCycle, .Path = "/link"});
    }
    const PreflightFindings findings = EndFrom(ReplyFrom(std::move(end))).Result.Findings;
    EXPECT_EQ(findings.Kept().size(), PreflightFindings::kKeptPerKind);
    EXPECT_EQ(findings.Count(PreflightFindingKind::LinkCycle), 250U);
    EXPECT_FALSE(findings.AnyStopsJob());
}

TEST(PreflightReply, KeepsAFailureAndThatItIsIncomplete) {
    PreflightEnd end;
    end.Failure = "no memory";
    end.Result.bComplete = false;
    const PreflightEnd received = EndFrom(ReplyFrom(end));
    EXPECT_EQ(received.Failure, "no memory");
    EXPECT_FALSE(received.Result.bComplete);
}

TEST(PreflightReply, ThatIsNotWholeIsAnInterruptedLook) {
    const std::string whole = ReplyFrom(SomeEnd());
    for (std::size_t length = 0; length < whole.size(); ++length) {
        const PreflightEnd end = EndFrom(std::string_view(whole).substr(0, length));
        EXPECT_EQ(end.Failure, "the look was interrupted") << length;
        EXPECT_TRUE(end.Result.Findings.Kept().empty()) << length;
    }
    EXPECT_EQ(EndFrom(whole + "x").Failure, "the look was interrupted");
}

} // namespace
