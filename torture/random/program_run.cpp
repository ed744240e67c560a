#include "program_run.h"

#include "case_tree.h"
#include "promises.h"
#include "undetermined.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <vector>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr unsigned kSecondsForRun = 30;
constexpr int kNotStarted = 127;
constexpr int kSignalStatus = 128;

std::vector<std::string> CommandLine(const RandomCase& Case) {
    std::vector<std::string> words{TARVANE_PROGRAM, Case.bMove ? "move" : "copy"};
    words.insert(words.end(), Case.Options.begin(), Case.Options.end());
    words.emplace_back("-t");
    words.push_back(
        Case.Items.front().Destination.substr(0, Case.Items.front().Destination.find('/')));
    words.emplace_back("--");
    for (const CaseItem& item : Case.Items) {
        words.push_back(item.Source);
    }
    return words;
}

// Does not return. A session of its own has no terminal, so nobody can be asked.
[[noreturn]] void Become(const std::vector<std::string>& Words, const std::string& Directory,
                         int Output) {
    std::vector<char*> arguments;
    for (const std::string& word : Words) {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);
    const int input = ::open("/dev/null", O_RDONLY);
    ::setsid();
    if (::chdir(Directory.c_str()) == 0 && ::dup2(input, STDIN_FILENO) >= 0 &&
        ::dup2(Output, STDOUT_FILENO) >= 0 && ::dup2(Output, STDERR_FILENO) >= 0) {
        ::alarm(kSecondsForRun);
        ::execv(arguments.front(), arguments.data());
    }
    ::_exit(kNotStarted);
}

ProgramEnd RunProgram(const RandomCase& Case, const std::string& Root) {
    const std::string outputPath = Root + ".output";
    const int output = ::open(outputPath.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    const std::vector<std::string> words = CommandLine(Case);
    const pid_t child = ::fork();
    if (output < 0 || child < 0) {
        throw std::system_error(errno, std::generic_category(), "starting the program");
    }
    if (child == 0) {
        Become(words, Root, output);
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {}
    constexpr std::size_t kMostSaid = 400;
    ProgramEnd end;
    end.Said.resize(kMostSaid);
    end.Said.resize(static_cast<std::size_t>(
        std::max<ssize_t>(0, ::pread(output, end.Said.data(), kMostSaid, 0))));
    ::close(output);
    end.ExitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : kSignalStatus + WTERMSIG(status);
    end.Tree = TreeOnDisk(Root);
    return end;
}

} // namespace

std::string PromisesBrokenBy(const RandomCase& Case, const Sandbox& Place) {
    if (Case.Items.empty()) {
        throw Undetermined("the program needs a source");
    }
    ModelFiles files(Place.Root(), Place.Order());
    MakeInModel(Case, Place.HasOtherFileSystem(), files);
    Promises promises(Case, files);
    MakeOnDisk(Case, Place.Root());
    return promises.BrokenBy(RunProgram(Case, Place.Root()));
}
