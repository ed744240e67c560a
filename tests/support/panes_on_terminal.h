// `tarvane` with its two panes on a terminal of its own, as a person works with it.

#pragma once

#include "on_terminal.h"

#include <string>
#include <utility>
#include <vector>

// The keys of the real program, and what its panes show. Names in it are plain ASCII.
class PanesOnTerminal : public OnTerminal {
protected:
    enum class Pane { Left, Right };

    static constexpr const char* kUp = "\x1b[A";
    static constexpr const char* kDown = "\x1b[B";
    static constexpr const char* kHome = "\x1b[H";
    static constexpr const char* kEnd = "\x1b[F";
    static constexpr const char* kInsert = "\x1b[2~";
    static constexpr const char* kDelete = "\x1b[3~";
    static constexpr const char* kPageUp = "\x1b[5~";
    static constexpr const char* kF1 = "\x1bOP";
    static constexpr const char* kF2 = "\x1bOQ";
    static constexpr const char* kF3 = "\x1bOR";
    static constexpr const char* kF4 = "\x1bOS";
    static constexpr const char* kF7 = "\x1b[18~";
    static constexpr const char* kF8 = "\x1b[19~";
    static constexpr const char* kBackspace = "\x7f";
    static constexpr const char* kCtrlU = "\x15";

    using Environment = std::vector<std::pair<std::string, std::string>>;

    // Starts the panes and waits until both have read their places.
    void StartPanes(std::vector<std::string> Arguments = {}, const Environment& Added = {}) {
        StartPanes(SettingOf(std::move(Arguments), Added));
    }
    void StartPanes(const ProgramInTerminal::Setting& Wanted) {
        Columns = Wanted.Columns;
        Rows = Wanted.Rows;
        Start(Wanted);
        ASSERT_TRUE(AreRead());
    }
    ProgramInTerminal::Setting SettingOf(std::vector<std::string> Arguments,
                                         const Environment& Added = {}) const {
        ProgramInTerminal::Setting setting = Setting(std::move(Arguments));
        setting.Environment.insert(
            setting.Environment.end(),
            {{"LC_ALL", "C.UTF-8"}, {"NO_COLOR", ""}, {"LINES", ""}, {"COLUMNS", ""}});
        setting.Environment.insert(setting.Environment.end(), Added.begin(), Added.end());
        return setting;
    }
    // A window in which no sentence is broken into lines.
    ProgramInTerminal::Setting WideSetting(std::vector<std::string> Arguments) const {
        ProgramInTerminal::Setting setting = SettingOf(std::move(Arguments));
        setting.Columns = 200;
        setting.Rows = 40;
        return setting;
    }

    void Resize(int NewColumns, int NewRows) {
        Columns = NewColumns;
        Rows = NewRows;
        Program->Resize(NewColumns, NewRows);
    }

    // The free space below a pane comes with what has been read.
    testing::AssertionResult AreRead() {
        return Holds("both panes are read", [this] {
            const std::string bottom = RowText(Rows - 3, 0, Columns);
            return bottom.find(" free ") != bottom.rfind(" free ");
        });
    }

    // The rows of a pane, each with its mark, its sign and its name: " /Live", "*  cover.jpg".
    testing::AssertionResult Shows(Pane Which, const std::vector<std::string>& Names) {
        const auto result = Holds("the pane shows it", [&] { return NamesIn(Which) == Names; });
        return result ? result
                      : testing::AssertionFailure() << "not:\n"
                                                    << testing::PrintToString(Names) << "\nbut:\n"
                                                    << Program->Screen();
    }
    // What stands below the list: the entry under the cursor.
    testing::AssertionResult IsOn(Pane Which, const std::string& Name) {
        return Holds("the cursor is on " + Name,
                     [&] { return (Footer(Which) + "  ").starts_with(Name + "  "); });
    }
    testing::AssertionResult IsAt(Pane Which, const std::string& Place) {
        return Holds("the pane is in " + Place, [&] {
            return RowText(0, ColumnOf(Which), WidthOf(Which)).find(" " + Place + " ") !=
                   std::string::npos;
        });
    }

    std::string PathOf(const std::string& Name) const { return (Root / Name).string(); }

    // Waits, reading what comes, until it does.
    template <typename Condition>
    testing::AssertionResult Holds(const std::string& What, Condition IsSo) {
        for (int i = 0; i < 1000; ++i) {
            if (IsSo()) {
                return testing::AssertionSuccess();
            }
            Program->Watch(0.02);
        }
        return testing::AssertionFailure() << "waited in vain until " << What << ":\n"
                                           << Program->Screen();
    }
    // What is drawn at once can arrive in pieces.
    testing::AssertionResult FallsSilent() {
        for (int i = 0; i < 20; ++i) {
            const std::size_t before = Program->Output().size();
            Program->Watch(0.5);
            if (Program->Output().size() == before) {
                return testing::AssertionSuccess();
            }
        }
        return testing::AssertionFailure() << "there is always something new to draw";
    }

    std::vector<std::string> NamesIn(Pane Which) const {
        std::vector<std::string> names;
        for (int row = 2; row < Rows - 5; ++row) {
            std::string text = RowText(row, ColumnOf(Which) + 1, WidthOf(Which) - 2);
            text.resize(std::min(text.size(), text.find("\xE2\x94\x82")));
            text.erase(text.find_last_not_of(' ') + 1);
            if (!text.empty()) {
                names.push_back(text);
            }
        }
        return names;
    }
    std::string Footer(Pane Which) const {
        return RowText(Rows - 4, ColumnOf(Which) + 2, WidthOf(Which) - 4);
    }

    int ColumnOf(Pane Which) const { return Which == Pane::Left ? 0 : Columns / 2; }
    int WidthOf(Pane Which) const {
        return Which == Pane::Left ? Columns / 2 : Columns - Columns / 2;
    }

    // Count characters of a row, none of them a wide one.
    std::string RowText(int Row, int Column, int Count) const {
        const std::string screen = Program->Screen();
        std::size_t at = 0;
        for (int i = 0; i < Row && at < screen.size(); ++i) {
            at = screen.find('\n', at) + 1;
        }
        std::string text;
        for (int column = -1; at < screen.size() && screen[at] != '\n'; ++at) {
            const bool bFirstByte = (static_cast<unsigned char>(screen[at]) & 0xC0) != 0x80;
            column += bFirstByte ? 1 : 0;
            if (column >= Column && column < Column + Count) {
                text += screen[at];
            }
        }
        return text;
    }

    int Columns = 80;
    int Rows = 24;
};
