#pragma once

#include "Zam/Int.h"

#include <map>
#include <set>
#include <utility>

namespace kernel {

// Numbers from 1 for values. Equal values share one, counted by use, and keep it from reading to reading as long as a
// reading uses them; what none uses any more gives its number back, the lowest of which comes first.
template <class Value>
class StableIds {
 public:
   // Counts a use in this reading; the second is whether it is the value's first one.
   std::pair<U64, bool> use(Value const& value) {
      auto const [place, isNew] = entries_.try_emplace(value);
      Entry& entry = place->second;
      if (isNew) {
         entry.id = lowestFree();
      }
      return {entry.id, entry.uses++ == 0};
   }

   // Between two readings: forgets what the one that ends here did not use, and begins to count for the next.
   void nextReading() {
      for (auto entry = entries_.begin(); entry != entries_.end();) {
         if (std::exchange(entry->second.uses, 0) != 0) {
            ++entry;
         } else {
            free_.insert(entry->second.id);
            entry = entries_.erase(entry);
         }
      }
   }

 private:
   struct Entry {
      U64 id = 0;
      U64 uses = 0;
   };

   U64 lowestFree() { return free_.empty() ? ++last_ : free_.extract(free_.begin()).value(); }

   std::map<Value, Entry> entries_;
   std::set<U64> free_;
   U64 last_ = 0;
};

}  // namespace kernel
