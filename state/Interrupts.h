#pragma once

#include "cliprint/Interrupt.h"

namespace state {

// For loops that print nothing: throws what ends the command when the user has interrupted it.
inline void endWhenInterrupted() {
   if (cliprint::interrupted()) [[unlikely]] {
      throw cliprint::SigIntException();
   }
}

}  // namespace state
