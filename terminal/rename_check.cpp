#include "rename_check.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

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
    // The engine makes missing directories, below the nearest one that exists.
    std::filesystem::path directory = Path.parent_path();
    while (directory.has_filename() && stat(directory.c_str(), &status) != 0) {
        directory = directory.parent_path();
    }
    if (faccessat(AT_FDCWD, directory.c_str(), W_OK | X_OK, AT_EACCESS) != 0) {
        return "Nothing can be created in that directory: " + std::string(std::strerror(errno)) +
               ".";
    }
    return {};
}
