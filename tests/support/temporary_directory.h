// A new, empty directory for one test, removed with everything in it at the end of the scope.

#pragma once

#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

class TemporaryDirectory {
public:
    // Creates it below Parent, open to every user: some tests look at it as somebody else.
    explicit TemporaryDirectory(
        const std::filesystem::path& Parent = std::filesystem::temp_directory_path()) {
        std::string name = (Parent / "tarvane-test-XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr || ::chmod(name.c_str(), 0755) != 0) {
            throw std::system_error(errno, std::generic_category(), "creating " + name);
        }
        Directory = name;
    }

    ~TemporaryDirectory() {
        std::error_code ec;
        std::filesystem::remove_all(Directory, ec);
    }

    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    const std::filesystem::path& Path() const { return Directory; }

    std::filesystem::path operator/(const std::filesystem::path& Name) const {
        return Directory / Name;
    }

private:
    std::filesystem::path Directory;
};
