// A transfer at the moments that its progress dialog shows.

#pragma once

#include "progress_scene.h"

#include <string>
#include <utility>

inline CopyingScene CopyingMusic() {
    CopyingScene scene;
    TarvaneTransferUiSnapshot& snapshot = scene.Snapshot;
    snapshot.StageText = "Stage: Copying | Copying items";
    snapshot.PathText = "Current: /home/u/Music/Live/2024-02-11 Stadthalle (.../07 - Encore with "
                        "the whole orchestra.flac";
    snapshot.OverallText = "Overall 1.5 GB / 12.0 GB | Items 3 / 12";
    snapshot.IoText = "Rate 6.0 MB/s | Spent 04:16 | Remaining 29:52";
    snapshot.HintText = "Press Esc to cancel. Partial destination files may remain after a cancel.";
    snapshot.TotalItems = 12;
    snapshot.FileProgress01 = 0.62;
    snapshot.CurrentFileTotalBytes = 41037004;
    snapshot.CurrentFileDoneBytes = 25480396;
    snapshot.OverallProgress01 = 0.134;
    scene.Claims.Percent = 13;
    return scene;
}

inline CopyingScene CancelingMusic() {
    CopyingScene scene = CopyingMusic();
    scene.Snapshot.bCancelRequested = true;
    scene.Snapshot.StageText = "Stage: Copying | Cancel requested";
    scene.Snapshot.HintText =
        "Canceling transfer. Waiting for the current filesystem step to finish.";
    return scene;
}

inline CopyingScene FailedMusic() {
    CopyingScene scene = CopyingMusic();
    scene.Snapshot.bFinished = true;
    scene.Snapshot.StageText = "Stage: Failed | Failed while writing destination file.";
    scene.Snapshot.IoText += " | Failed while writing destination file.";
    return scene;
}

inline ProgressScene MusicScene(decltype(ProgressScene::Moment) Moment) {
    return {.Title = "Copy: /home/u/Music", .Moment = std::move(Moment)};
}
