// Dialogs on top of each other.

#include "dialog_stack.h"

#include "memory_screen.h"
#include "shown_dialog.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Words = std::vector<std::string>;

// Writes down what happens to it. Esc closes it.
class LoggingDialog : public Dialog {
public:
    LoggingDialog(std::string NameToLog, Words& LogToWrite)
        : Name(std::move(NameToLog)), Log(LogToWrite) {}
    ~LoggingDialog() override { Log.push_back(Name + " goes"); }

    void Draw(Screen& On, TimePoint) override { On.Put(0, 0, Name, CellRole::Dialog); }
    void TakeKey(const KeyPress& Key, TimePoint) override {
        Log.push_back(Name + " takes " + Key.Text);
        bClosed = Key.Code == KeyCode::Escape;
    }
    bool IsClosed() const override { return bClosed; }

    const std::string Name;
    bool bClosed = false;

private:
    Words& Log;
};

class DialogStackTest : public testing::Test {
protected:
    LoggingDialog& Open(const std::string& Name, std::function<void(LoggingDialog&)> Follow) {
        return Stack.Open<LoggingDialog>(std::make_unique<LoggingDialog>(Name, Log),
                                         std::move(Follow));
    }
    // Writes down that it is followed.
    LoggingDialog& Open(const std::string& Name) {
        return Open(Name,
                    [this](LoggingDialog& Shown) { Log.push_back(Shown.Name + " followed"); });
    }
    void Press(const std::string& Text) {
        Stack.TakeKey({.Code = KeyCode::Text, .Text = Text}, {});
    }
    Words TakeLog() { return std::exchange(Log, {}); }

    Words Log;
    DialogStack Stack;
};

TEST_F(DialogStackTest, GivesKeysToTheOneOnTopAndFollowsAll) {
    EXPECT_TRUE(Stack.IsEmpty());
    Press("x");
    EXPECT_EQ(TakeLog(), Words());
    Open("below");
    Open("top");
    Press("x");
    EXPECT_EQ(TakeLog(), (Words{"top takes x", "below followed", "top followed"}));
    Stack.Attend();
    EXPECT_EQ(TakeLog(), (Words{"below followed", "top followed"}));
}

TEST_F(DialogStackTest, FollowsWhatHasClosedOnceMoreAndTakesItAway) {
    Open("below");
    Open("top");
    Stack.TakeKey(Key(KeyCode::Escape), {});
    EXPECT_EQ(TakeLog(), (Words{"top takes ", "below followed", "top followed", "top goes"}));
    Press("x");
    EXPECT_EQ(TakeLog(), (Words{"below takes x", "below followed"}));
}

TEST_F(DialogStackTest, TakesAwayOneThatClosesBelowTheTop) {
    LoggingDialog& below = Open("below");
    Open("top");
    below.bClosed = true;
    Stack.Attend();
    EXPECT_EQ(TakeLog(), (Words{"below followed", "top followed", "below goes"}));
    Press("x");
    EXPECT_EQ(TakeLog(), (Words{"top takes x", "top followed"}));
}

TEST_F(DialogStackTest, NeedsNobodyToFollow) {
    LoggingDialog& alone = Open("alone", nullptr);
    Press("x");
    alone.bClosed = true;
    Stack.Attend();
    EXPECT_EQ(TakeLog(), (Words{"alone takes x", "alone goes"}));
    EXPECT_TRUE(Stack.IsEmpty());
}

// So many that layers in one block of memory would have to move, while the one that is followed
// still uses what it holds.
TEST_F(DialogStackTest, LetsOneThatIsFollowedOpenOthers) {
    const std::string inside = "what a follower holds lives as long as it is followed";
    Open("first", [this, inside](LoggingDialog& Shown) {
        for (int i = 0; i < 50 && !Shown.bClosed; ++i) {
            Open("more", [](LoggingDialog& More) { More.bClosed = true; });
        }
        Shown.bClosed = true;
        Log.push_back(inside);
    });
    Stack.Attend();
    const Words log = TakeLog();
    ASSERT_EQ(log.size(), 52U);
    EXPECT_EQ(log.front(), inside);
    EXPECT_EQ(log.back(), "more goes");
    EXPECT_TRUE(Stack.IsEmpty());
}

TEST_F(DialogStackTest, GivesTheNextKeyToWhatAKeyHasOpened) {
    Open("below", [this, bOpened = false](LoggingDialog&) mutable {
        if (!std::exchange(bOpened, true)) {
            Open("top", nullptr);
        }
    });
    Press("x");
    Press("y");
    EXPECT_EQ(TakeLog(), (Words{"below takes x", "top takes y"}));
}

// What it holds may be much, and it is followed many times a second.
TEST_F(DialogStackTest, DoesNotCopyWhatAFollowerHolds) {
    const auto held = std::make_shared<int>(0);
    Open("shown", [held, seen = 0](LoggingDialog&) mutable {
        *held = ++seen;
        EXPECT_EQ(held.use_count(), 2);
    });
    Stack.Attend();
    Stack.Attend();
    EXPECT_EQ(*held, 2);
}

TEST_F(DialogStackTest, DrawsTheTopOneLast) {
    MemoryScreen screen;
    Open("below");
    Open("top");
    Stack.Draw(screen, {});
    EXPECT_EQ(screen.Row(0), "topow");
}

} // namespace
