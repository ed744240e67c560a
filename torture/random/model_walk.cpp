// The way from a path to what it names.

#include "model_files.h"

#include "undetermined.h"

#include <algorithm>
#include <cerrno>
#include <climits>

namespace {

constexpr int kMaxLinks = 40;
// The kernel begins a walk up to three times when something is renamed meanwhile, anywhere, and
// goes on counting: above a third, it is a matter of luck whether it gets there.
constexpr int kMaxLinksForCertain = 13;

std::deque<std::string> Components(std::string_view Path) {
    std::deque<std::string> components;
    while (!Path.empty()) {
        const std::size_t slash = std::min(Path.find('/'), Path.size());
        if (slash > 0) {
            components.emplace_back(Path.substr(0, slash));
        }
        Path.remove_prefix(std::min(slash + 1, Path.size()));
    }
    return components;
}

} // namespace

ModelNode* ModelFiles::Start(std::string_view AbsolutePath,
                             std::deque<std::string>& OutComponents) {
    if (AbsolutePath == "/dev/null") {
        return NullDevice;
    }
    std::string_view rest = AbsolutePath;
    if (!rest.starts_with(RootText) ||
        (rest.size() > RootText.size() && rest[RootText.size()] != '/')) {
        throw Undetermined("a path leads out of the tree");
    }
    rest.remove_prefix(RootText.size());
    const std::deque<std::string> components = Components(rest);
    OutComponents.insert(OutComponents.begin(), components.begin(), components.end());
    return RootNode;
}

ModelPlace ModelFiles::Find(const std::string& Path, Links LastLink,
                            std::vector<ModelPlace>* OutVisited) {
    if (Path.empty() || Path.size() >= PATH_MAX) {
        return {.Error = Path.empty() ? ENOENT : ENAMETOOLONG};
    }
    std::deque<std::string> pending;
    ModelPlace place{.Node = Start(Path, pending)};
    int links = 0;
    while (!pending.empty()) {
        ModelNode& directory = *place.Node;
        const std::string name = pending.front();
        pending.pop_front();
        if (directory.Kind != EntryKind::Directory) {
            return {.Error = ENOTDIR};
        }
        if (name == "." || name == "..") {
            if (name == ".." && directory.Parent == nullptr) {
                throw Undetermined("a path leads out of the tree");
            }
            place = {.Node = name == "." ? &directory : directory.Parent};
            continue;
        }
        if (name.size() > NAME_MAX) {
            return {.Error = ENAMETOOLONG};
        }
        const auto child = directory.ChildNamed(name);
        if (child == directory.Children.end()) {
            return {
                .Error = ENOENT, .Directory = pending.empty() ? &directory : nullptr, .Name = name};
        }
        place = {.Node = child->second, .Directory = &directory, .Name = name};
        if (OutVisited != nullptr) {
            OutVisited->push_back(place);
        }
        if (place.Node->Kind == EntryKind::Link &&
            (!pending.empty() || LastLink == Links::Follow)) {
            if (++links > kMaxLinks) {
                return {.Error = ELOOP};
            }
            const std::string& target = place.Node->Data;
            if (target.starts_with('/')) {
                place = {.Node = Start(target, pending)};
            } else {
                const std::deque<std::string> components = Components(target);
                pending.insert(pending.begin(), components.begin(), components.end());
                place = {.Node = &directory};
            }
        }
    }
    if (links > kMaxLinksForCertain) {
        throw Undetermined("a path has too many links");
    }
    return place;
}
