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

// Whose routes a list has, which VRF they are in, and how many vias the hardware takes per route, 0 for any number.
struct StaticRoutesOf {
   L3::VrfName const& vrfName;
   bool configured = true;  // or added while the box runs
   U32 maxVias = 0;
   U32 maxVias6 = 0;
};

// Reads a snapshot's list of static routes. What they name, other than an
// address family, need not be there: configuration may come before an interface, a VRF or a group, and stay behind when
// it goes. What no command can configure is an error.
void readStaticRoutes(Node const& list, StaticRoutesOf const& of, StaticRoutes& routes);

// The list again, as a snapshot has it, in the order of the routes' keys. Equal routes have equal texts.
void appendStaticRoutes(std::string& out, StaticRoutes const& routes);

// Whether a text can be one word of a configuration command: UTF-8 without blanks and control characters, not empty.
// None that a command line takes for something of its own: "?", a pipe or an option.
bool isConfigWord(std::string_view text);

// Whether a word is the name of an interface in a command that configures a static route: it begins with a letter and
// is none of the words that such a command has.
bool isInterfaceWord(std::string_view word);

}  // namespace state
