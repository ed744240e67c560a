// What somebody may have meant who has typed an unknown word.

#pragma once

#include <span>
#include <string>
#include <string_view>

// The one of Known that is nearest to Typed, so near that it may be a slip of the fingers: in a
// short word one letter too many, too few, wrong or in its neighbour's place, in a long one two.
// Empty when none is.
std::string NearestWord(std::string_view Typed, std::span<const std::string_view> Known);
