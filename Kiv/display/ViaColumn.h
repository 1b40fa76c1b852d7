#pragma once

#include "Kiv/display/FecDisplay.h"
#include "Kiv/fecs/CachedFec.h"

#include <algorithm>
#include <memory>
#include <optional>

namespace Kiv {

// One column over the vias of a FEC, as scripts read it: by position, with gaps where a via has no such value. It shows
// the FEC as it is at each moment, and keeps it alive.
template <class T>
class ViaColumn {
 public:
   using ValueOf = std::optional<T> (*)(CachedFec const&, FecDisplay&, U32 position);
   struct value_type {
      U32 key;
      T value;
   };

   ViaColumn(Zam::Ptr<CachedFec const> fec, ValueOf valueOf)
       : fec_(std::move(fec)),
         display_(std::make_shared<FecDisplay>(fec_->store())),
         valueOf_(valueOf) {}

   std::optional<T> find(U32 position) const {
      return position < end() ? valueOf_(*fec_, *display_, position) : std::nullopt;
   }
   std::size_t size() const {
      std::size_t count = 0;
      forEach([&count](auto const&) { ++count; });
      return count;
   }
   // Calls `visit(value_type const&)` in the order of the positions.
   template <class Visit>
   void forEach(Visit&& visit) const {
      for (U32 position = 0; position < end(); ++position) {
         if (auto value = valueOf_(*fec_, *display_, position)) {
            visit(value_type{position, std::move(*value)});
         }
      }
   }

 private:
   // Positions in the FEC's own table go as far, those of vias that were added or removed left out.
   U32 end() const noexcept { return std::max(fec_->vias(), U32{fec_->record().tableVias}); }

   Zam::Ptr<CachedFec const> fec_;
   std::shared_ptr<FecDisplay> display_;
   ValueOf valueOf_;
};

}  // namespace Kiv
