// A file system in user space fails, or says what is not so.

#include "faulty_file_system.h"
#include "torture_fixture.h"

#include <cerrno>
#include <limits>
#include <set>

namespace {

using Files = FaultyFileSystem::Files;
constexpr std::uint64_t kLargest = std::numeric_limits<std::int64_t>::max();

// "first" is done when it fails, "big" is not.
class FaultyDestination : public Torture {
protected:
    FaultyDestination() {
        WriteFile(Root / "first", "one");
        WriteFile(Root / "big", PatternBytes(1000000));
        Prepared();
    }

    void ExpectEnd(const FaultyFileSystem::Fault& Fault, const std::string& Sentence) const {
        const FaultyFileSystem disk(Root / "disk", {}, Fault);
        EXPECT_EQ(Run({"first", "big", "disk"}), (End{1, Sentence, 1, 3}));
        ExpectTree({"first"}, {{"disk", "dir"}, {"disk/first", "file one"}});
    }
};

INSTANTIATE_TEST_SUITE_P(Verbs, FaultyDestination, kBothVerbs);

TEST_P(FaultyDestination, HasNoMoreOfTheQuota) {
    ExpectEnd(FailsFrom(FUSE_WRITE, 3, EDQUOT), "disk/big: Failed while writing destination file.");
}

TEST_P(FaultyDestination, TakesNoLargerFile) {
    ExpectEnd(FailsFrom(FUSE_WRITE, 3, EFBIG), "disk/big: Failed while writing destination file.");
}

TEST_P(FaultyDestination, FailsToWrite) {
    ExpectEnd(FailsFrom(FUSE_WRITE, 3, EIO), "disk/big: Failed while writing destination file.");
}

TEST_P(FaultyDestination, FailsToCreate) {
    ExpectEnd(FailsFrom(FUSE_CREATE, 2, EIO), "disk/big: Failed to open destination file.");
}

TEST_P(FaultyDestination, FailsToClose) {
    Note("loss: the file counts as written when it is flushed, and a move removes its source then");
    const FaultyFileSystem disk(Root / "disk", {}, FailsFrom(FUSE_FLUSH, 1, EIO));
    EXPECT_EQ(Run({"first", "big", "disk"}), (End{0, Done("2 entries, 976.6 KB."), 2, 1000003}));
    ExpectTree({"first", "big"},
               {{"disk", "dir"}, {"disk/first", "file one"}, {"disk/big", AtFirst("big")}});
}

TEST_P(FaultyDestination, FailsToRemoveThePartialFile) {
    Note("it is named");
    int writes = 0;
    const FaultyFileSystem disk(Root / "disk", {}, [&writes](std::uint32_t operation) {
        const bool bFails = operation == FUSE_UNLINK || (operation == FUSE_WRITE && ++writes > 1);
        return bFails ? EIO : 0;
    });
    EXPECT_EQ(Run({"big", "disk"}), (End{1,
                                         "disk/big: Failed while writing destination file; 1 copy "
                                         "is not as long as its source was",
                                         0, 0}));
    const std::string partial = TreeOf(disk.Path()).at("big");
    ExpectTree({}, {{"disk", "dir"}, {"disk/big", partial}});
}

// It holds "a" and "b", of which "b" comes second.
class FaultySource : public Torture {
protected:
    FaultySource() {
        WriteFile(Root / "outside/big", Big);
        Prepared();
        fs::create_directory(Root / "to");
    }

    // Taken are the names that a move has taken away; Arrived is what lies below "to".
    void ExpectEnd(const Files& Contents, const FaultyFileSystem::Fault& Fault, const End& Wanted,
                   const std::set<std::string>& Taken, const Tree& Arrived,
                   const std::vector<std::string>& Sources = {"disk/a", "disk/b"}) const {
        const FaultyFileSystem disk(Root / "disk", Contents, Fault);
        std::vector<std::string> arguments = Sources;
        arguments.emplace_back("to");
        EXPECT_EQ(Run(arguments), Wanted);
        EXPECT_EQ(TreeOf(Root / "to"), Arrived);
        EXPECT_EQ(TreeOf(Root / "outside"),
                  (Tree{{"big", AtFirst("outside/big")}, {"file", AtFirst("outside/file")}}));
        for (const auto& [name, file] : Contents) {
            EXPECT_EQ(disk.Names().count(name), IsMove() && Taken.count(name) != 0 ? 0U : 1U)
                << name;
        }
    }
    // The directory itself is the source.
    void ExpectWholeEnd(const Files& Contents, const FaultyFileSystem::Fault& Fault,
                        const End& Wanted, const std::set<std::string>& Taken = {},
                        const Tree& Arrived = {}) const {
        ExpectEnd(Contents, Fault, Wanted, Taken, Arrived, {"disk"});
    }

    const FaultyFileSystem::Fault NothingFails;
    const std::string Big = PatternBytes(1000000);
    const Files Two{{"a", {"one"}}, {"b", {Big}}};
    const Tree First{{"a", "file one"}};
};

INSTANTIATE_TEST_SUITE_P(Verbs, FaultySource, kBothVerbs);

TEST_P(FaultySource, FailsToRead) {
    ExpectEnd(Two, FailsFrom(FUSE_READ, 4, EIO),
              {1, "disk/b: Failed while reading source file.", 1, 3}, {"a"}, First);
}

TEST_P(FaultySource, FailsToOpen) {
    ExpectEnd(Two, FailsFrom(FUSE_OPEN, 2, EIO),
              {1, "disk/b: Failed to open source file. (Input/output error)", 1, 3}, {"a"}, First);
}

TEST_P(FaultySource, FailsToList) {
    ExpectWholeEnd(Two, FailsFrom(FUSE_READDIR, 1, EIO), {1, "disk: Input/output error", 0, 0});
}

// The look and the count come before.
TEST_P(FaultySource, FailsToListWhatHasBeenCounted) {
    ExpectWholeEnd(Two, FailsFrom(FUSE_READDIR, 5, EIO), {1, "disk: Input/output error", 1, 0}, {},
                   {{"disk", "dir"}});
}

TEST_P(FaultySource, FailsToRemove) {
    const End copied{0, Done("2 entries, 976.6 KB."), 2, 1000003};
    const End notMoved{1, "Copied data but could not remove original 'disk/a': Input/output error",
                       1, 3};
    Tree arrived = First;
    if (!IsMove()) {
        arrived["b"] = AtFirst("outside/big");
    }
    ExpectEnd(Two, FailsFrom(FUSE_UNLINK, 1, EIO), IsMove() ? notMoved : copied, {}, arrived);
}

TEST_P(FaultySource, SaysThatAFileIsLarger) {
    Note("a move has removed it by then");
    ExpectEnd({{"a", {"one"}}, {"b", {"two", 1000}}}, NothingFails,
              {1,
               "files have become shorter since they were counted, by 997 B; 1 copy is not as long "
               "as its source was",
               2, 6},
              {"a", "b"}, {{"a", "file one"}, {"b", "file two"}});
}

TEST_P(FaultySource, SaysThatAFileIsAsLargeAsCanBe) {
    Note("a move has removed it by then");
    ExpectEnd({{"a", {"one"}}, {"b", {"two", kLargest - 3}}}, NothingFails,
              {1,
               "files have become shorter since they were counted, by 8388608.0 TB; 1 copy is not "
               "as long as its source was",
               2, 6},
              {"a", "b"}, {{"a", "file one"}, {"b", "file two"}});
}

TEST_P(FaultySource, SaysThatFilesAreLargerThanANumber) {
    Note("the totals begin again at nothing, the room is judged rightly");
    ExpectEnd({{"a", {"one", kLargest}}, {"b", {"two", kLargest}}, {"c", {"six", 1000}}},
              NothingFails,
              {1,
               "files have become shorter since they were counted, by 989 B; 3 copies are not as "
               "long as their sources were",
               3, 9},
              {"a", "b", "c"}, {{"a", "file one"}, {"b", "file two"}, {"c", "file six"}},
              {"disk/a", "disk/b", "disk/c"});
}

TEST_P(FaultySource, SaysThatAFileIsSmaller) {
    Note("the kernel gives no more of it");
    ExpectEnd({{"a", {"one"}}, {"b", {"two", 1}}}, NothingFails, {0, Done("2 entries, 4 B."), 2, 4},
              {"a", "b"}, {{"a", "file one"}, {"b", "file t"}});
}

TEST_P(FaultySource, SaysThatAFileHasLessThanNothing) {
    ExpectWholeEnd({{"a", {"one", kLargest + 2}}}, NothingFails,
                   {1, "disk/a: Input/output error", 0, 0});
}

TEST_P(FaultySource, HasALongerNameThanTheDestinationTakes) {
    const std::string longName(300, 'b');
    ExpectWholeEnd(
        {{"a", {"one"}}, {longName, {"two"}}}, NothingFails,
        {1, "Failed checking destination 'to/disk/" + longName + "': File name too long", 2, 3},
        {"a"}, {{"disk", "dir"}, {"disk/a", "file one"}});
}

TEST_P(FaultySource, HasANameWithASlash) {
    ExpectWholeEnd({{"../outside/a", {"one"}}}, NothingFails,
                   {1, "disk: Input/output error", 0, 0});
}

// The list of names has it once more than there should be.
TEST_P(FaultySource, HasANameThatLeadsUp) {
    ExpectWholeEnd({{"..", {"up"}}, {"a", {"one"}}}, NothingFails,
                   IsMove() ? End{1,
                                  "Copied data but could not remove original 'disk': Device or "
                                  "resource busy",
                                  2, 3}
                            : End{0, Done("2 entries, 3 B."), 2, 3},
                   {"a"}, {{"disk", "dir"}, {"disk/a", "file one"}});
}

} // namespace
