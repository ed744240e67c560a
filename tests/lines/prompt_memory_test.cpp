// A prompt that gets no memory.

#include "prompt.h"

#include <cstddef>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "failing_allocation.h"
#include "scripted_terminal.h"

namespace {

// Takes what is written without any memory of its own, like a real one.
class TerminalWithRoom : public ScriptedTerminal {
public:
    TerminalWithRoom() { Held.reserve(16384); }

    void Write(std::string_view Text) override { Held += Text; }

    std::string WrittenScreen() {
        ScriptedTerminal::Write(Held);
        return Screen();
    }

private:
    std::string Held;
};

constexpr const char* kLine = "a line that does not fit into a string without memory of its own";

std::vector<ScreenLine> BlockOf(std::size_t Rows) {
    return std::vector<ScreenLine>(Rows, ScreenLine{"a row of the block of these many rows"});
}

// Whether memory ran out before all was written.
bool PrintsAndDraws(Prompt& Shown, const Terminal& Screen, std::size_t Allowed) {
    const std::string line = kLine;
    const std::vector<ScreenLine> larger = BlockOf(5);
    const TerminalSize size = Screen.Size();
    const BlockCursor cursor{3, std::string(100, ' ')};
    const FailingAllocation limit(Allowed);
    try {
        Shown.PrintLine(line);
        Shown.Show(larger, size, cursor);
    } catch (const std::bad_alloc&) {
        EXPECT_TRUE(limit.Failed());
    }
    return limit.Failed();
}

} // namespace

TEST(PromptWithoutMemory, LeavesNothingOfItsBlock) {
    constexpr std::size_t kMostAllocations = 200;
    std::size_t allowed = 0;
    for (bool bFailed = true; bFailed && allowed < kMostAllocations; ++allowed) {
        TerminalWithRoom screen;
        {
            Prompt shown(screen, [](const RunOutcome&) { return 0; });
            shown.Show(BlockOf(3), screen.Size(), BlockCursor{2, "a"});
            bFailed = PrintsAndDraws(shown, screen, allowed);
        }
        const std::string left = screen.WrittenScreen();
        EXPECT_TRUE(left.empty() || left == kLine + std::string("\n"))
            << "after " << allowed << " allocations:\n"
            << left;
    }
    EXPECT_GT(allowed, 8U);
    EXPECT_LT(allowed, kMostAllocations);
}
