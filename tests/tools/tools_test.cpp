// What all tools have in common: they explain themselves, and install nothing that nobody wants.

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "file_tree.h"
#include "run_program.h"
#include "temporary_directory.h"

namespace {

namespace fs = std::filesystem;

// A copy of the tools, with nothing around it to work on.
class Tools : public testing::Test {
protected:
    Tools() {
        fs::copy(fs::path(TARVANE_SOURCE_DIRECTORY) / "tools", Copy, fs::copy_options::recursive);
    }

    static bool IsProgram(const fs::directory_entry& Entry) {
        return Entry.is_regular_file() &&
               (Entry.status().permissions() & fs::perms::owner_exec) != fs::perms::none;
    }

    const TemporaryDirectory Directory;
    const fs::path Copy = Directory.Path() / "tools";
};

} // namespace

TEST_F(Tools, TellWhatTheyDoAndDoNothingElseThen) {
    const Tree before = TreeOf(Directory.Path());
    int tools = 0;
    for (const fs::directory_entry& entry : fs::directory_iterator(Copy)) {
        if (!IsProgram(entry)) {
            continue;
        }
        ++tools;
        const std::string name = entry.path().filename();
        SCOPED_TRACE(name);
        const ProgramResult help = RunProgram({entry.path(), "--help"}, Directory.Path());
        EXPECT_EQ(help.Status, 0);
        EXPECT_EQ(help.Errors, "");
        EXPECT_NE(help.Output.substr(0, 1), "\n");
        EXPECT_GE(std::count(help.Output.begin(), help.Output.end(), '\n'), 3) << help.Output;
        EXPECT_NE(help.Output.find(name), std::string::npos) << help.Output;
    }
    EXPECT_GE(tools, 12);
    EXPECT_EQ(TreeOf(Directory.Path()), before);
}

TEST_F(Tools, InstallNothingWhenTheyMayNot) {
    WriteFile(Copy / "packages", "kind some-package a-command-that-is-missing\n"
                                 "other another-package another-missing-command\n"
                                 "kind coreutils true\n");
    const fs::path installed = Directory.Path() / "installed";
    const fs::path aptGet = Directory.Path() / "apt-get";
    WriteFile(aptGet, "#!/bin/sh\ntouch '" + installed.native() + "'\n");
    fs::permissions(aptGet, fs::perms::owner_all);

    const ProgramResult result =
        RunProgram({Copy / "install-packages", "kind"}, Directory.Path(),
                   {{"TARVANE_INSTALL", "no"},
                    {"PATH", Directory.Path().native() + ":" + std::string(std::getenv("PATH"))}});

    EXPECT_EQ(result.Errors,
              "Missing, by the names of Debian 12; install them as root: some-package\n");
    EXPECT_EQ(result.Status, 1);
    EXPECT_FALSE(fs::exists(installed));
}
