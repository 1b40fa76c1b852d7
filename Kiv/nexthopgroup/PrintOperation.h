#pragma once

#include "Kiv/routedisplay/Trace.h"
#include "Zam/Int.h"
#include "cliprint/Interrupt.h"
#include "cliprint/RendererV2.h"

#include <cerrno>
#include <cstdio>

namespace Kiv {

// A print operation: `walk` writes one document on a renderer over `fd`. True when all of it was written. False
// otherwise, and errno tells why: EINTR for the user's interrupt, after which the next operation starts afresh, or the
// error of the write.
template <class Walk>
bool printOperation(U32 fd, U32 fmt, Walk const& walk) {
   cliprint::CliPrintBuffer buffer(static_cast<int>(fd));
   int error = 0;
   try {
      constexpr bool ownsDocument = true;
      auto const renderer = Zam::makePtr<cliprint::RendererV2>(fmt, buffer, ownsDocument);
      walk(*renderer);
      renderer->endDocument();
      renderer->ioflush();
      error = buffer.error();
   } catch (cliprint::SigIntException const& e) {
      std::printf("exiting %s\n", e.what());
      std::fflush(stdout);
      cliprint::resetInterrupted();
      error = EINTR;
   }
   trace(8, "render", "exiting render");
   errno = error;
   return error == 0;
}

}  // namespace Kiv
