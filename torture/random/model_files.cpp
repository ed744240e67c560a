#include "model_files.h"

#include "undetermined.h"

#include <algorithm>
#include <cerrno>

decltype(ModelNode::Children)::iterator ModelNode::ChildNamed(const std::string& Name) {
    return std::find_if(Children.begin(), Children.end(),
                        [&Name](const auto& Child) { return Child.first == Name; });
}

bool IsBelowOrSame(const ModelNode* Node, const ModelNode* Ancestor) {
    while (Node != nullptr && Node != Ancestor) {
        Node = Node->Parent;
    }
    return Node != nullptr;
}

ModelFiles::ModelFiles(std::string RootPath, ListingOrder OrderOfListing)
    : RootText(std::move(RootPath)), Order(OrderOfListing), RootNode(NewNode(EntryKind::Directory)),
      NullDevice(NewNode(EntryKind::Device)) {}

ModelNode* ModelFiles::NewNode(EntryKind Kind) {
    Nodes.emplace_back();
    Nodes.back().Kind = Kind;
    return &Nodes.back();
}

void ModelFiles::Insert(const ModelPlace& Place, ModelNode* Node) {
    auto& children = Place.Directory->Children;
    children.emplace(Order == ListingOrder::NewestFirst ? children.begin() : children.end(),
                     Place.Name, Node);
    Place.Directory->ModifiedSeconds = kThisRun;
    if (Node->Kind == EntryKind::Directory) {
        Node->Parent = Place.Directory;
    }
}

void ModelFiles::Detach(const ModelPlace& Place) {
    Place.Directory->Children.erase(Place.Directory->ChildNamed(Place.Name));
    Place.Directory->ModifiedSeconds = kThisRun;
}

int ModelFiles::Create(const std::string& Path, EntryKind Kind, const std::string& Data) {
    const ModelPlace place = Find(Path, Links::Keep);
    if (place.Node != nullptr) {
        return EEXIST;
    }
    if (place.Directory == nullptr) {
        return place.Error;
    }
    ModelNode* const node = NewNode(Kind);
    node->Data = Data;
    node->FileSystem = place.Directory->FileSystem;
    Insert(place, node);
    return 0;
}

int ModelFiles::AddHardLink(const std::string& Path, const std::string& Existing) {
    const ModelPlace existing = Find(Existing, Links::Keep);
    const ModelPlace place = Find(Path, Links::Keep);
    if (existing.Node == nullptr || place.Directory == nullptr) {
        return existing.Node == nullptr ? existing.Error : place.Error;
    }
    if (place.Node != nullptr) {
        return EEXIST;
    }
    if (existing.Node->Kind == EntryKind::Directory) {
        return EPERM;
    }
    if (existing.Node->FileSystem != place.Directory->FileSystem) {
        return EXDEV;
    }
    Insert(place, existing.Node);
    return 0;
}

void ModelFiles::Mount(const std::string& Directory) {
    ModelNode& node = *Find(Directory, Links::Keep).Node;
    node.bMountPoint = true;
    node.FileSystem = 1;
}

int ModelFiles::Remove(const std::string& Path) {
    const ModelPlace place = Find(Path, Links::Keep);
    if (place.Node == nullptr) {
        return place.Error;
    }
    if (place.Directory == nullptr || place.Node->bMountPoint) {
        throw Undetermined("the root, a mount or a path that ends in a dot is removed");
    }
    if (!place.Node->Children.empty()) {
        return ENOTEMPTY;
    }
    Detach(place);
    return 0;
}

void ModelFiles::RemoveBelow(ModelNode& Directory) {
    for (const auto& [name, child] : Directory.Children) {
        if (child->bMountPoint) {
            throw Undetermined("a mount is removed");
        }
        RemoveBelow(*child);
    }
    Directory.Children.clear();
}

int ModelFiles::RemoveTree(const std::string& Path) {
    const ModelPlace place = Find(Path, Links::Keep);
    if (place.Node == nullptr) {
        return place.Error == ENOENT ? 0 : place.Error;
    }
    if (place.Node->Kind == EntryKind::Directory) {
        RemoveBelow(*place.Node);
    }
    return Remove(Path);
}

int ModelFiles::Rename(const std::string& From, const std::string& To) {
    const ModelPlace from = Find(From, Links::Keep);
    const ModelPlace to = Find(To, Links::Keep);
    if (from.Node == nullptr || to.Directory == nullptr) {
        return from.Node == nullptr ? from.Error : to.Error;
    }
    if (from.Directory == nullptr || from.Node->bMountPoint) {
        return EBUSY;
    }
    if (from.Node->FileSystem != to.Directory->FileSystem) {
        return EXDEV;
    }
    if (from.Node == to.Node) {
        return 0;
    }
    const bool bDirectory = from.Node->Kind == EntryKind::Directory;
    if (bDirectory && IsBelowOrSame(to.Directory, from.Node)) {
        return EINVAL;
    }
    if (to.Node != nullptr) {
        if (bDirectory || to.Node->Kind == EntryKind::Directory) {
            return bDirectory ? ENOTDIR : EISDIR;
        }
        Detach(to);
    }
    Detach(from);
    Insert(to, from.Node);
    to.Directory->bListingOrderKnown = false;
    return 0;
}

int ModelFiles::Write(const std::string& Path, const std::string& Data) {
    const ModelPlace place = Find(Path, Links::Follow);
    if (place.Node == nullptr) {
        if (place.Directory == nullptr) {
            return place.Error;
        }
        ModelNode* const node = NewNode(EntryKind::File);
        node->Data = Data;
        node->FileSystem = place.Directory->FileSystem;
        Insert(place, node);
        return 0;
    }
    switch (place.Node->Kind) {
    case EntryKind::Directory:
        return EISDIR;
    case EntryKind::Fifo:
        throw Undetermined("a pipe is written that nobody reads");
    case EntryKind::Socket:
        return ENXIO;
    case EntryKind::Device:
        return 0;
    case EntryKind::File:
    case EntryKind::HardLink:
    case EntryKind::Link:
        break;
    }
    place.Node->Data = Data;
    place.Node->ModifiedSeconds = kThisRun;
    return 0;
}

std::vector<std::string> ModelFiles::Listing(const ModelNode& Directory) {
    if (!Directory.bListingOrderKnown && Directory.Children.size() > 1) {
        throw Undetermined("the order after a rename is the file system's own");
    }
    std::vector<std::string> names;
    for (const auto& [name, child] : Directory.Children) {
        names.push_back(name);
    }
    return names;
}
