// One transfer by the engine alone, as an embedding program would run it, in one line of JSON.
//
//   tarvane_engine_run [--move] [--policy=ask|overwrite|skip] [--answer=ACTION[:PATH]]...
//                      SOURCE DESTINATION...
//
// An answer serves one question, the last one also those that follow. With the fault library
// preloaded, only the calls of the worker are counted, from its first step on.

#include "tarvanetransfer.h"

#include <algorithm>
#include <cstdlib>
#include <deque>
#include <dirent.h>
#include <dlfcn.h>
#include <exception>
#include <iostream>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

namespace {

using Action = TarvaneTransferConflictAction;
using Policy = TarvaneTransferConflictPolicy;

struct Answer {
    Action What = Action::Cancel;
    std::string RenamePath;
};

struct Request {
    TarvaneTransferPlan Plan;
    std::deque<Answer> Answers;
};

std::shared_ptr<TarvaneTransferJob> gJob;

const std::map<std::string_view, Policy> kPolicies{
    {"ask", Policy::Ask}, {"overwrite", Policy::Overwrite}, {"skip", Policy::Skip}};

const std::map<std::string_view, Action> kActions{{"merge", Action::Merge},
                                                  {"merge-all", Action::MergeAll},
                                                  {"skip", Action::Skip},
                                                  {"skip-all", Action::SkipAll},
                                                  {"overwrite", Action::Overwrite},
                                                  {"rename", Action::Rename},
                                                  {"overwrite-all", Action::OverwriteAll},
                                                  {"compare", Action::CompareByContent},
                                                  {"older", Action::OverwriteAllOlder}};

bool TakePrefix(std::string_view& Text, std::string_view Prefix) {
    if (!Text.starts_with(Prefix)) {
        return false;
    }
    Text.remove_prefix(Prefix.size());
    return true;
}

Answer ReadAnswer(std::string_view Text) {
    const std::size_t colon = std::min(Text.find(':'), Text.size());
    Answer answer{kActions.at(Text.substr(0, colon)), {}};
    answer.RenamePath = Text.substr(std::min(colon + 1, Text.size()));
    return answer;
}

Request ReadRequest(int Count, char** Arguments) {
    Request request;
    std::deque<std::string> paths;
    for (int i = 1; i < Count; ++i) {
        std::string_view text(Arguments[i]);
        if (text == "--move") {
            request.Plan.bMove = true;
        } else if (TakePrefix(text, "--policy=")) {
            request.Plan.ConflictPolicy = kPolicies.at(text);
        } else if (TakePrefix(text, "--answer=")) {
            request.Answers.push_back(ReadAnswer(text));
        } else {
            paths.emplace_back(text);
        }
    }
    for (std::size_t i = 0; i + 1 < paths.size(); i += 2) {
        request.Plan.Items.push_back({paths[i], paths[i], paths[i + 1], false, false, 0, 0});
    }
    return request;
}

// Nothing where the fault library is not preloaded.
template <typename Function>
Function* FaultFunction(const char* Name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_DEFAULT, Name));
}

// What the process holds that a transfer has to give back.
struct Holdings {
    long Descriptors = 0;
    long Threads = 0;
    long Allocations = 0;
};

long CountEntries(const char* Directory) {
    DIR* const directory = opendir(Directory);
    long count = 0;
    while (readdir(directory) != nullptr) {
        ++count;
    }
    closedir(directory);
    return count;
}

Holdings CountHoldings() {
    Holdings holdings{CountEntries("/proc/self/fd"), CountEntries("/proc/self/task"), 0};
    if (auto* const count = FaultFunction<long()>("LiveAllocations")) {
        holdings.Allocations = count();
    }
    return holdings;
}

// Empty unless an exception left the engine.
std::string RunWorker(TarvaneTransferPlan Plan) {
    auto* const countCalls = FaultFunction<void(bool)>("CountCalls");
    const auto setCounting = [countCalls](bool bCounts) {
        if (countCalls != nullptr) {
            countCalls(bCounts);
        }
    };
    std::string exception;
    try {
        setCounting(true);
        RunTarvaneTransferJob(gJob, std::move(Plan));
        setCounting(false);
    } catch (const std::exception& error) {
        setCounting(false);
        exception = error.what();
    }
    return exception;
}

void AnswerConflicts(std::deque<Answer> Answers, const std::atomic<bool>& bOver) {
    TarvaneTransferConflict conflict;
    while (!bOver) {
        if (Answers.empty() || !gJob->GetPendingConflict(conflict)) {
            std::this_thread::sleep_for(std::chrono::microseconds(100));
            continue;
        }
        gJob->ResolveConflict(Answers.front().What, Answers.front().RenamePath);
        if (Answers.size() > 1) {
            Answers.pop_front();
        }
    }
}

const char* ResultOf(const TarvaneTransferUiSnapshot& Ui) {
    if (!Ui.bFinished) {
        return "unfinished";
    }
    if (Ui.bSucceeded) {
        return "succeeded";
    }
    return Ui.bCanceled ? "canceled" : "failed";
}

nlohmann::json ReportOf(const std::string& Exception) {
    const TarvaneTransferUiSnapshot ui = gJob->MakeUiSnapshot();
    return {{"result", ResultOf(ui)},
            {"message", ui.MessageText},
            {"exception", Exception},
            {"items", {ui.DoneItems, ui.TotalItems, gJob->GetSkippedItems()}},
            {"bytes", {ui.DoneBytes, ui.TotalBytes, gJob->GetSkippedBytes()}}};
}

nlohmann::json Run(const Request& Asked) {
    gJob = std::make_shared<TarvaneTransferJob>(Asked.Plan.bMove, Asked.Plan.Items.size(), "");
    std::atomic<bool> bOver{false};
    std::string exception;
    std::thread worker([&] {
        exception = RunWorker(Asked.Plan);
        bOver = true;
    });
    AnswerConflicts(Asked.Answers, bOver);
    worker.join();
    nlohmann::json report = ReportOf(exception);
    gJob.reset();
    return report;
}

} // namespace

// Called by the fault library on the worker.
extern "C" [[gnu::visibility("default")]] void CancelJob() {
    gJob->RequestCancel();
}

// An exception from here is meant to end the program.
// NOLINTNEXTLINE(bugprone-exception-escape)
int main(int Count, char** Arguments) {
    const Request request = ReadRequest(Count, Arguments);
    // What is kept for good is there before the first count: the report's memory, the listing's.
    std::string text(1000, ' ');
    CountHoldings();
    const Holdings before = CountHoldings();
    text = Run(request).dump();
    // The system lists a thread that has been joined for another moment.
    Holdings after = CountHoldings();
    for (int looks = 0; after.Threads > before.Threads && looks < 1000; ++looks) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        after = CountHoldings();
    }
    nlohmann::json report = nlohmann::json::parse(text);
    report["descriptors"] = after.Descriptors - before.Descriptors;
    report["threads"] = after.Threads - before.Threads;
    report["allocations"] = after.Allocations - before.Allocations;
    std::cout << report.dump() << '\n';
    return EXIT_SUCCESS;
}
