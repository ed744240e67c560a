#include "key_press.h"

#include <algorithm>
#include <cstddef>

#include "screen_text.h"

namespace {

constexpr char kEscape = '\x1B';
// No terminal sends one that is longer; what claims to be is cut there.
constexpr std::size_t kLongestSequence = 32;

struct NamedSequence {
    std::string_view Bytes;
    KeyCode Code;
};

// What stands behind Escape, as the terminals in use send it; some have two habits.
constexpr NamedSequence kSequences[] = {
    {"[C", KeyCode::Right},   {"OC", KeyCode::Right}, {"[D", KeyCode::Left}, {"OD", KeyCode::Left},
    {"[H", KeyCode::Home},    {"OH", KeyCode::Home},  {"[F", KeyCode::End},  {"OF", KeyCode::End},
    {"[1~", KeyCode::Home},   {"[7~", KeyCode::Home}, {"[4~", KeyCode::End}, {"[8~", KeyCode::End},
    {"[3~", KeyCode::Delete},
};

KeyCode CodeOfSequence(std::string_view BehindEscape) {
    for (const NamedSequence& sequence : kSequences) {
        if (sequence.Bytes == BehindEscape) {
            return sequence.Code;
        }
    }
    return KeyCode::Other;
}

KeyCode CodeOfControl(char Byte) {
    switch (Byte) {
    case '\r':
    case '\n':
        return KeyCode::Enter;
    case '\b':
    case '\x7F':
        return KeyCode::Backspace;
    case '\x15':
        return KeyCode::ClearLine;
    default:
        return KeyCode::Other;
    }
}

bool IsControl(char Byte) {
    return (Byte >= 0 && Byte < ' ') || Byte == '\x7F';
}

// The length of the key that Bytes, which starts with Escape, begins with; 0 when its end is not
// there yet. A sequence that another key breaks off ends before that key.
std::size_t EscapeSequenceLength(std::string_view Bytes) {
    if (Bytes.size() < 2) {
        return 0;
    }
    if (Bytes[1] == kEscape) {
        return 1;
    }
    if (Bytes[1] == 'O') {
        return Bytes.size() < 3 ? 0 : IsControl(Bytes[2]) ? 2 : 3;
    }
    if (Bytes[1] != '[') {
        return 2;
    }
    for (std::size_t i = 2; i < std::min(Bytes.size(), kLongestSequence); ++i) {
        if (Bytes[i] >= '@' && Bytes[i] <= '~') {
            return i + 1;
        }
        if (Bytes[i] < ' ' || Bytes[i] > '?') {
            return i;
        }
    }
    return Bytes.size() < kLongestSequence ? 0 : kLongestSequence;
}

} // namespace

void KeyDecoder::Feed(std::string_view Bytes) {
    Pending += Bytes;
}

bool KeyDecoder::IsAmbiguous() const {
    return Pending.starts_with(kEscape) ? EscapeSequenceLength(Pending) == 0
                                        : IsUnfinishedUtf8(Pending);
}

std::optional<KeyPress> KeyDecoder::Next() {
    return IsAmbiguous() ? std::nullopt : NextAfterSilence();
}

std::optional<KeyPress> KeyDecoder::NextAfterSilence() {
    if (Pending.empty()) {
        return std::nullopt;
    }
    if (Pending[0] == kEscape) {
        return TakeEscape();
    }
    if (IsControl(Pending[0])) {
        return KeyPress{CodeOfControl(TakeBytes(1)[0]), {}};
    }
    const std::size_t length = Utf8SequenceLength(Pending);
    return KeyPress{KeyCode::Text, TakeBytes(length == 0 ? 1 : length)};
}

KeyPress KeyDecoder::TakeEscape() {
    const std::size_t length = EscapeSequenceLength(Pending);
    // Without an end all that is there is one key, and Escape only when it stands alone: a broken
    // arrow key must not cancel anything.
    const std::string bytes = TakeBytes(length == 0 ? Pending.size() : length);
    if (bytes.size() == 1) {
        return KeyPress{KeyCode::Escape, {}};
    }
    return KeyPress{CodeOfSequence(std::string_view(bytes).substr(1)), {}};
}

std::string KeyDecoder::TakeBytes(std::size_t Count) {
    std::string bytes = Pending.substr(0, Count);
    Pending.erase(0, Count);
    return bytes;
}

void KeyDecoder::Clear() {
    Pending.clear();
}
