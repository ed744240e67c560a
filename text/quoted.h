// How messages show a path or a word: 'x'.

#pragma once

#include <string>
#include <string_view>

inline std::string Quoted(std::string_view Text) {
    return '\'' + std::string(Text) + '\'';
}
