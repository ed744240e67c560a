#include "entry_order.h"
#include "screen_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace {

using Kind = ListedEntry::Kind;
using Names = std::vector<std::string>;

constexpr EntryOrder kByName{};
constexpr EntryOrder kByExtension{.Key = OrderKey::Extension};
constexpr EntryOrder kBySize{.Key = OrderKey::Size};
constexpr EntryOrder kByDate{.Key = OrderKey::Date};

EntryOrder Reversed(EntryOrder Order) {
    Order.bReversed = true;
    return Order;
}

ListedEntry File(std::string Name, std::uint64_t SizeBytes = 0, std::int64_t Modified = 0) {
    return {.Name = std::move(Name), .SizeBytes = SizeBytes, .Modified = Modified};
}

ListedEntry Directory(std::string Name, std::int64_t Modified = 0) {
    return {.Name = std::move(Name), .What = Kind::Directory, .Modified = Modified};
}

ListedEntry Track(std::string Name, std::uint64_t SizeBytes) {
    return {.Name = std::move(Name), .What = Kind::Track, .SizeBytes = SizeBytes};
}

Names Sorted(std::vector<ListedEntry> Entries, EntryOrder Order) {
    Sort(Entries, Order);
    Names names;
    for (const ListedEntry& entry : Entries) {
        names.push_back(entry.Name);
    }
    return names;
}

class EntryOrderTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(EnsureUtf8Locale()) << "no UTF-8 locale here"; }
};

class NaturalOrder : public EntryOrderTest {
protected:
    static void ExpectBefore(const std::string& First, const std::string& Second) {
        const Names wanted = {First, Second};
        EXPECT_EQ(Sorted({File(First), File(Second)}, kByName), wanted);
        EXPECT_EQ(Sorted({File(Second), File(First)}, kByName), wanted);
    }
};

TEST_F(NaturalOrder, TakesDigitsByTheirValue) {
    ExpectBefore("a2", "a10");
    ExpectBefore("a2b10", "a10b2");
    ExpectBefore("2", "10");
    ExpectBefore("a9.txt", "a10.txt");
    ExpectBefore("a0", "a1");
    ExpectBefore("1.9", "1.10");
}

TEST_F(NaturalOrder, TakesNumbersOfAnyLength) {
    const std::string long9(300, '9');
    ExpectBefore(long9, "1" + std::string(300, '0'));
    ExpectBefore("1" + std::string(254, '0'), "1" + std::string(255, '0'));
    ExpectBefore("9" + std::string(254, '0'), "1" + std::string(255, '0'));
    ExpectBefore("18446744073709551615", "18446744073709551616");
    ExpectBefore(std::string(300, '0') + "2", "10");
    ExpectBefore(long9 + "a", long9 + "b");
}

TEST_F(NaturalOrder, TakesTheSameValueByTheBytes) {
    ExpectBefore("a02", "a2");
    ExpectBefore("a002", "a02");
    ExpectBefore("a00", "a000");
}

TEST_F(NaturalOrder, LooksAtBytesOnlyWhenTheRestIsTheSame) {
    ExpectBefore("a02b", "a2c");
    ExpectBefore("a2b", "a02c");
    ExpectBefore("README a", "readme b");
    ExpectBefore("readme a", "README b");
}

TEST_F(NaturalOrder, LeavesCaseAside) {
    ExpectBefore("apple", "Banana");
    ExpectBefore("Apple", "banana");
    ExpectBefore("File", "file");
}

TEST_F(NaturalOrder, LeavesCaseAsideBeyondAscii) {
    ExpectBefore("\u00c4b", "\u00e4c");
    ExpectBefore("\u00e4b", "\u00c4c");
    ExpectBefore("\u042fa", "\u044fb");
    ExpectBefore("\u044fa", "\u042fb");
    ExpectBefore("\u00c4", "\u00e4");
}

TEST_F(NaturalOrder, TakesBytesThatAreNoUtf8AsTheyAre) {
    ExpectBefore("a\xfe", "a\xff");
    ExpectBefore("a\xc3", "a\xc4");
    ExpectBefore("a\xe2\x82", "a\xe2\x83");
    ExpectBefore("z", "\xff");
    ExpectBefore("\xff"
                 "2",
                 "\xff"
                 "10");
    ExpectBefore("\xff"
                 "A",
                 "\xff"
                 "b");
}

TEST_F(NaturalOrder, PutsTheShorterFirst) {
    ExpectBefore("", "a");
    ExpectBefore("", "0");
    ExpectBefore("a", "a1");
    ExpectBefore("a", "ab");
    ExpectBefore("a.txt", "ab.txt");
}

TEST_F(NaturalOrder, PutsNumbersWhereDigitsAre) {
    ExpectBefore("a.", "a1");
    ExpectBefore("a1", "aa");
    ExpectBefore("a1", "a_");
    ExpectBefore("a (2)", "a (10)");
}

// Of any three texts the order of two and two says the order of all, or sorting might do anything.
TEST_F(NaturalOrder, NeverContradictsItself) {
    const Names parts = {"0", "00", "1",      "01",     "9",    "10",   "a",    "A",       "b",
                         ".", "_",  "\u00e4", "\u00c4", "\xc3", "\xa4", "\xff", "\xe2\x82"};
    std::mt19937 random(4711);
    Names names;
    for (int i = 0; i < 120; ++i) {
        std::string name;
        for (std::size_t length = random() % 5; length > 0; --length) {
            name += parts[random() % parts.size()];
        }
        names.push_back(name);
    }
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());

    std::vector<ListedEntry> entries;
    for (const std::string& name : names) {
        entries.push_back(File(name));
    }
    names = Sorted(entries, kByName);

    for (std::size_t i = 0; i < names.size(); ++i) {
        for (std::size_t j = i + 1; j < names.size(); ++j) {
            ExpectBefore(names[i], names[j]);
        }
    }
}

TEST_F(EntryOrderTest, PutsDirectoriesFirstInEveryOrder) {
    const std::vector<ListedEntry> entries = {File("a.a", 9, 9), Directory("z", 1),
                                              File("b.b", 0, 0), Directory("y", 1)};
    EXPECT_EQ(Sorted(entries, kByName), (Names{"y", "z", "a.a", "b.b"}));
    EXPECT_EQ(Sorted(entries, kByExtension), (Names{"y", "z", "a.a", "b.b"}));
    EXPECT_EQ(Sorted(entries, kBySize), (Names{"y", "z", "a.a", "b.b"}));
    EXPECT_EQ(Sorted(entries, kByDate), (Names{"y", "z", "a.a", "b.b"}));
}

TEST_F(EntryOrderTest, PutsDirectoriesFirstInReversedOrdersToo) {
    const std::vector<ListedEntry> entries = {File("a.a", 9, 9), Directory("z", 1),
                                              File("b.b", 0, 0), Directory("y", 1)};
    EXPECT_EQ(Sorted(entries, Reversed(kByName)), (Names{"z", "y", "b.b", "a.a"}));
    EXPECT_EQ(Sorted(entries, Reversed(kByExtension)), (Names{"y", "z", "b.b", "a.a"}));
    EXPECT_EQ(Sorted(entries, Reversed(kBySize)), (Names{"y", "z", "b.b", "a.a"}));
    EXPECT_EQ(Sorted(entries, Reversed(kByDate)), (Names{"y", "z", "b.b", "a.a"}));
}

TEST_F(EntryOrderTest, SortsByNameAsPeopleDo) {
    EXPECT_EQ(Sorted({File("b"), File("a10"), File("A2"), File("a1"), File("B")}, kByName),
              (Names{"a1", "A2", "a10", "B", "b"}));
}

TEST_F(EntryOrderTest, TakesWhatFollowsTheLastDotAsExtension) {
    EXPECT_EQ(Sorted({File("b.zip"), File("a.tar.gz"), File("d.bz2"), File("c.tar")}, kByExtension),
              (Names{"d.bz2", "a.tar.gz", "c.tar", "b.zip"}));
}

TEST_F(EntryOrderTest, PutsFilesWithoutExtensionFirst) {
    EXPECT_EQ(Sorted({File("a.a"), File("none"), File("ends."), File(".zshrc")}, kByExtension),
              (Names{".zshrc", "ends.", "none", "a.a"}));
}

TEST_F(EntryOrderTest, GoesByNameWhereExtensionsAreTheSameButForCase) {
    EXPECT_EQ(Sorted({File("c.JPG"), File("b.jpg"), File("a10.Jpg"), File("a2.JPG")}, kByExtension),
              (Names{"a2.JPG", "a10.Jpg", "b.jpg", "c.JPG"}));
}

TEST_F(EntryOrderTest, SortsDirectoriesByNameForExtension) {
    EXPECT_EQ(Sorted({Directory("a.z"), Directory("b.a"), Directory("c")}, kByExtension),
              (Names{"a.z", "b.a", "c"}));
}

TEST_F(EntryOrderTest, PutsTheLargestFirstBySize) {
    EXPECT_EQ(Sorted({File("b", 1), File("c", std::uint64_t{1} << 40), File("a", 1)}, kBySize),
              (Names{"c", "a", "b"}));
}

TEST_F(EntryOrderTest, PutsTheLatestFirstByDate) {
    ListedEntry unknown = File("unknown");
    unknown.Modified.reset();
    EXPECT_EQ(Sorted({File("old", 0, -5), unknown, File("new", 0, 7), Directory("d1", 3),
                      Directory("d2", 4)},
                     kByDate),
              (Names{"d2", "d1", "new", "old", "unknown"}));
}

TEST_F(EntryOrderTest, KeepsWhatIsTheSameInTheOrderOfNamesWhenReversed) {
    EXPECT_EQ(Sorted({File("b", 1), File("a", 1), File("c", 0)}, Reversed(kBySize)),
              (Names{"c", "a", "b"}));
    EXPECT_EQ(Sorted({File("b.a"), File("a.a")}, Reversed(kByExtension)), (Names{"a.a", "b.a"}));
}

TEST_F(EntryOrderTest, SortsTracksByTheirNumbersWhateverTheKey) {
    const std::vector<ListedEntry> tracks = {Track("Track 100.wav", 9), Track("Track 02.wav", 1),
                                             Track("Track 10.wav", 5)};
    const Names byNumber = {"Track 02.wav", "Track 10.wav", "Track 100.wav"};
    EXPECT_EQ(Sorted(tracks, kByName), byNumber);
    EXPECT_EQ(Sorted(tracks, kByExtension), byNumber);
    EXPECT_EQ(Sorted(tracks, kBySize), byNumber);
    EXPECT_EQ(Sorted(tracks, kByDate), byNumber);
}

TEST_F(EntryOrderTest, KeepsAllThatIsKnownOfAnEntry) {
    std::vector<ListedEntry> entries = {File("b", 2, 3), File("a", 5, 6)};
    entries[0].bLink = true;
    entries[0].bExecutable = true;
    Sort(entries, kByName);
    EXPECT_TRUE(entries[1].bLink && entries[1].bExecutable);
    EXPECT_EQ(entries[1].SizeBytes, 2u);
    EXPECT_EQ(entries[1].Modified, 3);
    EXPECT_EQ(entries[0].SizeBytes, 5u);
}

TEST_F(EntryOrderTest, LeavesCaseAsideButNothingElse) {
    EXPECT_EQ(WithoutCase("AbC09_\u00c4\u042f"), "abc09_\u00e4\u044f");
    EXPECT_EQ(WithoutCase("\xff"
                          "A\xc3"),
              "\xff"
              "a\xc3");
    EXPECT_EQ(WithoutCase(""), "");
}

} // namespace
