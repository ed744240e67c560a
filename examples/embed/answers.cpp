// Copies a directory, and answers each question about a taken name as a script says:
//
//   answers SOURCE DESTINATION [NAME=ANSWER...]
//
// NAME is the last part of the path that is taken; ANSWER is one of the words below. What the
// script does not name cancels the transfer.

#include <tarvanetransfer.h>

#include <chrono>
#include <exception>
#include <filesystem>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <thread>

namespace {

namespace fs = std::filesystem;
using Act = TarvaneTransferConflictAction;
using Script = std::map<std::string, std::string>;

// The answers that suit each kind; the engine fails the job for any other.
const std::map<std::string, Act> kDirectoryAnswers = {
    {"merge", Act::Merge},      {"merge-all", Act::MergeAll}, {"skip", Act::Skip},
    {"skip-all", Act::SkipAll}, {"cancel", Act::Cancel},
};
const std::map<std::string, Act> kFileAnswers = {
    {"overwrite", Act::Overwrite},
    {"overwrite-all", Act::OverwriteAll},
    {"overwrite-all-older", Act::OverwriteAllOlder},
    {"compare", Act::CompareByContent},
    {"rename", Act::Rename},
    {"skip", Act::Skip},
    {"skip-all", Act::SkipAll},
    {"cancel", Act::Cancel},
};

void Answer(TarvaneTransferJob& Job, const TarvaneTransferConflict& Conflict,
            const Script& Answers) {
    const bool bDirectory = Conflict.Kind == TarvaneTransferConflictKind::Directory;
    const auto& suitable = bDirectory ? kDirectoryAnswers : kFileAnswers;
    const auto scripted = Answers.find(fs::path(Conflict.DestinationPath).filename());
    const std::string word = scripted == Answers.end() ? "cancel" : scripted->second;
    const auto answer = suitable.find(word);
    const Act action = answer == suitable.end() ? Act::Cancel : answer->second;
    std::cout << (bDirectory ? "directory " : "file ") << Conflict.DestinationPath << ": " << word
              << '\n';
    // A rename gives the whole new path, not only the name.
    const std::string newPath = action == Act::Rename ? Conflict.DestinationPath + ".new" : "";
    Job.ResolveConflict(action, newPath);
}

void Run(const std::shared_ptr<TarvaneTransferJob>& Job, const TarvaneTransferPlan& Plan) {
    try {
        RunTarvaneTransferJob(Job, Plan);
    } catch (const std::exception& error) {
        if (!Job->IsFinished()) {
            Job->FinishFailure(error.what());
        }
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::cerr << "Usage: answers SOURCE DESTINATION [NAME=ANSWER...]\n";
        return 2;
    }
    Script script;
    for (int index = 3; index < argc; ++index) {
        const std::string text = argv[index];
        const std::size_t equals = text.rfind('=');
        script[text.substr(0, equals)] = text.substr(equals + 1);
    }
    TarvaneTransferPlan plan;
    TarvaneTransferItemPlan& item = plan.Items.emplace_back();
    item.SourcePath = argv[1];
    item.DestinationPath = argv[2];

    const auto job = std::make_shared<TarvaneTransferJob>(plan.bMove, plan.Items.size(), "");
    std::thread worker(Run, job, plan);
    while (!job->IsFinished()) {
        TarvaneTransferConflict conflict;
        if (job->GetPendingConflict(conflict)) {
            Answer(*job, conflict, script);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    worker.join();
    const TarvaneTransferUiSnapshot end = job->MakeUiSnapshot();
    std::cout << end.MessageText << '\n';
    return end.bSucceeded ? 0 : 1;
}
