#include "Kiv/routedisplay/ViaTexts.h"

#include <string>

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

}  // namespace

Zam::String interfaceText(CachedVia const& via) {
   return via.intfId.isNamed() ? Zam::String(via.intfId.name()) : Zam::String(via.intfId.stringValue());
}

template <class Family>
void prepareViaTexts(RouteSorterOf<Family> const& sorter, CachedFec& fec) {
   auto const& in = sorter.inputs();
   fec.vrfId.clear();
   fec.vrfName.clear();
   fec.interfaceDescription.clear();
   fec.weightText.clear();
   U16 index = 0;
   for (auto const& [via, present] : fec.via()) {
      fec.nexthopAddr.insertOrReplace(index, nexthopText<Family>(via));
      fec.interface.insertOrReplace(index, interfaceText(via));
      if (via.vrfId != Vrf::VrfIdMap::noVrf && via.vrfId != in.vrfId) {
         fec.vrfId.insertOrReplace(index, via.vrfId);
         fec.vrfName.insertOrReplace(index, via.vrfName);
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
