// Draws a screen through the real loop, terminal and ncurses, for tests that look at it from
// outside. Keys: "q" ends it, "e" shows a cursor, "a" and "s" crash it, "x" exits without a word,
// Ctrl-L draws anew.

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <iostream>
#include <memory>
#include <string>
#include <sys/resource.h>
#include <unistd.h>

#include "curses_screen.h"
#include "interface_loop.h"
#include "screen_text.h"
#include "system_terminal.h"

namespace {

class FullScreen : public LoopSurface {
public:
    explicit FullScreen(CursesScreen& ScreenToUse) : Shown(ScreenToUse) {}

    bool Pump() override { return true; }
    void Clear() override { Shown.Leave(); }
    void Abandon() override { Shown.Abandon(); }
    void PrintLine(const std::string&) override {}
    bool TakeFrameRequest() override { return false; }
    void Leave(int Signal) override {
        Shown.Leave();
        constexpr int kBySignal = 128;
        std::_Exit(kBySignal + Signal);
    }

private:
    CursesScreen& Shown;
};

class Picture : public Activity {
public:
    Picture(InterfaceLoop& LoopToUse, CursesScreen& ScreenToUse)
        : Loop(LoopToUse), Shown(ScreenToUse) {}

    void TakeKey(const KeyPress& Key) override {
        bOver = bOver || Key.IsCharacter('q');
        bCursor = bCursor || Key.IsCharacter('e');
        if (Key.IsCharacter('a')) {
            std::abort();
        }
        if (Key.IsCharacter('s')) {
            raise(SIGSEGV);
        }
        if (Key.IsCharacter('x')) {
            std::exit(3);
        }
        if (Key == KeyPress{KeyCode::Control, "l"}) {
            Shown.RedrawWhole();
        }
        if (Key.Code == KeyCode::Mouse) {
            Latest = "pressed at " + std::to_string(Key.Mouse.Column) + ", " +
                     std::to_string(Key.Mouse.Row);
        }
    }

    bool IsOver() override { return bOver || Loop.Requests().IsAsked(); }
    bool NeedsAnswer() const override { return true; }
    std::string StatusText() override { return {}; }

    void Draw() override {
        Shown.Erase();
        const TerminalSize size = Shown.Size();
        Shown.Put(0, 0, "window " + std::to_string(size.Columns) + "x" + std::to_string(size.Rows),
                  CellRole::Title);
        Shown.Put(0, 1, CleanForScreen("日本語|e\u0301|x|\xFF|"), CellRole::Directory);
        Shown.Put(0, 2, "under the cursor", CellRole::Cursor);
        Shown.Put(20, 2, "\u0301mark", CellRole::Plain);
        Shown.Put(0, 3, Latest, CellRole::Warning);
        Shown.Put(size.Columns - 3, 4, "日本", CellRole::Plain);
        Shown.Put(size.Columns, 5, "outside", CellRole::Plain);
        Shown.Put(-1, 5, "outside", CellRole::Plain);
        Shown.Put(size.Columns - 6, size.Rows - 1, "corner", CellRole::KeyLabel);
        Shown.Put(0, size.Rows, "outside", CellRole::Plain);
        if (bCursor) {
            Shown.ShowCursor(4, 6);
        }
        Shown.Flush();
    }

private:
    InterfaceLoop& Loop;
    CursesScreen& Shown;
    bool bOver = false;
    bool bCursor = false;
    std::string Latest;
};

// Nobody here has asked for any.
bool HasSignalHandlers() {
    struct sigaction stop {};
    struct sigaction resize {};
    sigaction(SIGTSTP, nullptr, &stop);
    sigaction(SIGWINCH, nullptr, &resize);
    return stop.sa_handler != SIG_DFL || resize.sa_handler != SIG_DFL;
}

int Run() {
    SystemTerminal terminal;
    // As libraries that print there must not get into the picture.
    dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDERR_FILENO);
    CursesScreen screen(terminal);
    FullScreen surface(screen);
    InterfaceLoop loop(terminal, surface);
    Picture picture(loop, screen);
    loop.Run(picture);
    screen.Leave();
    if (HasSignalHandlers()) {
        constexpr int kChangedSignals = 4;
        return kChangedSignals;
    }
    terminal.Close();
    terminal.FinishWriting();
    constexpr int kBySignal = 128;
    return loop.Requests().IsAsked() ? kBySignal + loop.Requests().Signal() : 0;
}

} // namespace

int main() {
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    EnsureUtf8Locale();
    if (const std::string why = CursesScreen::WhyNoFullScreen(); !why.empty()) {
        std::cerr << why << "\n";
        return 2;
    }
    return Run();
}
