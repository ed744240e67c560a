#include "key_press.h"

#include <algorithm>
#include <cstddef>

#include "mouse_report.h"
#include "screen_text.h"

namespace {

constexpr char kEscape = '\x1B';
// No terminal sends one that is longer; what claims to be is cut there.
constexpr std::size_t kLongestSequence = 32;

struct NamedSequence {
    std::string_view Bytes;
    KeyCode Code;
    int Number = 0;
};

// What stands behind Escape, as the terminals in use send it; some have two habits. With Shift, Alt
// or Ctrl most keys send something else, which is not listed and counts as no key of these.
constexpr NamedSequence kSequences[] = {
    {"[A", KeyCode::Up},
    {"OA", KeyCode::Up},
    {"[B", KeyCode::Down},
    {"OB", KeyCode::Down},
    {"[C", KeyCode::Right},
    {"OC", KeyCode::Right},
    {"[D", KeyCode::Left},
    {"OD", KeyCode::Left},
    {"[H", KeyCode::Home},
    {"OH", KeyCode::Home},
    {"[1~", KeyCode::Home},
    {"[7~", KeyCode::Home},
    {"[F", KeyCode::End},
    {"OF", KeyCode::End},
    {"[4~", KeyCode::End},
    {"[8~", KeyCode::End},
    {"[2~", KeyCode::Insert},
    {"[4h", KeyCode::Insert},
    {"[3~", KeyCode::Delete},
    {"[P", KeyCode::Delete},
    {"[5~", KeyCode::PageUp},
    {"[6~", KeyCode::PageDown},
    {"[Z", KeyCode::BackTab},
    {"\t", KeyCode::BackTab},
    {"OM", KeyCode::Enter},
    {"OP", KeyCode::Function, 1},
    {"OQ", KeyCode::Function, 2},
    {"OR", KeyCode::Function, 3},
    {"OS", KeyCode::Function, 4},
    {"[[A", KeyCode::Function, 1},
    {"[[B", KeyCode::Function, 2},
    {"[[C", KeyCode::Function, 3},
    {"[[D", KeyCode::Function, 4},
    {"[[E", KeyCode::Function, 5},
    {"[11~", KeyCode::Function, 1},
    {"[12~", KeyCode::Function, 2},
    {"[13~", KeyCode::Function, 3},
    {"[14~", KeyCode::Function, 4},
    {"[15~", KeyCode::Function, 5},
    {"[17~", KeyCode::Function, 6},
    {"[18~", KeyCode::Function, 7},
    {"[19~", KeyCode::Function, 8},
    {"[20~", KeyCode::Function, 9},
    {"[21~", KeyCode::Function, 10},
    {"[23~", KeyCode::Function, 11},
    {"[24~", KeyCode::Function, 12},
};

KeyPress FunctionKey(int Number) {
    return {.Code = KeyCode::Function, .Number = Number};
}

bool IsControl(char Byte) {
    return (Byte >= 0 && Byte < ' ') || Byte == '\x7F';
}

// Alt sends Escape before the character.
KeyPress KeyWithAlt(std::string_view Character) {
    if (Character.size() == 1 && Character[0] >= '0' && Character[0] <= '9') {
        constexpr int kForZero = 10;
        return FunctionKey(Character[0] == '0' ? kForZero : Character[0] - '0');
    }
    const bool bCharacter =
        Utf8SequenceLength(Character) == Character.size() && !IsControl(Character[0]);
    return bCharacter ? KeyPress{KeyCode::Alt, std::string(Character)} : KeyPress{};
}

KeyPress KeyOfSequence(std::string_view BehindEscape) {
    for (const NamedSequence& sequence : kSequences) {
        if (sequence.Bytes == BehindEscape) {
            return {.Code = sequence.Code, .Number = sequence.Number};
        }
    }
    const bool bSequence = BehindEscape[0] == '[' || BehindEscape[0] == 'O';
    return bSequence ? KeyPress{} : KeyWithAlt(BehindEscape);
}

KeyPress KeyOfControl(char Byte) {
    switch (Byte) {
    case '\r':
    case '\n':
        return {KeyCode::Enter};
    case '\t':
        return {KeyCode::Tab};
    case '\b':
    case '\x7F':
        return {KeyCode::Backspace};
    case '\x15':
        return {KeyCode::ClearLine};
    default:
        break;
    }
    constexpr char kLast = 'z' & 0x1F;
    const bool bLetter = Byte >= 1 && Byte <= kLast;
    return bLetter ? KeyPress{KeyCode::Control, std::string(1, static_cast<char>(Byte | 0x60))}
                   : KeyPress{};
}

// A character behind Escape, whole or not.
std::size_t AltSequenceLength(std::string_view Bytes) {
    const std::string_view character = Bytes.substr(1);
    if (IsUnfinishedUtf8(character)) {
        return 0;
    }
    return 1 + std::max<std::size_t>(Utf8SequenceLength(character), 1);
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
    if (Bytes[1] != '[' && Bytes[1] != 'O') {
        return AltSequenceLength(Bytes);
    }
    if (Bytes.substr(1).starts_with(kOldMouseReport)) {
        const std::size_t length = 1 + kOldMouseReportLength;
        return Bytes.size() < length ? 0 : length;
    }
    // The Linux console's first function keys have one more byte.
    const std::size_t from = Bytes.starts_with("\x1B[[") ? 3 : 2;
    for (std::size_t i = from; i < std::min(Bytes.size(), kLongestSequence); ++i) {
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
    while (!Pending.empty() && !IsAmbiguous()) {
        if (std::optional<KeyPress> key = TakeOne()) {
            return key;
        }
    }
    return std::nullopt;
}

std::optional<KeyPress> KeyDecoder::NextAfterSilence() {
    while (!Pending.empty()) {
        if (std::optional<KeyPress> key = TakeOne()) {
            return key;
        }
    }
    return std::nullopt;
}

// Nothing for what is no key, as the release of a mouse button. Requires: something is pending.
std::optional<KeyPress> KeyDecoder::TakeOne() {
    if (Pending[0] == kEscape) {
        return TakeEscape();
    }
    if (IsControl(Pending[0])) {
        return KeyOfControl(TakeBytes(1)[0]);
    }
    const std::size_t length = Utf8SequenceLength(Pending);
    return KeyPress{KeyCode::Text, TakeBytes(length == 0 ? 1 : length)};
}

std::optional<KeyPress> KeyDecoder::TakeEscape() {
    const std::size_t length = EscapeSequenceLength(Pending);
    // Without an end all that is there is one key, and Escape only when it stands alone: a broken
    // arrow key must not cancel anything.
    const std::string bytes = TakeBytes(length == 0 ? Pending.size() : length);
    const std::string_view behindEscape = std::string_view(bytes).substr(1);
    if (behindEscape.empty()) {
        return KeyPress{KeyCode::Escape};
    }
    return IsMouseReport(behindEscape) ? KeyOfMouseReport(behindEscape)
                                       : KeyOfSequence(behindEscape);
}

std::string KeyDecoder::TakeBytes(std::size_t Count) {
    std::string bytes = Pending.substr(0, Count);
    Pending.erase(0, Count);
    return bytes;
}

void KeyDecoder::Clear() {
    Pending.clear();
}
