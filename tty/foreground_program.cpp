#include "foreground_program.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

#include "quoted.h"
#include "screen_text.h"
#include "signals_blocked.h"

namespace {

// With what the new process is to differ from ours.
class SpawnSettings {
public:
    SpawnSettings() {
        posix_spawn_file_actions_init(&Files);
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
            constexpr mode_t kNotCreated = 0;
            posix_spawn_file_actions_addopen(&Files, stream, "/dev/tty", O_RDWR, kNotCreated);
        }
        posix_spawnattr_init(&Attributes);
        sigset_t signals;
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&Attributes, &signals);
        sigfillset(&signals);
        posix_spawnattr_setsigdefault(&Attributes, &signals);
        posix_spawnattr_setflags(&Attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ~SpawnSettings() {
        posix_spawn_file_actions_destroy(&Files);
        posix_spawnattr_destroy(&Attributes);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;

    posix_spawn_file_actions_t Files{};
    posix_spawnattr_t Attributes{};
};

pid_t Spawn(const std::vector<std::string>& Arguments) {
    std::vector<char*> arguments;
    for (const std::string& argument : Arguments) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    const SpawnSettings settings;
    pid_t process = -1;
    const int error = posix_spawnp(&process, arguments[0], &settings.Files, &settings.Attributes,
                                   arguments.data(), environ);
    if (error != 0) {
        throw std::runtime_error("Cannot run " + Quoted(CleanForScreen(Arguments[0])) + ": " +
                                 std::generic_category().message(error) + ".");
    }
    return process;
}

} // namespace

std::vector<std::string> ShellArguments(const std::string& Command, const std::string& File) {
    // The shell makes way for a plain command, which then gets the signals that are for it.
    const bool bPlain = Command.find_first_of("=;|&()<>{}$`!\\\n") == std::string::npos;
    // The shell's own name is the first argument that the command does not see.
    return {"sh", "-c", (bPlain ? "exec " : "") + Command + " \"$@\"", Command, File};
}

ForegroundProgram::ForegroundProgram(const std::vector<std::string>& Arguments) {
    termios modes{};
    if (::tcgetattr(STDIN_FILENO, &modes) == 0) {
        ModesBefore = modes;
    }
    const pid_t process = Spawn(Arguments);
    // The C library's own declaration is not for C++ in all of its versions.
    constexpr unsigned int kNoFlags = 0;
    Process = OwnedDescriptor(static_cast<int>(syscall(SYS_pidfd_open, process, kNoFlags)));
    if (OverFd() < 0) {
        throw std::runtime_error("Cannot wait for " + Quoted(CleanForScreen(Arguments[0])) + ": " +
                                 std::generic_category().message(errno) + ".");
    }
}

std::optional<int> ForegroundProgram::TakeExitStatus() {
    siginfo_t ended{};
    const auto process = static_cast<id_t>(OverFd());
    if (waitid(P_PIDFD, process, &ended, WEXITED | WNOHANG) != 0 || ended.si_pid == 0) {
        return std::nullopt;
    }
    // The shell hands on the end of its command so.
    constexpr int kBySignal = 128;
    const int status = ended.si_code == CLD_EXITED ? ended.si_status : kBySignal + ended.si_status;
    if (status > kBySignal && ModesBefore) {
        const SignalsBlocked noStop(SIGTTOU);
        ::tcsetattr(STDIN_FILENO, TCSANOW, &*ModesBefore);
    }
    return status;
}

void ForegroundProgram::Terminate() const {
    // One that is stopped has to go on to see it.
    for (const int signal : {SIGTERM, SIGCONT}) {
        siginfo_t* const noInfo = nullptr;
        constexpr unsigned int kNoFlags = 0;
        ::syscall(SYS_pidfd_send_signal, OverFd(), signal, noInfo, kNoFlags);
    }
}
