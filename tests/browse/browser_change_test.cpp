// What a browser does when something changes under it.

#include "browser.h"

#include "browser_fixture.h"
#include "fake_rest.h"

#include <filesystem>
#include <string>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

class ChangedBrowser : public BrowserFixture {
protected:
    void SetUp() override { ASSERT_NO_FATAL_FAILURE(Open(Shown)); }

    testing::AssertionResult GoesTo(const fs::path& Wanted) {
        return Becomes(*Shown, "it is in " + Wanted.string(),
                       [&] { return Shown->List().Place() == Wanted; });
    }

    std::optional<Browser> Shown;
};

// Root may look everywhere, so it is somebody else for a while.
class OrdinaryUser {
public:
    OrdinaryUser() : Before(geteuid()) {
        constexpr uid_t kNobody = 65534;
        if (Before == 0) {
            Become(kNobody);
        }
    }
    ~OrdinaryUser() { Become(Before); }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;

    void ChangeMode(const fs::path& Path, mode_t Mode) const {
        const uid_t user = geteuid();
        Become(Before);
        EXPECT_EQ(chmod(Path.c_str(), Mode), 0);
        Become(user);
    }

private:
    static void Become(uid_t User) { EXPECT_EQ(seteuid(User), 0); }

    const uid_t Before;
};

TEST_F(ChangedBrowser, ShowsWhatComesAndGoes) {
    WriteFile(Place / "b", "");
    EXPECT_TRUE(Shows(*Shown, {"/..<", "sub", "a", "b"}));
    fs::rename(Place / "b", Place / "c");
    EXPECT_TRUE(Shows(*Shown, {"/..<", "sub", "a", "c"}));
    fs::remove(Place / "c");
    EXPECT_TRUE(Shows(*Shown, {"/..<", "sub", "a"}));
    fs::remove(Place / "sub");
    EXPECT_TRUE(Shows(*Shown, {"/..<", "a"}));
}

TEST_F(ChangedBrowser, ShowsWhatGrows) {
    Shown->List().MoveCursorTo("a");
    WriteFile(Place / "a", "1234567");
    EXPECT_TRUE(Becomes(*Shown, "the size is the new one",
                        [&] { return Shown->List().CurrentEntry()->SizeBytes == 7; }));
}

TEST_F(ChangedBrowser, WatchesWhereItHasGone) {
    Shown->GoTo(Place / "sub");
    ASSERT_TRUE(HasRead(*Shown));
    WriteFile(Place / "sub" / "new", "");
    EXPECT_TRUE(Shows(*Shown, {"/..<", "new"}));
}

TEST_F(ChangedBrowser, WatchesNoMoreWhereItWas) {
    FakeRest rest;
    Shown->GoTo(Place / "sub");
    ASSERT_TRUE(HasRead(*Shown));
    ASSERT_NO_FATAL_FAILURE(EndRest(*Shown, rest));
    WriteFile(Place / "b", "");
    EXPECT_FALSE(WakesUp(*Shown));
}

TEST_F(ChangedBrowser, WatchesOnWhereItStays) {
    Shown->GoTo(Place / "none");
    ASSERT_TRUE(HasRead(*Shown));
    WriteFile(Place / "b", "");
    EXPECT_TRUE(Shows(*Shown, {"/..<", "sub", "a", "b"}));
    Shown->GoTo(Place / "sub");
    Shown->StopReading();
    WriteFile(Place / "c", "");
    EXPECT_TRUE(Shows(*Shown, {"/..<", "sub", "a", "b", "c"}));
}

TEST_F(ChangedBrowser, SleepsWhenNothingChanges) {
    FakeRest rest;
    Shown->ReadAgain();
    ASSERT_TRUE(HasRead(*Shown));
    EXPECT_FALSE(WakesUp(*Shown));
    ASSERT_NO_FATAL_FAILURE(EndRest(*Shown, rest));
    EXPECT_FALSE(WakesUp(*Shown));
}

TEST_F(ChangedBrowser, ReadsManyChangesTogether) {
    FakeRest rest;
    WriteFile(Place / "b0", "");
    ASSERT_TRUE(Becomes(*Shown, "it begins", [&] { return Shown->Reading().has_value(); }));
    ASSERT_TRUE(HasRead(*Shown));
    for (int i = 1; i < 200; ++i) {
        WriteFile(Place / ("b" + std::to_string(i)), "");
        ASSERT_FALSE(WakesUp(*Shown)) << i;
        Shown->Attend();
        ASSERT_EQ(Shown->Reading(), std::nullopt) << i;
    }
    rest.End();
    EXPECT_TRUE(Becomes(*Shown, "all are there", [&] { return Shown->List().RowCount() == 203; }));
    EXPECT_EQ(rest.Count(), 2);
    EXPECT_EQ(rest.Milliseconds(), 250);
}

TEST_F(ChangedBrowser, ReadsAgainWhatChangesWhileItReads) {
    Shown->ReadAgain();
    ASSERT_TRUE(HasReadAndWaits(*Shown));
    WriteFile(Place / "late", "");
    EXPECT_TRUE(Shows(*Shown, {"/..<", "sub", "a", "late"}));
}

TEST_F(ChangedBrowser, IsNotWokenByChangesWhileItReads) {
    Shown->ReadAgain();
    WriteFile(Place / "b", "");
    EXPECT_EQ(Shown->WatchFd(), -1);
}

TEST_F(ChangedBrowser, GoesUpWhenItsDirectoryIsRemoved) {
    const fs::path sub = Place / "sub";
    Shown->GoTo(sub);
    ASSERT_TRUE(HasRead(*Shown));
    fs::remove(sub);
    EXPECT_TRUE(GoesTo(Place));
    EXPECT_EQ(RowsOf(*Shown), (Rows{"/..<", "a"}));
    EXPECT_EQ(Shown->Message(), "'" + sub.string() + "' is no longer there");
    WriteFile(Place / "b", "");
    EXPECT_TRUE(Shows(*Shown, {"/..<", "a", "b"}));
    EXPECT_EQ(Shown->Message(), "'" + sub.string() + "' is no longer there");
}

TEST_F(ChangedBrowser, GoesUpToTheNearestThatIsThere) {
    const fs::path deep = Place / "sub" / "one" / "two";
    fs::create_directories(deep);
    Shown->GoTo(deep);
    ASSERT_TRUE(HasRead(*Shown));
    fs::remove_all(Place / "sub");
    EXPECT_TRUE(GoesTo(Place));
    EXPECT_EQ(Shown->Message(), "'" + deep.string() + "' is no longer there");
}

TEST_F(ChangedBrowser, GoesUpWhenItsDirectoryGetsAnotherName) {
    Shown->GoTo(Place / "sub");
    ASSERT_TRUE(HasRead(*Shown));
    fs::rename(Place / "sub", Place / "other");
    EXPECT_TRUE(GoesTo(Place));
    EXPECT_EQ(RowsOf(*Shown), (Rows{"/..<", "other", "a"}));
}

TEST_F(ChangedBrowser, GoesUpWhenAFileTakesItsPlace) {
    Shown->GoTo(Place / "sub");
    ASSERT_TRUE(HasRead(*Shown));
    fs::remove(Place / "sub");
    WriteFile(Place / "sub", "");
    EXPECT_TRUE(GoesTo(Place));
    EXPECT_EQ(RowsOf(*Shown), (Rows{"/..<", "a", "sub"}));
}

TEST_F(ChangedBrowser, GoesUpFromAStartThatIsNotThere) {
    Browser browser(Place / "none" / "deep");
    EXPECT_TRUE(
        Becomes(browser, "it has gone up", [&] { return browser.List().Place() == Place; }));
    EXPECT_EQ(browser.Message(), "'" + (Place / "none" / "deep").string() + "' is no longer there");
}

TEST_F(ChangedBrowser, StaysInADirectoryThatIsMadeAnew) {
    fs::remove_all(Place);
    fs::create_directory(Place);
    EXPECT_TRUE(Shows(*Shown, {"/..<"}));
    WriteFile(Place / "new", "");
    EXPECT_TRUE(Shows(*Shown, {"/..<", "new"}));
    EXPECT_EQ(Shown->Message(), "");
}

TEST_F(ChangedBrowser, StaysInADirectoryThatIsMadeAnewAfterItWasMissed) {
    fs::remove_all(Place);
    ASSERT_TRUE(Becomes(*Shown, "it begins", [&] { return Shown->Reading() == Place; }));
    ASSERT_TRUE(HasReadAndWaits(*Shown));
    fs::create_directory(Place);
    // Its answer may come in pieces.
    ASSERT_TRUE(BecomesTrue("it looks above", [&] {
        Shown->Attend();
        return Shown->Reading() == Room.Path();
    }));
    EXPECT_TRUE(Shows(*Shown, {"/..<"}));
    EXPECT_EQ(Shown->List().Place(), Place);
    EXPECT_EQ(Shown->Message(), "");
    WriteFile(Place / "new", "");
    EXPECT_TRUE(Shows(*Shown, {"/..<", "new"}));
}

TEST_F(ChangedBrowser, KeepsTheListOfADirectoryThatCannotBeRead) {
    const OrdinaryUser user;
    user.ChangeMode(Place, 0);
    const std::string why = "cannot read '" + Place.string() + "': Permission denied";
    EXPECT_TRUE(Becomes(*Shown, "it tells", [&] { return Shown->Message() == why; }));
    EXPECT_TRUE(
        Becomes(*Shown, "it sleeps", [&] { return !Shown->Reading() && !WakesUp(*Shown); }));
    EXPECT_EQ(RowsOf(*Shown), (Rows{"/..<", "sub", "a"}));
    user.ChangeMode(Place, 0755);
    EXPECT_TRUE(Becomes(*Shown, "it reads again", [&] { return Shown->Message().empty(); }));
}

TEST_F(ChangedBrowser, IsAnEmptyPlaceWhereItsStartCannotBeRead) {
    const OrdinaryUser user;
    user.ChangeMode(Place, 0);
    Browser browser(Place);
    const std::string why = "cannot read '" + Place.string() + "': Permission denied";
    EXPECT_TRUE(Becomes(browser, "it tells", [&] { return browser.Message() == why; }));
    EXPECT_TRUE(
        Becomes(browser, "it sleeps", [&] { return !browser.Reading() && !WakesUp(browser); }));
    EXPECT_EQ(browser.List().Place(), Place);
    EXPECT_EQ(RowsOf(browser), (Rows{"/..<"}));
    user.ChangeMode(Place, 0755);
    EXPECT_TRUE(Shows(browser, {"/..<", "sub", "a"}));
}

} // namespace
