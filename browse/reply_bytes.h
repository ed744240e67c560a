// Taking the reply of a process apart.

#pragma once

#include "worker_process.h"

#include <cstddef>
#include <optional>
#include <string_view>

// The next Length bytes; nothing when there are fewer.
inline std::optional<std::string_view> Take(std::string_view& Rest, std::size_t Length) {
    if (Length > Rest.size()) {
        return std::nullopt;
    }
    const std::string_view taken = Rest.substr(0, Length);
    Rest.remove_prefix(Length);
    return taken;
}

template <typename Value>
std::optional<Value> TakeValue(std::string_view& Rest) {
    const std::optional<std::string_view> bytes = Take(Rest, sizeof(Value));
    return bytes ? FromReply<Value>(*bytes) : std::nullopt;
}
