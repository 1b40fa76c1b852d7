#pragma once

#include "Zam/Int.h"
#include "cliprint/Interrupt.h"
#include "cliprint/RendererV2.h"

#include <cerrno>
#include <cstdio>

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
      std::printf("exiting %s\n", e.what());
      std::fflush(stdout);
      cliprint::resetInterrupted();
      return EINTR;
   }
   return buffer.error();
}

}  // namespace Kiv
