// A system call that a test relies on.

#pragma once

#include <cerrno>
#include <string>
#include <system_error>

// Errors: throws std::system_error with the errno where the result is not 0.
inline void RequireSuccess(int Result, const std::string& What) {
    if (Result != 0) {
        throw std::system_error(errno, std::generic_category(), What);
    }
}
