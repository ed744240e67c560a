#include "file_panes.h"

#include "full_path.h"
#include "pane_keys.h"

namespace {

// What takes less is not worth a word.
constexpr std::chrono::milliseconds kMoment{300};
constexpr std::chrono::milliseconds kDoubleClick{400};

std::filesystem::path AbsolutePlace(const std::filesystem::path& Given) {
    return IsDisc(Given) ? Given : FullPath(Given);
}

} // namespace

FilePanes::FilePanes(const PanesRequest& Request)
    : Sides{Side{.Way = Browser(AbsolutePlace(Request.Left))},
            Side{.Way = Browser(AbsolutePlace(Request.Right))}} {}

void FilePanes::Attend(TimePoint Now) {
    for (Side& side : Sides) {
        side.Way.Attend();
        if (!side.Way.Reading()) {
            side.ReadingSince.reset();
        } else if (!side.ReadingSince) {
            side.ReadingSince = Now;
        }
    }
}

bool FilePanes::IsReading() const {
    return Sides[0].Way.Reading() || Sides[1].Way.Reading();
}

void FilePanes::ReadAgain() {
    for (Side& side : Sides) {
        side.Way.ReadAgain();
    }
}

bool FilePanes::TakeKey(const KeyPress& Key, TimePoint Now) {
    Side& side = Sides[ActiveSide];
    if (side.Search.TakeKey(Key, side.Way.List())) {
        return true;
    }
    if (Key.Code == KeyCode::Tab || Key.Code == KeyCode::BackTab) {
        ActiveSide = 1 - ActiveSide;
    } else if (Key.Code == KeyCode::Enter) {
        side.Way.Enter();
    } else if (Key.Code == KeyCode::Backspace) {
        side.Way.GoUp();
    } else if (Key.Code == KeyCode::Escape && side.Way.Reading()) {
        side.Way.StopReading();
    } else if (Key.Code == KeyCode::ClearLine) {
        bSwapped = !bSwapped;
    } else if (Key.Code == KeyCode::Mouse) {
        return TakeMouse(Key.Mouse, Now);
    } else {
        return TakeCharacter(Key);
    }
    return true;
}

bool FilePanes::TakeCharacter(const KeyPress& Key) {
    Side& side = Sides[ActiveSide];
    if (Key.Code == KeyCode::Control && Key.Text == "r") {
        side.Way.ReadAgain();
        return true;
    }
    if (Key.Code == KeyCode::Text && Key.Text == "=") {
        Other().GoTo(side.Way.List().Place());
        return true;
    }
    return HandlePaneKey(Key, side.Way.List(), side.View.VisibleRows());
}

bool FilePanes::TakeMouse(const MousePress& Mouse, TimePoint Now) {
    for (std::size_t i = 0; i < Sides.size(); ++i) {
        const std::optional<std::size_t> row = Sides[i].View.RowAt(Mouse.Column, Mouse.Row);
        if (!row || Mouse.Pressed != MousePress::Button::Left) {
            continue;
        }
        const bool bDouble = LatestClick == Mouse && Now - LatestClickAt < kDoubleClick;
        ActiveSide = i;
        Sides[i].Way.List().MoveCursorTo(*row);
        LatestClick = Mouse;
        LatestClickAt = Now;
        if (bDouble) {
            LatestClick.reset();
            Sides[i].Way.Enter();
        }
        return true;
    }
    const bool bWheel = Mouse.Pressed == MousePress::Button::WheelUp ||
                        Mouse.Pressed == MousePress::Button::WheelDown;
    Side& side = Sides[ActiveSide];
    return bWheel && HandlePaneKey({.Code = KeyCode::Mouse, .Mouse = Mouse}, side.Way.List(),
                                   side.View.VisibleRows());
}

void FilePanes::Draw(Screen& On, const PanesLayout& Layout, TimePoint Now) {
    const std::array<Area, 2> areas{Layout.Left, Layout.Right};
    for (std::size_t i = 0; i < Sides.size(); ++i) {
        Side& side = Sides[i];
        PaneState state{.bActive = i == ActiveSide,
                        .Message = side.Way.Message(),
                        .Search = side.Search.Text()};
        if (side.ReadingSince && Now - *side.ReadingSince > kMoment) {
            state.Reading = side.Way.Reading();
        }
        side.View.Draw(On, areas[bSwapped ? 1 - i : i], side.Way.List(), state);
    }
}
