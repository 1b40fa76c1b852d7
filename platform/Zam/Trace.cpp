#include "Zam/Trace.h"

#include <unistd.h>
#include <cstdlib>
#include <string>

namespace Zam {

namespace {

constexpr U16 allLevels = 0x3ff;

U16 levelBits(std::string_view digits) noexcept {
   U16 bits = 0;
   for (char const c : digits) {
      if (c >= '0' && c <= '9') {
         bits = static_cast<U16>(bits | (1U << (c - '0')));
      }
   }
   return bits;
}

}  // namespace

U16 traceLevels(std::string_view setting, std::string_view source) noexcept {
   U16 levels = 0;
   while (!setting.empty()) {
      auto const item = setting.substr(0, setting.find(','));
      setting.remove_prefix(std::min(setting.size(), item.size() + 1));
      auto const equals = item.find('=');
      auto const name = item.substr(0, equals);
      if (name == "*" || name == source) {
         levels = static_cast<U16>(levels |
                                   (equals == std::string_view::npos ? allLevels : levelBits(item.substr(equals + 1))));
      }
   }
   return levels;
}

TraceHandle::TraceHandle(char const* source) noexcept : source_(source), levels_(0) {
   if (char const* const setting = std::getenv("ZAM_TRACE"); setting != nullptr) {
      levelsIs(traceLevels(setting, source));
   }
}

void TraceHandle::write(char const* function, std::string_view text) const noexcept {
   std::string line(source_);
   line.append(" ").append(function).append(": ").append(text).append("\n");
   // One write keeps a line whole among other writers; a trace that cannot be written is lost, nothing else.
   [[maybe_unused]] auto const written = ::write(STDERR_FILENO, line.data(), line.size());
}

}  // namespace Zam
