#include "walk_listing.h"

#include <fcntl.h>

namespace {

std::string Join(const std::string& Directory, const std::string& Name) {
    return Directory.empty() || Directory.ends_with('/') ? Directory + Name
                                                         : Directory + "/" + Name;
}

} // namespace

std::string WalkListing::PathOf(const std::string& Name) const {
    return Join(Path, Name);
}

std::string WalkListing::DestinationPathOf(const std::string& Name) const {
    return IsAboveItem() ? ItemDestination : Join(Destination.Path, Name);
}

DestinationEntry WalkListing::LookThere(const std::string& Name) const {
    if (Fate != Treatment::Copied || !Destination.bExists) {
        return {};
    }
    return DestinationDescriptor >= 0 ? LookAtDestination(DestinationDescriptor, Name)
                                      : LookAtDestination(AT_FDCWD, DestinationPathOf(Name));
}
