// Any number of transfers at once: a window with the list of jobs, for each job a progress dialog,
// and for each taken name a question. One timer polls for all of them.

#pragma once

#include <tarvanetransfer.h>

#include <filesystem>
#include <memory>
#include <thread>
#include <vector>

#include <QDialog>
#include <QPointer>
#include <QTimer>
#include <QWidget>

class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QTableWidget;

// Asks what to do about one taken name, and closes with the answer. Closing it otherwise is no
// answer: the job asks again.
class ConflictDialog : public QDialog {
public:
    ConflictDialog(std::shared_ptr<TarvaneTransferJob> AskingJob,
                   const TarvaneTransferConflict& Conflict, QWidget* Parent);

private:
    void Answer(TarvaneTransferConflictAction Action);

    const std::shared_ptr<TarvaneTransferJob> Job;
    QLineEdit* NewPath = nullptr;
    QLabel* Refusal = nullptr;
};

// One transfer from its start to its end. Closing it cancels the job; when that is over, it closes.
class TransferDialog : public QDialog {
public:
    TransferDialog(TarvaneTransferPlan Plan, QWidget* Parent);
    // Waits for the worker.
    ~TransferDialog() override;

    void Poll();
    void reject() override;

private:
    void Show(const TarvaneTransferUiSnapshot& Ui);
    void AskAboutTakenName();

    const std::shared_ptr<TarvaneTransferJob> Job;
    std::thread Worker;
    QPointer<ConflictDialog> Question;
    QLabel* Texts = nullptr;
    QProgressBar* Overall = nullptr;
    QProgressBar* File = nullptr;
    QPushButton* Button = nullptr;
};

class TransferWindow : public QWidget {
public:
    TransferWindow();

    void Start(const std::vector<std::filesystem::path>& Sources,
               const std::filesystem::path& Directory, bool bMove);

private:
    void ChooseFiles(bool bMove);
    void ListJobs();

    QTableWidget* Jobs = nullptr;
    QTimer Timer;
};
