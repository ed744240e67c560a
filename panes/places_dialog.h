// Where to go: home, disks, drives.

#pragma once

#include "dialog.h"
#include "places.h"
#include "surface.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

class PlacesDialog : public Dialog {
public:
    explicit PlacesDialog(std::vector<NamedPlace> PlacesToShow);

    void Draw(Screen& On, TimePoint Now) override;
    // A digit goes to the place with that number, a letter to the next label that begins with it.
    void TakeKey(const KeyPress& Key, TimePoint Now) override;
    bool IsClosed() const override { return bClosed; }

    // Nothing as long as it is open, and when it was left without a choice.
    const std::optional<std::filesystem::path>& Chosen() const { return ChosenPlace; }

private:
    void DrawRow(Screen& On, int ScreenRow, std::size_t Place, int LabelColumns) const;
    void TakeText(const std::string& Text);
    void TakeClick(const MousePress& Mouse);
    void Choose(std::size_t Row);

    const std::vector<NamedPlace> Places;
    std::size_t Cursor = 0;
    std::size_t FirstRow = 0;
    // As drawn last.
    Area Rows;
    bool bClosed = false;
    std::optional<std::filesystem::path> ChosenPlace;
};
