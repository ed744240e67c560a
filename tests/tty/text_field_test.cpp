#include "text_field.h"

#include <initializer_list>
#include <string>

#include <gtest/gtest.h>

#include "screen_text.h"

namespace {

class TextFieldTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(EnsureUtf8Locale()); }

    static TextField After(const std::string& Initial, std::initializer_list<KeyCode> Codes) {
        TextField line(Initial);
        for (const KeyCode code : Codes) {
            line.Handle({code, {}});
        }
        return line;
    }

    static void Type(TextField& Line, const std::string& Character) {
        Line.Handle({KeyCode::Text, Character});
    }

    // The visible text with a bar where the cursor is.
    static std::string Seen(const TextField& Line, int Width) {
        const TextField::View view = Line.Visible(Width);
        EXPECT_EQ(view.Shown.substr(0, view.BeforeCursor.size()), view.BeforeCursor);
        return view.BeforeCursor + "|" + view.Shown.substr(view.BeforeCursor.size());
    }
};

} // namespace

TEST_F(TextFieldTest, StartsBehindTheText) {
    EXPECT_EQ(Seen(TextField("cover.jpg"), 20), "cover.jpg|");
}

TEST_F(TextFieldTest, InsertsAtTheCursor) {
    TextField line = After("ab", {KeyCode::Left});
    Type(line, "é");
    Type(line, "日");
    EXPECT_EQ(line.Text(), "aé日b");
    EXPECT_EQ(Seen(line, 20), "aé日|b");
}

TEST_F(TextFieldTest, MovesByWholeCharacters) {
    EXPECT_EQ(Seen(After("a日é", {KeyCode::Left}), 20), "a日|é");
    EXPECT_EQ(Seen(After("a日é", {KeyCode::Left, KeyCode::Left}), 20), "a|日é");
    EXPECT_EQ(Seen(After("a日é", {KeyCode::Home}), 20), "|a日é");
    EXPECT_EQ(Seen(After("a日é", {KeyCode::Home, KeyCode::Right, KeyCode::Right}), 20), "a日|é");
    EXPECT_EQ(Seen(After("a日é", {KeyCode::Home, KeyCode::End}), 20), "a日é|");
}

TEST_F(TextFieldTest, StopsAtBothEnds) {
    EXPECT_EQ(Seen(After("a", {KeyCode::Left, KeyCode::Left}), 20), "|a");
    EXPECT_EQ(Seen(After("a", {KeyCode::Right}), 20), "a|");
    EXPECT_EQ(After("a", {KeyCode::Delete}).Text(), "a");
    EXPECT_EQ(After("a", {KeyCode::Home, KeyCode::Backspace}).Text(), "a");
    EXPECT_EQ(After("", {KeyCode::Backspace, KeyCode::Delete, KeyCode::Left}).Text(), "");
}

TEST_F(TextFieldTest, ErasesWholeCharacters) {
    EXPECT_EQ(After("a日", {KeyCode::Backspace}).Text(), "a");
    EXPECT_EQ(After("日a", {KeyCode::Home, KeyCode::Delete}).Text(), "a");
}

TEST_F(TextFieldTest, TreatsALetterWithItsMarksAsOne) {
    EXPECT_EQ(After("ae\u0301\u0323", {KeyCode::Backspace}).Text(), "a");
    EXPECT_EQ(After("e\u0301a", {KeyCode::Home, KeyCode::Delete}).Text(), "a");
    // What is not shown goes with what it follows.
    EXPECT_EQ(After("a\u200Db", {KeyCode::Left, KeyCode::Left}).Visible(20).BeforeCursor, "");
}

TEST_F(TextFieldTest, ClearsTheLine) {
    EXPECT_EQ(After("cover.jpg", {KeyCode::Left, KeyCode::ClearLine}).Text(), "");
}

TEST_F(TextFieldTest, IgnoresOtherKeys) {
    TextField line = After("ab", {KeyCode::Enter, KeyCode::Escape, KeyCode::Up, KeyCode::Tab,
                                  KeyCode::Function, KeyCode::Mouse, KeyCode::Other});
    line.Handle({KeyCode::Alt, "x"});
    line.Handle({KeyCode::Control, "x"});
    EXPECT_EQ(line.Text(), "ab");
    EXPECT_EQ(Seen(line, 20), "ab|");
}

TEST_F(TextFieldTest, KeepsInvalidBytes) {
    TextField line = After("a\xFF\xFE\nb", {KeyCode::Left, KeyCode::Left});
    Type(line, "x");
    EXPECT_EQ(line.Text(), "a\xFF\xFEx\nb");
    EXPECT_EQ(Seen(line, 20), "a\uFFFD\uFFFDx|?b");
    line.Handle({KeyCode::Backspace, {}});
    line.Handle({KeyCode::Backspace, {}});
    EXPECT_EQ(line.Text(), "a\xFF\nb");
}

TEST_F(TextFieldTest, ShowsThePieceAroundTheCursor) {
    EXPECT_EQ(Seen(TextField("abcdefghi"), 10), "abcdefghi|");
    EXPECT_EQ(Seen(TextField("abcdefghij"), 10), "fghij|");
    EXPECT_EQ(Seen(After("abcdefghijkl", {KeyCode::Home}), 10), "|abcdefghij");
}

TEST_F(TextFieldTest, CopesWithAWindowWithoutRoom) {
    EXPECT_EQ(Seen(TextField("\u200D"), 0), "|");
    EXPECT_EQ(Seen(TextField("ab"), 0), "|");
}

TEST_F(TextFieldTest, ShowsNothingWiderThanItsWidth) {
    const std::string name = "日本語e\u0301の\xFF\nabc音楽\u200D.flac";
    for (int width = -1; width < 24; ++width) {
        TextField line(name);
        for (std::size_t i = 0; i <= name.size(); ++i) {
            const TextField::View view = line.Visible(width);
            const int limit = std::max(width, 1);
            EXPECT_LE(DisplayWidth(view.Shown), limit);
            EXPECT_LT(DisplayWidth(view.BeforeCursor), limit);
            line.Handle({KeyCode::Left, {}});
        }
        EXPECT_EQ(line.Visible(width).BeforeCursor, "");
    }
}
