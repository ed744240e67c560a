// A piece of a test that runs in a process of its own on a terminal of its own.

#pragma once

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <functional>
#include <iterator>
#include <poll.h>
#include <pty.h>
#include <stdexcept>
#include <string>
#include <string_view>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <utmp.h>

// Runs Body as the leader of a session whose terminal is descriptor 0, 1 and 2. Body tells the test
// what it sees with Report and ends the process itself or returns its exit status.
//
// Threads: one. Errors: what cannot be set up, or does not come within 20 seconds, throws.
class ForkedInTerminal {
public:
    using Reporter = std::function<void(const std::string& Word)>;

    explicit ForkedInTerminal(const std::function<int(const Reporter& Report)>& Body,
                              winsize Window = {24, 80, 0, 0}) {
        std::array<int, 2> pipeEnds{};
        int inside = -1;
        if (pipe2(pipeEnds.data(), O_CLOEXEC) != 0 ||
            openpty(&Terminal, &inside, nullptr, nullptr, &Window) != 0) {
            throw std::runtime_error("cannot make a terminal");
        }
        ModesAtFirst = Modes();
        // What is buffered must not come out twice.
        std::fflush(nullptr);
        Child = fork();
        if (Child == 0) {
            close(Terminal);
            close(pipeEnds[0]);
            login_tty(inside);
            _exit(Body([fd = pipeEnds[1]](const std::string& Word) { SendReport(fd, Word); }));
        }
        close(inside);
        close(pipeEnds[1]);
        Reports = pipeEnds[0];
        if (Child < 0) {
            throw std::runtime_error("cannot make a process");
        }
    }

    ~ForkedInTerminal() {
        HangUp();
        close(Reports);
        if (!bEnded) {
            kill(Child, SIGKILL);
            waitpid(Child, nullptr, 0);
        }
    }
    ForkedInTerminal(const ForkedInTerminal&) = delete;
    ForkedInTerminal& operator=(const ForkedInTerminal&) = delete;

    // The next word that Body reports; empty when there will be none.
    std::string NextReport() {
        std::string word;
        char byte = 0;
        while (true) {
            pollfd event{Reports, POLLIN, 0};
            if (poll(&event, 1, kLimitMilliseconds) <= 0) {
                throw std::runtime_error("the process in the terminal reports nothing");
            }
            if (read(Reports, &byte, 1) <= 0 || byte == '\n') {
                return word;
            }
            word += byte;
        }
    }

    void Type(std::string_view Keys) {
        if (write(Terminal, Keys.data(), Keys.size()) != static_cast<ssize_t>(Keys.size())) {
            throw std::runtime_error("cannot type");
        }
    }

    termios Modes() const {
        termios modes{};
        tcgetattr(Terminal, &modes);
        return modes;
    }

    // Whether nobody has changed the modes, or whoever did has changed them back.
    bool HasModesAsAtFirst() const {
        const termios now = Modes();
        return now.c_iflag == ModesAtFirst.c_iflag && now.c_oflag == ModesAtFirst.c_oflag &&
               now.c_cflag == ModesAtFirst.c_cflag && now.c_lflag == ModesAtFirst.c_lflag &&
               std::equal(std::begin(now.c_cc), std::end(now.c_cc), std::begin(ModesAtFirst.c_cc));
    }

    // What comes out on the terminal until the process has ended.
    std::string Output() {
        std::string output;
        std::array<char, 4096> bytes;
        pollfd event{Terminal, POLLIN, 0};
        while (poll(&event, 1, kLimitMilliseconds) > 0) {
            const ssize_t count = read(Terminal, bytes.data(), bytes.size());
            if (count <= 0) {
                return output;
            }
            output.append(bytes.data(), static_cast<std::size_t>(count));
        }
        throw std::runtime_error("the process in the terminal does not end");
    }

    // Closes the terminal under the process.
    void HangUp() {
        if (Terminal >= 0) {
            close(Terminal);
            Terminal = -1;
        }
    }

    // The status that waitpid gives when the process ends.
    int WaitForEnd() {
        int status = 0;
        for (int waited = 0; waited < kLimitMilliseconds; ++waited) {
            if (waitpid(Child, &status, WNOHANG) == Child) {
                bEnded = true;
                return status;
            }
            usleep(1000);
        }
        throw std::runtime_error("the process in the terminal does not end");
    }

private:
    static constexpr int kLimitMilliseconds = 20000;

    static void SendReport(int Fd, const std::string& Word) {
        const std::string line = Word + "\n";
        if (write(Fd, line.data(), line.size()) < 0) {
            _exit(99);
        }
    }

    pid_t Child = -1;
    int Terminal = -1;
    int Reports = -1;
    bool bEnded = false;
    termios ModesAtFirst{};
};

// Waits, for at most about 20 seconds, until standard input holds a byte that nobody has read.
// Outside key mode only lines with their Enter count.
inline void WaitForTypedBytes() {
    int count = 0;
    for (int polls = 0; polls < 20000 && count == 0; ++polls) {
        usleep(1000);
        ioctl(STDIN_FILENO, FIONREAD, &count);
    }
}
