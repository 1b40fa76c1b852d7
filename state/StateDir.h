#pragma once

#include "Hive/EntityManager.h"
#include "state/Export.h"
#include "state/State.h"

#include <memory>
#include <string>

// State into shared tables. What fails is a Hive::StateError, Vault::MountError or Vault::TableFull of one line.
namespace state {

class NewDir;

// Where the entities that are not shared tables are kept in a state directory.
inline constexpr char const* entitiesFile = "entities.json";

// Writes the tables of a state into a fresh state directory, each as large as the state needs.
KIV_STATE_EXPORT void writeTables(State const& state, Hive::EntityManager const& manager);

// Makes `stateDir` hold this state and nothing else. It is written beside its place and then put there in one step:
// whatever fails, the place is as it was. A directory that is there is replaced when it is a state directory or empty,
// and left alone otherwise, as is one of another user. Readers of an earlier state keep what they have mounted; a
// change of its configuration that is under way is waited for.
KIV_STATE_EXPORT void writeStateDir(State const& state, std::string const& stateDir);

// Removes what killed processes of this user left behind: half-made directories beside the place, files in it, and
// private directories. How many there were. A load removes the directories before it begins, a writer the files of its
// table.
KIV_STATE_EXPORT U32 removeLeftovers(std::string const& stateDir);

// What a state directory holds beside its tables, all of one load.
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
   std::unique_ptr<NewDir> dir_;
   std::string path_;
};

}  // namespace state
