// Whether a destination lies on removable media, asked of a real disk whose attribute the test
// writes. Needs root for its mounts.

#include "engine_source.h"

#include "engine_hooks.h"
#include "mounts.h"
#include "open_descriptors.h"
#include "transfer_fixture.h"

#include <linux/loop.h>
#include <linux/major.h>

namespace {

class RemovableProbe : public TransferTest {
protected:
    RemovableDisk Disk{Directory.Path(), "1\n"};
};

TEST_F(RemovableProbe, AsksTheDeviceOfTheFolderForAFileThatDoesNotExistYet) {
    fs::create_directory(Disk.Path() / "folder");
    EXPECT_TRUE(IsRemovableDestination(Disk.Path() / "folder/new"));
    Disk.SetAttribute("0\n");
    EXPECT_FALSE(IsRemovableDestination(Disk.Path() / "folder/new"));
}

TEST_F(RemovableProbe, AsksTheDeviceOfAFileThatExists) {
    WriteFile(Disk.Path() / "file", "x");
    EXPECT_TRUE(IsRemovableDestination(Disk.Path() / "file"));
    Disk.SetAttribute("0\n");
    EXPECT_FALSE(IsRemovableDestination(Disk.Path() / "file"));
}

TEST_F(RemovableProbe, AsksTheDeviceThatALinkLeadsTo) {
    WriteFile(Disk.Path() / "file", "x");
    fs::create_symlink(Disk.Path() / "file", Directory / "link");
    EXPECT_TRUE(IsRemovableDestination(Directory / "link"));
    fs::create_directory_symlink(Disk.Path(), Directory / "folder-link");
    EXPECT_TRUE(IsRemovableDestination(Directory / "folder-link/new"));
}

TEST_F(RemovableProbe, AsksTheFolderOfADanglingLink) {
    fs::create_symlink(Disk.Path() / "nowhere", Directory / "link");
    EXPECT_FALSE(IsRemovableDestination(Directory / "link"));
    fs::create_symlink("nowhere", Disk.Path() / "link");
    EXPECT_TRUE(IsRemovableDestination(Disk.Path() / "link"));
}

TEST_F(RemovableProbe, GoesUpOneStepOnly) {
    EXPECT_FALSE(IsRemovableDestination(Disk.Path() / "missing/new"));
}

TEST_F(RemovableProbe, HasNothingToAskForABareNameThatDoesNotExist) {
    fs::current_path(Disk.Path());
    EXPECT_FALSE(IsRemovableDestination("new"));
    WriteFile(Disk.Path() / "old", "x");
    EXPECT_TRUE(IsRemovableDestination("old"));
    EXPECT_TRUE(IsRemovableDestination("./new"));
    fs::current_path("/");
}

TEST_F(RemovableProbe, TakesOneForYesAndEverythingElseForNo) {
    for (const std::string yes : {"1\n", "1", " 1\n", "01\n", "+1\n", "1 0\n", "1x"}) {
        Disk.SetAttribute(yes);
        EXPECT_TRUE(IsRemovableDestination(Disk.Path() / "new")) << yes;
    }
    for (const std::string no : {"0\n", "2\n", "-1\n", "11\n", "", "\n", "yes\n", "true\n",
                                 "99999999999999999999\n", "4294967297\n"}) {
        Disk.SetAttribute(no);
        EXPECT_FALSE(IsRemovableDestination(Disk.Path() / "new")) << no;
    }
}

TEST_F(RemovableProbe, TakesAnAttributeThatMayNotBeReadForNo) {
    fs::permissions(Directory / "attribute", fs::perms::none);
    fs::permissions(Disk.Path(), fs::perms::all);
    const ActingAsNobody nobody;
    EXPECT_FALSE(IsRemovableDestination(Disk.Path() / "new"));
}

TEST_F(RemovableProbe, TakesAFileSystemWithoutADeviceForNo) {
    const ScopedMount memory = MountTmpfs(Directory / "memory", "size=1m");
    EXPECT_FALSE(fs::exists(RemovableAttributeOf(memory.Path())));
    EXPECT_FALSE(IsRemovableDestination(memory.Path() / "new"));
}

TEST_F(RemovableProbe, ThrowsWhereAFolderMayNotBeSearched) {
    WriteFile(Disk.Path() / "locked/file", "x");
    fs::permissions(Disk.Path() / "locked", fs::perms::none);
    const ActingAsNobody nobody;
    try {
        IsRemovableDestination(Disk.Path() / "locked/file");
        FAIL() << "no exception";
    } catch (const fs::filesystem_error& error) {
        EXPECT_EQ(error.code(), std::errc::permission_denied);
    }
}

class RemovableRun : public RemovableProbe {
protected:
    bool IsRemovable(const fs::path& Folder) { return IsRemovableDestination(Folder / "new"); }

    const AttributeOfRun OfRun;
};

TEST_F(RemovableRun, AsksTheDeviceForEachFile) {
    EXPECT_TRUE(IsRemovable(Disk.Path()));
    Disk.SetAttribute("0\n");
    EXPECT_FALSE(IsRemovable(Disk.Path()));
    Disk.SetAttribute("1\n");
    EXPECT_TRUE(IsRemovable(Disk.Path()));
}

TEST_F(RemovableRun, AsksTheDeviceOfEachFile) {
    EXPECT_TRUE(IsRemovable(Disk.Path()));
    EXPECT_FALSE(IsRemovable(Directory.Path()));
    EXPECT_TRUE(IsRemovable(Disk.Path()));
}

TEST_F(RemovableProbe, LeavesTheAttributeOpenForOneRunOnly) {
    WriteFile(Directory / "from/a", "x");
    WriteFile(Directory / "from/b", "x");
    EngineHooks hooks;
    int opened = 0;
    hooks.DeviceProbed = [&] { ++opened; };
    const auto before = OpenDescriptors();
    for (const std::string run : {"1", "2"}) {
        const auto job = std::make_shared<TarvaneTransferJob>(false, 1, "");
        RunTarvaneTransferJob(job, PlanOf(kCopy, {{Directory / "from", Disk.Path() / run}}));
        EXPECT_EQ(job->MakeUiSnapshot().DoneItems, 3U);
        EXPECT_EQ(std::to_string(opened), run);
        EXPECT_EQ(OpenDescriptors(), before);
    }
}

// With a number that no other loop device has.
class LoopDevice {
public:
    LoopDevice() : Control(::open("/dev/loop-control", O_RDWR | O_CLOEXEC)) {}
    ~LoopDevice() {
        Remove();
        ::close(Control);
    }
    LoopDevice(const LoopDevice&) = delete;
    LoopDevice& operator=(const LoopDevice&) = delete;

    bool Add() const { return ::ioctl(Control, LOOP_CTL_ADD, kNumber) == kNumber; }
    bool Remove() const { return ::ioctl(Control, LOOP_CTL_REMOVE, kNumber) == 0; }
    static dev_t Number() { return makedev(LOOP_MAJOR, kNumber); }
    static fs::path Attribute() {
        return "/sys/dev/block/" + std::to_string(LOOP_MAJOR) + ":" + std::to_string(kNumber) +
               "/removable";
    }

private:
    static constexpr int kNumber = 3141;

    const int Control;
};

TEST_F(RemovableRun, AsksADeviceThatHasTheNumberOfOneThatHasGone) {
    const LoopDevice device;
    ASSERT_TRUE(device.Add());
    RemovableAttribute attribute;
    EXPECT_FALSE(attribute.SaysRemovable(device.Number()));
    ASSERT_TRUE(device.Remove());
    EXPECT_FALSE(attribute.SaysRemovable(device.Number()));
    ASSERT_TRUE(device.Add());
    const ScopedMount one = BindFile(Directory / "attribute", LoopDevice::Attribute());
    EXPECT_TRUE(attribute.SaysRemovable(device.Number()));
}

} // namespace
