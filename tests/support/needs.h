// What a test needs of the machine beyond the rights of an ordinary user. Where that is missing,
// the test ends as skipped and says what it needed; with CI=true in the environment it fails.
//
// Each may be called from wherever a test runs: its body, its fixture's constructor, a helper.

#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

#include <gtest/gtest.h>
#include <unistd.h>

// For what the machine itself lacks, and no package or right could mend.
//
// GTEST_SKIP only leaves the function that it stands in, and not a constructor at all. The
// exception ends the test; the framework takes it for one that has been reported.
[[noreturn]] inline void SkipTestEverywhere(const std::string& Why) {
    [&Why] { GTEST_SKIP() << Why; }();
    using Result = testing::TestPartResult;
    throw testing::AssertionException(Result(Result::kSkip, __FILE__, __LINE__, Why.c_str()));
}

[[noreturn]] inline void SkipTest(const std::string& Why) {
    const char* const ci = std::getenv("CI");
    if (ci != nullptr && std::string_view(ci) == "true") {
        throw std::runtime_error(Why + ", which counts as a failure in CI");
    }
    SkipTestEverywhere(Why);
}

inline void NeedRoot() {
    if (geteuid() != 0) {
        SkipTest("needs root");
    }
}

inline void NeedDeviceNode(const std::filesystem::path& Node) {
    std::error_code ec;
    if (!std::filesystem::exists(Node, ec)) {
        SkipTest("needs the device node " + Node.string());
    }
}
