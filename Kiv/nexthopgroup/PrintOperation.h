#pragma once

#include "Kiv/common/PrintDocument.h"
#include "Kiv/common/Trace.h"

namespace Kiv {

// A print operation of this subsystem: true when all of it was written, otherwise errno tells why.
template <class Walk>
bool printOperation(U32 fd, U32 fmt, Walk const& walk) {
   int const error = printDocument(fd, fmt, walk);
   trace(8, "render", "exiting render");
   errno = error;
   return error == 0;
}

}  // namespace Kiv
