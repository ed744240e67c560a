#include "track_fetch.h"

#include "signal_inbox.h"
#include "signals_blocked.h"
#include "terminal_device.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <poll.h>
#include <sys/wait.h>
#include <type_traits>
#include <unistd.h>

namespace {

constexpr int kMomentMilliseconds = 500;
constexpr char kTracksReply = 'T';
constexpr char kErrorReply = 'E';

// The child may outlive the program while a drive holds it; whoever reads our output must not wait
// for it.
void LetGoOfStandardStreams() {
    const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        dup2(nowhere, stream);
    }
}

std::string MakeReply(const std::string& Device) {
    static_assert(std::is_trivially_copyable_v<TrackListEntry>);
    TrackList list;
    std::string errorMessage;
    if (!ReadTrackList(Device, list, errorMessage)) {
        return kErrorReply + errorMessage;
    }
    std::string reply(1 + list.Tracks.size() * sizeof(TrackListEntry), kTracksReply);
    std::memcpy(reply.data() + 1, list.Tracks.data(), reply.size() - 1);
    return reply;
}

// Ctrl-C reaches the child too; its end must not look like an answer.
[[noreturn]] void AnswerAndExit(const std::string& Device, int Pipe) {
    const SignalsBlocked signals;
    LetGoOfStandardStreams();
    const std::string reply = MakeReply(Device);
    // A whole reply is smaller than what a pipe takes at once.
    const bool bSent = write(Pipe, reply.data(), reply.size()) >= 0;
    _exit(bSent ? 0 : 1);
}

// A child that reads the table of contents, and the pipe its reply comes from.
struct Reader {
    pid_t Child = -1;
    int Pipe = -1;
};

bool StartReader(const std::string& Device, Reader& Out) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        return false;
    }
    Out.Child = fork();
    if (Out.Child == 0) {
        AnswerAndExit(Device, ends[1]);
    }
    close(ends[1]);
    Out.Pipe = ends[0];
    return Out.Child > 0;
}

// Empty when the child has said nothing more.
std::string ReadReply(int Pipe) {
    std::string reply;
    std::array<char, 4096> block;
    for (ssize_t size; (size = read(Pipe, block.data(), block.size())) > 0;) {
        reply.append(block.data(), static_cast<std::size_t>(size));
    }
    return reply;
}

// Returns 0, or the signal that ends the program.
int TakeSignals(SignalInbox& Signals, TerminalDevice& Terminal) {
    while (const std::optional<int> signal = Signals.Take()) {
        switch (*signal) {
        case SIGINT:
        case SIGTERM:
        case SIGHUP:
        case SIGQUIT:
            return *signal;
        case SIGTSTP:
            Terminal.LeaveKeyMode();
            Signals.StopBy(SIGTSTP);
            break;
        case SIGCONT:
            Terminal.EnterKeyMode();
            break;
        default:
            break;
        }
    }
    return 0;
}

bool TakeEscape(TerminalDevice& Terminal) {
    bool bEscape = false;
    while (const std::optional<KeyPress> key = Terminal.TakeKey()) {
        bEscape = bEscape || key->Code == KeyCode::Escape;
    }
    return bEscape;
}

// Returns 0 when the reply has come, otherwise the signal that has canceled the wait.
int WaitForReply(int Pipe) {
    SignalInbox signals;
    TerminalDevice terminal;
    terminal.EnterKeyMode();
    int timeout = terminal.IsOutputTerminal() ? kMomentMilliseconds : -1;
    while (true) {
        std::array<pollfd, 3> events{
            {{Pipe, POLLIN, 0}, {signals.Fd(), POLLIN, 0}, {terminal.KeyFd(), POLLIN, 0}}};
        if (poll(events.data(), events.size(), timeout) == 0) {
            terminal.Write("tarvane: waiting for the drive, Esc cancels\r\n");
            timeout = -1;
        }
        if (const int end = TakeSignals(signals, terminal); end != 0) {
            return end;
        }
        if (events[2].revents != 0 && TakeEscape(terminal)) {
            return SIGINT;
        }
        if (events[0].revents != 0) {
            return 0;
        }
    }
}

bool TakeReply(const std::string& Reply, std::vector<TrackListEntry>& Out,
               std::string& ErrorMessage) {
    if (Reply.empty() || Reply.front() != kTracksReply) {
        ErrorMessage = Reply.empty() ? "cannot read the table of contents" : Reply.substr(1);
        return false;
    }
    Out.resize((Reply.size() - 1) / sizeof(TrackListEntry));
    std::memcpy(Out.data(), Reply.data() + 1, Out.size() * sizeof(TrackListEntry));
    return true;
}

} // namespace

TrackFetchResult FetchTrackList(const std::string& Device, TrackList& Out,
                                std::string& ErrorMessage, int& OutEndSignal) {
    Reader reader;
    if (!StartReader(Device, reader)) {
        ErrorMessage = std::string("cannot start reading the drive: ") + std::strerror(errno);
        return TrackFetchResult::Failed;
    }
    OutEndSignal = WaitForReply(reader.Pipe);
    if (OutEndSignal != 0) {
        close(reader.Pipe);
        // Nobody waits for its end, which the drive may hold up.
        kill(reader.Child, SIGKILL);
        return TrackFetchResult::Canceled;
    }
    const std::string reply = ReadReply(reader.Pipe);
    close(reader.Pipe);
    waitpid(reader.Child, nullptr, 0);
    TrackList list;
    list.Device = Device;
    if (!TakeReply(reply, list.Tracks, ErrorMessage)) {
        return TrackFetchResult::Failed;
    }
    Out = std::move(list);
    return TrackFetchResult::Fetched;
}
