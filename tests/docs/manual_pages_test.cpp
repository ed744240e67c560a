// The manual pages: that formatters have nothing to say about them, that what they refer to is
// there, and that the page for programmers has the names of the headers and an example that works.
// The options and keys on the other pages are compared in program/documentation_test.cpp.

#include <algorithm>
#include <array>
#include <filesystem>
#include <iterator>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "file_tree.h"
#include "page_text.h"
#include "run_program.h"
#include "temporary_directory.h"

namespace {

namespace fs = std::filesystem;

using WordSet = std::set<std::string>;

const fs::path kSources = TARVANE_SOURCE_DIRECTORY;
const fs::path kEnginePage = kSources / "docs/tarvane-engine.3";

std::vector<fs::path> Pages() {
    std::vector<fs::path> pages;
    for (const fs::directory_entry& entry : fs::directory_iterator(kSources / "docs")) {
        const std::string extension = entry.path().extension();
        if (extension == ".1" || extension == ".3") {
            pages.push_back(entry.path());
        }
    }
    return pages;
}

std::string Without(const std::string& Text, const std::string& Pattern) {
    return std::regex_replace(Text, std::regex(Pattern), "");
}

WordSet Difference(const WordSet& From, const WordSet& Others) {
    WordSet difference;
    std::ranges::set_difference(From, Others, std::inserter(difference, difference.end()));
    return difference;
}

// What a header of the engine declares for others: types, functions and methods, enumerators and
// members of structures.
WordSet NamesIn(const std::string& Header) {
    std::string text = ReadFile(kSources / "engine" / Header);
    text = Without(text, "//[^\n]*|\n#[^\n]*");
    if (const std::size_t start = text.find("\nprivate:"); start != std::string::npos) {
        text.erase(start, text.find("\n};", start) - start);
    }
    WordSet names;
    for (const char* const pattern :
         {R"((?:class|struct) (?:[A-Z_]+ )?(\w+) (?:: [\w:]+ )?\{)", R"((\w+)\()",
          R"(\n    (\w+) = \d+,)", R"(\n    [\w:<>]+ (\w+)(?: = [^;()]+)?;)"}) {
        names.merge(Matches(text, pattern));
    }
    return names;
}

WordSet NamesOfEngine() {
    WordSet names = NamesIn("tarvanetransfer.h");
    for (const char* const header : {"tarvaneops.h", "tarvanepane.h", "ring_sound.h"}) {
        names.merge(NamesIn(header));
    }
    return names;
}

TEST(ManualPages, AreFound) {
    EXPECT_EQ(Pages().size(), 3U);
}

TEST(ManualPages, LeaveMandocNothingToSayNotEvenOnStyle) {
    for (const fs::path& page : Pages()) {
        const ProgramResult result = RunProgram({"mandoc", "-Tlint", "-Wstyle", page});
        EXPECT_EQ(result.Output + result.Errors, "");
        EXPECT_EQ(result.Status, 0) << page;
    }
}

TEST(ManualPages, AreShownByManWithoutWarnings) {
    for (const fs::path& page : Pages()) {
        const ProgramResult result =
            RunProgram({"man", "--warnings", "--encoding=UTF-8", "--local-file", page}, "",
                       {{"MANWIDTH", "80"}, {"LC_ALL", "C.UTF-8"}, {"MANPAGER", "cat"}});
        EXPECT_EQ(result.Errors, "");
        EXPECT_EQ(result.Status, 0) << page;
        EXPECT_NE(result.Output.find("SEE ALSO"), std::string::npos) << page;
    }
}

TEST(ManualPages, HaveTheCustomarySectionsInTheirOrder) {
    constexpr std::array customary{"NAME",        "SYNOPSIS",    "DESCRIPTION", "OPTIONS",
                                   "EXIT STATUS", "ENVIRONMENT", "FILES",       "NOTES",
                                   "EXAMPLES",    "SEE ALSO"};
    const WordSet needed{"NAME", "SYNOPSIS", "DESCRIPTION", "SEE ALSO"};
    for (const fs::path& page : Pages()) {
        const std::string text = ReadFile(page);
        std::vector<std::size_t> places;
        for (const char* const title : customary) {
            const std::size_t place = text.find("\n.SH " + std::string(title) + "\n");
            EXPECT_TRUE(place != std::string::npos || !needed.contains(title)) << page << title;
            if (place != std::string::npos) {
                places.push_back(place);
            }
        }
        EXPECT_TRUE(std::ranges::is_sorted(places)) << page;
    }
}

TEST(ManualPages, ReferToPagesAndSectionsThatAreThere) {
    for (const fs::path& page : Pages()) {
        const std::string text = Without(ReadFile(page), R"(\\(?=-))");
        for (const std::string& name : Matches(text, R"((tarvane(?:-\w+)? \(\d)\))")) {
            const std::string file = std::regex_replace(name, std::regex(R"( \()"), ".");
            EXPECT_TRUE(fs::exists(kSources / "docs" / file)) << page << " refers to " << name;
        }
        for (const std::string& title : Matches(
                 text, "(?:see|than|told in|stands in|and)\n\\.BR? \"?([A-Z][A-Z ]+[A-Z])\\b")) {
            EXPECT_NE(text.find("\n.SH " + title + "\n"), std::string::npos)
                << page << " refers to " << title;
        }
    }
}

TEST(ManualPages, TellOfEveryVariableThatTheProgramReads) {
    constexpr char kReads[] = R"-((?:getenv|Environment|Open)\("([A-Z_]+)")-";
    WordSet variables;
    for (const char* const folder : {"ask", "browse", "engine", "host", "lines", "panes", "process",
                                     "program", "text", "transfer", "tty"}) {
        for (const auto& entry : fs::recursive_directory_iterator(kSources / folder)) {
            if (entry.path().extension() == ".cpp") {
                variables.merge(Matches(ReadFile(entry), kReads));
            }
        }
    }
    EXPECT_GT(variables.size(), 7U);
    WordSet told;
    for (const char* const page : {"docs/tarvane.1", "docs/tarvane-panes.1"}) {
        told.merge(Matches(SectionOf(ReadFile(kSources / page), "ENVIRONMENT"), "([A-Z_]+)"));
    }
    EXPECT_EQ(Difference(variables, told), WordSet());
}

TEST(ManualPages, TellOfEverySignalThatTheProgramTakes) {
    const std::string inbox = ReadFile(kSources / "tty/signal_inbox.cpp");
    const WordSet signals = Matches(PartOf(inbox, "SignalInbox::SignalInbox() {", "\n}"),
                                    R"(\b(SIG[A-Z]+[A-Z12]+)[,}])");
    EXPECT_EQ(signals.size(), 8U);
    const std::string page = ReadFile(kSources / "docs/tarvane.1");
    const WordSet told = Matches(SectionOf(page, "SIGNALS"), "(SIG[A-Z0-9]+)");
    EXPECT_EQ(Difference(signals, told), WordSet());
}

TEST(ManualPages, NameAllThatTheHeadersOfTheEngineDeclare) {
    const WordSet names = NamesOfEngine();
    EXPECT_GT(names.size(), 110U);
    const WordSet words = Matches(ReadFile(kEnginePage), R"((\w+))");
    EXPECT_EQ(Difference(names, words), WordSet());
}

TEST(ManualPages, NameNothingThatTheHeadersOfTheEngineDoNotDeclare) {
    const std::string page = ReadFile(kEnginePage);
    WordSet mentioned = Matches(page, R"(\b(Tarvane[A-Z]\w+))");
    mentioned.merge(Matches(page, R"(\n\.BR? ([A-Za-z]+[a-z][A-Z]\w+))"));
    EXPECT_GT(mentioned.size(), 50U);
    EXPECT_EQ(Difference(mentioned, NamesOfEngine()), WordSet());
}

TEST(ManualExample, CopiesAndSkipsWhatIsTaken) {
    const TemporaryDirectory directory;
    WriteFile(directory / "source/file", "new");
    WriteFile(directory / "taken/file", "old");
    const ProgramResult free =
        RunProgram({TARVANE_MANUAL_EXAMPLE, "source", "free"}, directory.Path());
    EXPECT_EQ(free.Status, 0);
    EXPECT_TRUE(free.Output.ends_with("\nCopied 1 item(s).\n")) << free.Output;
    const ProgramResult taken =
        RunProgram({TARVANE_MANUAL_EXAMPLE, "source", "taken"}, directory.Path());
    EXPECT_EQ(taken.Status, 0);
    EXPECT_EQ(TreeOf(directory.Path()), (Tree{{"source", "dir"},
                                              {"source/file", "file new"},
                                              {"free", "dir"},
                                              {"free/file", "file new"},
                                              {"taken", "dir"},
                                              {"taken/file", "file old"}}));
}

TEST(ManualExample, SaysWhyAJobHasFailed) {
    const TemporaryDirectory directory;
    const ProgramResult result =
        RunProgram({TARVANE_MANUAL_EXAMPLE, "missing", "copy"}, directory.Path());
    EXPECT_EQ(result.Status, 1);
    EXPECT_TRUE(result.Output.ends_with("\nSource does not exist.\n")) << result.Output;
}

} // namespace
