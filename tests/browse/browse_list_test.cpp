#include "browse_list.h"
#include "screen_text.h"
#include "track_list.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

namespace {

using Kind = ListedEntry::Kind;
using Names = std::vector<std::string>;
using Paths = std::vector<std::filesystem::path>;

ListedEntry File(std::string Name, std::uint64_t SizeBytes = 0) {
    return {.Name = std::move(Name), .SizeBytes = SizeBytes};
}

ListedEntry Directory(std::string Name) {
    return {.Name = std::move(Name), .What = Kind::Directory};
}

Listing FilesIn(const std::filesystem::path& Place, const Names& FileNames) {
    Listing listing{.Place = Place};
    for (const std::string& name : FileNames) {
        listing.Entries.push_back(File(name));
    }
    return listing;
}

BrowseList ListOf(Listing Content) {
    BrowseList list;
    list.Take(std::move(Content));
    return list;
}

// "/.." for the row that leads up, "*" before what is marked, "<" behind the row of the cursor.
Names RowsOf(const BrowseList& List) {
    Names rows;
    for (std::size_t row = 0; row < List.RowCount(); ++row) {
        const ListedEntry* const entry = List.EntryAt(row);
        rows.push_back((List.IsMarked(row) ? "*" : "") + (entry ? entry->Name : "/..") +
                       (row == List.Cursor() ? "<" : ""));
    }
    return rows;
}

TEST(BrowseList, HasNothingBeforeItTakesAListing) {
    const BrowseList list;
    EXPECT_EQ(list.RowCount(), 0u);
    EXPECT_EQ(list.Cursor(), 0u);
    EXPECT_EQ(list.CurrentEntry(), nullptr);
    EXPECT_EQ(list.Place(), "");
    EXPECT_EQ(list.FreeBytes(), std::nullopt);
    EXPECT_FALSE(list.HasParentRow());
    EXPECT_EQ(list.Chosen(), Paths{});
}

TEST(BrowseList, ShowsTheEntriesOfAPlaceInTheirOrder) {
    BrowseList list;
    list.Take(
        {.Place = "/p", .Entries = {File("a10"), File("a2"), Directory("z")}, .FreeBytes = 7});
    EXPECT_EQ(RowsOf(list), (Names{"/..<", "z", "a2", "a10"}));
    EXPECT_EQ(list.Place(), "/p");
    EXPECT_EQ(list.FreeBytes(), 7u);
}

TEST(BrowseList, ShowsANameOnceThatWasListedTwice) {
    BrowseList list = ListOf({.Place = "/p", .Entries = {File("a", 1), File("b"), File("a", 2)}});
    EXPECT_EQ(RowsOf(list), (Names{"/..<", "a", "b"}));
    list.InvertMarks();
    EXPECT_EQ(list.Marked().Entries, 2u);
    EXPECT_EQ(list.Chosen(), (Paths{"/p/a", "/p/b"}));
}

TEST(BrowseList, HasARowThatLeadsUpEverywhereButInTheRoot) {
    EXPECT_TRUE(ListOf({.Place = "/p"}).HasParentRow());
    EXPECT_TRUE(ListOf({.Place = "cdda:/dev/sr0"}).HasParentRow());
    EXPECT_EQ(RowsOf(ListOf({.Place = "/p"})), (Names{"/..<"}));
    EXPECT_FALSE(ListOf({.Place = "/"}).HasParentRow());
    EXPECT_EQ(RowsOf(ListOf(FilesIn("/", {"a"}))), (Names{"a<"}));
    EXPECT_EQ(RowsOf(ListOf({.Place = "/"})), Names{});
}

TEST(BrowseList, HasNoEntryInTheRowThatLeadsUpNorBehindTheLast) {
    const BrowseList list = ListOf(FilesIn("/p", {"a"}));
    EXPECT_EQ(list.EntryAt(0), nullptr);
    EXPECT_EQ(list.EntryAt(1)->Name, "a");
    EXPECT_EQ(list.EntryAt(2), nullptr);
    EXPECT_FALSE(list.IsMarked(2));
    EXPECT_EQ(ListOf(FilesIn("/", {"a"})).EntryAt(1), nullptr);
    EXPECT_EQ(list.EntryAt(std::numeric_limits<std::size_t>::max()), nullptr);
}

TEST(BrowseList, PutsTheCursorOnTheFirstRowOfANewPlace) {
    BrowseList list = ListOf(FilesIn("/p", {"a", "b"}));
    list.MoveCursorTo("b");
    list.Take(FilesIn("/q", {"a", "b"}));
    EXPECT_EQ(RowsOf(list), (Names{"/..<", "a", "b"}));
}

TEST(BrowseList, PutsTheCursorOnTheEntryThatItIsTold) {
    BrowseList list;
    list.Take(FilesIn("/p", {"a", "b"}), "b");
    EXPECT_EQ(RowsOf(list), (Names{"/..", "a", "b<"}));
    list.Take(FilesIn("/p", {"a", "b", "c"}), "c");
    EXPECT_EQ(RowsOf(list), (Names{"/..", "a", "b", "c<"}));
    list.Take(FilesIn("/p", {"a", "b", "c"}), "none");
    EXPECT_EQ(RowsOf(list), (Names{"/..", "a", "b", "c<"}));
    list.Take(FilesIn("/q", {"a"}), "none");
    EXPECT_EQ(RowsOf(list), (Names{"/..<", "a"}));
}

TEST(BrowseList, KeepsTheCursorOnItsEntryWhenAPlaceIsReadAgain) {
    BrowseList list = ListOf(FilesIn("/p", {"a", "b"}));
    list.MoveCursorTo("b");
    list.Take(FilesIn("/p", {"a", "aa", "ab", "b", "c"}));
    EXPECT_EQ(RowsOf(list), (Names{"/..", "a", "aa", "ab", "b<", "c"}));
}

TEST(BrowseList, KeepsTheCursorOnTheRowOfAnEntryThatHasGone) {
    BrowseList list = ListOf(FilesIn("/p", {"a", "b", "c"}));
    list.MoveCursorTo("b");
    list.Take(FilesIn("/p", {"a", "c"}));
    EXPECT_EQ(RowsOf(list), (Names{"/..", "a", "c<"}));
    list.Take(FilesIn("/p", {"a"}));
    EXPECT_EQ(RowsOf(list), (Names{"/..", "a<"}));
    list.Take(FilesIn("/p", {}));
    EXPECT_EQ(RowsOf(list), (Names{"/..<"}));
}

TEST(BrowseList, KeepsTheCursorOnTheRowThatLeadsUp) {
    BrowseList list = ListOf(FilesIn("/p", {"b"}));
    list.Take(FilesIn("/p", {"a", "b"}));
    EXPECT_EQ(RowsOf(list), (Names{"/..<", "a", "b"}));
}

TEST(BrowseList, KeepsMarksOfEntriesThatAreStillThere) {
    BrowseList list = ListOf(FilesIn("/p", {"a", "b", "c"}));
    list.MarkMatching("[ac]", true);
    list.Take({.Place = "/p", .Entries = {File("c", 5), File("b", 6), File("d", 7)}});
    EXPECT_EQ(RowsOf(list), (Names{"/..<", "b", "*c", "d"}));
    EXPECT_EQ(list.Marked().Entries, 1u);
    EXPECT_EQ(list.Marked().Bytes, 5u);
    list.Take(FilesIn("/p", {"a", "b", "c"}));
    EXPECT_EQ(RowsOf(list), (Names{"/..<", "a", "b", "*c"}));
}

TEST(BrowseList, MarksByBytes) {
    BrowseList list = ListOf(FilesIn("/p", {"\xff", "\xfe", "A", "a"}));
    list.MoveCursorTo("\xff");
    list.ToggleMark(list.Cursor());
    list.MoveCursorTo("a");
    list.ToggleMark(list.Cursor());
    list.Take(FilesIn("/p", {"a", "A", "\xfe", "\xff"}));
    EXPECT_EQ(RowsOf(list), (Names{"/..", "A", "*a<", "\xfe", "*\xff"}));
}

TEST(BrowseList, MarksNothingInANewPlace) {
    BrowseList list = ListOf(FilesIn("/p", {"a"}));
    list.ToggleMark(1);
    list.Take(FilesIn("/q", {"a"}));
    EXPECT_EQ(RowsOf(list), (Names{"/..<", "a"}));
    EXPECT_EQ(list.Marked().Entries, 0u);
}

TEST(BrowseList, ChangesNothingButTheFreeSpaceAfterAFailure) {
    BrowseList list = ListOf(FilesIn("/p", {"a", "b"}));
    list.ToggleMark(1);
    list.MoveCursorTo("b");
    list.Take({.Place = "/p", .FreeBytes = 3, .Failure = "no"}, "a");
    EXPECT_EQ(RowsOf(list), (Names{"/..", "*a", "b<"}));
    EXPECT_EQ(list.FreeBytes(), 3u);
}

TEST(BrowseList, ChangesNothingAfterAFailureElsewhere) {
    BrowseList list = ListOf({.Place = "/p", .Entries = {File("a")}, .FreeBytes = 3});
    list.Take({.Place = "/q", .FreeBytes = 5, .Failure = "no"});
    EXPECT_EQ(list.Place(), "/p");
    EXPECT_EQ(RowsOf(list), (Names{"/..<", "a"}));
    EXPECT_EQ(list.FreeBytes(), 3u);
}

TEST(BrowseList, MovesTheCursorNoFurtherThanTheRows) {
    BrowseList list = ListOf(FilesIn("/p", {"a", "b"}));
    list.MoveCursorTo(1);
    EXPECT_EQ(list.CurrentEntry()->Name, "a");
    list.MoveCursorTo(9);
    EXPECT_EQ(list.Cursor(), 2u);
    list.MoveCursorBy(-1);
    EXPECT_EQ(list.Cursor(), 1u);
    list.MoveCursorBy(-5);
    EXPECT_EQ(list.Cursor(), 0u);
    list.MoveCursorBy(1);
    EXPECT_EQ(list.Cursor(), 1u);
    list.MoveCursorBy(std::numeric_limits<std::ptrdiff_t>::max());
    EXPECT_EQ(list.Cursor(), 2u);
    list.MoveCursorBy(std::numeric_limits<std::ptrdiff_t>::min());
    EXPECT_EQ(list.Cursor(), 0u);
}

TEST(BrowseList, KeepsTheCursorAtTheBeginningOfAnEmptyList) {
    BrowseList list = ListOf({.Place = "/"});
    list.MoveCursorTo(3);
    list.MoveCursorBy(2);
    list.MoveCursorBy(-2);
    EXPECT_EQ(list.Cursor(), 0u);
    EXPECT_FALSE(list.FindFrom(0, "a"));
}

TEST(BrowseList, MovesTheCursorToAName) {
    BrowseList list = ListOf(FilesIn("/p", {"a", "A", ".hidden"}));
    EXPECT_TRUE(list.MoveCursorTo("a"));
    EXPECT_EQ(list.CurrentEntry()->Name, "a");
    EXPECT_FALSE(list.MoveCursorTo("b"));
    EXPECT_FALSE(list.MoveCursorTo(".hidden"));
    EXPECT_EQ(list.CurrentEntry()->Name, "a");
}

TEST(BrowseList, FindsWhatBeginsSoFromARowOn) {
    BrowseList list = ListOf(FilesIn("/p", {"song 1", "song 2", "tune"}));
    ASSERT_TRUE(list.FindFrom(0, "song"));
    EXPECT_EQ(list.CurrentEntry()->Name, "song 1");
    ASSERT_TRUE(list.FindFrom(list.Cursor(), "song"));
    EXPECT_EQ(list.CurrentEntry()->Name, "song 1");
    ASSERT_TRUE(list.FindFrom(list.Cursor() + 1, "song"));
    EXPECT_EQ(list.CurrentEntry()->Name, "song 2");
}

TEST(BrowseList, FindsRoundTheEnd) {
    BrowseList list = ListOf(FilesIn("/p", {"a", "b", "c"}));
    ASSERT_TRUE(list.FindFrom(3, "b"));
    EXPECT_EQ(list.CurrentEntry()->Name, "b");
    ASSERT_TRUE(list.FindFrom(list.RowCount(), "a"));
    EXPECT_EQ(list.CurrentEntry()->Name, "a");
}

TEST(BrowseList, FindsWithoutCase) {
    ASSERT_TRUE(EnsureUtf8Locale()) << "no UTF-8 locale here";
    BrowseList list = ListOf(FilesIn("/p", {"Readme", "\u00c4pfel",
                                            "\xff"
                                            "X"}));
    ASSERT_TRUE(list.FindFrom(0, "rEADm"));
    EXPECT_EQ(list.CurrentEntry()->Name, "Readme");
    ASSERT_TRUE(list.FindFrom(0, "\u00e4P"));
    EXPECT_EQ(list.CurrentEntry()->Name, "\u00c4pfel");
    ASSERT_TRUE(list.FindFrom(0, "\xffx"));
    EXPECT_EQ(list.CurrentEntry()->Name, "\xff"
                                         "X");
}

TEST(BrowseList, FindsTheBeginningOnlyAndMovesNothingInVain) {
    BrowseList list = ListOf(FilesIn("/p", {"ab", "b", ".b2"}));
    list.MoveCursorTo("ab");
    EXPECT_FALSE(list.FindFrom(0, "bb"));
    EXPECT_FALSE(list.FindFrom(0, ".."));
    EXPECT_FALSE(list.FindFrom(0, ".b"));
    EXPECT_EQ(list.CurrentEntry()->Name, "ab");
    ASSERT_TRUE(list.FindFrom(0, "b"));
    EXPECT_EQ(list.CurrentEntry()->Name, "b");
}

TEST(BrowseList, KeepsCursorAndMarksInANewOrder) {
    BrowseList list =
        ListOf({.Place = "/p", .Entries = {File("a", 1), File("b", 2), File("c", 3)}});
    list.ToggleMark(1);
    list.MoveCursorTo("b");
    list.SetOrder({.Key = OrderKey::Size});
    EXPECT_EQ(RowsOf(list), (Names{"/..", "c", "b<", "*a"}));
    list.MoveCursorTo("c");
    list.SetOrder({.Key = OrderKey::Name, .bReversed = false});
    EXPECT_EQ(RowsOf(list), (Names{"/..", "*a", "b", "c<"}));
    EXPECT_EQ(list.Marked().Bytes, 1u);
}

TEST(BrowseList, KeepsTheOrderForNewPlaces) {
    BrowseList list;
    list.SetOrder({.Key = OrderKey::Name, .bReversed = true});
    EXPECT_EQ(list.Order(), (EntryOrder{.Key = OrderKey::Name, .bReversed = true}));
    list.Take(FilesIn("/p", {"a", "b"}));
    EXPECT_EQ(RowsOf(list), (Names{"/..<", "b", "a"}));
}

TEST(BrowseList, ShowsHiddenEntriesWhenToldTo) {
    BrowseList list = ListOf(FilesIn("/p", {".h", "a"}));
    list.MoveCursorTo("a");
    EXPECT_FALSE(list.ShowsHidden());
    EXPECT_EQ(RowsOf(list), (Names{"/..", "a<"}));
    list.ShowHidden(true);
    EXPECT_TRUE(list.ShowsHidden());
    EXPECT_EQ(RowsOf(list), (Names{"/..", ".h", "a<"}));
    list.Take(FilesIn("/p", {".h", ".i", "a"}));
    EXPECT_EQ(RowsOf(list), (Names{"/..", ".h", ".i", "a<"}));
    list.ShowHidden(false);
    EXPECT_EQ(RowsOf(list), (Names{"/..", "a<"}));
}

TEST(BrowseList, TakesMarksFromEntriesThatAreHiddenThen) {
    BrowseList list = ListOf({.Place = "/p", .Entries = {File(".h", 5), File("a", 7)}});
    list.ShowHidden(true);
    list.InvertMarks();
    list.MoveCursorTo(".h");
    list.ShowHidden(false);
    EXPECT_EQ(RowsOf(list), (Names{"/..", "*a<"}));
    EXPECT_EQ(list.Marked().Entries, 1u);
    EXPECT_EQ(list.Marked().Bytes, 7u);
    list.ShowHidden(true);
    EXPECT_EQ(RowsOf(list), (Names{"/..", ".h", "*a<"}));
}

TEST(BrowseList, TurnsAMarkOnAndOff) {
    BrowseList list = ListOf(FilesIn("/p", {"a", "b"}));
    list.ToggleMark(2);
    EXPECT_EQ(RowsOf(list), (Names{"/..<", "a", "*b"}));
    list.ToggleMark(2);
    EXPECT_EQ(RowsOf(list), (Names{"/..<", "a", "b"}));
}

TEST(BrowseList, CannotMarkTheRowThatLeadsUp) {
    BrowseList list = ListOf(FilesIn("/p", {"a"}));
    list.ToggleMark(0);
    list.ToggleMark(2);
    EXPECT_EQ(RowsOf(list), (Names{"/..<", "a"}));
    EXPECT_EQ(list.Marked().Entries, 0u);
}

TEST(BrowseList, MarksWhatAPatternMatches) {
    BrowseList list = ListOf({.Place = "/p",
                              .Entries = {File("a.txt"), File("b.TXT"), File("c.txt~"),
                                          Directory("d.txt"), File(".txt"), File("\xff.txt")}});
    list.MarkMatching("*.txt", true);
    EXPECT_EQ(RowsOf(list), (Names{"/..<", "*d.txt", "*a.txt", "b.TXT", "c.txt~", "*\xff.txt"}));
    list.MarkMatching("[a-c]*", false);
    EXPECT_EQ(RowsOf(list), (Names{"/..<", "*d.txt", "a.txt", "b.TXT", "c.txt~", "*\xff.txt"}));
    list.MarkMatching("?.TXT", true);
    EXPECT_EQ(RowsOf(list), (Names{"/..<", "*d.txt", "a.txt", "*b.TXT", "c.txt~", "*\xff.txt"}));
    EXPECT_TRUE(list.HasMatch("c.*"));
    EXPECT_FALSE(list.HasMatch("c"));
    // Hidden, and the row that leads up.
    EXPECT_FALSE(list.HasMatch(".*"));
}

TEST(BrowseList, MatchesNamesThatAreNoUtf8) {
    ASSERT_TRUE(EnsureUtf8Locale()) << "no UTF-8 locale here";
    BrowseList list = ListOf(FilesIn("/p", {"\xff.txt", "\u00e4.txt"}));
    list.MarkMatching("?.txt", true);
    EXPECT_EQ(RowsOf(list), (Names{"/..<", "*\u00e4.txt", "*\xff.txt"}));
}

TEST(BrowseList, MatchesHiddenEntriesWhereTheyAreShown) {
    BrowseList list = ListOf(FilesIn("/p", {".h", "a"}));
    list.MarkMatching("*", true);
    EXPECT_EQ(list.Marked().Entries, 1u);
    list.ShowHidden(true);
    list.MarkMatching("*", true);
    EXPECT_EQ(RowsOf(list), (Names{"/..<", "*.h", "*a"}));
}

TEST(BrowseList, InvertsMarksOfDirectoriesToo) {
    BrowseList list =
        ListOf({.Place = "/p", .Entries = {Directory("d"), File("a"), File("b"), File(".h")}});
    list.ToggleMark(2);
    list.InvertMarks();
    EXPECT_EQ(RowsOf(list), (Names{"/..<", "*d", "a", "*b"}));
    EXPECT_EQ(list.Marked().Entries, 2u);
}

TEST(BrowseList, TakesMarksFromWhatItIsTold) {
    BrowseList list =
        ListOf({.Place = "/p", .Entries = {Directory("d"), File("a", 3), File("b", 40)}});
    list.InvertMarks();
    list.Unmark({"/p/d", "/p/a", "/q/b", "/p/gone"});
    EXPECT_EQ(RowsOf(list), (Names{"/..<", "d", "a", "*b"}));
    EXPECT_EQ(list.Marked().Entries, 1u);
    EXPECT_EQ(list.Marked().Directories, 0u);
    EXPECT_EQ(list.Marked().Bytes, 40u);
    list.Unmark({"/p/a"});
    EXPECT_EQ(RowsOf(list), (Names{"/..<", "d", "a", "*b"}));
}

TEST(BrowseList, SumsUpWhatIsMarked) {
    BrowseList list = ListOf(
        {.Place = "/p", .Entries = {Directory("d"), Directory("e"), File("a", 3), File("b", 40)}});
    list.MarkMatching("*", true);
    list.MarkMatching("*", true);
    EXPECT_EQ(list.Marked().Entries, 4u);
    EXPECT_EQ(list.Marked().Directories, 2u);
    EXPECT_EQ(list.Marked().Bytes, 43u);
    list.MarkMatching("[ad]", false);
    list.MarkMatching("[ad]", false);
    EXPECT_EQ(list.Marked().Entries, 2u);
    EXPECT_EQ(list.Marked().Directories, 1u);
    EXPECT_EQ(list.Marked().Bytes, 40u);
}

TEST(BrowseList, CountsLinksToDirectoriesAmongThemAndApart) {
    ListedEntry link = Directory("link");
    link.bLink = true;
    BrowseList list = ListOf({.Place = "/p", .Entries = {Directory("d"), link}});
    list.MarkMatching("*", true);
    EXPECT_EQ(list.Marked().Directories, 2u);
    EXPECT_EQ(list.Marked().RealDirectories, 1u);
    list.MarkMatching("d", false);
    EXPECT_EQ(list.Marked().Directories, 1u);
    EXPECT_EQ(list.Marked().RealDirectories, 0u);
}

TEST(BrowseList, ChoosesTheMarkedInTheirOrder) {
    BrowseList list = ListOf(FilesIn("/p", {"a10", "a2", "a3"}));
    list.MoveCursorTo("a10");
    list.ToggleMark(list.Cursor());
    list.MoveCursorTo("a2");
    list.ToggleMark(list.Cursor());
    list.MoveCursorTo("a3");
    EXPECT_EQ(list.Chosen(), (Paths{"/p/a2", "/p/a10"}));
}

TEST(BrowseList, ChoosesWhatIsUnderTheCursorWhereNothingIsMarked) {
    BrowseList list = ListOf(FilesIn("/p", {"a"}));
    EXPECT_EQ(list.Chosen(), Paths{});
    list.MoveCursorTo("a");
    EXPECT_EQ(list.Chosen(), (Paths{"/p/a"}));
}

TEST(BrowseList, JoinsPathsWithOneSlash) {
    EXPECT_EQ(ListOf({.Place = "/p/q"}).PathOf(File("a")).native(), "/p/q/a");
    EXPECT_EQ(ListOf({.Place = "/"}).PathOf(File("a")).native(), "/a");
    EXPECT_EQ(ListOf({.Place = "/p"}).PathOf(File("\xff \n")).native(), "/p/\xff \n");
}

TEST(BrowseList, KnowsTracksByTheirPaths) {
    const BrowseList list = ListOf({.Place = "cdda:/dev/sr0"});
    const ListedEntry track{.Name = TrackFileName(3), .What = Kind::Track};
    EXPECT_EQ(list.PathOf(track).native(), "cdda:/dev/sr0/Track 03.wav");
    EXPECT_EQ(list.PathOf(track).native(), TrackPath("/dev/sr0", 3));
}

} // namespace
