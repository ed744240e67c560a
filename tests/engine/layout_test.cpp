// The engine is one long source file; its index and its banners are what a reader finds the way by.

#include <filesystem>
#include <fstream>
#include <regex>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

// One section as a banner opens it.
struct Section {
    // "[name] Title".
    std::string Heading;
    std::size_t FirstLine = 0;
    std::size_t Lines = 0;
    std::size_t ExplainingLines = 0;
};

constexpr const char* kEngineSource = TARVANE_SOURCE_DIRECTORY "/engine/tarvanetransfer.cpp";

std::vector<std::string> LinesOf(const std::filesystem::path& Path) {
    std::ifstream file(Path);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) {
        lines.push_back(line);
    }
    return lines;
}

// "//   [text]      Progress text formatting" is an entry of the index.
std::vector<std::string> IndexEntries(const std::vector<std::string>& Lines) {
    static const std::regex entry(R"(//   (\[[a-z-]+\]) +(\S.*))");
    std::vector<std::string> headings;
    for (const std::string& line : Lines) {
        std::smatch match;
        if (std::regex_match(line, match, entry)) {
            headings.push_back(match.str(1) + " " + match.str(2));
        }
    }
    return headings;
}

bool IsRule(const std::string& Line) {
    return Line == "// " + std::string(97, '-');
}

// "// [text] Progress text formatting" between two rules is a banner, with an empty comment line
// and the explanation after it.
std::vector<Section> Sections(const std::vector<std::string>& Lines) {
    static const std::regex heading(R"(// (\[[a-z-]+\] \S.*))");
    std::vector<Section> sections;
    for (std::size_t line = 1; line + 1 < Lines.size(); ++line) {
        std::smatch match;
        if (!IsRule(Lines[line - 1]) || !std::regex_match(Lines[line], match, heading)) {
            continue;
        }
        Section section{match.str(1), line, 0, 0};
        std::size_t last = line + 2;
        while (last < Lines.size() && !IsRule(Lines[last])) {
            ++last;
        }
        section.ExplainingLines = last - (line + 2);
        sections.push_back(section);
    }
    for (std::size_t index = 0; index < sections.size(); ++index) {
        const bool bLast = index + 1 == sections.size();
        const std::size_t end = bLast ? Lines.size() : sections[index + 1].FirstLine - 1;
        sections[index].Lines = end - sections[index].FirstLine;
    }
    return sections;
}

TEST(EngineLayout, HasTheSameSectionsInItsIndexAndInItsBanners) {
    const std::vector<std::string> lines = LinesOf(kEngineSource);
    std::vector<std::string> banners;
    for (const Section& section : Sections(lines)) {
        banners.push_back(section.Heading);
    }
    ASSERT_FALSE(banners.empty());
    EXPECT_EQ(IndexEntries(lines), banners);
}

TEST(EngineLayout, HasNoSectionOfMoreThan250Lines) {
    const std::vector<Section> sections = Sections(LinesOf(kEngineSource));
    ASSERT_FALSE(sections.empty());
    for (const Section& section : sections) {
        EXPECT_LE(section.Lines, 250u) << section.Heading;
    }
}

TEST(EngineLayout, ExplainsEachSectionInTwoToEightLines) {
    const std::vector<Section> sections = Sections(LinesOf(kEngineSource));
    ASSERT_FALSE(sections.empty());
    for (const Section& section : sections) {
        EXPECT_GE(section.ExplainingLines, 2u) << section.Heading;
        EXPECT_LE(section.ExplainingLines, 8u) << section.Heading;
    }
}

// "| a whole job | `[runner]` | `runner_test.cpp` |" is a row of the table in the architecture
// page.
TEST(EngineLayout, HasEachSectionInTheTableOfTheArchitecturePageWithATestFileThatExists) {
    const std::filesystem::path root = TARVANE_SOURCE_DIRECTORY;
    static const std::regex row(R"(\| .* \| `(\[[a-z-]+\])` \| `([a-z_]+\.cpp)` \|)");
    std::vector<std::string> names;
    for (const std::string& line : LinesOf(root / "docs/architecture.md")) {
        std::smatch match;
        if (std::regex_match(line, match, row)) {
            names.push_back(match.str(1));
            EXPECT_TRUE(std::filesystem::exists(root / "tests/engine" / match.str(2))) << line;
        }
    }
    std::vector<std::string> sections;
    for (const Section& section : Sections(LinesOf(kEngineSource))) {
        sections.push_back(section.Heading.substr(0, section.Heading.find(' ')));
    }
    EXPECT_EQ(names, sections);
}

} // namespace
