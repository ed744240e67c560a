// What a look through the sources costs: queries are counted at the link.

#include "needs.h"
#include "preflight_fixture.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <string_view>
#include <utility>

namespace fs = std::filesystem;

namespace {

constexpr uid_t kNobody = 65534;

int gStatusQueries = 0;
int gLinkQueries = 0;
int gAccessQueries = 0;
std::size_t gLongestOpened = 0;
// File systems may leave it to the caller to find out what an entry is.
bool gbHideTypes = false;
// Of what is open.
bool gbFailStatus = false;

void CountQuery() {
    ++gStatusQueries;
}

} // namespace

extern "C" {
int __real_stat(const char*, struct stat*);
int __wrap_stat(const char*, struct stat*);
int __real_fstat(int, struct stat*);
int __wrap_fstat(int, struct stat*);
int __real_fstatat(int, const char*, struct stat*, int);
int __wrap_fstatat(int, const char*, struct stat*, int);
int __real_statx(int, const char*, int, unsigned, struct statx*);
int __wrap_statx(int, const char*, int, unsigned, struct statx*);
ssize_t __real_readlinkat(int, const char*, char*, size_t);
ssize_t __wrap_readlinkat(int, const char*, char*, size_t);
int __real_openat(int, const char*, int, ...);
int __wrap_openat(int, const char*, int, ...);
int __real_faccessat(int, const char*, int, int);
int __wrap_faccessat(int, const char*, int, int);
ssize_t __real_getdents64(int, void*, size_t);
ssize_t __wrap_getdents64(int, void*, size_t);
}

int __wrap_stat(const char* Path, struct stat* Out) {
    CountQuery();
    return __real_stat(Path, Out);
}

int __wrap_fstat(int Descriptor, struct stat* Out) {
    CountQuery();
    if (gbFailStatus) {
        errno = EIO;
        return -1;
    }
    return __real_fstat(Descriptor, Out);
}

int __wrap_fstatat(int Directory, const char* Name, struct stat* Out, int Flags) {
    CountQuery();
    return __real_fstatat(Directory, Name, Out, Flags);
}

int __wrap_statx(int Directory, const char* Name, int Flags, unsigned Mask, struct statx* Out) {
    CountQuery();
    return __real_statx(Directory, Name, Flags, Mask, Out);
}

ssize_t __wrap_readlinkat(int Directory, const char* Name, char* Out, size_t Size) {
    ++gLinkQueries;
    return __real_readlinkat(Directory, Name, Out, Size);
}

int __wrap_openat(int Directory, const char* Path, int Flags, ...) {
    gLongestOpened = std::max(gLongestOpened, std::string_view(Path).size());
    return __real_openat(Directory, Path, Flags);
}

int __wrap_faccessat(int Directory, const char* Name, int Access, int Flags) {
    ++gAccessQueries;
    return __real_faccessat(Directory, Name, Access, Flags);
}

ssize_t __wrap_getdents64(int Descriptor, void* Buffer, size_t Size) {
    const ssize_t length = __real_getdents64(Descriptor, Buffer, Size);
    ssize_t position = 0;
    while (gbHideTypes && position < length) {
        void* record = static_cast<char*>(Buffer) + position;
        auto* entry = static_cast<dirent64*>(record);
        entry->d_type = DT_UNKNOWN;
        position += entry->d_reclen;
    }
    return length;
}

namespace {

class PreflightCost : public PreflightTest {
protected:
    PreflightCost() {
        for (int number = 0; number < 50; ++number) {
            const std::string name = std::to_string(number);
            WriteFile(From / "tree/files" / name, "x");
            fs::create_directory(From / "tree" / name);
            fs::create_symlink("../files/" + name, From / "tree" / name / "to-file");
        }
        fs::create_directory(Room / "outside");
        fs::create_symlink(Room / "outside", From / "tree/to-directory");
        PlanToCopy({{From / "tree", To / "tree"}});
        gStatusQueries = 0;
    }
    ~PreflightCost() override {
        gbHideTypes = false;
        gbFailStatus = false;
    }

    // Of the destination and the directories above it.
    int DestinationQueries() {
        const TarvaneTransferPlan plan = Plan;
        gStatusQueries = 0;
        PlanToCopy({{Room / "missing", To / "tree"}});
        Look();
        Plan = plan;
        constexpr int kOfTheSource = 1;
        const int queries = gStatusQueries - kOfTheSource;
        gStatusQueries = 0;
        gLinkQueries = 0;
        Control.EntriesSeen = 0;
        return queries;
    }

    int SavedWithoutTotals() {
        Scope = PreflightScope::Everything;
        gStatusQueries = 0;
        const PreflightResult all = Look();
        const int withTotals = std::exchange(gStatusQueries, 0);
        Scope = PreflightScope::Findings;
        const PreflightResult result = Look();
        EXPECT_EQ(result.Entries, all.Entries);
        EXPECT_EQ(result.CopiedEntries, all.CopiedEntries);
        EXPECT_EQ(result.SkippedEntries, all.SkippedEntries);
        EXPECT_EQ(result.Taken.Skipped, all.Taken.Skipped);
        EXPECT_EQ(InWords(result), InWords(all));
        return withTotals - gStatusQueries;
    }
};

TEST_F(PreflightCost, IsOneStatusQueryForEachEntryThatIsNew) {
    const int ofDestination = DestinationQueries();
    const PreflightResult result = Look();
    EXPECT_EQ(result.Entries, 153U);
    EXPECT_EQ(Control.EntriesSeen, 153U);
    EXPECT_EQ(gStatusQueries - ofDestination, 153);
}

TEST_F(PreflightCost, IsTheSameWhereListingsTellNoTypes) {
    MakeFifo(From / "tree/pipe");
    fs::create_symlink("missing", From / "tree/dangling");
    const Strings found = Found();
    const int ofDestination = DestinationQueries();
    gbHideTypes = true;
    EXPECT_EQ(Found(), found);
    EXPECT_EQ(found, (Strings{"dangling-link from/tree/dangling, stops",
                              "link-to-directory from/tree/to-directory",
                              "special-entry from/tree/pipe, stops"}));
    EXPECT_EQ(gStatusQueries - ofDestination, 155);
}

// Its copy would get the mode of nothing, with which not even its owner can enter it.
TEST_F(PreflightCost, IsAStopWhereTheStatusOfAnOpenDirectoryIsMissing) {
    gbFailStatus = true;
    const Strings found = Found();
    EXPECT_TRUE(std::ranges::any_of(found, [](const std::string& Finding) {
        return Finding.starts_with("uninspectable-entry from/tree/");
    })) << testing::PrintToString(found);
}

// A directory that was not queried for what it is, is queried when it is open.
TEST_F(PreflightCost, IsNoFurtherQueryWithARecord) {
    StatusRecord record;
    PreflightTask task = Task();
    task.Record = &record;
    const int ofDestination = DestinationQueries();
    for (const PreflightScope scope :
         {PreflightScope::Everything, PreflightScope::Findings, PreflightScope::GuardsOnly}) {
        task.Scope = scope;
        gStatusQueries = gLinkQueries = 0;
        RunPreflight(task, Control);
        EXPECT_EQ(record.Entries(), 153U);
        EXPECT_EQ(gStatusQueries - ofDestination, 153);
        constexpr int kOfTheItem = 1;
        EXPECT_EQ(gLinkQueries, kOfTheItem);
    }
}

TEST_F(PreflightCost, IsNoLongerPathForADeeperTree) {
    fs::path deepest = From / "deep";
    for (int level = 0; level < 100; ++level) {
        deepest /= "directory";
    }
    fs::create_directories(deepest);
    WriteFile(From / "deep/file", "x");
    PlanToCopy({{From / "deep", To / "deep"}});
    gLongestOpened = 0;
    EXPECT_EQ(Look().Entries, 102U);
    EXPECT_EQ(gLongestOpened, (From / "deep").native().size());
}

TEST_F(PreflightCost, IsNoAccessQueryForRoot) {
    NeedRoot();
    for (int number = 0; number < 50; ++number) {
        const fs::path file = From / "tree/files" / std::to_string(number);
        fs::permissions(file, fs::perms::none);
        ASSERT_EQ(::chown(file.c_str(), kNobody, kNobody), 0);
    }
    gAccessQueries = 0;
    Look();
    constexpr int kOfTheDestination = 1;
    EXPECT_EQ(gAccessQueries, kOfTheDestination);
}

TEST_F(PreflightCost, IsOneAccessQueryForEachDirectoryThatGetsNewEntries) {
    NeedRoot();
    fs::create_directories(To / "tree/files");
    gAccessQueries = 0;
    Look();
    constexpr int kOfTheDestination = 1;
    constexpr int kTreeAndFiles = 2;
    EXPECT_EQ(gAccessQueries, kOfTheDestination + kTreeAndFiles);
}

// The second one asks for what stands at the destination, and two more for where a link there
// leads.
TEST_F(PreflightCost, IsTwoQueriesForEachEntryThatIsMerged) {
    fs::remove(From / "tree/to-directory");
    fs::copy(From / "tree", To / "tree",
             fs::copy_options::recursive | fs::copy_options::copy_symlinks);
    const int ofDestination = DestinationQueries();
    const PreflightResult result = Look();
    EXPECT_EQ(result.Entries, 152U);
    EXPECT_EQ(result.Taken.Replaced, 100U);
    // That of the item is among those of the destination, but not whether its source is a link.
    constexpr int kOfDestinationEntries = 151;
    constexpr int kOfLinks = 50 * 2;
    EXPECT_EQ(gStatusQueries + gLinkQueries - ofDestination,
              152 + 1 + kOfDestinationEntries + kOfLinks);
}

TEST_F(PreflightCost, IsNothingMoreWhereADestinationHoldsOtherNames) {
    fs::create_directory(To / "tree");
    for (int number = 0; number < 1000; ++number) {
        WriteFile(To / "tree" / ("other" + std::to_string(number)), "x");
    }
    const int ofDestination = DestinationQueries();
    Look();
    constexpr int kOfNamesInTree = 52;
    EXPECT_EQ(gStatusQueries + gLinkQueries - ofDestination, 153 + 1 + kOfNamesInTree);
}

// A file in each directory tells that the others could be queried.
TEST_F(PreflightCost, IsOneStatusQueryForAllFilesOfARenamedDirectoryWithoutTotals) {
    PlanToMove({{From / "tree", To / "tree"}});
    EXPECT_EQ(SavedWithoutTotals(), 49);
}

TEST_F(PreflightCost, IsOneStatusQueryForAllFilesThatAreSkippedWithoutTotals) {
    fs::create_directory(To / "tree");
    fs::copy(From / "tree/files", To / "tree/files", fs::copy_options::recursive);
    Rules.ForFiles = FileConflictChoice::Skip;
    EXPECT_EQ(SavedWithoutTotals(), 49);
}

TEST_F(PreflightCost, IsFourQueriesForEachItemThatIsRenamed) {
    std::vector<std::pair<fs::path, fs::path>> items;
    for (int number = 0; number < 50; ++number) {
        const std::string name = std::to_string(number);
        items.emplace_back(From / "tree/files" / name, To / name);
    }
    PlanToMove({items.front()});
    gStatusQueries = gLinkQueries = 0;
    Look();
    const int ofOne = gStatusQueries + gLinkQueries;
    PlanToMove(items);
    gStatusQueries = gLinkQueries = 0;
    EXPECT_EQ(Look().CopiedEntries, 0U);
    EXPECT_EQ(gStatusQueries + gLinkQueries - ofOne, 49 * 4);
}

} // namespace
