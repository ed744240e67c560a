#include "transfer_window.h"

#include <exception>
#include <string>
#include <utility>

#include <QFile>
#include <QFileDialog>
#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace {

namespace fs = std::filesystem;
using Act = TarvaneTransferConflictAction;

struct Choice {
    const char* Text;
    Act Answer;
};

// The answers that suit each kind; the engine fails the job for any other.
const std::vector<Choice> kDirectoryChoices = {
    {"Merge", Act::Merge},      {"Merge all", Act::MergeAll}, {"Skip", Act::Skip},
    {"Skip all", Act::SkipAll}, {"Cancel", Act::Cancel},
};
const std::vector<Choice> kFileChoices = {
    {"Overwrite", Act::Overwrite},
    {"Overwrite all", Act::OverwriteAll},
    {"Overwrite all older", Act::OverwriteAllOlder},
    {"Overwrite if different", Act::CompareByContent},
    {"Rename", Act::Rename},
    {"Skip", Act::Skip},
    {"Skip all", Act::SkipAll},
    {"Cancel", Act::Cancel},
};

// Names are shown as they are: one that looks like markup is none.
QLabel* AddLabel(QLayout* Layout, const QString& Text = {}) {
    auto* label = new QLabel(Text);
    label->setTextFormat(Qt::PlainText);
    Layout->addWidget(label);
    return label;
}

QString Side(const std::string& Path, bool bHasSize, std::uint64_t Size, const std::string& Date) {
    const QString size = bHasSize ? QString::number(Size) + " bytes, " : QString();
    return QFile::decodeName(Path.c_str()) + "\n" + size + QString::fromStdString(Date);
}

// What the answer that goes on would do away with, beyond a file of that name.
QString Loss(const TarvaneTransferConflict& Conflict) {
    const bool bDirectory = Conflict.Kind == TarvaneTransferConflictKind::Directory;
    if (bDirectory && !Conflict.bDestinationDirectory) {
        return "\n\nThis is no directory; merging replaces it.";
    }
    if (!bDirectory && Conflict.bDestinationDirectory) {
        return "\n\nThis is a directory; overwriting removes all that is in it.";
    }
    return {};
}

void Run(const std::shared_ptr<TarvaneTransferJob>& Job, TarvaneTransferPlan Plan) {
    try {
        RunTarvaneTransferJob(Job, std::move(Plan));
    } catch (const std::exception& error) {
        if (!Job->IsFinished()) {
            Job->FinishFailure(error.what());
        }
    }
}

} // namespace

ConflictDialog::ConflictDialog(std::shared_ptr<TarvaneTransferJob> AskingJob,
                               const TarvaneTransferConflict& Conflict, QWidget* Parent)
    : QDialog(Parent), Job(std::move(AskingJob)) {
    const bool bDirectory = Conflict.Kind == TarvaneTransferConflictKind::Directory;
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(bDirectory ? "Directory exists" : "File exists");
    auto* layout = new QVBoxLayout(this);
    AddLabel(layout, Side(Conflict.DestinationPath, Conflict.bDestinationHasSize,
                          Conflict.DestinationSizeBytes, Conflict.DestinationDate) +
                         "\n\nis in the way of\n\n" +
                         Side(Conflict.SourcePath, Conflict.bSourceHasSize,
                              Conflict.SourceSizeBytes, Conflict.SourceDate) +
                         Loss(Conflict));
    NewPath = new QLineEdit(QFile::decodeName(Conflict.DestinationPath.c_str()) + ".new");
    NewPath->setVisible(!bDirectory);
    layout->addWidget(NewPath);
    Refusal = AddLabel(layout);
    Refusal->hide();
    auto* buttons = new QGridLayout;
    layout->addLayout(buttons);
    for (const auto& [text, answer] : bDirectory ? kDirectoryChoices : kFileChoices) {
        auto* button = new QPushButton(text);
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, [this, answer = answer] { Answer(answer); });
        buttons->addWidget(button, buttons->count() / 4, buttons->count() % 4);
    }
}

void ConflictDialog::Answer(TarvaneTransferConflictAction Action) {
    std::string newPath;
    if (Action == Act::Rename) {
        // The engine looks at the new path once and fails the job where that is taken, too.
        newPath = QFile::encodeName(NewPath->text()).toStdString();
        std::error_code ec;
        if (newPath.empty() || fs::exists(newPath, ec)) {
            Refusal->setText(newPath.empty() ? "Say by which name." : "This name is taken, too.");
            Refusal->show();
            return;
        }
    }
    Job->ResolveConflict(Action, newPath);
    accept();
}

TransferDialog::TransferDialog(TarvaneTransferPlan Plan, QWidget* Parent)
    : QDialog(Parent),
      Job(std::make_shared<TarvaneTransferJob>(Plan.bMove, Plan.Items.size(), Plan.SourceLabel)) {
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle((Plan.bMove ? "Move from " : "Copy from ") +
                   QString::fromStdString(Plan.SourceLabel));
    auto* layout = new QVBoxLayout(this);
    Texts = AddLabel(layout);
    Texts->setMinimumWidth(600);
    Overall = new QProgressBar;
    File = new QProgressBar;
    Button = new QPushButton("Cancel");
    for (QWidget* widget : std::initializer_list<QWidget*>{Overall, File, Button}) {
        layout->addWidget(widget);
    }
    connect(Button, &QPushButton::clicked, this, [this] { reject(); });
    // The job is listed from here on, and the registry keeps none alive: this dialog does.
    RegisterTarvaneTransferJob(Job);
    Worker = std::thread(Run, Job, std::move(Plan));
}

TransferDialog::~TransferDialog() {
    Job->RequestCancel();
    if (Worker.joinable()) {
        Worker.join();
    }
}

// Esc, the button and the window's own way to close it.
void TransferDialog::reject() {
    if (Worker.joinable()) {
        Job->RequestCancel();
    } else {
        QDialog::reject();
    }
}

// A job's message stands for certain once its worker has been joined.
void TransferDialog::Poll() {
    if (!Worker.joinable()) {
        return;
    }
    if (Job->IsFinished()) {
        Worker.join();
        Button->setText("Close");
    }
    Show(Job->MakeUiSnapshot());
    AskAboutTakenName();
}

void TransferDialog::Show(const TarvaneTransferUiSnapshot& Ui) {
    constexpr int kSteps = 1000;
    std::string text = Ui.StageText + '\n' + Ui.PathText + '\n' + Ui.OverallText + '\n' + Ui.IoText;
    if (!Ui.bFinished) {
        text += '\n' + Ui.HintText;
    }
    Texts->setText(QString::fromStdString(text));
    for (const auto& [bar, fraction] :
         {std::pair{Overall, Ui.OverallProgress01}, std::pair{File, Ui.FileProgress01}}) {
        bar->setMaximum(kSteps);
        bar->setValue(static_cast<int>(fraction * kSteps));
    }
}

// A question that nobody has to answer any more, because of a cancel, is taken back.
void TransferDialog::AskAboutTakenName() {
    TarvaneTransferConflict conflict;
    const bool bAsks = Job->GetPendingConflict(conflict) && !Job->IsCancelRequested();
    if (bAsks && Question == nullptr) {
        Question = new ConflictDialog(Job, conflict, this);
        Question->show();
    } else if (!bAsks && Question != nullptr) {
        Question->close();
    }
}

TransferWindow::TransferWindow() {
    setWindowTitle("Transfers");
    resize(900, 200);
    auto* layout = new QVBoxLayout(this);
    Jobs = new QTableWidget(0, 5);
    Jobs->setHorizontalHeaderLabels({"Source", "Job", "State", "Progress", "Detail"});
    Jobs->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    Jobs->horizontalHeader()->setStretchLastSection(true);
    Jobs->setEditTriggers(QAbstractItemView::NoEditTriggers);
    layout->addWidget(Jobs);
    auto* buttons = new QHBoxLayout;
    layout->addLayout(buttons);
    for (const bool bMove : {false, true}) {
        auto* button = new QPushButton(bMove ? "Move files..." : "Copy files...");
        connect(button, &QPushButton::clicked, this, [this, bMove] { ChooseFiles(bMove); });
        buttons->addWidget(button);
    }
    connect(&Timer, &QTimer::timeout, this, [this] { ListJobs(); });
    Timer.start(std::chrono::milliseconds(50));
}

void TransferWindow::Start(const std::vector<fs::path>& Sources, const fs::path& Directory,
                           bool bMove) {
    TarvaneTransferPlan plan;
    plan.bMove = bMove;
    for (const fs::path& source : Sources) {
        // "photos/" names the directory "photos".
        const fs::path named = source.has_filename() ? source : source.parent_path();
        TarvaneTransferItemPlan& item = plan.Items.emplace_back();
        item.SourcePath = named;
        item.DestinationPath = Directory / named.filename();
        plan.SourceLabel = named.parent_path().filename();
    }
    auto* dialog = new TransferDialog(std::move(plan), this);
    connect(&Timer, &QTimer::timeout, dialog, [dialog] { dialog->Poll(); });
    dialog->show();
}

void TransferWindow::ChooseFiles(bool bMove) {
    std::vector<fs::path> sources;
    for (const QString& name : QFileDialog::getOpenFileNames(this, "Which files?")) {
        sources.emplace_back(QFile::encodeName(name).toStdString());
    }
    const QString directory =
        sources.empty() ? QString() : QFileDialog::getExistingDirectory(this, "Where to?");
    if (!directory.isEmpty()) {
        Start(sources, QFile::encodeName(directory).toStdString(), bMove);
    }
}

void TransferWindow::ListJobs() {
    const std::vector<TarvaneTransferJobSnapshot> rows = CollectActiveTarvaneTransferJobSnapshots();
    Jobs->setRowCount(static_cast<int>(rows.size()));
    for (int row = 0; row < Jobs->rowCount(); ++row) {
        const TarvaneTransferJobSnapshot& job = rows[static_cast<std::size_t>(row)];
        int column = 0;
        for (const std::string& text : {job.Source, job.Job, job.State, job.Progress, job.Detail}) {
            Jobs->setItem(row, column++, new QTableWidgetItem(QString::fromStdString(text)));
        }
    }
}
