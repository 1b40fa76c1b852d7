#pragma once

#include "Routing/NexthopGroup/NexthopGroupType.h"
#include "Zam/Export.h"
#include "cliprint/AttrInfo.h"

#include <string_view>

namespace Kiv {

// "IP in IP", "GRE", ...; "Invalid" for a number without a name.
KIV_EXPORT std::string_view nexthopGroupTypeText(Routing::NexthopGroup::NexthopGroupType type);

// That text, and in the model the enumerator's name.
class KIV_EXPORT NexthopGroupTypeAttrInfo : public cliprint::StringAttrInfo {
 public:
   using StringAttrInfo::StringAttrInfo;
   void setValue(Routing::NexthopGroup::NexthopGroupType type);
};

}  // namespace Kiv
