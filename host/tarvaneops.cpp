#include "tarvaneops.h"

#include "file_identity.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdio>
#include <list>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

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

std::optional<fs::path> LinkTarget(const fs::path& Path) {
    std::array<char, PATH_MAX> text{};
    const ssize_t length = ::readlink(Path.c_str(), text.data(), text.size());
    if (length < 0) {
        return std::nullopt;
    }
    return fs::path(std::string(text.data(), static_cast<std::size_t>(length)));
}

// The canonical path of what exists, asked of the kernel at once: link by link, the time for a deep
// path grows with the square of its length. Empty where the kernel does not tell.
fs::path CanonicalText(const std::string& Path) {
    const int descriptor = ::open(Path.c_str(), O_PATH | O_CLOEXEC);
    if (descriptor < 0) {
        return {};
    }
    std::array<char, 32> link{};
    std::snprintf(link.data(), link.size(), "/proc/self/fd/%d", descriptor);
    std::array<char, PATH_MAX> text{};
    const ssize_t length = ::readlink(link.data(), text.data(), text.size() - 1);
    ::close(descriptor);
    // A text that leads elsewhere was cut off, or has a remark of the kernel at its end.
    const bool bLeadsThere = length > 0 && IdentityOf(text.data()) == IdentityOf(Path);
    return bLeadsThere ? fs::path(text.data()) : fs::path();
}

// The absolute path as the kernel would walk it, links, "." and ".." resolved. What does not exist
// is taken as it is written, so ".." steps back over it. Beyond kMaxLinks links are left standing:
// nothing can be made through them.
fs::path Resolved(const fs::path& Path) {
    fs::path rest = fs::absolute(Path);
    std::list<fs::path> pending;
    fs::path resolved = CanonicalText(rest);
    while (resolved.empty() && rest.has_relative_path()) {
        pending.push_front(rest.filename());
        rest = rest.parent_path();
        resolved = CanonicalText(rest);
    }
    if (resolved.empty()) {
        resolved = rest;
    }
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

// Goes up from a directory, one step a call. Each step starts from the last directory where it can:
// looking the whole path up again takes time that grows with its length.
class Ascent {
public:
    Ascent() = default;
    ~Ascent() { Leave(); }
    Ascent(const Ascent&) = delete;
    Ascent& operator=(const Ascent&) = delete;

    // Requires: Ancestor is canonical as far as it exists, and the parent of the one before.
    std::optional<FileIdentity> StepTo(const std::string& Ancestor) {
        const int above = Descriptor >= 0 ? ::openat(Descriptor, "..", O_PATH | O_CLOEXEC)
                                          : ::open(Ancestor.c_str(), O_PATH | O_CLOEXEC);
        Leave();
        Descriptor = above;
        struct stat status {};
        if (Descriptor >= 0 && ::fstat(Descriptor, &status) == 0) {
            return IdentityOf(status);
        }
        return IdentityOf(Ancestor);
    }

private:
    void Leave() {
        if (Descriptor >= 0) {
            ::close(Descriptor);
        }
    }

    int Descriptor = -1;
};

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
        const std::string directory = Resolved(Directory).string();
        const std::optional<FileIdentity> identity = IdentityOf(directory);
        std::string ancestor = Resolved(Path).string();
        Ascent ascent;
        while (ancestor.size() > 1) {
            ancestor.resize(std::max<std::size_t>(ancestor.rfind('/'), 1));
            // The identity also finds a directory that is mounted a second time elsewhere.
            if (ancestor == directory || (identity && identity == ascent.StepTo(ancestor))) {
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
