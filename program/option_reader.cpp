#include "option_reader.h"

#include <cstddef>
#include <string_view>

#include "near_word.h"
#include "quoted.h"

namespace {

// Who has an option.
constexpr auto kCopy = static_cast<unsigned>(Command::Copy);
constexpr auto kMove = static_cast<unsigned>(Command::Move);
constexpr auto kTracks = static_cast<unsigned>(Command::Tracks);
constexpr auto kTransfers = kCopy | kMove;
constexpr auto kAll = kTransfers | kTracks;

struct OptionRow {
    Option Meaning;
    // 0 for none.
    char Letter;
    // Null for none.
    const char* Word;
    int Argument;
    unsigned Owners;
    // The option's value where none is given; for a mistake what is so instead.
    const char* Value = "";
};

// What users of cp and mv try that has no counterpart here.
constexpr char kNoArchive[] = "links are followed and not copied, so there is no archive mode; "
                              "--preserve=all carries over modes, times and owners";
constexpr char kLinksFollowed[] = "links are always followed";
constexpr char kNeverLinked[] = "files are always copied, never linked";
constexpr char kNoBackup[] = "there are no backups, but --on-conflict=keep-both keeps both files";
constexpr char kAllMounted[] = "what is mounted below a source is always copied too";
constexpr char kMovedWhole[] = "directories are always moved whole";

constexpr OptionRow kRows[] = {
    {Option::OnConflict, 0, "on-conflict", required_argument, kTransfers},
    {Option::OnConflict, 'i', "interactive", no_argument, kTransfers, "ask"},
    {Option::OnConflict, 'f', "force", no_argument, kTransfers, "overwrite"},
    {Option::OnConflict, 'n', "no-clobber", no_argument, kTransfers, "skip"},
    {Option::Update, 'u', nullptr, no_argument, kTransfers, "older"},
    {Option::Update, 0, "update", optional_argument, kTransfers, "older"},
    {Option::OnDirectoryConflict, 0, "on-directory-conflict", required_argument, kTransfers},
    {Option::TargetDirectory, 't', "target-directory", required_argument, kTransfers},
    {Option::NoTargetDirectory, 'T', "no-target-directory", no_argument, kTransfers},
    {Option::Verbose, 'v', "verbose", no_argument, kTransfers},
    {Option::Quiet, 'q', "quiet", no_argument, kTransfers},
    {Option::Progress, 0, "progress", required_argument, kTransfers},
    {Option::Interval, 0, "interval", required_argument, kTransfers},
    {Option::Flush, 0, "flush", required_argument, kTransfers},
    // As in cp: the word alone means this too.
    {Option::Preserve, 'p', nullptr, no_argument, kTransfers, "mode,ownership,timestamps"},
    {Option::Preserve, 0, "preserve", optional_argument, kTransfers, "mode,ownership,timestamps"},
    {Option::NoPreserve, 0, "no-preserve", no_argument, kTransfers},
    {Option::NoPreflight, 0, "no-preflight", no_argument, kTransfers},
    {Option::DryRun, 0, "dry-run", no_argument, kTransfers},
    {Option::FollowLinks, 0, "follow-links", no_argument, kTransfers},
    // A copy takes it for the habit's sake: directories are always copied whole. mv has none.
    {Option::Recursive, 'r', "recursive", no_argument, kCopy},
    {Option::Recursive, 'R', nullptr, no_argument, kCopy},
    {Option::Json, 0, "json", no_argument, kTracks},
    {Option::Help, 'h', "help", no_argument, kAll},
    {Option::Version, 0, "version", no_argument, kAll},
    // These come last, because a letter is looked up from the first row on.
    {Option::Mistake, 'a', "archive", no_argument, kCopy, kNoArchive},
    {Option::Mistake, 'd', nullptr, no_argument, kCopy, kLinksFollowed},
    {Option::Mistake, 'H', nullptr, no_argument, kCopy, kLinksFollowed},
    {Option::Mistake, 'L', "dereference", no_argument, kCopy, kLinksFollowed},
    {Option::Mistake, 'P', "no-dereference", no_argument, kCopy, kLinksFollowed},
    {Option::Mistake, 'l', "link", no_argument, kCopy, kNeverLinked},
    {Option::Mistake, 's', "symbolic-link", no_argument, kCopy, kNeverLinked},
    {Option::Mistake, 'b', "backup", no_argument, kTransfers, kNoBackup},
    {Option::Mistake, 'S', "suffix", no_argument, kTransfers, kNoBackup},
    {Option::Mistake, 'x', "one-file-system", no_argument, kCopy, kAllMounted},
    {Option::Mistake, 'r', "recursive", no_argument, kMove, kMovedWhole},
    {Option::Mistake, 'R', nullptr, no_argument, kMove, kMovedWhole},
};

// getopt_long returns an option's letter, or this and the number of its row for its word. So a
// mistake can be told in the form that was typed.
constexpr int kFirstWord = 256;

// Keeps getopt_long from printing, and makes it tell a missing value from an unknown option.
constexpr char kSilently[] = ":";

const OptionRow& RowOf(int Result) {
    if (Result >= kFirstWord) {
        return kRows[Result - kFirstWord];
    }
    const OptionRow* row = kRows;
    while (row->Letter != Result) {
        ++row;
    }
    return *row;
}

bool IsOf(const OptionRow& Row, Command Reading) {
    return (Row.Owners & static_cast<unsigned>(Reading)) != 0;
}

// What is so instead of what Matches asks for; empty where the table does not say it.
template <typename Matcher>
std::string InsteadOf(Command Reading, const Matcher& Matches) {
    for (const OptionRow& row : kRows) {
        if (row.Meaning == Option::Mistake && IsOf(row, Reading) && Matches(row)) {
            return std::string("; ") + row.Value;
        }
    }
    return {};
}

std::string QuotedWord(std::string_view Word) {
    return Quoted("--" + std::string(Word));
}

} // namespace

OptionReader::OptionReader(Command CommandToRead, std::span<char*> CommandArguments)
    : Reading(CommandToRead), Arguments(CommandArguments), Letters(kSilently) {
    int word = kFirstWord;
    for (const OptionRow& row : kRows) {
        const int result = word++;
        if (!IsOf(row, Reading) || row.Meaning == Option::Mistake) {
            continue;
        }
        if (row.Letter != 0) {
            Letters += row.Letter;
            Letters += row.Argument == required_argument ? ":" : "";
        }
        if (row.Word != nullptr) {
            Words.push_back({row.Word, row.Argument, nullptr, result});
        }
    }
    Words.push_back({nullptr, 0, nullptr, 0});
    // 0 makes getopt_long forget an earlier reading.
    optind = 0;
}

std::optional<TypedOption> OptionReader::Next() {
    const int result = getopt_long(static_cast<int>(Arguments.size()), Arguments.data(),
                                   Letters.c_str(), Words.data(), nullptr);
    if (result == -1) {
        return std::nullopt;
    }
    if (result == '?' || result == ':') {
        return TypedOption{Option::Mistake, SentenceForRefused(result)};
    }
    const OptionRow& row = RowOf(result);
    return TypedOption{row.Meaning, optarg != nullptr ? optarg : row.Value};
}

std::span<char* const> OptionReader::Operands() const {
    return Arguments.subspan(static_cast<std::size_t>(optind));
}

std::string OptionReader::SentenceForRefused(int Result) const {
    const bool bNeedsArgument = Result == ':';
    if (optopt >= kFirstWord) {
        return "option " + QuotedWord(RowOf(optopt).Word) +
               (bNeedsArgument ? " requires an argument" : " doesn't allow an argument");
    }
    if (optopt == 0) {
        return SentenceForRefusedWord(Arguments[static_cast<std::size_t>(optind) - 1]);
    }
    const std::string letter(1, static_cast<char>(optopt));
    if (bNeedsArgument) {
        return "option requires an argument -- " + Quoted(letter);
    }
    return "invalid option -- " + Quoted(letter) +
           InsteadOf(Reading, [](const OptionRow& Row) { return Row.Letter == optopt; });
}

// Argument is the whole word with its dashes and its value.
std::string OptionReader::SentenceForRefusedWord(const std::string& Argument) const {
    const std::string typed = Argument.substr(2, Argument.find('=') - 2);
    std::string possibilities;
    for (const option& word : Words) {
        if (word.name != nullptr && std::string_view(word.name).starts_with(typed)) {
            possibilities += ' ' + QuotedWord(word.name);
        }
    }
    if (!possibilities.empty()) {
        return "option " + Quoted(Argument) + " is ambiguous; possibilities:" + possibilities;
    }
    const std::string instead = InsteadOf(Reading, [&typed](const OptionRow& Row) {
        return Row.Word != nullptr && Row.Word == typed;
    });
    return "unrecognized option " + Quoted(Argument) +
           (instead.empty() ? NearOption(typed) : instead);
}

// Asks whether an option was meant that is near to what was typed; empty when none is.
std::string OptionReader::NearOption(std::string_view Typed) const {
    std::vector<std::string_view> known;
    for (const option& word : Words) {
        if (word.name != nullptr) {
            known.emplace_back(word.name);
        }
    }
    const std::string near = NearestWord(Typed, known);
    return near.empty() ? near : "; did you mean " + QuotedWord(near) + "?";
}
