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
    Home,
    End,
    // Ctrl-U.
    ClearLine,
    // A key without a use here: function keys, Alt and a letter, other control characters.
    Other,
};

struct KeyPress {
    KeyCode Code = KeyCode::Other;
    // The bytes of a Text key, else empty.
    std::string Text;

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
    KeyPress TakeEscape();
    std::string TakeBytes(std::size_t Count);

    std::string Pending;
};
