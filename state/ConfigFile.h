#pragma once

#include "Zam/NewFile.h"
#include "state/Export.h"
#include "state/State.h"

#include <optional>
#include <string>
#include <string_view>
#include <system_error>

// The configuration of a state directory: a file of its own beside what the agents write, because commands change it.
namespace state {

inline constexpr char const* configFile = "config.json";
// Only its owner may open it, so nobody else can keep writers waiting. It holds the number of the process that has it.
inline constexpr char const* lockFile = ".lock";

// Which directory is in a place: another load puts another one there.
class KIV_STATE_EXPORT StateDirId {
 public:
   // Of no directory when there is none.
   explicit StateDirId(std::string const& stateDir);
   explicit StateDirId(int descriptor);
   bool operator==(StateDirId const&) const = default;

 private:
   U64 device_ = 0;
   U64 inode_ = 0;
};

// Hive::StateError for a link that somebody may have made to have us change what is elsewhere.
void refuseLinkOfOthers(std::string const& stateDir);

// The right to change the files of a state directory, which only its owner can have. Whoever wants it waits for whoever
// has it; it goes with the object, or with its process. It is about the directory that is in the place now, not about
// one that was there before.
class KIV_STATE_EXPORT StateDirLock {
 public:
   // Hive::StateError when there is no such state directory or it is another user's, SigIntException when interrupted.
   explicit StateDirLock(std::string const& stateDir);

   // Of the directory.
   int descriptor() const { return dir_->number; }

 private:
   struct Descriptor {
      explicit Descriptor(int opened) noexcept : number(opened) {}
      Descriptor(Descriptor const&) = delete;
      Descriptor& operator=(Descriptor const&) = delete;
      ~Descriptor();

      int number;
   };

   std::optional<Descriptor> dir_;
   std::optional<Descriptor> lock_;
};

// For the whole process: who has waited two seconds for a lock tells in one line who has it.
KIV_STATE_EXPORT void waitTellerIs(void (*teller)(std::string_view line)) noexcept;

// A change of the configuration: read when it is made, and written at commit(), in one step. Whatever happens between,
// the configuration is the old one or the new one. Changes wait for each other, so none is lost.
class KIV_STATE_EXPORT ConfigChange {
 public:
   explicit ConfigChange(std::string const& stateDir);

   // What the agents wrote, and the configuration, to be changed in place.
   State& state() { return state_; }
   void commit();

   // The two halves of commit(): the new configuration beside its place, and then in it.
   void writeBeside();
   void putInPlace();

 private:
   [[noreturn]] void fail(std::system_error const& error) const;

   std::string stateDir_;
   StateDirLock lock_;
   State state_;
   std::optional<Zam::NewFile> beside_;
};

}  // namespace state
