#pragma once

#include "Vault/Error.h"

#include <type_traits>

namespace Kiv {

// What the lookup finds in a shared table: its default value when the table is missing, or damaged where the lookup
// goes. Damage is reported to the table, and the command carries on with what it can read.
template <class Table, class Lookup>
std::invoke_result_t<Lookup, Table const&> safeLookup(Table const* table, Lookup&& lookup) {
   if (table == nullptr) {
      return {};
   }
   try {
      return lookup(*table);
   } catch (Vault::CorruptionError const& e) {
      table->corruptionIs(e.what());
      return {};
   }
}

}  // namespace Kiv
