// The interface's side of a job's questions, on a thread of its own as in the real program.

#pragma once

#include "tarvanetransfer.h"

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

struct PreparedAnswer {
    TarvaneTransferConflictAction Action = TarvaneTransferConflictAction::Cancel;
    std::string RenamePath;
    // Done before the answer is given, while the worker waits.
    std::function<void()> Before;
};

// Polls the job and gives the prepared answers in turn. A question beyond the last answer fails the
// test and cancels the job. The thread ends with the object at the latest.
class AnsweringInterface {
public:
    AnsweringInterface(TarvaneTransferJob& JobToWatch, std::vector<PreparedAnswer> Prepared);
    ~AnsweringInterface();
    AnsweringInterface(const AnsweringInterface&) = delete;
    AnsweringInterface& operator=(const AnsweringInterface&) = delete;

    // Stops polling. Returns every question that was asked.
    const std::vector<TarvaneTransferConflict>& Stop();

private:
    void Poll();
    void Answer(const TarvaneTransferConflict& Question);

    TarvaneTransferJob& Job;
    const std::vector<PreparedAnswer> Answers;
    std::vector<TarvaneTransferConflict> Questions;
    std::atomic<bool> bStop{false};
    std::thread Thread;
};

// What another thread than the caller's sees of the job now.
TarvaneTransferUiSnapshot SeenByInterface(const TarvaneTransferJob& Job);
