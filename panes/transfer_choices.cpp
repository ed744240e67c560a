#include "transfer_choices.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

namespace {

enum GroupIndex : std::size_t {
    Files,
    Directories,
    Extras,
    Flush,
};

enum ExtraIndex : std::size_t {
    ModesAndTimes,
    Links,
    // The last one, as it is not always there.
    Owner,
};

template <typename What>
struct NamedChoice {
    What Choice;
    GroupChoice Text;
};

const std::vector<NamedChoice<FileConflictChoice>>& FileChoices() {
    using enum FileConflictChoice;
    static const std::vector<NamedChoice<FileConflictChoice>> choices = {
        {Ask, {"Ask", "a", "Shows both files and waits for an answer."}},
        {Overwrite, {"Overwrite", "o", "Replaces the old file."}},
        {Skip, {"Skip", "s", "Leaves the old file alone, and the source too."}},
        {Older, {"Older", "e", "Replaces a file that is older, skips the others."}},
        {Compare, {"Compare", "c", "Skips a file with equal contents, replaces the others."}},
        {Larger, {"Larger", "l", "Replaces a file when the source is larger."}},
        {SizeDiffers, {"Size differs", "z", "Replaces a file when the sizes differ."}},
        {KeepBoth, {"Keep both", "k", "Gives the new file a free name, as cover-2.jpg."}},
        {Fail, {"Fail", "f", "Ends before anything is touched."}},
    };
    return choices;
}

const std::vector<NamedChoice<DirectoryConflictChoice>>& DirectoryChoices() {
    using enum DirectoryConflictChoice;
    static const std::vector<NamedChoice<DirectoryConflictChoice>> choices = {
        {Ask, {"Ask", "a", "Shows both directories and waits for an answer."}},
        {Merge, {"Merge", "m", "Copies into it and decides about each file as above."}},
        {Skip, {"Skip", "s", "Leaves the whole directory out."}},
        {Fail, {"Fail", "f", "Ends before anything is touched."}},
    };
    return choices;
}

const std::vector<NamedChoice<FlushChoice>>& FlushChoices() {
    using enum FlushChoice;
    static const std::vector<NamedChoice<FlushChoice>> choices = {
        {Auto, {"Auto", "a", "Waits for removable disks and for network disks."}},
        {Always, {"Always", "l", "Waits until all is written to the device."}},
        {Never, {"Never", "n", "Does not wait until all is written to the device."}},
    };
    return choices;
}

template <typename What>
ChoiceGroup OneOf(const char* Title, const std::vector<NamedChoice<What>>& Choices) {
    std::vector<GroupChoice> texts;
    std::ranges::transform(Choices, std::back_inserter(texts), &NamedChoice<What>::Text);
    return {ChoiceGroup::Kind::One, Title, std::move(texts)};
}

template <typename What>
void Choose(ChoiceGroup& InOutGroup, const std::vector<NamedChoice<What>>& Choices, What Wanted) {
    const auto found = std::ranges::find(Choices, Wanted, &NamedChoice<What>::Choice);
    InOutGroup.Press(static_cast<std::size_t>(found - Choices.begin()));
}

ChoiceGroup ExtrasGroup(bool bMove, bool bWithOwner) {
    std::vector<GroupChoice> choices = {
        {"Modes and dates", "m", "Copies get the modes and dates of their sources."},
        {"Follow links", "f",
         bMove ? "Writes through links there; removes files through links."
               : "Writes through links at the destination."},
    };
    if (bWithOwner) {
        choices.push_back({"Owner", "o", "Copies get the users and groups of their sources."});
    }
    return {ChoiceGroup::Kind::Any, "Also:", std::move(choices)};
}

} // namespace

TransferChoices::TransferChoices(const TransferRequest& Request, bool bMayPreserveOwner)
    : Groups{OneOf("File exists:", FileChoices()), OneOf("Directory exists:", DirectoryChoices()),
             ExtrasGroup(Request.bMove, bMayPreserveOwner),
             OneOf("Wait for disk:", FlushChoices())},
      bOffersOwner(bMayPreserveOwner), bDirectoriesChosen(Request.OnDirectoryConflict.has_value()) {
    Choose(Groups[Files], FileChoices(), Request.OnConflict.value_or(FileConflictChoice::Ask));
    Choose(Groups[Flush], FlushChoices(), Request.Flush);
    if (bDirectoriesChosen) {
        Choose(Groups[Directories], DirectoryChoices(), *Request.OnDirectoryConflict);
    }
    FollowFiles();
    ChoiceGroup& extras = Groups[Extras];
    extras.Set(ModesAndTimes, Request.Preserve.bMode && Request.Preserve.bTimes);
    extras.Set(Links, Request.bFollowLinks);
    if (bOffersOwner) {
        extras.Set(Owner, Request.Preserve.bOwner);
    }
}

void TransferChoices::FollowFiles() {
    if (!bDirectoriesChosen) {
        const FileConflictChoice forFiles = FileChoices()[Groups[Files].Chosen()].Choice;
        Choose(Groups[Directories], DirectoryChoices(), ChosenForDirectories(forFiles, {}));
    }
}

bool TransferChoices::Handle(std::size_t Index, const KeyPress& Key) {
    const bool bModesAndTimes = Groups[Extras].IsOn(ModesAndTimes);
    const bool bTaken = Groups.at(Index).Handle(Key);
    bDirectoriesChosen = bDirectoriesChosen || (bTaken && Index == Directories);
    bModesAndTimesTouched =
        bModesAndTimesTouched || Groups[Extras].IsOn(ModesAndTimes) != bModesAndTimes;
    FollowFiles();
    return bTaken;
}

void TransferChoices::FillIn(TransferRequest& InOutRequest) const {
    InOutRequest.OnConflict = FileChoices()[Groups[Files].Chosen()].Choice;
    InOutRequest.OnDirectoryConflict.reset();
    if (bDirectoriesChosen) {
        InOutRequest.OnDirectoryConflict = DirectoryChoices()[Groups[Directories].Chosen()].Choice;
    }
    InOutRequest.Flush = FlushChoices()[Groups[Flush].Chosen()].Choice;
    const ChoiceGroup& extras = Groups[Extras];
    InOutRequest.bFollowLinks = extras.IsOn(Links);
    if (bModesAndTimesTouched) {
        InOutRequest.Preserve.bMode = extras.IsOn(ModesAndTimes);
        InOutRequest.Preserve.bTimes = extras.IsOn(ModesAndTimes);
    }
    if (bOffersOwner) {
        InOutRequest.Preserve.bOwner = extras.IsOn(Owner);
    }
}
