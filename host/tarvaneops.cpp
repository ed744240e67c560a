#include "tarvaneops.h"

#include "file_identity.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

// As many as the kernel follows before it says ELOOP.
constexpr int kMaxLinks = 40;

std::optional<FileIdentity> IdentityOf(const std::string& Path) {
    struct stat status {};
    if (::stat(Path.c_str(), &status) != 0) {
        return std::nullopt;
    }
    return IdentityOf(status);
}

// The components of a path's normal text, the last one first: nothing has to be copied, and the
// last components usually tell two paths apart.
class ComponentsFromEnd {
public:
    explicit ComponentsFromEnd(std::string_view Path)
        : Rest(Path), bAbsolute(Path.starts_with('/')) {}

    // Empty when none is left.
    std::string_view Next() {
        while (!Rest.empty()) {
            const std::size_t slash = Rest.rfind('/');
            const bool bFirst = slash == std::string_view::npos;
            const std::string_view component = bFirst ? Rest : Rest.substr(slash + 1);
            Rest = Rest.substr(0, bFirst ? 0 : slash);
            if (component == "..") {
                ++StepsBack;
            } else if (!component.empty() && component != ".") {
                if (StepsBack == 0) {
                    return component;
                }
                --StepsBack;
            }
        }
        if (bAbsolute || StepsBack == 0) {
            return {};
        }
        --StepsBack;
        return "..";
    }

private:
    std::string_view Rest;
    const bool bAbsolute;
    std::size_t StepsBack = 0;
};

bool HaveSameNormalText(std::string_view First, std::string_view Second) {
    if (First.empty() || Second.empty() || First.starts_with('/') != Second.starts_with('/')) {
        return First == Second;
    }
    ComponentsFromEnd first(First);
    ComponentsFromEnd second(Second);
    std::string_view component;
    do {
        component = first.Next();
        if (component != second.Next()) {
            return false;
        }
    } while (!component.empty());
    return true;
}

// A relative path stays relative where the working directory has been removed.
std::string AbsoluteText(const fs::path& Path) {
    std::error_code ec;
    const fs::path absolute = fs::absolute(Path, ec);
    return (ec ? Path : absolute).native();
}

std::optional<std::string> LinkTarget(const std::string& Path) {
    std::array<char, PATH_MAX> text{};
    const ssize_t length = ::readlink(Path.c_str(), text.data(), text.size());
    if (length < 0) {
        return std::nullopt;
    }
    return std::string(text.data(), static_cast<std::size_t>(length));
}

using Status = struct statx;

std::optional<Status> StatusOf(const std::string& Path, int Flags = 0, int Directory = AT_FDCWD) {
    Status status{};
    if (::statx(Directory, Path.c_str(), Flags | AT_NO_AUTOMOUNT,
                STATX_TYPE | STATX_INO | STATX_MNT_ID, &status) != 0) {
        return std::nullopt;
    }
    return status;
}

// A path with links, "." and ".." resolved.
struct ResolvedPath {
    // Without slashes at the end: the root is empty.
    std::string Text;
    bool bExists = false;
    // Of the path, or else of its nearest ancestor that exists.
    Status Nearest{};

    void MoveTo(std::string NewText, const std::optional<Status>& NewStatus) {
        Text = std::move(NewText);
        bExists = NewStatus.has_value();
        Nearest = NewStatus.value_or(Nearest);
    }
    void MoveToRoot() { MoveTo({}, StatusOf("/")); }
    void StepBack() {
        Text.resize(Text.empty() ? 0 : Text.rfind('/'));
        MoveTo(Text, StatusOf(Text.empty() ? "/" : Text));
    }
};

// A directory that is open for questions about it, also when memory runs out between them.
class OpenedDirectory {
public:
    explicit OpenedDirectory(const std::string& Path)
        : Number(::open(Path.c_str(), O_PATH | O_CLOEXEC)) {}
    ~OpenedDirectory() {
        if (Number >= 0) {
            ::close(Number);
        }
    }
    OpenedDirectory(const OpenedDirectory&) = delete;
    OpenedDirectory& operator=(const OpenedDirectory&) = delete;

    int Descriptor() const { return Number; }

private:
    const int Number;
};

// The canonical path of Directory, asked of the kernel at once, and Name in it: link by link, the
// time for a deep path grows with the square of its length. Without a name it is the directory
// itself. Nothing where the kernel does not tell, and where the name leads elsewhere.
std::optional<ResolvedPath> AskKernel(const std::string& Directory, const std::string& Name) {
    if (Name == "." || Name == "..") {
        return std::nullopt;
    }
    const OpenedDirectory directory(Directory);
    const int descriptor = directory.Descriptor();
    if (descriptor < 0) {
        return std::nullopt;
    }
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    const std::optional<std::string> text = LinkTarget(link);
    const std::optional<Status> opened = StatusOf("", AT_EMPTY_PATH, descriptor);
    const std::optional<Status> named = StatusOf(Name, AT_SYMLINK_NOFOLLOW, descriptor);
    if (!text || !opened || (named && S_ISLNK(named->stx_mode))) {
        return std::nullopt;
    }
    // A text that leads elsewhere was cut off, or has a remark of the kernel at its end.
    const std::optional<Status> reached = *text == Directory ? opened : StatusOf(*text);
    if (!reached || IdentityOf(*reached) != IdentityOf(*opened)) {
        return std::nullopt;
    }
    ResolvedPath path{*text == "/" ? "" : *text, true, *reached};
    if (!Name.empty()) {
        path.MoveTo(path.Text + '/' + Name, named);
    }
    return path;
}

// Goes on as the kernel would. What does not exist is taken as it is written, so ".." steps back
// over it. Beyond kMaxLinks links are left standing: nothing can be made through them.
void Walk(ResolvedPath& Path, std::string Pending) {
    int links = 0;
    while (!Pending.empty()) {
        const std::string component = Pending.substr(0, Pending.find('/'));
        Pending.erase(0, component.size() + 1);
        if (component.empty() || component == ".") {
            continue;
        }
        if (component == "..") {
            Path.StepBack();
            continue;
        }
        const std::string next = Path.Text + '/' + component;
        const std::optional<Status> status = StatusOf(next, AT_SYMLINK_NOFOLLOW);
        if (!status || !S_ISLNK(status->stx_mode)) {
            Path.MoveTo(next, status);
            continue;
        }
        const std::optional<std::string> target = LinkTarget(next);
        if (!target || links == kMaxLinks) {
            Path.MoveTo(next, std::nullopt);
            continue;
        }
        if (target->starts_with('/')) {
            Path.MoveToRoot();
        }
        Pending.insert(0, *target + '/');
        ++links;
    }
}

ResolvedPath Resolve(const fs::path& Path) {
    const std::string absolute = Path.is_absolute() ? Path.native() : fs::absolute(Path).native();
    const std::size_t slash = absolute.rfind('/');
    // A destination is asked for by its parent, which exists as a rule.
    std::optional<ResolvedPath> path =
        AskKernel(absolute.substr(0, std::max<std::size_t>(slash, 1)), absolute.substr(slash + 1));
    std::string pending;
    for (std::size_t end = absolute.size(); !path && end > 0; end = absolute.rfind('/', end - 1)) {
        path = AskKernel(absolute.substr(0, end), {});
        pending = absolute.substr(end);
    }
    if (!path) {
        path.emplace().MoveToRoot();
        pending = absolute;
    }
    Walk(*path, std::move(pending));
    return *path;
}

// False also where the kernel does not tell mounts apart, as before version 5.8.
bool AreInOneMount(const Status& First, const Status& Second) {
    return (First.stx_mask & Second.stx_mask & STATX_MNT_ID) != 0 &&
           First.stx_mnt_id == Second.stx_mnt_id;
}

// Whether an ancestor of Path is the existing Directory, whatever their texts: a directory can be
// mounted a second time elsewhere, and some file systems find one name in several writings.
//
// Looks from the root down, usually only to where the last mount on the way begins: the way enters
// a mount once, and what follows is in it.
bool LeadsThrough(const ResolvedPath& Directory, const ResolvedPath& Path) {
    const FileIdentity sought = IdentityOf(Directory.Nearest);
    const dev_t lastDevice = IdentityOf(Path.Nearest).Device;
    const auto depth = std::count(Directory.Text.begin(), Directory.Text.end(), '/');
    bool bOnlyAtDepth = false;
    std::ptrdiff_t level = 0;
    for (std::size_t end = 0; end < Path.Text.size(); end = Path.Text.find('/', end + 1), ++level) {
        if (bOnlyAtDepth && level != depth) {
            continue;
        }
        const std::optional<Status> ancestor = StatusOf(end == 0 ? "/" : Path.Text.substr(0, end));
        if (!ancestor) {
            continue;
        }
        const FileIdentity identity = IdentityOf(*ancestor);
        if (identity == sought) {
            return true;
        }
        if (!AreInOneMount(*ancestor, Path.Nearest)) {
            continue;
        }
        // One mount shows a directory in one place, and so at one depth.
        bOnlyAtDepth = AreInOneMount(*ancestor, Directory.Nearest);
        // Subvolumes have devices of their own, but the way enters each of them once, too.
        if (!bOnlyAtDepth && identity.Device == lastDevice && lastDevice != sought.Device) {
            return false;
        }
    }
    return false;
}

} // namespace

bool TarvanePathsEquivalentOrSame(const fs::path& First, const fs::path& Second) noexcept {
    try {
        // The second is the destination, of which most often nothing exists.
        const std::optional<FileIdentity> second = IdentityOf(Second.native());
        if (second && second == IdentityOf(First.native())) {
            return true;
        }
        if (First.is_absolute() && Second.is_absolute()) {
            return HaveSameNormalText(First.native(), Second.native());
        }
        return HaveSameNormalText(AbsoluteText(First), AbsoluteText(Second));
    } catch (...) {
        // Out of memory: the engine refuses to copy a file onto itself, and refusing is safe.
        return true;
    }
}

bool TarvanePathIsInside(const fs::path& Directory, const fs::path& Path) noexcept {
    try {
        const ResolvedPath directory = Resolve(Directory);
        const ResolvedPath path = Resolve(Path);
        return path.Text.starts_with(directory.Text + '/') ||
               (directory.bExists && LeadsThrough(directory, path));
    } catch (...) {
        // Out of memory, or a relative path without a working directory: the engine refuses to copy
        // a directory into itself, and refusing is safe.
        return true;
    }
}
