#include "transfer_options.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <span>
#include <string_view>
#include <system_error>
#include <utility>

#include "quoted.h"

namespace {

template <typename Choice>
using NamedChoices = std::span<const std::pair<const char*, Choice>>;

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

// In the words of cp.
constexpr std::pair<const char*, FileConflictChoice> kUpdateChoices[] = {
    {"older", FileConflictChoice::Older},
    {"all", FileConflictChoice::Overwrite},
    {"none", FileConflictChoice::Skip},
    {"none-fail", FileConflictChoice::Fail},
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

// Those of cp are known too.
constexpr std::pair<const char*, PreserveChoice> kPreserveChoices[] = {
    {"mode", {.bMode = true}},       {"times", {.bTimes = true}},
    {"owner", {.bOwner = true}},     {"all", {.bMode = true, .bTimes = true, .bOwner = true}},
    {"ownership", {.bOwner = true}}, {"timestamps", {.bTimes = true}},
};

constexpr double kShortestInterval = 0.1;
constexpr double kLongestInterval = 3600.0;

std::string SentenceForValue(const std::string& Value, const char* Word, const std::string& Valid) {
    return "invalid argument " + Quoted(Value) + " for " + Quoted(Word) + "; valid are " + Valid;
}

template <typename Choice>
std::string ReadChoice(const char* Word, const std::string& Value, NamedChoices<Choice> Choices,
                       Choice& Out) {
    std::string valid;
    for (const auto& [name, choice] : Choices) {
        if (Value == name) {
            Out = choice;
            return {};
        }
        valid += (valid.empty() ? "" : ", ") + std::string(name);
    }
    return SentenceForValue(Value, Word, valid);
}

// Adds what the comma-separated list names.
std::string ReadPreserveList(const std::string& List, PreserveChoice& InOut) {
    std::size_t start = 0;
    while (start <= List.size()) {
        const std::size_t end = std::min(List.find(',', start), List.size());
        PreserveChoice named;
        std::string mistake = ReadChoice<PreserveChoice>(
            "--preserve", List.substr(start, end - start), kPreserveChoices, named);
        if (!mistake.empty()) {
            return mistake;
        }
        InOut.bMode = InOut.bMode || named.bMode;
        InOut.bTimes = InOut.bTimes || named.bTimes;
        InOut.bOwner = InOut.bOwner || named.bOwner;
        start = end + 1;
    }
    return {};
}

std::string ReadInterval(const std::string& Value, double& OutSeconds) {
    const std::string_view text = Value;
    double seconds = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    const bool bNumber = error == std::errc() && end == text.data() + text.size();
    // Written so that "nan" is refused.
    if (bNumber && seconds >= kShortestInterval && seconds <= kLongestInterval) {
        OutSeconds = seconds;
        return {};
    }
    return SentenceForValue(Value, "--interval", "0.1 to 3600 seconds");
}

std::string ReadTargetDirectory(const std::string& Value, TransferRequest& Out) {
    if (Out.TargetDirectory) {
        return "multiple target directories specified";
    }
    Out.TargetDirectory = Value;
    return {};
}

} // namespace

std::string ApplyTransferOption(const TypedOption& Typed, PromptRequest& Out) {
    TransferRequest& transfer = Out.Transfer;
    const std::string& value = Typed.Value;
    switch (Typed.Meaning) {
    case Option::OnConflict:
        return ReadChoice<FileConflictChoice>("--on-conflict", value, kFileChoices,
                                              transfer.OnConflict.emplace());
    case Option::Update:
        return ReadChoice<FileConflictChoice>("--update", value, kUpdateChoices,
                                              transfer.OnConflict.emplace());
    case Option::OnDirectoryConflict:
        return ReadChoice<DirectoryConflictChoice>("--on-directory-conflict", value,
                                                   kDirectoryChoices,
                                                   transfer.OnDirectoryConflict.emplace());
    case Option::TargetDirectory:
        return ReadTargetDirectory(value, transfer);
    case Option::Progress:
        return ReadChoice<ProgressStyle>("--progress", value, kProgressStyles, Out.Progress);
    case Option::Interval:
        return ReadInterval(value, Out.IntervalSeconds);
    case Option::Flush:
        return ReadChoice<FlushChoice>("--flush", value, kFlushChoices, transfer.Flush);
    case Option::Preserve:
        return ReadPreserveList(value, transfer.Preserve);
    case Option::NoPreserve:
        transfer.Preserve = {};
        break;
    case Option::NoTargetDirectory:
        transfer.bNoTargetDirectory = true;
        break;
    case Option::Quiet:
    case Option::Verbose:
        Out.bQuiet = Typed.Meaning == Option::Quiet;
        Out.bVerbose = Typed.Meaning == Option::Verbose;
        break;
    case Option::DryRun:
        transfer.bDryRun = true;
        break;
    case Option::NoPreflight:
        transfer.bPreflight = false;
        break;
    case Option::FollowLinks:
        transfer.bFollowLinks = true;
        break;
    case Option::Recursive:
    case Option::Json:
    case Option::Help:
    case Option::Version:
    case Option::Mistake:
        break;
    }
    return {};
}
