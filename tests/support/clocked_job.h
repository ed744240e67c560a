// A job whose steady clock goes on only when bytes are copied.

#pragma once

#include "counting_sound.h"
#include "fake_steady_clock.h"
#include "tarvanetransfer.h"

#include <chrono>
#include <cstdint>

#include <gtest/gtest.h>

class ClockedJob : public testing::Test {
protected:
    TarvaneTransferUiSnapshot Ui() const { return Job.MakeUiSnapshot(); }

    void AddAfter(std::chrono::nanoseconds Pause, std::uint64_t Bytes) {
        Clock.Advance(Pause);
        Job.AddBytesDone(Bytes);
    }

    FakeSteadyClock Clock;
    CountingSound Sound;
    TarvaneTransferJob Job{false, 1, ""};
};
