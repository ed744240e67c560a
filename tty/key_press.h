// Keys, and how the bytes that a terminal sends become keys.

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

enum class KeyCode {
    // One character in UTF-8, or one byte that is no part of any; never a control character.
    Text,
    Enter,
    Escape,
    Backspace,
    Delete,
    Left,
    Right,
    Up,
    Down,
    PageUp,
    PageDown,
    Home,
    End,
    Insert,
    Tab,
    BackTab,
    // Ctrl-U.
    ClearLine,
    // F1 to F12; Alt and a digit count as one too, Alt-0 as F10.
    Function,
    // Ctrl and a letter that is none of the above.
    Control,
    // Alt and a character that is no digit.
    Alt,
    Mouse,
    // A key without a use here.
    Other,
};

// Where the mouse was when one of its buttons went down or its wheel was turned.
struct MousePress {
    enum class Button {
        Left,
        Middle,
        Right,
        WheelUp,
        WheelDown,
    };
    Button Pressed = Button::Left;
    // From 0.
    int Column = 0;
    int Row = 0;

    bool operator==(const MousePress&) const = default;
};

struct KeyPress {
    KeyCode Code = KeyCode::Other;
    // The bytes of a Text key, the small letter of a Control key, the character of an Alt key; else
    // empty.
    std::string Text = {};
    // Of a Function key.
    int Number = 0;
    // Of a Mouse key.
    MousePress Mouse = {};

    // Whether it is this one, without Alt or Ctrl.
    bool IsCharacter(char Character) const {
        return Code == KeyCode::Text && Text == std::string_view(&Character, 1);
    }

    bool operator==(const KeyPress&) const = default;
};

// Cuts a stream of bytes into keys. Escape is both a key and the start of longer sequences; only
// the time that passes after it tells which.
class KeyDecoder {
public:
    void Feed(std::string_view Bytes);

    // Whether the bytes so far might be the start of something longer. The caller waits a moment
    // for more and calls NextAfterSilence when nothing comes.
    bool IsAmbiguous() const;

    // Takes the next key. Errors: nothing when no whole key is there.
    std::optional<KeyPress> Next();
    // The same, but the bytes at hand are taken for all that there are.
    std::optional<KeyPress> NextAfterSilence();

    void Clear();

private:
    std::optional<KeyPress> TakeOne();
    std::optional<KeyPress> TakeEscape();
    std::string TakeBytes(std::size_t Count);

    std::string Pending;
};
