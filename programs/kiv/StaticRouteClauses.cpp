#include "programs/kiv/StaticRouteClauses.h"

#include "L3/VrfName.h"
#include "Lumen/EthAddr.h"
#include "Lumen/IntfId.h"
#include "Lumen/IpAddrWithMask.h"
#include "Lumen/MplsLabel.h"
#include "Lumen/Vni.h"
#include "Zam/Error.h"
#include "programs/kiv/RequestedPrefix.h"
#include "state/StaticRoutes.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <stdexcept>

namespace kiv {
namespace {

using namespace staticClause;  // NOLINT(google-build-using-namespace): this file is about them

constexpr std::string_view digits = "0123456789";

bool isDestination(std::string_view word) {
   return word.find('/') != std::string_view::npos &&
          (word.find(':') != std::string_view::npos || word.find_first_of(digits) == 0);
}

bool isAddress(std::string_view word) {
   return word.find('/') == std::string_view::npos &&
          (word.find(':') != std::string_view::npos ||
           (word.find('.') != std::string_view::npos && word.find_first_of(digits) == 0));
}

bool isNumber(std::string_view word) {
   return !word.empty() && word.find_first_not_of(digits) == std::string_view::npos;
}

// Its check looks closer.
bool isInterface(std::string_view word) {
   return !word.empty() && std::isalpha(static_cast<unsigned char>(word.front())) != 0 &&
          word.find(':') == std::string_view::npos;
}

template <U32 Min, U32 Max>
void checkNumber(std::string_view word) {
   U32 number = 0;
   auto const [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
   if (error != std::errc() || end != word.data() + word.size() || number < Min || number > Max) {
      throw std::invalid_argument("not a number from " + std::to_string(Min) + " to " + std::to_string(Max));
   }
}

constexpr auto checkAnyNumber = checkNumber<0, std::numeric_limits<U32>::max()>;

// Bits beyond an IPv4 mask are refused by the route configuration itself.
template <class Prefix>
void checkDestination(std::string_view word) {
   if constexpr (Prefix::maxLength == Lumen::Prefix::maxLength) {
      try {
         Lumen::IpAddrWithMask::parse(word);
         return;
      } catch (std::exception const&) {  // told better below
      }
   }
   requestedPrefix<Prefix>(word);
}

template <class Prefix>
void checkHop(std::string_view word) {
   auto const address = requestedNexthop(word);
   if (Prefix::maxLength != Lumen::Prefix::maxLength && address.family() != Lumen::AddressFamily::ipv6) {
      throw std::invalid_argument("IPv4 where an IPv6 address should be");
   }
}

void checkAddress(std::string_view word) {
   requestedNexthop(word);
}

void checkMac(std::string_view word) {
   try {
      Lumen::EthAddr::parse(word);
   } catch (Zam::ParseError const&) {
      throw std::invalid_argument("not a MAC address such as 00:1c:73:aa:bb:cc");
   }
}

void checkWord(std::string_view word) {
   if (!state::isConfigWord(word)) {
      throw std::invalid_argument("not a word without blanks");
   }
}

void checkOtherVrf(std::string_view word) {
   checkWord(word);
   if (word == L3::VrfName::defaultVrf) {
      throw std::invalid_argument("a route cannot lead into the default VRF, which stands for its own");
   }
   if (word.size() > L3::VrfName::maxLength()) {
      throw std::invalid_argument("longer than " + std::to_string(L3::VrfName::maxLength()) + " bytes");
   }
}

// Where a route leads: one of these has to be said.
constexpr std::array leadsTo{drop, nexthopGroup, cached, egressVrf, interface, nexthop, vtep};
// What a label or BFD is about.
constexpr std::array hops{nexthop, egressVrf};
constexpr std::array ways{nexthop, interface, egressVrf};
constexpr std::array ofVtep{vtep};
// What does not go together.
constexpr std::array notForDrop{nexthopGroup, cached,   egressVrf, interface, nexthop,
                                label,        trackBfd, vtep,      metric,    leakVrf};
constexpr std::array notForGroup{cached, egressVrf, interface, nexthop, label, trackBfd, vtep, name, leakVrf};
constexpr std::array notForCached{egressVrf, interface, nexthop, label,   trackBfd,  vtep,
                                  tag,       name,      metric,  leakVrf, preference};
constexpr std::array notForVtep{egressVrf, interface, nexthop, label, trackBfd};
// An interface is in a VRF of its own.
constexpr std::array notForEgressVrf{interface};

template <class Prefix>
constexpr auto routeClauses = std::to_array<Clause>({
    {.keyword = "",
     .parameter = prefix,
     .help = "the destination",
     .required = true,
     .accepts = isDestination,
     .check = checkDestination<Prefix>,
     .needs = leadsTo},
    {.keyword = drop, .parameter = "", .help = "drop what goes there", .excludes = notForDrop},
    {.keyword = nexthopGroup,
     .parameter = "NAME",
     .help = "through a nexthop group",
     .check = checkWord,
     .excludes = notForGroup},
    {.keyword = cached, .parameter = "", .help = "a route of the route cache", .excludes = notForCached},
    {.keyword = egressVrf,
     .parameter = "NAME",
     .help = "into another VRF",
     .check = checkOtherVrf,
     .excludes = notForEgressVrf},
    {.keyword = "",
     .parameter = interface,
     .help = "through this interface",
     .accepts = isInterface,
     .check = checkInterfaceText},
    {.keyword = "",
     .parameter = nexthop,
     .help = "through this next hop",
     .accepts = isAddress,
     .check = checkHop<Prefix>},
    {.keyword = label,
     .parameter = "NUMBER",
     .help = "with this MPLS label",
     .check = checkNumber<0, Lumen::MplsLabel::maxLabel>,
     .needs = hops},
    {.keyword = trackBfd, .parameter = "", .help = "as long as BFD reaches it", .needs = ways},
    {.keyword = vtep,
     .parameter = "ADDRESS",
     .help = "over VXLAN to this tunnel endpoint",
     .check = checkAddress,
     .excludes = notForVtep},
    {.keyword = vni,
     .parameter = "NUMBER",
     .help = "in this network",
     .check = checkNumber<1, Lumen::Vni::max>,
     .needs = ofVtep},
    {.keyword = routerMac,
     .parameter = "ADDRESS",
     .help = "to the router of this MAC address",
     .check = checkMac,
     .needs = ofVtep},
    {.keyword = localInterface,
     .parameter = "NAME",
     .help = "from this interface",
     .check = checkInterfaceText,
     .needs = ofVtep},
    {.keyword = ribBypass, .parameter = "", .help = "past the RIB", .needs = ofVtep},
    {.keyword = sourceVtepValidation, .parameter = "", .help = "and validate who sends from there", .needs = ofVtep},
    {.keyword = "",
     .parameter = preference,
     .help = "of routes to the same prefix the smallest wins; 1 unless given",
     .accepts = isNumber,
     .check = checkNumber<1, std::numeric_limits<U8>::max()>},
    {.keyword = tag, .parameter = "NUMBER", .help = "0 unless given", .check = checkTagText},
    {.keyword = name, .parameter = "NAME", .help = "of the next hop, or of a route to Null0", .check = checkWord},
    {.keyword = metric, .parameter = "NUMBER", .help = "0 unless given", .check = checkAnyNumber},
    {.keyword = leakVrf, .parameter = "NAME", .help = "the VRF that the route is leaked into", .check = checkOtherVrf},
    {.keyword = vrf, .parameter = "NAME", .help = "the VRF that the route is in, unless in the default one"},
});

// To take a route away, the prefix is enough, and so is anything that tells which of its vias.
template <class Prefix>
constexpr auto noRouteClauses = [] {
   auto clauses = routeClauses<Prefix>;
   for (Clause& clause : clauses) {
      clause.needs = {};
   }
   return clauses;
}();

}  // namespace

void checkInterfaceText(std::string_view word) {
   constexpr std::string_view null0 = "null0";
   if (std::ranges::equal(word, null0, {}, [](unsigned char c) { return std::tolower(c); })) {
      throw std::invalid_argument("is written Null0");
   }
   if (!state::isInterfaceWord(word)) {
      throw std::invalid_argument("not an interface name, which has 1 to " +
                                  std::to_string(Lumen::IntfId::maxNameLength) + " bytes and begins with a letter");
   }
}

void checkTagText(std::string_view word) {
   checkAnyNumber(word);
}

std::span<Clause const> ipStaticRouteClauses() {
   return routeClauses<Lumen::Prefix>;
}

std::span<Clause const> ipv6StaticRouteClauses() {
   return routeClauses<Lumen::Ip6Prefix>;
}

std::span<Clause const> noIpStaticRouteClauses() {
   return noRouteClauses<Lumen::Prefix>;
}

std::span<Clause const> noIpv6StaticRouteClauses() {
   return noRouteClauses<Lumen::Ip6Prefix>;
}

U32 checkedNumber(std::string_view word) {
   U32 number = 0;
   std::from_chars(word.data(), word.data() + word.size(), number);
   return number;
}

}  // namespace kiv
