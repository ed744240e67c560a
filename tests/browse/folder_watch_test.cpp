// Noticing changes in real directories.

#include "folder_watch.h"

#include "mounts.h"
#include "no_descriptors_left.h"
#include "temporary_directory.h"

#include <fcntl.h>
#include <fstream>
#include <optional>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

namespace {

class FolderWatchTest : public testing::Test {
protected:
    FolderWatchTest() {
        std::filesystem::create_directory(Folder);
        std::filesystem::create_directory(Elsewhere);
        std::ofstream(Folder / "file") << "first";
        WatchOnly(Watch.Fd(), Folder);
    }

    bool IsReadable() const {
        pollfd event{Watch.Fd(), POLLIN, 0};
        const int now = 0;
        return poll(&event, 1, now) == 1;
    }

    const TemporaryDirectory Room;
    const std::filesystem::path Folder = Room / "folder";
    const std::filesystem::path Elsewhere = Room / "elsewhere";
    FolderWatch Watch;
};

TEST_F(FolderWatchTest, NoticesNothingWhereNothingHappens) {
    EXPECT_FALSE(IsReadable());
    EXPECT_FALSE(Watch.TakeChange());
}

TEST_F(FolderWatchTest, IsNotOpenInProgramsThatAreStarted) {
    EXPECT_NE(fcntl(Watch.Fd(), F_GETFD) & FD_CLOEXEC, 0);
}

TEST_F(FolderWatchTest, NoticesAnEntryThatComes) {
    std::filesystem::create_directory(Folder / "new");
    EXPECT_TRUE(IsReadable());
    EXPECT_TRUE(Watch.TakeChange());
    EXPECT_FALSE(IsReadable());
    EXPECT_FALSE(Watch.TakeChange());
}

TEST_F(FolderWatchTest, NoticesAnEntryThatGoes) {
    std::filesystem::remove(Folder / "file");
    EXPECT_TRUE(Watch.TakeChange());
}

TEST_F(FolderWatchTest, NoticesAnEntryThatIsMovedInOrOut) {
    std::filesystem::rename(Folder / "file", Elsewhere / "file");
    EXPECT_TRUE(Watch.TakeChange());
    std::filesystem::rename(Elsewhere / "file", Folder / "file");
    EXPECT_TRUE(Watch.TakeChange());
}

TEST_F(FolderWatchTest, NoticesAModeAndATime) {
    chmod((Folder / "file").c_str(), 0700);
    EXPECT_TRUE(Watch.TakeChange());
    utimensat(AT_FDCWD, (Folder / "file").c_str(), nullptr, 0);
    EXPECT_TRUE(Watch.TakeChange());
}

TEST_F(FolderWatchTest, NoticesAFileThatGrowsWhileItIsOpen) {
    std::ofstream file(Folder / "file", std::ios::app);
    EXPECT_FALSE(Watch.TakeChange());
    file << "more" << std::flush;
    EXPECT_TRUE(Watch.TakeChange());
}

TEST_F(FolderWatchTest, NoticesThatTheDirectoryGoes) {
    std::filesystem::remove(Folder / "file");
    EXPECT_TRUE(Watch.TakeChange());
    std::filesystem::remove(Folder);
    EXPECT_TRUE(Watch.TakeChange());
}

TEST_F(FolderWatchTest, NoticesThatTheDirectoryIsMoved) {
    std::filesystem::rename(Folder, Room / "moved");
    EXPECT_TRUE(Watch.TakeChange());
}

TEST_F(FolderWatchTest, NoticesThatTheFileSystemIsUnmounted) {
    EnterPrivateMountNamespace();
    {
        const ScopedMount mount = MountTmpfs(Folder, "size=1m");
        WatchOnly(Watch.Fd(), Folder);
        EXPECT_FALSE(Watch.TakeChange());
    }
    EXPECT_TRUE(Watch.TakeChange());
}

TEST_F(FolderWatchTest, NoticesNothingThatIsOnlyRead) {
    std::string text;
    std::ifstream(Folder / "file") >> text;
    EXPECT_FALSE(std::filesystem::is_empty(Folder));
    EXPECT_EQ(text, "first");
    EXPECT_FALSE(Watch.TakeChange());
}

TEST_F(FolderWatchTest, NoticesNothingMoreInWhatWasWatchedBefore) {
    WatchOnly(Watch.Fd(), Elsewhere);
    EXPECT_FALSE(Watch.TakeChange());
    std::filesystem::remove(Folder / "file");
    EXPECT_FALSE(Watch.TakeChange());
    std::filesystem::create_directory(Elsewhere / "new");
    EXPECT_TRUE(Watch.TakeChange());
}

TEST_F(FolderWatchTest, ForgetsAllThatWasWatchedBeforeHoweverMuchItWas) {
    std::vector<std::filesystem::path> places;
    constexpr int kPlaces = 20;
    for (int i = 0; i < kPlaces; ++i) {
        places.push_back(Room / std::to_string(i));
        std::filesystem::create_directory(places.back());
        inotify_add_watch(Watch.Fd(), places.back().c_str(), IN_CREATE);
    }
    WatchOnly(Watch.Fd(), Elsewhere);
    EXPECT_FALSE(Watch.TakeChange());
    for (const std::filesystem::path& place : places) {
        std::filesystem::create_directory(place / "new");
    }
    EXPECT_FALSE(Watch.TakeChange());
}

TEST_F(FolderWatchTest, ForgetsWhatWasWatchedBeforeWhereTheNewPlaceCannotBe) {
    WatchOnly(Watch.Fd(), Room / "nowhere");
    std::filesystem::remove(Folder / "file");
    EXPECT_FALSE(Watch.TakeChange());
}

TEST_F(FolderWatchTest, WatchesTheSamePlaceAgain) {
    WatchOnly(Watch.Fd(), Folder);
    EXPECT_FALSE(Watch.TakeChange());
    std::filesystem::remove(Folder / "file");
    EXPECT_TRUE(Watch.TakeChange());
}

TEST_F(FolderWatchTest, TakesMoreThanTheKernelKeeps) {
    const int first = open((Folder / "file").c_str(), O_WRONLY);
    const int second = open((Folder / "other").c_str(), O_WRONLY | O_CREAT, 0600);
    constexpr int kWrites = 20000;
    for (int i = 0; i < kWrites; ++i) {
        ASSERT_EQ(pwrite(i % 2 == 0 ? first : second, "x", 1, 0), 1);
    }
    EXPECT_TRUE(Watch.TakeChange());
    EXPECT_FALSE(IsReadable());
    close(first);
    close(second);
}

TEST_F(FolderWatchTest, NoticesNothingWhereThereIsNoWatch) {
    std::optional<FolderWatch> made;
    {
        const NoDescriptorsLeft limit;
        made.emplace();
    }
    FolderWatch& watch = *made;
    EXPECT_EQ(watch.Fd(), -1);
    WatchOnly(watch.Fd(), Folder);
    std::filesystem::remove(Folder / "file");
    EXPECT_FALSE(watch.TakeChange());
}

} // namespace
