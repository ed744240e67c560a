#include "option_reader.h"

#include <charconv>
#include <string_view>
#include <system_error>

#include <getopt.h>

#include "help_text.h"
#include "quoted.h"

namespace {

// What getopt_long returns for an option. One with a letter has the letter's code in its short form
// and kLongForm more in its long one, so that a mistake can be told in the form that was typed.
enum OptionCode : int {
    kOnConflict = 1,
    kOnDirectoryConflict,
    kProgress,
    kInterval,
    kFlush,
    kNoPreflight,
    kDryRun,
    kFollowLinks,
    kHelp,
    kVersion,
    kLongForm = 256,
};

constexpr char kShortOptions[] = ":t:TnfuivqrR";

constexpr option kLongOptions[] = {
    {"on-conflict", required_argument, nullptr, kLongForm + kOnConflict},
    {"on-directory-conflict", required_argument, nullptr, kLongForm + kOnDirectoryConflict},
    {"target-directory", required_argument, nullptr, kLongForm + 't'},
    {"no-target-directory", no_argument, nullptr, kLongForm + 'T'},
    {"verbose", no_argument, nullptr, kLongForm + 'v'},
    {"quiet", no_argument, nullptr, kLongForm + 'q'},
    {"recursive", no_argument, nullptr, kLongForm + 'r'},
    {"progress", required_argument, nullptr, kLongForm + kProgress},
    {"interval", required_argument, nullptr, kLongForm + kInterval},
    {"flush", required_argument, nullptr, kLongForm + kFlush},
    {"no-preflight", no_argument, nullptr, kLongForm + kNoPreflight},
    {"dry-run", no_argument, nullptr, kLongForm + kDryRun},
    {"follow-links", no_argument, nullptr, kLongForm + kFollowLinks},
    {"help", no_argument, nullptr, kLongForm + kHelp},
    {"version", no_argument, nullptr, kLongForm + kVersion},
    {nullptr, 0, nullptr, 0},
};

constexpr std::pair<const char*, FileConflictChoice> kFileChoices[] = {
    {"ask", FileConflictChoice::Ask},
    {"overwrite", FileConflictChoice::Overwrite},
    {"skip", FileConflictChoice::Skip},
    {"older", FileConflictChoice::Older},
    {"compare", FileConflictChoice::Compare},
    {"larger", FileConflictChoice::Larger},
    {"size-differs", FileConflictChoice::SizeDiffers},
    {"keep-both", FileConflictChoice::KeepBoth},
    {"fail", FileConflictChoice::Fail},
};

constexpr std::pair<const char*, DirectoryConflictChoice> kDirectoryChoices[] = {
    {"ask", DirectoryConflictChoice::Ask},
    {"merge", DirectoryConflictChoice::Merge},
    {"skip", DirectoryConflictChoice::Skip},
    {"fail", DirectoryConflictChoice::Fail},
};

constexpr std::pair<const char*, ProgressStyle> kProgressStyles[] = {
    {"auto", ProgressStyle::Auto}, {"live", ProgressStyle::Live}, {"lines", ProgressStyle::Lines},
    {"json", ProgressStyle::Json}, {"none", ProgressStyle::None},
};

constexpr std::pair<const char*, FlushChoice> kFlushChoices[] = {
    {"auto", FlushChoice::Auto},
    {"always", FlushChoice::Always},
    {"never", FlushChoice::Never},
};

constexpr double kShortestInterval = 0.1;
constexpr double kLongestInterval = 3600.0;

std::string LongNameOf(int LongValue) {
    for (const option& entry : kLongOptions) {
        if (entry.val == LongValue && entry.name != nullptr) {
            return "--" + std::string(entry.name);
        }
    }
    return {};
}

// Argument is the whole word, its value included.
std::string SentenceForUnknownLongOption(std::string_view Argument) {
    const std::string_view name = Argument.substr(2, Argument.find('=') - 2);
    std::string possibilities;
    for (const option& entry : kLongOptions) {
        if (entry.name != nullptr && std::string_view(entry.name).starts_with(name)) {
            possibilities += ' ' + Quoted("--" + std::string(entry.name));
        }
    }
    if (possibilities.empty()) {
        return "unrecognized option " + Quoted(Argument);
    }
    return "option " + Quoted(Argument) + " is ambiguous; possibilities:" + possibilities;
}

// What getopt_long would have printed about the option that it has just refused.
std::string SentenceForRefusedOption(int Result, char* const* Argv) {
    const bool bNeedsArgument = Result == ':';
    if (optopt >= kLongForm) {
        return "option " + Quoted(LongNameOf(optopt)) +
               (bNeedsArgument ? " requires an argument" : " doesn't allow an argument");
    }
    if (optopt == 0) {
        return SentenceForUnknownLongOption(Argv[optind - 1]);
    }
    const std::string letter(1, static_cast<char>(optopt));
    return (bNeedsArgument ? "option requires an argument -- " : "invalid option -- ") +
           Quoted(letter);
}

} // namespace

int OptionReader::Read(int Argc, char** Argv) {
    // 0 makes getopt_long forget an earlier call.
    optind = 0;
    opterr = 0;
    int result = 0;
    while (!Answer &&
           (result = getopt_long(Argc, Argv, kShortOptions, kLongOptions, nullptr)) != -1) {
        if (result == '?' || result == ':') {
            Refuse(SentenceForRefusedOption(result, Argv));
            continue;
        }
        const bool bLong = result >= kLongForm;
        Apply(bLong ? result - kLongForm : result, bLong);
    }
    return optind;
}

void OptionReader::Apply(int Code, bool bLong) {
    switch (Code) {
    case 'i':
        Request.Transfer.OnConflict = FileConflictChoice::Ask;
        break;
    case 'f':
        Request.Transfer.OnConflict = FileConflictChoice::Overwrite;
        break;
    case 'n':
        Request.Transfer.OnConflict = FileConflictChoice::Skip;
        break;
    case 'u':
        Request.Transfer.OnConflict = FileConflictChoice::Older;
        break;
    case 'T':
        Request.Transfer.bNoTargetDirectory = true;
        break;
    case 'r':
    case 'R':
        AcceptRecursive(Code, bLong);
        break;
    case 'v':
    case 'q':
        Request.bVerbose = Code == 'v';
        Request.bQuiet = Code == 'q';
        break;
    case kNoPreflight:
        Request.Transfer.bPreflight = false;
        break;
    case kDryRun:
        Request.Transfer.bDryRun = true;
        break;
    case kFollowLinks:
        Request.Transfer.bFollowLinks = true;
        break;
    default:
        ApplyWithText(Code);
    }
}

void OptionReader::ApplyWithText(int Code) {
    switch (Code) {
    case 't':
        ReadTargetDirectory();
        break;
    case kOnConflict:
        ReadChoice<FileConflictChoice>(Code, kFileChoices, Request.Transfer.OnConflict);
        break;
    case kOnDirectoryConflict:
        ReadChoice<DirectoryConflictChoice>(Code, kDirectoryChoices,
                                            Request.Transfer.OnDirectoryConflict.emplace());
        break;
    case kProgress:
        ReadChoice<ProgressStyle>(Code, kProgressStyles, Request.Progress);
        break;
    case kInterval:
        ReadInterval();
        break;
    case kFlush:
        ReadChoice<FlushChoice>(Code, kFlushChoices, Request.Transfer.Flush);
        break;
    case kHelp:
        Answer = InformationText{kHelpText};
        break;
    case kVersion:
        Answer = InformationText{kVersionText};
        break;
    }
}

void OptionReader::ReadTargetDirectory() {
    if (Request.Transfer.TargetDirectory) {
        Refuse("multiple target directories specified");
        return;
    }
    Request.Transfer.TargetDirectory = optarg;
}

void OptionReader::AcceptRecursive(int Code, bool bLong) {
    if (Request.Transfer.bMove) {
        Refuse(bLong ? "unrecognized option '--recursive'"
                     : "invalid option -- " + Quoted(std::string(1, static_cast<char>(Code))));
    }
}

template <typename Choice>
void OptionReader::ReadChoice(int Code, NamedChoices<Choice> Choices, Choice& Out) {
    std::string valid;
    for (const auto& [name, value] : Choices) {
        if (std::string_view(name) == optarg) {
            Out = value;
            return;
        }
        valid += (valid.empty() ? "" : ", ") + std::string(name);
    }
    Refuse("invalid argument " + Quoted(optarg) + " for " + Quoted(LongNameOf(kLongForm + Code)) +
           "; valid are " + valid);
}

void OptionReader::ReadInterval() {
    const std::string_view text = optarg;
    double seconds = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    const bool bNumber = error == std::errc() && end == text.data() + text.size();
    // Written so that "nan" is refused.
    if (bNumber && seconds >= kShortestInterval && seconds <= kLongestInterval) {
        Request.IntervalSeconds = seconds;
        return;
    }
    Refuse("invalid argument " + Quoted(text) +
           " for '--interval'; valid are 0.1 to 3600 "
           "seconds");
}
