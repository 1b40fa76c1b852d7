#include "programs/state/SnapshotContext.h"

#include <charconv>

namespace state {
namespace {

template <class Map>
typename std::decay_t<decltype(*std::declval<Map const&>().find({}))> known(Node const& node, Map const& map,
                                                                            std::string_view kind) {
   auto const* const found = map.find(node.text());
   if (found == nullptr) {
      node.fail(std::string("no such ").append(kind));
   }
   return *found;
}

constexpr U8 srTeAdjType = 20;

constexpr auto adjTypeNames = std::to_array<std::pair<std::string_view, U8>>(
    {{"ipv4", 0}, {"ipv6", 1}, {"attached", 4}, {"indexed", 15}, {"srTe", srTeAdjType}, {"evpn", 24}});

template <class T>
bool wholeNumber(std::string_view text, T& value) {
   auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
   return error == std::errc() && end == text.data() + text.size();
}

bool adjTypeOf(std::string_view text, U8& adjType) {
   for (auto const& [name, value] : adjTypeNames) {
      if (name == text) {
         adjType = value;
         return true;
      }
   }
   return wholeNumber(text, adjType);
}

template <class Prefix>
using AddrWithMaskOf = Lumen::BasicAddrWithMask<typename Prefix::AddrType>;

}  // namespace

VrfId Context::vrf(Node const& node) const {
   return known(node, vrfIds, "VRF");
}

Lumen::IntfId Context::interface(Node const& node) const {
   return known(node, interfaces, "interface");
}

U32 Context::nexthopGroup(Node const& node, std::string_view name) const {
   U32 const* const id = nexthopGroups.find(name);
   if (id == nullptr) {
      node.fail("no such nexthop group");
   }
   return *id != 0 ? *id : (node.fail("this nexthop group has no id"), 0);
}

FecId Context::fec(Node const& node) const {
   FecId const fecId = fecIdOf(node, node.text());
   if (!fecsElsewhere && !fecs.contains(fecId)) {
      node.fail("no such FEC");
   }
   return fecId;
}

FecId Context::policyFec(Node const& node) const {
   FecId const fecId = fecIdOf(node, node.text());
   if (!fecsElsewhere && !policyFecs.contains(fecId)) {
      node.fail("no such policy FEC");
   }
   return fecId;
}

FecId Context::routeFec(Node const& node) const {
   FecId const fecId = fecIdOf(node, node.text());
   bool const isOfPolicy = fecId.value() >> FecId::idBits == srTeAdjType && policyFecs.contains(fecId);
   return isOfPolicy ? fecId : fec(node);
}

// Types beyond the largest are let through: what reads the tables has to cope with them.
FecId fecIdOf(Node const& node, std::string_view text) {
   std::size_t const colon = text.find(':');
   U8 adjType = 0;
   U64 id = 0;
   if (colon == std::string_view::npos || !adjTypeOf(text.substr(0, colon), adjType) ||
       !wholeNumber(text.substr(colon + 1), id)) {
      node.fail("not a FEC id such as ipv4:17");
   }
   if (id == 0 || id > FecId::idMask) {
      node.fail("FEC number not from 1 to " + std::to_string(FecId::idMask));
   }
   return FecId(U64{adjType} << FecId::idBits | id);
}

template <class Prefix>
Prefix prefixOf(Node const& node) {
   using WithMask = AddrWithMaskOf<Prefix>;
   auto const value = node.parsed<WithMask>(Prefix::maxLength == 32 ? "an IPv4 prefix" : "an IPv6 prefix");
   if (value.subnet().address() != value.address()) {
      node.fail("host bits set");
   }
   return value.subnet();
}

template Lumen::Prefix prefixOf(Node const& node);
template Lumen::Ip6Prefix prefixOf(Node const& node);

Lumen::IpGenPrefix genPrefixOf(Node const& node) {
   bool const isIp6 = node.text().find(':') != std::string_view::npos;
   return isIp6 ? Lumen::IpGenPrefix(prefixOf<Lumen::Ip6Prefix>(node))
                : Lumen::IpGenPrefix(prefixOf<Lumen::Prefix>(node));
}

Lumen::IpGenAddr genAddrOf(Node const& node) {
   auto const addr = node.parsed<Lumen::IpGenAddr>("an IP address");
   if (addr.isEmpty()) {
      node.fail("not an IP address");
   }
   return addr;
}

void exitIs(Node const& node, Lumen::IntfId& exit, Lumen::IntfId const& intfId) {
   if (exit.isValid()) {
      node.fail("the via already leaves through " + exit.stringValue());
   }
   exit = intfId;
}

}  // namespace state
