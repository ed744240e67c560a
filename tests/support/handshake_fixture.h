// A worker that asks about a taken name, for tests of the handshake.
//
// The interface's part runs on the worker's thread while the worker Waits, so every order of steps
// is certain. Requires what scripted_wait.h requires.

#pragma once

#include "tarvanetransfer.h"

#include "counting_sound.h"
#include "job_access.h"
#include "scripted_wait.h"

#include <gtest/gtest.h>

class HandshakeFixture : public testing::Test {
protected:
    using Action = TarvaneTransferConflictAction;
    using Kind = TarvaneTransferConflictKind;
    using Stage = TarvaneTransferStage;

    static TarvaneTransferConflict ConflictOf(Kind OfKind) {
        TarvaneTransferConflict conflict;
        conflict.Kind = OfKind;
        conflict.SourcePath = "/from";
        conflict.DestinationPath = "/to";
        return conflict;
    }

    // Asks about a file while the interface takes Steps. What the outputs held before is never what
    // a conflict answers.
    bool Ask(std::initializer_list<ScriptedWait::Step> Steps) {
        Answer = Action::CompareByContent;
        RenamePath = "stale";
        ScriptedWait wait(Steps);
        const bool bAnswered = Job.WaitForConflict(ConflictOf(Kind::File), Answer, RenamePath);
        Waits = wait.Waits();
        return bAnswered;
    }

    // A step of the interface: gives an answer that must be accepted.
    ScriptedWait::Step Answers(Action Given, const std::string& Path = "") {
        return [this, Given, Path] { EXPECT_TRUE(Job.ResolveConflict(Given, Path)); };
    }

    bool IsPending() const {
        TarvaneTransferConflict ignored;
        return Job.GetPendingConflict(ignored);
    }

    std::string Status() const { return Job.MakeUiSnapshot().MessageText; }
    Stage CurrentStage() { return PrivateOf<JobMember::Stage>(Job); }

    CountingSound Sound;
    TarvaneTransferJob Job{false, 1, ""};
    Action Answer = Action::CompareByContent;
    std::string RenamePath;
    std::size_t Waits = 0;
};
