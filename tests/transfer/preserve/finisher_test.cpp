// What a job has made gets the modes, times and owners of its sources, whoever runs it and wherever
// it is.

#include "finisher_fixture.h"
#include "mounts.h"
#include "needs.h"
#include "own_mount_namespace.h"

#include <tuple>

namespace fs = std::filesystem;

namespace {

constexpr uid_t kNobody = 65534;
constexpr uid_t kSomebody = 12345;
constexpr gid_t kSomeGroup = 23456;

std::string FourDigits(unsigned Mode) {
    std::string digits;
    for (int shift = 9; shift >= 0; shift -= 3) {
        digits += static_cast<char>('0' + ((Mode >> static_cast<unsigned>(shift)) & 7U));
    }
    return digits;
}

// A file system, and whether root works on it or somebody else.
class FinisherAnywhere : public FinisherTest,
                         public testing::WithParamInterface<std::tuple<const char*, bool>> {
protected:
    FinisherAnywhere() {
        To = Mounted.Path();
        for (const fs::path& path : {From, To}) {
            fs::permissions(path, fs::perms::all);
        }
        if (!IsRoot()) {
            Nobody.emplace();
        }
    }

    static bool IsRoot() { return std::get<1>(GetParam()); }

    // Nobody cannot look into what is closed.
    void ExpectWanted(const std::string& Name) {
        Nobody.reset();
        EXPECT_EQ(StatusesOf(To / Name), Wanted);
    }

    OwnMountNamespace Namespace;
    ScopedMount Sources = MountTmpfs(From, "size=16m");
    ScopedMount Mounted = std::string_view(std::get<0>(GetParam())) == "tmpfs"
                              ? MountTmpfs(Room / "mounted", "size=16m")
                              : MountLoopDisk(Room / "mounted", 24);
    std::optional<ActingAsNobody> Nobody;
};

std::string NameOfPlace(const testing::TestParamInfo<std::tuple<const char*, bool>>& Info) {
    return std::string(std::get<0>(Info.param)) + (std::get<1>(Info.param) ? "Root" : "Nobody");
}

INSTANTIATE_TEST_SUITE_P(Places, FinisherAnywhere,
                         testing::Combine(testing::Values("tmpfs", "ext4"), testing::Bool()),
                         NameOfPlace);

TEST_P(FinisherAnywhere, GivesATreeTheModesAndTimesOfItsSources) {
    MakeSource("tree/script", 0755);
    MakeSource("tree/folder/private", 0600);
    MakeSource("tree/folder/for-all", 0666);
    MakeSource("tree/folder/empty", 0444, "");
    Dress(From / "tree/folder", 0700);
    Dress(From / "tree", 0751);
    Record("tree");
    Copy("tree");
    const FinishResult result = Finish();
    ExpectAllFinished(result);
    EXPECT_EQ(result.Finished, 6U);
    ExpectWanted("tree");
}

TEST_P(FinisherAnywhere, CarriesEachModeOfAFile) {
    for (unsigned mode = 0; mode <= 07777U; ++mode) {
        MakeSource("tree/" + FourDigits(mode), 0600, "");
    }
    Copy("tree");
    for (unsigned mode = 0; mode <= 07777U; ++mode) {
        Dress(From / "tree" / FourDigits(mode), mode);
    }
    RecordAsFree("tree");
    const FinishResult result = Finish();
    ExpectAllFinished(result);
    EXPECT_EQ(result.Finished, 010001U);
    ExpectWanted("tree");
    EXPECT_EQ(ModeOf(To / "tree/6751"), 06751U);
}

TEST_P(FinisherAnywhere, CarriesEachModeOfADirectory) {
    for (unsigned mode = 0; mode <= 07777U; ++mode) {
        fs::create_directories(From / "tree" / FourDigits(mode));
    }
    Copy("tree");
    for (unsigned mode = 0; mode <= 07777U; ++mode) {
        Dress(From / "tree" / FourDigits(mode), mode);
    }
    Nobody.reset();
    RecordAsFree("tree");
    if (!IsRoot()) {
        Nobody.emplace();
    }
    const FinishResult result = Finish();
    ExpectAllFinished(result);
    ExpectWanted("tree");
    EXPECT_EQ(ModeOf(To / "tree/3070"), 03070U);
}

TEST_P(FinisherAnywhere, FinishesWhatIsInReadOnlyDirectories) {
    MakeSource("tree/closed/inner/file", 0400);
    Copy("tree");
    Dress(From / "tree/closed/inner", 0500);
    Dress(From / "tree/closed", 0555);
    Dress(From / "tree", 0500);
    RecordAsFree("tree");
    const FinishResult result = Finish();
    ExpectAllFinished(result);
    ExpectWanted("tree");
}

TEST_P(FinisherAnywhere, CarriesTimesBefore1970AndNanoseconds) {
    MakeSource("tree/old", 0644);
    MakeSource("tree/older", 0644);
    MakeSource("tree/late", 0644);
    SetTimes(From / "tree/old", {-1, 999999999}, {-1, 1});
    SetTimes(From / "tree/older", {-1000000000, 5}, {-2000000000, 0});
    SetTimes(From / "tree/late", {4000000000, 1}, {6000000000, 999999999});
    SetTimes(From / "tree", {0, 0}, {0, 1});
    Record("tree");
    Copy("tree");
    const FinishResult result = Finish();
    ExpectAllFinished(result);
    ExpectWanted("tree");
}

// Its times are whole seconds, until 2038.
class FinisherOnOldExt4 : public FinisherTest {
protected:
    OwnMountNamespace Namespace;
    ScopedMount Mounted = MountLoopDisk(To, 8, "-I 128");
};

TEST_F(FinisherOnOldExt4, TellsNothingOfPartsOfASecond) {
    MakeSource("file", 0640);
    Record("file");
    Copy("file");
    ExpectAllFinished(Finish());
    EXPECT_EQ(StatusText(To / "file"), "0640 1000000001.0 1100000001.0");
}

TEST_F(FinisherOnOldExt4, TellsWhenALaterTimeIsNotKept) {
    SetTimes(MakeSource("late", 0640), {1, 0}, {3000000000, 0});
    for (const char* name : {"before", "late", "after"}) {
        if (!fs::exists(From / name)) {
            MakeSource(name, 0640);
        }
        Record(name);
        Copy(name);
    }
    const FinishResult result = Finish();
    EXPECT_TRUE(result.bTimesLost);
    EXPECT_FALSE(result.bModesLost || result.bOwnersLost);
    EXPECT_EQ(result.Failures, 0U);
    EXPECT_EQ(result.Finished, 3U);
    EXPECT_EQ(StatusText(To / "after"), "0640 1000000003.0 1100000003.0");
}

// Needs a kernel with vfat. Others show each of the three elsewhere.
TEST_F(FinisherTest, TellsWhatVfatCannotHold) {
    EnterPrivateMountNamespace();
    const ScopedMount mounted = MountVfat(To, 8);
    ASSERT_EQ(::chown(MakeSource("tree/odd", 0640).c_str(), kSomebody, kSomeGroup), 0);
    MakeSource("tree/even", 0640);
    Record("tree");
    Copy("tree");
    FinishTask task = Task();
    task.Preserve.bOwner = true;
    const FinishResult result = Finish(task);
    EXPECT_TRUE(result.bModesLost && result.bTimesLost && result.bOwnersLost);
    EXPECT_EQ(result.FirstFailure, "");
    EXPECT_EQ(result.Finished, 3U);
    const auto modified = [this](const char* Name) {
        struct stat status {};
        EXPECT_EQ(::lstat((To / Name).c_str(), &status), 0);
        return status.st_mtim.tv_sec;
    };
    EXPECT_EQ(modified("tree/odd"), 1100000000);
    EXPECT_EQ(modified("tree/even"), 1100000002);
    EXPECT_EQ(ModeOf(To / "tree/odd"), 0755U);
}

TEST_F(FinisherTest, LeavesOutWhatIsNotToBeCarried) {
    NeedRoot();
    const fs::path source = MakeSource("file", 0640);
    ASSERT_EQ(::chown(source.c_str(), kSomebody, kSomeGroup), 0);
    Record("file");
    const std::string wanted = StatusText(source, true);
    Copy("file");
    const std::string before = StatusText(To / "file", true);
    FinishTask task = Task();
    task.Preserve = {};
    FinishResult result = Finish(task);
    EXPECT_EQ(result.Finished, 1U);
    EXPECT_EQ(StatusText(To / "file", true), before);

    task.Preserve = {.bTimes = true};
    Finish(task);
    EXPECT_EQ(StatusText(To / "file", true), "0600 1000000001.123456789 1100000001.987654321 0:0");
    task.Preserve = {.bMode = true};
    Finish(task);
    EXPECT_EQ(ModeOf(To / "file"), 0640U);
    task.Preserve = {.bOwner = true};
    Finish(task);
    EXPECT_EQ(StatusText(To / "file", true), wanted);
}

TEST_F(FinisherTest, KeepsTheUsersBitsWithTheOwnerOnly) {
    NeedRoot();
    for (const char* name : {"tree/file", "tree/folder/file"}) {
        ASSERT_EQ(::chown(MakeSource(name).c_str(), kSomebody, kSomeGroup), 0);
    }
    ASSERT_EQ(::chown((From / "tree/folder").c_str(), 0, kSomeGroup), 0);
    Dress(From / "tree/file", 06755);
    Dress(From / "tree/folder", 03775);
    Record("tree");
    const std::string wanted = StatusText(From / "tree/file", true);
    Copy("tree");
    ExpectAllFinished(Finish());
    EXPECT_EQ(ModeOf(To / "tree/file"), 0755U);
    EXPECT_EQ(ModeOf(To / "tree/folder"), 01775U);

    FinishTask task = Task();
    task.Preserve.bOwner = true;
    ExpectAllFinished(Finish(task));
    EXPECT_EQ(StatusText(To / "tree/file", true), wanted);
    EXPECT_EQ(ModeOf(To / "tree/folder"), 03775U);
}

// Giving a file away takes these bits from it.
TEST_F(FinisherTest, SetsTheUsersBitsAfterTheOwner) {
    NeedRoot();
    const fs::path source = MakeSource("file");
    ASSERT_EQ(::chown(source.c_str(), kSomebody, kSomeGroup), 0);
    Dress(source, 06755);
    Record("file");
    const std::string wanted = StatusText(source, true);
    Copy("file");
    ASSERT_EQ(::chmod((To / "file").c_str(), 06755), 0);
    FinishTask task = Task();
    task.Preserve.bOwner = true;
    ExpectAllFinished(Finish(task));
    EXPECT_EQ(StatusText(To / "file", true), wanted);
}

// But to a group that this user is in.
TEST_F(FinisherTest, CannotGiveFilesAwayAsAnotherUser) {
    NeedRoot();
    // What is made there gets its group.
    fs::permissions(To, fs::perms::all | fs::perms::set_gid);
    ASSERT_EQ(::chown(MakeSource("other").c_str(), kSomebody, kSomeGroup), 0);
    Dress(From / "other", 04755);
    ASSERT_EQ(::chown(MakeSource("own").c_str(), kNobody, kNobody), 0);
    Record("other");
    Record("own");
    const ActingAsNobody nobody;
    Copy("other");
    Copy("own");
    FinishTask task = Task();
    task.Preserve.bOwner = true;
    const FinishResult result = Finish(task);
    EXPECT_TRUE(result.bOwnersLost);
    EXPECT_EQ(result.Failures, 0U);
    EXPECT_EQ(result.Finished, 2U);
    EXPECT_EQ(ModeOf(To / "other"), 0755U);
    EXPECT_EQ(StatusText(To / "own", true),
              "0644 1000000003.123456789 1100000003.987654321 65534:65534");
}

TEST_F(FinisherTest, NamesWhatItMayNotChange) {
    NeedRoot();
    fs::permissions(To, fs::perms::all);
    MakeSource("tree/first", 0640);
    MakeSource("tree/second", 0640);
    Record("tree");
    Copy("tree");
    fs::permissions(To / "tree", fs::perms::all);
    const ActingAsNobody nobody;
    const FinishResult result = Finish();
    EXPECT_EQ(result.Failures, 3U);
    EXPECT_EQ(result.Finished, 0U);
    EXPECT_FALSE(result.bModesLost || result.bTimesLost);
    const std::string first = ListingOf(From / "tree").front().filename().string();
    EXPECT_EQ(result.FirstFailure, "cannot set the mode of '" + (To / "tree" / first).string() +
                                       "': Operation not permitted");
}

TEST_F(FinisherTest, CarriesATimeOfAccessAlone) {
    MakeSource("file");
    Record("file");
    Copy("file");
    Finish();
    SetTimes(To / "file", {5, 6}, {1100000001, 987654321});
    ExpectAllFinished(Finish());
    EXPECT_EQ(StatusText(To / "file"), Wanted[To / "file"]);
}

TEST_F(FinisherTest, NamesCopiesOfAnotherLength) {
    for (int number = 0; number < 12; ++number) {
        MakeSource("tree/" + std::to_string(number), 0640, "before");
    }
    Record("tree");
    Copy("tree");
    std::vector<std::string> changed;
    for (const fs::path& source : ListingOf(From / "tree")) {
        const fs::path copy = To / "tree" / source.filename();
        WriteFile(copy, source.filename() == "5" ? "BEFORE" : "and after");
        if (source.filename() != "5" && changed.size() < 10) {
            changed.push_back(copy.string());
        }
    }
    const FinishResult result = Finish();
    EXPECT_EQ(result.ChangedLength, 11U);
    EXPECT_EQ(result.FirstChanged, changed);
    EXPECT_EQ(result.Finished, 13U);
    EXPECT_EQ(StatusesOf(To / "tree"), Wanted);
}

TEST_F(FinisherTest, TellsWhyItHasBrokenOff) {
    for (int number = 0; number < 200000; ++number) {
        const std::string name =
            (To / "x").string() + std::string(40, 'x') + std::to_string(number);
        Writer.Add({.What = RecordedEntry::Kind::File, .Name = name});
    }
    const FinishTask task = Task();
    ASSERT_EQ(::ftruncate(Kept.FileDescriptor(), 0), 0);
    const FinishResult result = Finish(task);
    EXPECT_EQ(result.Broken, "cannot read a temporary file: Input/output error");
    EXPECT_GT(EntriesDone, 0U);
    EXPECT_EQ(result.Unreached, Kept.Entries() - EntriesDone);
    EXPECT_EQ(result.LeftAlone, EntriesDone);
    EXPECT_FALSE(result.bCanceled);
}

} // namespace
