#pragma once

#include "Hive/EntityManager.h"
#include "state/Export.h"
#include "state/LiveStatus.h"
#include "state/State.h"

#include <memory>
#include <string>

namespace state {

// A state directory that a daemon keeps: made, or taken over from an earlier daemon with the tables that are there, and
// held until the object goes. What is in no table (interfaces, VRFs, tunnels) is a file that is replaced whole, so that
// readers find the old or the new. A fresh directory is none for readers until published().
//
// Hive::StateError for a directory that somebody else keeps, that was loaded, or that is none of a state.
class KIV_STATE_EXPORT LiveDir {
 public:
   LiveDir(std::string stateDir, std::string_view source);
   ~LiveDir();
   LiveDir(LiveDir const&) = delete;
   LiveDir& operator=(LiveDir const&) = delete;

   Zam::Ptr<Hive::EntityManager const> const& manager() const { return manager_; }
   LiveStatus& status() { return status_.value(); }

   // Whether the tables are empty, instead of an earlier daemon's.
   bool isFresh() const { return isFresh_; }
   // Empties it, whatever is there.
   void startAnew();
   // What the directory had beside its tables when it was taken over.
   State earlierEntities() const;

   // All that is in no table. Static routes that do not outlast a restart are those of `state`, the others stay as
   // commands have configured them. A VRF has its tables before it comes, and until it has gone.
   void entitiesAre(State const& state);
   void published();
   // Whether the directory is still in its place.
   bool isInPlace() const;

 private:
   void wipe() const;
   void writeText(char const* name, std::string const& text) const;
   void configIs(State const& state, State const& others) const;

   std::string stateDir_;
   LiveStatusFile status_;
   Zam::Ptr<Hive::EntityManager const> manager_;
   bool isFresh_ = false;
   State entities_;  // as they were written last
   std::string entitiesText_;
};

}  // namespace state
