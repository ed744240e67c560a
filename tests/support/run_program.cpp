#include "run_program.h"

#include "become_program.h"
#include "require_success.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <system_error>

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

struct Pipe {
    int ReadEnd = -1;
    int WriteEnd = -1;
};

Pipe OpenPipe() {
    std::array<int, 2> ends{};
    RequireSuccess(pipe2(ends.data(), O_CLOEXEC), "pipe2");
    return {ends[0], ends[1]};
}

void UsePipes(const Pipe& Output, const Pipe& Errors) {
    dup2(open("/dev/null", O_RDONLY | O_CLOEXEC), STDIN_FILENO);
    dup2(Output.WriteEnd, STDOUT_FILENO);
    dup2(Errors.WriteEnd, STDERR_FILENO);
}

// False at the end of the pipe.
bool Drain(int Descriptor, std::string& Text) {
    std::array<char, 65536> buffer;
    const ssize_t count = read(Descriptor, buffer.data(), buffer.size());
    if (count > 0) {
        Text.append(buffer.data(), static_cast<std::size_t>(count));
    }
    return count > 0;
}

} // namespace

ProgramResult RunProgram(const std::vector<std::string>& Command,
                         const std::string& WorkingDirectory,
                         const std::vector<std::pair<std::string, std::string>>& Environment,
                         double LimitSeconds) {
    const Pipe output = OpenPipe();
    const Pipe errors = OpenPipe();
    const pid_t child = fork();
    if (child < 0) {
        throw std::system_error(errno, std::generic_category(), "fork");
    }
    if (child == 0) {
        UsePipes(output, errors);
        // Out of the test's own terminal, so that no program finds one to ask on.
        setsid();
        BecomeProgram(Command, WorkingDirectory, Environment);
    }
    close(output.WriteEnd);
    close(errors.WriteEnd);

    ProgramResult result;
    std::array<pollfd, 2> wanted{pollfd{output.ReadEnd, POLLIN, 0},
                                 pollfd{errors.ReadEnd, POLLIN, 0}};
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(LimitSeconds);
    while (wanted[0].fd >= 0 || wanted[1].fd >= 0) {
        poll(wanted.data(), wanted.size(), 50);
        if (wanted[0].revents != 0 && !Drain(output.ReadEnd, result.Output)) {
            wanted[0].fd = -1;
        }
        if (wanted[1].revents != 0 && !Drain(errors.ReadEnd, result.Errors)) {
            wanted[1].fd = -1;
        }
        if (std::chrono::steady_clock::now() >= end) {
            kill(child, SIGKILL);
            break;
        }
    }
    close(output.ReadEnd);
    close(errors.ReadEnd);
    int status = 0;
    waitpid(child, &status, 0);
    result.Status = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    return result;
}
