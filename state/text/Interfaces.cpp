#include "state/text/Sections.h"

#include "Routing/Rib/RouteCache/Evpn/ViaIndex.h"

#include <array>

namespace state {
namespace {

struct InterfaceRecord {
   using Value = Interface;
   static constexpr std::string_view name = "interface";
   static constexpr auto members = std::to_array<Member<Value>>(
       {member<Text, &Value::description>("description"), member<VrfRef, &Value::vrfId>("vrf"),
        member<Flag, &Value::loopback>("loopback"), member<Flag, &Value::linkUp>("linkUp"),
        member<UniqueList<Address4, By<>>, &Value::addresses>("ipv4").about(
            "Addresses with their lengths: the primary one, then the secondary ones."),
        member<UniqueList<Address6, By<>>, &Value::addresses6>("ipv6"), member<IpEncap, &Value::tunnel>("tunnel")});
};

struct NamedInterface : Object<InterfaceRecord> {
   static constexpr std::string_view keySchema = R"(,"propertyNames":{"pattern":"^[^\\s\\u0000-\\u001f]{1,23}$"})";

   static Interface read(Node const& node, Reading& reading) {
      Interface interface { .intfId = intfIdOf(node) };
      readInto(node, reading, interface);
      reading.interfaces.insertOrReplace(node.key(), interface.intfId);
      return interface;
   }
   static std::string key(Writing const&, Interface const& interface) { return std::string(interface.intfId.name()); }

 private:
   static Lumen::IntfId intfIdOf(Node const& node) {
      try {
         return Lumen::IntfId::named(node.key());
      } catch (std::exception const&) {
         node.fail("the name is not of 1 to " + std::to_string(Lumen::IntfId::maxNameLength) + " bytes without blanks");
      }
   }
};

// The EVPN vias of a FEC.
struct NamedEvpnFec {
   using Value = EvpnFec;
   static constexpr std::string_view keySchema = R"(,"propertyNames":{"pattern":"^(evpn|24):[0-9]+$"})";

   static EvpnFec read(Node const& node, Reading& reading) {
      EvpnFec fec{fecIdOf(node, node.key())};
      if (fec.fecId.value() >> FecId::idBits != evpnAdjType) {
         node.fail("not a FEC id such as evpn:1");
      }
      if (reading.fecs.contains(fec.fecId)) {
         node.fail("another name of the same FEC is given too");
      }
      reading.fecs.insertOrReplace(fec.fecId, true);
      node.forEachElement([&](Node const& via) {
         if (fec.vias.size() == maxVias) {
            via.fail("more than 32 vias");
         }
         fec.vias.push_back(EvpnVia::read(via, reading));
      });
      return fec;
   }
   static std::string key(Writing const&, EvpnFec const& fec) { return fecText(fec.fecId); }
   static void write(JsonWriter& out, Writing const& writing, EvpnFec const& fec) {
      List<EvpnVia>::write(out, writing, fec.vias);
   }
   static std::string schema(Schema& schema) {
      return List<EvpnVia>::schema(schema) + ",\"maxItems\":" + std::to_string(maxVias);
   }

 private:
   static constexpr U8 evpnAdjType = 24;
   static constexpr std::size_t maxVias = Routing::Rib::RouteCache::Evpn::ViaIndex::max + 1U;
};

}  // namespace

std::span<Member<State> const> interfaceSections() {
   static constexpr auto sections =
       std::to_array<Member<State>>({member<Named<NamedInterface>, &State::interfaces>("interfaces").about("By name."),
                                     member<Named<NamedEvpnFec>, &State::evpnFecs>("evpnFecs")
                                         .about("The EVPN vias of the route cache, by FEC id of the type evpn (24).")});
   return sections;
}

}  // namespace state
