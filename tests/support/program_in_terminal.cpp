#include "program_in_terminal.h"

#include "become_program.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <system_error>

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utmp.h>

namespace {

using Clock = std::chrono::steady_clock;

[[noreturn]] void ThrowSystemError(const char* What) {
    throw std::system_error(errno, std::generic_category(), What);
}

void AppendUtf8(std::string& Text, std::uint32_t Character) {
    if (Character < 0x80) {
        Text += static_cast<char>(Character);
    } else if (Character < 0x800) {
        Text += static_cast<char>(0xC0 | (Character >> 6));
        Text += static_cast<char>(0x80 | (Character & 0x3F));
    } else if (Character < 0x10000) {
        Text += static_cast<char>(0xE0 | (Character >> 12));
        Text += static_cast<char>(0x80 | ((Character >> 6) & 0x3F));
        Text += static_cast<char>(0x80 | (Character & 0x3F));
    } else {
        Text += static_cast<char>(0xF0 | (Character >> 18));
        Text += static_cast<char>(0x80 | ((Character >> 12) & 0x3F));
        Text += static_cast<char>(0x80 | ((Character >> 6) & 0x3F));
        Text += static_cast<char>(0x80 | (Character & 0x3F));
    }
}

// The second column of a wide character holds no character of its own.
void AppendCell(std::string& Text, const VTermScreenCell& Cell) {
    constexpr std::uint32_t kSecondColumn = 0xFFFFFFFF;
    if (Cell.chars[0] == kSecondColumn) {
        return;
    }
    if (Cell.chars[0] == 0) {
        Text += ' ';
    }
    for (const std::uint32_t character : Cell.chars) {
        if (character == 0) {
            break;
        }
        AppendUtf8(Text, character);
    }
}

void TrimTrailing(std::string& Text, char Unwanted) {
    Text.erase(Text.find_last_not_of(Unwanted) + 1);
}

} // namespace

ProgramInTerminal::ProgramInTerminal(const Setting& Wanted)
    : Columns(Wanted.Columns), Rows(Wanted.Rows), Emulator(vterm_new(Wanted.Rows, Wanted.Columns)),
      Cells(vterm_obtain_screen(Emulator)) {
    vterm_set_utf8(Emulator, 1);
    // Newer emulators have more callbacks.
    static const VTermScreenCallbacks callbacks = [] {
        VTermScreenCallbacks wanted{};
        wanted.settermprop = KeepProperty;
        wanted.sb_pushline = KeepScrolledLine;
        return wanted;
    }();
    vterm_screen_set_callbacks(Cells, &callbacks, this);
    vterm_screen_enable_altscreen(Cells, 1);
    vterm_screen_reset(Cells, 1);

    try {
        StartProgram(Wanted);
    } catch (...) {
        HangUp();
        vterm_free(Emulator);
        throw;
    }
}

void ProgramInTerminal::StartProgram(const Setting& Wanted) {
    winsize size{};
    size.ws_col = static_cast<unsigned short>(Columns);
    size.ws_row = static_cast<unsigned short>(Rows);
    int inside = -1;
    if (openpty(&Terminal, &inside, nullptr, nullptr, &size) != 0) {
        ThrowSystemError("openpty");
    }
    fcntl(Terminal, F_SETFD, FD_CLOEXEC);
    // The program may change them as soon as it runs.
    AtFirst = Settings();
    Child = fork();
    if (Child == 0) {
        login_tty(inside);
        sigset_t none;
        sigemptyset(&none);
        sigprocmask(SIG_SETMASK, &none, nullptr);
        BecomeProgram(Wanted.Command, Wanted.WorkingDirectory, Wanted.Environment);
    }
    close(inside);
    if (Child < 0) {
        ThrowSystemError("fork");
    }
}

ProgramInTerminal::~ProgramInTerminal() {
    HangUp();
    if (!bExited) {
        kill(Child, SIGKILL);
        waitpid(Child, nullptr, 0);
    }
    vterm_free(Emulator);
}

void ProgramInTerminal::Type(std::string_view Keys) {
    while (!Keys.empty()) {
        const ssize_t written = write(Terminal, Keys.data(), Keys.size());
        if (written < 0) {
            ThrowSystemError("write to the terminal");
        }
        Keys.remove_prefix(static_cast<std::size_t>(written));
    }
}

void ProgramInTerminal::Resize(int NewColumns, int NewRows) {
    Columns = NewColumns;
    Rows = NewRows;
    vterm_set_size(Emulator, Rows, Columns);
    winsize size{};
    size.ws_col = static_cast<unsigned short>(Columns);
    size.ws_row = static_cast<unsigned short>(Rows);
    if (ioctl(Terminal, TIOCSWINSZ, &size) != 0) {
        ThrowSystemError("TIOCSWINSZ");
    }
}

void ProgramInTerminal::Signal(int Number) const {
    if (kill(Child, Number) != 0) {
        ThrowSystemError("kill");
    }
}

void ProgramInTerminal::HangUp() {
    if (Terminal >= 0) {
        close(Terminal);
        Terminal = -1;
    }
}

// False when nothing came in time or the terminal is closed.
bool ProgramInTerminal::ReadOnce(double Seconds) {
    const int milliseconds = static_cast<int>(Seconds * 1000.0);
    if (Terminal < 0) {
        poll(nullptr, 0, milliseconds);
        return false;
    }
    pollfd wanted{Terminal, POLLIN, 0};
    if (poll(&wanted, 1, milliseconds) <= 0) {
        return false;
    }
    std::array<char, 65536> buffer;
    const ssize_t count = read(Terminal, buffer.data(), buffer.size());
    if (count <= 0) {
        // The last process that had the terminal open has let go of it.
        poll(nullptr, 0, 5);
        return false;
    }
    Received.append(buffer.data(), static_cast<std::size_t>(count));
    vterm_input_write(Emulator, buffer.data(), static_cast<std::size_t>(count));
    // What the terminal itself answers, such as its cursor position.
    const std::size_t answered = vterm_output_read(Emulator, buffer.data(), buffer.size());
    Type(std::string_view(buffer.data(), answered));
    return true;
}

bool ProgramInTerminal::HasExited() {
    int status = 0;
    if (!bExited && waitpid(Child, &status, WNOHANG) == Child) {
        bExited = true;
        ExitStatus = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    }
    return bExited;
}

template <typename Condition>
bool ProgramInTerminal::WaitUntil(double Seconds, Condition Holds) {
    const auto end = Clock::now() + std::chrono::duration<double>(Seconds);
    while (!Holds()) {
        if (Clock::now() >= end) {
            return false;
        }
        ReadOnce(0.02);
    }
    return true;
}

testing::AssertionResult ProgramInTerminal::ShowsText(const std::string& Text, double Seconds) {
    if (WaitUntil(Seconds, [&] { return Screen().find(Text) != std::string::npos; })) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << "no \"" << Text << "\" on:\n" << HistoryAndScreen();
}

testing::AssertionResult ProgramInTerminal::ShowsNoText(const std::string& Text, double Seconds) {
    if (WaitUntil(Seconds, [&] { return Screen().find(Text) == std::string::npos; })) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << "still \"" << Text << "\" on:\n" << Screen();
}

testing::AssertionResult ProgramInTerminal::ShowsScreen(const std::string& Whole, double Seconds) {
    if (WaitUntil(Seconds, [&] { return Screen() == Whole; })) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << "not:\n" << Whole << "but:\n" << HistoryAndScreen();
}

testing::AssertionResult ProgramInTerminal::ShowsCursorAt(int Column, int Row, double Seconds) {
    VTermPos at{};
    const auto isThere = [&] {
        vterm_state_get_cursorpos(vterm_obtain_state(Emulator), &at);
        return bCursorVisible && at.col == Column && at.row == Row;
    };
    if (WaitUntil(Seconds, isThere)) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << (bCursorVisible ? "a" : "no") << " visible cursor at "
                                       << at.col << ", " << at.row << " of:\n"
                                       << Screen();
}

testing::AssertionResult ProgramInTerminal::ExitsWith(int Status, double Seconds) {
    if (!WaitUntil(Seconds, [&] { return HasExited(); })) {
        return testing::AssertionFailure() << "still running; screen:\n" << HistoryAndScreen();
    }
    while (ReadOnce(0.0)) {}
    if (ExitStatus == Status) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure()
           << "status " << ExitStatus << " instead of " << Status << "; screen:\n"
           << HistoryAndScreen();
}

void ProgramInTerminal::Watch(double Seconds) {
    WaitUntil(Seconds, [] { return false; });
}

std::string ProgramInTerminal::RowText(int Row) const {
    std::string text;
    for (int column = 0; column < Columns; ++column) {
        VTermScreenCell cell;
        vterm_screen_get_cell(Cells, {Row, column}, &cell);
        AppendCell(text, cell);
    }
    TrimTrailing(text, ' ');
    return text;
}

std::string ProgramInTerminal::Screen() const {
    std::string text;
    for (int row = 0; row < Rows; ++row) {
        text += RowText(row) + "\n";
    }
    TrimTrailing(text, '\n');
    return text.empty() ? text : text + "\n";
}

std::string ProgramInTerminal::HistoryAndScreen() const {
    return History + Screen();
}

bool ProgramInTerminal::DrawsAsAtFirst() const {
    const VTermState* state = vterm_obtain_state(Emulator);
    bool bEmphasis = false;
    for (const VTermAttr attribute : {VTERM_ATTR_BOLD, VTERM_ATTR_UNDERLINE, VTERM_ATTR_ITALIC,
                                      VTERM_ATTR_BLINK, VTERM_ATTR_REVERSE, VTERM_ATTR_STRIKE}) {
        VTermValue value{};
        vterm_state_get_penattr(state, attribute, &value);
        bEmphasis = bEmphasis || value.boolean != 0;
    }
    VTermValue text{};
    VTermValue ground{};
    vterm_state_get_penattr(state, VTERM_ATTR_FOREGROUND, &text);
    vterm_state_get_penattr(state, VTERM_ATTR_BACKGROUND, &ground);
    return !bEmphasis && VTERM_COLOR_IS_DEFAULT_FG(&text.color) &&
           VTERM_COLOR_IS_DEFAULT_BG(&ground.color) && bCursorVisible && !bAlternateScreen;
}

int ProgramInTerminal::KeepProperty(VTermProp Property, VTermValue* Value, void* Self) {
    auto& self = *static_cast<ProgramInTerminal*>(Self);
    if (Property == VTERM_PROP_CURSORVISIBLE) {
        self.bCursorVisible = Value->boolean != 0;
    } else if (Property == VTERM_PROP_ALTSCREEN) {
        self.bAlternateScreen = Value->boolean != 0;
    }
    return 1;
}

int ProgramInTerminal::KeepScrolledLine(int Columns, const VTermScreenCell* Cells, void* Self) {
    std::string line;
    for (int column = 0; column < Columns; ++column) {
        AppendCell(line, Cells[column]);
    }
    TrimTrailing(line, ' ');
    static_cast<ProgramInTerminal*>(Self)->History += line + "\n";
    return 1;
}

termios ProgramInTerminal::Settings() const {
    termios settings{};
    if (tcgetattr(Terminal, &settings) != 0) {
        ThrowSystemError("tcgetattr");
    }
    return settings;
}

bool SameTerminalSettings(const termios& First, const termios& Second) {
    return First.c_iflag == Second.c_iflag && First.c_oflag == Second.c_oflag &&
           First.c_cflag == Second.c_cflag && First.c_lflag == Second.c_lflag &&
           std::memcmp(First.c_cc, Second.c_cc, sizeof(First.c_cc)) == 0;
}
