#pragma once

#include "programs/kernel/Records.h"
#include "programs/kernel/Topology.h"
#include "state/State.h"

#include <map>
#include <tuple>
#include <unordered_map>

namespace follow {

// Values under ids that are not used again: equal ones once, until nobody uses them any more.
template <class Value, class Key>
class CountedIds {
 public:
   struct Known {
      Value value{};
      Key key{};
      U64 uses = 0;
   };

   void adopt(U64 id, Value value, Key key) {
      last_ = std::max(last_, id);
      if (byKey_.emplace(key, id).second) {
         known_.emplace(id, Known{std::move(value), std::move(key)});
      }
   }
   // The second tells whether it is new.
   std::pair<U64, bool> idOf(Value const& value, Key const& key) {
      auto const [place, isNew] = byKey_.try_emplace(key, last_ + 1);
      if (isNew) {
         known_.emplace(++last_, Known{value, key});
      }
      return {place->second, isNew};
   }
   Known& at(U64 id) { return known_.at(id); }
   bool has(U64 id) const { return known_.contains(id); }
   void erase(U64 id) {
      byKey_.erase(known_.at(id).key);
      known_.erase(id);
   }
   std::map<U64, Known> const& all() const { return known_; }

 private:
   std::map<U64, Known> known_;
   std::map<Key, U64> byKey_;
   U64 last_ = 0;
};

// The tunnels and label stacks of next hops with an encapsulation. Those that no FEC uses any more go.
class Encaps {
 public:
   // With those that an earlier daemon left, none of them in use.
   explicit Encaps(state::State const& earlier);

   // The tunnel of the next hop, 0 when it needs none.
   Tunnel::TunnelId tunnelOf(kernel::Hop const& hop, kernel::Topology const& topology);
   void used(Tunnel::TunnelId tunnelId);
   void released(Tunnel::TunnelId tunnelId);

   // Whether any has come or gone since this was asked last.
   bool takeChanged() { return std::exchange(isChanged_, false); }
   void putInto(state::State& state) const;

 private:
   using Entry = Tunnel::TunnelFib::Entry;
   using EntryKey = std::tuple<Tunnel::IpEncapType, Lumen::IpGenAddr, Lumen::IpGenAddr, U32, U8, U8, Lumen::IntfId,
                               Lumen::IpGenAddr, Tunnel::TunnelFib::EncapId>;
   static EntryKey keyOf(Entry const& entry);

   CountedIds<Entry, EntryKey> tunnels_;
   CountedIds<Lumen::MplsLabelOperation, Lumen::MplsLabelOperation> labelStacks_;
   bool isChanged_ = false;
};

}  // namespace follow
