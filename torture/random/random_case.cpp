#include "random_case.h"

#include "facts.h"

#include <array>

using Action = TarvaneTransferConflictAction;

namespace {

std::string ActionText(Action Given) {
    constexpr std::array kNames{"",         "merge",           "merge all", "skip",
                                "skip all", "overwrite",       "rename",    "overwrite all",
                                "compare",  "overwrite older", "cancel"};
    return kNames.at(static_cast<std::size_t>(Given));
}

std::string EntryText(const CaseEntry& Entry) {
    switch (Entry.Kind) {
    case EntryKind::Directory:
        return "directory";
    case EntryKind::File:
        return "file of " + std::to_string(Entry.Size) + " bytes, stamp " +
               std::to_string(Entry.Stamp);
    case EntryKind::HardLink:
        return "hard link to " + Shown(Entry.Target);
    case EntryKind::Link:
        return "link to " + Shown(Entry.Target);
    case EntryKind::Fifo:
        return "fifo";
    case EntryKind::Socket:
        return "socket";
    case EntryKind::Device:
        break;
    }
    return "device";
}

std::string PolicyText(TarvaneTransferConflictPolicy Policy) {
    constexpr std::array kNames{"ask", "overwrite", "skip"};
    return kNames.at(static_cast<std::size_t>(Policy));
}

} // namespace

std::string ContentsOf(const CaseEntry& File) {
    std::string contents(File.Size, '\0');
    std::uint64_t state = File.Stamp / 2 + 1;
    for (char& byte : contents) {
        state = state * 6364136223846793005U + 1442695040888963407U;
        byte = static_cast<char>('a' + (state >> 33U) % 26);
    }
    if (!contents.empty() && File.Stamp % 2 == 1) {
        contents.back() = static_cast<char>(contents.back() - 'a' + 'A');
    }
    return contents;
}

std::string LinkTarget(const CaseEntry& Link, const std::string& Root) {
    return Link.Target.starts_with("~/") ? Root + Link.Target.substr(1) : Link.Target;
}

Action ActionFor(const CaseAnswer& Answer, TarvaneTransferConflictKind Kind) {
    return Kind == TarvaneTransferConflictKind::Directory ? Answer.ToDirectory : Answer.ToFile;
}

std::string RenamePathFor(const CaseAnswer& Answer, TarvaneTransferConflictKind Kind,
                          const std::string& DestinationPath) {
    if (ActionFor(Answer, Kind) != Action::Rename || Answer.NewName.empty()) {
        return {};
    }
    return DestinationPath.substr(0, DestinationPath.rfind('/') + 1) + Answer.NewName;
}

std::string Description(const RandomCase& Case) {
    std::string lines;
    for (const CaseEntry& entry : Case.Entries) {
        lines += "    " + Shown(entry.Path) + ": " + EntryText(entry) + ", time " +
                 std::to_string(entry.ModifiedSeconds) + "\n";
    }
    for (const CaseItem& item : Case.Items) {
        lines += std::string("    ") + (Case.bMove ? "move " : "copy ") + Shown(item.Source) +
                 " to " + Shown(item.Destination) + "\n";
    }
    if (!Case.Options.empty()) {
        lines += "    options";
        for (const std::string& option : Case.Options) {
            lines += " " + option;
        }
        return lines + "\n";
    }
    lines += "    policy " + PolicyText(Case.Policy) +
             (Case.bCanceledBefore ? ", canceled before the start" : "") + "\n";
    for (const CaseAnswer& answer : Case.Answers) {
        lines += "    answer " + ActionText(answer.ToDirectory) + " to a directory, " +
                 ActionText(answer.ToFile) + " to a file, name '" + Shown(answer.NewName) + "'\n";
    }
    return lines;
}
