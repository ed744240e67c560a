// A source changes in the middle of a copy or a move.

#include "midway_fixture.h"

#include <sys/mount.h>

namespace {

class SourceMidway : public Midway {
protected:
    SourceMidway() { fs::create_directory(To); }

    // Makes something else of what is there at first.
    std::function<void()> Replacing(const std::string& Name,
                                    const std::function<void(const fs::path&)>& Make) const {
        return [=, this] {
            fs::remove_all(Root / Name);
            Make(Root / Name);
        };
    }
    std::function<void()> Resizing(std::uintmax_t Bytes) const {
        return [this, Bytes] { fs::resize_file(Root / "big", Bytes); };
    }
    static void Leave(const fs::path& /*Path*/) {}
    static void MakeFile(const fs::path& Path) { WriteFile(Path, "new"); }
    static void MakeDirectory(const fs::path& Path) { WriteFile(Path / "new", "new"); }
    static std::function<void(const fs::path&)> LinkTo(const std::string& Target) {
        return [Target](const fs::path& Path) { fs::create_symlink(Target, Path); };
    }

    const ScopedMount Disk = MountTmpfs(Root / "disk", "size=4m");
};

INSTANTIATE_TEST_SUITE_P(Verbs, SourceMidway, kBothVerbs);

TEST_P(SourceMidway, Grows) {
    EXPECT_EQ(RunWhile(Resizing(1500000)),
              (End{1, "1 copy is not as long as its source was", 4, 1500008}));
    const std::string grown = TreeOf(To).at("big");
    ExpectTree(All, Arrived({"first", "last", "last/file"},
                            {{"big", IsMove() ? "" : grown}, {"disk/to/big", grown}}));
}

TEST_P(SourceMidway, Shrinks) {
    Note("a move has removed it by then");
    EXPECT_EQ(RunWhile(Resizing(700000)),
              (End{1,
                   "files have become shorter since they were counted, by 340.4 KB; 1 copy is not "
                   "as long as its source was",
                   4, 700008}));
    const std::string shrunk = TreeOf(To).at("big");
    ExpectTree(All, Arrived({"first", "last", "last/file"},
                            {{"big", IsMove() ? "" : shrunk}, {"disk/to/big", shrunk}}));
}

// It is open, so all of it comes.
TEST_P(SourceMidway, Vanishes) {
    EXPECT_EQ(RunWhile(Replacing("big", Leave)), Whole);
    ExpectTree(All, Arrived(All, {{"big", ""}}));
}

TEST_P(SourceMidway, BecomesAnotherFile) {
    Note("loss: a move removes the file that has taken its name");
    EXPECT_EQ(RunWhile(Replacing("big", MakeFile)), Whole);
    ExpectTree(All, Arrived(All, {{"big", IsMove() ? "" : "file new"}}));
}

TEST_P(SourceMidway, BecomesALink) {
    Note("a move removes the link, and not what it leads to");
    EXPECT_EQ(RunWhile(Replacing("big", LinkTo("outside/file"))), Whole);
    ExpectTree(All, Arrived(All, {{"big", IsMove() ? "" : "link outside/file"}}));
}

TEST_P(SourceMidway, BecomesADirectory) {
    const End end = RunWhile(Replacing("big", MakeDirectory));
    const Tree directory{{"big", "dir"}, {"big/new", "file new"}};
    if (IsMove()) {
        EXPECT_EQ(end,
                  (End{1, "Copied data but could not remove original 'big': Directory not empty", 2,
                       1048579}));
        ExpectTree({"first"}, Arrived({"first", "big"}, directory));
    } else {
        EXPECT_EQ(end, Whole);
        ExpectTree({}, Arrived(All, directory));
    }
}

TEST_P(SourceMidway, IsUnmountedLazily) {
    const ScopedMount sources = MountTmpfs(Root / "sources", "size=4m");
    WriteFile(sources.Path() / "first", "one");
    WriteFile(sources.Path() / "last", "three");
    WriteFile(sources.Path() / "big", PatternBytes(1 << 20));
    const ReadGate gate(sources.Path() / "big", {.Nth = 3},
                        [&sources] { EXPECT_EQ(umount2(sources.Path().c_str(), MNT_DETACH), 0); });
    EXPECT_EQ(Run({"sources/first", "sources/big", "sources/last", To.string()}),
              (End{1, "Source does not exist: sources/last", 2, 1048579}));
    EXPECT_TRUE(gate.WasReached());
    ExpectTree({}, Arrived({"first", "big"}, {{"sources", "dir"}}));
}

class NextSourceMidway : public SourceMidway {};

INSTANTIATE_TEST_SUITE_P(Verbs, NextSourceMidway, kBothVerbs);

TEST_P(NextSourceMidway, Vanishes) {
    EXPECT_EQ(RunWhile(Replacing("last", Leave)),
              (End{1, "Source does not exist: last", 2, 1048579}));
    ExpectTree({"first", "big"}, Arrived({"first", "big"}, {{"last", ""}, {"last/file", ""}}));
}

TEST_P(NextSourceMidway, IsEmptied) {
    EXPECT_EQ(RunWhile(Replacing("last/file", Leave)),
              (End{1, "1 entry vanished before the turn came to it", 3, 1048579}));
    ExpectTree(All, Arrived({"first", "big", "last"}, {{"last/file", ""}}));
}

TEST_P(NextSourceMidway, BecomesAFile) {
    EXPECT_EQ(RunWhile(Replacing("last", MakeFile)),
              (End{1, "1 entry vanished before the turn came to it", 3, 1048582}));
    ExpectTree(All, Arrived({"first", "big"}, {{"last", IsMove() ? "" : "file new"},
                                               {"last/file", ""},
                                               {"disk/to/last", "file new"}}));
}

TEST_P(NextSourceMidway, BecomesALinkToADirectory) {
    Note("followed; a move removes the files behind it once they are copied");
    EXPECT_EQ(RunWhile(Replacing("last", LinkTo("outside"))),
              (End{1,
                   "files have become shorter since they were counted, by 1 B; 1 copy is not as "
                   "long as its source was",
                   4, 1048583}));
    std::vector<std::string> taken = All;
    taken.emplace_back("outside/file");
    ExpectTree(taken, Arrived({"first", "big", "last"}, {{"last", IsMove() ? "" : "link outside"},
                                                         {"last/file", ""},
                                                         {"disk/to/last/file", "file data"}}));
}

TEST_P(NextSourceMidway, HoldsALinkToAFile) {
    EXPECT_EQ(RunWhile(Replacing("last/file", LinkTo("../outside/file"))),
              (End{1,
                   "files have become shorter since they were counted, by 1 B; 1 copy is not as "
                   "long as its source was",
                   4, 1048583}));
    ExpectTree(All, Arrived({"first", "big", "last"},
                            {{"last/file", IsMove() ? "" : "link ../outside/file"},
                             {"disk/to/last/file", "file data"}}));
}

TEST_P(NextSourceMidway, HoldsALinkThatLeadsNowhere) {
    EXPECT_EQ(RunWhile(Replacing("last/file", LinkTo("nowhere"))),
              (End{1, "Source does not exist: last/file", 3, 1048579}));
    ExpectTree({"first", "big"},
               Arrived({"first", "big", "last"}, {{"last/file", "link nowhere"}}));
}

TEST_P(NextSourceMidway, HoldsADirectory) {
    EXPECT_EQ(RunWhile(Replacing("last/file", MakeDirectory)),
              (End{1, "files have become shorter since they were counted, by 2 B", 5, 1048582}));
    ExpectTree(All,
               Arrived({"first", "big", "last"}, {{"last/file", IsMove() ? "" : "dir"},
                                                  {"last/file/new", IsMove() ? "" : "file new"},
                                                  {"disk/to/last/file", "dir"},
                                                  {"disk/to/last/file/new", "file new"}}));
}

TEST_P(NextSourceMidway, HoldsAPipe) {
    Note("the sentence does not say which entry it is");
    EXPECT_EQ(RunWhile(Replacing("last/file", MakeFifo)), (End{1, "Invalid argument", 3, 1048579}));
    ExpectTree({"first", "big"}, Arrived({"first", "big", "last"}, {{"last/file", "fifo"}}));
}

} // namespace
