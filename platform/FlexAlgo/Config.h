#pragma once

#include "Zam/Export.h"
#include "Zam/Int.h"
#include "Zam/OrderedMap.h"
#include "Zam/Ptr.h"
#include "Zam/String.h"

namespace FlexAlgo {

// The number of a flexible algorithm, 128 to 255.
using AlgorithmId = U8;

// The flexible algorithms that are configured, by number, with the name of each. Written by the configuration.
class KIV_EXPORT Config final : public Zam::PtrInterface {
 public:
   using AlgorithmNames = Zam::OrderedMap<AlgorithmId, Zam::String>;

   std::string_view fwkType() const noexcept override { return "FlexAlgo::Config"; }

   AlgorithmNames const& algorithmName() const noexcept { return algorithmName_; }
   // Null when there is no such algorithm.
   Zam::String const* algorithmName(AlgorithmId id) const { return algorithmName_.find(id); }
   void algorithmNameIs(AlgorithmId id, Zam::String name) { algorithmName_.insertOrReplace(id, std::move(name)); }
   void algorithmNameDel(AlgorithmId id) { algorithmName_.erase(id); }

 private:
   AlgorithmNames algorithmName_;
};

}  // namespace FlexAlgo
