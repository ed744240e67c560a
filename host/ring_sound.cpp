#include "ring_sound.h"

#include "completion_bell.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>

#ifdef TARVANE_HAS_CANBERRA
#include <canberra.h>
#include <dlfcn.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace {

using SteadyClock = std::chrono::steady_clock;

// Set when a transfer completes and taken back when its sound plays.
std::atomic<bool> gBellDue{false};

// True while a thread is in StartSound, which a sound server that hangs may keep for ever.
std::atomic<bool> gSoundStarting{false};

// From when on the bell no longer waits for that thread.
std::atomic<SteadyClock::time_point> gStartEnd{};

constexpr std::chrono::milliseconds kStartLimit{100};
constexpr std::chrono::milliseconds kStartPoll{5};

#ifdef TARVANE_HAS_CANBERRA

// Whether the sound server of this user listens on this machine. A remote user would not hear it,
// and the sound library complains on standard error about another user's directory.
bool SoundServerCanBeExpected() {
    const char* const runtimeDirectory = std::getenv("XDG_RUNTIME_DIR");
    if (std::getenv("SSH_CONNECTION") != nullptr || runtimeDirectory == nullptr) {
        return false;
    }
    const std::string serverSocket = std::string(runtimeDirectory) + "/pulse/native";
    struct stat status {};
    return ::stat(runtimeDirectory, &status) == 0 && status.st_uid == ::geteuid() &&
           ::stat(serverSocket.c_str(), &status) == 0 && S_ISSOCK(status.st_mode);
}

struct SoundLibrary {
    decltype(ca_context_create)* Create = nullptr;
    decltype(ca_context_set_driver)* SetDriver = nullptr;
    decltype(ca_context_open)* Open = nullptr;
    decltype(ca_context_play)* Play = nullptr;
    decltype(ca_context_destroy)* Destroy = nullptr;
};

template <typename Function>
bool FindFunction(void* Library, const char* Name, Function*& Out) {
    Out = reinterpret_cast<Function*>(dlsym(Library, Name));
    return Out != nullptr;
}

// Loaded only for a sound: with the six libraries behind it, it would take a seventh of the time
// of every short run.
std::optional<SoundLibrary> LoadSoundLibrary() {
    void* const file = dlopen("libcanberra.so.0", RTLD_NOW);
    SoundLibrary library;
    if (file == nullptr || !FindFunction(file, "ca_context_create", library.Create) ||
        !FindFunction(file, "ca_context_set_driver", library.SetDriver) ||
        !FindFunction(file, "ca_context_open", library.Open) ||
        !FindFunction(file, "ca_context_play", library.Play) ||
        !FindFunction(file, "ca_context_destroy", library.Destroy)) {
        return std::nullopt;
    }
    return library;
}

ca_context* OpenContext(const SoundLibrary& Library) {
    ca_context* context = nullptr;
    if (Library.Create(&context) != CA_SUCCESS) {
        return nullptr;
    }
    // The other drivers open the sound card themselves and print when there is none.
    if (Library.SetDriver(context, "pulse") == CA_SUCCESS && Library.Open(context) == CA_SUCCESS) {
        return context;
    }
    Library.Destroy(context);
    return nullptr;
}

// The connection stays open: the sound goes on after this returns, and the next one needs it again.
//
// Threads: one at a time, which gSoundStarting sees to.
bool StartSound() {
    static std::optional<SoundLibrary> library;
    static ca_context* context = nullptr;
    if (context == nullptr && (library = LoadSoundLibrary())) {
        context = OpenContext(*library);
    }
    if (context == nullptr) {
        return false;
    }
    if (library->Play(context, 0, CA_PROP_EVENT_ID, "complete-copy", CA_PROP_EVENT_DESCRIPTION,
                      "Transfer completed", nullptr) == CA_SUCCESS) {
        return true;
    }
    library->Destroy(context);
    context = nullptr;
    return false;
}

#else

bool SoundServerCanBeExpected() {
    return false;
}

bool StartSound() {
    return false;
}

#endif

void ReplaceBellBySound() {
    if (StartSound()) {
        gBellDue = false;
    }
    gSoundStarting = false;
}

bool MayStillSound() {
    return gSoundStarting && SteadyClock::now() < gStartEnd.load();
}

} // namespace

void PlayTarvaneTransferCompleteSound() noexcept {
    bool bStarting = false;
    try {
        bStarting = SoundServerCanBeExpected() && !gSoundStarting.exchange(true);
        gStartEnd = SteadyClock::now() + kStartLimit;
        gBellDue = true;
        if (bStarting) {
            std::thread(ReplaceBellBySound).detach();
        }
    } catch (...) {
        // No memory or no thread for the sound.
        gBellDue = true;
        if (bStarting) {
            gSoundStarting = false;
        }
    }
}

bool TakeTarvaneCompletionBell() noexcept {
    return !MayStillSound() && gBellDue.exchange(false);
}

bool AwaitTarvaneCompletionBell() noexcept {
    while (gBellDue && MayStillSound()) {
        std::this_thread::sleep_for(kStartPoll);
    }
    return TakeTarvaneCompletionBell();
}
