// What `tarvane copy` and `tarvane move` carry over by their options, as a user finds it on the
// disk.

#include "file_tree.h"
#include "mounts.h"
#include "needs.h"
#include "run_program.h"
#include "temporary_directory.h"

#include <sys/stat.h>

#include <gtest/gtest.h>

namespace {

constexpr std::int64_t kYear2001 = 1000000000;

class PreserveOptions : public testing::Test {
protected:
    PreserveOptions() {
        WriteFile(Root / "tree/sub/file", "data");
        for (const char* name : {"tree/sub/file", "tree/sub", "tree"}) {
            const mode_t mode = std::filesystem::is_directory(Root / name) ? 0711 : 0640;
            EXPECT_EQ(::chmod((Root / name).c_str(), mode), 0);
            EXPECT_EQ(::chown((Root / name).c_str(), ::geteuid(), ::getegid()), 0);
            SetModifiedTime(Root / name, kYear2001, 123456789);
        }
        std::filesystem::create_directory(Root / "to");
    }

    ProgramResult Tarvane(std::vector<std::string> Arguments) {
        // The user's umask.
        const std::string script = "umask 027; exec \"$@\"";
        Arguments.insert(Arguments.begin(), {"sh", "-c", script, "sh", TARVANE_PROGRAM});
        return RunProgram(Arguments, Root.Path().string());
    }

    struct stat StatusOf(const std::string& Name) const {
        struct stat status {};
        EXPECT_EQ(::stat((Root / Name).c_str(), &status), 0) << Name;
        return status;
    }
    mode_t ModeOf(const std::string& Name) const { return StatusOf(Name).st_mode & 07777; }
    bool IsOfSource(const std::string& Name) const {
        const timespec time = StatusOf(Name).st_mtim;
        return time.tv_sec == kYear2001 && time.tv_nsec == 123456789;
    }

    void ExpectKept() {
        EXPECT_EQ(ModeOf("to/tree"), 0711U);
        EXPECT_EQ(ModeOf("to/tree/sub"), 0711U);
        EXPECT_EQ(ModeOf("to/tree/sub/file"), 0640U);
        for (const char* name : {"to/tree", "to/tree/sub", "to/tree/sub/file"}) {
            EXPECT_TRUE(IsOfSource(name)) << name;
        }
    }

    TemporaryDirectory Root;
};

TEST_F(PreserveOptions, ACopyKeepsModesAndTimes) {
    const ProgramResult result = Tarvane({"copy", "tree", "to"});
    EXPECT_EQ(result.Status, 0);
    EXPECT_EQ(result.Errors, "Copied 3 entries, 4 B.\n");
    ExpectKept();
}

TEST_F(PreserveOptions, AMoveToAnotherFileSystemKeepsThemAndForRootTheOwner) {
    EnterPrivateMountNamespace();
    const ScopedMount disk = MountTmpfs(Root / "to", "");
    EXPECT_EQ(::lchown((Root / "tree/sub/file").c_str(), 1234, 2345), 0);
    EXPECT_EQ(Tarvane({"move", "tree", "to"}).Status, 0);
    ExpectKept();
    EXPECT_EQ(StatusOf("to/tree/sub/file").st_uid, 1234U);
    EXPECT_EQ(StatusOf("to/tree/sub/file").st_gid, 2345U);
    EXPECT_FALSE(std::filesystem::exists(Root / "tree"));
}

TEST_F(PreserveOptions, CopiesAreNewWhereNothingIsPreserved) {
    EXPECT_EQ(Tarvane({"copy", "--no-preserve", "tree", "to"}).Status, 0);
    EXPECT_EQ(ModeOf("to/tree"), 0750U);
    EXPECT_EQ(ModeOf("to/tree/sub/file"), 0640U);
    EXPECT_FALSE(IsOfSource("to/tree"));
    EXPECT_FALSE(IsOfSource("to/tree/sub/file"));
}

TEST_F(PreserveOptions, CarriesOverNothingElseThanTheList) {
    EXPECT_EQ(Tarvane({"copy", "--preserve=times", "tree", "to"}).Status, 0);
    EXPECT_EQ(ModeOf("to/tree"), 0750U);
    EXPECT_TRUE(IsOfSource("to/tree"));
    EXPECT_TRUE(IsOfSource("to/tree/sub/file"));
}

TEST_F(PreserveOptions, KeepsTheOwnerOfACopyThatIsAskedFor) {
    NeedRoot();
    EXPECT_EQ(::chown((Root / "tree/sub/file").c_str(), 1234, 2345), 0);
    EXPECT_EQ(Tarvane({"copy", "-p", "tree", "to"}).Status, 0);
    ExpectKept();
    EXPECT_EQ(StatusOf("to/tree/sub/file").st_uid, 1234U);
}

TEST_F(PreserveOptions, KeepsThemWithoutAPreflightToo) {
    EXPECT_EQ(Tarvane({"copy", "--no-preflight", "tree", "to"}).Status, 0);
    ExpectKept();
}

} // namespace
