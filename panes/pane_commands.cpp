#include "pane_commands.h"

#include "entry_text.h"
#include "help_dialog.h"
#include "message_dialog.h"
#include "number_text.h"
#include "places.h"
#include "places_dialog.h"
#include "text_dialog.h"
#include "transfer_dialog.h"

#include <csignal>
#include <memory>
#include <unistd.h>
#include <utility>

namespace fs = std::filesystem;

namespace {

struct LetterForFunction {
    char Letter;
    int Number;
};
constexpr LetterForFunction kLetters[] = {{'?', 1}, {'R', 2}, {'c', 5},
                                          {'m', 6}, {'j', 9}, {'q', 10}};

// As the command line chooses.
TransferRequest RequestFor(bool bMove, std::vector<fs::path> Sources, fs::path Destination) {
    TransferRequest request;
    request.bMove = bMove;
    request.Operands = std::move(Sources);
    request.TargetDirectory = std::move(Destination);
    request.OnConflict = FileConflictChoice::Ask;
    request.Preserve = {.bMode = true, .bTimes = true, .bOwner = bMove && geteuid() == 0};
    return request;
}

} // namespace

bool PaneCommands::TakeKey(const KeyPress& Key) {
    if (Key.Code == KeyCode::Delete) {
        Entries.Delete();
        return true;
    }
    if (Key.Code == KeyCode::Escape) {
        return StopPlanning() || Entries.Stop();
    }
    if (Key.Code == KeyCode::Function) {
        return TakeFunctionKey(Key.Number);
    }
    return Key.Code == KeyCode::Text && TakeLetter(Key.Text[0]);
}

bool PaneCommands::TakeLetter(char Letter) {
    for (const LetterForFunction& each : kLetters) {
        if (each.Letter == Letter) {
            return TakeFunctionKey(each.Number);
        }
    }
    switch (Letter) {
    case '+':
    case '-':
        Mark(Letter == '+');
        return true;
    case 'g':
        GoToPlace();
        return true;
    case 'a':
        RunsShown.ShowFirstQuestion();
        return true;
    default:
        return false;
    }
}

bool PaneCommands::TakeFunctionKey(int Number) {
    const bool bMove = Number == 6;
    switch (Number) {
    case 1:
        Stack.Open<HelpDialog>(std::make_unique<HelpDialog>(), nullptr);
        return true;
    case 2:
        Entries.Rename();
        return true;
    case 3:
        Open("PAGER", "less");
        return true;
    case 4:
        Open("EDITOR", "vi");
        return true;
    case 5:
    case 6:
        Transfer(bMove);
        return true;
    case 7:
        Entries.MakeDirectory();
        return true;
    case 8:
        Entries.Delete();
        return true;
    case 9:
        RunsShown.ShowList();
        return true;
    case 10:
        Leave();
        return true;
    default:
        return false;
    }
}

void PaneCommands::Say(std::string Title, std::vector<std::string> Sentences) {
    Stack.Open<MessageDialog>(
        std::make_unique<MessageDialog>(Notice(std::move(Title), std::move(Sentences))), nullptr);
}

bool PaneCommands::StopPlanning() {
    const bool bPlanned = Planning.has_value();
    Planning.reset();
    return bPlanned;
}

void PaneCommands::Transfer(bool bMove) {
    const BrowseList& list = Panes.Active().List();
    const std::vector<fs::path> chosen = list.Chosen();
    if (chosen.empty() || Planning) {
        return;
    }
    if (IsDisc(Panes.Other().List().Place())) {
        Say(bMove ? "Move" : "Copy", {"Nothing can be written to a disc."});
        return;
    }
    TransferDialogSetup setup{
        .Request = RequestFor(bMove && !IsDisc(list.Place()), chosen, Panes.Other().List().Place()),
        .What = ChosenText(chosen),
        .Base = list.Place(),
        .bMayPreserveOwner = geteuid() == 0};
    Stack.Open<TransferDialog>(std::make_unique<TransferDialog>(std::move(setup)),
                               [this](TransferDialog& Shown) {
                                   if (std::optional<TransferWish> wish = Shown.TakeWish()) {
                                       BeginTransfer(std::move(wish->Request), wish->bInBackground);
                                   }
                               });
}

void PaneCommands::BeginTransfer(TransferRequest Request, bool bOutOfSight) {
    bInBackground = bOutOfSight;
    Planning.emplace(std::move(Request));
    PlannedIn = &Panes.Active();
    Attend();
}

void PaneCommands::Attend() {
    StartPlanned();
    UnmarkBegun();
}

void PaneCommands::UnmarkBegun() {
    std::erase_if(MarkedFor, [this](const auto& Each) {
        const auto& [id, marked] = Each;
        const TransferRun::Stage stage = Runs.Find(id)->Run->CurrentStage();
        if (stage == TransferRun::Stage::Looking || stage == TransferRun::Stage::Judged) {
            return false;
        }
        if (Runs.Find(id)->Run->Job() != nullptr) {
            marked.In->List().Unmark(marked.Entries);
        }
        return true;
    });
}

void PaneCommands::StartPlanned() {
    std::optional<BuiltPlan> plan = Planning ? Planning->TakePlan() : std::nullopt;
    if (!plan) {
        return;
    }
    const TransferRequest request = Planning->Request();
    const KnownDiscs discs = Planning->Discs();
    Planning.reset();
    if (const auto* refusal = std::get_if<PlanRefusal>(&*plan)) {
        Say(request.bMove ? "Move" : "Copy", refusal->Sentences);
        return;
    }
    const std::uint64_t id =
        Runs.Start(request, std::move(std::get<TarvaneTransferPlan>(*plan)), discs);
    MarkedFor.emplace(id, Marked{PlannedIn, request.Operands});
    if (!bInBackground) {
        RunsShown.ShowProgress(id);
    }
}

void PaneCommands::Mark(bool bMark) {
    TextQuestion question{.Title = bMark ? "Mark" : "Unmark",
                          .Label = "Pattern:",
                          .InitialText = "*",
                          .Refusal = [this](const std::string& Pattern) {
                              return Panes.Active().List().HasMatch(Pattern)
                                         ? std::string()
                                         : std::string("Nothing here matches it.");
                          }};
    Stack.Open<TextDialog>(std::make_unique<TextDialog>(std::move(question)),
                           [this, bMark](TextDialog& Shown) {
                               if (Shown.Entered()) {
                                   Panes.Active().List().MarkMatching(*Shown.Entered(), bMark);
                               }
                           });
}

void PaneCommands::GoToPlace() {
    Stack.Open<PlacesDialog>(std::make_unique<PlacesDialog>(KnownPlaces()),
                             [this](PlacesDialog& Shown) {
                                 if (Shown.Chosen()) {
                                     Panes.Active().GoTo(*Shown.Chosen());
                                 }
                             });
}

void PaneCommands::Open(const char* Variable, const char* Otherwise) {
    const BrowseList& list = Panes.Active().List();
    const ListedEntry* const current = list.CurrentEntry();
    if (current != nullptr && current->What == ListedEntry::Kind::File) {
        Program = FileProgram{Variable, Otherwise, list.PathOf(*current)};
    }
}

void PaneCommands::Leave() {
    const std::size_t running = Runs.CountRunning();
    if (running == 0 && !Entries.IsBusy()) {
        bLeaves = true;
        StopPlanning();
        return;
    }
    const std::string what =
        running == 0 ? Entries.StatusText() + "."
                     : NumberText(running) + (running == 1 ? " transfer runs." : " transfers run.");
    Message question = YesNoQuestion("Quit", {what + " Cancel and quit?"});
    Stack.Open<MessageDialog>(std::make_unique<MessageDialog>(std::move(question)),
                              [this](MessageDialog& Shown) {
                                  if (Shown.Pressed() == kYesButton) {
                                      bLeaves = true;
                                      StopPlanning();
                                      Runs.EndAll(SIGINT);
                                  }
                              });
}

std::string PaneCommands::StatusText() const {
    if (!Planning) {
        return "";
    }
    const std::string& drive = Planning->WaitsFor();
    return "Waiting for the " + (drive.empty() ? "disk" : "drive " + drive) + ": Esc gives up";
}
