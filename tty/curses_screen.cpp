#include "curses_screen.h"

#include <cstddef>
#include <cstdlib>
#include <cwchar>
#include <stdexcept>
#include <unistd.h>

#define NCURSES_NOMACROS 1
#include <curses.h>
// After curses.h, whose types it uses.
#include <term.h>

#include "cell_look.h"
#include "quoted.h"
#include "screen_text.h"
#include "signals_taken.h"
#include "terminal_modes.h"

namespace {

constexpr const char* kMouseOn = "\x1B[?1000h\x1B[?1006h";
constexpr const char* kMouseOff = "\x1B[?1006l\x1B[?1000l";

std::string Environment(const char* Name) {
    const char* value = std::getenv(Name);
    return value == nullptr ? "" : value;
}

bool HasCapability(const char* Name) {
    char* const value = tigetstr(Name);
    // The manual's value for what is no such capability.
    const char* const noString = reinterpret_cast<char*>(-1); // NOLINT(performance-no-int-to-ptr)
    return value != nullptr && value != noString;
}

// What the machine knows about terminals of a kind.
struct Description {
    bool bKnown = false;
    bool bCanPlace = false;
};

Description Describe(const std::string& Name) {
    Description description;
    int found = 0;
    setupterm(Name.c_str(), STDERR_FILENO, &found);
    if (found == 1) {
        description = {.bKnown = true, .bCanPlace = HasCapability("cup")};
        del_curterm(cur_term);
    }
    return description;
}

// The name in TERM, or that of the most widespread kind where the machine does not know it.
std::string KnownName() {
    constexpr const char* kWidespread = "xterm-256color";
    const std::string name = Environment("TERM");
    return Describe(name).bKnown ? name : kWidespread;
}

// Without the padding for terminals of old.
std::string PlainBytes(const char* Capability) {
    static std::string bytes;
    bytes.clear();
    if (Capability != nullptr) {
        tputs(Capability, 1, [](int Byte) {
            bytes += static_cast<char>(Byte);
            return Byte;
        });
    }
    return bytes;
}

// The same as endwin sends, for an end without time for it. A frame that was broken off may end
// within a sequence, which the first byte ends.
std::string BytesToLeave(int LastRow) {
    return std::string("\x18") + PlainBytes(exit_attribute_mode) +
           PlainBytes(tiparm(cursor_address, LastRow, 0)) + PlainBytes(exit_ca_mode) +
           PlainBytes(cursor_normal) + "\r";
}

// Colors that are the terminal's own need its help.
void DefinePair(short Pair, const CellLook& Look, bool bOwnColors) {
    const auto number = [bOwnColors](CellColor Color, short Instead) {
        const bool bOwn = Color == CellColor::Own;
        return bOwn && !bOwnColors ? Instead : static_cast<short>(Color);
    };
    init_pair(Pair, number(Look.Text, COLOR_WHITE), number(Look.Ground, COLOR_BLACK));
}

// The first pair cannot be chosen.
short PairOf(CellRole Role) {
    return static_cast<short>(static_cast<int>(Role) + 1);
}

void DefinePairs() {
    const bool bOwnColors = use_default_colors() == OK;
    constexpr auto kLast = CellRole::KeyLabel;
    for (int role = 0; role <= static_cast<int>(kLast); ++role) {
        const auto current = static_cast<CellRole>(role);
        DefinePair(PairOf(current), ColoredLook(current), bOwnColors);
    }
}

} // namespace

// One of ncurses's screens, of which there is one at a time.
struct CursesScreen::Curses {
    explicit Curses(std::FILE* Bytes) {
        const SignalsTaken noneForCurses;
        Handle = newterm(KnownName().c_str(), Bytes, Bytes);
        if (Handle == nullptr) {
            throw std::runtime_error("ncurses does not start");
        }
    }
    ~Curses() { delscreen(Handle); }
    Curses(const Curses&) = delete;
    Curses& operator=(const Curses&) = delete;

    SCREEN* Handle;
};

std::string CursesScreen::WhyNoFullScreen() {
    const std::string name = Environment("TERM");
    if (name.empty()) {
        return "the variable TERM does not say what kind of terminal this is";
    }
    const Description description = Describe(KnownName());
    if (!description.bKnown) {
        return "this machine does not know what its terminals can do";
    }
    return description.bCanPlace
               ? ""
               : "nothing can be drawn on a terminal of the kind " + Quoted(CleanForScreen(name));
}

CursesScreen::CursesScreen(Terminal& Output)
    : Target(Output), bUtf8(Output.IsUtf8()), Session(std::make_unique<Curses>(Bytes.Stream())) {
    bColors = Environment("NO_COLOR").empty() && start_color() == OK && COLORS >= 8;
    if (bColors) {
        DefinePairs();
    }
    bMouse = HasCapability("kmous");
    // Otherwise it looks for keys and stops drawing when there are any.
    typeahead(-1);
    endwin();
    Bytes.Take();
}

CursesScreen::~CursesScreen() {
    Leave();
}

void CursesScreen::Erase() {
    const TerminalSize size = Target.Size();
    if (size != Window) {
        Window = size;
        resize_term(size.Rows, size.Columns);
        bWhole = true;
    }
    erase();
    bCursor = false;
}

void CursesScreen::Put(int Column, int Row, std::string_view CleanText, CellRole Role) {
    if (Row < 0 || Row >= Window.Rows || Column < 0 || Column >= Window.Columns) {
        return;
    }
    const CellLook look = bColors ? ColoredLook(Role) : PlainLook(Role);
    const attr_t emphasis = (look.bBold ? WA_BOLD : WA_NORMAL) |
                            (look.bReverse ? WA_REVERSE : WA_NORMAL) |
                            (look.bUnderline ? WA_UNDERLINE : WA_NORMAL);
    attr_set(emphasis, bColors ? PairOf(Role) : short{0}, nullptr);
    mvaddwstr(Row, Column, Fitting(CleanText, Window.Columns - Column).c_str());
}

// What does not fit would go on in the next row.
std::wstring CursesScreen::Fitting(std::string_view CleanText, int Columns) const {
    std::wstring fitting;
    std::mbstate_t state{};
    while (!CleanText.empty()) {
        wchar_t character = 0;
        const std::size_t length =
            std::mbrtowc(&character, CleanText.data(), CleanText.size(), &state);
        if (length == 0 || length > CleanText.size()) {
            break;
        }
        CleanText.remove_prefix(length);
        const int width = wcwidth(character);
        Columns -= width;
        if (width < 0 || Columns < 0) {
            break;
        }
        const bool bShowable = bUtf8 || length == 1;
        if (!bShowable) {
            fitting.append(static_cast<std::size_t>(width), L'?');
        } else if (width > 0 || !fitting.empty()) {
            // A mark without a letter would go to whatever stands before it.
            fitting += character;
        }
    }
    return fitting;
}

void CursesScreen::ShowCursor(int Column, int Row) {
    bCursor = true;
    CursorColumn = Column;
    CursorRow = Row;
}

void CursesScreen::Flush() {
    if (!Target.CanDraw()) {
        return;
    }
    leaveok(stdscr, !bCursor);
    move(CursorRow, CursorColumn);
    clearok(curscr, bWhole);
    wnoutrefresh(stdscr);
    doupdate();
    // Not before the alternate screen is there: some terminals keep this for the usual one.
    curs_set(bCursor ? 1 : 0);
    std::string bytes = Bytes.Take();
    if (bWhole) {
        SendOnRestore((bMouse ? kMouseOff : "") + BytesToLeave(Window.Rows - 1));
    }
    if (!bShown && bMouse) {
        bytes += kMouseOn;
    }
    bShown = true;
    bWhole = false;
    Target.Write(bytes);
}

void CursesScreen::Leave() {
    if (bShown) {
        SendOnRestore({});
        Target.Write((bMouse ? kMouseOff : "") + EndFrames());
    }
}

void CursesScreen::Abandon() {
    if (bShown) {
        EndFrames();
    }
}

// Returns what gives the terminal back.
std::string CursesScreen::EndFrames() {
    endwin();
    bShown = false;
    bWhole = true;
    return Bytes.Take();
}
