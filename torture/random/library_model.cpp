#include "library_model.h"

#include "undetermined.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <vector>

namespace fs = std::filesystem;

std::string ParentOf(const std::string& Path) {
    return fs::path(Path).parent_path().native();
}

bool LibraryStatus::IsKnown() const {
    return Node != nullptr || Error == ENOENT || Error == ENOTDIR;
}

LibraryStatus LibraryModel::Status(const std::string& Path) {
    const ModelPlace place = Files.Find(Path, Links::Follow);
    return {place.Node, place.Error};
}

LibraryStatus LibraryModel::LinkStatus(const std::string& Path) {
    const ModelPlace place = Files.Find(Path, Links::Keep);
    return {place.Node, place.Error};
}

bool LibraryModel::Exists(const std::string& Path, int& OutError) {
    const LibraryStatus status = Status(Path);
    OutError = status.IsKnown() ? 0 : status.Error;
    return status.Node != nullptr;
}

std::optional<std::uint64_t> LibraryModel::FileSize(const std::string& Path) {
    const LibraryStatus status = Status(Path);
    return status.Is(EntryKind::File) ? std::optional(status.Node->Data.size()) : std::nullopt;
}

int LibraryModel::CreateDirectories(const std::string& Path) {
    std::vector<std::string> missing;
    std::string path = Path;
    for (;;) {
        const LibraryStatus status = Status(path);
        if (!status.IsKnown()) {
            return status.Error;
        }
        if (status.Node != nullptr) {
            if (!status.Is(EntryKind::Directory)) {
                return ENOTDIR;
            }
            break;
        }
        missing.push_back(path);
        path = ParentOf(path);
    }
    for (; !missing.empty(); missing.pop_back()) {
        const int error = Files.Create(missing.back(), EntryKind::Directory, {});
        if (error != 0) {
            return error;
        }
    }
    return 0;
}

int LibraryModel::Remove(const std::string& Path) {
    const int error = Files.Remove(Path);
    return error == ENOENT ? 0 : error;
}

int LibraryModel::CopySpecial(const std::string& From, const std::string& To) {
    const LibraryStatus from = LinkStatus(From);
    const LibraryStatus to = Status(To);
    if (to.Node != nullptr && to.Node == from.Node) {
        return EEXIST;
    }
    const auto isPlain = [](const LibraryStatus& Of) {
        return Of.Is(EntryKind::File) || Of.Is(EntryKind::Directory) || Of.Is(EntryKind::Link);
    };
    if (!isPlain(from) || (to.Node != nullptr && (!isPlain(to) || from.Is(EntryKind::Link)))) {
        return EINVAL;
    }
    return Files.Create(To, EntryKind::Link, from.Node->Data);
}

bool LibraryModel::LeadsThrough(const std::string& Path, const std::string& Removed) {
    const ModelNode* const removed = LinkStatus(Removed).Node;
    std::vector<ModelPlace> visited;
    Files.Find(Path, Links::Follow, &visited);
    return std::any_of(visited.begin(), visited.end(), [removed](const ModelPlace& Step) {
        return Step.Node == removed || IsBelowOrSame(Step.Directory, removed);
    });
}

bool LibraryModel::AreSame(const std::string& First, const std::string& Second) {
    const ModelNode* const first = Status(First).Node;
    if (first != nullptr && first == Status(Second).Node) {
        return true;
    }
    return fs::path(First).lexically_normal() == fs::path(Second).lexically_normal();
}

bool LibraryModel::IsInside(const std::string& Directory, const std::string& Path) {
    const ModelNode* const directory = Status(Directory).Node;
    const ModelPlace place = Files.Find(Path, Links::Follow);
    if (place.Node == directory) {
        return false;
    }
    if (place.Node != nullptr || place.Directory != nullptr) {
        const bool bDirectory = place.Node != nullptr && place.Node->Kind == EntryKind::Directory;
        return IsBelowOrSame(bDirectory ? place.Node : place.Directory, directory);
    }
    if (LinkStatus(Path).Node != nullptr) {
        throw Undetermined("a link leads to no place that could be inside or outside");
    }
    const std::string parent = ParentOf(Path);
    return parent != Path && (Status(parent).Node == directory || IsInside(Directory, parent));
}
