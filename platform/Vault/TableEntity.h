#pragma once

#include "Vault/TableWriter.h"
#include "Zam/Ptr.h"

#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace Vault {

// What the entities around a table have in common. `Core` is Table or TableWriter of the entity's records.
//
// A handle to a mounted table is to const; the hook is set through it all the same, because it belongs to the reader
// and not to the table.
template <class Core>
class TableEntity : public Zam::PtrInterface {
 public:
   // The table that is there, for a reader or for its next writer.
   explicit TableEntity(Place place) : core_(std::move(place)) {}
   // For a writer, a new one in its place.
   TableEntity(Place place, TableFile::Sizes sizes,
               When when = When::now) requires std::is_constructible_v<Core, Place, TableFile::Sizes, When>
       : core_(std::move(place), sizes, when) {}
   void putInPlace() requires requires(Core& core) { core.putInPlace(); }
   { core_.putInPlace(); }
   // Whether a writer's table may grow when it is full, which it may until it is told otherwise.
   void growingIs(bool growing) requires requires(Core& core) { core.growingIs(growing); }
   { core_.growingIs(growing); }

   // Whether there is nothing in the table at all: one load.
   bool empty() const { return core_.empty(); }
   std::string const& path() const noexcept { return core_.file().path(); }
   // Entries that were passed over because they were being written and did not come to rest.
   U64 vanished() const noexcept { return core_.file().vanished(); }
   // What damage has cost this reader so far: slots that were looked at for nothing, and rounds of waiting.
   U64 stepsInVain() const noexcept { return core_.file().stepsInVain(); }

   // Damage that a walk met and passed over. By default it is traced at level 0; the last message is remembered.
   void corruptionIs(std::string_view message) const { core_.file().corruptionIs(message); }
   void corruptionHookIs(TableFile::CorruptionHook hook) const { core_.file().corruptionHookIs(std::move(hook)); }
   std::string const& corruption() const noexcept { return core_.file().corruption(); }
   U64 corruptions() const noexcept { return core_.file().corruptions(); }

 protected:
   Core core_;
};

}  // namespace Vault
