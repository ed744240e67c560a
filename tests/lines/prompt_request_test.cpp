#include "prompt_request.h"

#include <gtest/gtest.h>

namespace {

TransferRequest RequestWith(FileConflictChoice ForFiles) {
    TransferRequest request;
    request.OnConflict = ForFiles;
    return request;
}

const std::string kReason = "nobody can be asked about taken names without a terminal; pass ";

} // namespace

TEST(UnattendedRequest, NamesTheOptionThatWouldAsk) {
    EXPECT_EQ(SentenceIfNobodyCanBeAsked(RequestWith(FileConflictChoice::Ask)),
              kReason + "--on-conflict=overwrite, skip or another choice");
    TransferRequest request = RequestWith(FileConflictChoice::Overwrite);
    request.OnDirectoryConflict = DirectoryConflictChoice::Ask;
    EXPECT_EQ(SentenceIfNobodyCanBeAsked(request),
              kReason + "--on-directory-conflict=merge, skip or fail");
}

TEST(UnattendedRequest, IsFineWhenNothingAsks) {
    EXPECT_EQ(SentenceIfNobodyCanBeAsked(RequestWith(FileConflictChoice::Overwrite)), "");
    EXPECT_EQ(SentenceIfNobodyCanBeAsked(RequestWith(FileConflictChoice::Older)), "");
    TransferRequest dryRun = RequestWith(FileConflictChoice::Ask);
    dryRun.bDryRun = true;
    EXPECT_EQ(SentenceIfNobodyCanBeAsked(dryRun), "");
}
