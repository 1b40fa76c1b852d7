#pragma once

namespace kiv {

// How the program ends. Scripts rely on the numbers; README and --help name them.
enum class ExitStatus : int {
   ok = 0,
   refused = 1,        // there is no such VRF, interface or nexthop group, the snapshot is wrong, the state directory
                       // cannot be used
   usage = 2,          // whatever the state, this is no command or option, or one with a wrong parameter
   internal = 3,       // damaged tables, or a fault of the program itself
   outputFailed = 4,   // the output could not be written; silent when its reader went away
   interrupted = 130,  // Ctrl-C
   terminated = 143,   // SIGTERM
};

}  // namespace kiv
