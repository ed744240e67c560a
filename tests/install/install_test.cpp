// What `cmake --install` leaves, and that a project of somebody else builds with it: found by CMake
// or by pkg-config, moved after it was installed, or as a part of that project.

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "file_tree.h"
#include "run_program.h"
#include "temporary_directory.h"

namespace {

namespace fs = std::filesystem;

using Paths = std::vector<std::string>;
using Environment = std::vector<std::pair<std::string, std::string>>;

const fs::path kSources = TARVANE_SOURCE_DIRECTORY;
const fs::path kConsumer = kSources / "tests/install/consumer";

// The compiler may have much to do for others.
constexpr double kLimitSeconds = 240.0;

// Runs Command, which has to succeed, and returns what it printed.
std::string OutputOf(const std::vector<std::string>& Command, const Environment& Variables = {}) {
    const ProgramResult result = RunProgram(Command, "", Variables, kLimitSeconds);
    EXPECT_EQ(result.Status, 0) << Command[0] << ": " << result.Output << result.Errors;
    return result.Output;
}

Paths WordsOf(const std::string& Text) {
    std::istringstream in(Text);
    Paths words;
    for (std::string word; in >> word;) {
        words.push_back(word);
    }
    return words;
}

// The files below Root, sorted.
Paths FilesBelow(const fs::path& Root) {
    Paths files;
    for (const auto& [path, description] : TreeOf(Root)) {
        if (description != "dir") {
            files.push_back(path);
        }
    }
    return files;
}

Paths Sorted(Paths Files) {
    std::sort(Files.begin(), Files.end());
    return Files;
}

// The pages of a section, where they are installed.
Paths Pages(const std::string& Section) {
    Paths pages;
    for (const fs::directory_entry& entry : fs::directory_iterator(kSources / "docs")) {
        if (entry.path().extension() == "." + Section) {
            pages.push_back("share/man/man" + Section + "/" + entry.path().filename().string());
        }
    }
    return pages;
}

Paths ProgramFiles() {
    Paths files = Pages("1");
    files.insert(files.end(), {"bin/tarvane", "share/bash-completion/completions/tarvane",
                               "share/zsh/site-functions/_tarvane"});
    return Sorted(files);
}

Paths DevelopmentFiles() {
    const std::string libraries = TARVANE_LIBRARY_DIRECTORY;
    const std::string package = libraries + "/cmake/tarvane/";
    Paths files = Pages("3");
    for (const char* header : {"completion_bell.h", "ring_sound.h", "tarvaneops.h", "tarvanepane.h",
                               "tarvanetransfer.h"}) {
        files.push_back(std::string("include/tarvane/") + header);
    }
    files.insert(files.end(),
                 {libraries + "/libtarvane.a", libraries + "/libtarvane-host.a",
                  package + "tarvane-config.cmake", package + "tarvane-config-version.cmake",
                  package + "tarvane-targets.cmake", package + "tarvane-targets-debug.cmake",
                  libraries + "/pkgconfig/tarvane.pc", libraries + "/pkgconfig/tarvane-host.pc"});
    return Sorted(files);
}

std::string FirstHeadingOf(const fs::path& Page) {
    std::istringstream in(ReadFile(Page));
    std::string line;
    while (std::getline(in, line) && !line.starts_with("## ")) {}
    return line;
}

class Install : public testing::Test {
protected:
    Install() { WriteFile(Folder / "source", "contents"); }

    fs::path InstallComponent(const std::string& Component, const fs::path& Prefix) const {
        OutputOf({TARVANE_CMAKE, "--install", TARVANE_BUILD_DIRECTORY, "--component", Component,
                  "--prefix", Prefix});
        return Prefix;
    }

    // A package whose first place does not exist any more.
    fs::path MovedPackage() const {
        const fs::path installed = InstallComponent("development", Folder / "first");
        fs::rename(installed, Folder / "second");
        return Folder / "second";
    }

    // Configures the consumer in build/.
    void Configure(const Paths& Definitions) const {
        Paths command{TARVANE_CMAKE, "-G", "Ninja", "-S", kConsumer, "-B", Folder / "build"};
        command.insert(command.end(),
                       {"-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_COMPILER=" TARVANE_COMPILER,
                        "-DCMAKE_CXX_FLAGS=" TARVANE_COMPILER_FLAGS});
        command.insert(command.end(), Definitions.begin(), Definitions.end());
        OutputOf(command);
    }

    void Build(const std::string& Target) const {
        OutputOf({TARVANE_CMAKE, "--build", Folder / "build", "--target", Target});
    }

    // Compiles the consumer, with OtherSources, as pkg-config says of Module.
    fs::path BuiltByHand(const fs::path& Package, const std::string& Module,
                         const Paths& OtherSources) const {
        const std::string modules = Package / TARVANE_LIBRARY_DIRECTORY / "pkgconfig";
        const Environment variables{{"PKG_CONFIG_PATH", modules}};
        const std::string flags = OutputOf({"pkg-config", "--cflags", "--libs", Module}, variables);
        Paths command{TARVANE_COMPILER, "-std=c++20", "-o", Folder / "by_hand"};
        const Paths sources{kConsumer / "main.cpp", kConsumer / "copy.cpp"};
        for (const Paths& words :
             {WordsOf(TARVANE_COMPILER_FLAGS), sources, OtherSources, WordsOf(flags)}) {
            command.insert(command.end(), words.begin(), words.end());
        }
        OutputOf(command);
        return Folder / "by_hand";
    }

    void ExpectCopies(const fs::path& Program, const std::string& Output) const {
        // Where coverage is measured, theirs is not wanted.
        const Environment variables{{"GCOV_PREFIX", Folder.Path()}};
        EXPECT_EQ(OutputOf({Program, Folder / "source", Folder / "copy"}, variables), Output);
        EXPECT_EQ(ReadFile(Folder / "copy"), "contents");
        fs::remove(Folder / "copy");
    }

    // The two programs of the consumer.
    void ExpectBothCopy() const {
        ExpectCopies(Folder / "build/with_host", "Copied 1 item(s).\n");
        ExpectCopies(Folder / "build/with_own_functions",
                     "The sound of our own.\nCopied 1 item(s).\n");
    }

    const TemporaryDirectory Folder;
};

TEST_F(Install, PutsTheProgramInAComponentOfItsOwn) {
    EXPECT_EQ(FilesBelow(InstallComponent("program", Folder / "prefix")), ProgramFiles());
}

TEST_F(Install, PutsWhatEmbeddingNeedsInAComponentOfItsOwn) {
    EXPECT_EQ(FilesBelow(InstallComponent("development", Folder / "prefix")), DevelopmentFiles());
}

TEST_F(Install, PutsBothComponentsBelowDestdir) {
    OutputOf({TARVANE_CMAKE, "--install", TARVANE_BUILD_DIRECTORY, "--prefix", "/opt/somewhere"},
             {{"DESTDIR", Folder / "stage"}});

    Paths both = ProgramFiles();
    const Paths others = DevelopmentFiles();
    both.insert(both.end(), others.begin(), others.end());
    EXPECT_EQ(FilesBelow(Folder / "stage/opt/somewhere"), Sorted(both));
    EXPECT_EQ(FilesBelow(Folder / "stage").size(), both.size());
}

TEST_F(Install, NamesNoFolderOfTheBuild) {
    const fs::path package = InstallComponent("development", Folder / "prefix");
    const auto bNames = [](const std::string& Text, const std::string& Place) {
        return Text.find(Place) != std::string::npos;
    };
    for (const std::string& file : DevelopmentFiles()) {
        // The debugging information of this build is to name its sources.
        if (!file.ends_with(".a")) {
            const std::string text = ReadFile(package / file);
            EXPECT_FALSE(bNames(text, kSources)) << file;
            EXPECT_FALSE(bNames(text, TARVANE_BUILD_DIRECTORY)) << file;
            EXPECT_FALSE(bNames(text, Folder.Path())) << file;
        }
    }
}

TEST_F(Install, GivesCMakeAPackageThatMayBeMoved) {
    Configure({"-DCMAKE_PREFIX_PATH=" + MovedPackage().string()});
    Build("all");
    ExpectBothCopy();
}

TEST_F(Install, GivesPkgConfigTheEngineAlone) {
    ExpectCopies(BuiltByHand(MovedPackage(), "tarvane", {kConsumer / "own_functions.cpp"}),
                 "The sound of our own.\nCopied 1 item(s).\n");
}

TEST_F(Install, GivesPkgConfigTheEngineWithOurFunctions) {
    ExpectCopies(BuiltByHand(MovedPackage(), "tarvane-host", {}), "Copied 1 item(s).\n");
}

TEST(Version, IsTheSameForAllWhoAsk) {
    const TemporaryDirectory folder;
    const std::string version = TARVANE_VERSION;
    OutputOf({TARVANE_CMAKE, "--install", TARVANE_BUILD_DIRECTORY, "--prefix", folder.Path()});

    const std::string libraries = folder / TARVANE_LIBRARY_DIRECTORY;
    const Environment variables{{"PKG_CONFIG_PATH", libraries + "/pkgconfig"}};
    EXPECT_EQ(OutputOf({folder / "bin/tarvane", "--version"}), "tarvane " + version + "\n");
    EXPECT_EQ(OutputOf({"pkg-config", "--modversion", "tarvane", "tarvane-host"}, variables),
              version + "\n" + version + "\n");
    EXPECT_NE(ReadFile(libraries + "/cmake/tarvane/tarvane-config-version.cmake")
                  .find("set(PACKAGE_VERSION \"" + version + "\")"),
              std::string::npos);
    const std::string heading = FirstHeadingOf(kSources / "CHANGELOG.md");
    EXPECT_TRUE(heading.starts_with("## " + version + " ")) << heading;
}

// Whoever embeds the engine may have none of the packages that the program needs.
const Paths kWithoutPackages{"-DTARVANE_SOURCES=" TARVANE_SOURCE_DIRECTORY,
                             "-DCMAKE_DISABLE_FIND_PACKAGE_PkgConfig=ON",
                             "-DCMAKE_DISABLE_FIND_PACKAGE_nlohmann_json=ON"};

TEST_F(Install, IsNotNeededByAProjectThatTakesTheSources) {
    Configure(kWithoutPackages);
    Build("tarvane/all");
    Paths built = FilesBelow(Folder / "build/tarvane");
    std::erase_if(built, [](const std::string& File) {
        return !File.ends_with(".o") && !File.ends_with(".a");
    });
    EXPECT_EQ(built, Paths({"engine/CMakeFiles/tarvane_engine.dir/tarvanetransfer.cpp.o",
                            "engine/libtarvane.a"}));

    Build("all");
    ExpectBothCopy();
}

TEST_F(Install, IsNotNeededByAProjectThatFetchesTheSources) {
    Paths definitions = kWithoutPackages;
    definitions.emplace_back("-DTARVANE_FETCHED=ON");
    Configure(definitions);

    const std::string targets =
        OutputOf({TARVANE_CMAKE, "--build", Folder / "build", "--target", "help"});
    EXPECT_NE(targets.find("\ntarvane_engine: "), std::string::npos) << targets;
    EXPECT_EQ(targets.find("\ntarvane_program: "), std::string::npos) << targets;
}

} // namespace
