#include "browser.h"

#include "quoted.h"
#include "track_list.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include <sys/timerfd.h>
#include <unistd.h>

namespace {

// A place has one name, so that it is known when it comes back.
std::filesystem::path WithoutTrailingSlash(std::string Place) {
    while (Place.size() > 1 && Place.ends_with('/')) {
        Place.pop_back();
    }
    return Place;
}

bool HasDirectory(const Listing& Content, const std::filesystem::path& Name) {
    return std::any_of(
        Content.Entries.begin(), Content.Entries.end(),
        [&Name](const ListedEntry& Entry) { return Entry.IsDirectory() && Entry.Name == Name; });
}

bool IsOpticalDrive(const std::filesystem::path& Path) {
    const std::vector<std::string> drives = FindOpticalDrives();
    return std::find(drives.begin(), drives.end(), Path.native()) != drives.end();
}

} // namespace

Browser::Browser(const std::filesystem::path& Start)
    : RestClock(timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC)) {
    // A start that cannot be read is an empty place with a way up.
    Entries.Take({.Place = WithoutTrailingSlash(Start)});
    BeginAgain();
}

void Browser::GoTo(const std::filesystem::path& Place, const std::string& CursorOn) {
    const bool bAgain = bReadAgain || IsReadingForList();
    StopReading();
    bReadAgain = bAgain;
    LastMessage.clear();
    CursorWanted = CursorOn;
    Begin(WithoutTrailingSlash(Place));
}

void Browser::GoUp() {
    const std::filesystem::path& place = Entries.Place();
    if (ParentPlace(place) != place) {
        GoTo(ParentPlace(place), place.filename());
    }
}

bool Browser::Enter() {
    const ListedEntry* const entry = Entries.CurrentEntry();
    if (entry == nullptr) {
        GoUp();
        return Entries.HasParentRow();
    }
    const std::filesystem::path path = Entries.PathOf(*entry);
    if (entry->IsDirectory()) {
        GoTo(path);
        return true;
    }
    if (entry->What == ListedEntry::Kind::Special && IsOpticalDrive(path)) {
        GoTo("cdda:" + path.native());
        return true;
    }
    return false;
}

void Browser::ReadAgain() {
    LastMessage.clear();
    if (Reader) {
        bReadAgain = true;
    } else {
        BeginAgain();
    }
}

void Browser::StopReading() {
    Reader.reset();
    NextWatch.reset();
    Missing.clear();
    bReadAgain = false;
}

void Browser::Attend() {
    if (std::optional<Listing> read = Reader ? Reader->TakeResult() : std::nullopt) {
        Reader.reset();
        Finish(std::move(*read));
    }
    if (!Reader && IsRestOver() && (Watch.TakeChange() || bReadAgain)) {
        BeginAgain();
    }
}

std::optional<std::filesystem::path> Browser::Reading() const {
    return Reader ? std::optional(Reader->Place()) : std::nullopt;
}

int Browser::ReaderFd() const {
    return Reader ? Reader->OverFd() : -1;
}

int Browser::WatchFd() const {
    if (Reader) {
        return -1;
    }
    return bResting ? RestClock.Get() : Watch.Fd();
}

void Browser::Begin(const std::filesystem::path& Place) {
    NextWatch.reset();
    if (Place != Entries.Place()) {
        NextWatch.emplace();
    }
    Reader.emplace(Place, NextWatch ? NextWatch->Fd() : Watch.Fd());
}

void Browser::BeginAgain() {
    bReadAgain = false;
    CursorWanted.clear();
    Begin(Entries.Place());
}

bool Browser::IsReadingForList() const {
    return Reader && (Reader->Place() == Entries.Place() || !Missing.empty());
}

void Browser::Finish(Listing Read) {
    BeginRest();
    if (!Missing.empty()) {
        FinishLookAbove(std::move(Read));
        return;
    }
    if (Read.Failure.empty()) {
        Accept(std::move(Read));
        return;
    }
    LastMessage = Read.Failure;
    NextWatch.reset();
    Entries.Take(Read);
    if (Read.Place == Entries.Place() && !IsDisc(Read.Place)) {
        LookAbove(Read.Place);
    }
}

void Browser::FinishLookAbove(Listing Above) {
    const std::filesystem::path missing = std::exchange(Missing, {});
    if (!Above.Failure.empty()) {
        LookAbove(Above.Place);
    } else if (!HasDirectory(Above, missing.filename())) {
        const std::string message = Quoted(Entries.Place().native()) + " is no longer there";
        Accept(std::move(Above));
        LastMessage = message;
    } else {
        // It may have been made anew meanwhile, which a second look tells. What remains unreadable
        // may change that in the directory above it, which is watched then.
        bReadAgain = !std::exchange(bUnreadable, true) || bReadAgain;
        Watch = std::move(*NextWatch);
        NextWatch.reset();
    }
}

void Browser::Accept(Listing Read) {
    if (NextWatch) {
        Watch = std::move(*NextWatch);
        NextWatch.reset();
        bReadAgain = false;
    }
    if (std::exchange(bUnreadable, false)) {
        LastMessage.clear();
    }
    Entries.Take(std::move(Read), std::exchange(CursorWanted, {}));
}

void Browser::LookAbove(const std::filesystem::path& MissingPlace) {
    const std::filesystem::path above = ParentPlace(MissingPlace);
    if (above != MissingPlace) {
        Missing = MissingPlace;
        CursorWanted.clear();
        Begin(above);
    }
}

// A copy changes a directory thousands of times a second, which nobody could follow.
void Browser::BeginRest() {
    constexpr itimerspec kRest{.it_interval = {},
                               .it_value = {.tv_sec = 0, .tv_nsec = 250'000'000}};
    const int relative = 0;
    bResting = timerfd_settime(RestClock.Get(), relative, &kRest, nullptr) == 0;
}

bool Browser::IsRestOver() {
    std::uint64_t expirations = 0;
    if (bResting && read(RestClock.Get(), &expirations, sizeof(expirations)) > 0) {
        bResting = false;
    }
    return !bResting;
}
