#include "Kiv/routedisplay/ViaTexts.h"

#include <string>
#include <utility>

namespace Kiv {

namespace {

// The address, or the family's zero address for a via whose destination is on its own link.
template <class Family>
Zam::String nexthopText(CachedVia const& via) {
   if (!via.hop.isEmpty()) {
      return via.hop.stringValue();
   }
   return via.intfId.isNamed() ? typename Family::Addr().stringValue() : std::string();
}

// The VRF that the via leads to: the one that it forwards into, or its interface's.
template <class Family>
std::pair<Vrf::VrfIdMap::VrfId, L3::VrfName> egressVrf(RouteSorterOf<Family> const& sorter, CachedVia const& via) {
   if (!via.isForwardingVrfAction()) {
      return {via.vrfId, via.vrfName};
   }
   auto const& vrfIdMap = sorter.inputs().vrfIdMap;
   auto const* const name = vrfIdMap ? vrfIdMap->vrfName(via.forwardingVrf()) : nullptr;
   return {via.forwardingVrf(), name != nullptr ? *name : L3::VrfName("unknown")};
}

}  // namespace

Zam::String interfaceText(CachedVia const& via) {
   if (via.isForwardingVrfAction()) {
      return {};
   }
   return via.intfId.isNamed() ? Zam::String(via.intfId.name()) : Zam::String(via.intfId.stringValue());
}

template <class Family>
void prepareViaTexts(RouteSorterOf<Family> const& sorter, CachedFec& fec) {
   auto const& in = sorter.inputs();
   fec.nexthopAddr.clear();
   fec.interface.clear();
   fec.vrfId.clear();
   fec.vrfName.clear();
   fec.interfaceDescription.clear();
   fec.weightText.clear();
   U16 index = 0;
   for (auto const& [via, present] : fec.via()) {
      fec.nexthopAddr.insertOrReplace(index, nexthopText<Family>(via));
      fec.interface.insertOrReplace(index, interfaceText(via));
      if (auto const egress = egressVrf(sorter, via);
          egress.first != Vrf::VrfIdMap::noVrf && egress.first != in.vrfId) {
         fec.vrfId.insertOrReplace(index, egress.first);
         fec.vrfName.insertOrReplace(index, egress.second);
      }
      if (in.allIntfConfig && !in.allIntfConfig->description(via.intfId).empty()) {
         fec.interfaceDescription.insertOrReplace(index, in.allIntfConfig->description(via.intfId));
      }
      if (!via.viaWeight.empty()) {
         fec.weightText.insertOrReplace(index, via.viaWeight.bytes() + "/" + std::to_string(fec.weightSum));
      }
      ++index;
   }
   fec.textsPrepared = true;
}

template void prepareViaTexts(RouteSorterOf<Ipv4> const&, CachedFec&);
template void prepareViaTexts(RouteSorterOf<Ipv6> const&, CachedFec&);

}  // namespace Kiv
