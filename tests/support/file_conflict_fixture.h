// A file whose name is taken, and the engine's look at it.
//
// Requires: included behind the engine's source, whose private functions it calls.

#pragma once

#include "answering_interface.h"
#include "transfer_fixture.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

class FileConflict : public TransferTest {
protected:
    using Act = TarvaneTransferConflictAction;
    using Policy = TarvaneTransferConflictPolicy;

    FileConflict() {
        WriteFile(Source, "new data");
        WriteFile(Destination, "old data");
    }

    // Resolves with one and the same variable as destination and result, as the copiers do.
    bool Resolve(Policy WithPolicy = Policy::Overwrite) {
        return ResolveLocalFileConflict(Job, Source, Target, WithPolicy, Target, bSkip, Message);
    }

    bool Answered(Act Action, const std::string& RenamePath = "",
                  std::function<void()> Before = nullptr) {
        AnsweringInterface interface(Job, {{Action, RenamePath, std::move(Before)}});
        const bool result = Resolve(Policy::Ask);
        Questions = interface.Stop();
        return result;
    }

    const std::filesystem::path Source = Directory / "source";
    const std::filesystem::path Destination = Directory / "destination";
    std::filesystem::path Target = Destination;
    bool bSkip = true;
    std::vector<TarvaneTransferConflict> Questions;
};
