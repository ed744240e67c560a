#include "prompt_request.h"

std::string SentenceIfNobodyCanBeAsked(const TransferRequest& Request) {
    if (Request.bDryRun) {
        return {};
    }
    const std::string reason = "nobody can be asked about taken names without a terminal; pass ";
    if (Request.OnConflict == FileConflictChoice::Ask) {
        return reason + "--on-conflict=overwrite, skip or another choice";
    }
    if (Request.OnDirectoryConflict == DirectoryConflictChoice::Ask) {
        return reason + "--on-directory-conflict=merge, skip or fail";
    }
    return {};
}
