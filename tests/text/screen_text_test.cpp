#include "screen_text.h"

#include <clocale>
#include <cstdlib>
#include <langinfo.h>

#include <gtest/gtest.h>

namespace {

using Lines = std::vector<std::string>;

class ScreenText : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(EnsureUtf8Locale()); }
};

// What wcwidth says and what is shown depend on the character set.
class Utf8Locale : public testing::Test {
protected:
    void TearDown() override { unsetenv("LC_ALL"); }

    static void ExpectUtf8With(const char* Wanted) {
        std::setlocale(LC_CTYPE, "C");
        setenv("LC_ALL", Wanted, 1);
        EXPECT_TRUE(EnsureUtf8Locale());
        EXPECT_STREQ(nl_langinfo(CODESET), "UTF-8");
        EXPECT_EQ(CleanForScreen("日本"), "日本");
    }
};

} // namespace

TEST_F(ScreenText, StandsAsItIsWhenItIsPrintable) {
    EXPECT_EQ(CleanForScreen(""), "");
    EXPECT_EQ(CleanForScreen("/home/u/cover (2).jpg"), "/home/u/cover (2).jpg");
    EXPECT_EQ(CleanForScreen("étude 日本の音楽 한글 ｶﾅ"), "étude 日本の音楽 한글 ｶﾅ");
    EXPECT_EQ(CleanForScreen("e\u0301 a\u0301\u0323\u0308"), "e\u0301 a\u0301\u0323\u0308");
    EXPECT_EQ(CleanForScreen("😀"), "😀");
}

TEST_F(ScreenText, ShowsOneReplacementForEachInvalidByte) {
    EXPECT_EQ(CleanForScreen("bad\xFF\xFE.bin"), "bad\uFFFD\uFFFD.bin");
    EXPECT_EQ(CleanForScreen("\x80"), "\uFFFD");
    EXPECT_EQ(CleanForScreen("\xE6\x97"), "\uFFFD\uFFFD");
    EXPECT_EQ(CleanForScreen("\xE6\x97x"), "\uFFFD\uFFFDx");
    EXPECT_EQ(CleanForScreen("\xF0\x9F\x98"), "\uFFFD\uFFFD\uFFFD");
    // Longer than it need be, half of a pair, beyond the last character.
    EXPECT_EQ(CleanForScreen("\xC0\xAF"), "\uFFFD\uFFFD");
    EXPECT_EQ(CleanForScreen("\xE0\x80\xAF"), "\uFFFD\uFFFD\uFFFD");
    EXPECT_EQ(CleanForScreen("\xE0\x9F\xBF"), "\uFFFD\uFFFD\uFFFD");
    EXPECT_EQ(CleanForScreen("\xF0\x8F\xBF\xBD"), "\uFFFD\uFFFD\uFFFD\uFFFD");
    EXPECT_EQ(CleanForScreen("\xF0\x80\x80\xAF"), "\uFFFD\uFFFD\uFFFD\uFFFD");
    EXPECT_EQ(CleanForScreen("\xED\xA0\x80"), "\uFFFD\uFFFD\uFFFD");
    EXPECT_EQ(CleanForScreen("\xF4\x90\x80\x80"), "\uFFFD\uFFFD\uFFFD\uFFFD");
}

TEST_F(ScreenText, ShowsControlCharactersAsQuestionMarks) {
    EXPECT_EQ(CleanForScreen("new\nline\ttab"), "new?line?tab");
    EXPECT_EQ(CleanForScreen("\x1B[2J\a\x7F"), "?[2J??");
    EXPECT_EQ(CleanForScreen(std::string_view("a\0b", 3)), "a?b");
    // Control characters of eight bits: the last starts a sequence in some terminals.
    EXPECT_EQ(CleanForScreen("\u0080\u009F\u009B"
                             "2J"),
              "???2J");
}

TEST_F(ScreenText, DropsWhatIsInvisible) {
    EXPECT_EQ(CleanForScreen("a\u00ADb\u200Bc\u200Fd"), "abcd");
    EXPECT_EQ(CleanForScreen("a\u2060b\u2064c\uFEFFd"), "abcd");
    EXPECT_EQ(CleanForScreen("a\uFE00b\uFE0Fc\U000E0000d\U000E01EFe"), "abcde");
    EXPECT_EQ(CleanForScreen("\U0001F44B\U0001F3FB \U0001F44B\U0001F3FF"), "\U0001F44B \U0001F44B");
    EXPECT_EQ(CleanForScreen("\U0001F468\u200D\U0001F469\u200D\U0001F467"),
              "\U0001F468\U0001F469\U0001F467");
}

TEST_F(ScreenText, ReplacesDirectionControls) {
    EXPECT_EQ(CleanForScreen("gpj.\u202Eexe"), "gpj.\uFFFDexe");
    EXPECT_EQ(CleanForScreen("\u202A\u2066\u2069"), "\uFFFD\uFFFD\uFFFD");
}

TEST_F(ScreenText, ReplacesWhatHasNoWidth) {
    EXPECT_EQ(CleanForScreen("a\u2028b"), "a\uFFFDb");
    EXPECT_EQ(CleanForScreen("\uFFFF"), "\uFFFD");
    EXPECT_EQ(CleanForScreen("\U0010FFFF"), "\uFFFD");
}

TEST_F(ScreenText, IsMeasuredInColumns) {
    EXPECT_EQ(DisplayWidth(""), 0);
    EXPECT_EQ(DisplayWidth("abc"), 3);
    EXPECT_EQ(DisplayWidth("日本"), 4);
    EXPECT_EQ(DisplayWidth("ｶﾅ"), 2);
    EXPECT_EQ(DisplayWidth("한"), 2);
    EXPECT_EQ(DisplayWidth("e\u0301"), 1);
    EXPECT_EQ(DisplayWidth("\uFFFD"), 1);
    EXPECT_EQ(DisplayWidth("😀"), 2);
}

TEST_F(ScreenText, StaysOneLineWhenItFits) {
    EXPECT_EQ(WrapAtWords("", 5), Lines{""});
    EXPECT_EQ(WrapAtWords("a  b ", 5), Lines{"a  b "});
    EXPECT_EQ(WrapAtColumns("", 5), Lines{""});
    EXPECT_EQ(WrapAtColumns("ab/cd", 5), Lines{"ab/cd"});
}

TEST_F(ScreenText, BreaksAtBlanks) {
    EXPECT_EQ(WrapAtWords("one two three", 8), (Lines{"one two", "three"}));
    EXPECT_EQ(WrapAtWords("one two three", 7), (Lines{"one two", "three"}));
    EXPECT_EQ(WrapAtWords("one two three", 6), (Lines{"one", "two", "three"}));
    EXPECT_EQ(WrapAtWords("one   two", 5), (Lines{"one", "two"}));
    EXPECT_EQ(WrapAtWords("one two   ", 7), Lines{"one two"});
    EXPECT_EQ(WrapAtWords("  one two", 6), (Lines{"  one", "two"}));
}

TEST_F(ScreenText, BreaksWordsThatAreWiderThanALine) {
    EXPECT_EQ(WrapAtWords("abcdefgh ij", 3), (Lines{"abc", "def", "gh", "ij"}));
    EXPECT_EQ(WrapAtWords("  abcdef", 4), (Lines{"  ab", "cdef"}));
}

TEST_F(ScreenText, KeepsWordsWholeThatAreWiderThanALine) {
    EXPECT_EQ(WrapWholeWords("one two three", 8), (Lines{"one two", "three"}));
    EXPECT_EQ(WrapWholeWords("", 8), Lines{""});
    EXPECT_EQ(WrapWholeWords("see /a/long/path there", 8), (Lines{"see", "/a/long/path", "there"}));
    EXPECT_EQ(WrapWholeWords("/a/long/path", 8), Lines{"/a/long/path"});
    EXPECT_EQ(WrapWholeWords("/a/long/path  ", 8), Lines{"/a/long/path"});
    EXPECT_EQ(WrapWholeWords("12345678 0", 8), (Lines{"12345678", "0"}));
    EXPECT_EQ(WrapWholeWords("  /a/long/path", 8), Lines{"  /a/long/path"});
}

TEST_F(ScreenText, BreaksPathsWhereTheLineIsFull) {
    EXPECT_EQ(WrapAtColumns("/a b/cd", 3), (Lines{"/a ", "b/c", "d"}));
}

TEST_F(ScreenText, IsNeverBrokenInsideACharacter) {
    EXPECT_EQ(WrapAtColumns("日本語", 5), (Lines{"日本", "語"}));
    EXPECT_EQ(WrapAtColumns("abe\u0301x", 3), (Lines{"abe\u0301", "x"}));
    EXPECT_EQ(WrapAtColumns("日本", 1), (Lines{"日", "本"}));
}

TEST_F(ScreenText, IsShortenedInTheMiddle) {
    EXPECT_EQ(ElideMiddle("/home/u/cover.jpg", 17), "/home/u/cover.jpg");
    EXPECT_EQ(ElideMiddle("/home/u/cover.jpg", 16), "/home/...ver.jpg");
    EXPECT_EQ(ElideMiddle("/home/u/cover.jpg", 5), "/...g");
    EXPECT_EQ(ElideMiddle("/home/u/cover.jpg", 4), "/hom");
    EXPECT_EQ(ElideMiddle("/home/u/cover.jpg", -7), "/");
    EXPECT_EQ(ElideMiddle("", 7), "");
}

TEST_F(ScreenText, IsShortenedAtCharacters) {
    EXPECT_EQ(ElideMiddle("日本の音楽/étude", 12), "日本...étude");
    EXPECT_EQ(ElideMiddle("日本の音楽/étude", 11), "日本...tude");
    EXPECT_EQ(ElideMiddle("abcdefghe\u0301x", 7), "ab...e\u0301x");
    EXPECT_EQ(ElideMiddle("abcdefghe\u0301x", 6), "a...e\u0301x");
    EXPECT_EQ(ElideMiddle("abcdefghe\u0301x", 5), "a...x");
    EXPECT_EQ(ElideMiddle("a\u0301bcdefgh", 5), "a\u0301...h");
}

TEST(Utf8Sequence, IsUnfinishedWhileMoreBytesMayCompleteIt) {
    for (const char* start : {"\xC3", "\xE6", "\xE6\x97", "\xF0\x9F\x98", "\xF4"}) {
        EXPECT_TRUE(IsUnfinishedUtf8(start)) << start;
    }
    for (const char* other : {"", "a", "é", "日", "\x97", "\xC1", "\xF5", "\xE6x", "\xE6\xFF"}) {
        EXPECT_FALSE(IsUnfinishedUtf8(other)) << other;
    }
}

TEST_F(Utf8Locale, ReplacesTheLocaleOfPlainC) {
    ExpectUtf8With("C");
    ExpectUtf8With("POSIX");
}

TEST_F(Utf8Locale, ReplacesALocaleThatIsNotInstalled) {
    ExpectUtf8With("xx_XX.UTF-8");
}

TEST_F(Utf8Locale, KeepsOneThatIsUtf8) {
    ExpectUtf8With("C.UTF-8");
}

TEST_F(Utf8Locale, IsTheUsersOnlyWhenTheEnvironmentSaysSo) {
    for (const char* name : {"C", "POSIX", "xx_XX.UTF-8"}) {
        ExpectUtf8With(name);
        EXPECT_FALSE(IsUserLocaleUtf8()) << name;
    }
    ExpectUtf8With("C.UTF-8");
    EXPECT_TRUE(IsUserLocaleUtf8());
}
