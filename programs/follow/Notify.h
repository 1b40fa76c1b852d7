#pragma once

#include <string_view>

namespace follow {

// Tells the service manager that started this process, if one did: "READY=1" and the like, a line each.
void notifySystem(std::string_view state);

}  // namespace follow
