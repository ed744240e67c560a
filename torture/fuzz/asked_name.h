// A taken name that an input describes, and the keys that are pressed when it is asked about.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "conflict_question.h"
#include "fuzz_target.h"
#include "key_press.h"
#include "taken_name.h"

inline TakenName TakenNameFrom(InputReader& Reader) {
    const auto bit = [&Reader] { return Reader.Number(2) == 1; };
    const auto number = [&Reader] { return static_cast<std::uint64_t>(Reader.Number(256)) << 40; };
    TakenName name{{}, {}, bit(), bit()};
    TarvaneTransferConflict& conflict = name.Conflict;
    conflict.Kind =
        bit() ? TarvaneTransferConflictKind::Directory : TarvaneTransferConflictKind::File;
    conflict.bSourceDirectory = bit();
    conflict.bDestinationDirectory = bit();
    conflict.bSourceHasSize = bit();
    conflict.bDestinationHasSize = bit();
    conflict.bSourceHasModifiedTime = conflict.bDestinationHasModifiedTime = bit();
    conflict.SourceSizeBytes = number();
    conflict.DestinationSizeBytes = number();
    name.Entry.bLink = bit();
    name.Entry.bHasOtherNames = !name.Entry.bLink && bit();
    if (const int kind = Reader.Number(4); kind < 3) {
        name.Entry.LeadsTo = static_cast<TakenEntry::Kind>(kind);
    }
    conflict.SourcePath = "/" + Reader.Name();
    conflict.DestinationPath = "/" + Reader.Name();
    conflict.SourceDate = conflict.DestinationDate = "2024-03-07 14:05:09";
    name.Entry.LinkTarget = name.Entry.bLink ? Reader.Name() : "";
    return name;
}

// Nothing of the disk: some paths can be used and some cannot.
inline RenameAdvice AdviceFor(const TakenName& Name) {
    const std::string proposed = Name.Conflict.DestinationPath + "-2";
    return {.ProposeFreePath = [proposed] { return proposed.size() % 5 == 0 ? "" : proposed; },
            .Refusal = [](const std::string& Path) -> std::string {
                return Path.size() % 3 == 0 ? "That name is taken, too: " + Path : "";
            }};
}

inline std::vector<KeyPress> KeysIn(std::string_view Bytes) {
    KeyDecoder decoder;
    decoder.Feed(Bytes);
    std::vector<KeyPress> keys;
    while (std::optional<KeyPress> key = decoder.NextAfterSilence()) {
        keys.push_back(*std::move(key));
    }
    return keys;
}

// What the desk relies on.
inline void ExpectGoodAnswer(const ConflictAnswer& Answer, const TakenName& Name) {
    using Action = TarvaneTransferConflictAction;
    const bool bRename = Answer.Action == Action::Rename;
    Expect(bRename || Answer.RenamePath.empty(), "only a new name comes with a path");
    Expect(!bRename || Answer.RenamePath.starts_with('/'), "a new name is a full path");
    Expect(Answer.Action != Action::MergeAll && Answer.Action != Action::SkipAll &&
               Answer.Action != Action::OverwriteAll && Answer.Action != Action::OverwriteAllOlder,
           "no answer leaves later names to the engine");
    Expect(!Replaces(Answer.Action, Name) || MayBeReplaced(Name),
           "nothing is replaced that must stay");
}
