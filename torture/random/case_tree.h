// A case's entries on disk and in the model, and what is there afterwards.

#pragma once

#include "facts.h"
#include "model_files.h"
#include "random_case.h"

#include <string>
#include <string_view>

// Removes what a case before has left below Root. Errors: std::system_error, when the entries
// cannot be made. Requires: Root has the directory for the other file system.
void MakeOnDisk(const RandomCase& Case, const std::string& Root);
// The same with that directory, in a model that has only its root. Throws Undetermined where an
// entry cannot be made.
void MakeInModel(const RandomCase& Case, bool bOtherFileSystem, ModelFiles& Files);

// Begins the name of each of these facts and is followed by "/" and the path below the root. Sorts
// behind what is known of the job, which usually explains it.
constexpr std::string_view kTreeFact = "tree ";

// What the tree facts say of a node.
std::string NodeFact(const ModelNode& Node);

// A fact for each entry below the root, and none of times, which no rule is about.
Facts TreeOnDisk(const std::string& Root);
Facts TreeInModel(ModelFiles& Files);
