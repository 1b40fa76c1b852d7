#include "programs/command/Age.h"

#include "state/LiveStatus.h"

#include <array>
#include <cstdio>
#include <ctime>
#include <string_view>

namespace kiv {
namespace {

constexpr U64 perSecond = 1'000'000'000;

struct Unit {
   std::string_view name;
   U64 seconds;
};
constexpr std::array units{Unit{" d", 86400}, Unit{" h", 3600}, Unit{" min", 60}, Unit{" s", 1}};

}  // namespace

std::string ageText(U64 moment) {
   U64 const now = state::systemTime();
   U64 const age = now > moment ? now - moment : 0;
   U64 const seconds = age / perSecond;
   if (seconds < 10) {
      return std::to_string(seconds) + "." + std::to_string(age / (perSecond / 10) % 10) + " s";
   }
   std::size_t at = 0;
   while (units[at].seconds > seconds) {
      ++at;
   }
   std::string text = std::to_string(seconds / units[at].seconds) + std::string(units[at].name);
   if (at + 1 < units.size()) {
      U64 const rest = seconds % units[at].seconds / units[at + 1].seconds;
      text += " " + std::to_string(rest) + std::string(units[at + 1].name);
   }
   return text;
}

std::string momentText(U64 moment) {
   auto const seconds = static_cast<std::time_t>(moment / perSecond);
   std::tm parts{};
   ::gmtime_r(&seconds, &parts);
   std::array<char, 40> text{};
   std::size_t const length = std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &parts);
   std::snprintf(text.data() + length, text.size() - length, ".%03uZ",
                 static_cast<unsigned>(moment / (perSecond / 1000) % 1000));
   return text.data();
}

}  // namespace kiv
