// What an exception says that was caught where nothing could be opened.

#pragma once

#include <exception>
#include <string>

// Empty when there is none. Call it when descriptors are to be had again; see
// no_descriptors_left.h.
inline std::string TextOf(const std::exception_ptr& Failure) {
    if (Failure == nullptr) {
        return {};
    }
    try {
        std::rethrow_exception(Failure);
    } catch (const std::exception& error) {
        return error.what();
    }
}
