// The sources of a transfer as the operands name them.

#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "plan_builder.h"

struct PlanSource {
    // What the engine gets: absolute, or a track's path as it was given.
    std::filesystem::path Path;
    // What it is called, and what it becomes called in a directory.
    std::string Name;
    // Links are followed.
    bool bDirectory = false;
    bool bTrack = false;
    // The operand ends in "." or "..", or is "/": it has no name that it could keep in a directory,
    // so its contents go there.
    bool bContentsOnly = false;
};

// Looks each operand up and opens up whole CDs. Every missing operand is reported.
std::variant<std::vector<PlanSource>, PlanRefusal>
FindSources(const std::vector<std::filesystem::path>& Operands, bool bMove);

// The absolute path without ".", and without doubled and trailing slashes. ".." stays where it is,
// because it may follow a link. Such a path can never be taken for that of a CD track.
std::filesystem::path FullPath(const std::filesystem::path& Given);

// Whether Given, trailing slashes aside, ends in Name.
bool EndsInComponent(const std::filesystem::path& Given, std::string_view Name);

bool IsCdPath(const std::filesystem::path& Path);
