// A file system whose server does what no kernel's own would: it fails, waits, and lies about
// sizes.

#pragma once

#include "mounts.h"
#include "owned_descriptor.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <linux/fuse.h>

// One directory of files in memory. Needs root and /dev/fuse.
//
// Requires: a mount namespace of the test's own.
// Threads: every method may be called at any time.
class FaultyFileSystem {
public:
    struct File {
        std::string Bytes;
        // What is told instead of the number of bytes.
        std::optional<std::uint64_t> ToldSizeBytes = {};
    };
    // Files by their names, which may be longer than other file systems take.
    using Files = std::map<std::string, File>;
    // Called before a request is answered, with one of the FUSE_ constants: 0 answers as usual,
    // another errno fails the request. It may wait, and whoever asks waits with it.
    using Fault = std::function<int(std::uint32_t Operation)>;

    // A mount point that is missing is created.
    explicit FaultyFileSystem(const std::filesystem::path& Where, Files AtFirst = {},
                              Fault Failing = {});
    // Fails what is still asked for.
    ~FaultyFileSystem();
    FaultyFileSystem(const FaultyFileSystem&) = delete;
    FaultyFileSystem& operator=(const FaultyFileSystem&) = delete;

    const std::filesystem::path& Path() const { return Mount.Path(); }
    // The names that are there, which asks nobody but the server.
    std::set<std::string> Names() const;

private:
    struct Request;

    void Serve();
    void Answer(const Request& Asked);
    void AnswerByName(const Request& Asked);
    void AnswerByNumber(const Request& Asked, File& Meant);
    void List(const Request& Asked) const;

    mutable std::mutex Mutex;
    Files Contents;
    // Each look-up gives a file another number: its place here.
    std::vector<std::string> NamesByNumber;
    const Fault WhatFails;
    // Closing it ends the file system, and what waits for it with an error.
    OwnedDescriptor Device;
    OwnedDescriptor Stop;
    ScopedMount Mount;
    std::thread Server;
};

// Fails the nth request of one kind and all that follow.
FaultyFileSystem::Fault FailsFrom(std::uint32_t Operation, int Nth, int Error);
