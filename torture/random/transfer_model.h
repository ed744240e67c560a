// A small model of the rules of a transfer, written from what they promise and not from the engine.

#pragma once

#include "facts.h"
#include "library_model.h"
#include "model_files.h"
#include "random_case.h"

#include <cstdint>
#include <optional>
#include <string>

class TransferModel {
public:
    TransferModel(const RandomCase& CaseToRun, ModelFiles& FilesToChange);

    // Runs the case on the files and returns what it came to, the files apart.
    Facts Run();

private:
    using Kind = TarvaneTransferConflictKind;
    using Action = TarvaneTransferConflictAction;
    enum class Result { Succeeded, Skipped, Failed };
    // What to do about one name. Without bGoOn the run fails with Message.
    struct Decision {
        bool bGoOn = true;
        bool bSkip = false;
    };
    struct Totals {
        std::uint64_t Items = 0;
        std::uint64_t Bytes = 0;
    };

    bool ScanAll();
    bool Scan(const std::string& Source, Totals& OutTotals);
    bool ScanBelow(const std::string& Directory, Totals& OutTotals);
    bool RunItems();
    bool RunItem(const CaseItem& Item, const Totals& Counted);
    bool MoveByRename(const std::string& From, const std::string& To, const Totals& Counted);

    Result CopyPath(const std::string& From, const std::string& To);
    Result CopyDirectory(const std::string& From, const std::string& To);
    Result CopyChildren(const std::string& From, const std::string& To);
    Result CopyFile(const std::string& From, const std::string& To);
    Result CopySpecial(const std::string& From, const std::string& To);
    Result SkipEntry(const std::string& From, std::uint64_t Bytes);
    bool SkipTree(const std::string& From);
    // MessagePrefix is that of a removal that fails, NoSourceMessage what is said when the removal
    // would take the source along, which keeps it from being done.
    bool ClearDirectoryAt(const std::string& Target, const std::string& From,
                          const std::string& MessagePrefix, const std::string& NoSourceMessage);
    bool RemoveSource(const std::string& From);

    Decision DecideDirectory(const std::string& From, const std::string& To);
    Decision DecideFile(const std::string& From, std::string& InOutTo);
    Decision ActOnFileAnswer(Action Answer, const TarvaneTransferConflict& Question,
                             const std::string& NewPath, std::string& InOutTo);
    Decision DecideNewPath(const std::string& NewPath, std::string& OutTo);
    TarvaneTransferConflict QuestionAbout(Kind Of, const std::string& From, const std::string& To);
    // Nothing when the run is canceled.
    std::optional<Action> Ask(const TarvaneTransferConflict& Question, std::string& OutNewPath);
    void Remember(Kind Of, Action Answer);

    // Returns false, so that a failure is one statement.
    bool Fail(const std::string& Text);
    void SetPath(const std::string& Path, std::uint64_t FileTotal);
    void AddBytes(std::uint64_t Bytes);

    const RandomCase& Case;
    ModelFiles& Files;
    LibraryModel Library;
    std::vector<Totals> CountedOfItem;

    std::string Message;
    bool bCanceled;
    std::size_t AnswersUsed = 0;
    std::optional<Action> RememberedForDirectories;
    std::optional<Action> RememberedForFiles;

    Facts Seen;
    std::size_t QuestionsAsked = 0;
    std::size_t Steps = 0;
    std::string CurrentPath;
    Totals Total, Done, Skipped;
    std::uint64_t FileTotal = 0;
    std::uint64_t FileDone = 0;
};

std::string ErrorText(int Error);
std::string PathIn(const std::string& Directory, const std::string& Name);
