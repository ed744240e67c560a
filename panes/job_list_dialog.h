// The transfers of this run of the program: those that go on, and what the others came to.

#pragma once

#include "dialog.h"
#include "surface.h"
#include "tarvanetransfer.h"
#include "wish_buttons.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

// None of its texts is cleaned for a screen.
struct JobListRow {
    // Different for every transfer of this run.
    std::uint64_t Id = 0;
    // The engine's row, or one like it before and after the job.
    TarvaneTransferJobSnapshot Texts;
    bool bWaitsForAnswer = false;
    bool bCancelRequested = false;
    bool bFinished = false;
    // Finished, and not everything was done.
    bool bCanRunAgain = false;
    // Of a finished one: all that is to be said at the end, and what was asked with the answers.
    std::vector<std::string> EndLines = {};
    std::vector<std::string> Answers = {};
};

// The selection stays on a transfer whatever becomes of the rows around it. Below the list stands
// what is known of the selected one, as far as there is room; Show leads to all of it.
class JobListDialog : public Dialog {
public:
    enum class Wish {
        None,
        Show,
        Cancel,
        Answer,
        RunAgain,
        Close,
    };
    struct WishForJob {
        Wish What = Wish::None;
        // 0 for Close.
        std::uint64_t Id = 0;

        bool operator==(const WishForJob&) const = default;
    };

    explicit JobListDialog(std::vector<JobListRow> NewRows) { SetRows(std::move(NewRows)); }

    // Those that have finished come last, in the order given.
    void SetRows(std::vector<JobListRow> NewRows);

    void Draw(Screen& On, TimePoint Now) override;
    void TakeKey(const KeyPress& Key, TimePoint Now) override;
    bool IsClosed() const override { return bClosed; }

    // What was asked for since the last call.
    WishForJob TakeWish() { return std::exchange(Asked, {}); }

private:
    const JobListRow* SelectedRow() const;
    void Select(std::size_t Row);
    void OfferButtons();
    void Ask(Wish What);
    void TakeClick(const KeyPress& Key);
    void DrawList(Screen& On, const Area& Where);
    void DrawDetail(Screen& On, const Area& Where) const;

    std::vector<JobListRow> Rows;
    // Below the number of rows, or 0.
    std::size_t Selected = 0;
    WishButtons<Wish> Buttons;
    WishForJob Asked;
    bool bClosed = false;
    // Where the rows are, for the mouse, and which one comes first.
    Area ListArea;
    std::size_t FirstRow = 0;
};
