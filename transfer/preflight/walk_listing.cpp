#include "walk_listing.h"

#include <climits>
#include <fcntl.h>

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

namespace {

std::string_view SlashAfter(const std::string& Directory) {
    return Directory.empty() || Directory.ends_with('/') ? "" : "/";
}

std::string Join(const std::string& Directory, std::string_view Name) {
    std::string path;
    path.reserve(Directory.size() + SlashAfter(Directory).size() + Name.size());
    return path.append(Directory).append(SlashAfter(Directory)).append(Name);
}

std::size_t JoinedLength(const std::string& Directory, std::string_view Name) {
    return Directory.size() + SlashAfter(Directory).size() + Name.size();
}

} // namespace

void SubdirectoryQueue::Push(std::string_view Name) {
    Names.insert(Names.end(), Name.begin(), Name.end());
    Names.push_back('\0');
    ++Length;
}

void SubdirectoryQueue::PushQueried(Subdirectory Queried) {
    Push({});
    QueriedOnes.push_back(std::move(Queried));
}

Subdirectory SubdirectoryQueue::Pop() {
    const auto end = std::find(Names.begin(), Names.end(), '\0');
    Subdirectory next{.Name = std::string(Names.begin(), end)};
    --Length;
    Names.erase(Names.begin(), std::next(end));
    if (next.Name.empty()) {
        next = std::move(QueriedOnes.front());
        QueriedOnes.pop_front();
    }
    return next;
}

OwnedDescriptor WalkListing::Open() {
    const OwnedDescriptor above = std::move(Above);
    const bool bByName = above.Get() >= 0 && Path.size() < PATH_MAX;
    const std::size_t nameStart = bByName ? Path.rfind('/') + 1 : 0;
    return OwnedDescriptor(::openat(bByName ? above.Get() : AT_FDCWD, Path.c_str() + nameStart,
                                    O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC));
}

std::string WalkListing::PathOf(const char* Name) const {
    return Join(Path, Name);
}

std::string WalkListing::DestinationPathOf(const char* Name) const {
    return IsAboveItem() ? ItemDestination : Join(Destination.Path, Name);
}

std::string_view WalkListing::RecordedNameOf(const char* Name) const {
    return IsAboveItem() ? std::string_view(ItemDestination) : Name;
}

std::size_t WalkListing::PathLengthOf(const char* Name) const {
    return JoinedLength(Path, Name);
}

std::size_t WalkListing::DestinationPathLengthOf(const char* Name) const {
    return IsAboveItem() ? ItemDestination.size() : JoinedLength(Destination.Path, Name);
}

std::size_t WalkListing::DestinationNameLengthOf(const char* Name) const {
    return IsAboveItem() ? ItemDestination.size() - (ItemDestination.rfind('/') + 1)
                         : std::string_view(Name).size();
}

DestinationEntry WalkListing::LookThere(const char* Name) const {
    if (Fate != Treatment::Copied || !Destination.bExists) {
        return {};
    }
    return DestinationDescriptor >= 0
               ? LookAtDestination(DestinationDescriptor, Name)
               : LookAtDestination(AT_FDCWD, DestinationPathOf(Name).c_str());
}
