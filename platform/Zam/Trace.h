#pragma once

#include "Zam/Export.h"
#include "Zam/Int.h"

#include <atomic>
#include <sstream>
#include <string_view>

// Diagnostics, never output: lines "source function: text" on stderr. A source and level that is off costs one test.
// The environment variable ZAM_TRACE switches on, as a comma-separated list of SOURCE or SOURCE=LEVELS, where LEVELS
// are digits and SOURCE may be "*": ZAM_TRACE='Kiv/CliSupport=089' kiv show ip route
namespace Zam {

class KIV_EXPORT TraceHandle {
 public:
   explicit TraceHandle(char const* source) noexcept;

   bool enabled(U8 level) const noexcept { return ((levels_.load(std::memory_order_relaxed) >> level) & 1U) != 0; }
   // One bit per level 0 to 9.
   void levelsIs(U16 levels) noexcept { levels_.store(levels, std::memory_order_relaxed); }

   template <class... Parts>
   void operator()(U8 level, char const* function, Parts const&... parts) const {
      if (enabled(level)) [[unlikely]] {
         std::ostringstream text;
         (text << ... << parts);
         write(function, text.view());
      }
   }

 private:
   void write(char const* function, std::string_view text) const noexcept;

   char const* source_;
   std::atomic<U16> levels_;
};

// The bits of `levels` that a ZAM_TRACE value switches on for a source.
KIV_EXPORT U16 traceLevels(std::string_view setting, std::string_view source) noexcept;

}  // namespace Zam
