// Keys and the mouse in one of the dialogs of the panes, in a window that changes its size.

#include <chrono>
#include <cstdint>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "asked_name.h"
#include "checked_screen.h"
#include "conflict_dialog.h"
#include "fuzz_target.h"
#include "help_dialog.h"
#include "job_list_dialog.h"
#include "message_dialog.h"
#include "places_dialog.h"
#include "progress_dialog.h"
#include "text_dialog.h"
#include "transfer_dialog.h"

namespace {

using TimePoint = Dialog::TimePoint;

// A dialog, and what is expected of what it has come to after each key.
struct Tried {
    std::unique_ptr<Dialog> Shown;
    std::function<void()> Look = [] {};
};

std::vector<std::string> NamesFrom(InputReader& Reader, int Most) {
    std::vector<std::string> names;
    for (int left = Reader.Number(Most + 1); left > 0; --left) {
        names.push_back(Reader.Name());
    }
    return names;
}

Tried MakeConflict(InputReader& Reader, KeyGuard& Guard) {
    const TakenName name = TakenNameFrom(Reader);
    const ConflictDesk::Question question{1, name};
    auto dialog = std::make_unique<ConflictDialog>(question, AdviceFor(name), Guard, TimePoint());
    ConflictDialog& shown = *dialog;
    shown.ShowJob(Reader.Name(), Reader.Name());
    return {std::move(dialog), [&shown, name] {
                if (const auto answer = shown.TakeAnswer()) {
                    Expect(answer->first == 1, "an answer is for the question that is shown");
                    ExpectGoodAnswer(answer->second, name);
                }
            }};
}

Tried MakeText(InputReader& Reader, KeyGuard&) {
    TextQuestion question{
        .Title = Reader.Name(), .Label = Reader.Name(), .InitialText = Reader.Name()};
    question.Refusal = [](const std::string& Text) -> std::string {
        return Text.size() % 3 == 0 ? "This cannot be a name: " + Text : "";
    };
    auto dialog = std::make_unique<TextDialog>(std::move(question));
    TextDialog& shown = *dialog;
    return {std::move(dialog), [&shown] {
                Expect(!shown.Entered() || shown.IsClosed(), "what is entered closes the dialog");
                Expect(!shown.Entered() || shown.Entered()->size() % 3 != 0,
                       "what is refused is not entered");
            }};
}

Tried MakeTransfer(InputReader& Reader, KeyGuard&) {
    TransferDialogSetup setup;
    setup.Request.bMove = Reader.Number(2) == 1;
    setup.bMayPreserveOwner = Reader.Number(2) == 1;
    setup.What = Reader.Name();
    setup.Base = "/" + Reader.Name();
    setup.Request.TargetDirectory = "/" + Reader.Name();
    setup.Request.Operands = {"/home/a"};
    auto dialog = std::make_unique<TransferDialog>(setup);
    TransferDialog& shown = *dialog;
    return {std::move(dialog), [&shown, setup] {
                if (const std::optional<TransferWish> wish = shown.TakeWish()) {
                    Expect(wish->Request.bMove == setup.Request.bMove,
                           "what was asked for is what was shown");
                    Expect(DestinationOf(wish->Request).is_absolute(),
                           "a transfer has a destination");
                }
            }};
}

Tried MakeMessage(InputReader& Reader, KeyGuard& Guard) {
    const bool bUnasked = Reader.Number(2) == 1;
    auto dialog =
        std::make_unique<MessageDialog>(YesNoQuestion(Reader.Name(), NamesFrom(Reader, 60)));
    MessageDialog& shown = *dialog;
    if (bUnasked) {
        shown.AppearUnasked(Guard, TimePoint());
    }
    return {std::move(dialog), [&shown] {
                Expect(shown.Pressed().value_or(0) < 2, "one of the buttons was pressed");
            }};
}

Tried MakeHelp(InputReader&, KeyGuard&) {
    return {std::make_unique<HelpDialog>()};
}

Tried MakePlaces(InputReader& Reader, KeyGuard&) {
    std::vector<NamedPlace> places;
    for (const std::string& name : NamesFrom(Reader, 60)) {
        places.push_back({name, "/" + name});
    }
    return {std::make_unique<PlacesDialog>(std::move(places))};
}

Tried MakeJobList(InputReader& Reader, KeyGuard&) {
    std::vector<JobListRow> rows;
    std::uint64_t id = 0;
    for (const std::string& name : NamesFrom(Reader, 40)) {
        JobListRow row{.Id = ++id, .Texts = {name, "Copy", name, "12%", name}};
        const int kind = Reader.Number(16);
        row.bFinished = (kind & 1) != 0;
        row.bCanRunAgain = row.bFinished && (kind & 2) != 0;
        row.bWaitsForAnswer = !row.bFinished && (kind & 4) != 0;
        row.bCancelRequested = !row.bFinished && (kind & 8) != 0;
        row.EndLines = {name, name};
        row.Answers = {name};
        rows.push_back(std::move(row));
    }
    auto dialog = std::make_unique<JobListDialog>(std::move(rows));
    JobListDialog& shown = *dialog;
    return {std::move(dialog), [&shown, id] {
                Expect(shown.TakeWish().Id <= id, "what is wished for is one of the rows");
            }};
}

CopyingScene CopyingFrom(InputReader& Reader) {
    CopyingScene scene;
    TarvaneTransferUiSnapshot& snapshot = scene.Snapshot;
    snapshot.StageText = Reader.Name();
    snapshot.PathText = Reader.Name();
    snapshot.OverallText = Reader.Name();
    snapshot.IoText = Reader.Name();
    snapshot.HintText = Reader.Name();
    // Beyond what can be, too: the sources may grow while they are copied.
    snapshot.FileProgress01 = Reader.Number(256) / 200.0;
    snapshot.CurrentFileTotalBytes = static_cast<std::uint64_t>(Reader.Number(256)) << 55;
    snapshot.CurrentFileDoneBytes = static_cast<std::uint64_t>(Reader.Number(256)) << 55;
    scene.Claims.Percent = Reader.Number(101);
    scene.Claims.StalledSeconds = Reader.Number(256);
    scene.Claims.bMoreThanCounted = Reader.Number(2) == 1;
    scene.Claims.bLessThanCounted = Reader.Number(2) == 1;
    return scene;
}

ProgressScene SceneFrom(InputReader& Reader) {
    const std::string title = Reader.Name();
    const auto number = [&Reader] { return static_cast<std::uint64_t>(Reader.Number(256)) << 56; };
    switch (Reader.Number(5)) {
    case 0:
        return {title, LookingScene{number()}};
    case 1:
        return {title, CopyingFrom(Reader)};
    case 2:
        return {title, FinishingScene{{.Done = number(), .Total = number()}}};
    case 3: {
        const std::string error = Reader.Name();
        return {title, FlushingScene{{.ErrorText = error, .RemainingBytes = number()}}};
    }
    default:
        return {title, OverScene{RunResult::Failed, NamesFrom(Reader, 60), CopyingFrom(Reader)}};
    }
}

Tried MakeProgress(InputReader& Reader, KeyGuard&) {
    auto dialog = std::make_unique<ProgressDialog>(SceneFrom(Reader));
    auto rates = std::make_shared<RateHistory>();
    for (int second = Reader.Number(100); second > 0; --second) {
        const auto rate = static_cast<std::uint64_t>(Reader.Number(256)) << 50;
        rates->Add(rate, TimePoint(std::chrono::seconds(100 - second)));
    }
    ProgressScene next = SceneFrom(Reader);
    next.Rates = rates.get();
    ProgressDialog& shown = *dialog;
    return {std::move(dialog), [&shown, rates, next] { shown.SetScene(next); }};
}

constexpr Tried (*kDialogs[])(InputReader&, KeyGuard&) = {
    MakeConflict, MakeText,   MakeTransfer, MakeMessage,
    MakeHelp,     MakePlaces, MakeJobList,  MakeProgress,
};

} // namespace

void RunInput(std::string_view Input) {
    InputReader reader(Input);
    const auto make = kDialogs[reader.Number(std::size(kDialogs))];
    const TerminalSize windows[] = {WindowFrom(reader), WindowFrom(reader)};
    CheckedScreen screen(windows[0], reader.Number(2) == 1);
    KeyGuard guard;
    const Tried tried = make(reader, guard);
    TimePoint now;
    std::size_t window = 0;
    tried.Shown->Draw(screen, now);
    for (const KeyPress& key : KeysIn(reader.Rest())) {
        now += std::chrono::seconds(1);
        if (key.Code == KeyCode::Control) {
            window = 1 - window;
            screen.Resize(windows[window]);
        }
        tried.Shown->TakeKey(key, now);
        tried.Look();
        if (tried.Shown->IsClosed()) {
            return;
        }
        tried.Shown->Draw(screen, now);
    }
}
