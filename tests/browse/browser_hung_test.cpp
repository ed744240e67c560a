// A browser and a file system that does not answer. Needs root for the mount.

#include "browser.h"

#include "browser_fixture.h"
#include "hanging_file_system.h"
#include "own_mount_namespace.h"

#include <filesystem>
#include <optional>

#include <gtest/gtest.h>

namespace {

class HungBrowser : public BrowserFixture {
protected:
    HungBrowser() { Hung.emplace(Place / "sub"); }

    const OwnMountNamespace Namespace;
    std::optional<HangingFileSystem> Hung;
};

TEST_F(HungBrowser, LeavesWhatDoesNotAnswer) {
    Browser browser(Place);
    browser.GoTo(Place);
    ASSERT_TRUE(HasRead(browser));
    browser.GoTo(Place / "sub");
    ASSERT_TRUE(Becomes(browser, "it hangs", [&] { return Hung->IsHolding(); }));
    browser.Attend();
    EXPECT_EQ(browser.Reading(), Place / "sub");
    browser.StopReading();
    EXPECT_EQ(browser.Reading(), std::nullopt);
    EXPECT_EQ(RowsOf(browser), (Rows{"/..<", "sub", "a"}));
    WriteFile(Place / "b", "");
    EXPECT_TRUE(Shows(browser, {"/..<", "sub", "a", "b"}));
}

TEST_F(HungBrowser, GoesUpFromAStartThatDoesNotAnswer) {
    Browser browser(Place / "sub");
    ASSERT_TRUE(Becomes(browser, "it hangs", [&] { return Hung->IsHolding(); }));
    browser.GoUp();
    EXPECT_TRUE(Shows(browser, {"/..", "sub<", "a"}));
}

} // namespace
