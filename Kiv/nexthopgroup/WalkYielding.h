#pragma once

#include "Kiv/common/Watchdog.h"
#include "Zam/CollectionPlace.h"

namespace Kiv {

// Calls `visit(key, value)` for each element in order until it returns false, and lets others run between them, who may
// change the map: what they take away is not visited, what they add behind the walk is.
template <class Map, class Visit>
void walkYielding(Map const& map, U32& walked, Visit const& visit) {
   Zam::Place<Map> place(map);
   for (auto const* element = place.next(map); element != nullptr; element = place.next(map)) {
      auto const [key, value] = *element;  // its own, which holds it
      if (!visit(key, value)) {
         return;
      }
      allowWatchdog(walked);
   }
}

}  // namespace Kiv
