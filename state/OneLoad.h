#pragma once

#include "Hive/EntityManager.h"
#include "Zam/NewFile.h"
#include "cliprint/Interrupt.h"
#include "state/ConfigFile.h"

#include <string>
#include <system_error>

namespace state {

// What the directory holds beside its tables; `stateDir` is its name in messages.
State readStateIn(int dir, std::string const& stateDir);

// The result of act(open directory): once more when another state was loaded into the place meanwhile, so that all of
// it is of one load. Hive::StateError when there is no state directory.
template <class Act>
auto ofOneLoad(std::string const& stateDir, Act&& act) {
   while (true) {
      if (cliprint::interrupted()) {
         throw cliprint::SigIntException();
      }
      Zam::makePtr<Hive::EntityManager>(stateDir);  // throws when it is no state directory
      Zam::Directory const dir(stateDir);
      try {
         auto result = act(dir.fd());
         if (StateDirId(dir.fd()) == StateDirId(stateDir)) {
            return result;
         }
      } catch (std::exception const&) {
         if (StateDirId(dir.fd()) == StateDirId(stateDir)) {
            throw;
         }
      }
   }
}

}  // namespace state
