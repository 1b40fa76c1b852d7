#pragma once

#include "Hive/EntityManager.h"
#include "state/Snapshot.h"

#include <filesystem>
#include <string>

// State into shared tables. What fails is a Hive::StateError, Vault::MountError or Vault::TableFull of one line.
namespace state {

// Where the entities that are not shared tables are kept in a state directory.
inline constexpr std::string_view entitiesFile = "entities.json";

// Writes the tables of a state into a fresh state directory.
KIV_STATE_EXPORT void writeTables(State const& state, Hive::EntityManager const& manager);

// Makes `stateDir` hold this state and nothing else. It is written beside its place and then put there in one step:
// whatever fails, the place is as it was. A directory that is there is replaced when it is a state directory or empty,
// and left alone otherwise. Readers of an earlier state keep what they have mounted; a change of its configuration that
// is under way is waited for.
KIV_STATE_EXPORT void writeStateDir(State const& state, std::string const& stateDir);

// What a state directory holds beside its tables.
KIV_STATE_EXPORT State readStateDir(std::string const& stateDir);

// A state directory for one process, in memory where there is /dev/shm. It goes with this object; what was mounted from
// it stays mounted.
class KIV_STATE_EXPORT PrivateStateDir {
 public:
   PrivateStateDir();
   ~PrivateStateDir();
   PrivateStateDir(PrivateStateDir const&) = delete;
   PrivateStateDir& operator=(PrivateStateDir const&) = delete;

   std::string const& path() const { return path_; }

 private:
   std::string path_;
};

}  // namespace state
