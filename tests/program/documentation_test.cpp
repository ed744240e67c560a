// The program's options are written down in five places: the parser, --help, the manual page and
// the completions for bash and zsh; the keys of the panes in their help and a page of their own.
// These tests hold them together.

#include <algorithm>
#include <filesystem>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "command_line.h"
#include "file_tree.h"
#include "help_dialog.h"
#include "help_text.h"
#include "json_records.h"
#include "page_text.h"
#include "run_program.h"

namespace {

using Words = std::vector<std::string>;
using WordSet = std::set<std::string>;

const Words kCommands{"copy", "move", "tracks"};
const Words kOptionsWithChoices{
    "--on-conflict", "--on-directory-conflict", "--update", "--preserve", "--progress", "--flush"};

std::filesystem::path SourceFile(const std::string& Name) {
    return std::filesystem::path(TARVANE_SOURCE_DIRECTORY) / Name;
}

Words LinesOf(const std::string& Text) {
    std::istringstream in(Text);
    Words lines;
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

// The options in a text that holds nothing else that begins with a dash.
WordSet OptionsIn(const std::string& Text) {
    WordSet options = Matches(Text, R"((--[a-z][a-z-]*))");
    options.merge(Matches(Text, R"((?:^|[^A-Za-z0-9-])(-[A-Za-z])(?![A-Za-z-]))"));
    return options;
}

// The parser.

std::string UsageSentence(const std::string& Command, const std::string& Option) {
    Words arguments{"tarvane", Command, Option};
    std::vector<char*> argv;
    for (std::string& argument : arguments) {
        argv.push_back(argument.data());
    }
    argv.push_back(nullptr);
    const CommandLine line = ParseCommandLine(static_cast<int>(arguments.size()), argv.data());
    const auto* mistake = std::get_if<UsageError>(&line);
    return mistake != nullptr ? mistake->Sentences.front() : "";
}

// Follows the beginnings that the parser knows, letter by letter, to the whole names. No option is
// the beginning of another.
void CollectLongOptions(const std::string& Command, const std::string& Beginning, WordSet& Out) {
    bool bWhole = true;
    for (const char letter : std::string("-abcdefghijklmnopqrstuvwxyz")) {
        const std::string longer = Beginning + letter;
        if (longer != "---" && !UsageSentence(Command, longer).starts_with("unrecognized option")) {
            bWhole = false;
            CollectLongOptions(Command, longer, Out);
        }
    }
    if (bWhole) {
        Out.insert(Beginning);
    }
}

WordSet ParserOptions(const std::string& Command) {
    WordSet options;
    for (char letter = '!'; letter <= '~'; ++letter) {
        const std::string option{'-', letter};
        if (letter != '-' && !UsageSentence(Command, option).starts_with("invalid option")) {
            options.insert(option);
        }
    }
    CollectLongOptions(Command, "--", options);
    return options;
}

WordSet ParserChoices(const std::string& Option) {
    const std::string sentence = UsageSentence("copy", Option + "=?");
    const std::string list = sentence.substr(sentence.find("valid are ") + 10);
    return Matches(list, "([a-z-]+)");
}

// The manual pages.

constexpr char kPage[] = "docs/tarvane.1";
constexpr char kPanesPage[] = "docs/tarvane-panes.1";

std::string Page(const std::string& Name) {
    std::string page = ReadFile(SourceFile(Name));
    page = std::regex_replace(page, std::regex(R"(\n\.PD[^\n]*)"), "");
    page = std::regex_replace(page, std::regex(R"(\\f[A-Z])"), "");
    page = std::regex_replace(page, std::regex(R"(\\\(ti)"), "~");
    return std::regex_replace(page, std::regex(R"(\\-)"), "-");
}

std::string PageSection(const std::string& Title, const std::string& Name = kPage) {
    const std::string section = SectionOf(Page(Name), Title);
    EXPECT_NE(section, "") << "no section " << Title;
    return section;
}

// The tagged paragraphs of a section: the tag's line, then the text.
Words Paragraphs(const std::string& Section) {
    Words paragraphs;
    bool bInside = false;
    for (const std::string& line : LinesOf(Section)) {
        if (line == ".TP") {
            paragraphs.emplace_back();
            bInside = true;
        } else if (line == ".PP" || line.starts_with(".SS")) {
            bInside = false;
        } else if (bInside) {
            paragraphs.back() += line + "\n";
        }
    }
    return paragraphs;
}

std::string Tags(const Words& TaggedParagraphs) {
    std::string tags;
    for (const std::string& paragraph : TaggedParagraphs) {
        tags += LinesOf(paragraph).front() + "\n";
    }
    return tags;
}

// The paragraph whose tag has Word; empty when there is none.
std::string ParagraphOn(const std::string& Section, const std::string& Word) {
    for (const std::string& paragraph : Paragraphs(Section)) {
        if (std::regex_search(LinesOf(paragraph).front(), std::regex(Word + "(?![a-z-])"))) {
            return paragraph;
        }
    }
    return "";
}

// The keys of the panes without the marks of the page.
std::string KeysOnPage() {
    const std::string section = PageSection("KEYS", kPanesPage) + "\n";
    const std::string keys = section.substr(section.find("\n.SS Panes\n") + 1);
    return std::regex_replace(keys, std::regex(R"(\.TP[^\n]*\n|\.SS |\.B )"), "");
}

// The completions.

// What bash hears about the last of Typed, which bash would have split as given: a line with the
// options of the completion that are set, then what is offered.
Words BashAnswer(const Words& Typed) {
    const std::string script =
        "source \"$1\"; shift; compopt() { set=\"$*\"; }; COMP_WORDS=(\"$@\"); "
        "COMP_CWORD=$(($# - 1)); _tarvane; "
        "printf '%s\\n' \"$set\" \"${COMPREPLY[@]}\"";
    Words command{"bash", "-c", script, "bash", SourceFile("completions/tarvane.bash").native()};
    command.insert(command.end(), Typed.begin(), Typed.end());
    const ProgramResult result = RunProgram(command);
    EXPECT_EQ(result.Errors, "");
    return LinesOf(result.Output);
}

std::string BashSettings(const Words& Typed) {
    return BashAnswer(Typed).front();
}

Words BashOffers(const Words& Typed) {
    Words lines = BashAnswer(Typed);
    lines.erase(lines.begin());
    return lines;
}

WordSet BashOptions(const std::string& Command) {
    WordSet options;
    for (const std::string& offer : BashOffers({"tarvane", Command, "-"})) {
        options.insert(offer.substr(0, offer.find('=')));
    }
    return options;
}

// The lines of a function that describe options and operands.
std::string ZshSpecifications(const std::string& Function) {
    const std::string script = ReadFile(SourceFile("completions/_tarvane"));
    const std::size_t start = script.find("\n" + Function + "()");
    EXPECT_NE(start, std::string::npos) << "no function " << Function;
    std::string specifications;
    for (const std::string& line :
         LinesOf(script.substr(start, script.find("\n}", start) - start))) {
        if (std::regex_search(line, std::regex(R"(^\s*(options\+=\()?')"))) {
            specifications += line + "\n";
        }
    }
    return specifications;
}

// The options that Specifications describe, explanations and actions left out.
WordSet ZshOptions(const std::string& Specifications) {
    std::string text = std::regex_replace(Specifications, std::regex(R"(\[[^\]]*\])"), " ");
    text = std::regex_replace(text, std::regex(R"(:[^']*)"), " ");
    return OptionsIn(text);
}

WordSet Without(WordSet Set, const WordSet& Others) {
    for (const std::string& other : Others) {
        Set.erase(other);
    }
    return Set;
}

WordSet HelpOptions() {
    return OptionsIn(kHelpText);
}

TEST(Documentation, HelpNamesTheOptionsOfEveryCommand) {
    WordSet options;
    for (const std::string& command : kCommands) {
        options.merge(ParserOptions(command));
    }
    EXPECT_GT(options.size(), 20U);
    EXPECT_EQ(HelpOptions(), options);
}

TEST(Documentation, TracksHelpNamesTheOptionsOfTracks) {
    EXPECT_EQ(OptionsIn(kTracksHelpText), ParserOptions("tracks"));
}

TEST(Documentation, HelpMarksTheOptionsThatOnlyOneCommandHas) {
    const std::string help = kHelpText;
    const auto marked = [&help](const std::string& Command) {
        const std::size_t end = help.find("(" + Command + " only)");
        const std::size_t start = help.rfind("\n  -", end);
        const std::size_t indented = help.rfind("\n      --", end);
        return OptionsIn(help.substr(std::max(start, indented), end - std::max(start, indented)));
    };
    EXPECT_EQ(marked("copy"), Without(ParserOptions("copy"), ParserOptions("move")));
    EXPECT_EQ(marked("tracks"), Without(ParserOptions("tracks"), ParserOptions("move")));
}

TEST(Documentation, ThePageDescribesTheOptionsOfTheHelp) {
    EXPECT_EQ(OptionsIn(Tags(Paragraphs(PageSection("OPTIONS")))), HelpOptions());
}

TEST(Documentation, ThePagesMentionNoOtherLongOptions) {
    for (const char* const page : {kPage, kPanesPage}) {
        const WordSet mentioned = Matches(Page(page), R"((--[a-z][a-z-]*))");
        EXPECT_GT(mentioned.size(), 3U) << page;
        EXPECT_EQ(Without(mentioned, HelpOptions()), WordSet()) << page;
    }
}

TEST(Documentation, ThePageTellsTheKeysOfThePanesAsTheirHelpDoes) {
    std::string keys;
    for (const HelpLine& line : HelpLines()) {
        keys += line.Keys + std::string("\n");
        keys += *line.Does == '\0' ? "" : line.Does + std::string("\n");
    }
    EXPECT_EQ(KeysOnPage(), keys);
}

TEST(Documentation, BashOffersTheOptionsOfEveryCommand) {
    for (const std::string& command : kCommands) {
        EXPECT_EQ(BashOptions(command), ParserOptions(command)) << command;
    }
}

TEST(Documentation, ZshOffersTheOptionsOfEveryCommand) {
    EXPECT_EQ(ZshOptions(ZshSpecifications("_tarvane_transfer")), ParserOptions("copy"));
    EXPECT_EQ(ZshOptions(ZshSpecifications("_tarvane_tracks")), ParserOptions("tracks"));
}

TEST(Documentation, HelpAndPageNameEveryChoice) {
    const std::string options = PageSection("OPTIONS");
    const std::string help = kHelpText;
    for (const std::string& option : kOptionsWithChoices) {
        const std::string paragraph = ParagraphOn(options, option);
        const std::size_t start = help.find("  " + option + "=");
        const std::string entry = help.substr(start, help.find("\n  -", start) - start);
        for (const std::string& choice : ParserChoices(option)) {
            const std::regex word("(^|[^a-z-])" + choice + "(?![a-z-])");
            EXPECT_TRUE(std::regex_search(paragraph, word)) << option << " " << choice;
            EXPECT_TRUE(std::regex_search(entry, word)) << option << " " << choice;
        }
    }
}

TEST(Documentation, ThePageExplainsEveryChoiceForFiles) {
    EXPECT_EQ(Matches(Tags(Paragraphs(PageSection("CONFLICTS"))), R"(\.B ([a-z-]+))"),
              ParserChoices("--on-conflict"));
}

TEST(Documentation, BashOffersTheParsersChoices) {
    for (const std::string& option : kOptionsWithChoices) {
        const Words offers = BashOffers({"tarvane", "copy", option, "=", ""});
        EXPECT_EQ(WordSet(offers.begin(), offers.end()), ParserChoices(option)) << option;
    }
}

TEST(Documentation, ZshOffersTheParsersChoices) {
    const std::string specifications = ZshSpecifications("_tarvane_transfer");
    for (const std::string& option : kOptionsWithChoices) {
        const WordSet list = Matches(specifications, "'" + option + R"(=[^(]*:\(([^)]*)\))");
        ASSERT_EQ(list.size(), 1U) << option;
        EXPECT_EQ(Matches(*list.begin(), "([a-z-]+)"), ParserChoices(option)) << option;
    }
}

TEST(Documentation, ThePageListsTheMembersOfEveryRecord) {
    const TarvaneTransferJob job(false, 1, "");
    const ProgressView view{job, job.MakeUiSnapshot(), {}};
    const int exitStatus = 0;
    const Words records{PreflightRecord({}),       TotalsRecord({}),    ProgressRecord(view),
                        ConflictRecord({}),        FinishingRecord({}), FlushRecord({}),
                        DoneRecord({}, exitStatus)};
    const std::string section = PageSection("JSON");
    WordSet events;
    for (const std::string& record : records) {
        const nlohmann::json object = nlohmann::json::parse(record);
        const std::string event = object["event"];
        events.insert(event);
        WordSet members;
        for (const auto& [name, value] : object.items()) {
            members.insert(name);
        }
        EXPECT_EQ(
            Matches(ParagraphOn(section, event), R"((?:^|\n)\.(?:I|IR|RI) (?:\( )?([a-z_]+))"),
            Without(members, {"event"}))
            << event;
    }
    EXPECT_EQ(Matches(Tags(Paragraphs(section)), R"(\.B ([a-z-]+))"), events);
}

TEST(Documentation, ThePageNamesEveryKindOfFinding) {
    WordSet kinds;
    for (std::size_t kind = 0; kind < kPreflightFindingKinds; ++kind) {
        kinds.emplace(PreflightFindingName(static_cast<PreflightFindingKind>(kind)));
    }
    const std::string list = PartOf(PageSection("JSON"), "\n.SS Kinds of findings\n", "\n.SS ");
    EXPECT_EQ(Matches(list, R"(\.BR ([a-z-]+))"), kinds);
}

TEST(Documentation, HelpFitsATerminal) {
    for (const std::string& line : LinesOf(std::string(kHelpText) + kTracksHelpText)) {
        EXPECT_LE(line.size(), 80U) << line;
    }
}

TEST(BashCompletion, OffersTheCommands) {
    EXPECT_EQ(BashOffers({"tarvane", ""}),
              Words({"copy", "move", "tracks", "help", "-h", "--help", "--version"}));
    EXPECT_EQ(BashOffers({"tarvane", "c"}), Words({"copy"}));
    EXPECT_EQ(BashOffers({"tarvane", "help", "t"}), Words({"tracks"}));
}

TEST(BashCompletion, OffersDirectoriesBesideTheCommands) {
    EXPECT_EQ(BashSettings({"tarvane", ""}), "-o plusdirs +o default");
    EXPECT_EQ(BashOffers({"tarvane", "mu"}), Words());
    EXPECT_EQ(BashSettings({"tarvane", "mu"}), "-o plusdirs +o default");
}

TEST(BashCompletion, OffersDirectoriesBehindADirectory) {
    const std::string directories = "-o dirnames +o default";
    EXPECT_EQ(BashSettings({"tarvane", "music", ""}), directories);
    EXPECT_EQ(BashOffers({"tarvane", "music", "co"}), Words());
    EXPECT_EQ(BashSettings({"tarvane", "./copy", ""}), directories);
    EXPECT_EQ(BashSettings({"tarvane", "cdda", ":", "/dev/sr0", "mu"}), directories);
    EXPECT_EQ(BashSettings({"tarvane", "copy", ""}), "");
    EXPECT_EQ(BashSettings({"tarvane", "tracks", ""}), "");
    EXPECT_EQ(BashSettings({"tarvane", "help", ""}), "");
}

TEST(BashCompletion, CompletesAPartOfAChoice) {
    EXPECT_EQ(BashOffers({"tarvane", "copy", "--on-conflict", "=", "ov"}), Words({"overwrite"}));
    EXPECT_EQ(BashOffers({"tarvane", "copy", "--on-conflict", "="}).size(), 9U);
    EXPECT_EQ(BashOffers({"tarvane", "copy", "--flush", "al"}), Words({"always"}));
    EXPECT_EQ(BashOffers({"tarvane", "copy", "--update", "=", "n"}), Words({"none", "none-fail"}));
}

TEST(BashCompletion, LeavesOperandsToTheShell) {
    EXPECT_EQ(BashOffers({"tarvane", "copy", "fi"}), Words());
    EXPECT_EQ(BashOffers({"tarvane", "copy", "-t", ""}), Words());
    EXPECT_EQ(BashOffers({"tarvane", "copy", "--update", "al"}), Words());
    EXPECT_EQ(BashOffers({"tarvane", "copy", "--preserve", "al"}), Words());
    EXPECT_EQ(BashOffers({"tarvane", "copy", "--", "-"}), Words());
}

TEST(ZshCompletion, OffersTheCommandsAndDirectories) {
    const std::string script = ReadFile(SourceFile("completions/_tarvane"));
    EXPECT_EQ(Matches(script, R"(([a-z]+)\\:")"), WordSet({"copy", "move", "tracks", "help"}));
    EXPECT_EQ(Matches(script, R"('(directories:directory:_files -/)')").size(), 1U);
    EXPECT_EQ(Matches(script, R"(\*\) _arguments '(1:directory:_files -/)')").size(), 1U);
}

} // namespace
