#include "key_press.h"

#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Keys = std::vector<KeyPress>;

KeyPress Text(const std::string& Bytes) {
    return {KeyCode::Text, Bytes};
}

KeyPress Named(KeyCode Code) {
    return {Code, {}};
}

// The keys that the bytes are when nothing comes after them.
Keys KeysOf(std::string_view Bytes) {
    KeyDecoder decoder;
    decoder.Feed(Bytes);
    Keys keys;
    while (const std::optional<KeyPress> key = decoder.NextAfterSilence()) {
        keys.push_back(*key);
    }
    return keys;
}

Keys Only(KeyCode Code) {
    return {Named(Code)};
}

} // namespace

TEST(KeyDecoder, CutsTextIntoCharacters) {
    EXPECT_EQ(KeysOf("aé日😀"), (Keys{Text("a"), Text("é"), Text("日"), Text("😀")}));
}

TEST(KeyDecoder, KeepsInvalidBytesOneByOne) {
    EXPECT_EQ(KeysOf("\xFF\xE6\x97x"), (Keys{Text("\xFF"), Text("\xE6"), Text("\x97"), Text("x")}));
}

TEST(KeyDecoder, KnowsTheKeysThatEdit) {
    EXPECT_EQ(KeysOf("\r"), Only(KeyCode::Enter));
    EXPECT_EQ(KeysOf("\n"), Only(KeyCode::Enter));
    EXPECT_EQ(KeysOf("\x7F"), Only(KeyCode::Backspace));
    EXPECT_EQ(KeysOf("\b"), Only(KeyCode::Backspace));
    EXPECT_EQ(KeysOf("\x15"), Only(KeyCode::ClearLine));
    EXPECT_EQ(KeysOf("\x1B[3~"), Only(KeyCode::Delete));
    for (const char* left : {"\x1B[D", "\x1BOD"}) {
        EXPECT_EQ(KeysOf(left), Only(KeyCode::Left)) << left + 1;
    }
    for (const char* right : {"\x1B[C", "\x1BOC"}) {
        EXPECT_EQ(KeysOf(right), Only(KeyCode::Right)) << right + 1;
    }
    for (const char* home : {"\x1B[H", "\x1BOH", "\x1B[1~", "\x1B[7~"}) {
        EXPECT_EQ(KeysOf(home), Only(KeyCode::Home)) << home + 1;
    }
    for (const char* end : {"\x1B[F", "\x1BOF", "\x1B[4~", "\x1B[8~"}) {
        EXPECT_EQ(KeysOf(end), Only(KeyCode::End)) << end + 1;
    }
}

TEST(KeyDecoder, KnowsThatOtherKeysAreNeitherTextNorEscape) {
    for (const char* other : {"\x1B[A", "\x1B[15~", "\x1B[1;5D", "\x1BOP", "\x1Bs", "\x01", "\t"}) {
        EXPECT_EQ(KeysOf(other), Only(KeyCode::Other)) << other;
    }
}

TEST(KeyDecoder, TakesALoneEscapeForTheKey) {
    EXPECT_EQ(KeysOf("\x1B"), Only(KeyCode::Escape));
    EXPECT_EQ(KeysOf("\x1B\x1B"), (Keys{Named(KeyCode::Escape), Named(KeyCode::Escape)}));
}

TEST(KeyDecoder, TakesABrokenSequenceForNoEscape) {
    EXPECT_EQ(KeysOf("\x1B["), Only(KeyCode::Other));
    EXPECT_EQ(KeysOf("\x1B[1;"), Only(KeyCode::Other));
    EXPECT_EQ(KeysOf("\x1B[1\rx"), (Keys{Named(KeyCode::Other), Named(KeyCode::Enter), Text("x")}));
    EXPECT_EQ(KeysOf("\x1B[\x1B"), (Keys{Named(KeyCode::Other), Named(KeyCode::Escape)}));
    EXPECT_EQ(KeysOf("\x1BO\r"), (Keys{Named(KeyCode::Other), Named(KeyCode::Enter)}));
}

TEST(KeyDecoder, WaitsForTheRestOfASequence) {
    KeyDecoder decoder;
    for (const char byte : std::string("\x1B[3")) {
        decoder.Feed({&byte, 1});
        EXPECT_TRUE(decoder.IsAmbiguous());
        EXPECT_EQ(decoder.Next(), std::nullopt);
    }
    decoder.Feed("~");
    EXPECT_FALSE(decoder.IsAmbiguous());
    EXPECT_EQ(decoder.Next(), Named(KeyCode::Delete));
}

TEST(KeyDecoder, WaitsForTheRestOfACharacter) {
    KeyDecoder decoder;
    decoder.Feed("\xE6\x97");
    EXPECT_TRUE(decoder.IsAmbiguous());
    EXPECT_EQ(decoder.Next(), std::nullopt);
    decoder.Feed("\xA5");
    EXPECT_EQ(decoder.Next(), Text("日"));
    EXPECT_FALSE(decoder.IsAmbiguous());
}

TEST(KeyDecoder, DoesNotWaitBehindABrokenCharacter) {
    KeyDecoder decoder;
    decoder.Feed("\xE6x");
    EXPECT_EQ(decoder.Next(), Text("\xE6"));
    EXPECT_EQ(decoder.Next(), Text("x"));
}

TEST(KeyDecoder, EndsASequenceThatNeverEnds) {
    KeyDecoder decoder;
    decoder.Feed("\x1B[" + std::string(100, '0'));
    EXPECT_EQ(decoder.Next(), Named(KeyCode::Other));
}

TEST(KeyDecoder, ForgetsWhatIsCleared) {
    KeyDecoder decoder;
    decoder.Feed("abc\x1B");
    decoder.Clear();
    EXPECT_EQ(decoder.NextAfterSilence(), std::nullopt);
}
