// Reading real directories. Some need root, to be somebody else or to mount.

#include "listing_reader.h"

#include "child_processes.h"
#include "file_tree.h"
#include "folder_watch.h"
#include "mounts.h"
#include "no_processes_left.h"
#include "open_descriptors.h"
#include "result_of.h"
#include "temporary_directory.h"

#include <algorithm>
#include <fcntl.h>
#include <functional>
#include <map>
#include <string>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <gtest/gtest.h>

// The names that the linker gives to what replaces statx and to the real one.
int RealStatx(int Directory, const char* Name, int Flags, unsigned int Mask,
              struct statx* Out) asm("__real_statx");
int WrappedStatx(int Directory, const char* Name, int Flags, unsigned int Mask,
                 struct statx* Out) asm("__wrap_statx");

namespace {

// In the process that reads, before each status that it asks for.
std::function<void(const std::string& Name)> gBeforeStatus;

namespace fs = std::filesystem;
using Kind = ListedEntry::Kind;

class ListingReaderTest : public testing::Test {
protected:
    static Listing Read(const fs::path& Place) {
        ListingReader reader(Place);
        return ResultOf(reader);
    }
    static std::map<std::string, ListedEntry> EntriesOf(const fs::path& Place) {
        const Listing listing = Read(Place);
        EXPECT_EQ(listing.Failure, "");
        std::map<std::string, ListedEntry> entries;
        for (const ListedEntry& entry : listing.Entries) {
            EXPECT_TRUE(entries.emplace(entry.Name, entry).second) << entry.Name;
        }
        return entries;
    }

    const TemporaryDirectory Room;
    const fs::path Folder = Room.Path();
};

TEST_F(ListingReaderTest, TellsWhatAFileIs) {
    WriteFile(Folder / "file", "12345");
    SetModifiedTime(Folder / "file", 1'700'000'000, 999'999'999);
    chmod((Folder / "file").c_str(), 0600);
    const ListedEntry file = EntriesOf(Folder)["file"];
    EXPECT_EQ(file.What, Kind::File);
    EXPECT_FALSE(file.bLink);
    EXPECT_FALSE(file.bExecutable);
    EXPECT_EQ(file.SizeBytes, 5U);
    EXPECT_EQ(file.Modified, 1'700'000'000);
}

TEST_F(ListingReaderTest, TellsWhenSomebodyMayRunAFile) {
    for (const unsigned mode : {0100U, 0010U, 0001U}) {
        const std::string name = std::to_string(mode);
        WriteFile(Folder / name, "");
        chmod((Folder / name).c_str(), mode);
        EXPECT_TRUE(EntriesOf(Folder)[name].bExecutable) << mode;
    }
}

TEST_F(ListingReaderTest, TellsWhatADirectoryIs) {
    fs::create_directory(Folder / "sub");
    WriteFile(Folder / "sub" / "inside", "12345");
    SetModifiedTime(Folder / "sub", 1'600'000'000);
    const std::map<std::string, ListedEntry> entries = EntriesOf(Folder);
    ASSERT_EQ(entries.size(), 1U);
    const ListedEntry& sub = entries.begin()->second;
    EXPECT_EQ(sub.Name, "sub");
    EXPECT_EQ(sub.What, Kind::Directory);
    EXPECT_FALSE(sub.bExecutable);
    EXPECT_EQ(sub.SizeBytes, 0U);
    EXPECT_EQ(sub.Modified, 1'600'000'000);
}

TEST_F(ListingReaderTest, FollowsLinks) {
    WriteFile(Room / "target", "123");
    SetModifiedTime(Room / "target", 1'500'000'000);
    chmod((Room / "target").c_str(), 0755);
    fs::create_symlink("target", Folder / "to-file");
    fs::create_symlink(".", Folder / "to-directory");
    std::map<std::string, ListedEntry> entries = EntriesOf(Folder);
    EXPECT_EQ(entries["to-file"].What, Kind::File);
    EXPECT_TRUE(entries["to-file"].bLink);
    EXPECT_TRUE(entries["to-file"].bExecutable);
    EXPECT_EQ(entries["to-file"].SizeBytes, 3U);
    EXPECT_EQ(entries["to-file"].Modified, 1'500'000'000);
    EXPECT_EQ(entries["to-directory"].What, Kind::Directory);
    EXPECT_TRUE(entries["to-directory"].bLink);
}

TEST_F(ListingReaderTest, ListsLinksThatLeadNowhere) {
    fs::create_symlink("nothing", Folder / "dangling");
    fs::create_symlink("loop", Folder / "loop");
    std::map<std::string, ListedEntry> entries = EntriesOf(Folder);
    ASSERT_EQ(entries.size(), 2U);
    for (const char* name : {"dangling", "loop"}) {
        EXPECT_EQ(entries[name].What, Kind::Special) << name;
        EXPECT_TRUE(entries[name].bLink) << name;
        EXPECT_EQ(entries[name].SizeBytes, 0U) << name;
        EXPECT_EQ(entries[name].Modified, std::nullopt) << name;
    }
}

TEST_F(ListingReaderTest, TellsWhatIsNoFile) {
    MakeFifo(Folder / "pipe");
    MakeSocket(Folder / "socket");
    fs::create_symlink("/dev/null", Folder / "device");
    std::map<std::string, ListedEntry> entries = EntriesOf(Folder);
    for (const char* name : {"pipe", "socket", "device"}) {
        EXPECT_EQ(entries[name].What, Kind::Special) << name;
        EXPECT_TRUE(entries[name].Modified.has_value()) << name;
    }
    EXPECT_TRUE(entries["device"].bLink);
    EXPECT_FALSE(entries["pipe"].bLink);
}

TEST_F(ListingReaderTest, KeepsNamesAsTheyAre) {
    const std::vector<std::string> names = {"\xff\xfe",
                                            "two\nlines",
                                            " ",
                                            "-",
                                            "...",
                                            ".hidden",
                                            "\x1b[31m",
                                            "cdda:",
                                            std::string(255, 'x'),
                                            "\xe4\xb8\xad\xe6\x96\x87"};
    for (const std::string& name : names) {
        WriteFile(Folder / name, "");
    }
    const std::map<std::string, ListedEntry> entries = EntriesOf(Folder);
    EXPECT_EQ(entries.size(), names.size());
    for (const std::string& name : names) {
        EXPECT_EQ(entries.count(name), 1U) << name;
    }
}

TEST_F(ListingReaderTest, ListsNothingOfAnEmptyDirectory) {
    const Listing listing = Read(Folder);
    EXPECT_EQ(listing.Place, Folder);
    EXPECT_TRUE(listing.Entries.empty());
    EXPECT_EQ(listing.Failure, "");
}

TEST_F(ListingReaderTest, ListsManyEntriesInTheOrderOfTheFileSystem) {
    constexpr int kEntries = 10000;
    for (int i = 0; i < kEntries; ++i) {
        close(creat((Folder / ("entry " + std::to_string(i))).c_str(), 0600));
    }
    const Listing listing = Read(Folder);
    ASSERT_EQ(listing.Entries.size(), std::size_t{kEntries});
    const std::vector<fs::path> order = ListingOf(Folder);
    EXPECT_TRUE(std::equal(order.begin(), order.end(), listing.Entries.begin(),
                           listing.Entries.end(),
                           [](const fs::path& Path, const ListedEntry& Entry) {
                               return Path.filename() == Entry.Name;
                           }));
}

TEST_F(ListingReaderTest, TellsWhatEverybodyMayWriteThere) {
    EnterPrivateMountNamespace();
    const ScopedMount disk = MountLoopDisk(Room / "disk", 16, "-m 20");
    struct statvfs volume {};
    ASSERT_EQ(statvfs(disk.Path().c_str(), &volume), 0);
    ASSERT_LT(volume.f_bavail, volume.f_bfree);
    EXPECT_EQ(Read(disk.Path()).FreeBytes, volume.f_bavail * volume.f_frsize);
}

TEST_F(ListingReaderTest, KnowsNoRoomWhereThereIsNone) {
    const Listing listing = Read("/proc");
    EXPECT_EQ(listing.Failure, "");
    EXPECT_FALSE(listing.Entries.empty());
    EXPECT_EQ(listing.FreeBytes, std::nullopt);
}

TEST_F(ListingReaderTest, SaysThatThereIsNoSuchDirectory) {
    const Listing listing = Read(Folder / "gone");
    EXPECT_EQ(listing.Place, Folder / "gone");
    EXPECT_TRUE(listing.Entries.empty());
    EXPECT_EQ(listing.FreeBytes, std::nullopt);
    EXPECT_EQ(listing.Failure,
              "cannot read '" + (Folder / "gone").string() + "': No such file or directory");
}

TEST_F(ListingReaderTest, SaysThatAFileIsNoDirectory) {
    WriteFile(Folder / "file", "");
    EXPECT_EQ(Read(Folder / "file").Failure,
              "'" + (Folder / "file").string() + "' is not a directory");
}

TEST_F(ListingReaderTest, SaysThatNobodyMayRead) {
    fs::create_directory(Folder / "locked");
    chmod((Folder / "locked").c_str(), 0700);
    const ActingAsNobody nobody;
    EXPECT_EQ(Read(Folder / "locked").Failure,
              "cannot read '" + (Folder / "locked").string() + "': Permission denied");
}

TEST_F(ListingReaderTest, ListsNamesWhereNobodyMayLookAtTheEntries) {
    fs::create_directory(Folder / "names");
    WriteFile(Folder / "names" / "file", "123");
    fs::create_symlink("file", Folder / "names" / "link");
    chmod((Folder / "names").c_str(), 0744);
    const ActingAsNobody nobody;
    std::map<std::string, ListedEntry> entries = EntriesOf(Folder / "names");
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ(entries["file"].What, Kind::Special);
    EXPECT_FALSE(entries["file"].bLink);
    EXPECT_EQ(entries["file"].SizeBytes, 0U);
    EXPECT_EQ(entries["file"].Modified, std::nullopt);
    EXPECT_EQ(entries["link"].What, Kind::Special);
    EXPECT_TRUE(entries["link"].bLink);
}

TEST_F(ListingReaderTest, LeavesOutWhatVanishesMeanwhile) {
    WriteFile(Folder / "gone", "");
    WriteFile(Folder / "there", "");
    gBeforeStatus = [this](const std::string& Name) {
        if (Name == "gone") {
            fs::remove(Folder / Name);
        }
    };
    const std::map<std::string, ListedEntry> entries = EntriesOf(Folder);
    gBeforeStatus = nullptr;
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries.begin()->first, "there");
}

TEST_F(ListingReaderTest, ListsALinkThatIsAFileByNow) {
    fs::create_symlink("nothing", Folder / "entry");
    gBeforeStatus = [this](const std::string& Name) {
        fs::remove(Folder / Name);
        WriteFile(Folder / Name, "123");
    };
    const ListedEntry entry = EntriesOf(Folder)["entry"];
    gBeforeStatus = nullptr;
    EXPECT_FALSE(entry.bLink);
    EXPECT_EQ(entry.SizeBytes, 3U);
}

TEST_F(ListingReaderTest, WatchesTheDirectoryThatItReads) {
    FolderWatch watch;
    ListingReader reader(Folder, watch.Fd());
    EXPECT_EQ(ResultOf(reader).Failure, "");
    EXPECT_FALSE(watch.TakeChange());
    WriteFile(Folder / "new", "");
    EXPECT_TRUE(watch.TakeChange());
}

TEST_F(ListingReaderTest, WatchesOnlyWhatWasReadLast) {
    fs::create_directory(Folder / "sub");
    FolderWatch watch;
    ListingReader first(Folder, watch.Fd());
    ResultOf(first);
    ListingReader second(Folder / "sub", watch.Fd());
    ResultOf(second);
    EXPECT_FALSE(watch.TakeChange());
    WriteFile(Folder / "new", "");
    EXPECT_FALSE(watch.TakeChange());
    WriteFile(Folder / "sub" / "new", "");
    EXPECT_TRUE(watch.TakeChange());
}

TEST_F(ListingReaderTest, SaysWhyItCannotBeStarted) {
    Listing listing;
    {
        const NoProcessesLeft limit;
        ListingReader reader("/x");
        EXPECT_EQ(reader.OverFd(), -1);
        listing = ResultOf(reader);
    }
    EXPECT_EQ(listing.Place, "/x");
    EXPECT_EQ(listing.Failure, "cannot start reading '/x': Resource temporarily unavailable");
}

TEST_F(ListingReaderTest, LeavesNothingBehind) {
    ASSERT_TRUE(NoChildIsLeft());
    const auto before = OpenDescriptors();
    Read(Folder);
    EXPECT_EQ(OpenDescriptors(), before);
    EXPECT_TRUE(NoChildIsLeft());
}

TEST(ParentPlace, IsTheDirectoryAround) {
    EXPECT_EQ(ParentPlace("/a/b"), "/a");
    EXPECT_EQ(ParentPlace("/a/b/"), "/a");
    EXPECT_EQ(ParentPlace("/a"), "/");
    EXPECT_EQ(ParentPlace("/"), "/");
}

TEST(ParentPlace, IsTheDirectoryOfTheDrive) {
    EXPECT_EQ(ParentPlace("cdda:/dev/sr0"), "/dev");
    EXPECT_EQ(ParentPlace("cdda:/dev/sr0/"), "/dev");
}

TEST(ParentPlace, IsTheDiscItselfWhereNoDirectoryIsGiven) {
    EXPECT_EQ(ParentPlace("cdda:sr0"), "cdda:sr0");
    EXPECT_EQ(ParentPlace("cdda:"), "cdda:");
}

TEST(IsDisc, TellsDrivesFromDirectories) {
    EXPECT_TRUE(IsDisc("cdda:/dev/sr0"));
    EXPECT_FALSE(IsDisc("/dev/sr0"));
    EXPECT_FALSE(IsDisc("/cdda:/dev/sr0"));
}

} // namespace

int WrappedStatx(int Directory, const char* Name, int Flags, unsigned int Mask, struct statx* Out) {
    if (gBeforeStatus) {
        gBeforeStatus(Name);
    }
    return RealStatx(Directory, Name, Flags, Mask, Out);
}
