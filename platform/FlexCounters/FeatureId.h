#pragma once

#include "Zam/Export.h"
#include "Zam/Int.h"
#include "Zam/Strep.h"

#include <array>
#include <string>

namespace FlexCounters {

// What the counters of a table are for. Of the many users of flexible counters only those with a reader here are named.
enum class FeatureId : U32 { nexthopGroup = 27 };

constexpr auto zamEnumerators(FeatureId) {
   return std::to_array<Zam::Enumerator<FeatureId>>({{FeatureId::nexthopGroup, "nexthopGroup"}});
}

// As the feature's tables are called: its name, or its number when it has none.
inline std::string stringValue(FeatureId featureId) {
   return Zam::valueToStrep(featureId);
}

}  // namespace FlexCounters
