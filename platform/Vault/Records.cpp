#include "Vault/Records.h"

namespace Vault::Records {

namespace {

// The interface is rebuilt from its parts, so that nothing that no writer could have made gets further: a name, for
// one, goes to a terminal.
bool toIntfId(Lumen::IntfId const& raw, Lumen::IntfId& intfId) {
   using Kind = Lumen::IntfId::Kind;
   switch (raw.kind()) {
      case Kind::none:
         intfId = Lumen::IntfId();
         break;
      case Kind::named:
         intfId = Lumen::IntfId::named(raw.name());
         break;
      case Kind::fec:
         intfId = Lumen::IntfId::fromFecId(raw.fecId());
         break;
      case Kind::dynamicTunnel:
         intfId = Lumen::IntfId::fromTunnelId(raw.tunnelId());
         break;
      case Kind::nexthopGroup:
         intfId = Lumen::IntfId::fromNexthopGroup(raw.nexthopGroupId());
         break;
   }
   return intfId == raw;
}

}  // namespace

ViaRecord toRecord(Fib::Via const& via) noexcept {
   auto const hop = via.hop.family() == Lumen::AddressFamily::ipv4
                        ? std::array<U64, 2>{U64{via.hop.ip().value()}, 0}
                        : std::array<U64, 2>{via.hop.ip6().hi(), via.hop.ip6().lo()};
   return {.tunnelId = via.tunnelId,
           .fecId = via.fecId.value(),
           .hop = hop,
           .intfId = std::bit_cast<std::array<U64, 3>>(via.intfId),
           .label = via.label.raw(),
           .forwardingVrf = via.forwardingVrf,
           .weight = via.weight.raw(),
           .forwardingAction = static_cast<U8>(via.forwardingAction),
           .hopFamily = static_cast<U8>(via.hop.family()),
           .zero = 0};
}

bool toVia(ViaRecord const& record, Fib::Via& via) {
   switch (static_cast<Lumen::AddressFamily>(record.hopFamily)) {
      case Lumen::AddressFamily::unknown:
         via.hop = Lumen::IpGenAddr();
         break;
      case Lumen::AddressFamily::ipv4:
         via.hop = Lumen::IpAddr(static_cast<U32>(record.hop[0]));
         break;
      case Lumen::AddressFamily::ipv6:
         via.hop = Lumen::Ip6Addr(record.hop[0], record.hop[1]);
         break;
      default:
         return false;
   }
   via.label = Fib::ViaLabel::fromRaw(record.label);
   via.weight = Fib::ViaWeight::fromRaw(record.weight);
   via.forwardingAction = static_cast<Fib::ForwardingAction>(record.forwardingAction);
   via.forwardingVrf = record.forwardingVrf;
   via.tunnelId = record.tunnelId;
   via.fecId = Fib::FecId(record.fecId);
   try {
      return toIntfId(std::bit_cast<Lumen::IntfId>(record.intfId), via.intfId);
   } catch (std::exception const&) {  // a name with characters that no name has
      return false;
   }
}

bool VrfPrefixRecordBase::isPossible() const noexcept {
   if (key.zero != 0) {
      return false;
   }
   switch (static_cast<Lumen::AddressFamily>(key.family)) {
      case Lumen::AddressFamily::unknown:
         return key == countsKey(key.vrfId);
      case Lumen::AddressFamily::ipv4:
         return key.address[0] <= ~U32{0} && key.address[1] == 0 &&
                isPrefix(PrefixKey4{static_cast<U32>(key.address[0]), key.length, {}});
      case Lumen::AddressFamily::ipv6:
         return isPrefix(PrefixKey6{key.address[0], key.address[1], key.length});
   }
   return false;
}

VrfPrefixKey toKey(Vrf::VrfIdMap::VrfId vrfId, Lumen::IpGenPrefix const& prefix) noexcept {
   auto const address = prefix.family() == Lumen::AddressFamily::ipv4
                            ? std::array<U64, 2>{U64{prefix.prefix().address().value()}, 0}
                            : std::array<U64, 2>{prefix.prefix6().address().hi(), prefix.prefix6().address().lo()};
   return {.address = address,
           .vrfId = vrfId,
           .family = static_cast<U8>(prefix.family()),
           .length = prefix.length(),
           .zero = 0};
}

Lumen::IpGenPrefix toPrefix(VrfPrefixKey const& key) {
   if (key.family == static_cast<U8>(Lumen::AddressFamily::ipv4)) {
      return toPrefix(PrefixKey4{static_cast<U32>(key.address[0]), key.length, {}});
   }
   return toPrefix(PrefixKey6{key.address[0], key.address[1], key.length});
}

}  // namespace Vault::Records
