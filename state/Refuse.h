#pragma once

#include "Hive/EntityManager.h"

#include <string>

namespace state {

// What is wrong with a place, in one line.
[[noreturn]] inline void refuse(std::string const& place, std::string const& why) {
   throw Hive::StateError(place + ": " + why);
}

}  // namespace state
