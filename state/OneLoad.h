#pragma once

#include "Hive/EntityManager.h"
#include "Vault/Error.h"
#include "state/ConfigFile.h"
#include "state/Interrupts.h"

#include <string>

namespace state {

// What the directory holds beside its tables.
State readStateIn(Hive::EntityManager const& manager);

// The result of act(manager of the directory): once more when another state was loaded into the place meanwhile, so
// that all of it is of one load. Hive::StateError when there is no state directory.
template <class Act>
auto ofOneLoad(std::string const& stateDir, Act&& act) {
   while (true) {
      endWhenInterrupted();
      auto const manager = Zam::makePtr<Hive::EntityManager>(stateDir);
      try {
         auto result = act(manager);
         if (StateDirId(manager->directory()) == StateDirId(stateDir)) {
            return result;
         }
      } catch (std::exception const&) {
         if (StateDirId(manager->directory()) == StateDirId(stateDir)) {
            throw;
         }
      }
   }
}

// What goes wrong in a directory of our own is told of the place that it is for.
template <class Error>
[[noreturn]] void throwFor(std::string const& place, std::string const& own, Error const& error) {
   std::string text = error.what();
   bool const isOwn = text.starts_with(own);
   throw Error(isOwn ? place + text.substr(own.size()) : text);
}

template <class Act>
void toldOf(std::string const& place, std::string const& own, Act&& act) {
   try {
      act();
   } catch (Hive::StateError const& error) {
      throwFor(place, own, error);
   } catch (Vault::MountError const& error) {
      throwFor(place, own, Hive::StateError(error.what()));  // of our own tables: nothing is damaged
   } catch (Vault::TableFull const& error) {
      throwFor(place, own, error);
   }
}

}  // namespace state
