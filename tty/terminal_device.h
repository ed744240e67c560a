// The terminal that the program runs on: its size, its keys, what is written to it.
//
// Keys come from the controlling terminal and never from standard input, whose lines may belong to
// others, as in `while read`. What is shown goes to standard error, and to the controlling terminal
// where that is no terminal.

#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "key_press.h"
#include "output_queue.h"
#include "terminal.h"

// Whether a block of lines can be redrawn in place on the terminal that TERM names: not when it is
// missing, empty or "dumb".
bool TerminalCanRedraw();

// How text stands out from the rest.
enum class TextStyle {
    Plain,
    // A key that can be pressed.
    Key,
    // Something is wrong, or may be lost.
    Warning,
    // The done part of a bar.
    Bar,
};

// The bytes that turn a style on, and off again. They take no columns. Without colors, which
// NO_COLOR and the name in TERM can say, a warning is bold only and a bar plain; where lines cannot
// be redrawn everything is plain, and the bytes are none.
std::string StyleOn(TextStyle Style);
std::string StyleOff(TextStyle Style);

// Threads: one, the interface's. One object at a time.
class TerminalDevice {
public:
    // Finds the descriptors; changes nothing.
    TerminalDevice();
    // Leaves key mode.
    ~TerminalDevice();
    TerminalDevice(const TerminalDevice&) = delete;
    TerminalDevice& operator=(const TerminalDevice&) = delete;

    // Whether standard error is a terminal, one whose lines can be redrawn or not.
    bool IsOutputTerminal() const;

    // Whether somebody can be asked now: there is a controlling terminal, and the program owns it.
    bool CanAsk() const;

    // Whether the program owns the terminal now: not after Ctrl-Z and `bg`, and not with `&`.
    bool IsForeground() const;

    // Whether a frame reaches the screen now: there is one, in the foreground, output not stopped
    // by Ctrl-S, and nothing that was written before still on its way. Ask before every frame, and
    // skip the frame when it is false.
    bool CanDraw() const;

    // The window's size at this moment; 80x24 where it is not known.
    TerminalSize Size() const;

    // Delivers keys one by one and shows none of them; Ctrl-C, Ctrl-Z and Ctrl-\ stay signals. Call
    // it again when the program runs on after a stop. From the first call on the terminal gets its
    // modes back on every end of the program, a crash included.
    // Errors: false, with nothing changed, in the background or without keys.
    bool EnterKeyMode();

    // Back to the modes from before. Do it before the program stops itself and before the last
    // line.
    void LeaveKeyMode();

    // Readable when a key has come; for poll. -1, which poll ignores, outside key mode, in the
    // background and when the terminal has been closed.
    int KeyFd() const;

    // Takes the next key that has come; nothing when there is none. Call it until then. Waits only
    // after an Escape or a part of a character, 25 ms or the milliseconds that the environment's
    // ESCDELAY says, for the rest.
    std::optional<KeyPress> TakeKey();

    // Whether the terminal that is shown on has been closed.
    bool IsClosed() const;

    // Writes Bytes, later where the terminal does not take them now: it never waits. Errors: false
    // when the terminal is gone.
    bool Write(std::string_view Bytes);
    // For poll with POLLOUT: call WriteRest when it is ready. -1 when there is no rest.
    int RestFd() const { return Output.WaitingFd(); }
    void WriteRest() { Output.Pump(); }
    // Waits until everything is written, for as long as the user has stopped the output. For the
    // last line, when signals end the program by themselves.
    void FinishWriting() { Output.Finish(); }

private:
    bool ReadMore(std::chrono::milliseconds Timeout);

    // -1 when there is none.
    int ControllingFd;
    int ScreenFd;
    bool bKeyMode = false;
    std::chrono::milliseconds EscapeDelay;
    KeyDecoder Decoder;
    OutputQueue Output;
};
