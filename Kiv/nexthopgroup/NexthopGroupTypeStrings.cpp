#include "Kiv/nexthopgroup/NexthopGroupTypeStrings.h"

#include "Kiv/common/Trace.h"

#include <string>

namespace Kiv {

using Routing::NexthopGroup::NexthopGroupType;

std::string_view nexthopGroupTypeText(NexthopGroupType type) {
   switch (type) {
      case NexthopGroupType::invalid:
         break;
      case NexthopGroupType::ipInIp:
         return "IP in IP";
      case NexthopGroupType::gre:
         return "GRE";
      case NexthopGroupType::mpls:
         return "MPLS";
      case NexthopGroupType::ip:
         return "IP";
      case NexthopGroupType::mplsOverGre:
         return "MPLS over GRE";
      case NexthopGroupType::mplsOverUdp:
         return "MPLS over UDP";
      case NexthopGroupType::vxlan:
         return "VXLAN";
   }
   return "Invalid";
}

void NexthopGroupTypeAttrInfo::setValue(NexthopGroupType type) {
   std::string const name = Zam::valueToStrep(type);
   StringAttrInfo::setValue(byFormat(
       nexthopGroupTypeText(type), std::string_view(name),
       {traceSource, "void Kiv::NexthopGroupTypeAttrInfo::setValue(Routing::NexthopGroup::NexthopGroupType)"}));
}

}  // namespace Kiv
