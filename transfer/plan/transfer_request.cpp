#include "transfer_request.h"

#include "full_path.h"

std::filesystem::path DestinationOf(const TransferRequest& Request) {
    if (Request.TargetDirectory || Request.Operands.empty()) {
        return Request.TargetDirectory.value_or(std::filesystem::path());
    }
    return Request.Operands.back();
}

ConflictRules RulesOf(const TransferRequest& Request) {
    return {.ForFiles = Request.OnConflict.value_or(FileConflictChoice::Ask),
            .ForDirectories = Request.OnDirectoryConflict,
            .bFollowLinks = Request.bFollowLinks,
            .NamedDestination = FullPath(DestinationOf(Request))};
}
