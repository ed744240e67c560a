#include "full_path.h"

#include <system_error>

namespace fs = std::filesystem;

fs::path FullPath(const fs::path& Given) {
    std::error_code ec;
    fs::path full = Given.is_absolute() ? fs::path("/") : fs::current_path(ec);
    if (ec) {
        return Given;
    }
    for (const fs::path& component : Given.relative_path()) {
        if (!component.empty() && component != ".") {
            full /= component;
        }
    }
    return full;
}

std::string_view WithoutTrailingSlashes(const fs::path& Given) {
    const std::string_view text = Given.native();
    return text.substr(0, text.find_last_not_of('/') + 1);
}

bool EndsInComponent(const fs::path& Given, std::string_view Name) {
    const std::string_view text = WithoutTrailingSlashes(Given);
    return text.substr(text.rfind('/') + 1) == Name;
}

fs::path ParentOf(const fs::path& Path) {
    const fs::path entry = Path.has_filename() ? Path : Path.parent_path();
    return entry.has_parent_path() ? entry.parent_path() : fs::path(".");
}

bool IsWithin(const fs::path& Path, const fs::path& Tree) {
    const std::string& tree = Tree.native();
    return Path == Tree || Path.native().starts_with(tree.ends_with('/') ? tree : tree + "/");
}

fs::path Rebased(const fs::path& Path, const fs::path& From, const fs::path& To) {
    return Path == From ? To : To / Path.lexically_relative(From);
}

fs::path PlannedDestination(const fs::path& Source, const TarvaneTransferPlan& Plan) {
    for (const TarvaneTransferItemPlan& item : Plan.Items) {
        if (IsWithin(Source, item.SourcePath)) {
            return Rebased(Source, item.SourcePath, item.DestinationPath);
        }
    }
    return {};
}

fs::path NearestExistingDirectory(const fs::path& Path) {
    std::error_code ec;
    fs::path directory = fs::absolute(Path, ec);
    while (!fs::is_directory(directory, ec) && directory.has_relative_path()) {
        directory = directory.parent_path();
    }
    return directory;
}
