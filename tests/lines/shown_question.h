// What the question about a taken name looks like at a prompt.

#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "asked_conflict.h"
#include "question_layout.h"

inline constexpr TerminalSize kUsualSize{80, 24};

class ShownQuestion : public AskedConflict {
protected:
    static void ExpectToFitEveryWindow(const ConflictQuestion& Question) {
        for (int columns = 6; columns < 100; columns += 7) {
            for (int rows = 1; rows < 16; ++rows) {
                const QuestionScreen screen = LayOutQuestion(Question, {columns, rows});
                ASSERT_LE(screen.Lines.size(), static_cast<std::size_t>(rows));
                ASSERT_EQ(screen.Cursor.Line, screen.Lines.size() - 1);
                ASSERT_LT(DisplayWidth(screen.Cursor.Prefix), columns);
                for (const ScreenLine& line : screen.Lines) {
                    ASSERT_LT(DisplayWidth(line.Text), columns) << line.Text;
                }
            }
        }
    }

    static Texts Shown(const ConflictQuestion& Question, TerminalSize Size = kUsualSize) {
        Texts texts;
        for (const ScreenLine& line : LayOutQuestion(Question, Size).Lines) {
            texts.push_back(line.Text);
        }
        return texts;
    }

    static std::string ShownText(const ConflictQuestion& Question) {
        std::string all;
        for (const std::string& text : Shown(Question)) {
            all += text + "\n";
        }
        return all;
    }

    static Texts Warnings(const ConflictQuestion& Question) {
        Texts texts;
        for (const ScreenLine& line : LayOutQuestion(Question, kUsualSize).Lines) {
            if (!line.Styles.empty() && line.Styles[0].Style == TextStyle::Warning) {
                texts.push_back(line.Text);
            }
        }
        return texts;
    }
};
