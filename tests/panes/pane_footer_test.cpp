// What panes tell below their lists.

#include "pane_footer.h"

#include <gtest/gtest.h>

#include "sample_places.h"

namespace {

class PaneFooters : public PaneTest {
protected:
    // The lines, each with a newline.
    std::string Footer(const PaneState& State, int Columns) const {
        std::string text;
        for (const FooterLine& line : PaneFooter(List, State, Columns)) {
            EXPECT_LE(DisplayWidth(line.CleanText), Columns);
            text += line.CleanText + "\n";
        }
        return text;
    }
    std::string FooterOf(const std::string& Name, int Columns) {
        EXPECT_TRUE(List.MoveCursorTo(Name));
        return Footer({}, Columns);
    }

    BrowseList List = Music();
};

using MarkedTexts = PaneFooters;

} // namespace

TEST_F(PaneFooters, TellAsMuchOfAnEntryAsLeavesItsNameWhole) {
    EXPECT_EQ(FooterOf("cover.jpg", 53), "cover.jpg  47.1 KB (48230 bytes)  2024-03-07 14:05:09\n");
    EXPECT_EQ(FooterOf("cover.jpg", 52),
              "cover.jpg" + std::string(18, ' ') + "47.1 KB  2024-03-07 14:05\n");
    EXPECT_EQ(FooterOf("cover.jpg", 35), "cover.jpg          2024-03-07 14:05\n");
    EXPECT_EQ(FooterOf("cover.jpg", 26), "cover.jpg                 \n");
}

TEST_F(PaneFooters, ShortenANameThatDoesNotFitAlone) {
    EXPECT_EQ(FooterOf("long name that does not fit into any column.flac", 36),
              "long name that d...o any column.flac\n");
}

TEST_F(PaneFooters, ShowSignsAndNoSizeOfWhatHasNone) {
    EXPECT_EQ(FooterOf("Live", 36), "/Live            2024-03-07 14:05:09\n");
    EXPECT_EQ(FooterOf("Elsewhere", 30), "~Elsewhere    2024-03-07 14:05\n");
    EXPECT_EQ(FooterOf("pipe", 36), "=pipe            2024-03-07 14:05:09\n");
    EXPECT_EQ(FooterOf("lost link", 36), "!lost link       2024-03-07 14:05:09\n");
    EXPECT_EQ(FooterOf("link", 36), "@link         12 B  2024-03-07 14:05\n");
}

TEST_F(PaneFooters, ShowNamesClean) {
    EXPECT_EQ(FooterOf("new\nline.txt", 12), "new?line.txt\n");
}

TEST_F(PaneFooters, ShowSizesOfTracks) {
    List = Disc();
    EXPECT_EQ(FooterOf("Track 01.wav", 40), "Track 01.wav    38.1 MB (39951404 bytes)\n");
}

TEST_F(PaneFooters, ShowWhatLeadsUp) {
    EXPECT_EQ(Footer({}, 36), "/..\n");
}

TEST_F(PaneFooters, HaveALineWhereThereIsNothing) {
    List = {};
    EXPECT_EQ(Footer({}, 36), "\n");
}

TEST_F(PaneFooters, SayWhatIsReadAndHowToStopIt) {
    EXPECT_EQ(Footer({.Reading = "/media/usb0"}, 36), "Reading /media/usb0 ...  Esc: stop\n");
    EXPECT_EQ(Footer({.Reading = "/media/usb0/Back\nup"}, 36),
              "Reading /medi...ck?up ...  Esc: stop\n");
    EXPECT_EQ(Footer({.Reading = "cdda:/dev/sr0"}, 60),
              "Reading Audio CD in /dev/sr0 ...  Esc: stop\n");
}

TEST_F(PaneFooters, SayWhatWentWrongAsASentence) {
    const PaneState failed{.Message = "cannot read /new\nline: Permission denied"};
    EXPECT_EQ(Footer(failed, 60), "Cannot read /new?line: Permission denied.\n");
    EXPECT_EQ(Footer(failed, 26), "Cannot read /new?line:\nPermission denied.\n");
    EXPECT_EQ(PaneFooter(List, failed, 60).front().Role, CellRole::Warning);
}

TEST_F(PaneFooters, LeaveRoomForTheListWhateverWentWrong) {
    const std::string longPath(4000, 'x');
    EXPECT_EQ(
        Footer({.Message = "cannot read /" + longPath + ": Permission denied"}, 26),
        "Cannot read\n/xxxxxxxxxxxxxxxxxxxxxxxx.\n..xxxxxxxxxxxxxxxxxx:\nPermission denied.\n");
}

TEST_F(PaneFooters, ShowWhatIsTypedBeforeAllElse) {
    EXPECT_EQ(Footer({.Reading = "/x", .Message = "failed", .Search = "l\xFF"}, 36),
              "Find: l\uFFFD\n");
    EXPECT_EQ(Footer({.Reading = "/x", .Message = "failed"}, 36), "Reading /x ...  Esc: stop\n");
}

TEST_F(MarkedTexts, TellFilesFromDirectories) {
    EXPECT_EQ(MarkedText({.Entries = 2, .Directories = 1, .Bytes = 48230}, 40),
              "Marked 2: 47.1 KB and 1 directory");
    EXPECT_EQ(MarkedText({.Entries = 5, .Directories = 2, .Bytes = 0}, 40),
              "Marked 5: 0 B and 2 directories");
    EXPECT_EQ(MarkedText({.Entries = 2, .Directories = 0, .Bytes = 7}, 40), "Marked 2: 7 B");
    EXPECT_EQ(MarkedText({.Entries = 2, .Directories = 2, .Bytes = 0}, 40), "Marked 2 directories");
    EXPECT_EQ(MarkedText({.Entries = 1, .Directories = 1, .Bytes = 0}, 40), "Marked 1 directory");
}

TEST_F(MarkedTexts, LeaveTheDirectoriesOutWhereThereIsNoRoom) {
    EXPECT_EQ(MarkedText({.Entries = 2, .Directories = 1, .Bytes = 48230}, 32),
              "Marked 2: 47.1 KB");
}

TEST_F(MarkedTexts, AreEmptyForNone) {
    EXPECT_EQ(MarkedText({}, 40), "");
}
