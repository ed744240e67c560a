// A process on a terminal of its own that takes keys and ends in some way.

#pragma once

#include <functional>
#include <sys/resource.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "forked_in_terminal.h"
#include "restore_on_end.h"
#include "terminal_modes.h"

// Enters key mode, waits for a key so that the test can look at the terminal, and ends by End.
inline ForkedInTerminal InKeyModeUntilKey(const std::function<void()>& End) {
    return ForkedInTerminal([&End](const ForkedInTerminal::Reporter& Report) {
        const rlimit noCore{0, 0};
        setrlimit(RLIMIT_CORE, &noCore);
        RestoreOnEveryEnd();
        Report(EnterKeyModes(STDIN_FILENO) ? "entered" : "refused");
        char key = 0;
        if (read(STDIN_FILENO, &key, 1) == 1) {
            End();
        }
        return 0;
    });
}

// A process that ends as End does in key mode gives the terminal its modes back. Returns how it
// ended.
inline int StatusOfRestoringEnd(const std::function<void()>& End) {
    ForkedInTerminal process = InKeyModeUntilKey(End);
    EXPECT_EQ(process.NextReport(), "entered");
    EXPECT_FALSE(process.HasModesAsAtFirst());
    process.Type("x");
    process.Output();
    const int status = process.WaitForEnd();
    EXPECT_TRUE(process.HasModesAsAtFirst());
    return status;
}
