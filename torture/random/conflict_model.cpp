// What the model does about names that are taken.

#include "transfer_model.h"

#include "undetermined.h"

using Policy = TarvaneTransferConflictPolicy;

TransferModel::Decision TransferModel::DecideDirectory(const std::string& From,
                                                       const std::string& To) {
    constexpr Decision kFailed{.bGoOn = false};
    int error = 0;
    const bool bExists = Library.Exists(To, error);
    if (error != 0) {
        Fail("Failed checking destination '" + To + "': " + ErrorText(error));
        return kFailed;
    }
    if (!bExists || Case.Policy != Policy::Ask) {
        return {};
    }
    std::string newPath;
    const std::optional<Action> answer = Ask(QuestionAbout(Kind::Directory, From, To), newPath);
    if (!answer) {
        Fail("Transfer canceled.");
        return kFailed;
    }
    if (*answer == Action::Skip || *answer == Action::SkipAll) {
        return {.bSkip = true};
    }
    if (*answer == Action::Merge || *answer == Action::MergeAll) {
        return {};
    }
    Fail("Invalid directory merge decision.");
    return kFailed;
}

TransferModel::Decision TransferModel::DecideFile(const std::string& From, std::string& InOutTo) {
    constexpr Decision kFailed{.bGoOn = false};
    int error = 0;
    const bool bExists = Library.Exists(InOutTo, error);
    if (error != 0) {
        Fail("Failed checking destination '" + InOutTo + "': " + ErrorText(error));
        return kFailed;
    }
    if (!bExists || Case.Policy != Policy::Ask) {
        return {.bSkip = bExists && Case.Policy == Policy::Skip};
    }
    const TarvaneTransferConflict question = QuestionAbout(Kind::File, From, InOutTo);
    std::string newPath;
    const std::optional<Action> answer = Ask(question, newPath);
    if (!answer) {
        Fail("Transfer canceled.");
        return kFailed;
    }
    return ActOnFileAnswer(*answer, question, newPath, InOutTo);
}

TransferModel::Decision TransferModel::ActOnFileAnswer(Action Answer,
                                                       const TarvaneTransferConflict& Question,
                                                       const std::string& NewPath,
                                                       std::string& InOutTo) {
    switch (Answer) {
    case Action::Skip:
    case Action::SkipAll:
        return {.bSkip = true};
    case Action::Overwrite:
    case Action::OverwriteAll:
        return {};
    case Action::CompareByContent: {
        const LibraryStatus source = Library.Status(Question.SourcePath);
        const LibraryStatus destination = Library.Status(Question.DestinationPath);
        return {.bSkip = source.Is(EntryKind::File) && destination.Is(EntryKind::File) &&
                         source.Node->Data == destination.Node->Data};
    }
    case Action::OverwriteAllOlder:
        return {.bSkip = !Question.bSourceHasModifiedTime ||
                         !Question.bDestinationHasModifiedTime ||
                         Question.SourceModifiedTicks <= Question.DestinationModifiedTicks};
    case Action::Rename:
        return DecideNewPath(NewPath, InOutTo);
    case Action::Merge:
    case Action::MergeAll:
    case Action::Cancel:
        break;
    }
    Fail("Invalid file conflict decision.");
    return {.bGoOn = false};
}

TransferModel::Decision TransferModel::DecideNewPath(const std::string& NewPath,
                                                     std::string& OutTo) {
    OutTo = NewPath;
    int error = 0;
    if (Library.Exists(NewPath, error)) {
        Fail("Rename target already exists: " + NewPath);
        return {.bGoOn = false};
    }
    if (error != 0) {
        Fail("Failed checking rename target: " + ErrorText(error));
        return {.bGoOn = false};
    }
    return {};
}

TarvaneTransferConflict TransferModel::QuestionAbout(Kind Of, const std::string& From,
                                                     const std::string& To) {
    const LibraryStatus source = Library.Status(From);
    const LibraryStatus destination = Library.Status(To);
    TarvaneTransferConflict question;
    question.Kind = Of;
    question.SourcePath = From;
    question.DestinationPath = To;
    question.bSourceDirectory = source.Is(EntryKind::Directory);
    question.bDestinationDirectory = destination.Is(EntryKind::Directory);
    question.bSourceHasSize = source.Is(EntryKind::File);
    question.SourceSizeBytes = question.bSourceHasSize ? source.Node->Data.size() : 0;
    question.bDestinationHasSize = destination.Is(EntryKind::File);
    question.DestinationSizeBytes =
        question.bDestinationHasSize ? destination.Node->Data.size() : 0;
    question.bSourceHasModifiedTime = source.Node != nullptr;
    question.bDestinationHasModifiedTime = destination.Node != nullptr;
    const auto ticksOf = [](const LibraryStatus& Status) {
        return Status.Node == nullptr ? 0 : Status.Node->ModifiedSeconds;
    };
    question.SourceModifiedTicks = ticksOf(source);
    question.DestinationModifiedTicks = ticksOf(destination);
    if (question.SourceModifiedTicks == kThisRun && source.Node != destination.Node &&
        question.DestinationModifiedTicks == kThisRun) {
        throw Undetermined("two times of this run are compared");
    }
    return question;
}

std::optional<TarvaneTransferConflictAction>
TransferModel::Ask(const TarvaneTransferConflict& Question, std::string& OutNewPath) {
    if (bCanceled) {
        return std::nullopt;
    }
    const std::optional<Action>& remembered =
        Question.Kind == Kind::Directory ? RememberedForDirectories : RememberedForFiles;
    if (remembered) {
        return remembered;
    }
    Seen["question " + std::to_string(++QuestionsAsked)] = QuestionFact(Question);
    while (AnswersUsed < Case.Answers.size()) {
        const CaseAnswer& answer = Case.Answers[AnswersUsed++];
        const Action action = ActionFor(answer, Question.Kind);
        OutNewPath = RenamePathFor(answer, Question.Kind, Question.DestinationPath);
        if (action == Action::Rename && OutNewPath.empty()) {
            continue;
        }
        if (action == Action::Cancel) {
            break;
        }
        Remember(Question.Kind, action);
        return action;
    }
    bCanceled = true;
    return std::nullopt;
}

void TransferModel::Remember(Kind Of, Action Answer) {
    if (Of == Kind::Directory) {
        if (Answer == Action::MergeAll) {
            RememberedForDirectories = Action::Merge;
        } else if (Answer == Action::SkipAll) {
            RememberedForDirectories = Action::Skip;
        }
    } else if (Answer == Action::OverwriteAll) {
        RememberedForFiles = Action::Overwrite;
    } else if (Answer == Action::SkipAll) {
        RememberedForFiles = Action::Skip;
    } else if (Answer == Action::OverwriteAllOlder) {
        RememberedForFiles = Action::OverwriteAllOlder;
    }
}
