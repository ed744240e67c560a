#include "program_case.h"

#include "case_generator.h"
#include "dice.h"

#include <algorithm>
#include <array>

namespace {

// Distinguishes the dice from those that the entries are made with.
constexpr std::uint64_t kProgramDice = 1000003;

bool IsTopSource(const CaseEntry& Entry) {
    return Entry.Path.starts_with("from/") && Entry.Path.find('/', 5) == std::string::npos;
}

// Gives each file contents of its own. Some at the destination get those of their source.
void MakeContentsTellFilesApart(RandomCase& InOutCase, Dice& Dices) {
    constexpr std::uint64_t kShortest = 8;
    unsigned stamp = 0;
    for (CaseEntry& entry : InOutCase.Entries) {
        stamp += 2;
        entry.Stamp = stamp;
        entry.Size = std::max(entry.Size, kShortest + Dices.Below(3));
    }
    for (CaseEntry& entry : InOutCase.Entries) {
        const std::size_t slash = std::min(entry.Path.find('/'), entry.Path.size());
        const std::string source = "from" + entry.Path.substr(slash);
        const auto found =
            std::find_if(InOutCase.Entries.begin(), InOutCase.Entries.end(),
                         [&source](const CaseEntry& Other) { return Other.Path == source; });
        if (found != InOutCase.Entries.end() && Dices.Percent(25)) {
            entry.Size = found->Size;
            entry.Stamp = found->Stamp + (Dices.Percent(30) ? 1 : 0);
        }
    }
}

std::vector<CaseItem> SomeSources(const RandomCase& Case, Dice& Dices) {
    const std::string directory = Dices.Percent(70) ? "to/" : "far/";
    std::vector<CaseItem> items;
    for (const CaseEntry& entry : Case.Entries) {
        if (IsTopSource(entry) && Dices.Percent(60)) {
            items.push_back({entry.Path, directory + entry.Path.substr(5)});
        }
    }
    return items;
}

std::vector<std::string> SomeOptions(Dice& Dices) {
    static const std::array<std::string, 14> kFileChoices{"--on-conflict=overwrite",
                                                          "--on-conflict=skip",
                                                          "--on-conflict=older",
                                                          "--on-conflict=compare",
                                                          "--on-conflict=larger",
                                                          "--on-conflict=size-differs",
                                                          "--on-conflict=keep-both",
                                                          "--on-conflict=fail",
                                                          "--force",
                                                          "--no-clobber",
                                                          "--update",
                                                          "--update=none",
                                                          "--update=none-fail",
                                                          "--update=all"};
    static const std::array<std::string, 6> kOthers{"--quiet",         "--verbose",
                                                    "--progress=json", "--no-preflight",
                                                    "--no-preserve",   "--flush=never"};
    std::vector<std::string> options{Dices.OneOf(kFileChoices)};
    if (Dices.Percent(25)) {
        options.push_back("--on-directory-conflict=" +
                          Dices.OneOf(std::array<std::string, 3>{"merge", "skip", "fail"}));
    }
    if (Dices.Percent(40)) {
        options.push_back(Dices.OneOf(kOthers));
    }
    return options;
}

// Without links and other entries that the program may refuse, so that it has no reason to fail.
void KeepFilesAndDirectories(RandomCase& InOutCase) {
    std::erase_if(InOutCase.Entries, [](const CaseEntry& Entry) {
        return Entry.Kind != EntryKind::File && Entry.Kind != EntryKind::Directory;
    });
}

} // namespace

RandomCase GenerateProgramCase(std::uint64_t Seed, std::uint64_t Index, std::uint64_t Attempt) {
    RandomCase made = GenerateCase(Seed, Index, Attempt);
    Dice dices(Seed, Index, Attempt + kProgramDice);
    if (dices.Percent(60)) {
        KeepFilesAndDirectories(made);
    }
    MakeContentsTellFilesApart(made, dices);
    made.Items = SomeSources(made, dices);
    made.Options = SomeOptions(dices);
    made.Answers.clear();
    return made;
}
