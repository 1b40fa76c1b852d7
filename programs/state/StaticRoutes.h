#pragma once

#include "L3/VrfName.h"
#include "Routing/RouteList.h"

#include <string>

namespace state {

class Node;

// The static routes of one VRF, a list per address family.
struct StaticRoutes {
   Zam::Ptr<Routing::RouteList> ip = Zam::makePtr<Routing::RouteList>();
   Zam::Ptr<Routing::RouteList> ip6 = Zam::makePtr<Routing::RouteList>();

   bool isEmpty() const { return ip->route().empty() && ip6->route().empty(); }
   Routing::RouteList& of(Lumen::AddressFamily family) { return family == Lumen::AddressFamily::ipv6 ? *ip6 : *ip; }
};

// Reads a snapshot's list of static routes; `vrfName` is the VRF that they are in. What they name, other than an
// address family, need not be there: configuration may come before an interface, a VRF or a group, and stay behind when
// it goes. What no command can configure is an error.
void readStaticRoutes(Node const& list, L3::VrfName const& vrfName, StaticRoutes& routes);

// The list again, as a snapshot has it, in the order of the routes' keys. Equal routes have equal texts.
void appendStaticRoutes(std::string& out, StaticRoutes const& routes);

// Whether a text can be one word of a configuration command: UTF-8 without blanks and control characters, not empty.
bool isConfigWord(std::string_view text);

}  // namespace state
