#pragma once

#include <string>
#include <string_view>

namespace kiv {

// A text that stays on its line and does nothing to a terminal: the bytes of control characters, of what turns the
// direction of text and of what is no UTF-8 are written \xNN. What would be longer than `most` bytes ends in "...".
std::string printable(std::string_view text, std::size_t most);

}  // namespace kiv
