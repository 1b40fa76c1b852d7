#pragma once

#include "Zam/OrderedMap.h"
#include "Zam/Ptr.h"
#include "Zam/String.h"

namespace Zam {

// An entity that is a named directory of entities. Iterates over {key, value} pairs of name and entity in name order.
template <class T>
class Dir : public PtrInterface {
 public:
   std::string_view fwkType() const noexcept override { return "Zam::Dir"; }

   // Null when there is none of that name.
   Ptr<T const> entity(String const& name) const {
      auto const* const found = entities_.find(name);
      return found != nullptr ? Ptr<T const>(*found) : nullptr;
   }
   void entityIs(String const& name, Ptr<T> entity) { entities_.insertOrReplace(name, std::move(entity)); }
   void entityDel(String const& name) { entities_.erase(name); }
   void entityDelAll() { entities_.clear(); }

   std::size_t size() const { return entities_.size(); }
   auto begin() const { return entities_.begin(); }
   auto end() const { return entities_.end(); }

 private:
   OrderedMap<String, Ptr<T>> entities_;
};

}  // namespace Zam
