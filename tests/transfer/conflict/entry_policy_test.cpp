// What is decided by the entry that stands at a taken name, links, devices and the like.

#include "conflict_policy.h"

#include <array>
#include <map>
#include <optional>
#include <string>

#include <gtest/gtest.h>

namespace {

using Action = TarvaneTransferConflictAction;
using Choice = FileConflictChoice;
using Kind = TakenEntry::Kind;

constexpr bool kFollow = true;
constexpr bool kLinksStay = false;

constexpr std::array kReplacing{Choice::Overwrite, Choice::Older, Choice::Compare, Choice::Larger,
                                Choice::SizeDiffers};

TakenEntry LinkTo(std::optional<Kind> LeadsTo) {
    return {LeadsTo, true, "target"};
}

// A source that is newer and larger than what stands there.
TakenName FileOnto(const TakenEntry& Entry, bool bFollowLinks = kLinksStay) {
    TarvaneTransferConflict conflict;
    conflict.SourcePath = "/source/x";
    conflict.DestinationPath = "/destination/x";
    conflict.bSourceHasModifiedTime = conflict.bDestinationHasModifiedTime = true;
    conflict.SourceModifiedTicks = 1;
    conflict.bSourceHasSize = conflict.bDestinationHasSize = true;
    conflict.SourceSizeBytes = 1;
    conflict.bDestinationDirectory = Entry.LeadsTo == Kind::Directory;
    return MakeTakenName(conflict, Entry, bFollowLinks);
}

TakenName DirectoryOnto(const TakenEntry& Entry, bool bFollowLinks = kLinksStay) {
    TarvaneTransferConflict conflict = FileOnto(Entry).Conflict;
    conflict.Kind = TarvaneTransferConflictKind::Directory;
    return MakeTakenName(conflict, Entry, bFollowLinks);
}

// The source is the same age and size as what stands there.
TakenName Alike(TakenName Name) {
    Name.Conflict.SourceModifiedTicks = 0;
    Name.Conflict.SourceSizeBytes = 0;
    return Name;
}

TakenName WithTheSourceInside(TakenName Name) {
    Name.bHoldsSource = true;
    return Name;
}

std::string ActionName(Action Answer) {
    const std::map<Action, std::string> names = {{Action::Merge, "merge"},
                                                 {Action::Skip, "skip"},
                                                 {Action::Overwrite, "overwrite"},
                                                 {Action::CompareByContent, "compare"},
                                                 {Action::Rename, "rename"}};
    const auto name = names.find(Answer);
    return name == names.end() ? "unexpected action" : name->second;
}

std::string InWords(const ConflictDecision& Decision) {
    switch (Decision.Outcome) {
    case ConflictDecision::Verdict::Answer:
        return ActionName(Decision.Action) + (Decision.bReplacesLink ? ", link removed" : "");
    case ConflictDecision::Verdict::AskUser:
        return "ask";
    case ConflictDecision::Verdict::Fail:
        return "fail: " + Decision.Sentence;
    }
    return "no verdict";
}

std::string Decide(Choice ForFiles, const TakenName& Name) {
    return InWords(ConflictPolicy({.ForFiles = ForFiles}).Decide(Name));
}

void ExpectNotReplaced(const TakenName& Name, const std::string& Sentence) {
    for (const Choice choice : kReplacing) {
        EXPECT_EQ(Decide(choice, Name), "fail: " + Sentence) << static_cast<int>(choice);
        EXPECT_EQ(Decide(choice, Alike(Name)), "fail: " + Sentence) << static_cast<int>(choice);
    }
    EXPECT_EQ(Decide(Choice::Skip, Name), "skip");
    EXPECT_EQ(Decide(Choice::KeepBoth, Name), "rename");
    EXPECT_EQ(Decide(Choice::Fail, Name), "fail: cannot create '/destination/x': File exists");
    EXPECT_EQ(Decide(Choice::Ask, Name), "ask");
    ConflictPolicy later({.ForFiles = Choice::Ask});
    later.RememberForAll(Choice::Overwrite);
    EXPECT_EQ(InWords(later.Decide(Name)), "ask");
}

TEST(SpecialSource, MakesNoRoomForWhatCannotBeCopied) {
    TakenName name = FileOnto(LinkTo(Kind::Directory));
    name.bSourceIsSpecial = true;
    const auto decided = [&name](Choice ForFiles) {
        return InWords(ConflictPolicy({.ForFiles = ForFiles}).Decide(name));
    };
    EXPECT_EQ(decided(Choice::Overwrite), "fail: cannot copy special file '/source/x'");
    EXPECT_EQ(decided(Choice::Skip), "skip");
    EXPECT_EQ(decided(Choice::KeepBoth), "rename");
    EXPECT_EQ(InWords(ConflictPolicy::CarryOut(FileOnto({Kind::Directory}), Action::Overwrite)),
              "overwrite");
    const auto carriedOut = [&name] {
        return InWords(ConflictPolicy::CarryOut(name, Action::Overwrite));
    };
    name.Entry = {Kind::Directory};
    EXPECT_EQ(carriedOut(), "fail: cannot copy special file '/source/x'");
    name.Entry = {Kind::File};
    EXPECT_EQ(carriedOut(), "overwrite");
}

} // namespace

TEST(LinkPolicy, ALinkInAFilesWayIsReplacedItself) {
    for (const Kind kind : {Kind::File, Kind::Directory, Kind::Special}) {
        for (const Choice choice : kReplacing) {
            EXPECT_EQ(Decide(choice, FileOnto(LinkTo(kind))), "overwrite, link removed");
        }
        EXPECT_EQ(Decide(Choice::Skip, FileOnto(LinkTo(kind))), "skip");
        EXPECT_EQ(Decide(Choice::KeepBoth, FileOnto(LinkTo(kind))), "rename");
        EXPECT_EQ(Decide(Choice::Ask, FileOnto(LinkTo(kind))), "ask");
    }
}

TEST(LinkPolicy, ALinkIsWeighedByWhatItLeadsTo) {
    const TakenName alike = Alike(FileOnto(LinkTo(Kind::File)));
    EXPECT_EQ(Decide(Choice::Older, alike), "skip");
    EXPECT_EQ(Decide(Choice::Larger, alike), "skip");
    EXPECT_EQ(Decide(Choice::SizeDiffers, alike), "skip");
}

TEST(LinkPolicy, ALinkDiffersFromEveryFile) {
    TakenName name = Alike(FileOnto(LinkTo(Kind::File)));
    EXPECT_EQ(Decide(Choice::Compare, name), "overwrite, link removed");
    name.Conflict.bDestinationHasSize = false;
    EXPECT_EQ(Decide(Choice::Compare, name), "overwrite, link removed");
}

TEST(LinkPolicy, AFollowedLinkIsWhatItLeadsTo) {
    EXPECT_EQ(Decide(Choice::Overwrite, FileOnto(LinkTo(Kind::File), kFollow)), "overwrite");
    EXPECT_EQ(Decide(Choice::Compare, FileOnto(LinkTo(Kind::File), kFollow)), "compare");
    ExpectNotReplaced(FileOnto(LinkTo(Kind::Directory), kFollow),
                      "cannot overwrite directory '/destination/x' with non-directory '/source/x'");
    ExpectNotReplaced(FileOnto(LinkTo(Kind::Special), kFollow),
                      "cannot overwrite special file '/destination/x' with '/source/x'");
}

TEST(LinkPolicy, NothingIsWrittenThroughALinkToNothing) {
    for (const Choice choice : {Choice::Ask, Choice::Overwrite, Choice::Skip, Choice::KeepBoth}) {
        for (const TakenName& name :
             {FileOnto(LinkTo(std::nullopt)), DirectoryOnto(LinkTo(std::nullopt))}) {
            EXPECT_EQ(Decide(choice, name),
                      "fail: not writing through dangling symlink '/destination/x'");
        }
    }
}

TEST(LinkPolicy, ALinkToADirectoryIsNotEnteredUnasked) {
    const TakenName name = DirectoryOnto(LinkTo(Kind::Directory));
    const std::string refusal = "fail: not writing through symlink '/destination/x' to directory "
                                "'target'; pass --follow-links to allow it";
    EXPECT_EQ(Decide(Choice::Overwrite, name), refusal);
    EXPECT_EQ(Decide(Choice::Skip, name), refusal);
    EXPECT_EQ(Decide(Choice::KeepBoth, name), refusal);
    EXPECT_EQ(Decide(Choice::Ask, name), "ask");
    ConflictPolicy later({.ForFiles = Choice::Ask});
    later.RememberForAll(DirectoryConflictChoice::Merge);
    EXPECT_EQ(InWords(later.Decide(name)), "ask");
    EXPECT_EQ(InWords(later.Decide(DirectoryOnto({Kind::Directory}))), "merge");
    later.RememberForAll(DirectoryConflictChoice::Skip);
    EXPECT_EQ(InWords(later.Decide(name)), "skip");
}

TEST(LinkPolicy, ALinkToADirectoryIsEnteredWhereItIsNamedOrFollowed) {
    EXPECT_EQ(Decide(Choice::Overwrite, DirectoryOnto(LinkTo(Kind::Directory), kFollow)), "merge");
    const ConflictPolicy named(
        {.ForFiles = Choice::Overwrite, .NamedDestination = "/destination/x"});
    EXPECT_EQ(InWords(named.Decide(DirectoryOnto(LinkTo(Kind::Directory)))), "merge");
    const ConflictPolicy above({.ForFiles = Choice::Overwrite, .NamedDestination = "/destination"});
    EXPECT_NE(InWords(above.Decide(DirectoryOnto(LinkTo(Kind::Directory)))), "merge");
}

TEST(SpecialPolicy, NoChoiceWritesToASpecialFile) {
    ExpectNotReplaced(FileOnto({Kind::Special}),
                      "cannot overwrite special file '/destination/x' with '/source/x'");
}

TEST(SpecialPolicy, NoChoiceReplacesASpecialFileByADirectory) {
    const TakenName name = DirectoryOnto({Kind::Special});
    EXPECT_EQ(Decide(Choice::Overwrite, name),
              "fail: cannot overwrite special file '/destination/x' with '/source/x'");
    EXPECT_EQ(Decide(Choice::Skip, name), "skip");
    EXPECT_EQ(Decide(Choice::Ask, name), "ask");
}

TEST(UnequalKinds, NoChoiceReplacesALinkByADirectory) {
    EXPECT_EQ(Decide(Choice::Overwrite, DirectoryOnto(LinkTo(Kind::File))),
              "fail: cannot overwrite non-directory '/destination/x' with directory '/source/x'");
}

TEST(UnequalKinds, NoChoiceRemovesADirectoryThatHoldsTheSource) {
    ExpectNotReplaced(
        WithTheSourceInside(FileOnto({Kind::Directory})),
        "cannot overwrite directory '/destination/x' with '/source/x', which is inside it");
}

TEST(AnswerOfAPerson, IsCarriedOutWhereItReplacesTheOtherKind) {
    const auto carriedOut = [](const TakenName& Name, Action Answer) {
        return InWords(ConflictPolicy::CarryOut(Name, Answer));
    };
    EXPECT_EQ(carriedOut(FileOnto({Kind::Directory}), Action::Overwrite), "overwrite");
    EXPECT_EQ(carriedOut(DirectoryOnto({Kind::File}), Action::Merge), "merge");
    EXPECT_EQ(carriedOut(DirectoryOnto(LinkTo(Kind::File)), Action::Merge), "merge");
    EXPECT_EQ(carriedOut(DirectoryOnto(LinkTo(Kind::Directory)), Action::Merge), "merge");
}

TEST(AnswerOfAPerson, ReplacesTheLinkItself) {
    for (const Action answer : {Action::Overwrite, Action::CompareByContent}) {
        const auto carriedOut = [answer](const TakenEntry& Entry, bool bFollowLinks) {
            return InWords(ConflictPolicy::CarryOut(FileOnto(Entry, bFollowLinks), answer));
        };
        EXPECT_EQ(carriedOut(LinkTo(Kind::File), kLinksStay), "overwrite, link removed");
        EXPECT_EQ(carriedOut(LinkTo(Kind::File), kFollow), ActionName(answer));
        EXPECT_EQ(carriedOut(LinkTo(Kind::Directory), kFollow), "overwrite, link removed");
        EXPECT_EQ(carriedOut({Kind::File}, kLinksStay), ActionName(answer));
    }
}

TEST(AnswerOfAPerson, IsRefusedWhereItWouldDestroyASpecialFileOrTheSource) {
    const auto carriedOut = [](const TakenName& Name, Action Answer) {
        return InWords(ConflictPolicy::CarryOut(Name, Answer));
    };
    const std::string special =
        "fail: cannot overwrite special file '/destination/x' with '/source/x'";
    const std::string inside =
        "fail: cannot overwrite directory '/destination/x' with '/source/x', which is inside it";
    for (const Action answer : {Action::Overwrite, Action::CompareByContent}) {
        EXPECT_EQ(carriedOut(FileOnto({Kind::Special}), answer), special);
        EXPECT_EQ(carriedOut(WithTheSourceInside(FileOnto({Kind::Directory})), answer), inside);
    }
    EXPECT_EQ(carriedOut(DirectoryOnto({Kind::Special}), Action::Merge), special);
    EXPECT_EQ(carriedOut(FileOnto({Kind::Special}), Action::Rename), "rename");
    EXPECT_EQ(carriedOut(FileOnto({Kind::Special}), Action::Skip), "skip");
}
