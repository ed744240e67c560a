// What `tarvane copy` and `tarvane move` keep of modes, dates and owners, entry by entry as cp and
// mv keep them, and that nothing is ever open to more people than its source. The programs are the
// real ones.

#include "child_processes.h"
#include "file_tree.h"
#include "mounts.h"
#include "needs.h"
#include "run_program.h"
#include "temporary_directory.h"

#include <cstdint>
#include <fcntl.h>
#include <ftw.h>
#include <iomanip>
#include <sstream>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;
using Strings = std::vector<std::string>;

constexpr mode_t kAllBits = 07777;
// Each bit by itself, and the usual ones.
constexpr mode_t kModes[] = {00001, 00002, 00004, 00010, 00020, 00040, 00100, 00200, 00400, 01000,
                             02000, 04000, 00600, 00640, 00644, 00755, 00000, 06755, 07777};
constexpr std::int64_t kBefore1970 = -1234567890;

// What is compared of each entry beside its mode and when it was modified.
struct Kept {
    bool bOwner = false;
    bool bAccessed = true;
};

std::string Octal(mode_t Mode) {
    std::ostringstream text;
    text << std::oct << std::setw(6) << std::setfill('0') << Mode;
    return text.str();
}

std::string Number(const timespec& Time) {
    return std::to_string(Time.tv_sec) + "." + std::to_string(Time.tv_nsec);
}

std::string Describe(const fs::path& Path, const Kept& What) {
    struct stat status {};
    EXPECT_EQ(::lstat(Path.c_str(), &status), 0) << Path;
    std::string text = Octal(status.st_mode) + " modified " + Number(status.st_mtim);
    // Looking at a directory changes when it was accessed.
    if (What.bAccessed && !S_ISDIR(status.st_mode)) {
        text += " accessed " + Number(status.st_atim);
    }
    if (What.bOwner) {
        text += " owner " + std::to_string(status.st_uid) + ":" + std::to_string(status.st_gid);
    }
    return text;
}

using Statuses = std::map<std::string, std::string>;

// Links are not followed.
Statuses StatusesBelow(const fs::path& Root, const Kept& What = {}) {
    Statuses statuses{{".", Describe(Root, What)}};
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(Root)) {
        statuses[entry.path().lexically_relative(Root)] = Describe(entry.path(), What);
    }
    return statuses;
}

void SetMode(const fs::path& Path, mode_t Mode) {
    ASSERT_EQ(::chmod(Path.c_str(), Mode), 0) << Path;
}

void SetTimes(const fs::path& Path, std::int64_t Seconds, long Nanoseconds) {
    const timespec times[] = {{Seconds - 1000, Nanoseconds / 2}, {Seconds, Nanoseconds}};
    ASSERT_EQ(::utimensat(AT_FDCWD, Path.c_str(), times, 0), 0) << Path;
}

// The permission bits that let others in.
mode_t Openness(mode_t Mode) {
    return Mode & 077;
}

class Preserved : public testing::Test {
protected:
    Preserved() {
        ::umask(022);
        SetMode(Root.Path(), 0777);
    }

    ProgramResult Tarvane(Strings Arguments) {
        Arguments.insert(Arguments.begin(), TARVANE_PROGRAM);
        return RunProgram(Arguments, Root.Path().string());
    }
    // As somebody without privileges.
    ProgramResult TarvaneAsUser(Strings Arguments) {
        const Strings user = {"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups",
                              TARVANE_PROGRAM};
        Arguments.insert(Arguments.begin(), user.begin(), user.end());
        return RunProgram(Arguments, Root.Path().string());
    }
    ProgramResult Shell(const std::string& Command) {
        return RunProgram({"/bin/sh", "-e", "-c", Command}, Root.Path().string());
    }

    // One file for each bit of a mode, and the usual modes; directories likewise.
    void MakeTree(const fs::path& Tree) {
        Strings names;
        long nanoseconds = 1;
        for (const mode_t mode : kModes) {
            const std::string name = Octal(mode).substr(2);
            WriteFile(Tree / "files" / name, "contents of " + name);
            SetTimes(Tree / "files" / name, kBefore1970 + nanoseconds, nanoseconds);
            SetMode(Tree / "files" / name, mode);
            fs::create_directories(Tree / "folders" / name);
            WriteFile(Tree / "folders" / name / "file", "x");
            names.push_back(name);
            nanoseconds += 123456;
        }
        for (const std::string& name : names) {
            SetTimes(Tree / "folders" / name / "file", 1000000000, 999999999);
            SetTimes(Tree / "folders" / name, kBefore1970, 5);
            SetMode(Tree / "folders" / name,
                    static_cast<mode_t>(std::stoul(name, nullptr, 8)) | 0500);
        }
        SetTimes(Tree / "folders", 1500000000, 1);
        SetTimes(Tree / "files", 1500000001, 2);
        SetTimes(Tree, 1500000002, 3);
        SetMode(Tree, 0750);
    }

    TemporaryDirectory Root;
};

TEST_F(Preserved, IsWhatCpKeepsForRoot) {
    NeedRoot();
    MakeTree(Root / "tree");
    ASSERT_EQ(Shell("chown 1:2 tree/files/0644; chown 3:4 tree/files/6755; chmod 6755 "
                    "tree/files/6755; chown 5:6 tree/folders/0755")
                  .Status,
              0);
    fs::create_directory(Root / "out");
    const Statuses before = StatusesBelow(Root / "tree", {.bOwner = true});
    const ProgramResult copied = Tarvane({"copy", "--preserve=all", "tree", "out"});
    EXPECT_EQ(copied.Status, 0) << copied.Errors;
    EXPECT_EQ(StatusesBelow(Root / "out/tree", {.bOwner = true}), before);
    EXPECT_EQ(before.size(), 3 + 3 * std::size(kModes));
    ASSERT_EQ(Shell("diff -r tree out/tree; cp -a tree by-cp").Status, 0);
    const Kept what{.bOwner = true, .bAccessed = false};
    EXPECT_EQ(StatusesBelow(Root / "out/tree", what), StatusesBelow(Root / "by-cp", what));
}

TEST_F(Preserved, IsModeAndTimesUnlessSomethingElseIsAskedFor) {
    NeedRoot();
    MakeTree(Root / "tree");
    ASSERT_EQ(Shell("chown -R 1:2 tree; chmod 6755 tree/files/6755").Status, 0);
    Statuses wanted = StatusesBelow(Root / "tree");
    ASSERT_EQ(Tarvane({"copy", "tree", "copied"}).Status, 0);
    // Those of root must not become programs that give everybody the rights of root.
    for (const char* name : {"files/2000", "files/4000", "files/6755", "files/7777", "folders/2000",
                             "folders/4000", "folders/6755", "folders/7777"}) {
        std::string& text = wanted.at(name);
        const unsigned long mode = std::stoul(text.substr(0, 6), nullptr, 8) & ~06000UL;
        text.replace(0, 6, Octal(static_cast<mode_t>(mode)));
    }
    EXPECT_EQ(StatusesBelow(Root / "copied"), wanted);
    struct stat status {};
    ASSERT_EQ(::stat((Root / "copied/files/0644").c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, 0U);
    EXPECT_EQ(status.st_gid, 0U);
}

TEST_F(Preserved, IsNothingWhenThatIsAskedFor) {
    WriteFile(Root / "secret", "x");
    SetMode(Root / "secret", 0600);
    SetTimes(Root / "secret", 1000000000, 0);
    const std::time_t before = std::time(nullptr);
    ASSERT_EQ(Tarvane({"copy", "--no-preserve", "secret", "copied"}).Status, 0);
    struct stat status {};
    ASSERT_EQ(::stat((Root / "copied").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & kAllBits, 0644U);
    EXPECT_GE(status.st_mtim.tv_sec, before);
}

TEST_F(Preserved, IsWhatCpKeepsForAnotherUser) {
    NeedRoot();
    MakeTree(Root / "tree");
    // What its owner cannot read, nobody but root copies.
    ASSERT_EQ(
        Shell("chmod -R u+r tree/files; chown -R 65534:65534 tree; find tree/folders -mindepth"
              " 1 -type d -exec chmod u+rx {} +")
            .Status,
        0);
    SetMode(Root / "tree/folders/0644", 0500);
    const Statuses before = StatusesBelow(Root / "tree");
    ASSERT_EQ(TarvaneAsUser({"copy", "-p", "tree", "copied"}).Status, 0);
    EXPECT_EQ(StatusesBelow(Root / "copied"), before);
    ASSERT_EQ(Shell("setpriv --reuid=65534 --regid=65534 --clear-groups cp -pr tree by-cp").Status,
              0);
    const Kept what{.bAccessed = false};
    EXPECT_EQ(StatusesBelow(Root / "copied", what), StatusesBelow(Root / "by-cp", what));
}

TEST_F(Preserved, IsWhatMvKeepsAcrossFileSystems) {
    NeedRoot();
    EnterPrivateMountNamespace();
    const ScopedMount disk = MountLoopDisk(Root / "disk", 64);
    const ScopedMount memory = MountTmpfs(Root / "memory", "size=16m");
    for (const auto& [from, to] :
         {std::pair{memory.Path(), disk.Path()}, std::pair{disk.Path(), memory.Path()}}) {
        MakeTree(from / "tree");
        ASSERT_EQ(Shell("chown 1:2 '" + (from / "tree/files/0644").string() + "'").Status, 0);
        const Statuses before = StatusesBelow(from / "tree", {.bOwner = true});
        const ProgramResult moved = Tarvane({"move", (from / "tree").string(), to.string()});
        EXPECT_EQ(moved.Status, 0) << moved.Errors;
        EXPECT_FALSE(fs::exists(from / "tree"));
        EXPECT_EQ(StatusesBelow(to / "tree", {.bOwner = true}), before);
        ASSERT_EQ(Shell("mv '" + (to / "tree").string() + "' '" + from.string() + "'").Status, 0);
        EXPECT_EQ(StatusesBelow(from / "tree", {.bOwner = true}), before);
        fs::remove_all(from / "tree");
    }
}

TEST_F(Preserved, IsEverythingOfARename) {
    MakeTree(Root / "tree");
    const Statuses before = StatusesBelow(Root / "tree");
    ASSERT_EQ(Tarvane({"move", "tree", "renamed"}).Status, 0);
    EXPECT_EQ(StatusesBelow(Root / "renamed"), before);
}

TEST_F(Preserved, IsThatOfTheLinkedFile) {
    WriteFile(Root / "there", "data");
    SetTimes(Root / "there", kBefore1970, 7);
    SetMode(Root / "there", 0604);
    fs::create_directory(Root / "tree");
    fs::create_symlink("../there", Root / "tree/link");
    const std::string before = Describe(Root / "there", {});
    ASSERT_EQ(Tarvane({"copy", "tree", "copied"}).Status, 0);
    EXPECT_EQ(Describe(Root / "copied/link", {}), before);
}

// It is only written to: what it was like stays, but for what is not meant for others.
TEST_F(Preserved, IsTheModeThatAFileHadWhichIsWrittenThroughALink) {
    fs::create_directory(Root / "to");
    for (const auto& [name, sourceMode] : {std::pair("open", 0644U), std::pair("secret", 0600U)}) {
        WriteFile(Root / name, "new");
        SetMode(Root / name, sourceMode);
        WriteFile(Root / "there" / name, "old");
        SetMode(Root / "there" / name, 0666);
        fs::create_symlink(std::string("../there/") + name, Root / "to" / name);
    }
    ASSERT_EQ(Tarvane({"copy", "-f", "--follow-links", "open", "secret", "to"}).Status, 0);
    EXPECT_EQ(ReadFile(Root / "there/open"), "new");
    EXPECT_EQ(fs::status(Root / "there/open").permissions(), fs::perms{0644});
    EXPECT_EQ(ReadFile(Root / "there/secret"), "new");
    EXPECT_EQ(fs::status(Root / "there/secret").permissions(), fs::perms{0600});
}

// Files that are replaced get what the source has, as cp -p does, and nothing else changes.
TEST_F(Preserved, IsDoneToWhatTheChoicesReplace) {
    struct Case {
        Strings Options;
        // Of the two taken files: the one that is older than its source, and the newer one.
        bool bOlderReplaced;
        bool bNewerReplaced;
    };
    const Case cases[] = {{{"-f"}, true, true},
                          {{"-n"}, false, false},
                          {{"-u"}, true, false},
                          {{"--on-conflict=compare"}, true, true},
                          {{"--on-conflict=larger"}, true, false},
                          {{"-f", "-v"}, true, true}};
    for (const Case& one : cases) {
        SCOPED_TRACE(one.Options.front());
        ASSERT_EQ(Shell("rm -rf tree out; mkdir -p tree/sub out/tree/sub").Status, 0);
        for (const char* name : {"older", "newer", "free"}) {
            WriteFile(Root / "tree/sub" / name, std::string("source ") + name);
            SetMode(Root / "tree/sub" / name, 0640);
            SetTimes(Root / "tree/sub" / name, 1200000000, 11);
        }
        WriteFile(Root / "out/tree/sub/older", "old");
        WriteFile(Root / "out/tree/sub/newer", "longer than its source");
        SetTimes(Root / "out/tree/sub/older", 1100000000, 22);
        SetTimes(Root / "out/tree/sub/newer", 1300000000, 33);
        for (const char* path : {"out/tree/sub/older", "out/tree/sub/newer"}) {
            SetMode(Root / path, 0666);
        }
        SetMode(Root / "tree/sub", 0711);
        SetMode(Root / "out/tree/sub", 0751);
        const std::string older = Describe(Root / "out/tree/sub/older", {.bAccessed = false});
        const std::string newer = Describe(Root / "out/tree/sub/newer", {.bAccessed = false});
        const std::string source = Describe(Root / "tree/sub/free", {.bAccessed = false});
        Strings arguments = {"copy", "tree", "out"};
        arguments.insert(arguments.end(), one.Options.begin(), one.Options.end());
        const ProgramResult copied = Tarvane(arguments);
        EXPECT_EQ(copied.Status, 0) << copied.Errors;
        const Kept what{.bAccessed = false};
        EXPECT_EQ(Describe(Root / "out/tree/sub/older", what), one.bOlderReplaced ? source : older);
        EXPECT_EQ(Describe(Root / "out/tree/sub/newer", what), one.bNewerReplaced ? source : newer);
        EXPECT_EQ(Describe(Root / "out/tree/sub/free", what), source);
        // A directory that was there before keeps its own.
        struct stat status {};
        ASSERT_EQ(::stat((Root / "out/tree/sub").c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & kAllBits, 0751U);
    }
}

TEST_F(Preserved, IsDoneToNewNames) {
    WriteFile(Root / "tree/file", "new");
    SetMode(Root / "tree/file", 0604);
    SetTimes(Root / "tree/file", 1200000000, 11);
    WriteFile(Root / "out/tree/file", "old");
    const std::string old = Describe(Root / "out/tree/file", {});
    const std::string source = Describe(Root / "tree/file", {});
    ASSERT_EQ(Tarvane({"copy", "--on-conflict=keep-both", "tree", "out"}).Status, 0);
    Strings others;
    for (const fs::directory_entry& entry : fs::directory_iterator(Root / "out/tree")) {
        if (entry.path().filename() != "file") {
            others.push_back(Describe(entry.path(), {}));
        }
    }
    EXPECT_EQ(others, Strings{source});
    EXPECT_EQ(Describe(Root / "out/tree/file", {}), old);
}

// A second run after -n finds equal files, and makes their modes and dates those of the sources.
TEST_F(Preserved, IsDoneToWhatIsFoundEqual) {
    MakeTree(Root / "tree");
    ASSERT_EQ(Tarvane({"copy", "--no-preserve", "tree/files", "out"}).Status, 0);
    ASSERT_EQ(Tarvane({"copy", "--on-conflict=compare", "-T", "tree/files", "out"}).Status, 0);
    Statuses wanted = StatusesBelow(Root / "tree/files");
    wanted["."] = Describe(Root / "out", {});
    EXPECT_EQ(StatusesBelow(Root / "out"), wanted);
}

TEST_F(Preserved, IsWhatTheUmaskGivesWithoutASourceThatTells) {
    WriteFile(Root / "file", "x");
    SetMode(Root / "file", 0640);
    ::umask(027);
    ASSERT_EQ(Tarvane({"copy", "-T", "file", "made/parents/file"}).Status, 0);
    ::umask(022);
    for (const char* made : {"made", "made/parents"}) {
        struct stat status {};
        ASSERT_EQ(::stat((Root / made).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & kAllBits, 0750U) << made;
    }
}

// Watches a destination in a process of its own. Its verdict comes when Stop is written.
class Watcher {
public:
    // Until it is its turn, a file that is to be replaced has Old in it, and stays as it was.
    Watcher(const fs::path& Source, const fs::path& Destination, const std::string& Old = "") {
        EXPECT_EQ(::pipe2(Stop, O_CLOEXEC), 0);
        EXPECT_EQ(::pipe2(Verdict, O_CLOEXEC), 0);
        Process = ::fork();
        if (Process == 0) {
            ::fcntl(Stop[0], F_SETFL, O_NONBLOCK);
            std::string found;
            std::uint64_t looks = 0;
            char byte = 0;
            if (::write(Verdict[1], &byte, 1) != 1) {
                ::_exit(1);
            }
            while (::read(Stop[0], &byte, 1) != 1) {
                found += Look(Source, Destination, Old, looks);
            }
            found = std::to_string(looks) + "\n" + found.substr(0, 2000);
            const ssize_t written = ::write(Verdict[1], found.data(), found.size());
            ::_exit(written < 0 ? 1 : 0);
        }
        ::close(Verdict[1]);
        // What is to be watched begins when the watcher has.
        char begun = 0;
        EXPECT_EQ(::read(Verdict[0], &begun, 1), 1);
    }
    ~Watcher() {
        ::kill(Process, SIGKILL);
        ::waitpid(Process, nullptr, 0);
    }
    Watcher(const Watcher&) = delete;
    Watcher& operator=(const Watcher&) = delete;

    // The number of entries that were looked at, and what was more open than its source.
    std::pair<std::uint64_t, std::string> Finish() {
        EXPECT_EQ(::write(Stop[1], "x", 1), 1);
        std::string text;
        char block[4096];
        ssize_t size = 0;
        while ((size = ::read(Verdict[0], block, sizeof(block))) > 0) {
            text.append(block, static_cast<std::size_t>(size));
        }
        const std::size_t line = text.find('\n');
        return {std::stoull("0" + text.substr(0, line)), text.substr(line + 1)};
    }

private:
    static std::string Look(const fs::path& Source, const fs::path& Destination,
                            const std::string& Old, std::uint64_t& InOutLooks) {
        std::string found;
        std::error_code ec;
        for (fs::recursive_directory_iterator entry(Destination, ec), end; !ec && entry != end;
             entry.increment(ec)) {
            struct stat copy {};
            struct stat source {};
            const fs::path name = entry->path().lexically_relative(Destination);
            // Looked at first, as a file is closed before its new contents come.
            const bool bOld =
                !Old.empty() && (entry->is_directory(ec) || ReadFile(entry->path()) == Old);
            if (::lstat(entry->path().c_str(), &copy) == 0 &&
                ::stat((Source / name).c_str(), &source) == 0) {
                ++InOutLooks;
                const bool bOpen = (Openness(copy.st_mode) & ~Openness(source.st_mode)) != 0;
                if (bOpen && !bOld) {
                    found += name.string() + "\n";
                }
            }
        }
        return found;
    }

    int Stop[2] = {-1, -1};
    int Verdict[2] = {-1, -1};
    pid_t Process = -1;
};

class PreservedTree : public Preserved {
protected:
    static constexpr int kFolders = 10;
    static constexpr int kFiles = 60;

    PreservedTree() {
        const mode_t modes[] = {0600, 0640, 0604, 0644, 0700, 0755};
        for (int folder = 0; folder < kFolders; ++folder) {
            const fs::path path = Root / "tree" / ("folder" + std::to_string(folder));
            for (int file = 0; file < kFiles; ++file) {
                const fs::path name = path / ("file" + std::to_string(file));
                WriteFile(name, "contents");
                SetTimes(name, 1000000000 + file, folder);
                SetMode(name, modes[file % 6]);
            }
            SetTimes(path, 1400000000, folder);
            SetMode(path, folder % 2 == 0 ? 0700 : 0755);
        }
    }
};

TEST_F(PreservedTree, IsNeverMoreOpenThanItsSource) {
    fs::create_directory(Root / "out");
    const Statuses before = StatusesBelow(Root / "tree");
    Watcher watcher(Root / "tree", Root / "out/tree");
    EXPECT_EQ(Tarvane({"copy", "tree", "out"}).Status, 0);
    auto [looks, found] = watcher.Finish();
    EXPECT_GT(looks, 0U);
    EXPECT_EQ(found, "");
    EXPECT_EQ(StatusesBelow(Root / "out/tree"), before);
}

TEST_F(PreservedTree, IsNeverMoreOpenWhereFilesAreReplaced) {
    fs::create_directory(Root / "out");
    ASSERT_EQ(Tarvane({"copy", "tree", "out"}).Status, 0);
    for (const char* option : {"-f", "--on-conflict=compare"}) {
        ASSERT_EQ(Shell("chmod -R a+rwX out; find out -type f -exec sh -c 'for f; do echo older "
                        ">\"$f\"; done' sh {} +")
                      .Status,
                  0);
        Watcher watcher(Root / "tree", Root / "out/tree", "older\n");
        EXPECT_EQ(Tarvane({"copy", option, "tree", "out"}).Status, 0);
        const auto [looks, found] = watcher.Finish();
        EXPECT_GT(looks, 0U);
        EXPECT_EQ(found, "");
        const Kept what{.bAccessed = false};
        const Statuses copied = StatusesBelow(Root / "out/tree", what);
        for (const auto& [path, status] : StatusesBelow(Root / "tree", what)) {
            if (fs::is_regular_file(Root / "tree" / path)) {
                ASSERT_EQ(copied.at(path), status) << path;
            }
        }
    }
}

// How many entries a directory has below it; it may be changing.
int CountBelow(const fs::path& Directory) {
    int count = 0;
    std::error_code ec;
    for (fs::recursive_directory_iterator entry(Directory, ec), end; !ec && entry != end;
         entry.increment(ec)) {
        ++count;
    }
    return count;
}

TEST_F(PreservedTree, IsPrivateAfterAKillAndCompleteAfterASecondRun) {
    for (int part = 1; part <= 10; ++part) {
        SCOPED_TRACE(part);
        ASSERT_EQ(Shell("rm -rf out; mkdir out").Status, 0);
        const std::string from = (Root / "tree").string();
        const std::string to = (Root / "out").string();
        const pid_t program = ::fork();
        if (program == 0) {
            ::execl(TARVANE_PROGRAM, TARVANE_PROGRAM, "copy", "-q", from.c_str(), to.c_str(),
                    nullptr);
            ::_exit(127);
        }
        const int enough = kFolders * kFiles * part / 12;
        int status = 0;
        while (CountBelow(Root / "out") < enough && ::waitpid(program, &status, WNOHANG) == 0) {}
        ::kill(program, SIGKILL);
        ::waitpid(program, &status, 0);
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(Root / "out")) {
            struct stat copy {};
            struct stat source {};
            ASSERT_EQ(::lstat(entry.path().c_str(), &copy), 0);
            const fs::path name = entry.path().lexically_relative(Root / "out");
            ASSERT_EQ(::stat((Root.Path() / name).c_str(), &source), 0) << name;
            EXPECT_EQ(Openness(copy.st_mode) & ~Openness(source.st_mode), 0U) << name;
        }
        const ProgramResult again = Tarvane({"copy", "-f", "tree", "out"});
        EXPECT_EQ(again.Status, 0) << again.Errors;
        const Kept what{.bAccessed = false};
        const Statuses wanted = StatusesBelow(Root / "tree", what);
        const Statuses copied = StatusesBelow(Root / "out/tree", what);
        ASSERT_EQ(copied.size(), wanted.size());
        for (const auto& [path, described] : wanted) {
            // Directories that were there before keep their own.
            if (fs::is_regular_file(Root / "tree" / path)) {
                ASSERT_EQ(copied.at(path), described) << path;
            }
        }
        EXPECT_EQ(Shell("diff -r tree out/tree").Status, 0);
    }
}

} // namespace
