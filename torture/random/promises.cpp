#include "promises.h"

#include "case_tree.h"
#include "undetermined.h"

#include <algorithm>

namespace {

constexpr int kDeepest = 6;
constexpr std::size_t kMostSources = 300;

bool IsFile(const std::string& Fact) {
    return Fact.starts_with("file ");
}

} // namespace

std::string FactName(const std::string& Path) {
    return std::string(kTreeFact) + "/" + Path;
}

std::string FactPath(const std::string& Name) {
    return Name.substr(kTreeFact.size() + 1);
}

Promises::Promises(const RandomCase& CaseToRun, ModelFiles& Files)
    : Case(CaseToRun), FilesBefore(Files), Library(Files), Before(TreeInModel(Files)) {
    for (const CaseItem& item : Case.Items) {
        const std::size_t slash = item.Destination.find('/');
        Destination = item.Destination.substr(0, slash);
        if (!Library.Status(Files.RootPath() + "/" + Destination).Is(EntryKind::Directory)) {
            throw Undetermined("the destination is missing");
        }
        AddSources(item.Source, item.Destination.substr(slash + 1), 0);
    }
    // Such a link leads nowhere once its target was moved, and a rename takes its name for free.
    const auto isLinkToSource = [this](const auto& Entry) {
        return Entry.second.bLinkAtDestination &&
               std::any_of(Sources.begin(), Sources.end(), [&Entry](const auto& Other) {
                   return Other.second.Node == Entry.second.Taken;
               });
    };
    if (Case.bMove && std::any_of(Sources.begin(), Sources.end(), isLinkToSource)) {
        throw Undetermined("a link at the destination leads to what is moved");
    }
    // Its contents go to the name that comes first.
    const auto isMovedTwice = [this](const auto& Entry) {
        return Entry.second.OwnFact.starts_with("link ") && Entry.second.Fact == "directory" &&
               std::count_if(Sources.begin(), Sources.end(), [&Entry](const auto& Other) {
                   return Other.second.Node == Entry.second.Node;
               }) > 1;
    };
    if (Case.bMove && std::any_of(Sources.begin(), Sources.end(), isMovedTwice)) {
        throw Undetermined("a link leads to a directory that is moved itself");
    }
}

void Promises::AddSources(const std::string& Path, const std::string& Name, int Depth) {
    if (Depth > kDeepest || Sources.size() > kMostSources) {
        throw Undetermined("the sources have no end");
    }
    const std::string root = FilesBefore.RootPath() + "/";
    const std::string destination = root + Destination + "/" + Name;
    const LibraryStatus status = Library.Status(root + Path);
    const ModelNode* const own = Library.LinkStatus(root + Path).Node;
    if (own == nullptr) {
        throw Undetermined("a source is missing");
    }
    SourceEntry& source = Sources[Name];
    source.Path = Path;
    source.Node = status.Node;
    source.Fact = status.Node == nullptr ? "" : NodeFact(*status.Node);
    source.OwnFact = NodeFact(*own);
    source.Taken = Library.Status(destination).Node;
    source.bLinkAtDestination = Library.LinkStatus(destination).Is(EntryKind::Link);
    if (status.Is(EntryKind::Directory)) {
        const std::string pathStart = Path + "/";
        const std::string nameStart = Name + "/";
        for (const auto& [name, node] : status.Node->Children) {
            AddSources(pathStart + name, nameStart + name, Depth + 1);
        }
    }
}

std::string Promises::FileChoice() const {
    const std::string& option = Case.Options.front();
    const std::size_t sign = option.find('=');
    const std::string value = sign == std::string::npos ? option : option.substr(sign + 1);
    static const std::map<std::string, std::string> kShort{
        {"--force", "overwrite"}, {"--no-clobber", "skip"}, {"--update", "older"},
        {"all", "overwrite"},     {"none", "skip"},         {"none-fail", "fail"}};
    const auto found = kShort.find(value);
    return found == kShort.end() ? value : found->second;
}

std::string Promises::DirectoryChoice() const {
    for (const std::string& option : Case.Options) {
        if (option.starts_with("--on-directory-conflict=")) {
            return option.substr(option.find('=') + 1);
        }
    }
    return "merge";
}

// Whether the choice lets a file take the place of the file that has its name.
bool Promises::Replaces(const SourceEntry& Source) const {
    const std::string choice = FileChoice();
    const ModelNode& taken = *Source.Taken;
    if (choice == "compare") {
        return Source.bLinkAtDestination || Source.Node->Data != taken.Data;
    }
    if (choice == "older") {
        return taken.ModifiedSeconds < Source.Node->ModifiedSeconds;
    }
    if (choice == "larger") {
        return Source.Node->Data.size() > taken.Data.size();
    }
    if (choice == "size-differs") {
        return Source.Node->Data.size() != taken.Data.size();
    }
    return choice == "overwrite";
}

// Whether a file may take the place of what has its name: a file, or a link, which is weighed by
// what it leads to where that can be weighed, and goes itself. A device, a pipe or a socket only
// that of a link.
bool Promises::MayReplace(const SourceEntry& Source) const {
    if (Source.Taken == nullptr || Source.Node == nullptr ||
        Source.Node->Kind == EntryKind::Directory) {
        return false;
    }
    if (Source.Taken->Kind == EntryKind::File && Source.Node->Kind == EntryKind::File) {
        return Replaces(Source);
    }
    const std::string choice = FileChoice();
    return Source.bLinkAtDestination && choice != "skip" && choice != "keep-both" &&
           choice != "fail";
}

// Whether there is nothing that the program may refuse: only files and directories, each in the
// place of another one of its own kind.
bool Promises::IsPlain() const {
    return std::all_of(Sources.begin(), Sources.end(), [](const auto& Source) {
        const SourceEntry& entry = Source.second;
        const bool bOrdinary = IsFile(entry.OwnFact) || entry.OwnFact == "directory";
        return bOrdinary && !entry.bLinkAtDestination &&
               (entry.Taken == nullptr ||
                (entry.Taken->Kind == entry.Node->Kind && entry.Taken != entry.Node));
    });
}

// A source that is its own destination is refused as such, when the turn comes to it.
bool Promises::MustTouchNothing() const {
    return std::any_of(Sources.begin(), Sources.end(), [this](const auto& Source) {
        const SourceEntry& entry = Source.second;
        if (entry.Taken == nullptr || entry.Node == nullptr || entry.Taken == entry.Node ||
            entry.Taken->Kind != entry.Node->Kind || MayBeSkipped(Source.first)) {
            return false;
        }
        return entry.Node->Kind == EntryKind::File        ? FileChoice() == "fail"
               : entry.Node->Kind == EntryKind::Directory ? DirectoryChoice() == "fail"
                                                          : false;
    });
}

// Whether the entry or a directory that it is in may be left out because its name is taken.
bool Promises::MayBeSkipped(const std::string& Name) const {
    for (std::size_t end = Name.find('/'); end != std::string::npos;
         end = Name.find('/', end + 1)) {
        const SourceEntry& directory = Sources.at(Name.substr(0, end));
        if (directory.Taken != nullptr &&
            (DirectoryChoice() == "skip" || directory.Taken->Kind != EntryKind::Directory)) {
            return true;
        }
    }
    const SourceEntry& source = Sources.at(Name);
    if (source.Taken == nullptr || source.Node == nullptr) {
        return false;
    }
    if (source.Node->Kind == EntryKind::Directory) {
        return DirectoryChoice() == "skip" || source.Taken->Kind != EntryKind::Directory;
    }
    if (FileChoice() == "fail" || FileChoice() == "keep-both") {
        return false;
    }
    const bool bWeighed = source.Taken->Kind == EntryKind::File;
    return FileChoice() == "skip" || source.IsSpecial() ||
           (bWeighed ? !MayReplace(source) : source.bLinkAtDestination);
}
