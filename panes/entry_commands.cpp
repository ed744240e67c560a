#include "entry_commands.h"

#include "entry_text.h"
#include "free_name.h"
#include "message_dialog.h"
#include "number_text.h"
#include "text_dialog.h"

#include <filesystem>
#include <memory>
#include <utility>
#include <vector>

namespace fs = std::filesystem;

namespace {

std::string RefusalOfNewName(const fs::path& Folder, const std::string& Name) {
    if (Name.empty()) {
        return "A name is needed.";
    }
    return RenameRefusal(Folder / Name);
}

// What the list has of a name that leads deeper: "sub" of "sub/name".
std::string EntryOf(const fs::path& Name) {
    return Name.begin()->native();
}

} // namespace

void EntryCommands::Attend(TimePoint Now) {
    const std::optional<EntryWorkResult> result = Work ? Work->TakeResult() : std::nullopt;
    if (!result) {
        return;
    }
    Work.reset();
    ShowWorkDone();
    if (result->Failures.empty()) {
        return;
    }
    std::vector<std::string> lines = result->Failures;
    if (result->FailureCount > lines.size()) {
        lines.push_back("and " + NumberText(result->FailureCount - lines.size()) + " more");
    }
    auto notice = std::make_unique<MessageDialog>(Notice(WorkText, std::move(lines)));
    notice->AppearUnasked(Guard, Now);
    Stack.Open<MessageDialog>(std::move(notice), nullptr);
}

bool EntryCommands::Stop() {
    if (!Work) {
        return false;
    }
    Work.reset();
    ShowWorkDone();
    return true;
}

// Whoever has gone elsewhere meanwhile, or is on the way, is not led back.
void EntryCommands::ShowWorkDone() {
    Browser& active = Panes.Active();
    const std::string cursorOn = std::exchange(CursorOn, {});
    const bool bStillThere =
        active.List().Place() == CursorIn && active.Reading().value_or(CursorIn) == CursorIn;
    if (!cursorOn.empty() && bStillThere) {
        active.GoTo(CursorIn, cursorOn);
    } else {
        active.ReadAgain();
    }
    Panes.Other().ReadAgain();
}

void EntryCommands::Begin(EntryWork NewWork, std::string Doing) {
    Work.emplace(std::move(NewWork));
    WorkText = std::move(Doing);
}

void EntryCommands::MakeDirectory() {
    const fs::path place = Panes.Active().List().Place();
    if (IsDisc(place) || Work) {
        return;
    }
    TextQuestion question{
        .Title = "Make directory", .Label = "Name:", .Refusal = [place](const std::string& Name) {
            return RefusalOfNewName(place, Name);
        }};
    Stack.Open<TextDialog>(
        std::make_unique<TextDialog>(std::move(question)), [this, place](TextDialog& Shown) {
            if (Shown.Entered()) {
                CursorOn = EntryOf(*Shown.Entered());
                CursorIn = place;
                Begin(EntryWork::MakeDirectory(place / *Shown.Entered()), "Make directory");
            }
        });
}

void EntryCommands::Rename() {
    const BrowseList& list = Panes.Active().List();
    const ListedEntry* const current = list.CurrentEntry();
    if (current == nullptr || IsDisc(list.Place()) || Work) {
        return;
    }
    const fs::path place = list.Place();
    const std::string name = current->Name;
    TextQuestion question{.Title = "Rename",
                          .Label = "New name:",
                          .InitialText = name,
                          .Refusal = [place, name](const std::string& Name) {
                              return Name == name ? "" : RefusalOfNewName(place, Name);
                          }};
    Stack.Open<TextDialog>(
        std::make_unique<TextDialog>(std::move(question)), [this, place, name](TextDialog& Shown) {
            if (Shown.Entered() && *Shown.Entered() != name) {
                CursorOn = EntryOf(*Shown.Entered());
                CursorIn = place;
                Begin(EntryWork::Rename(place / name, place / *Shown.Entered()), "Rename");
            }
        });
}

void EntryCommands::Delete() {
    const BrowseList& list = Panes.Active().List();
    const std::vector<fs::path> chosen = list.Chosen();
    if (chosen.empty() || IsDisc(list.Place()) || Work) {
        return;
    }
    const ListedEntry* const current = list.CurrentEntry();
    const bool bDirectories =
        list.Marked().RealDirectories > 0 ||
        (list.Marked().Entries == 0 && current != nullptr && current->IsRealDirectory());
    Message question = YesNoQuestion("Delete", {"Delete " + ChosenText(chosen) +
                                                (bDirectories ? " with all that is in it?" : "?")});
    Stack.Open<MessageDialog>(std::make_unique<MessageDialog>(std::move(question)),
                              [this, chosen](MessageDialog& Shown) {
                                  if (Shown.Pressed() == kYesButton) {
                                      Begin(EntryWork::Delete(chosen), "Delete");
                                  }
                              });
}

std::string EntryCommands::StatusText() const {
    return Work ? WorkText + ": " + NumberText(Work->EntriesDone()) + " entries" : "";
}
