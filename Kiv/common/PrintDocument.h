#pragma once

#include "Zam/Int.h"
#include "cliprint/Interrupt.h"
#include "cliprint/RendererV2.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

// What every operation that prints has in common.
namespace Kiv {

// Loops that print many entries flush when the buffer is fuller than this, in per cent, so that a large table streams.
inline constexpr U32 flushThreshold = 66;

// Flushes when the buffer is fuller than the threshold. False when nobody takes the output any more.
inline bool streams(cliprint::RendererV2& renderer) {
   if (renderer.isFullerThan(flushThreshold)) {
      renderer.ioflush();
   }
   return renderer.error() == 0;
}

// Tells on standard output that it ended, unless whoever reads that is the one that the output was waiting for.
inline void tellInterrupt(cliprint::SigIntException const& interrupt) {
   pollfd output{.fd = STDOUT_FILENO, .events = POLLOUT, .revents = 0};
   if (::poll(&output, 1, 0) == 1 && output.revents == POLLOUT) {
      cliprint::CliPrintBuffer line(STDOUT_FILENO);
      line.append("exiting ");
      line.append(interrupt.what());
      line.append("\n");
      line.ioflush();
   }
}

// `walk` writes one document on a renderer over `fd`. Returns 0 when all of it was written, otherwise why not: EINTR
// for the user's interrupt, after which the next operation starts afresh, or the errno of the write that failed.
template <class Walk>
int printDocument(U32 fd, U32 fmt, Walk const& walk) {
   cliprint::CliPrintBuffer buffer(static_cast<int>(fd));
   try {
      constexpr bool ownsDocument = true;
      auto const renderer = Zam::makePtr<cliprint::RendererV2>(fmt, buffer, ownsDocument);
      walk(*renderer);
      renderer->endDocument();
      renderer->ioflush();
   } catch (cliprint::SigIntException const& e) {
      cliprint::resetInterrupted();
      tellInterrupt(e);
      return EINTR;
   }
   return buffer.error();
}

}  // namespace Kiv
