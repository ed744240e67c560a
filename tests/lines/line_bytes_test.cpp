// The bytes between one line and the next, and the columns that they leave alone.

#include "line_bytes.h"

#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "plain_screen.h"
#include "screen_text.h"

namespace {

class LineChange : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(EnsureUtf8Locale());
        setenv("TERM", "xterm", 1);
        unsetenv("NO_COLOR");
    }

    static std::string Change(const std::string& Shown, const std::string& Wanted) {
        return ChangeBytes({Shown}, {Wanted});
    }
    static std::string Blocks(int Count) {
        std::string blocks;
        for (int i = 0; i < Count; ++i) {
            blocks += "█";
        }
        return blocks;
    }
    static ScreenLine Bar(const std::string& Done, const std::string& Rest) {
        return {Done + Rest, {{0, Done.size(), TextStyle::Bar}}};
    }
};

} // namespace

TEST_F(LineChange, IsNothingForTheSameLine) {
    EXPECT_EQ(Change("same", "same"), "");
    EXPECT_EQ(Change("日本", "日本"), "日本");
}

TEST_F(LineChange, GoesOverWhatStands) {
    EXPECT_EQ(Change("Overall 10.0 MB | Items 17", "Overall 10.1 MB | Items 18"),
              "\x1B[11C1\x1B[13C8");
}

TEST_F(LineChange, WritesAShortPieceAgainInsteadOfGoingOverIt) {
    EXPECT_EQ(Change("1 and 2", "3 and 4"), "3\x1B[5C4");
    EXPECT_EQ(Change("1and 2", "3and 4"), "3and 4");
}

TEST_F(LineChange, WritesWhatIsNewAtTheEnd) {
    EXPECT_EQ(Change("12345", "1234567"), "\x1B[5C67");
    EXPECT_EQ(Change("", "new"), "new");
}

TEST_F(LineChange, ErasesWhatIsOldAtTheEnd) {
    EXPECT_EQ(Change("1234567", "12345"), "\x1B[5C\x1B[K");
    EXPECT_EQ(Change("old", ""), "\x1B[K");
}

TEST_F(LineChange, MovesABarByItsNewCells) {
    EXPECT_EQ(ChangeBytes(Bar(Blocks(50) + "▍", "  ] 50%"), Bar(Blocks(51) + "▏", " ] 51%")),
              "\x1B[50C\x1B[36m█▏\x1B[m ] 51");
    EXPECT_EQ(ChangeBytes(Bar(Blocks(52), "      ]"), Bar(Blocks(50), "        ]")), "\x1B[50C  ");
}

TEST_F(LineChange, IsWrittenAgainWhereOnlyTheStyleChanges) {
    EXPECT_EQ(ChangeBytes({"careful"}, {"careful", {{0, 4, TextStyle::Key}}}), "\x1B[1mcare\x1B[m");
}

TEST_F(LineChange, EndsItsStyleBeforeItErases) {
    EXPECT_EQ(ChangeBytes({"careless"}, {"CARE", {{0, 4, TextStyle::Warning}}}),
              "\x1B[1;31mCARE\x1B[m\x1B[K");
}

// They may take other columns than they are said to.
TEST_F(LineChange, WritesAllFromTheFirstUncertainCharacterOn) {
    EXPECT_EQ(Change("/music/日/1.flac", "/music/日/2.flac"), "\x1B[7C日/2.flac");
    EXPECT_EQ(Change("/music/日/1.flac", "/music/ab/1.flac"), "\x1B[7Cab/1.flac");
    EXPECT_EQ(Change("/music/ab/1.flac", "/music/é/1.flac"), "\x1B[7Cé/1.flac\x1B[K");
}

TEST_F(LineChange, PutsAMarkOnlyOnACharacterThatItWrites) {
    EXPECT_EQ(Change("12345e\u0301x", "12345e\u0300x"), "\x1B[5Ce\u0300x");
    EXPECT_EQ(Change("12345ex", "12345e\u0301x"), "\x1B[5Ce\u0301x");
}

TEST_F(LineChange, LeavesTheLineThatIsWanted) {
    const std::string texts[] = {"",
                                 "a",
                                 "Overall 9.9 MB / 10.0 MB | Items 9 / 10",
                                 "Overall 10.0 MB / 10.0 MB | Items 10 / 10",
                                 "[####......] 40%",
                                 "[#.........] 9%",
                                 "Overall"};
    for (const std::string& shown : texts) {
        for (const std::string& wanted : texts) {
            PlainScreen screen(80, 2);
            screen.Write(LineBytes({shown}) + "\r" + Change(shown, wanted) + "\n");
            EXPECT_EQ(screen.Text(), wanted.empty() ? std::vector<std::string>()
                                                    : std::vector<std::string>{wanted})
                << shown;
        }
    }
}
