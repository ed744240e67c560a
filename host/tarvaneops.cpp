#include "tarvaneops.h"

#include "file_identity.h"

#include <array>
#include <climits>
#include <list>
#include <optional>
#include <string>
#include <system_error>

#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

// As many as the kernel follows before it says ELOOP.
constexpr int kMaxLinks = 40;

std::optional<FileIdentity> IdentityOf(const fs::path& Path) {
    struct stat status {};
    if (::stat(Path.c_str(), &status) != 0) {
        return std::nullopt;
    }
    return IdentityOf(status);
}

// The absolute path without ".", ".." and trailing slashes, by its text alone. A relative path
// stays relative where the working directory has been removed.
fs::path NormalText(const fs::path& Path) {
    std::error_code ec;
    const fs::path absolute = fs::absolute(Path, ec);
    const fs::path normal = (ec ? Path : absolute).lexically_normal();
    return normal.has_filename() || !normal.has_relative_path() ? normal : normal.parent_path();
}

std::optional<fs::path> LinkTarget(const fs::path& Path) {
    std::array<char, PATH_MAX> text{};
    const ssize_t length = ::readlink(Path.c_str(), text.data(), text.size());
    if (length < 0) {
        return std::nullopt;
    }
    return fs::path(std::string(text.data(), static_cast<std::size_t>(length)));
}

// The absolute path as the kernel would walk it, links, "." and ".." resolved. What does not exist
// is taken as it is written, so ".." steps back over it. Beyond kMaxLinks links are left standing:
// nothing can be made through them.
fs::path Resolved(const fs::path& Path) {
    const fs::path absolute = fs::absolute(Path);
    std::list<fs::path> pending(absolute.begin(), absolute.end());
    fs::path resolved;
    int links = 0;
    while (!pending.empty()) {
        const fs::path component = pending.front();
        pending.pop_front();
        if (component.empty() || component == ".") {
            continue;
        }
        if (component == "..") {
            resolved = resolved.parent_path();
            continue;
        }
        const fs::path next = resolved / component;
        const std::optional<fs::path> target = LinkTarget(next);
        if (!target || links == kMaxLinks) {
            resolved = next;
            continue;
        }
        // An absolute target starts with "/", which replaces what has been resolved so far.
        pending.insert(pending.begin(), target->begin(), target->end());
        ++links;
    }
    return resolved;
}

} // namespace

bool TarvanePathsEquivalentOrSame(const fs::path& First, const fs::path& Second) noexcept {
    try {
        const std::optional<FileIdentity> first = IdentityOf(First);
        if (first && first == IdentityOf(Second)) {
            return true;
        }
        return NormalText(First) == NormalText(Second);
    } catch (...) {
        // Out of memory: the engine refuses to copy a file onto itself, and refusing is safe.
        return true;
    }
}

bool TarvanePathIsInside(const fs::path& Directory, const fs::path& Path) noexcept {
    try {
        const fs::path directory = Resolved(Directory);
        const std::optional<FileIdentity> identity = IdentityOf(directory);
        fs::path ancestor = Resolved(Path);
        while (ancestor.has_relative_path()) {
            ancestor = ancestor.parent_path();
            // The identity also finds a directory that is mounted a second time elsewhere.
            if (ancestor == directory || (identity && identity == IdentityOf(ancestor))) {
                return true;
            }
        }
        return false;
    } catch (...) {
        // Out of memory, or a relative path without a working directory: the engine refuses to copy
        // a directory into itself, and refusing is safe.
        return true;
    }
}
