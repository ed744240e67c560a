// The tool that measures whole runs: that it measures, notices a program that does not do its work,
// and takes away all that it made. How fast anything is, is not tested.

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "becomes_true.h"
#include "mounts.h"
#include "program_in_terminal.h"
#include "run_program.h"
#include "sanitizer_options.h"
#include "temporary_directory.h"

namespace {

namespace fs = std::filesystem;

std::string TextOf(const fs::path& File) {
    std::ifstream in(File);
    return {std::istreambuf_iterator<char>(in), {}};
}

bool HasLoopDeviceBelow(const fs::path& Directory) {
    std::error_code ec;
    for (const fs::directory_entry& device : fs::directory_iterator("/sys/block")) {
        const fs::path backing = device.path() / "loop/backing_file";
        if (fs::exists(backing, ec) && TextOf(backing).starts_with(Directory.string() + "/")) {
            return true;
        }
    }
    return false;
}

class BenchTool : public testing::Test {
protected:
    BenchTool() { NeedLoopDevices(); }

    std::vector<std::string> Command(const fs::path& Program, const std::string& Pairs) const {
        return {TARVANE_BENCH, "--quick",
                "--pairs",     Pairs,
                "--program",   Program,
                "--dir",       Work.Path(),
                "--json",      Results / "figures.json",
                "--chart",     Results / "chart.svg",
                "deep-200"};
    }

    // A loop device goes once the last process has let go of its mount.
    void ExpectNothingLeft() const {
        EXPECT_TRUE(fs::is_empty(Work.Path()));
        EXPECT_EQ(TextOf("/proc/self/mountinfo").find(Work.Path()), std::string::npos);
        EXPECT_TRUE(BecomesTrue("the loop device is gone",
                                [this] { return !HasLoopDeviceBelow(Work.Path()); }));
    }

    const TemporaryDirectory Work;
    const TemporaryDirectory Results;
};

TEST_F(BenchTool, MeasuresTheRowThatIsNamed) {
    EnvironmentVariables environment;
    LetItBeTraced(environment);
    const ProgramResult result = RunProgram(Command(TARVANE_PROGRAM, "2"), "", environment);

    EXPECT_EQ(result.Errors, "The trees are made from --seed 1.\ndeep-200 ...\n");
    EXPECT_EQ(result.Status, 0);
    EXPECT_NE(result.Output.find("\n| deep-200 | 200 levels deep, 1,000 files, tmpfs | cp -r "),
              std::string::npos)
        << result.Output;
    const nlohmann::json figures = nlohmann::json::parse(TextOf(Results / "figures.json"));
    ASSERT_EQ(figures["rows"].size(), 1U);
    const nlohmann::json& row = figures["rows"][0];
    EXPECT_EQ(row["runs"]["ours"].size(), 2U);
    EXPECT_EQ(row["runs"]["cp -r"].size(), 2U);
    EXPECT_GT(row["memory"], 0);
    EXPECT_GT(row["calls"]["openat"], 1000);
    EXPECT_TRUE(TextOf(Results / "chart.svg").starts_with("<svg "));
    ExpectNothingLeft();
}

TEST_F(BenchTool, MeasuresNoProgramThatCopiesNothing) {
    const ProgramResult result = RunProgram(Command("/bin/true", "1"));

    EXPECT_EQ(result.Status, 1);
    EXPECT_NE(result.Errors.find("/out/tree is not what it should be: diff: "), std::string::npos)
        << result.Errors;
    EXPECT_EQ(result.Output, "");
    ExpectNothingLeft();
}

TEST_F(BenchTool, TakesEverythingAwayOnCtrlC) {
    ProgramInTerminal::Setting setting;
    setting.Command = Command(TARVANE_PROGRAM, "1000000");
    ProgramInTerminal bench(setting);
    ASSERT_TRUE(bench.ShowsText("deep-200 ..."));
    ASSERT_TRUE(HasLoopDeviceBelow(Work.Path()));

    bench.Type("\x03");

    EXPECT_TRUE(bench.ShowsText("Interrupted by SIGINT; nothing is left behind."));
    EXPECT_TRUE(bench.ExitsWith(1));
    ExpectNothingLeft();
}

} // namespace
