#include "programs/kernel/Model.h"

#include "programs/kernel/Decode.h"
#include "programs/kernel/RtnlMessages.h"

#include <linux/if.h>
#include <linux/netconf.h>
#include <linux/rtnetlink.h>
#include <utility>

namespace kernel {

using Lumen::AddressFamily;

namespace {

// What routes depend on without being told when it changes.
bool leavesDoubt(Link const& before, Link const& after) {
   constexpr U32 flags = IFF_UP | IFF_RUNNING | IFF_LOWER_UP;
   return ((before.flags ^ after.flags) & flags) != 0 || before.master != after.master;
}

// Which settings of forwarding have changed; that of dead next hops changes routes.
void takeSettings(Message const& message, Changes& changes) {
   ByteReader in(message.payload);
   in.takePadded(sizeof(netconfmsg));
   changes.settings = true;
   forEachAttribute(in.rest(), [&](Attribute const& attribute) {
      changes.doubt |= attribute.type == NETCONFA_IGNORE_ROUTES_WITH_LINKDOWN;
   });
}

}  // namespace

Model::Model(Dumps const& dumps) {
   entitiesAre(dumps);
   Changes all;
   if (!dumps.nextHops.empty()) {
      forEachMessage(dumps.nextHops, RTM_NEWNEXTHOP, [&](Message const& message) { takeNextHop(message, all); });
   }
   fillRoutes(dumps.routes4, AddressFamily::ipv4);
   fillRoutes(dumps.routes6, AddressFamily::ipv6);
}

void Model::entitiesAre(Dumps const& dumps) {
   Changes all;
   links_.clear();
   addresses_ = {};
   forEachMessage(dumps.links, RTM_NEWLINK, [&](Message const& message) { takeLink(message, all); });
   forEachMessage(dumps.addresses, RTM_NEWADDR, [&](Message const& message) {
      if (auto const address = decodeAddress(message.payload)) {
         addresses_.append(*address);
      }
   });
}

void Model::routesDel() {
   routes4_ = {};
   routes6_ = {};
   nextHops_.clear();
   missedNextHops_.clear();
}

// A kernel without IPv6 answers with its IPv4 routes when it is asked for the IPv6 ones.
void Model::fillRoutes(Bytes dump, AddressFamily family) {
   forEachMessage(dump, RTM_NEWROUTE, [&](Message const& message) {
      auto route = decodeRoute(message.payload);
      if (route && route->prefix.family() == family) {
         auto& routes = routesOf(*route);
         routes.append(*std::move(route));
      }
   });
}

void Model::notify(Bytes datagram, Changes& changes) {
   for (ByteReader in(datagram); !in.atEnd();) {
      take(takeMessage(in), changes);
   }
}

void Model::take(Message const& message, Changes& changes) {
   switch (message.type) {
      case RTM_NEWLINK:
      case RTM_DELLINK:
         return takeLink(message, changes);
      case RTM_NEWADDR:
      case RTM_DELADDR:
         return takeAddress(message, changes);
      case RTM_NEWNEXTHOP:
      case RTM_DELNEXTHOP:
         return takeNextHop(message, changes);
      case RTM_NEWROUTE:
      case RTM_DELROUTE:
         return takeRoute(message, changes);
      case RTM_NEWNETCONF:
         return takeSettings(message, changes);
      default:
         return;
   }
}

void Model::takeLink(Message const& message, Changes& changes) {
   auto link = decodeLink(message.payload);
   if (!link) {
      return;
   }
   changes.entities = true;
   U32 const index = link->index;
   auto const known = links_.find(index);
   if (message.type == RTM_NEWLINK) {
      changes.doubt |= known != links_.end() && leavesDoubt(known->second, *link);
      links_.insert_or_assign(index, *std::move(link));
   } else {
      changes.doubt = true;
      links_.erase(index);
      addresses_.linkDel(index);
   }
}

void Model::takeAddress(Message const& message, Changes& changes) {
   auto const address = decodeAddress(message.payload);
   if (!address) {
      return;
   }
   changes.entities = true;
   if (message.type == RTM_NEWADDR) {
      // Next hops that were dead live again when their link has its first IPv4 address.
      bool const isNew = addresses_.addressIs(*address);
      changes.doubt |= isNew && address->local.family() == AddressFamily::ipv4;
   } else {
      changes.doubt = true;
      addresses_.addressDel(*address);
   }
}

// What has become of an object says what has become of its routes: the kernel may take them away with it, a daemon
// moves them elsewhere first.
void Model::takeNextHop(Message const& message, Changes& changes) {
   NextHop nextHop = decodeNextHop(message.payload);
   U32 const id = nextHop.id;
   bool const isKernel = routesOf_ == RoutesOf::kernel;
   if (message.type == RTM_NEWNEXTHOP) {
      bool const isNew = nextHops_.insert_or_assign(id, std::move(nextHop)).second;
      changes.nextHops |= !isNew || missedNextHops_.erase(id) != 0;
   } else {
      changes.doubt |= isKernel;
      changes.nextHops |= isKernel;
      nextHops_.erase(id);
   }
}

void Model::takeRoute(Message const& message, Changes& changes) {
   auto route = decodeRoute(message.payload);
   if (!route) {
      return;
   }
   changes.routes.push_back(KernelRoutes::placeOf(*route));
   if (route->nextHopId != 0 && !nextHops_.contains(route->nextHopId)) {
      missedNextHops_.insert(route->nextHopId);
   }
   KernelRoutes& routes = routesOf(*route);
   if (routesOf_ == RoutesOf::daemon) {
      message.type == RTM_NEWROUTE ? routes.onlyRouteIs(*std::move(route)) : routes.placeDel(changes.routes.back());
   } else {
      message.type == RTM_NEWROUTE ? routes.routeIs(*std::move(route), message.flags) : routes.routeDel(*route);
   }
}

KernelRoutes& Model::routesOf(KernelRoute const& route) {
   return route.prefix.family() == AddressFamily::ipv4 ? routes4_ : routes6_;
}

}  // namespace kernel
