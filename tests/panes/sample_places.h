// Two places for the tests of panes.

#pragma once

#include "browse_list.h"
#include "listed_entry.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <string>

#include <gtest/gtest.h>

#include "memory_screen.h"

// 2024-03-07 14:05:09 in local time.
inline constexpr std::int64_t kMarch = 1709816709;

inline ListedEntry Directory(const std::string& Name) {
    return {.Name = Name, .What = ListedEntry::Kind::Directory, .Modified = kMarch};
}

inline ListedEntry File(const std::string& Name, std::uint64_t SizeBytes,
                        std::int64_t Modified = kMarch) {
    return {.Name = Name, .SizeBytes = SizeBytes, .Modified = Modified};
}

inline ListedEntry Track(const std::string& Name, std::uint64_t SizeBytes) {
    return {.Name = Name, .What = ListedEntry::Kind::Track, .SizeBytes = SizeBytes};
}

inline Listing MusicListing() {
    Listing music{.Place = "/home/u/Music", .FreeBytes = 12884901888};
    music.Entries = {
        Directory("Live"),
        Directory("日本の音楽"),
        File("cover.jpg", 48230),
        File("étude no 3.flac", 40265318),
        File("long name that does not fit into any column.flac", 42991616),
        File("bad\xFF\xFEname.bin", 15667),
        File("new\nline.txt", 0),
        File(".hidden", 7),
        File("play", 812, kMarch + 86400),
    };
    music.Entries.back().bExecutable = true;
    ListedEntry link = File("link", 12);
    link.bLink = true;
    ListedEntry lost = File("lost link", 0);
    lost.bLink = true;
    lost.What = ListedEntry::Kind::Special;
    ListedEntry pipe = File("pipe", 0);
    pipe.What = ListedEntry::Kind::Special;
    ListedEntry elsewhere = Directory("Elsewhere");
    elsewhere.bLink = true;
    for (const ListedEntry& entry : {link, lost, pipe, elsewhere}) {
        music.Entries.push_back(entry);
    }
    return music;
}

inline BrowseList Music() {
    BrowseList list;
    list.Take(MusicListing());
    return list;
}

inline BrowseList Disc() {
    BrowseList list;
    list.Take({.Place = "cdda:/dev/sr0",
               .Entries = {Track("Track 01.wav", 39951404), Track("Track 02.wav", 48130348)}});
    return list;
}

// Files "a000000", "a000001" and so on.
inline BrowseList ManyFiles(int Count) {
    Listing many{.Place = "/srv/many"};
    for (int i = 0; i < Count; ++i) {
        std::string number = std::to_string(i);
        number.insert(0, 6 - std::min<std::size_t>(6, number.size()), '0');
        many.Entries.push_back(File("a" + number, 1));
    }
    BrowseList list;
    list.Take(many);
    return list;
}

// With dates in a time zone an hour ahead.
class PaneTest : public testing::Test {
protected:
    PaneTest() {
        constexpr int kReplace = 1;
        setenv("TZ", "CET-1", kReplace);
        tzset();
    }
    ~PaneTest() override {
        unsetenv("TZ");
        tzset();
    }
    void SetUp() override { ASSERT_TRUE(EnsureUtf8Locale()); }
};
