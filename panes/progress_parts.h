// What the progress dialog says at one moment, from top to bottom.

#pragma once

#include "progress_scene.h"
#include "screen.h"
#include "surface.h"

#include <functional>
#include <string>
#include <vector>

// Rows that belong together, and how much they matter where the window is too small for all.
struct ProgressPart {
    int Importance = 0;
    int Rows = 0;
    std::function<void(Screen&, const Area&)> Draw;
};

// The scene without its end lines and its foot, laid out for a width. The parts refer to the
// scene's rates.
std::vector<ProgressPart> PartsOf(const ProgressScene& Scene, int Columns, int GraphRows);

// What is right above the buttons and never left out: that a question waits, or what it is to run
// again. It may have no rows.
ProgressPart FootOf(const ProgressScene& Scene, int Columns);

int RowsOf(const std::vector<ProgressPart>& Parts);

// Leaves out the least important parts until the others fit.
std::vector<ProgressPart> FitToRows(std::vector<ProgressPart> Parts, int Rows);

// The end lines, clean and wrapped; none before the end.
std::vector<std::string> EndLinesOf(const ProgressScene& Scene, int Columns);

// Lines one below the other.
void DrawLines(Screen& On, const Area& Where, const std::vector<std::string>& CleanLines,
               CellRole Role);
