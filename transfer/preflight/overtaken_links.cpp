#include "overtaken_links.h"

#include <algorithm>
#include <system_error>

namespace fs = std::filesystem;

void OvertakenLinks::LookAt(const std::string& Path) {
    // As many as the system follows.
    constexpr int kMostLinks = 40;
    if (!Plan.bMove) {
        return;
    }
    if (Items.empty()) {
        FindItems();
    }
    const fs::path link = LocationOf(Item).concat(Path.substr(Item.native().size()));
    fs::path at = Path;
    std::error_code ec;
    for (int links = 0; links < kMostLinks && fs::is_symlink(at, ec); ++links) {
        at = LocationOf(at.parent_path() / fs::read_symlink(at, ec));
        if (LeavesBefore(at, link)) {
            Result.Findings.AddStop(PreflightFindingKind::OvertakenLink, Path);
            return;
        }
    }
}

void OvertakenLinks::FindItems() {
    for (std::size_t i = 0; i < Plan.Items.size(); ++i) {
        Items.emplace(LocationOf(Plan.Items[i].SourcePath).native(), i);
    }
}

fs::path OvertakenLinks::LocationOf(const fs::path& Path) {
    const fs::path name = Path.filename();
    std::error_code ec;
    if (name.empty() || name == "." || name == "..") {
        return fs::canonical(Path, ec);
    }
    if (KnownParent != Path.parent_path()) {
        KnownParent = Path.parent_path();
        KnownLocation = fs::canonical(KnownParent, ec);
    }
    return KnownLocation.empty() ? fs::path() : KnownLocation / name;
}

// Items leave one after the other, and what is in one in the order of its listings.
bool OvertakenLinks::LeavesBefore(const fs::path& Target, const fs::path& Link) {
    const auto itemOf = Items.find(LocationOf(Item).native());
    for (fs::path above = Target; above.has_relative_path(); above = above.parent_path()) {
        const auto found = Items.find(above.native());
        if (found != Items.end() && found->second <= itemOf->second) {
            return (found != itemOf || ComesBefore(Target, Link)) &&
                   !MayStay(Plan.Items[found->second],
                            Target.native().substr(above.native().size()));
        }
    }
    return false;
}

bool OvertakenLinks::MayStay(const TarvaneTransferItemPlan& Above,
                             const std::string& Inside) const {
    using Choice = FileConflictChoice;
    const auto isTaken = [&Above](const std::string& Name) {
        std::error_code ec;
        return fs::exists(fs::symlink_status(Above.DestinationPath.native() + Name, ec));
    };
    const bool bEachGoes =
        Rules.ForFiles == Choice::Overwrite || Rules.ForFiles == Choice::KeepBoth;
    return (!bEachGoes && isTaken(Inside)) ||
           (Rules.ForDirectories == DirectoryConflictChoice::Skip && isTaken(""));
}

bool OvertakenLinks::ComesBefore(const fs::path& First, const fs::path& Second) {
    const auto [first, second] =
        std::mismatch(First.begin(), First.end(), Second.begin(), Second.end());
    if (first == First.end() || second == Second.end()) {
        return false;
    }
    fs::path above;
    std::for_each(First.begin(), first, [&above](const fs::path& Name) { above /= Name; });
    if (Listed != above) {
        ListOrder(above);
    }
    const auto position = Positions.find(first->native());
    const auto other = Positions.find(second->native());
    return position != Positions.end() && other != Positions.end() &&
           position->second < other->second;
}

void OvertakenLinks::ListOrder(const fs::path& Directory) {
    Listed = Directory;
    Positions.clear();
    std::error_code ec;
    for (fs::directory_iterator entry(Directory, ec), end; entry != end; entry.increment(ec)) {
        Positions.emplace(entry->path().filename().native(), Positions.size());
    }
}
