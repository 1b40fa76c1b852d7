#include "Zam/String.h"
#include "Zam/Trace.h"

#include <iostream>

// A stranger's program: it knows only what is installed.
int main() {
   Zam::TraceHandle const trace("consumer");
   try {
      Zam::BoundedString<3> const tooLong("four");
      return 1;
   } catch (Zam::RangeError const& error) {
      std::cout << error.what() << '\n';
   }
   return 0;
}
