#pragma once

#include "Hive/EntityManager.h"
#include "Vault/Error.h"
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
      throwFor(place, own, error);
   } catch (Vault::TableFull const& error) {
      throwFor(place, own, error);
   }
}

}  // namespace state
