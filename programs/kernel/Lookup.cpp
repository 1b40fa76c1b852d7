#include "programs/kernel/Lookup.h"

#include "programs/kernel/Decode.h"
#include "programs/kernel/RtnlMessages.h"
#include "programs/kernel/RtnlSocket.h"

#include <linux/rtnetlink.h>
#include <algorithm>
#include <cerrno>

namespace kernel {

namespace {

bool isOfDefaultVrf(KernelRoute const& route) {
   return route.table == RT_TABLE_MAIN || route.table == RT_TABLE_LOCAL;
}

// Whether the answer is all that shows of the address. The box's own addresses are hidden behind the next shorter
// route. The kernel names one route; in IPv6 those through several links without gateways are several, which show as
// one.
bool isWhole(KernelRoute const& route) {
   bool const isIp4 = route.prefix.family() == Lumen::AddressFamily::ipv4;
   if (route.type != RTN_UNICAST || route.nextHopId != 0) {
      return false;
   }
   return isIp4 || (!route.hops.empty() &&
                    std::ranges::none_of(route.hops, [](Hop const& hop) { return hop.gateway.isEmpty(); }));
}

// Whether some route of the VRF would forward the address.
template <class Routes, class Prefix>
bool isForwarded(Routes const& routes, Prefix const& host) {
   return std::ranges::any_of(routes, [&](auto const& route) {
      return route.fecId && Prefix::masked(host.address(), route.prefix.length()) == route.prefix;
   });
}

}  // namespace

Lookup lookUp(Lumen::IpGenAddr const& address) {
   Lookup lookup;
   auto const reply = askForRoute(address);
   ByteReader in{Bytes(reply)};
   Message const message = takeMessage(in);
   if (message.type != RTM_NEWROUTE) {
      lookup.error = message.type == NLMSG_ERROR ? reportedErrno(message) : EPROTO;
      return lookup;
   }
   lookup.route = decodeRoute(message.payload);
   if (lookup.route && isOfDefaultVrf(*lookup.route) && isWhole(*lookup.route)) {
      Changes changes;
      lookup.model.emplace().entitiesAre(readEntityDumps());
      lookup.model->notify(reply, changes);
   }
   return lookup;
}

std::string decidedElsewhere(Lookup const& lookup, Lumen::IpGenAddr const& address, state::State const& state) {
   std::string const who = address.stringValue() + ": ";
   if (lookup.route && !isOfDefaultVrf(*lookup.route)) {
      return who + "the kernel forwards it by table " + std::to_string(lookup.route->table) + ", as a rule says";
   }
   auto const& vrf = state.vrfs.front();
   bool const isIp4 = address.family() == Lumen::AddressFamily::ipv4;
   bool const isForwardedHere =
       lookup.error == ENETUNREACH &&
       (isIp4 ? isForwarded(vrf.routes, Lumen::Prefix(address.ip(), Lumen::Prefix::maxLength))
              : isForwarded(vrf.routes6, Lumen::Ip6Prefix(address.ip6(), Lumen::Ip6Prefix::maxLength)));
   return isForwardedHere ? who + "the kernel does not forward it: a throw route or a rule decides" : "";
}

}  // namespace kernel
