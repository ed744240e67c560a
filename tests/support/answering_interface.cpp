#include "answering_interface.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <utility>

AnsweringInterface::AnsweringInterface(TarvaneTransferJob& JobToWatch,
                                       std::vector<PreparedAnswer> Prepared)
    : Job(JobToWatch), Answers(std::move(Prepared)), Thread([this] { Poll(); }) {}

AnsweringInterface::~AnsweringInterface() {
    Stop();
}

const std::vector<TarvaneTransferConflict>& AnsweringInterface::Stop() {
    bStop = true;
    if (Thread.joinable()) {
        Thread.join();
    }
    return Questions;
}

void AnsweringInterface::Poll() {
    while (!bStop) {
        TarvaneTransferConflict question;
        if (Job.GetPendingConflict(question)) {
            Answer(question);
        }
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
}

void AnsweringInterface::Answer(const TarvaneTransferConflict& Question) {
    Questions.push_back(Question);
    if (Questions.size() > Answers.size()) {
        ADD_FAILURE() << "no answer was prepared for " << Question.DestinationPath;
        Job.RequestCancel();
        return;
    }
    const PreparedAnswer& answer = Answers[Questions.size() - 1];
    if (answer.Before) {
        answer.Before();
    }
    EXPECT_TRUE(Job.ResolveConflict(answer.Action, answer.RenamePath));
}

TarvaneTransferUiSnapshot SeenByInterface(const TarvaneTransferJob& Job) {
    return std::async(std::launch::async, [&Job] { return Job.MakeUiSnapshot(); }).get();
}
