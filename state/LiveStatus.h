#pragma once

#include "Zam/Int.h"
#include "state/Export.h"

#include <array>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

namespace state {

// What the daemon that keeps a state directory tells of itself. Times are nanoseconds of the system's clock, 0 for
// never.
struct LiveStatus {
   static constexpr U64 magicNumber = 0x31657669'6c76696bU;

   U64 magic = magicNumber;
   U64 pid = 0;
   U64 networkNamespace = 0;  // whose forwarding it is
   U64 started = 0;
   U64 lastSeen = 0;    // alive, to a second or two
   U64 lastChange = 0;  // of any route or entity
   U64 stopped = 0;
   U64 changes = 0;     // of routes that were written
   U64 dumpsAgain = 0;  // readings of the whole source after the first
   U64 audits = 0;      // comparisons of the tables with the source
   U64 drift = 0;       // differences that they found
   std::array<char, 64> source{};

   std::string_view sourceText() const { return {source.data(), strnlen(source.data(), source.size())}; }
};

// A file of the directory that its daemon has mapped, so that telling costs nothing, and locked.
class KIV_STATE_EXPORT LiveStatusFile {
 public:
   static constexpr char const* name = "follower";

   // Hive::StateError that names `stateDir` when another process has it.
   LiveStatusFile(int dir, std::string const& stateDir);
   ~LiveStatusFile();
   LiveStatusFile(LiveStatusFile const&) = delete;
   LiveStatusFile& operator=(LiveStatusFile const&) = delete;

   LiveStatus& value() { return *status_; }

 private:
   int fd_ = -1;
   LiveStatus* status_ = nullptr;
};

struct LiveState {
   LiveStatus status{};
   bool isKept = false;  // its daemon lives
};

// Of the state directory; nothing of one that no daemon has kept.
KIV_STATE_EXPORT std::optional<LiveState> liveStateOf(std::string const& stateDir);
KIV_STATE_EXPORT U64 systemTime() noexcept;
// What tells the network namespace of this thread from others.
KIV_STATE_EXPORT U64 networkNamespace() noexcept;

}  // namespace state
