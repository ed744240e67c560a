// A browser that goes from place to place.

#include "browser.h"

#include "browser_fixture.h"
#include "fake_drive.h"
#include "fake_rest.h"
#include "link_names.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

std::vector<std::string> WrappedFindOpticalDrives() WRAPPED(FindOpticalDrives);

namespace {

std::vector<std::string> gDrives;

constexpr const char* kFakeDisc = "cdda:/dev/fake-cd";

class BrowserTest : public BrowserFixture {
protected:
    void SetUp() override { ASSERT_NO_FATAL_FAILURE(Open(Shown)); }

    std::optional<Browser> Shown;
};

TEST_F(BrowserTest, BeginsToReadWhereItStarts) {
    Browser browser(Place);
    EXPECT_EQ(browser.Reading(), Place);
    EXPECT_EQ(browser.List().Place(), Place);
    ASSERT_TRUE(HasRead(browser));
    EXPECT_EQ(RowsOf(browser), (Rows{"/..<", "sub", "a"}));
    EXPECT_TRUE(browser.List().FreeBytes().has_value());
    EXPECT_EQ(browser.Message(), "");
}

TEST_F(BrowserTest, KnowsAPlaceWithoutTheSlashBehindIt) {
    Browser browser(Place.native() + "//");
    ASSERT_TRUE(HasRead(browser));
    EXPECT_EQ(browser.List().Place().native(), Place.native());
    browser.GoTo("/");
    ASSERT_TRUE(HasRead(browser));
    EXPECT_EQ(browser.List().Place().native(), "/");
    browser.GoTo((Place / "sub").native() + "/");
    ASSERT_TRUE(HasRead(browser));
    EXPECT_EQ(browser.List().Place().native(), (Place / "sub").native());
}

TEST_F(BrowserTest, KeepsTheListUntilTheNewPlaceHasBeenRead) {
    Shown->GoTo(Place / "sub");
    EXPECT_EQ(Shown->Reading(), Place / "sub");
    EXPECT_EQ(Shown->List().Place(), Place);
    EXPECT_EQ(RowsOf(*Shown), (Rows{"/..<", "sub", "a"}));
    ASSERT_TRUE(HasRead(*Shown));
    EXPECT_EQ(Shown->List().Place(), Place / "sub");
    EXPECT_EQ(RowsOf(*Shown), (Rows{"/..<"}));
}

TEST_F(BrowserTest, PutsTheCursorWhereItIsWanted) {
    Browser browser("/");
    browser.GoTo(Place, "a");
    ASSERT_TRUE(HasRead(browser));
    EXPECT_EQ(RowsOf(browser), (Rows{"/..", "sub", "a<"}));
    browser.GoTo(Place, "sub");
    ASSERT_TRUE(HasRead(browser));
    EXPECT_EQ(RowsOf(browser), (Rows{"/..", "sub<", "a"}));
}

TEST_F(BrowserTest, PutsTheCursorThereOnce) {
    Shown->GoTo(Place, "a");
    ASSERT_TRUE(HasRead(*Shown));
    Shown->List().MoveCursorTo("sub");
    Shown->ReadAgain();
    ASSERT_TRUE(HasRead(*Shown));
    EXPECT_EQ(RowsOf(*Shown), (Rows{"/..", "sub<", "a"}));
}

TEST_F(BrowserTest, StaysWhereItIsWhenAPlaceIsNotThere) {
    Shown->List().MoveCursorTo("a");
    Shown->GoTo(Place / "none" / "deep", "x");
    ASSERT_TRUE(HasRead(*Shown));
    EXPECT_EQ(Shown->List().Place(), Place);
    EXPECT_EQ(RowsOf(*Shown), (Rows{"/..", "sub", "a<"}));
    EXPECT_EQ(Shown->Message(), "cannot read '" + (Place / "none" / "deep").string() +
                                    "': No such file or directory");
}

TEST_F(BrowserTest, StaysWhereItIsWhenAPlaceIsNoDirectory) {
    Shown->GoTo(Place / "a");
    ASSERT_TRUE(HasRead(*Shown));
    EXPECT_EQ(Shown->List().Place(), Place);
    EXPECT_EQ(Shown->Message(), "'" + (Place / "a").string() + "' is not a directory");
}

TEST_F(BrowserTest, ForgetsWhatWentWrongWhenSomethingElseIsWanted) {
    Shown->GoTo(Place / "none");
    ASSERT_TRUE(HasRead(*Shown));
    ASSERT_NE(Shown->Message(), "");
    Shown->GoTo(Place / "sub");
    EXPECT_EQ(Shown->Message(), "");
    Shown->GoTo(Place / "none");
    ASSERT_TRUE(HasRead(*Shown));
    ASSERT_NE(Shown->Message(), "");
    Shown->ReadAgain();
    EXPECT_EQ(Shown->Message(), "");
}

TEST_F(BrowserTest, GoesUpWithTheCursorOnWhatItLeft) {
    Shown->GoTo(Place / "sub");
    ASSERT_TRUE(HasRead(*Shown));
    Shown->GoUp();
    ASSERT_TRUE(HasRead(*Shown));
    EXPECT_EQ(Shown->List().Place(), Place);
    EXPECT_EQ(RowsOf(*Shown), (Rows{"/..", "sub<", "a"}));
}

TEST_F(BrowserTest, GoesNoFurtherUpThanTheRoot) {
    Shown->GoTo("/");
    ASSERT_TRUE(HasRead(*Shown));
    Shown->GoUp();
    EXPECT_EQ(Shown->Reading(), std::nullopt);
    EXPECT_EQ(Shown->List().Place(), "/");
}

TEST_F(BrowserTest, EntersTheDirectoryUnderTheCursor) {
    std::filesystem::create_directory_symlink("sub", Place / "link");
    Shown->ReadAgain();
    ASSERT_TRUE(HasRead(*Shown));
    Shown->List().MoveCursorTo("link");
    EXPECT_TRUE(Shown->Enter());
    ASSERT_TRUE(HasRead(*Shown));
    EXPECT_EQ(Shown->List().Place(), Place / "link");
}

TEST_F(BrowserTest, EntersThePlaceAboveOnItsRow) {
    EXPECT_TRUE(Shown->Enter());
    ASSERT_TRUE(HasRead(*Shown));
    EXPECT_EQ(Shown->List().Place(), Room.Path());
    EXPECT_EQ(RowsOf(*Shown), (Rows{"/..", "place<"}));
}

TEST_F(BrowserTest, EntersNothingElse) {
    MakeFifo(Place / "fifo");
    Shown->ReadAgain();
    ASSERT_TRUE(HasRead(*Shown));
    for (const char* name : {"a", "fifo"}) {
        ASSERT_TRUE(Shown->List().MoveCursorTo(std::string_view(name)));
        EXPECT_FALSE(Shown->Enter()) << name;
        EXPECT_EQ(Shown->Reading(), std::nullopt) << name;
    }
}

TEST_F(BrowserTest, EntersTheDiscInADrive) {
    MakeFifo(Place / "drive");
    gDrives = {(Place / "drive").string()};
    Shown->ReadAgain();
    ASSERT_TRUE(HasRead(*Shown));
    Shown->List().MoveCursorTo("drive");
    EXPECT_TRUE(Shown->Enter());
    EXPECT_EQ(Shown->Reading(), "cdda:" + (Place / "drive").string());
    gDrives.clear();
}

TEST_F(BrowserTest, ListsTheTracksOfADisc) {
    const ScopedDrive drive(AudioDisc({150, 300}, 450));
    Shown->GoTo(kFakeDisc);
    ASSERT_TRUE(HasRead(*Shown));
    EXPECT_EQ(RowsOf(*Shown), (Rows{"/..<", "Track 01.wav", "Track 02.wav"}));
    Shown->GoUp();
    EXPECT_EQ(Shown->Reading(), "/dev");
}

TEST_F(BrowserTest, KeepsTheTracksOfADiscThatHasGone) {
    ScopedDrive drive(AudioDisc({150}, 300));
    Shown->GoTo(kFakeDisc);
    ASSERT_TRUE(HasRead(*Shown));
    drive.Disc().bPresent = false;
    Shown->ReadAgain();
    ASSERT_TRUE(HasRead(*Shown));
    EXPECT_EQ(RowsOf(*Shown), (Rows{"/..<", "Track 01.wav"}));
    EXPECT_NE(Shown->Message(), "");
    EXPECT_EQ(Shown->List().Place(), kFakeDisc);
}

TEST_F(BrowserTest, ReadsOnceMoreWhatIsBeingRead) {
    FakeRest rest;
    Shown->ReadAgain();
    ASSERT_EQ(Shown->Reading(), Place);
    Shown->ReadAgain();
    ASSERT_TRUE(HasRead(*Shown));
    EXPECT_EQ(rest.Count(), 1);
    rest.End();
    ASSERT_TRUE(Becomes(*Shown, "it reads again", [&] { return Shown->Reading() == Place; }));
    ASSERT_TRUE(HasRead(*Shown));
    EXPECT_EQ(rest.Count(), 2);
    ASSERT_NO_FATAL_FAILURE(EndRest(*Shown, rest));
}

TEST_F(BrowserTest, GoesOnToAnotherPlaceWhenItIsToReadAgain) {
    FakeRest rest;
    Shown->GoTo(Place / "sub");
    Shown->ReadAgain();
    EXPECT_EQ(Shown->Reading(), Place / "sub");
    ASSERT_TRUE(HasRead(*Shown));
    EXPECT_EQ(Shown->List().Place(), Place / "sub");
    ASSERT_NO_FATAL_FAILURE(EndRest(*Shown, rest));
}

TEST_F(BrowserTest, ReadsTheListAgainWhenItGoesNowhereInstead) {
    WriteFile(Place / "b", "");
    ASSERT_TRUE(Becomes(*Shown, "it reads again", [&] { return Shown->Reading() == Place; }));
    Shown->GoTo(Place / "none");
    EXPECT_TRUE(Shows(*Shown, {"/..<", "sub", "a", "b"}));
    EXPECT_EQ(Shown->Message(),
              "cannot read '" + (Place / "none").string() + "': No such file or directory");
}

TEST_F(BrowserTest, StopsReading) {
    FakeRest rest;
    Shown->GoTo(Place / "sub");
    Shown->ReadAgain();
    Shown->StopReading();
    EXPECT_EQ(Shown->Reading(), std::nullopt);
    EXPECT_EQ(Shown->ReaderFd(), -1);
    Shown->Attend();
    EXPECT_EQ(Shown->Reading(), std::nullopt);
    EXPECT_EQ(Shown->List().Place(), Place);
    EXPECT_EQ(RowsOf(*Shown), (Rows{"/..<", "sub", "a"}));
}

} // namespace

std::vector<std::string> WrappedFindOpticalDrives() {
    return gDrives;
}
