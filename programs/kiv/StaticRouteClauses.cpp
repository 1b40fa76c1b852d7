#include "programs/kiv/StaticRouteClauses.h"

#include "Lumen/IntfId.h"
#include "Lumen/IpAddrWithMask.h"
#include "Lumen/MplsLabel.h"
#include "Lumen/Vni.h"
#include "Zam/Error.h"
#include "state/StaticRoutes.h"

#include <algorithm>
#include <cctype>
#include <limits>
#include <stdexcept>

namespace kiv {
namespace {

constexpr std::string_view digits = "0123456789";

template <class Prefix>
constexpr bool isIp4 = Prefix::maxLength == Lumen::Prefix::maxLength;

template <class Prefix>
struct DestinationKind {
   static constexpr std::string_view name = "PREFIX";
   static constexpr Named named = Named::nothing;
   static bool accepts(std::string_view word) {
      return word.find('/') != std::string_view::npos &&
             (word.find(':') != std::string_view::npos || word.find_first_of(digits) == 0);
   }
   static Destination read(std::string_view word) {
      if constexpr (isIp4<Prefix>) {
         try {
            return {std::string(word), Lumen::IpAddrWithMask::parse(word).subnet()};
         } catch (std::exception const&) {  // told better below
         }
      }
      return {std::string(word), requestedPrefix<Prefix>(word).prefix};
   }
};

// Of an IPv4 route it may be of either family.
template <class Prefix>
struct Nexthop : Address {
   static constexpr std::string_view name = "NEXTHOP";
   static bool accepts(std::string_view word) {
      return word.find('/') == std::string_view::npos &&
             (word.find(':') != std::string_view::npos ||
              (word.find('.') != std::string_view::npos && word.find_first_of(digits) == 0));
   }
   static Lumen::IpGenAddr read(std::string_view word) {
      auto const address = Address::read(word);
      if (!isIp4<Prefix> && address.family() != Lumen::AddressFamily::ipv6) {
         throw std::invalid_argument("IPv4 where an IPv6 address should be");
      }
      return address;
   }
};

struct Mac {
   static constexpr std::string_view name = "ADDRESS";
   static constexpr Named named = Named::nothing;
   static Lumen::EthAddr read(std::string_view word) {
      try {
         return Lumen::EthAddr::parse(word);
      } catch (Zam::ParseError const&) {
         throw std::invalid_argument("not a MAC address such as 00:1c:73:aa:bb:cc");
      }
   }
};

// What a line of the configuration can hold as a name.
template <Named What>
struct ConfigWord : NameOf<What> {
   static std::string read(std::string_view word) {
      return state::isConfigWord(word) ? std::string(word) : throw std::invalid_argument("not a word without blanks");
   }
};

struct OtherVrf : ConfigWord<Named::vrf> {
   static std::string read(std::string_view word) {
      std::string read = ConfigWord::read(word);
      if (word == L3::VrfName::defaultVrf) {
         throw std::invalid_argument("a route cannot lead into the default VRF, which stands for its own");
      }
      if (word.size() > L3::VrfName::maxLength()) {
         throw std::invalid_argument("longer than " + std::to_string(L3::VrfName::maxLength()) + " bytes");
      }
      return read;
   }
};

using A = StaticRouteArguments;

// Where a route leads: one of these has to be said.
constexpr auto leadsTo =
    keys<&A::drop, &A::nexthopGroup, &A::cached, &A::egressVrf, &A::interface, &A::nexthop, &A::vtep>;

constexpr auto drop =
    clause<&A::drop>({.keyword = "Null0",
                      .help = "drop what goes there",
                      .excludes = keys<&A::nexthopGroup, &A::cached, &A::egressVrf, &A::interface, &A::nexthop,
                                       &A::label, &A::trackBfd, &A::vtep, &A::metric, &A::leakVrf>});
constexpr auto nexthopGroup = clause<&A::nexthopGroup, ConfigWord<Named::nexthopGroup>>(
    {.keyword = "nexthop-group",
     .help = "through a nexthop group",
     .excludes = keys<&A::cached, &A::egressVrf, &A::interface, &A::nexthop, &A::label, &A::trackBfd, &A::vtep,
                      &A::name, &A::leakVrf>});
constexpr auto cached =
    clause<&A::cached>({.keyword = "cached",
                        .help = "a route of the route cache",
                        .excludes = keys<&A::egressVrf, &A::interface, &A::nexthop, &A::label, &A::trackBfd, &A::vtep,
                                         &A::tag, &A::name, &A::metric, &A::leakVrf, &A::preference>});
// An interface is in a VRF of its own.
constexpr auto egressVrf = clause<&A::egressVrf, OtherVrf>(
    {.keyword = "egress-vrf", .help = "into another VRF", .excludes = keys<&A::interface>});
constexpr auto vtep =
    clause<&A::vtep, Address>({.keyword = "vtep",
                               .help = "over VXLAN to this tunnel endpoint",
                               .excludes = keys<&A::egressVrf, &A::interface, &A::nexthop, &A::label, &A::trackBfd>});

template <class Prefix>
constexpr StaticRouteClauses staticRouteClauses = clauses(
    clause<&A::prefix, DestinationKind<Prefix>>(
        {.keyword = "", .help = "the destination", .required = true, .needs = leadsTo}),
    drop, nexthopGroup, cached, egressVrf,
    clause<&A::interface, ConfigInterface>({.keyword = "", .parameter = "INTERFACE", .help = "through this interface"}),
    clause<&A::nexthop, Nexthop<Prefix>>({.keyword = "", .help = "through this next hop"}),
    clause<&A::label, Number<0, Lumen::MplsLabel::maxLabel>>(
        {.keyword = "label", .help = "with this MPLS label", .needs = keys<&A::nexthop, &A::egressVrf>}),
    clause<&A::trackBfd>({.keyword = "track bfd",
                          .help = "as long as BFD reaches it",
                          .needs = keys<&A::nexthop, &A::interface, &A::egressVrf>}),
    vtep,
    clause<&A::vni, Number<1, Lumen::Vni::max>>({.keyword = "vni", .help = "in this network", .needs = keys<&A::vtep>}),
    clause<&A::routerMac, Mac>(
        {.keyword = "router-mac-address", .help = "to the router of this MAC address", .needs = keys<&A::vtep>}),
    clause<&A::localInterface, ConfigInterface>(
        {.keyword = "local-interface", .help = "from this interface", .needs = keys<&A::vtep>}),
    clause<&A::ribBypass>({.keyword = "rib-bypass", .help = "past the RIB", .needs = keys<&A::vtep>}),
    clause<&A::sourceVtepValidation>(
        {.keyword = "source-vtep-validation", .help = "and validate who sends from there", .needs = keys<&A::vtep>}),
    clause<&A::preference, Number<1, std::numeric_limits<U8>::max()>>(
        {.keyword = "",
         .parameter = "PREFERENCE",
         .help = "of routes to the same prefix the smallest wins; 1 unless given"}),
    clause<&A::tag, AnyNumber>({.keyword = "tag", .help = "0 unless given"}),
    clause<&A::name, ConfigWord<Named::nothing>>({.keyword = "name",
                                                  .help = "of the next hop, or of a route to Null0"}),
    clause<&A::metric, AnyNumber>({.keyword = "metric", .help = "0 unless given"}),
    clause<&A::leakVrf, OtherVrf>({.keyword = "leak vrf", .help = "the VRF that the route is leaked into"}),
    clause<&A::vrf, VrfName>({.keyword = "vrf", .help = "the VRF that the route is in, unless in the default one"}));

// To take a route away, the prefix is enough, and so is anything that tells which of its vias.
template <class Prefix>
constexpr StaticRouteClauses noRouteClauses = [] {
   auto made = staticRouteClauses<Prefix>;
   for (Clause& clause : made.list) {
      clause.needs = {};
   }
   return made;
}();

}  // namespace

bool ConfigInterface::accepts(std::string_view word) {
   return !word.empty() && std::isalpha(static_cast<unsigned char>(word.front())) != 0 &&
          word.find(':') == std::string_view::npos;
}

std::string ConfigInterface::read(std::string_view word) {
   constexpr std::string_view null0 = "null0";
   if (std::ranges::equal(word, null0, {}, [](unsigned char c) { return std::tolower(c); })) {
      throw std::invalid_argument("is written Null0");
   }
   if (!state::isInterfaceWord(word)) {
      throw std::invalid_argument("not an interface name, which has 1 to " +
                                  std::to_string(Lumen::IntfId::maxNameLength) + " bytes and begins with a letter");
   }
   return std::string(word);
}

constinit StaticRouteClauses const ipStaticRouteClauses = staticRouteClauses<Lumen::Prefix>;
constinit StaticRouteClauses const ipv6StaticRouteClauses = staticRouteClauses<Lumen::Ip6Prefix>;
constinit StaticRouteClauses const noIpStaticRouteClauses = noRouteClauses<Lumen::Prefix>;
constinit StaticRouteClauses const noIpv6StaticRouteClauses = noRouteClauses<Lumen::Ip6Prefix>;

}  // namespace kiv
