#include "case_generator.h"

#include "dice.h"

#include <algorithm>
#include <array>
#include <set>

using Action = TarvaneTransferConflictAction;
using Policy = TarvaneTransferConflictPolicy;

namespace {

class Generator {
public:
    explicit Generator(Dice& DiceToThrow) : Dices(DiceToThrow) {}

    RandomCase Generate();

private:
    bool Add(CaseEntry Entry);
    void AddTree(const std::string& Directory, int Depth);
    void AddEntry(const std::string& Path, int Depth);
    void AddTaken(const std::string& Source, const std::string& Destination, int Depth);
    std::string Name();
    std::string Target(const std::string& Path);
    std::string AnyPath();
    std::vector<std::string> NamesIn(const std::string& Directory) const;
    CaseItem Item();
    CaseAnswer Answer();

    Dice& Dices;
    RandomCase Case;
    std::set<std::string> Taken;
};

std::string Generator::Name() {
    static const std::array<std::string, 5> kPlain{"a", "b", "c", "d", "e"};
    static const std::array<std::string, 10> kOdd{
        "-rf", "new\nline",    "\xff\xfe", "\xe6\x97\xa5\xe6\x9c\xac", " ", "back\\slash",
        "*",   "tab\t\x1b[2J", "...",      std::string(255, 'x')};
    return Dices.Percent(90) ? Dices.OneOf(kPlain) : Dices.OneOf(kOdd);
}

bool Generator::Add(CaseEntry Entry) {
    if (!Taken.insert(Entry.Path).second) {
        return false;
    }
    Entry.ModifiedSeconds = static_cast<std::int64_t>(Dices.Between(1, 5));
    Case.Entries.push_back(std::move(Entry));
    return true;
}

std::string Generator::AnyPath() {
    return Dices.OneOf(Case.Entries).Path;
}

std::string Generator::Target(const std::string& Path) {
    const std::string up = [&Path] {
        std::string steps;
        for (std::size_t depth = std::size_t(std::count(Path.begin(), Path.end(), '/')); depth > 0;
             --depth) {
            steps += "../";
        }
        return steps;
    }();
    const std::size_t kind = Dices.Below(20);
    if (kind < 10) {
        return up + AnyPath();
    }
    if (kind < 13) {
        return "~/" + AnyPath();
    }
    if (kind < 15) {
        return Name();
    }
    static const std::array<std::string, 6> kOdd{".",         "..",        "missing",
                                                 "missing/x", "/dev/null", "a/b"};
    return kind == 19 ? Path.substr(Path.rfind('/') + 1) : Dices.OneOf(kOdd);
}

void Generator::AddEntry(const std::string& Path, int Depth) {
    CaseEntry entry{.Path = Path};
    const std::size_t kind = Dices.Below(100);
    if (kind < 30 && Depth > 0) {
        entry.Kind = EntryKind::Directory;
        if (Add(entry)) {
            AddTree(Path, Depth - 1);
        }
        return;
    }
    if (kind < 78) {
        static const std::array<std::uint64_t, 5> kNearBlocks{262143, 262144, 262145, 524288, 9000};
        entry.Size = Dices.Percent(98) ? Dices.Below(5) : Dices.OneOf(kNearBlocks);
        entry.Stamp = static_cast<unsigned>(Dices.Below(4));
    } else if (kind < 90) {
        entry.Kind = EntryKind::Link;
        entry.Target = Target(Path);
    } else if (kind < 95) {
        const std::string existing = AnyPath();
        const auto file = std::find_if(
            Case.Entries.begin(), Case.Entries.end(), [&existing](const CaseEntry& Candidate) {
                return Candidate.Path == existing && Candidate.Kind == EntryKind::File;
            });
        const bool bSameFileSystem = existing.starts_with("far/") == Path.starts_with("far/");
        if (file != Case.Entries.end() && bSameFileSystem) {
            entry.Kind = EntryKind::HardLink;
            entry.Target = existing;
        }
    } else if (kind < 97) {
        entry.Kind = Dices.Percent(70) ? EntryKind::Fifo : EntryKind::Socket;
    }
    Add(entry);
}

void Generator::AddTree(const std::string& Directory, int Depth) {
    for (std::size_t count = Dices.Between(0, 4); count > 0; --count) {
        AddEntry(Directory + "/" + Name(), Depth);
    }
}

std::vector<std::string> Generator::NamesIn(const std::string& Directory) const {
    std::vector<std::string> names;
    for (const CaseEntry& entry : Case.Entries) {
        if (entry.Path.starts_with(Directory + "/") &&
            entry.Path.find('/', Directory.size() + 1) == std::string::npos) {
            names.push_back(entry.Path.substr(Directory.size() + 1));
        }
    }
    return names;
}

// Takes some of the names that the source's entries will have at the destination.
void Generator::AddTaken(const std::string& Source, const std::string& Destination, int Depth) {
    const std::string sourceStart = Source + "/";
    const std::string start = Destination + "/";
    for (const std::string& name : NamesIn(Source)) {
        const std::string source = sourceStart + name;
        const std::string path = start + name;
        const bool bDirectory = !NamesIn(source).empty();
        if (!Dices.Percent(55)) {
            continue;
        }
        if (bDirectory && Dices.Percent(70)) {
            Add({.Path = path, .Kind = EntryKind::Directory});
            AddTaken(source, path, Depth);
        } else {
            AddEntry(path, Depth);
        }
    }
}

CaseItem Generator::Item() {
    const std::vector<std::string> names = NamesIn("from");
    CaseItem item{"from/" + (names.empty() ? Name() : Dices.OneOf(names)), {}};
    if (Dices.Percent(15)) {
        item.Source = Dices.Percent(90) ? AnyPath() : AnyPath() + "/" + Name();
    }
    const std::string name = item.Source.substr(item.Source.rfind('/') + 1);
    item.Destination = Dices.Percent(85) ? "to/" + name : "far/" + name;
    if (Dices.Percent(20)) {
        const std::array<std::string, 7> kElsewhere{
            "to/" + Name(),          "to/new/deep/" + name, AnyPath(),    AnyPath() + "/" + name,
            item.Source + "/inside", item.Source,           "out/" + name};
        item.Destination = Dices.OneOf(kElsewhere);
    }
    return item;
}

CaseAnswer Generator::Answer() {
    static const std::array<Action, 10> kToDirectory{
        Action::Merge,    Action::Merge, Action::Merge,   Action::Merge, Action::Merge,
        Action::MergeAll, Action::Skip,  Action::SkipAll, Action::Merge, Action::Merge};
    static const std::array<Action, 16> kToFile{Action::Overwrite,
                                                Action::Overwrite,
                                                Action::Overwrite,
                                                Action::Overwrite,
                                                Action::OverwriteAll,
                                                Action::Skip,
                                                Action::Skip,
                                                Action::SkipAll,
                                                Action::CompareByContent,
                                                Action::Rename,
                                                Action::CompareByContent,
                                                Action::Rename,
                                                Action::Rename,
                                                Action::Skip,
                                                Action::OverwriteAllOlder,
                                                Action::Skip};
    static const std::array<Action, 5> kOdd{Action::Cancel, Action::Rename, Action::MergeAll,
                                            Action::Overwrite, Action::OverwriteAllOlder};
    CaseAnswer answer{Dices.OneOf(kToDirectory), Dices.OneOf(kToFile), {}};
    if (Dices.Percent(4)) {
        (Dices.Percent(50) ? answer.ToDirectory : answer.ToFile) = Dices.OneOf(kOdd);
    }
    const std::array<std::string, 10> kNewNames{
        "free",    "free2",          Name(),       "",          "deep/er/free",
        "../free", Name() + "/free", "free\nline", "\xff free", std::string(256, 'y')};
    answer.NewName =
        Dices.Percent(60) ? "free" + std::to_string(Dices.Below(1000)) : Dices.OneOf(kNewNames);
    return answer;
}

RandomCase Generator::Generate() {
    for (const char* const directory : {"out", "far", "to", "from"}) {
        Add({.Path = directory, .Kind = EntryKind::Directory});
    }
    AddTree("out", 1);
    if (Dices.Percent(30)) {
        AddTree("far", 1);
    }
    AddTree("from", 2);
    AddTree("from", 2);
    AddTaken("from", "to", 1);
    Case.bMove = Dices.Percent(50);
    static const std::array<Policy, 6> kPolicies{Policy::Ask,       Policy::Ask,  Policy::Ask,
                                                 Policy::Overwrite, Policy::Skip, Policy::Ask};
    Case.Policy = Dices.OneOf(kPolicies);
    for (std::size_t count = Dices.Between(1, 4); count > 0; --count) {
        Case.Items.push_back(Item());
    }
    for (std::size_t count = Dices.Percent(90) ? 12 : Dices.Below(4); count > 0; --count) {
        Case.Answers.push_back(Answer());
    }
    Case.bCanceledBefore = Dices.Percent(1);
    return Case;
}

} // namespace

RandomCase GenerateCase(std::uint64_t Seed, std::uint64_t Index, std::uint64_t Attempt) {
    Dice dices(Seed, Index, Attempt);
    return Generator(dices).Generate();
}
