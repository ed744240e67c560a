// The sound or the bell of a finished transfer. The sound library's functions that talk to a sound
// server are replaced where they are looked up, except where the library's own silence is under
// test.

#include "completion_bell.h"
#include "ring_sound.h"

#include "becomes_true.h"
#include "captured_descriptor.h"
#include "fake_steady_clock.h"
#include "file_tree.h"
#include "needs.h"
#include "temporary_directory.h"

#include <atomic>
#include <chrono>
#include <cstdarg>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <thread>

#include <canberra.h>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace fs = std::filesystem;
using namespace std::chrono_literals;

namespace {

enum class Server {
    Plays,
    RefusesConnections,
    RefusesSounds,
    IsSlow,
    Hangs,
    Real,
    HasNoLibrary,
    HasAnotherLibrary,
};

std::atomic<Server> gServer{Server::Plays};
std::atomic<int> gConnections{0};
std::atomic<int> gSounds{0};
// The last sound's event, written before it is counted.
std::string gEvent;

int OpenAtServer(ca_context* Context) {
    ++gConnections;
    if (gServer == Server::Real) {
        return ca_context_open(Context);
    }
    if (gServer == Server::IsSlow) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    EXPECT_TRUE(BecomesTrue("the server answers", [] { return gServer != Server::Hangs; }));
    return gServer == Server::RefusesConnections ? CA_ERROR_NOTAVAILABLE : CA_SUCCESS;
}

int PlayAtServer(ca_context*, uint32_t Id, ...) {
    va_list properties;
    va_start(properties, Id);
    const std::string key = va_arg(properties, const char*);
    gEvent = key + "=" + va_arg(properties, const char*);
    va_end(properties);
    ++gSounds;
    return gServer == Server::RefusesSounds ? CA_ERROR_DISCONNECTED : CA_SUCCESS;
}

} // namespace

// The names that the linker gives to the functions that load a library and to what replaces them.
void* RealDlopen(const char* File, int Mode) asm("__real_dlopen");
void* RealDlsym(void* Library, const char* Name) asm("__real_dlsym");
void* WrappedDlopen(const char* File, int Mode) asm("__wrap_dlopen");
void* WrappedDlsym(void* Library, const char* Name) asm("__wrap_dlsym");

void* WrappedDlopen(const char* File, int Mode) {
    return gServer == Server::HasNoLibrary ? nullptr : RealDlopen(File, Mode);
}

void* WrappedDlsym(void* Library, const char* Name) {
    const std::string_view name = Name;
    if (name == "ca_context_open") {
        return reinterpret_cast<void*>(OpenAtServer);
    }
    if (name == "ca_context_play") {
        const bool bFound = gServer != Server::HasAnotherLibrary;
        return bFound ? reinterpret_cast<void*>(PlayAtServer) : nullptr;
    }
    return RealDlsym(Library, Name);
}

namespace {

// A user of this machine with the socket of a sound server.
class CompletionSound : public testing::Test {
protected:
    void SetUp() override {
        fs::create_directory(Runtime / "pulse");
        MakeSocket(Socket());
        ::setenv("XDG_RUNTIME_DIR", Runtime.Path().c_str(), 1);
        ::unsetenv("SSH_CONNECTION");
        gServer = Server::Plays;
        gConnections = 0;
        gSounds = 0;
    }

    void TearDown() override { ::unsetenv("XDG_RUNTIME_DIR"); }

    fs::path Socket() const { return Runtime / "pulse/native"; }

    // Returns when the server was asked for the sound.
    static void CompleteTransferWithSound() {
        const int before = gSounds;
        PlayTarvaneTransferCompleteSound();
        ASSERT_TRUE(BecomesTrue("the sound is asked for", [&] { return gSounds > before; }));
    }

    // The next transfer connects to the server.
    static void LoseConnection() {
        gServer = Server::RefusesSounds;
        CompleteTransferWithSound();
        EXPECT_TRUE(AwaitTarvaneCompletionBell());
        gConnections = 0;
        gSounds = 0;
    }

    // Rings, and does so without connecting to a server.
    static void ExpectBellAlone() {
        PlayTarvaneTransferCompleteSound();
        EXPECT_TRUE(AwaitTarvaneCompletionBell());
        EXPECT_EQ(gConnections, 0);
        EXPECT_EQ(gSounds, 0);
    }

    // Ends a hang.
    static void LetServerAnswer() {
        gServer = Server::Plays;
        EXPECT_TRUE(BecomesTrue("transfers have their sound again", [] {
            PlayTarvaneTransferCompleteSound();
            return !AwaitTarvaneCompletionBell() && gSounds > 1;
        }));
    }

    const TemporaryDirectory Runtime;
};

} // namespace

TEST_F(CompletionSound, RingsNoBellBeforeATransferCompletes) {
    EXPECT_FALSE(AwaitTarvaneCompletionBell());
}

TEST_F(CompletionSound, PlaysCompleteCopyInsteadOfTheBell) {
    CompleteTransferWithSound();
    EXPECT_FALSE(AwaitTarvaneCompletionBell());
    EXPECT_EQ(gEvent, "event.id=complete-copy");
}

TEST_F(CompletionSound, RingsTheBellWithoutARuntimeDirectory) {
    ::unsetenv("XDG_RUNTIME_DIR");
    ExpectBellAlone();
}

TEST_F(CompletionSound, RingsTheBellWhenTheRuntimeDirectoryIsMissing) {
    ::setenv("XDG_RUNTIME_DIR", (Runtime / "missing").c_str(), 1);
    ExpectBellAlone();
}

TEST_F(CompletionSound, RingsTheBellWithoutASocket) {
    fs::remove(Socket());
    ExpectBellAlone();
}

TEST_F(CompletionSound, RingsTheBellWhenAFileIsInTheSocketsPlace) {
    fs::remove(Socket());
    WriteFile(Socket(), "");
    ExpectBellAlone();
}

TEST_F(CompletionSound, RingsTheBellForARemoteUser) {
    ::setenv("SSH_CONNECTION", "192.0.2.1 50000 192.0.2.2 22", 1);
    ExpectBellAlone();
}

TEST_F(CompletionSound, RingsTheBellWhenTheRuntimeDirectoryIsAnotherUsers) {
    NeedRoot();
    ASSERT_EQ(::chown(Runtime.Path().c_str(), 65534, 65534), 0);
    ExpectBellAlone();
}

TEST_F(CompletionSound, RingsTheBellOnce) {
    ::unsetenv("XDG_RUNTIME_DIR");
    PlayTarvaneTransferCompleteSound();
    EXPECT_TRUE(AwaitTarvaneCompletionBell());
    EXPECT_FALSE(AwaitTarvaneCompletionBell());
}

TEST_F(CompletionSound, RingsOneBellForTransfersThatCompleteTogether) {
    ::unsetenv("XDG_RUNTIME_DIR");
    PlayTarvaneTransferCompleteSound();
    PlayTarvaneTransferCompleteSound();
    EXPECT_TRUE(AwaitTarvaneCompletionBell());
    EXPECT_FALSE(AwaitTarvaneCompletionBell());
}

TEST_F(CompletionSound, RingsTheBellWhenTheServerRefusesTheSound) {
    gServer = Server::RefusesSounds;
    CompleteTransferWithSound();
    EXPECT_TRUE(AwaitTarvaneCompletionBell());
}

TEST_F(CompletionSound, KeepsTheConnectionForTheNextTransfer) {
    CompleteTransferWithSound();
    EXPECT_FALSE(AwaitTarvaneCompletionBell());
    const int connections = gConnections;
    CompleteTransferWithSound();
    EXPECT_FALSE(AwaitTarvaneCompletionBell());
    EXPECT_EQ(gConnections, connections);
}

TEST_F(CompletionSound, ConnectsAnewAfterTheServerRefusedASound) {
    LoseConnection();
    gServer = Server::Plays;
    CompleteTransferWithSound();
    EXPECT_FALSE(AwaitTarvaneCompletionBell());
    EXPECT_EQ(gConnections, 1);
}

TEST_F(CompletionSound, RingsTheBellWhenTheServerRefusesTheConnection) {
    LoseConnection();
    gServer = Server::RefusesConnections;
    PlayTarvaneTransferCompleteSound();
    EXPECT_TRUE(AwaitTarvaneCompletionBell());
    EXPECT_EQ(gSounds, 0);
}

TEST_F(CompletionSound, RingsTheBellWithoutTheSoundLibrary) {
    LoseConnection();
    gServer = Server::HasNoLibrary;
    ExpectBellAlone();
}

TEST_F(CompletionSound, RingsTheBellWhenTheSoundLibraryLacksAFunction) {
    LoseConnection();
    gServer = Server::HasAnotherLibrary;
    ExpectBellAlone();
}

TEST_F(CompletionSound, WaitsWithTheBellForAServerThatIsSlow) {
    LoseConnection();
    gServer = Server::IsSlow;
    PlayTarvaneTransferCompleteSound();
    EXPECT_FALSE(AwaitTarvaneCompletionBell());
    EXPECT_EQ(gSounds, 1);
}

// Were the completion to wait for the server, it would not return before the server answers, which
// it does only after that.
TEST_F(CompletionSound, ReturnsAtOnceAndRingsTheBellWhileTheServerHangs) {
    LoseConnection();
    gServer = Server::Hangs;
    PlayTarvaneTransferCompleteSound();
    EXPECT_TRUE(AwaitTarvaneCompletionBell());
    PlayTarvaneTransferCompleteSound();
    EXPECT_TRUE(AwaitTarvaneCompletionBell());
    EXPECT_FALSE(AwaitTarvaneCompletionBell());
    EXPECT_EQ(gConnections, 1);
    LetServerAnswer();
}

TEST_F(CompletionSound, HoldsUpNobodyWhoTakesTheBell) {
    LoseConnection();
    gServer = Server::Hangs;
    {
        FakeSteadyClock clock;
        PlayTarvaneTransferCompleteSound();
        EXPECT_FALSE(TakeTarvaneCompletionBell());
        clock.Advance(99ms);
        EXPECT_FALSE(TakeTarvaneCompletionBell());
        clock.Advance(1ms);
        EXPECT_TRUE(TakeTarvaneCompletionBell());
        EXPECT_FALSE(TakeTarvaneCompletionBell());
    }
    LetServerAnswer();
}

// Of the library's drivers, one opens the sound card itself and prints where there is none.
TEST_F(CompletionSound, PrintsNothingWhenNoServerAnswersOnTheSocket) {
    LoseConnection();
    gServer = Server::Real;
    bool bRings = false;
    std::string output;
    std::string errors;
    {
        const CapturedDescriptor capturedOutput(STDOUT_FILENO);
        const CapturedDescriptor capturedErrors(STDERR_FILENO);
        PlayTarvaneTransferCompleteSound();
        bRings = AwaitTarvaneCompletionBell();
        output = capturedOutput.Text();
        errors = capturedErrors.Text();
    }
    EXPECT_TRUE(bRings);
    EXPECT_EQ(output, "");
    EXPECT_EQ(errors, "");
}
