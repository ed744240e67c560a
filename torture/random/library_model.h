// What the standard library and the host's path comparisons say of a ModelFiles.

#pragma once

#include "model_files.h"

#include <optional>
#include <string>

// As the library reports it: a path that does not exist has no kind and still an error.
struct LibraryStatus {
    const ModelNode* Node = nullptr;
    int Error = 0;

    bool IsKnown() const;
    bool Is(EntryKind Kind) const { return Node != nullptr && Node->Kind == Kind; }
};

class LibraryModel {
public:
    explicit LibraryModel(ModelFiles& FilesToAsk) : Files(FilesToAsk) {}

    LibraryStatus Status(const std::string& Path);
    LibraryStatus LinkStatus(const std::string& Path);

    // The error number of a status that could not be found out, or 0.
    bool Exists(const std::string& Path, int& OutError);

    // Nothing for what is no regular file.
    std::optional<std::uint64_t> FileSize(const std::string& Path);

    int CreateDirectories(const std::string& Path);
    int Remove(const std::string& Path);

    // With the options overwrite_existing and copy_symlinks, for what is neither a directory nor a
    // regular file.
    int CopySpecial(const std::string& From, const std::string& To);

    // Whether the path would no longer lead where it does once the other one is removed: it goes
    // through something in that directory, or through that link.
    bool LeadsThrough(const std::string& Path, const std::string& Removed);

    bool AreSame(const std::string& First, const std::string& Second);
    bool IsInside(const std::string& Directory, const std::string& Path);

private:
    ModelFiles& Files;
};

std::string ParentOf(const std::string& Path);
