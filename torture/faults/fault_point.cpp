#include "fault_point.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>

namespace {

constexpr std::array<std::string_view, 22> kKindNames{
    "open",    "read",  "write", "stat",  "mkdir",     "unlink", "rmdir",  "rename",
    "readdir", "ioctl", "close", "chmod", "utimensat", "alloc",  "thread", "eventfd",
    "fork",    "link",  "sync",  "wait",  "stream",    "print"};

// What is left in the file; the reader knows its layout.
struct FaultRecord {
    std::atomic<std::uint32_t> Calls;
    std::atomic<std::uint32_t> Reached;
    std::atomic<std::uint32_t> SurplusCloses;
    std::array<char, 500> Detail;
};

struct Rule {
    bool bAny = false;
    Kind Of = Kind::Open;
    std::uint32_t Number = 0;
    Effect What = Effect::None;
    int Value = 0;
};

Rule gRule;
FaultRecord* gRecord = nullptr;
pid_t gFirstProcess = 0;
std::atomic<bool> gCountsEverywhere{false};
// Allocating memory for it could itself be the call that is counted.
[[gnu::tls_model("initial-exec")]] thread_local bool gCountsHere = false;
[[gnu::tls_model("initial-exec")]] thread_local bool gInCall = false;

bool Concerns(Kind Of) {
    return gRecord != nullptr && (gCountsEverywhere || gCountsHere) &&
           (gRule.bAny ? Of != Kind::Alloc && Of != Kind::Wait : Of == gRule.Of);
}

void NoteReached(Kind Of, const char* Function, const char* Path) {
    gRecord->Reached = 1;
    std::array<char, 500>& detail = gRecord->Detail;
    const std::string_view kind = kKindNames[static_cast<std::size_t>(Of)];
    std::size_t length = 0;
    for (const std::string_view part : {kind, std::string_view(" "), std::string_view(Function),
                                        std::string_view(" "), std::string_view(Path)}) {
        const std::size_t fits = std::min(part.size(), detail.size() - length);
        std::memcpy(detail.data() + length, part.data(), fits);
        length += fits;
    }
}

void CancelTheJob() {
    gCountsHere = false;
    reinterpret_cast<void (*)()>(dlsym(RTLD_DEFAULT, "CancelJob"))();
    gCountsHere = true;
}

void ReadRule() {
    const char* const text = std::getenv("FAULT");
    const char* const file = std::getenv("FAULT_RECORD");
    std::array<char, 32> kind{};
    std::array<char, 32> effect{};
    if (text == nullptr || file == nullptr ||
        std::sscanf(text, "%31s %u %31s %d", kind.data(), &gRule.Number, effect.data(),
                    &gRule.Value) < 3) {
        return;
    }
    gRule.bAny = std::string_view(kind.data()) == "any";
    const auto* const found =
        std::find(kKindNames.begin(), kKindNames.end(), std::string_view(kind.data()));
    const std::string_view what(effect.data());
    if (what == "short") {
        gRule.What = Effect::Short;
    } else if (what == "cancel") {
        gRule.What = Effect::Cancel;
    } else if (what == "signal") {
        gRule.What = Effect::Signal;
    } else {
        gRule.What = what.ends_with('+') ? Effect::ErrorsFromThenOn : Effect::Error;
        gRule.Value = std::atoi(effect.data());
    }
    if (!gRule.bAny && found == kKindNames.end()) {
        std::abort();
    }
    gRule.Of = static_cast<Kind>(found - kKindNames.begin());
    const int descriptor = ::open(file, O_RDWR | O_CLOEXEC);
    void* const memory =
        ::mmap(nullptr, sizeof(FaultRecord), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    if (memory == MAP_FAILED) {
        std::abort();
    }
    ::close(descriptor);
    gFirstProcess = ::getpid();
    gRecord = static_cast<FaultRecord*>(memory);
}

} // namespace

Call::Call() : bOutermost(!gInCall) {
    gInCall = true;
}

Call::~Call() {
    if (bOutermost) {
        gInCall = false;
    }
}

Effect Call::EffectOf(Kind Of, const char* Function, const char* Path) const {
    if (!bOutermost || !Concerns(Of)) {
        return Effect::None;
    }
    const std::uint32_t number = ++gRecord->Calls;
    if (number == gRule.Number) {
        NoteReached(Of, Function, Path);
        return gRule.What;
    }
    return number > gRule.Number && gRule.What == Effect::ErrorsFromThenOn ? gRule.What
                                                                           : Effect::None;
}

bool Passes(Effect What) {
    switch (What) {
    case Effect::Error:
    case Effect::ErrorsFromThenOn:
        errno = gRule.Value;
        return false;
    case Effect::Signal:
        ::kill(gFirstProcess, gRule.Value);
        return true;
    case Effect::Cancel:
        CancelTheJob();
        return true;
    case Effect::Short:
    case Effect::None:
        break;
    }
    return true;
}

std::size_t Shortened(Effect What, std::size_t Size) {
    return What == Effect::Short ? std::max<std::size_t>(Size / 2, 1) : Size;
}

void NoteSurplusClose() {
    if (gRecord != nullptr) {
        ++gRecord->SurplusCloses;
    }
}

void BeginToCount() {
    ReadRule();
    gCountsEverywhere = dlsym(RTLD_DEFAULT, "CancelJob") == nullptr;
}

extern "C" [[gnu::visibility("default")]] void CountCalls(bool bCounts) {
    gCountsHere = bCounts;
}
