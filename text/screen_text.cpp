#include "screen_text.h"

#include <algorithm>
#include <clocale>
#include <cstring>
#include <cwchar>
#include <langinfo.h>

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

struct CodePointRange {
    wchar_t First;
    wchar_t Last;
};

// Invisible: terminals disagree about the columns of a text with one of these in it.
constexpr CodePointRange kDropped[] = {
    {0x00AD, 0x00AD}, {0x200B, 0x200F},   {0x2060, 0x2064},   {0xFE00, 0xFE0F},
    {0xFEFF, 0xFEFF}, {0x1F3FB, 0x1F3FF}, {0xE0000, 0xE01EF},
};

// They turn the direction of what follows, so that one name looks like another.
constexpr CodePointRange kDirectionControls[] = {
    {0x202A, 0x202E},
    {0x2066, 0x2069},
};

template <std::size_t kCount>
bool IsIn(const CodePointRange (&Ranges)[kCount], wchar_t CodePoint) {
    for (const CodePointRange& range : Ranges) {
        if (CodePoint >= range.First && CodePoint <= range.Last) {
            return true;
        }
    }
    return false;
}

unsigned char ByteAt(std::string_view Text, std::size_t Index) {
    return static_cast<unsigned char>(Text[Index]);
}

// The length of the sequence that starts with this byte; 0 for a byte that starts none.
std::size_t LengthByLead(unsigned char Lead) {
    if (Lead < 0x80) {
        return 1;
    }
    if (Lead < 0xC2 || Lead > 0xF4) {
        return 0;
    }
    return Lead < 0xE0 ? 2 : Lead < 0xF0 ? 3 : 4;
}

bool AreContinuations(std::string_view Bytes) {
    return std::all_of(Bytes.begin(), Bytes.end(), [](char Byte) { return (Byte & 0xC0) == 0x80; });
}

// The code point of the valid sequence of this length that Text starts with.
wchar_t Decode(std::string_view Text, std::size_t Length) {
    constexpr unsigned char kLeadMask[] = {0, 0x7F, 0x1F, 0x0F, 0x07};
    auto value = static_cast<wchar_t>(ByteAt(Text, 0) & kLeadMask[Length]);
    for (std::size_t i = 1; i < Length; ++i) {
        value = (value << 6) | (ByteAt(Text, i) & 0x3F);
    }
    return value;
}

// As wcwidth, which takes long, for the characters that most texts are made of.
int ColumnsOf(wchar_t CodePoint) {
    const bool bPlainAscii = CodePoint >= 0x20 && CodePoint < 0x7F;
    return bPlainAscii ? 1 : wcwidth(CodePoint);
}

void AppendClean(std::string& OutClean, std::string_view Sequence) {
    const wchar_t codePoint = Decode(Sequence, Sequence.size());
    if (codePoint < 0x20 || (codePoint >= 0x7F && codePoint <= 0x9F)) {
        OutClean += '?';
    } else if (IsIn(kDropped, codePoint)) {
        return;
    } else if (IsIn(kDirectionControls, codePoint) || ColumnsOf(codePoint) < 0) {
        OutClean += kReplacement;
    } else {
        OutClean += Sequence;
    }
}

// Marks and the like have no width and belong to the character before them.
int WidthOf(std::string_view Sequence) {
    const int width = ColumnsOf(Decode(Sequence, Sequence.size()));
    return width < 0 ? 1 : width;
}

int WidthAtStart(std::string_view Text) {
    return WidthOf(Text.substr(0, std::max<std::size_t>(Utf8SequenceLength(Text), 1)));
}

// The bytes of Text that fit into Width columns, at least one character of them.
std::size_t FittingLength(std::string_view Text, int Width) {
    std::size_t length = 0;
    int columns = 0;
    while (length < Text.size()) {
        const std::string_view rest = Text.substr(length);
        const std::size_t step = std::max<std::size_t>(Utf8SequenceLength(rest), 1);
        columns += WidthOf(rest.substr(0, step));
        if (columns > Width && length > 0) {
            break;
        }
        length += step;
    }
    return length;
}

std::string_view WithoutTrailingBlanks(std::string_view Text) {
    return Text.substr(0, Text.find_last_not_of(' ') + 1);
}

// Where to end a line of which FittingBytes have room: before a blank if there is one behind a
// word.
std::size_t WordBreak(std::string_view Text, std::size_t FittingBytes) {
    const std::size_t blank = Text.rfind(' ', FittingBytes);
    if (blank == std::string_view::npos || WithoutTrailingBlanks(Text.substr(0, blank)).empty()) {
        return FittingBytes;
    }
    return blank;
}

// The same, behind the first word where that has no room.
std::size_t WholeWordBreak(std::string_view Text, std::size_t FittingBytes) {
    const std::size_t end = WordBreak(Text, FittingBytes);
    return end == FittingBytes ? std::min(Text.find(' ', end), Text.size()) : end;
}

// FindBreak tells where to end a line that Text does not fit into.
template <typename BreakFunction>
std::vector<std::string> WrapAt(std::string_view Text, int Width, BreakFunction FindBreak) {
    std::vector<std::string> lines;
    std::size_t fitting = FittingLength(Text, Width);
    while (fitting < Text.size()) {
        const std::size_t end = FindBreak(Text, fitting);
        lines.emplace_back(WithoutTrailingBlanks(Text.substr(0, end)));
        Text.remove_prefix(end);
        Text.remove_prefix(std::min(Text.find_first_not_of(' '), Text.size()));
        fitting = FittingLength(Text, Width);
    }
    if (!Text.empty() || lines.empty()) {
        lines.emplace_back(Text);
    }
    return lines;
}

} // namespace

bool EnsureUtf8Locale() {
    const auto isUtf8 = [] { return std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0; };
    if (std::setlocale(LC_CTYPE, "") != nullptr && isUtf8()) {
        return true;
    }
    return std::setlocale(LC_CTYPE, "C.UTF-8") != nullptr;
}

bool IsUserLocaleUtf8() {
    const locale_t none = nullptr;
    const locale_t users = newlocale(LC_CTYPE_MASK, "", none);
    if (users == none) {
        return false;
    }
    const bool bUtf8 = std::strcmp(nl_langinfo_l(CODESET, users), "UTF-8") == 0;
    freelocale(users);
    return bUtf8;
}

std::size_t Utf8SequenceLength(std::string_view Text) {
    const std::size_t length = Text.empty() ? 0 : LengthByLead(ByteAt(Text, 0));
    if (length < 2) {
        return length;
    }
    if (Text.size() < length || !AreContinuations(Text.substr(1, length - 1))) {
        return 0;
    }
    const wchar_t codePoint = Decode(Text, length);
    const bool bOverlong =
        (length == 3 && codePoint < 0x800) || (length == 4 && codePoint < 0x10000);
    const bool bSurrogate = codePoint >= 0xD800 && codePoint <= 0xDFFF;
    return bOverlong || bSurrogate || codePoint > 0x10FFFF ? 0 : length;
}

bool IsUnfinishedUtf8(std::string_view Text) {
    return !Text.empty() && Text.size() < LengthByLead(ByteAt(Text, 0)) &&
           AreContinuations(Text.substr(1));
}

std::string CleanForScreen(std::string_view Text) {
    std::string clean;
    clean.reserve(Text.size());
    while (!Text.empty()) {
        const std::size_t length = Utf8SequenceLength(Text);
        if (length == 0) {
            clean += kReplacement;
            Text.remove_prefix(1);
            continue;
        }
        AppendClean(clean, Text.substr(0, length));
        Text.remove_prefix(length);
    }
    return clean;
}

int DisplayWidth(std::string_view CleanText) {
    int width = 0;
    while (!CleanText.empty()) {
        const std::size_t step = std::max<std::size_t>(Utf8SequenceLength(CleanText), 1);
        width += WidthOf(CleanText.substr(0, step));
        CleanText.remove_prefix(step);
    }
    return width;
}

std::vector<std::string> WrapAtColumns(std::string_view CleanText, int Width) {
    std::vector<std::string> lines;
    do {
        const std::size_t length = FittingLength(CleanText, Width);
        lines.emplace_back(CleanText.substr(0, length));
        CleanText.remove_prefix(length);
    } while (!CleanText.empty());
    return lines;
}

std::vector<std::string> WrapAtWords(std::string_view CleanText, int Width) {
    return WrapAt(CleanText, Width, WordBreak);
}

std::vector<std::string> WrapWholeWords(std::string_view CleanText, int Width) {
    return WrapAt(CleanText, Width, WholeWordBreak);
}

std::string ElideMiddle(std::string_view CleanText, int Width) {
    constexpr std::string_view kDots = "...";
    const int room = Width - static_cast<int>(kDots.size());
    int columns = DisplayWidth(CleanText);
    if (columns <= Width || room < 2) {
        return std::string(CleanText.substr(0, FittingLength(CleanText, Width)));
    }
    const std::string_view head = CleanText.substr(0, FittingLength(CleanText, room / 2));
    const int roomForTail = room - DisplayWidth(head);
    std::string_view tail = CleanText;
    // A mark without its character would go to the dots.
    while (columns > roomForTail || (!tail.empty() && WidthAtStart(tail) == 0)) {
        columns -= WidthAtStart(tail);
        tail.remove_prefix(std::max<std::size_t>(Utf8SequenceLength(tail), 1));
    }
    return std::string(head) + std::string(kDots) + std::string(tail);
}
