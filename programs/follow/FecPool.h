#pragma once

#include "Hive/EntityManager.h"
#include "Zam/Hash.h"
#include "programs/follow/Encaps.h"
#include "programs/follow/Families.h"

#include <algorithm>
#include <chrono>
#include <deque>
#include <optional>
#include <unordered_map>
#include <vector>

namespace follow {

using Time = std::chrono::steady_clock::time_point;

// The FECs of one family: equal next hops once, counted by the routes that use them. Ids are not used again. A FEC is
// written before the first route that uses it, and stays for a while behind the last one, since a reader may have read
// that route and look for its FEC only then.
template <class Family>
class FecPool {
 public:
   using Vias = std::vector<Vault::Fib::Via>;

   // With the FECs that the table has, none of them in use.
   FecPool(Hive::EntityManager const& manager, Encaps& encaps)
       : writer_(manager.open<typename Family::FecWriter>(Family::fecPath)),
         encaps_(encaps) {
      writer_->walk([&](auto const& fec) {
         last_ = std::max(last_, fec.fecId.id());
         add(fec.fecId, fec.vias);
      });
   }

   // Those in use are counted from here on; whatever is not goes after a while.
   void counted(Time now) {
      for (auto& [id, entry] : byId_) {
         if (entry.uses == 0) {
            entry.unusedSince = now;
            unused_.push_back({id, now});
         }
      }
   }

   // The FEC of these vias, which is in the table when writeNew() has been called. The caller uses or releases it.
   Vault::Fib::FecId idOf(Vias const& vias) {
      std::size_t const hash = hashOf(vias);
      auto const [first, end] = byHash_.equal_range(hash);
      auto const known = std::find_if(first, end, [&](auto const& at) { return byId_.at(at.second).vias == vias; });
      if (known != end) {
         return Vault::Fib::FecId(known->second);
      }
      auto const fecId = Vault::Fib::FecId::of(Family::adjType, ++last_);
      add(fecId, vias);
      new_.push_back(fecId);
      return fecId;
   }

   void writeNew() {
      for (Vault::Fib::FecId const fecId : new_) {
         auto const& vias = byId_.at(fecId.value()).vias;
         writer_->fecIs({.fecId = fecId, .primaryVias = static_cast<U16>(vias.size()), .vias = vias});
      }
      new_.clear();
   }

   bool has(Vault::Fib::FecId fecId) const { return byId_.contains(fecId.value()); }
   Vias const* vias(Vault::Fib::FecId fecId) const {
      auto const found = byId_.find(fecId.value());
      return found != byId_.end() ? &found->second.vias : nullptr;
   }
   void used(Vault::Fib::FecId fecId) {
      if (auto const found = byId_.find(fecId.value()); found != byId_.end()) {
         ++found->second.uses;
      }
   }
   void released(Vault::Fib::FecId fecId, Time now) {
      if (auto const found = byId_.find(fecId.value()); found != byId_.end() && --found->second.uses == 0) {
         found->second.unusedSince = now;
         unused_.push_back({fecId.value(), now});
      }
   }

   // Takes out what has been unused long enough; when to call again.
   std::optional<Time> removeUnused(Time now) {
      for (; !unused_.empty() && unused_.front().since + grace <= now; unused_.pop_front()) {
         auto const found = byId_.find(unused_.front().fecId);
         bool const isUnused = found != byId_.end() && found->second.uses == 0;
         if (isUnused && found->second.unusedSince == unused_.front().since) {
            remove(found);
         }
      }
      return unused_.empty() ? std::nullopt : std::optional(unused_.front().since + grace);
   }

 private:
   static constexpr std::chrono::seconds grace{2};

   struct Entry {
      Vias vias{};
      U64 uses = 0;
      Time unusedSince{};
   };
   struct Unused {
      U64 fecId;
      Time since;
   };
   using ById = std::unordered_map<U64, Entry>;

   static std::size_t hashOf(Vias const& vias) {
      std::size_t hash = vias.size();
      for (auto const& via : vias) {
         hash = Zam::combinedHash(hash, via.intfId.hashValue(), via.hop.hashValue(), std::size_t{via.label.raw()},
                                  std::size_t{via.weight.raw()}, std::size_t{via.tunnelId});
      }
      return hash;
   }

   void add(Vault::Fib::FecId fecId, Vias const& vias) {
      byId_.emplace(fecId.value(), Entry{vias});
      byHash_.emplace(hashOf(vias), fecId.value());
      std::ranges::for_each(vias, [&](auto const& via) { encaps_.used(via.tunnelId); });
   }

   void remove(typename ById::iterator place) {
      auto const [first, end] = byHash_.equal_range(hashOf(place->second.vias));
      byHash_.erase(std::find_if(first, end, [&](auto const& at) { return at.second == place->first; }));
      writer_->fecDel(Vault::Fib::FecId(place->first));
      std::ranges::for_each(place->second.vias, [&](auto const& via) { encaps_.released(via.tunnelId); });
      byId_.erase(place);
   }

   Zam::Ptr<typename Family::FecWriter> writer_;
   Encaps& encaps_;
   ById byId_;
   std::unordered_multimap<std::size_t, U64> byHash_;
   std::vector<Vault::Fib::FecId> new_;
   std::deque<Unused> unused_;
   U64 last_ = 0;
};

}  // namespace follow
