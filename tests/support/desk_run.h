// A job whose taken names are dealt with at the desk, as in the real program but without a screen.

#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <string>
#include <thread>
#include <utility>

#include <gtest/gtest.h>

#include "conflict_desk.h"
#include "transfer_request.h"
#include "transfer_session.h"

struct DeskRun {
    std::string Message;
    // Of the desk that ended it, if it did.
    std::string Sentence;
    std::deque<AnsweredConflict> Answers;
};

// Who answers the questions.
using Person = std::function<ConflictAnswer(const TakenName& Name)>;

inline ConflictAnswer NobodyThere(const TakenName& Name) {
    ADD_FAILURE() << "somebody was asked about " << Name.Conflict.DestinationPath;
    return {};
}

inline DeskRun RunAtDesk(TarvaneTransferPlan Plan, const TransferRequest& Request,
                         const Person& Answers = NobodyThere) {
    TransferSession session(std::move(Plan));
    ConflictDesk desk(session.Job(), ConflictPolicy(RulesOf(Request)));
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!session.IsOver() && std::chrono::steady_clock::now() < limit) {
        desk.Attend();
        if (desk.OpenQuestion()) {
            desk.Answer(desk.OpenQuestion()->Id, Answers(desk.OpenQuestion()->Name));
        }
        std::this_thread::yield();
    }
    EXPECT_TRUE(session.IsOver()) << "waited for the end of the job";
    return {session.Job().MakeUiSnapshot().MessageText, desk.FailSentence(), desk.Answered()};
}
