// A tree of files in memory that answers as Linux does, with the numbers of errno.
//
// Errors: functions that return an int return 0 or an error number. Undetermined is thrown where a
// path leads out of the tree.

#pragma once

#include <cstdint>
#include <deque>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

enum class EntryKind { Directory, File, HardLink, Link, Fifo, Socket, Device };

// Later than every time that a case sets.
constexpr std::int64_t kThisRun = std::numeric_limits<std::int64_t>::max();

struct ModelNode {
    EntryKind Kind = EntryKind::File;
    // The contents of a file, the target of a link.
    std::string Data;
    std::int64_t ModifiedSeconds = kThisRun;
    int FileSystem = 0;
    bool bMountPoint = false;
    // Of a directory.
    ModelNode* Parent = nullptr;
    // In the order in which they are listed.
    std::vector<std::pair<std::string, ModelNode*>> Children;
    bool bListingOrderKnown = true;

    decltype(Children)::iterator ChildNamed(const std::string& Name);
};

// Where a path leads. Without a Node, Directory is where it would be created as Name.
struct ModelPlace {
    int Error = 0;
    ModelNode* Node = nullptr;
    ModelNode* Directory = nullptr;
    std::string Name{};
};

bool IsBelowOrSame(const ModelNode* Node, const ModelNode* Ancestor);

enum class Links { Follow, Keep };
enum class ListingOrder { NewestFirst, OldestFirst };

class ModelFiles {
public:
    ModelFiles(std::string RootPath, ListingOrder OrderOfListing);
    ModelFiles(const ModelFiles&) = delete;
    ModelFiles& operator=(const ModelFiles&) = delete;

    // OutVisited gets each entry that was looked at on the way.
    ModelPlace Find(const std::string& Path, Links LastLink,
                    std::vector<ModelPlace>* OutVisited = nullptr);

    // HardLink is not a kind to create; see AddHardLink.
    int Create(const std::string& Path, EntryKind Kind, const std::string& Data);
    int AddHardLink(const std::string& Path, const std::string& Existing);
    void Mount(const std::string& Directory);

    // Removes one entry, a directory only when it is empty.
    int Remove(const std::string& Path);
    int RemoveTree(const std::string& Path);
    int Rename(const std::string& From, const std::string& To);

    // Creates the file, or replaces what it holds. Nothing is kept of what goes to a device.
    int Write(const std::string& Path, const std::string& Data);

    // The names in a directory as one reading of it lists them.
    static std::vector<std::string> Listing(const ModelNode& Directory);

    ModelNode& Root() { return *RootNode; }
    const std::string& RootPath() const { return RootText; }

private:
    ModelNode* NewNode(EntryKind Kind);
    ModelNode* Start(std::string_view AbsolutePath, std::deque<std::string>& OutComponents);
    void Insert(const ModelPlace& Place, ModelNode* Node);
    static void Detach(const ModelPlace& Place);
    void RemoveBelow(ModelNode& Directory);

    const std::string RootText;
    const ListingOrder Order;
    std::deque<ModelNode> Nodes;
    ModelNode* RootNode;
    ModelNode* NullDevice;
};
