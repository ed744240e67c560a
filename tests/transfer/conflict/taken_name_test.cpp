#include "taken_name.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "file_tree.h"
#include "temporary_directory.h"

namespace {

namespace fs = std::filesystem;
using Kind = TakenEntry::Kind;

constexpr bool kLinksStay = false;

class TakenNameTest : public testing::Test {
protected:
    void LinkTo(const std::string& Target) { fs::create_symlink(Target, Root / "link"); }
    std::optional<TakenEntry> Look(const std::string& Name) const {
        return LookAtTakenEntry(Root / Name);
    }

    // A file comes from Source to Destination.
    bool HoldsSource(const std::string& Source, const std::string& Destination) const {
        TarvaneTransferConflict conflict;
        conflict.SourcePath = Source.starts_with("cdda:") ? Source : (Root / Source).native();
        conflict.DestinationPath = (Root / Destination).native();
        return MakeTakenName(conflict, Look(Destination).value(), kLinksStay).bHoldsSource;
    }

    const TemporaryDirectory Root;
};

TEST_F(TakenNameTest, NothingStandsAtAFreeName) {
    EXPECT_EQ(Look("free"), std::nullopt);
}

TEST_F(TakenNameTest, TellsAFileThatHasOtherNames) {
    WriteFile(Root / "file", "bytes");
    fs::create_hard_link(Root / "file", Root / "other");
    LinkTo("file");
    EXPECT_TRUE(Look("file")->bHasOtherNames);
    EXPECT_FALSE(Look("link")->bHasOtherNames);
    fs::remove(Root / "other");
    EXPECT_FALSE(Look("file")->bHasOtherNames);
}

TEST_F(TakenNameTest, TellsTheKindOfWhatIsNoLink) {
    WriteFile(Root / "file", "bytes");
    fs::create_directory(Root / "directory");
    MakeFifo(Root / "pipe");
    MakeSocket(Root / "socket");
    EXPECT_EQ(Look("file"), TakenEntry{Kind::File});
    EXPECT_EQ(Look("directory"), TakenEntry{Kind::Directory});
    EXPECT_EQ(Look("pipe"), TakenEntry{Kind::Special});
    EXPECT_EQ(Look("socket"), TakenEntry{Kind::Special});
    EXPECT_EQ(LookAtTakenEntry("/dev/null"), TakenEntry{Kind::Special});
}

TEST_F(TakenNameTest, TellsWhereALinkLeads) {
    const auto lookAtLinkTo = [this](const std::string& Target) {
        fs::remove(Root / "link");
        LinkTo(Target);
        return Look("link");
    };
    WriteFile(Root / "file", "bytes");
    fs::create_directory(Root / "directory");
    EXPECT_EQ(lookAtLinkTo("file"), (TakenEntry{Kind::File, true, "file"}));
    EXPECT_EQ(lookAtLinkTo("./directory"), (TakenEntry{Kind::Directory, true, "./directory"}));
    EXPECT_EQ(lookAtLinkTo("/dev/null"), (TakenEntry{Kind::Special, true, "/dev/null"}));
    EXPECT_EQ(lookAtLinkTo("nowhere"), (TakenEntry{std::nullopt, true, "nowhere"}));
    EXPECT_EQ(lookAtLinkTo("link"), (TakenEntry{std::nullopt, true, "link"}));
}

TEST_F(TakenNameTest, ADirectoryHoldsWhatLiesBelowIt) {
    WriteFile(Root / "x/sub/x", "bytes");
    WriteFile(Root / "beside", "bytes");
    EXPECT_TRUE(HoldsSource("x/sub/x", "x"));
    EXPECT_FALSE(HoldsSource("beside", "x"));
    EXPECT_FALSE(HoldsSource("x/sub/x", "beside"));
}

TEST_F(TakenNameTest, ADirectoryHoldsWhatLiesBelowItByAnotherPath) {
    WriteFile(Root / "x/x", "bytes");
    LinkTo("x");
    EXPECT_TRUE(HoldsSource("link/x", "x"));
    EXPECT_TRUE(HoldsSource("x/x", "link"));
}

TEST_F(TakenNameTest, ADirectoryHoldsNoTrackWhereverTheProgramStands) {
    const fs::path before = fs::current_path();
    fs::create_directory(Root / "x");
    fs::current_path(Root / "x");
    const bool bHolds = HoldsSource("cdda:/dev/sr0/1", "x");
    fs::current_path(before);
    EXPECT_FALSE(bHolds);
}

TEST_F(TakenNameTest, ASourceIsSpecialItselfAndNotByALink) {
    MakeFifo(Root / "pipe");
    WriteFile(Root / "x", "bytes");
    LinkTo("pipe");
    const auto isSpecial = [this](const std::string& Source) {
        TarvaneTransferConflict conflict;
        conflict.SourcePath = Root / Source;
        conflict.DestinationPath = Root / "x";
        return MakeTakenName(conflict, Look("x").value(), kLinksStay).bSourceIsSpecial;
    };
    EXPECT_TRUE(isSpecial("pipe"));
    EXPECT_FALSE(isSpecial("link"));
    EXPECT_FALSE(isSpecial("x"));
    EXPECT_FALSE(isSpecial("missing"));
}

} // namespace
