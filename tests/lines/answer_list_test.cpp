// How answers and their keys are laid out.

#include "answer_list.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "screen_text.h"

namespace {

using Texts = std::vector<std::string>;

class AnswerList : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(EnsureUtf8Locale()); }

    static Texts TextsOf(const BlockPart& Part) {
        Texts texts;
        for (const ScreenLine& line : Part.Lines) {
            texts.push_back(line.Text);
        }
        return texts;
    }
    static Texts Keys(const BlockPart& Part) {
        Texts keys;
        for (const ScreenLine& line : Part.Lines) {
            for (const StyledRange& range : line.Styles) {
                EXPECT_EQ(range.Style, TextStyle::Key);
                keys.push_back(line.Text.substr(range.Begin, range.End - range.Begin));
            }
        }
        return keys;
    }

    static void ExpectFits(const BlockPart& Part, int Width) {
        for (const ScreenLine& line : Part.Lines) {
            EXPECT_LE(DisplayWidth(line.Text), Width) << line.Text;
            for (const StyledRange& range : line.Styles) {
                EXPECT_LE(range.End, line.Text.size());
            }
        }
    }

    const std::vector<ListedAnswer> kAnswers = {
        {"o", "overwrite"},
        {"s or Enter", "skip"},
        {"b", "compare: skip when equal, overwrite when not"},
        {"Esc", "cancel the transfer"},
    };
};

} // namespace

TEST_F(AnswerList, IsATableWhereThereIsRoom) {
    const BlockPart table = AnswerTable(5, kAnswers, 79);
    EXPECT_EQ(TextsOf(table), (Texts{
                                  "o           overwrite",
                                  "s or Enter  skip",
                                  "b           compare: skip when equal, overwrite when not",
                                  "Esc         cancel the transfer",
                              }));
    EXPECT_EQ(Keys(table), (Texts{"o", "s", "Enter", "b", "Esc"}));
    EXPECT_EQ(table.Importance, 5);
}

TEST_F(AnswerList, WrapsItsLabelsBelowEachOther) {
    EXPECT_EQ(TextsOf(AnswerTable(5, kAnswers, 39)), (Texts{
                                                         "o           overwrite",
                                                         "s or Enter  skip",
                                                         "b           compare: skip when equal,",
                                                         "            overwrite when not",
                                                         "Esc         cancel the transfer",
                                                     }));
}

TEST_F(AnswerList, IsNoTableInANarrowWindow) {
    EXPECT_NE(TextsOf(AnswerTable(5, kAnswers, 32)), TextsOf(FlowingAnswers(5, kAnswers, 32)));
    EXPECT_EQ(TextsOf(AnswerTable(5, kAnswers, 31)), TextsOf(FlowingAnswers(5, kAnswers, 31)));
}

TEST_F(AnswerList, FlowsWhereRowsAreFew) {
    const BlockPart flow = FlowingAnswers(5, kAnswers, 79);
    EXPECT_EQ(TextsOf(flow),
              (Texts{
                  "o overwrite  s or Enter skip  b compare: skip when equal, overwrite when not",
                  "Esc cancel the transfer",
              }));
    EXPECT_EQ(Keys(flow), (Texts{"o", "s", "Enter", "b", "Esc"}));
    EXPECT_EQ(flow.Importance, 5);
}

TEST_F(AnswerList, BreaksAnAnswerAtItsWordsOnly) {
    const BlockPart flow = FlowingAnswers(5, kAnswers, 39);
    EXPECT_EQ(TextsOf(flow), (Texts{
                                 "o overwrite  s or Enter skip",
                                 "b compare: skip when equal, overwrite",
                                 "  when not  Esc cancel the transfer",
                             }));
    EXPECT_EQ(Keys(flow), (Texts{"o", "s", "Enter", "b", "Esc"}));
}

TEST_F(AnswerList, LosesNothingOfALongWord) {
    EXPECT_EQ(TextsOf(FlowingAnswers(5, {{"o", "go"}, {"b", "abcdefghijklmnopq"}}, 16)),
              (Texts{"o go", "b", "  abcdefghijklmn", "  opq"}));
}

TEST_F(AnswerList, FitsEveryWidth) {
    for (int width = 1; width < 80; ++width) {
        ExpectFits(AnswerTable(5, kAnswers, width), width);
        ExpectFits(FlowingAnswers(5, kAnswers, width), width);
    }
}
