#include "programs/kiv/Output.h"

#include "cliprint/CliPrintBuffer.h"
#include "cliprint/Interrupt.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iostream>
#include <string>

namespace kiv {

void report(std::string_view message) {
   std::string line = "kiv: " + std::string(message);
   std::ranges::replace_if(
       line, [](unsigned char c) { return c < ' ' || c == 0x7f; }, '?');
   std::cerr << line + '\n';
}

ExitStatus writeOutput(std::string_view text) {
   cliprint::CliPrintBuffer buffer(STDOUT_FILENO);
   buffer.append(text);
   buffer.ioflush();
   if (cliprint::interrupted()) {
      return ExitStatus::interrupted;
   }
   return buffer.error() == 0 ? ExitStatus::ok : outputFailed(buffer.error());
}

ExitStatus outputFailed(int error) {
   if (error != EPIPE) {
      report(std::string("standard output: ") + std::strerror(error));
   }
   return ExitStatus::outputFailed;
}

}  // namespace kiv
