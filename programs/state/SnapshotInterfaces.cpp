#include "programs/state/SnapshotContext.h"

#include "Routing/Rib/RouteCache/Evpn/ViaIndex.h"

#include <algorithm>

namespace state {
namespace {

struct InterfaceTarget {
   Context const& context;
   Interface interface {};
};

template <class AddrWithMask>
void readAddresses(Node const& list, std::vector<AddrWithMask>& addresses, std::string_view form) {
   list.forEachElement([&](Node const& node) {
      auto const address = node.parsed<AddrWithMask>(form);
      if (std::ranges::find(addresses, address) != addresses.end()) {
         node.fail("given twice");
      }
      addresses.push_back(address);
   });
}

constexpr auto interfaceMembers = std::to_array<Member<InterfaceTarget>>({
    {"description", [](Node const& n, InterfaceTarget& t) { t.interface.description = n.text(); }},
    {"vrf", [](Node const& n, InterfaceTarget& t) { t.interface.vrfId = t.context.vrf(n); }},
    {"loopback", [](Node const& n, InterfaceTarget& t) { t.interface.loopback = n.boolean(); }},
    {"linkUp", [](Node const& n, InterfaceTarget& t) { t.interface.linkUp = n.boolean(); }},
    {"ipv4", [](Node const& n,
                InterfaceTarget& t) { readAddresses(n, t.interface.addresses, "an IPv4 address with its length"); }},
    {"ipv6", [](Node const& n,
                InterfaceTarget& t) { readAddresses(n, t.interface.addresses6, "an IPv6 address with its length"); }},
    {"tunnel", [](Node const& n, InterfaceTarget& t) { t.interface.tunnel = ipEncapOf(n); }},
});

Lumen::IntfId namedIntfId(Node const& node) {
   try {
      return Lumen::IntfId::named(node.key());
   } catch (std::exception const&) {
      node.fail("the name is not of 1 to " + std::to_string(Lumen::IntfId::maxNameLength) + " bytes without blanks");
   }
}

struct EvpnTarget {
   Context const& context;
   Tunnel::TunnelTable::EvpnVxlanTunnelEntry via{};
};

constexpr auto evpnMembers = std::to_array<Member<EvpnTarget>>({
    {"vtep", [](Node const& n, EvpnTarget& t) { t.via.vtepAddr = genAddrOf(n); }, true},
    {"vni", [](Node const& n, EvpnTarget& t) { t.via.vni = Lumen::Vni(static_cast<U32>(n.number(Lumen::Vni::max))); },
     true},
    {"routerMac", [](Node const& n, EvpnTarget& t) { t.via.routerMac = n.parsed<Lumen::EthAddr>("a MAC address"); },
     true},
    {"localInterface", [](Node const& n, EvpnTarget& t) { t.via.localIntf = t.context.interface(n); }},
});

constexpr U8 evpnAdjType = 24;

}  // namespace

void readInterfaces(Node const& node, Context& context) {
   node.forEachMember([&](Node const& member) {
      InterfaceTarget target{context};
      target.interface.intfId = namedIntfId(member);
      readObject(member, interfaceMembers, target);
      context.interfaces.insertOrReplace(member.key(), target.interface.intfId);
      context.state.interfaces.push_back(std::move(target.interface));
   });
}

Tunnel::TunnelTable::EvpnVxlanTunnelEntry readEvpnVia(Node const& node, Context const& context) {
   EvpnTarget target{context};
   readObject(node, evpnMembers, target);
   return target.via;
}

void readEvpnFecs(Node const& node, Context& context) {
   node.forEachMember([&](Node const& member) {
      EvpnFec fec{fecIdOf(member, member.key())};
      if (fec.fecId.value() >> FecId::idBits != evpnAdjType) {
         member.fail("not a FEC id such as evpn:1");
      }
      if (context.fecs.contains(fec.fecId)) {
         member.fail("another name of the same FEC is given too");
      }
      context.fecs.insertOrReplace(fec.fecId, true);
      member.forEachElement([&](Node const& via) {
         if (fec.vias.size() > Routing::Rib::RouteCache::Evpn::ViaIndex::max) {
            via.fail("more than 32 vias");
         }
         fec.vias.push_back(readEvpnVia(via, context));
      });
      context.state.evpnFecs.push_back(std::move(fec));
   });
}

}  // namespace state
