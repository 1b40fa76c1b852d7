#include "programs/kernel/Model.h"

#include "programs/kernel/Decode.h"
#include "programs/kernel/RtnlMessages.h"

#include <linux/rtnetlink.h>
#include <utility>

namespace kernel {

using Lumen::AddressFamily;

Model::Model(Dumps const& dumps) {
   forEachMessage(dumps.links, RTM_NEWLINK, [&](Message const& message) { takeLink(message); });
   forEachMessage(dumps.addresses, RTM_NEWADDR, [&](Message const& message) {
      if (auto const address = decodeAddress(message.payload)) {
         addresses_.append(*address);
      }
   });
   if (!dumps.nextHops.empty()) {
      forEachMessage(dumps.nextHops, RTM_NEWNEXTHOP, [&](Message const& message) { takeNextHop(message); });
   }
   fillRoutes(dumps.routes4, AddressFamily::ipv4);
   fillRoutes(dumps.routes6, AddressFamily::ipv6);
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

void Model::notify(Bytes datagram) {
   for (ByteReader in(datagram); !in.atEnd();) {
      take(takeMessage(in));
   }
}

void Model::take(Message const& message) {
   switch (message.type) {
      case RTM_NEWLINK:
      case RTM_DELLINK:
         return takeLink(message);
      case RTM_NEWADDR:
      case RTM_DELADDR:
         return takeAddress(message);
      case RTM_NEWNEXTHOP:
      case RTM_DELNEXTHOP:
         return takeNextHop(message);
      case RTM_NEWROUTE:
      case RTM_DELROUTE:
         return takeRoute(message);
      default:
         return;
   }
}

void Model::takeLink(Message const& message) {
   auto link = decodeLink(message.payload);
   if (!link) {
      return;
   }
   U32 const index = link->index;
   if (message.type == RTM_NEWLINK) {
      links_.insert_or_assign(index, *std::move(link));
   } else {
      links_.erase(index);
      addresses_.linkDel(index);
   }
}

void Model::takeAddress(Message const& message) {
   if (auto const address = decodeAddress(message.payload)) {
      message.type == RTM_NEWADDR ? addresses_.addressIs(*address) : addresses_.addressDel(*address);
   }
}

void Model::takeNextHop(Message const& message) {
   NextHop nextHop = decodeNextHop(message.payload);
   U32 const id = nextHop.id;
   if (message.type == RTM_NEWNEXTHOP) {
      nextHops_.insert_or_assign(id, std::move(nextHop));
   } else {
      nextHops_.erase(id);
   }
}

void Model::takeRoute(Message const& message) {
   if (auto route = decodeRoute(message.payload)) {
      KernelRoutes& routes = routesOf(*route);
      message.type == RTM_NEWROUTE ? routes.routeIs(*std::move(route), message.flags) : routes.routeDel(*route);
   }
}

KernelRoutes& Model::routesOf(KernelRoute const& route) {
   return route.prefix.family() == AddressFamily::ipv4 ? routes4_ : routes6_;
}

}  // namespace kernel
