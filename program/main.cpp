// The program `tarvane`: picks what the arguments ask for.

#include "command_line.h"
#include "exit_status.h"
#include "panes_front_end.h"
#include "prompt_front_end.h"
#include "screen_text.h"
#include "system_terminal.h"
#include "tracks_command.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fcntl.h>
#include <new>
#include <string>
#include <sys/resource.h>
#include <unistd.h>
#include <variant>

namespace {

// A file that the engine opens must never get the number of a closed standard stream: messages
// would be written into it.
void OpenStandardStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) < 0 && errno == EBADF) {
            open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

// A directory stays open for each level of the tree that is being copied, and the usual soft limit
// ends at about 1,020 of them. It is that low for programs that call select(), which ours does not.
void RaiseDescriptorLimit() {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) == 0) {
        limit.rlim_cur = limit.rlim_max;
        setrlimit(RLIMIT_NOFILE, &limit);
    }
}

void PrintMessage(const std::string& Sentence) {
    std::fprintf(stderr, "tarvane: %s\n", CleanForScreen(Sentence).c_str());
}

int Answer(const InformationText& Information) {
    const bool bWritten = std::fputs(Information.Text.c_str(), stdout) >= 0;
    if (!bWritten || std::fflush(stdout) != 0) {
        PrintMessage(std::string("write error: ") + std::strerror(errno));
        return kExitFailed;
    }
    return kExitDone;
}

int Answer(const UsageError& Mistake) {
    for (const std::string& sentence : Mistake.Sentences) {
        PrintMessage(sentence);
    }
    std::fputs("Try 'tarvane --help'.\n", stderr);
    return kExitUsage;
}

// Libraries print to standard error, which would come out between the panes. They are drawn on the
// controlling terminal then.
class StandardErrorAway {
public:
    StandardErrorAway() : Kept(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1)) {
        const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
        dup2(nowhere, STDERR_FILENO);
        close(nowhere);
    }
    ~StandardErrorAway() {
        dup2(Kept, STDERR_FILENO);
        close(Kept);
    }
    StandardErrorAway(const StandardErrorAway&) = delete;
    StandardErrorAway& operator=(const StandardErrorAway&) = delete;

private:
    const int Kept;
};

// A person who has typed too little is told what there is.
int Answer(const PanesRequest& Request) {
    const std::string reason = WhyNoPanes();
    if (!reason.empty()) {
        return Answer(UsageError{{reason + "; the commands are copy, move, tracks and help"}});
    }
    const StandardErrorAway away;
    SystemTerminal terminal;
    return ExitStatusOf(RunPanes(Request, terminal, ExitStatusOf));
}

int Answer(const PromptRequest& Request) {
    SystemTerminal terminal;
    return ExitStatusOf(RunAtPrompt(Request, terminal, ExitStatusOf));
}

int Answer(const TracksRequest& Request) {
    return ExitStatusOf(RunTracksCommand(Request));
}

} // namespace

int main(int Argc, char** Argv) {
    OpenStandardStreams();
    RaiseDescriptorLimit();
    EnsureUtf8Locale();
    try {
        return std::visit([](const auto& Parsed) { return Answer(Parsed); },
                          ParseCommandLine(Argc, Argv));
    } catch (const std::bad_alloc&) {
        // There may be none for a message either.
        std::fputs("tarvane: Out of memory.\n", stderr);
        return kExitFailed;
    } catch (const std::exception& error) {
        PrintMessage(error.what());
        return kExitFailed;
    }
}
