// A directory's contents as bytes and back.

#include "listing_reply.h"

#include <gtest/gtest.h>

namespace {

using Kind = ListedEntry::Kind;

DirectoryContents Example() {
    ListedEntry folder;
    folder.Name = "\xff\n ";
    folder.What = Kind::Directory;
    folder.bLink = true;
    folder.Modified = -5;
    ListedEntry file;
    file.Name = "run";
    file.bExecutable = true;
    file.SizeBytes = 5'000'000'000;
    file.Modified = 1'700'000'000;
    ListedEntry special;
    special.Name = "pipe";
    special.What = Kind::Special;
    return {.Entries = {folder, file, special}, .FreeBytes = 12345};
}

} // namespace

TEST(ListingReply, TellsEverything) {
    const std::optional<DirectoryContents> read = ContentsFrom(ReplyFrom(Example()));
    ASSERT_TRUE(read.has_value());
    EXPECT_EQ(read->Error, 0);
    EXPECT_EQ(read->FreeBytes, 12345U);
    const std::vector<ListedEntry> expected = Example().Entries;
    ASSERT_EQ(read->Entries.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(read->Entries[i].Name, expected[i].Name);
        EXPECT_EQ(read->Entries[i].What, expected[i].What);
        EXPECT_EQ(read->Entries[i].bLink, expected[i].bLink);
        EXPECT_EQ(read->Entries[i].bExecutable, expected[i].bExecutable);
        EXPECT_EQ(read->Entries[i].SizeBytes, expected[i].SizeBytes);
        EXPECT_EQ(read->Entries[i].Modified, expected[i].Modified);
    }
}

TEST(ListingReply, TellsWhyThereIsNothing) {
    const std::optional<DirectoryContents> read = ContentsFrom(ReplyFrom({.Error = 13}));
    ASSERT_TRUE(read.has_value());
    EXPECT_EQ(read->Error, 13);
    EXPECT_EQ(read->FreeBytes, std::nullopt);
    EXPECT_TRUE(read->Entries.empty());
}

TEST(ListingReply, IsNothingWhenItIsCutAnywhere) {
    const std::string whole = ReplyFrom(Example());
    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_FALSE(ContentsFrom(whole.substr(0, length)).has_value()) << length;
    }
}

TEST(ListingReply, IsNothingWhenThereIsMoreThanItSays) {
    const std::string whole = ReplyFrom(Example());
    EXPECT_FALSE(ContentsFrom(whole + '\0').has_value());
    const std::string head = ReplyFrom({});
    EXPECT_FALSE(ContentsFrom(whole + whole.substr(head.size())).has_value());
}

TEST(ListingReply, IsNothingWhenAnEntryIsOfNoKind) {
    DirectoryContents wrong = Example();
    wrong.Entries.back().What = static_cast<Kind>(4);
    EXPECT_FALSE(ContentsFrom(ReplyFrom(wrong)).has_value());
}
