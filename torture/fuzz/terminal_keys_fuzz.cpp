// The bytes that a terminal sends, cut into keys.

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "fuzz_target.h"
#include "key_press.h"
#include "screen_text.h"

namespace {

using Keys = std::vector<KeyPress>;

// As many bytes at once as PieceSize says.
Keys KeysOf(std::string_view Bytes, std::size_t PieceSize) {
    KeyDecoder decoder;
    Keys keys;
    while (!Bytes.empty()) {
        const std::string_view piece = Bytes.substr(0, PieceSize);
        decoder.Feed(piece);
        Bytes.remove_prefix(piece.size());
        while (const std::optional<KeyPress> key = decoder.Next()) {
            keys.push_back(*key);
        }
    }
    while (const std::optional<KeyPress> key = decoder.NextAfterSilence()) {
        keys.push_back(*key);
    }
    Expect(!decoder.IsAmbiguous(), "nothing is left after silence");
    return keys;
}

void Check(const KeyPress& Key) {
    const bool bCharacter = Key.Code == KeyCode::Text || Key.Code == KeyCode::Alt;
    Expect(bCharacter || Key.Code == KeyCode::Control || Key.Text.empty(),
           "only characters have a text");
    if (bCharacter) {
        Expect(Key.Text.size() == 1 || Utf8SequenceLength(Key.Text) == Key.Text.size(),
               "a key is one character or one byte");
        const auto first = static_cast<unsigned char>(Key.Text[0]);
        Expect(first >= 0x20 && first != 0x7F, "a character is no control character");
    }
    Expect(Key.Code != KeyCode::Function || (Key.Number >= 1 && Key.Number <= 12),
           "function keys are F1 to F12");
    Expect(Key.Mouse.Column >= 0 && Key.Mouse.Row >= 0, "the mouse is in a cell");
}

} // namespace

void RunInput(std::string_view Input) {
    const Keys keys = KeysOf(Input, Input.size());
    Expect(keys.size() <= Input.size(), "a key takes a byte at least");
    for (const KeyPress& key : keys) {
        Check(key);
    }
    Expect(KeysOf(Input, 1) == keys, "keys are the same in whatever pieces their bytes come");
    std::string typed;
    for (const KeyPress& key : keys) {
        typed += key.Text;
    }
    const bool bOnlyText =
        Input.find_first_of("\x1B\x7F") == std::string_view::npos &&
        std::ranges::none_of(Input, [](char Byte) { return Byte >= 0 && Byte < ' '; });
    Expect(!bOnlyText || typed == Input, "typed text is the bytes that came");
}
