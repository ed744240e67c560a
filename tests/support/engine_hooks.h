// Moments inside the engine at which a test can look or act, and system errors that no real file
// system gives on demand. All of them sit at the link: the engine's calls of the host and of the
// file-system library reach a hook first.
//
// Requires: the executable wraps ENGINE_HOOKS of tests/engine/CMakeLists.txt, and links
// engine_hooks.cpp and tarvane_host.

#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <system_error>

// What a call fails with; no error lets the real one run.
using CallHook = std::function<std::error_code(const std::filesystem::path&)>;

// The hooks of one test, in place for the lifetime of the object; one object at a time. An empty
// hook does nothing. Hooks run on the thread that makes the call, and only that thread may set them
// while the engine runs.
class EngineHooks {
public:
    EngineHooks();
    ~EngineHooks();
    EngineHooks(const EngineHooks&) = delete;
    EngineHooks& operator=(const EngineHooks&) = delete;

    // The engine asks whether Path is an audio-CD path: while scanning an item, then before copying
    // any path.
    std::function<void(const std::string& Path)> PathMet;
    // The engine has found the source of a copy and compares it with the destination. Must not
    // throw.
    std::function<void(const std::filesystem::path& Source)> PathsCompared;
    // The sound of a successful end. Must not throw.
    std::function<void()> SoundPlayed;

    // The engine asks whether the device of a destination is removable, which it has just opened.
    std::function<void()> DeviceProbed;

    // Calls by the engine of the file-system library, or of the system where it has the same.
    CallHook Status;
    // The form that throws.
    CallHook ThrowingStatus;
    CallHook SymlinkStatus;
    CallHook FileSize;
    CallHook Rename;
    // The status of an entry of an open directory.
    CallHook EntryStatus;
    // Going on to the next entry of a directory; the path is the name of the entry that is left.
    CallHook Advance;
};
