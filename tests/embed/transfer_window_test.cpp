// The example with a window, used as a person does: its buttons are pressed, its texts are read.
//
//   transfer_window_test --picture FILE        draws its windows into a picture instead

#include "transfer_window.h"

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>

namespace {

namespace fs = std::filesystem;

void Write(const fs::path& File, const std::string& Text) {
    fs::create_directories(File.parent_path());
    std::ofstream(File) << Text;
}

std::string TextOf(const fs::path& File) {
    std::ifstream in(File);
    return {std::istreambuf_iterator<char>(in), {}};
}

bool Becomes(const char* What, const std::function<bool()>& Condition) {
    constexpr int kLimitMilliseconds = 30000;
    const bool bTrue = QTest::qWaitFor(Condition, kLimitMilliseconds);
    EXPECT_TRUE(bTrue) << "waited for: " << What;
    return bTrue;
}

// The visible windows of a class whose texts contain Text.
template <class Dialog>
std::vector<Dialog*> Open(const QString& Text = {}) {
    std::vector<Dialog*> found;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        auto* dialog = dynamic_cast<Dialog*>(widget);
        if (dialog != nullptr && dialog->isVisible() &&
            dialog->template findChild<QLabel*>()->text().contains(Text)) {
            found.push_back(dialog);
        }
    }
    return found;
}

QPushButton* ButtonOf(const QWidget* Dialog, const QString& Text) {
    for (QPushButton* button : Dialog->findChildren<QPushButton*>()) {
        if (button->text() == Text) {
            return button;
        }
    }
    return nullptr;
}

void Press(const QWidget* Dialog, const QString& Text) {
    QPushButton* button = ButtonOf(Dialog, Text);
    ASSERT_NE(button, nullptr) << Text.toStdString();
    QTest::mouseClick(button, Qt::LeftButton);
}

// A directory of the test's own, which is the working directory as long as it exists.
class Workplace {
public:
    Workplace() { fs::current_path(Directory.path().toStdString()); }
    ~Workplace() { fs::current_path("/"); }

private:
    QTemporaryDir Directory;
};

class TransferWindowExample : public testing::Test {
protected:
    TransferWindowExample() { Window->show(); }

    ConflictDialog* QuestionAbout(const QString& Path) const {
        if (!Becomes("the question", [&] { return Open<ConflictDialog>(Path).size() == 1; })) {
            return nullptr;
        }
        return Open<ConflictDialog>(Path).front();
    }

    // The columns before the last, whose text depends on the time.
    std::vector<std::string> ListedJobs() const {
        const auto* table = Window->findChild<QTableWidget*>();
        std::vector<std::string> rows;
        for (int row = 0; row < table->rowCount(); ++row) {
            QStringList texts;
            for (int column = 0; column + 1 < table->columnCount(); ++column) {
                texts += table->item(row, column)->text();
            }
            rows.push_back(texts.join(" | ").toStdString());
        }
        return rows;
    }

    Workplace Place;
    std::unique_ptr<TransferWindow> Window = std::make_unique<TransferWindow>();
};

TEST_F(TransferWindowExample, SaysHowATransferEndedAndCloses) {
    Write("from/new", "text");

    Window->Start({"from/new"}, "to", false);

    ASSERT_TRUE(Becomes("the end", [] {
        return Open<TransferDialog>("Stage: Completed | Copied 1 item(s).").size() == 1;
    }));
    EXPECT_EQ(TextOf("to/new"), "text");
    EXPECT_EQ(TextOf("from/new"), "text");
    Press(Open<TransferDialog>().front(), "Close");
    EXPECT_TRUE(Open<TransferDialog>().empty());
}

TEST_F(TransferWindowExample, AsksTheQuestionsOfTwoJobsAtOnce) {
    Write("one/tree/both", "new");
    Write("two/file", "new");
    Write("to/tree/only", "old");
    Write("to/file", "old");

    Window->Start({"one/tree"}, "to", false);
    Window->Start({"two/file"}, "to", true);

    const ConflictDialog* directory = QuestionAbout("to/tree");
    const ConflictDialog* file = QuestionAbout("to/file");
    ASSERT_TRUE(directory != nullptr && file != nullptr);
    EXPECT_EQ(directory->windowTitle(), "Directory exists");
    EXPECT_EQ(file->windowTitle(), "File exists");
    EXPECT_TRUE(Becomes("both in the list", [this] {
        return ListedJobs() ==
               std::vector<std::string>{"one | Copy | Waiting for conflict choice | 0%",
                                        "two | Move | Waiting for conflict choice | 0%"};
    }));
    Press(file, "Overwrite");
    Press(directory, "Merge");

    ASSERT_TRUE(Becomes("an empty list", [this] { return ListedJobs().empty(); }));
    EXPECT_EQ(TextOf("to/tree/both"), "new");
    EXPECT_EQ(TextOf("to/tree/only"), "old");
    EXPECT_EQ(TextOf("to/file"), "new");
    EXPECT_FALSE(fs::exists("two/file"));
    EXPECT_TRUE(fs::exists("one/tree/both"));
}

TEST_F(TransferWindowExample, RenamesToAFreeNameOnly) {
    Write("from/file", "new");
    Write("to/file", "old");
    Write("to/taken", "old too");

    Window->Start({"from/file"}, "to", false);
    const ConflictDialog* question = QuestionAbout("to/file");
    ASSERT_NE(question, nullptr);
    auto* newPath = question->findChild<QLineEdit*>();
    EXPECT_EQ(newPath->text(), "to/file.new");
    newPath->setText("to/taken");
    Press(question, "Rename");
    ASSERT_EQ(Open<ConflictDialog>("to/file").size(), 1U);
    newPath->setText("to/free");
    Press(question, "Rename");

    ASSERT_TRUE(Becomes("the end", [] { return !Open<TransferDialog>("Copied 1").empty(); }));
    EXPECT_EQ(TextOf("to/free"), "new");
    EXPECT_EQ(TextOf("to/file"), "old");
    EXPECT_EQ(TextOf("to/taken"), "old too");
}

TEST_F(TransferWindowExample, TakesItsQuestionBackOnEsc) {
    Write("from/file", "new");
    Write("to/file", "old");

    Window->Start({"from/file"}, "to", false);
    ASSERT_NE(QuestionAbout("to/file"), nullptr);
    QTest::keyClick(Open<TransferDialog>().front(), Qt::Key_Escape);

    ASSERT_TRUE(Becomes("the end", [] { return !Open<TransferDialog>("Copy canceled.").empty(); }));
    EXPECT_TRUE(Open<ConflictDialog>().empty());
    EXPECT_EQ(TextOf("to/file"), "old");
}

TEST_F(TransferWindowExample, WarnsOfADirectoryThatAFileWouldReplace) {
    Write("from/name", "new");
    Write("to/name/inside", "old");

    Window->Start({"from/name"}, "to", false);

    EXPECT_NE(QuestionAbout("This is a directory; overwriting removes all that is in it."),
              nullptr);
}

TEST_F(TransferWindowExample, EndsWithAQuestionOpen) {
    Write("from/file", "new");
    Write("to/file", "old");
    Window->Start({"from/file"}, "to", false);
    ASSERT_NE(QuestionAbout("to/file"), nullptr);

    Window.reset();

    EXPECT_EQ(TextOf("to/file"), "old");
}

// A window as on a desktop, below a bar with its title.
QImage Framed(QWidget& Widget) {
    constexpr int kBar = 26;
    const QPixmap content = Widget.grab();
    QImage framed(content.width() + 2, content.height() + kBar + 1, QImage::Format_RGB32);
    framed.fill(QColor(70, 86, 105));
    QPainter painter(&framed);
    painter.setPen(Qt::white);
    painter.drawText(framed.rect().adjusted(10, 0, 0, kBar - framed.height()), Qt::AlignVCenter,
                     Widget.windowTitle());
    painter.drawPixmap(1, kBar, content);
    return framed;
}

// The list and, below it in columns, one job's progress and both questions.
void DrawWindows(QWidget& List, const std::string& File) {
    constexpr int kGap = 14;
    const QImage list = Framed(List);
    const QImage progress = Framed(*Open<TransferDialog>("IMG_0002").front());
    const QImage file = Framed(*Open<ConflictDialog>("IMG_0002").front());
    const QImage directory = Framed(*Open<ConflictDialog>("2024").front());
    const int secondRow = 2 * kGap + list.height();
    const int secondColumn = 2 * kGap + progress.width();
    const int belowProgress = secondRow + progress.height() + kGap;
    QImage picture(secondColumn + file.width() + kGap,
                   std::max(belowProgress + directory.height(), secondRow + file.height()) + kGap,
                   QImage::Format_RGB32);
    picture.fill(QColor(205, 212, 220));
    QPainter painter(&picture);
    painter.drawImage(kGap, kGap, list);
    painter.drawImage(kGap, secondRow, progress);
    painter.drawImage(secondColumn, secondRow, file);
    painter.drawImage(kGap, belowProgress, directory);
    painter.end();
    EXPECT_TRUE(picture.save(QString::fromStdString(File)));
}

int TakePicture(const std::string& File) {
    const Workplace place;
    std::string data;
    data.resize(36'700'160, 'x');
    for (const char* path :
         {"Photos/IMG_0001.tif", "Photos/IMG_0002.tif", "Photos/IMG_0003.tif", "Trips/readme.txt",
          "Trips/2024/map.png", "Backup/2024/map.png", "Backup/IMG_0002.tif"}) {
        Write(path, data);
    }
    TransferWindow window;
    window.resize(1100, 170);
    window.show();
    window.Start({"Trips/readme.txt", "Trips/2024"}, "Backup", false);
    window.Start({"Photos/IMG_0001.tif", "Photos/IMG_0002.tif", "Photos/IMG_0003.tif"}, "Backup",
                 true);
    const auto bWaiting = [&window] {
        const QString status = "Waiting for conflict choice";
        return Open<ConflictDialog>().size() == 2 && Open<TransferDialog>(status).size() == 2 &&
               window.findChild<QTableWidget*>()->findItems(status, Qt::MatchExactly).size() == 2;
    };
    if (!Becomes("two questions", bWaiting)) {
        return 1;
    }
    DrawWindows(window, File);
    return testing::Test::HasFailure() ? 1 : 0;
}

} // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const QApplication application(argc, argv);
    if (argc == 3 && std::string_view(argv[1]) == "--picture") {
        return TakePicture(fs::absolute(argv[2]));
    }
    return RUN_ALL_TESTS();
}
