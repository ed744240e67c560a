// The terminal as a screen of cells.

#pragma once

#include "memory_file.h"
#include "screen.h"
#include "terminal.h"

#include <memory>
#include <string>

// Draws through ncurses, which knows what the terminal shows and how to change that with few bytes.
// It gets no terminal to write to: it would set modes that are ours and wait where Ctrl-S has
// stopped the output. Its bytes go to the Terminal, which never waits.
//
// Threads: one, the interface's. One object at a time.
class CursesScreen : public Screen {
public:
    // Why nothing can be drawn on the terminal that TERM names, as a sentence without a capital, a
    // period or a line end; empty when it can.
    static std::string WhyNoFullScreen();

    // Shows nothing before the first Flush. No signal handler of ncurses stays.
    // Requires: EnsureUtf8Locale was called, WhyNoFullScreen is empty, Output outlives the screen.
    // Errors: std::runtime_error where ncurses does not start, std::system_error without memory.
    explicit CursesScreen(Terminal& Output);
    // Leaves.
    ~CursesScreen() override;

    // The window is asked for its size each time. In another size the frame is sent whole.
    void Erase() override;
    TerminalSize Size() const override { return Window; }
    void Put(int Column, int Row, std::string_view CleanText, CellRole Role) override;
    void ShowCursor(int Column, int Row) override;
    // Sends nothing where the terminal takes nothing now; the next frame makes up for it. The first
    // one takes the alternate screen and the mouse. Requires: key mode, so that the terminal gets
    // both back however the program ends.
    void Flush() override;
    bool IsUtf8() const override { return bUtf8; }
    bool HasColors() const override { return bColors; }

    // Gives the terminal back as it was, before a stop, to another program, or at the end. The next
    // Flush takes it again and sends the frame whole.
    void Leave();
    // After a stop that nobody announced: what stands on the screen is not ours any more.
    void Abandon();
    // The next frame is sent whole, whatever others have written over the latest one.
    void RedrawWhole() { bWhole = true; }

private:
    struct Curses;

    std::string EndFrames();
    std::wstring Fitting(std::string_view CleanText, int Columns) const;

    Terminal& Target;
    const bool bUtf8;
    bool bColors = false;
    bool bMouse = false;
    bool bShown = false;
    bool bWhole = false;
    bool bCursor = false;
    int CursorColumn = 0;
    int CursorRow = 0;
    TerminalSize Window{0, 0};
    // What ncurses writes to.
    MemoryFile Bytes;
    std::unique_ptr<Curses> Session;
};
