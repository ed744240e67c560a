// What must hold after every run of the program, whatever its file systems do.

#pragma once

#include "file_tree.h"
#include "mounts.h"
#include "own_mount_namespace.h"
#include "run_program.h"
#include "temporary_directory.h"

#include <cstdint>
#include <filesystem>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace fs = std::filesystem;

// How a run has ended: its status, the sentence that it says last, and what it has counted. Paths
// are without that of the test's directory.
struct End {
    int Status = 0;
    std::string Sentence;
    std::uint64_t Entries = 0;
    std::uint64_t Bytes = 0;

    bool operator==(const End&) const = default;
};

inline std::ostream& operator<<(std::ostream& Out, const End& Of) {
    return Out << "status " << Of.Status << ", " << Of.Entries << " entries, " << Of.Bytes
               << " bytes: " << Of.Sentence;
}

// Copies or moves below Root, as the parameter says. A whole tree is compared after each run, so
// that nothing partial, lost, or touched outside goes unnoticed.
class Torture : public testing::TestWithParam<const char*> {
protected:
    Torture() { WriteFile(Root / "outside/file", "data"); }

    bool IsMove() const { return std::string(GetParam()) == "move"; }

    // Checks that there is one end, and that the status, the record and the last line agree.
    End Run(std::vector<std::string> Arguments) const {
        Arguments.insert(Arguments.begin(), {TARVANE_PROGRAM, GetParam(), "-n", "--progress=json"});
        const ProgramResult result = RunProgram(Arguments, Root.Path().string());
        const nlohmann::json end = OnlyEnd(result.Output);
        const std::string sentence = end.value("status", "");
        EXPECT_EQ(end.value("exit_status", -1), result.Status);
        const bool bToldAsError = result.Errors.find("tarvane: " + sentence) != std::string::npos;
        EXPECT_EQ(bToldAsError, result.Status != 0) << result.Errors;
        return {result.Status, WithoutRoot(sentence), end.value("entries", std::uint64_t{0}),
                end.value("bytes", std::uint64_t{0})};
    }

    // "Copied 2 entries." or "Moved 2 entries."
    std::string Done(const std::string& What) const {
        return (IsMove() ? "Moved " : "Copied ") + What;
    }

    // Remembers what is there, to compare with it later.
    void Prepared() { Before = TreeOf(Root.Path()); }
    const std::string& AtFirst(const std::string& Name) const { return Before.at(Name); }

    // What was there at first but for what a move has taken away, and Others: a description, or
    // nothing for what is gone.
    void ExpectTree(const std::vector<std::string>& Taken, const Tree& Others) const {
        Tree wanted = Before;
        for (const std::string& name : Taken) {
            wanted.erase(IsMove() ? name : "");
        }
        for (const auto& [name, what] : Others) {
            wanted[name] = what;
        }
        std::erase_if(wanted, [](const auto& entry) { return entry.second.empty(); });
        EXPECT_EQ(TreeOf(Root.Path()), wanted);
    }

    // For the table that tools/torture makes: what a user might not expect, although it is meant.
    static void Note(const std::string& Text) { RecordProperty("note", Text); }

    const OwnMountNamespace Namespace;
    const TemporaryDirectory Root;

private:
    static nlohmann::json OnlyEnd(const std::string& Output) {
        std::istringstream lines(Output);
        std::string line;
        nlohmann::json last;
        int ends = 0;
        while (std::getline(lines, line)) {
            last = nlohmann::json::parse(line);
            ends += last["event"] == "done" ? 1 : 0;
        }
        EXPECT_EQ(ends, 1) << Output;
        EXPECT_EQ(last.value("event", ""), "done") << Output;
        return last;
    }

    std::string WithoutRoot(std::string Text) const {
        const std::string root = Root.Path().string() + "/";
        for (std::size_t at = 0; (at = Text.find(root)) != std::string::npos;) {
            Text.erase(at, root.size());
        }
        return Text;
    }

    Tree Before;
};

inline const auto kBothVerbs = testing::Values("copy", "move");
