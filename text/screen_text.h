// Text for the screen: made safe to show, measured in columns, cut into lines.
//
// What is cleaned is for the eye only. The real bytes of a name stay beside it and are what every
// operation uses.

#pragma once

#include <string>
#include <string_view>
#include <vector>

// Chooses the user's character set, or C.UTF-8 where that is no UTF-8 or not installed. Only
// LC_CTYPE changes. Call it once at the start; without it all but ASCII shows as U+FFFD.
// Errors: false when the machine has no UTF-8 locale at all.
bool EnsureUtf8Locale();

// Whether the user's own character set is UTF-8, whatever the program uses.
bool IsUserLocaleUtf8();

// Replaces or drops whatever could drive, reorder or misalign a terminal: each invalid byte, each
// embedding, override or isolate of a direction and whatever is not printable becomes U+FFFD, each
// control character `?`; soft hyphens, joiners, direction marks, invisible operators, variation
// selectors, skin tones and tags vanish. The result is valid UTF-8 on one line.
std::string CleanForScreen(std::string_view Text);

// The columns that clean text takes.
int DisplayWidth(std::string_view CleanText);

// Cuts clean text into lines of at most Width columns. The first breaks at blanks, which go away at
// the break, and inside words that are wider than a line; the second wherever the line is full, as
// suits a path. Text that fits is one line, unchanged; so is empty text.
std::vector<std::string> WrapAtWords(std::string_view CleanText, int Width);
std::vector<std::string> WrapAtColumns(std::string_view CleanText, int Width);

// As WrapAtWords for what is printed and stays: a word that is wider than a line stays whole, so
// that a path can be copied from the terminal, which goes on with it in its next row.
std::vector<std::string> WrapWholeWords(std::string_view CleanText, int Width);

// Shortens clean text to Width columns: "/home/u/Mu...a.flac". Without dots where they have no
// room, and never to less than its first character.
std::string ElideMiddle(std::string_view CleanText, int Width);

// The byte length of the valid UTF-8 sequence that Text starts with; 0 when it starts with a byte
// that belongs to none, or is empty.
std::size_t Utf8SequenceLength(std::string_view Text);

// Whether Text is the start of one sequence that more bytes may complete.
bool IsUnfinishedUtf8(std::string_view Text);
