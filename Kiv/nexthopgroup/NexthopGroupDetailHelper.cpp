#include "Kiv/nexthopgroup/NexthopGroupDetailHelper.h"

#include "Kiv/KivCliPrint.h"
#include "Kiv/common/PrintDocument.h"
#include "Kiv/common/SafeLookup.h"
#include "Kiv/common/Trace.h"
#include "Kiv/common/Watchdog.h"
#include "Kiv/nexthopgroup/NexthopGroupSize.h"
#include "Kiv/nexthopgroup/NexthopGroupTypeStrings.h"
#include "Kiv/nexthopgroup/PrintOperation.h"
#include "Kiv/nexthopgroup/WalkYielding.h"
#include "Tunnel/CliSupport/CachedTunVia.h"
#include "Tunnel/CliSupport/Weights.h"
#include "cliprint/JsonScope.h"

#include <string>

namespace Kiv {

namespace {

using cliprint::Attr32Info;
using cliprint::Attr64Info;
using cliprint::HardwareProgrammedAttrInfo;
using cliprint::JsonScope;
using cliprint::RendererV2;
using cliprint::StringAttrInfo;
using Routing::NexthopGroup::NexthopGroupConfigEntry;
using Routing::NexthopGroup::NexthopGroupEntry;
using Routing::NexthopGroup::NexthopGroupId;
using Routing::NexthopGroup::NexthopGroupType;
using Tunnel::IpEncapType;

IpEncapType encapType(NexthopGroupType type) {
   switch (type) {
      case NexthopGroupType::invalid:
      case NexthopGroupType::mpls:
      case NexthopGroupType::ip:
         break;
      case NexthopGroupType::ipInIp:
         return IpEncapType::ipInIp;
      case NexthopGroupType::gre:
      case NexthopGroupType::mplsOverGre:
         return IpEncapType::gre;
      case NexthopGroupType::mplsOverUdp:
         return IpEncapType::udp;
      case NexthopGroupType::vxlan:
         return IpEncapType::vxlan;
   }
   return IpEncapType::none;
}

// The outer header that the entry puts on; none without a destination.
Tunnel::CliSupport::CachedIpTunnelInfo tunnelOf(NexthopGroupType type, NexthopGroupEntry const& entry) {
   return Tunnel::CliSupport::CachedIpTunnelInfo(
       {{},
        entry.tunnelDestination.isEmpty() ? IpEncapType::none : encapType(type),
        entry.tunnelSource,
        entry.tunnelDestination,
        entry.tunnelKey});
}

// Of the entries of a group, 0 while all have the weight 1.
U64 weightSum(NexthopGroupConfigEntry::Entries const& entries) {
   U64 sum = 0;
   for (auto const& [index, entry] : entries) {
      sum += entry.weight;
   }
   return sum == entries.size() ? 0 : sum;
}

class DetailRendering {
 public:
   DetailRendering(NexthopGroupDetailHelper const& in, RendererV2& renderer)
       : in_(in),
         renderer_(renderer),
         vrfStatus_(in.nhgHwStatus ? in.nhgHwStatus->vrfStatus(in.vrfName) : nullptr),
         maxSize_(in.routingHwStatus ? in.routingHwStatus->maxNexthopGroupSize() : 0) {}

   void print() {
      renderer_.addFrills("* - not programmed in hardware\n\n      Entry %20s %20s\n", "Packets", "Bytes");
      auto const groups = JsonScope::object(renderer_, "nexthopGroups");
      if (!in_.nhgConfig) {
         return;
      }
      if (!in_.nhgName.empty()) {
         if (auto const group = in_.nhgConfig->nexthopGroup(in_.nhgName); group != nullptr) {
            printWanted(group);
         }
         return;
      }
      walkYielding(in_.nhgConfig->nexthopGroup(), walked_,
                   [this](Zam::String const&, auto const& group) { return printWanted(group); });
   }

 private:
   // What the lines of a group's entries need of it.
   struct Group {
      NexthopGroupConfigEntry const& config;
      NexthopGroupId id;
      U64 weightSum;
   };

   // False when nobody takes the output any more.
   bool printWanted(Zam::Ptr<NexthopGroupConfigEntry const> const& group) {
      auto const id = safeLookup(in_.nhgEntryStatus.get(),
                                 [&](auto const& ids) { return ids.nexthopGroupNameToId(group->name()); });
      return (in_.nhgId != 0 && in_.nhgId != id) ||
             printGroup({*group, id, weightSum(group->entry())}, getNhgSize(group, maxSize_));
   }

   bool printGroup(Group const& group, U32 groupSize) {
      StringAttrInfo const name("groupName", renderer_, group.config.name());
      auto const object = JsonScope::dictEntry(renderer_, name);
      addProgrammed(vrfStatus_ && vrfStatus_->programmed(group.id));
      renderer_.addFrills("%s", group.config.name());
      Attr32Info const id("groupId", renderer_, group.id);
      NexthopGroupTypeAttrInfo type("groupType", renderer_);
      type.setValue(group.config.type());
      Attr32Info const size("size", renderer_, groupSize);
      renderer_.addAttributes(", Nexthop Group ID %u, %s, size %u\n", id.getArg(), type.getArg(), size.getArg());
      auto const entries = JsonScope::object(renderer_, "entries");
      walkYielding(group.config.entry(), walked_, [&](U32 index, NexthopGroupEntry const& entry) {
         printEntry(group, index, entry);
         return streams(renderer_);
      });
      return streams(renderer_);
   }

   void printEntry(Group const& group, U32 index, NexthopGroupEntry const& entry) {
      Attr32Info const key("entry", renderer_, index);
      auto const object = JsonScope::dictEntry(renderer_, key);
      addProgrammed(vrfStatus_ && vrfStatus_->programmed(group.id, index));
      auto const counted = counters(group.id, index);
      Attr64Info const packets("packets", renderer_, counted.packets);
      Attr64Info const bytes("bytes", renderer_, counted.bytes);
      renderer_.addFrills("%10u", index);
      renderer_.addAttributes(" %20lu %20lu", packets.getArg(), bytes.getArg());
      printVia(group, entry);
      renderer_.addFrills("\n");
   }

   void addProgrammed(bool isProgrammed) {
      HardwareProgrammedAttrInfo programmed("hardwareProgrammed", renderer_);
      programmed.setValue(isProgrammed);
      renderer_.addAttributes("%s", programmed.getArg());
   }

   CounterEntry counters(NexthopGroupId groupId, U32 index) const {
      if (!in_.counterHelper) {
         return {};
      }
      if (!in_.counterInterface) {
         return in_.counterHelper->getCounters(groupId, index);
      }
      auto const counterIndex = in_.counterHelper->counterIndex(groupId, index);
      return Zam::isSet(counterIndex) ? in_.counterInterface->getCounters(counterIndex) : CounterEntry();
   }

   void printVia(Group const& group, NexthopGroupEntry const& entry) {
      auto const tunnel = tunnelOf(group.config.type(), entry);
      bool const hasHop = !entry.nextHop.isEmpty();
      bool const hasHopOrInterface = hasHop || entry.intfId.isValid();
      renderer_.addFrills("  %s", hasHopOrInterface || tunnel ? "via" : "no next hop");
      if (hasHop) {
         StringAttrInfo const nexthop("nexthopAddr", renderer_, entry.nextHop);
         renderer_.addAttributes(" %s", nexthop.getArg());
      }
      if (entry.intfId.isValid()) {
         StringAttrInfo const interface("interface", renderer_, entry.intfId);
         renderer_.addFrills("%s", hasHop ? ", " : " ");
         renderer_.addAttributes("%s", interface.getArg());
      }
      if (tunnel && !hasHopOrInterface) {
         renderer_.addFrills(" %s", tunnel.isIpInIp() ? "IP-in-IP encap" : "");
      }
      tunnel.print(renderer_, hasHopOrInterface);
      Tunnel::CliSupport::maybeAddLabelStackToOutput(renderer_, entry.labels, Lumen::MplsLabel());
      if (group.weightSum != 0) {
         StringAttrInfo const weight("viaWeight", renderer_,
                                     Tunnel::CliSupport::weightText(std::to_string(entry.weight), group.weightSum));
         renderer_.addAttributes(", weight %s", weight.getArg());
      }
   }

   NexthopGroupDetailHelper const& in_;
   RendererV2& renderer_;
   Zam::Ptr<Routing::Hardware::NexthopGroupVrfStatus const> vrfStatus_;
   U32 maxSize_;
   U32 walked_ = 0;
};

}  // namespace

bool NexthopGroupDetailHelper::render(U32 fd, U32 fmt) const {
   trace(8, "render", "void Kiv::NexthopGroupDetailHelper::render(U32, U32)");
   return printOperation(fd, fmt, [this](RendererV2& renderer) { DetailRendering(*this, renderer).print(); });
}

}  // namespace Kiv
