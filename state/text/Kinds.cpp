#include "state/text/Kinds.h"

#include "Lumen/Vni.h"
#include "state/text/TunnelTypes.h"

#include <array>

namespace state {
namespace {

using Tunnel::IpEncapType;
using Tunnel::IpTunnelEncap;
using Tunnel::TunnelType;

constexpr auto encapTypeNames = std::to_array<Name<IpEncapType>>(
    {{"ipInIp", IpEncapType::ipInIp}, {"gre", IpEncapType::gre}, {"vxlan", IpEncapType::vxlan}});

struct IpEncapRecord {
   using Value = IpTunnelEncap;
   static constexpr std::string_view name = "ipEncap";
   static constexpr auto members = std::to_array<Member<Value>>(
       {member<OneOf<encapTypeNames>, &Value::type>("type").required(), member<GenAddr, &Value::source>("source"),
        member<GenAddr, &Value::destination>("destination").required(),
        member<Number<U32>, &Value::key>("key").about("Of GRE, or the VNI of VXLAN. 0 is none."),
        member<Number<U8>, &Value::ttl>("ttl").about("0 takes the packet's own."),
        member<Number<U8>, &Value::tos>("tos").about("0 takes the packet's own.")});
   static constexpr std::string_view rules =
       R"("if":{"properties":{"type":{"const":"vxlan"}}},"then":{"properties":{"key":{"maximum":16777215}}})";
   static void check(Node const& node, Reading const&, Value const& encap) {
      checkVniKey(node, encap.type == IpEncapType::vxlan, encap.key);
   }
};

struct EvpnRecord {
   using Value = Tunnel::TunnelTable::EvpnVxlanTunnelEntry;
   static constexpr std::string_view name = "evpnVia";
   static constexpr auto members =
       std::to_array<Member<Value>>({member<GenAddr, &Value::vtepAddr>("vtep").required(),
                                     member<NumberOf<Lumen::Vni, Lumen::Vni::max>, &Value::vni>("vni").required(),
                                     member<Mac, &Value::routerMac>("routerMac").required(),
                                     member<InterfaceRef, &Value::localIntf>("localInterface")});
};

struct TunnelParts {
   TunnelType type = TunnelType::unknown;
   U64 index = 0;
};

struct TunnelRecord {
   using Value = TunnelParts;
   static constexpr std::string_view name = "tunnelId";
   static constexpr auto members = std::to_array<Member<Value>>(
       {member<NameOrNumber<tunnelTypeNames, maxTunnelType>, &Value::type>("type").required(),
        member<TunnelIndex, &Value::index>("index").required()});
};

}  // namespace

std::string numberSchema(Schema& schema, U64 min, U64 max) {
   std::string const text =
       "\"type\":\"integer\",\"minimum\":" + std::to_string(min) + ",\"maximum\":" + std::to_string(max);
   for (int const bits : {8, 16, 32, 64}) {
      if (min == 0 && max == ~U64{0} >> (64 - bits)) {
         return schema.defined("u" + std::to_string(bits), [&] { return text; });
      }
   }
   return text;
}

std::string patternSchema(Schema& schema, std::string_view name, std::string_view pattern) {
   return schema.defined(name, [&] { return "\"type\":\"string\",\"pattern\":" + jsonQuoted(pattern); });
}

Lumen::IpGenPrefix GenPrefix::read(Node const& node, Reading& reading) {
   bool const isIp6 = node.text().find(':') != std::string_view::npos;
   return isIp6 ? Lumen::IpGenPrefix(PrefixKind<Lumen::Ip6Prefix>::read(node, reading))
                : Lumen::IpGenPrefix(PrefixKind<Lumen::Prefix>::read(node, reading));
}

std::string GenPrefix::schema(Schema& schema) {
   return schema.defined(
       "prefix", [&] { return "\"anyOf\":[{" + Address4::schema(schema) + "},{" + Address6::schema(schema) + "}]"; });
}

Lumen::IpGenAddr GenAddr::read(Node const& node, Reading&) {
   auto const addr = node.parsed<Lumen::IpGenAddr>("an IP address");
   if (addr.isEmpty()) {
      node.fail("not an IP address");
   }
   return addr;
}

std::string GenAddr::schema(Schema& schema) {
   return patternSchema(schema, "address", "^[0-9a-fA-F:.]+$");
}

void InterfaceRef::write(JsonWriter& out, Writing const&, Value const& intfId) {
   if (!intfId.isNamed()) {
      cannotSay("the interface " + intfId.stringValue());
   }
   out.text(intfId.name());
}

std::string fecSchema(Schema& schema) {
   return schema.defined("fecId", [] {
      return R"("description":"TYPE:NUMBER, the type by name or as the number of an adjacency type.","type":"string",)"
             R"("pattern":"^(ipv4|ipv6|attached|indexed|srTe|evpn|[0-9]{1,3}):[0-9]+$")";
   });
}

Tunnel::TunnelId TunnelRef::read(Node const& node, Reading& reading) {
   TunnelParts const parts = Object<TunnelRecord>::read(node, reading);
   return Tunnel::tunnelIdOf(parts.type, parts.index);
}

void TunnelRef::write(JsonWriter& out, Writing const& writing, Value tunnelId) {
   Object<TunnelRecord>::write(out, writing, {Tunnel::tunnelType(tunnelId), Tunnel::tunnelIndex(tunnelId)});
}

std::string TunnelRef::schema(Schema& schema) {
   return Object<TunnelRecord>::schema(schema);
}

Tunnel::TunnelId OwnTunnel::read(Node const& node, Reading& reading) {
   Tunnel::TunnelId const tunnelId = TunnelRef::read(node, reading);
   if (tunnelId == 0) {
      node.fail("type 0 with index 0 is no tunnel");
   }
   return tunnelId;
}

IpTunnelEncap IpEncap::read(Node const& node, Reading& reading) {
   return Object<IpEncapRecord>::read(node, reading);
}

void IpEncap::write(JsonWriter& out, Writing const& writing, Value const& encap) {
   Object<IpEncapRecord>::write(out, writing, encap);
}

std::string IpEncap::schema(Schema& schema) {
   return Object<IpEncapRecord>::schema(schema);
}

EvpnVia::Value EvpnVia::read(Node const& node, Reading& reading) {
   return Object<EvpnRecord>::read(node, reading);
}

void EvpnVia::write(JsonWriter& out, Writing const& writing, Value const& via) {
   Object<EvpnRecord>::write(out, writing, via);
}

std::string EvpnVia::schema(Schema& schema) {
   return Object<EvpnRecord>::schema(schema);
}

void checkVniKey(Node const& node, bool isVxlan, U32 key) {
   if (isVxlan && key > Lumen::Vni::max) {
      node.fail("the key of vxlan is not from 0 to " + std::to_string(Lumen::Vni::max));
   }
}

}  // namespace state
