#pragma once

#include <string>
#include <string_view>

namespace state {

// Where a text stops being JSON, as "line 3, column 14"; empty for a text that is JSON as far as this can tell. For
// people: the parser itself only says that something is wrong. Columns count bytes, from 1.
std::string whereNotJson(std::string_view text);

}  // namespace state
