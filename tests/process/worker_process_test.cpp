#include "worker_process.h"

#include "becomes_true.h"
#include "child_processes.h"
#include "no_descriptors_left.h"
#include "no_processes_left.h"
#include "no_room_for_threads.h"
#include "open_descriptors.h"
#include "text_of_exception.h"

#include <array>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

// The reply as a loop gets it: woken by the descriptor until there is one.
std::string ReplyOf(WorkerProcess& Process) {
    constexpr int kLimitMilliseconds = 20000;
    while (true) {
        pollfd event{Process.OverFd(), POLLIN, 0};
        if (poll(&event, 1, kLimitMilliseconds) != 1) {
            return "nothing came in 20 seconds";
        }
        if (const std::optional<std::string> reply = Process.TakeReply()) {
            return *reply;
        }
    }
}

std::string_view NeverReply() {
    while (true) {
        pause();
    }
}

// What the descriptors of the calling process are, but for the one that reads their list.
std::string DescribeDescriptors() {
    std::string text;
    for (const std::string& number : OpenDescriptors()) {
        std::error_code ec;
        const std::string target = fs::read_symlink("/proc/self/fd/" + number, ec);
        text += ec ? "" : number + " " + target.substr(0, target.find(':')) + "\n";
    }
    return text;
}

} // namespace

TEST(WorkerProcess, GivesTheReplyOfItsWork) {
    WorkerProcess process([] { return "done"; });
    EXPECT_EQ(ReplyOf(process), "done");
}

TEST(WorkerProcess, GivesAReplyThatIsLargerThanAPipe) {
    const std::string text(1000000, 'x');
    WorkerProcess process([&text] { return std::string_view(text); });
    EXPECT_EQ(ReplyOf(process), text);
}

TEST(WorkerProcess, GivesNothingWhileItWorks) {
    std::array<int, 2> gate{};
    ASSERT_EQ(pipe2(gate.data(), O_CLOEXEC), 0);
    WorkerProcess process(
        [] {
            char byte = 0;
            return read(STDIN_FILENO, &byte, 1) == 1 ? "opened" : "broken";
        },
        gate[0]);
    EXPECT_EQ(process.TakeReply(), std::nullopt);
    EXPECT_EQ(write(gate[1], "x", 1), 1);
    EXPECT_EQ(ReplyOf(process), "opened");
    close(gate[0]);
    close(gate[1]);
}

TEST(WorkerProcess, GivesAnEmptyReplyWhenItHasDied) {
    WorkerProcess process([] {
        raise(SIGKILL);
        return "alive";
    });
    EXPECT_EQ(ReplyOf(process), "");
}

TEST(WorkerProcess, GivesAnEmptyReplyWhenItCannotBeRead) {
    WorkerProcess process([] { return std::string_view("a reply"); });
    // Reading a directory fails for good.
    const int directory = open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_GE(dup3(directory, process.OverFd(), O_CLOEXEC), 0);
    close(directory);
    EXPECT_EQ(process.TakeReply(), "");
}

// A reply of more than a pipe holds is still being written when its reader goes.
TEST(WorkerProcess, EndsByItselfWhenNobodyCanReadItsReply) {
    const std::string text(1000000, 'x');
    const WorkerProcess process([&text] { return std::string_view(text); });
    const int directory = open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_GE(dup3(directory, process.OverFd(), O_CLOEXEC), 0);
    close(directory);
    siginfo_t ended{};
    EXPECT_TRUE(BecomesTrue("it has ended", [&ended] {
        return waitid(P_ALL, 0, &ended, WEXITED | WNOHANG | WNOWAIT) == 0 && ended.si_pid != 0;
    }));
    EXPECT_EQ(ended.si_code, CLD_EXITED);
}

TEST(WorkerProcess, DiesOfAnException) {
    WorkerProcess process([]() -> std::string_view { throw std::runtime_error("thrown"); });
    EXPECT_EQ(ReplyOf(process), "");
}

TEST(WorkerProcess, NeedsNoChildSignal) {
    const ChildSignalIgnored ignored;
    WorkerProcess process([] { return "done"; });
    EXPECT_EQ(ReplyOf(process), "done");
}

TEST(WorkerProcess, LeavesNoZombieWhenItIsOver) {
    {
        WorkerProcess process([] { return "done"; });
        EXPECT_EQ(ReplyOf(process), "done");
    }
    EXPECT_TRUE(NoChildIsLeft());
}

TEST(WorkerProcess, LeavesNoZombieAndNoDescriptorWhenItIsLetGo) {
    ASSERT_TRUE(NoChildIsLeft());
    const auto before = OpenDescriptors();
    {
        const WorkerProcess process(NeverReply);
        EXPECT_EQ(ChildProcesses().size(), 1U);
    }
    EXPECT_TRUE(NoChildIsLeft());
    EXPECT_EQ(OpenDescriptors(), before);
}

// It is waited for by nobody then, and stays a zombie until the program ends.
TEST(WorkerProcess, CanBeLetGoWhereNoThreadCanBeStarted) {
    ASSERT_TRUE(NoChildIsLeft());
    {
        const NoRoomForThreads noRoom;
        const WorkerProcess process(NeverReply);
    }
    for (const pid_t child : ChildProcesses()) {
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << status;
    }
    EXPECT_TRUE(ChildProcesses().empty());
}

TEST(WorkerProcess, BlocksSignalsButFaultsAndNoneOutside) {
    sigset_t before;
    pthread_sigmask(SIG_SETMASK, nullptr, &before);
    WorkerProcess process([inside = sigset_t{}]() mutable {
        pthread_sigmask(SIG_SETMASK, nullptr, &inside);
        return AsReply(inside);
    });
    sigset_t after;
    pthread_sigmask(SIG_SETMASK, nullptr, &after);
    const std::optional<sigset_t> inside = FromReply<sigset_t>(ReplyOf(process));
    ASSERT_TRUE(inside.has_value());
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGTSTP, SIGPIPE, SIGUSR1}) {
        EXPECT_EQ(sigismember(&*inside, signal), 1) << signal;
        EXPECT_EQ(sigismember(&after, signal), sigismember(&before, signal)) << signal;
    }
    EXPECT_EQ(sigismember(&*inside, SIGSEGV), 0);
}

TEST(WorkerProcess, HasNothingOfTheProgramOpen) {
    const int ofTheProgram = open("/proc", O_RDONLY | O_DIRECTORY);
    WorkerProcess process([text = ""s]() mutable {
        text = DescribeDescriptors();
        return std::string_view(text);
    });
    EXPECT_EQ(ReplyOf(process), "0 /dev/null\n1 pipe\n2 /dev/null\n");
    close(ofTheProgram);
}

TEST(WorkerProcess, HasItsInputOpen) {
    const int input = open("/proc", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    WorkerProcess process(
        [text = ""s]() mutable {
            text = DescribeDescriptors();
            return std::string_view(text);
        },
        input);
    EXPECT_EQ(ReplyOf(process), "0 /proc\n1 pipe\n2 /dev/null\n");
    close(input);
}

// The process of a program that has ended becomes a child of the test.
TEST(WorkerProcess, EndsWithTheProgram) {
    prctl(PR_SET_CHILD_SUBREAPER, 1UL);
    const pid_t program = fork();
    if (program == 0) {
        const WorkerProcess process(NeverReply);
        _exit(ChildProcesses().size() == 1 ? 42 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(program, &status, 0), program);
    EXPECT_EQ(WEXITSTATUS(status), 42);
    EXPECT_TRUE(BecomesTrue("its process is over", [] {
        waitpid(-1, nullptr, WNOHANG);
        return ChildProcesses().empty();
    }));
    prctl(PR_SET_CHILD_SUBREAPER, 0UL);
}

TEST(WorkerProcess, SaysWhyItCannotBeStartedAndLeavesNoDescriptor) {
    const auto before = OpenDescriptors();
    std::string reason;
    {
        const NoProcessesLeft limit;
        try {
            const WorkerProcess process(NeverReply);
        } catch (const std::system_error& error) {
            reason = error.what();
        }
    }
    EXPECT_EQ(reason, "Resource temporarily unavailable");
    EXPECT_EQ(OpenDescriptors(), before);
}

TEST(WorkerProcess, SaysThatThereIsNoPipe) {
    std::exception_ptr failure;
    {
        const NoDescriptorsLeft limit;
        try {
            const WorkerProcess process(NeverReply);
        } catch (...) {
            failure = std::current_exception();
        }
    }
    EXPECT_EQ(TextOf(failure), "Too many open files");
}

TEST(WorkerReply, IsAValueOrNone) {
    const int value = 7;
    EXPECT_EQ(FromReply<int>(AsReply(value)), 7);
    EXPECT_EQ(FromReply<int>(""), std::nullopt);
    EXPECT_EQ(FromReply<int>("truncated"), std::nullopt);
}
