#include "walk_listing.h"

#include <fcntl.h>

#include <string_view>

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

std::string WalkListing::PathOf(const char* Name) const {
    return Join(Path, Name);
}

std::string WalkListing::DestinationPathOf(const char* Name) const {
    return IsAboveItem() ? ItemDestination : Join(Destination.Path, Name);
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
