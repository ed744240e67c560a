#include "free_name.h"

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace {

// NAME_MAX of Linux, in bytes.
constexpr std::size_t kLongestName = 255;
constexpr int kFirstNumber = 2;
constexpr int kLastNumber = 999;

struct NameParts {
    std::string_view Stem;
    // With its point, or empty.
    std::string_view Extension;
};

// "a.tar.gz" is "a" and ".tar.gz", "cover.jpg" is "cover" and ".jpg"; ".profile" has no extension.
NameParts SplitName(std::string_view Name) {
    constexpr std::string_view kTar = ".tar";
    const std::size_t point = Name.rfind('.');
    if (point == std::string_view::npos || point == 0) {
        return {Name, {}};
    }
    const std::string_view stem = Name.substr(0, point);
    const bool bTar = stem.ends_with(kTar) && stem.size() > kTar.size();
    const std::size_t stemSize = bTar ? stem.size() - kTar.size() : stem.size();
    return {Name.substr(0, stemSize), Name.substr(stemSize)};
}

// The longest beginning of Text within Bytes that does not end inside a UTF-8 character.
std::string_view ShortenedTo(std::string_view Text, std::size_t Bytes) {
    if (Text.size() <= Bytes) {
        return Text;
    }
    const auto bContinues = [&](std::size_t Index) {
        return (static_cast<unsigned char>(Text[Index]) & 0xC0U) == 0x80U;
    };
    while (Bytes > 0 && bContinues(Bytes)) {
        --Bytes;
    }
    return Text.substr(0, Bytes);
}

std::string NumberedName(const NameParts& Parts, int Number) {
    const std::string number = '-' + std::to_string(Number);
    // An extension that leaves no room for a stem is not worth keeping.
    const bool bKeepExtension = Parts.Extension.size() + number.size() < kLongestName;
    const std::string extension(bKeepExtension ? Parts.Extension : std::string_view());
    const std::size_t room = kLongestName - number.size() - extension.size();
    return std::string(ShortenedTo(Parts.Stem, room)) + number + extension;
}

} // namespace

std::optional<std::filesystem::path> FreeNameBeside(const std::filesystem::path& Taken) {
    const std::string name = Taken.filename().native();
    const NameParts parts = SplitName(name);
    for (int number = kFirstNumber; number <= kLastNumber; ++number) {
        std::filesystem::path candidate = Taken.parent_path() / NumberedName(parts, number);
        std::error_code ec;
        const std::filesystem::file_status status = std::filesystem::symlink_status(candidate, ec);
        if (status.type() == std::filesystem::file_type::not_found) {
            return candidate;
        }
        if (status.type() == std::filesystem::file_type::none) {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

std::string RenameRefusal(const std::filesystem::path& Path) {
    if (!Path.has_filename()) {
        return "A name cannot end with '/'.";
    }
    // Links are not followed: the engine would write through one that leads nowhere.
    struct stat status;
    if (lstat(Path.c_str(), &status) == 0) {
        return "That name exists already.";
    }
    if (errno == ENAMETOOLONG) {
        return "That name is too long.";
    }
    if (errno == ENOTDIR) {
        return "That would be inside a file.";
    }
    if (errno != ENOENT) {
        return "That directory cannot be used: " + std::string(std::strerror(errno)) + ".";
    }
    if (Path.filename() == ".") {
        return "A name cannot be '.'.";
    }
    // The engine makes missing directories, below the nearest one that exists. A way that leads out
    // of a missing one again may then end at what exists.
    std::filesystem::path directory = Path;
    while (directory.has_filename() && stat(directory.c_str(), &status) != 0) {
        if (directory.filename() == "..") {
            return "'..' cannot follow a directory that does not exist.";
        }
        directory = directory.parent_path();
    }
    if (faccessat(AT_FDCWD, directory.c_str(), W_OK | X_OK, AT_EACCESS) != 0) {
        return "Nothing can be created in that directory: " + std::string(std::strerror(errno)) +
               ".";
    }
    return {};
}
