// Finding words in texts that were written for people, as manual pages are.

#pragma once

#include <cstddef>
#include <regex>
#include <set>
#include <string>

// All that Pattern's first group matches in Text.
inline std::set<std::string> Matches(const std::string& Text, const std::string& Pattern) {
    const std::regex regex(Pattern);
    std::set<std::string> words;
    for (auto match = std::sregex_iterator(Text.begin(), Text.end(), regex);
         match != std::sregex_iterator(); ++match) {
        words.insert((*match)[1]);
    }
    return words;
}

// What begins with Start in Text, until End comes again or Text is over; empty where it does not.
inline std::string PartOf(const std::string& Text, const std::string& Start,
                          const std::string& End) {
    const std::size_t start = Text.find(Start);
    return start == std::string::npos ? "" : Text.substr(start, Text.find(End, start + 1) - start);
}

// A section of a manual page with its heading; empty where there is none.
inline std::string SectionOf(const std::string& Page, const std::string& Title) {
    return PartOf(Page, "\n.SH " + Title + "\n", "\n.SH ");
}
