#pragma once

#include <cstdint>
#include <cstdlib>
#include <span>

// The places where foreign bytes come in. Each target takes any bytes and ends the process when what it calls does
// anything but answer or refuse: by a signal, a sanitizer, an exception that nobody declared, or an answer that
// contradicts another one. The fuzzer looks for such bytes; the tests replay what it found worth keeping in corpus/.
namespace fuzz {

using Input = std::span<std::uint8_t const>;

// Patches of a sound table file, which is then read and written.
void table(Input input);
void snapshot(Input input);
// One word a line.
void commandLine(Input input);
// Dumps and notifications, each behind a byte that says which it is and two that say how long it is.
void rtnetlink(Input input);

struct Target {
   char const* name;
   void (*run)(Input input);
};
inline constexpr Target targets[] = {
    {"table", table}, {"snapshot", snapshot}, {"commandLine", commandLine}, {"rtnetlink", rtnetlink}};

// Ends the process when something cannot be.
inline void must(bool condition) {
   if (!condition) {
      std::abort();
   }
}

}  // namespace fuzz
