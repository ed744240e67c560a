// A directory, and a browser that is driven as a loop drives it.

#pragma once

#include "browser.h"

#include "becomes_true.h"
#include "fake_rest.h"
#include "file_tree.h"
#include "temporary_directory.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <poll.h>

// Whether one of its descriptors wakes a loop now.
inline bool WakesUp(const Browser& Driven) {
    pollfd events[] = {{Driven.ReaderFd(), POLLIN, 0}, {Driven.WatchFd(), POLLIN, 0}};
    const int now = 0;
    return poll(events, 2, now) > 0;
}

// Attends to it when it wakes up, until Holds is true.
template <typename Predicate>
testing::AssertionResult Becomes(Browser& Driven, const std::string& What, Predicate Holds) {
    return BecomesTrue(What, [&] {
        if (WakesUp(Driven)) {
            Driven.Attend();
        }
        return Holds();
    });
}

inline testing::AssertionResult HasRead(Browser& Driven) {
    return Becomes(Driven, "it has been read", [&] { return !Driven.Reading().has_value(); });
}

// Until what was begun is over and can be taken.
inline testing::AssertionResult HasReadAndWaits(const Browser& Driven) {
    return BecomesTrue("what was read can be taken", [&] { return WakesUp(Driven); });
}

// "/.." for the row that leads up, "<" behind the row of the cursor.
inline std::vector<std::string> RowsOf(const Browser& Shown) {
    const BrowseList& list = Shown.List();
    std::vector<std::string> rows;
    for (std::size_t row = 0; row < list.RowCount(); ++row) {
        const ListedEntry* const entry = list.EntryAt(row);
        rows.push_back((entry ? entry->Name : "/..") + (row == list.Cursor() ? "<" : ""));
    }
    return rows;
}

inline testing::AssertionResult Shows(Browser& Driven, const std::vector<std::string>& Rows) {
    return Becomes(Driven, "it shows " + testing::PrintToString(Rows),
                   [&] { return RowsOf(Driven) == Rows; })
           << ", but it shows " << testing::PrintToString(RowsOf(Driven));
}

// After which it has nothing to do.
inline void EndRest(Browser& Resting, FakeRest& Rest) {
    Rest.End();
    ASSERT_TRUE(BecomesTrue("its rest is over", [&] { return WakesUp(Resting); }));
    Resting.Attend();
    EXPECT_EQ(Resting.Reading(), std::nullopt);
}

class BrowserFixture : public testing::Test {
protected:
    using Rows = std::vector<std::string>;

    BrowserFixture() {
        std::filesystem::create_directories(Place / "sub");
        WriteFile(Place / "a", "12345");
    }

    // Has read Place.
    void Open(std::optional<Browser>& Out) {
        Out.emplace(Place);
        ASSERT_TRUE(HasRead(*Out));
        ASSERT_EQ(RowsOf(*Out), (Rows{"/..<", "sub", "a"}));
    }

    const TemporaryDirectory Room;
    const std::filesystem::path Place = Room / "place";
};
