#pragma once

#include "FlexCounters/CounterTable.h"
#include "Hive/EntityManager.h"
#include "Kiv/nexthopgroup/CounterEntry.h"
#include "NexthopGroup/NexthopGroupEntryToCounterKeyTable.h"

#include <vector>

namespace Kiv {

// What the entries of nexthop groups have carried since the counters were last cleared. A table that is missing is an
// empty one; damage reads as nothing found and is reported to the table that has it.
class KIV_EXPORT NexthopGroupCounterHelper final : public Zam::PtrInterface {
 public:
   using NexthopGroupId = Routing::NexthopGroup::NexthopGroupId;
   using CounterKeyTable = Zam::Ptr<Routing::NexthopGroup::NexthopGroupEntryToCounterKeyTable const>;
   using CounterTable = Zam::Ptr<FlexCounters::CounterTable const>;

   ~NexthopGroupCounterHelper() override;
   std::string_view fwkType() const noexcept override;

   // Attaches the three tables of all units. One that is damaged beyond mounting is left out.
   void mountCounterVaults(Zam::Ptr<Hive::EntityManager const> const& entityManager);

   // What is wrong with the tables that could not be mounted, a line each.
   std::vector<Zam::String> const& mountErrors() const noexcept { return mountErrors_; }

   // Nothing, that is zeros, for an entry without a counter. Current minus snapshot as unsigned numbers: a snapshot
   // that is ahead, or one of a counter that is gone, makes the difference wrap.
   CounterEntry getCounters(NexthopGroupId groupId, U32 entry) const;
   // The entry's counter; the default when it has none.
   CounterIndex counterIndex(NexthopGroupId groupId, U32 entry) const;

   CounterKeyTable const& counterKeyTable() const noexcept { return counterKeyTable_; }
   void counterKeyTableIs(CounterKeyTable table) noexcept { counterKeyTable_ = std::move(table); }
   CounterTable const& counterTable() const noexcept { return counterTable_; }
   void counterTableIs(CounterTable table) noexcept { counterTable_ = std::move(table); }
   CounterTable const& snapshotTable() const noexcept { return snapshotTable_; }
   void snapshotTableIs(CounterTable table) noexcept { snapshotTable_ = std::move(table); }

 private:
   // False when what is at the path cannot be mounted.
   template <class Table>
   bool mount(Zam::Ptr<Table const>& table, Hive::EntityManager const& manager, std::string_view path,
              std::string_view type);

   CounterKeyTable counterKeyTable_;
   CounterTable counterTable_;
   CounterTable snapshotTable_;
   bool isCounterTableReadable_ = true;
   std::vector<Zam::String> mountErrors_;
};

KIV_EXPORT Zam::Ptr<NexthopGroupCounterHelper> nexthopGroupCounterHelperFactory();

// The factory under the name by which the type runtime creates.
inline constexpr auto* NexthopGroupCounterHelperIs = &nexthopGroupCounterHelperFactory;

}  // namespace Kiv
