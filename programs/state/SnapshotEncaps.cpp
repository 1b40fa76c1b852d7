#include "programs/state/SnapshotContext.h"

#include "Lumen/Vni.h"

namespace state {
namespace {

using Tunnel::IpEncapType;
using Tunnel::IpTunnelEncap;

constexpr auto encapTypeNames = std::to_array<std::pair<std::string_view, IpEncapType>>(
    {{"ipInIp", IpEncapType::ipInIp}, {"gre", IpEncapType::gre}, {"vxlan", IpEncapType::vxlan}});

constexpr auto encapMembers = std::to_array<Member<IpTunnelEncap>>({
    {"type", [](Node const& n, IpTunnelEncap& e) { e.type = oneOf(n, encapTypeNames); }, true},
    {"source", [](Node const& n, IpTunnelEncap& e) { e.source = genAddrOf(n); }},
    {"destination", [](Node const& n, IpTunnelEncap& e) { e.destination = genAddrOf(n); }, true},
    {"key", [](Node const& n, IpTunnelEncap& e) { e.key = n.number<U32>(); }},
    {"ttl", [](Node const& n, IpTunnelEncap& e) { e.ttl = n.number<U8>(); }},
    {"tos", [](Node const& n, IpTunnelEncap& e) { e.tos = n.number<U8>(); }},
});

}  // namespace

IpTunnelEncap ipEncapOf(Node const& node) {
   IpTunnelEncap encap;
   readObject(node, encapMembers, encap);
   if (encap.type == IpEncapType::vxlan && encap.key > Lumen::Vni::max) {
      node.fail("the key of vxlan is not from 0 to " + std::to_string(Lumen::Vni::max));
   }
   return encap;
}

}  // namespace state
