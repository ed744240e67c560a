#include "key_press.h"

#include <string>
#include <string_view>
#include <utility>
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

Keys Function(int Number) {
    return {{.Code = KeyCode::Function, .Number = Number}};
}

Keys Pressed(MousePress::Button Button, int Column, int Row) {
    return {{.Code = KeyCode::Mouse, .Mouse = {Button, Column, Row}}};
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

TEST(KeyDecoder, KnowsTheKeysThatMove) {
    const std::vector<std::pair<const char*, KeyCode>> keys = {
        {"\x1B[A", KeyCode::Up},      {"\x1BOA", KeyCode::Up},      {"\x1B[B", KeyCode::Down},
        {"\x1BOB", KeyCode::Down},    {"\x1B[5~", KeyCode::PageUp}, {"\x1B[6~", KeyCode::PageDown},
        {"\x1B[2~", KeyCode::Insert}, {"\x1B[4h", KeyCode::Insert}, {"\x1B[P", KeyCode::Delete},
        {"\t", KeyCode::Tab},         {"\x1B[Z", KeyCode::BackTab}, {"\x1B\t", KeyCode::BackTab},
        {"\x1BOM", KeyCode::Enter},
    };
    for (const auto& [bytes, code] : keys) {
        EXPECT_EQ(KeysOf(bytes), Only(code)) << bytes + 1;
    }
}

TEST(KeyDecoder, KnowsTheFunctionKeysOfEachHabit) {
    const std::vector<std::vector<std::string>> habits = {
        {"OP", "OQ", "OR", "OS"},
        {"[[A", "[[B", "[[C", "[[D", "[[E"},
        {"[11~", "[12~", "[13~", "[14~", "[15~", "", "[17~", "[18~", "[19~", "[20~", "[21~", "",
         "[23~", "[24~"},
    };
    for (const std::vector<std::string>& habit : habits) {
        int number = 1;
        for (const std::string& bytes : habit) {
            if (!bytes.empty()) {
                EXPECT_EQ(KeysOf("\x1B" + bytes), Function(number++)) << bytes;
            }
        }
    }
}

TEST(KeyDecoder, TakesAltAndADigitForAFunctionKey) {
    EXPECT_EQ(KeysOf("\x1B"
                     "1"),
              Function(1));
    EXPECT_EQ(KeysOf("\x1B"
                     "9"),
              Function(9));
    EXPECT_EQ(KeysOf("\x1B"
                     "0"),
              Function(10));
}

TEST(KeyDecoder, KnowsAltAndACharacter) {
    for (const char* character : {"a", "S", "?", " ", "é", "日", "😀"}) {
        EXPECT_EQ(KeysOf("\x1B" + std::string(character)), (Keys{{KeyCode::Alt, character}}));
    }
    EXPECT_EQ(KeysOf("\x1B"
                     "ab"),
              (Keys{{KeyCode::Alt, "a"}, Text("b")}));
}

TEST(KeyDecoder, WaitsForTheRestOfACharacterWithAlt) {
    KeyDecoder decoder;
    decoder.Feed("\x1B\xE6\x97");
    EXPECT_TRUE(decoder.IsAmbiguous());
    EXPECT_EQ(decoder.Next(), std::nullopt);
    decoder.Feed("\xA5");
    EXPECT_EQ(decoder.Next(), (KeyPress{KeyCode::Alt, "日"}));
}

TEST(KeyDecoder, KnowsCtrlAndALetter) {
    for (const char letter : std::string("abcdefgklnopqrstvwxyz")) {
        const std::string byte(1, static_cast<char>(letter - 'a' + 1));
        EXPECT_EQ(KeysOf(byte), (Keys{{KeyCode::Control, std::string(1, letter)}})) << letter;
    }
}

TEST(KeyDecoder, KnowsThatOtherKeysAreNeitherTextNorEscape) {
    for (const char* other : {"\x1B[25~",  "\x1B[1;5D",    "\x1B[1;2P",    "\x1B[15;5~", "\x1BO5P",
                              "\x1BO1;5A", "\x1B[a",       "\x1BOa",       "\x1B[5^",    "\x1B[5@",
                              "\x1B[5$",   "\x1B[27;5;9~", "\x1B[97;5u",   "\x1B[I",     "\x1B\r",
                              "\x1B\x7F",  "\x1B\xFF",     "\x1B\xE6\x97", "\x1C",       "\x1F"}) {
        EXPECT_EQ(KeysOf(other), Only(KeyCode::Other)) << other;
    }
}

TEST(KeyDecoder, KnowsWhereTheMouseWasPressed) {
    using Button = MousePress::Button;
    EXPECT_EQ(KeysOf("\x1B[<0;1;1M"), Pressed(Button::Left, 0, 0));
    EXPECT_EQ(KeysOf("\x1B[<1;80;24M"), Pressed(Button::Middle, 79, 23));
    EXPECT_EQ(KeysOf("\x1B[<2;1000;300M"), Pressed(Button::Right, 999, 299));
    EXPECT_EQ(KeysOf("\x1B[<64;3;4M"), Pressed(Button::WheelUp, 2, 3));
    EXPECT_EQ(KeysOf("\x1B[<65;3;4M"), Pressed(Button::WheelDown, 2, 3));
    EXPECT_EQ(KeysOf("\x1B[<16;3;4M"), Pressed(Button::Left, 2, 3)) << "with Ctrl";
}

TEST(KeyDecoder, KnowsTheOldReportsOfTheMouse) {
    using Button = MousePress::Button;
    EXPECT_EQ(KeysOf("\x1B[M !!"), Pressed(Button::Left, 0, 0));
    EXPECT_EQ(KeysOf("\x1B[M\"\xFF\x30"), Pressed(Button::Right, 222, 15));
    EXPECT_EQ(KeysOf("\x1B[Ma#$"), Pressed(Button::WheelDown, 2, 3));
}

TEST(KeyDecoder, TakesOnlyPressesOfTheMouseForKeys) {
    for (const char* noKey :
         {"\x1B[<0;1;1m", "\x1B[<32;1;1M", "\x1B[<35;1;1M", "\x1B[<66;1;1M", "\x1B[<128;1;1M",
          "\x1B[<3;1;1M", "\x1B[<0;0;1M", "\x1B[<0;1;0M", "\x1B[<0;1M", "\x1B[<;1;1M", "\x1B[<M",
          "\x1B[<0;1;99999999999M", "\x1B[<0;1;1", "\x1B[M#!!", "\x1B[M  !", "\x1B[M !"}) {
        EXPECT_EQ(KeysOf(noKey), Keys()) << noKey + 1;
    }
    EXPECT_EQ(KeysOf("\x1B[<0;1;1m\x1B[M#!!x"), (Keys{Text("x")}));
}

TEST(KeyDecoder, WaitsForTheKeyBehindWhatIsNone) {
    KeyDecoder decoder;
    decoder.Feed("\x1B[<0;1;1m\x1B");
    EXPECT_EQ(decoder.Next(), std::nullopt);
    EXPECT_TRUE(decoder.IsAmbiguous());
    decoder.Feed("[A");
    EXPECT_EQ(decoder.Next(), Named(KeyCode::Up));
}

TEST(KeyDecoder, TakesALetterWithAltOrCtrlForNoAnswer) {
    EXPECT_TRUE(Text("y").IsCharacter('y'));
    EXPECT_FALSE(Text("yes").IsCharacter('y'));
    EXPECT_FALSE((KeyPress{KeyCode::Alt, "y"}).IsCharacter('y'));
    EXPECT_FALSE((KeyPress{KeyCode::Control, "y"}).IsCharacter('y'));
}

TEST(KeyDecoder, TakesALoneEscapeForTheKey) {
    EXPECT_EQ(KeysOf("\x1B"), Only(KeyCode::Escape));
    EXPECT_EQ(KeysOf("\x1B\x1B"), (Keys{Named(KeyCode::Escape), Named(KeyCode::Escape)}));
}

TEST(KeyDecoder, TakesABrokenSequenceForNoEscape) {
    EXPECT_EQ(KeysOf("\x1B["), Only(KeyCode::Other));
    EXPECT_EQ(KeysOf("\x1B[["), Only(KeyCode::Other));
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
