#pragma once

#include "L3/VrfName.h"
#include "Routing/RouteList.h"
#include "state/Export.h"

#include <string_view>

namespace state {

// The static routes of one VRF, a list per address family.
struct StaticRoutes {
   Zam::Ptr<Routing::RouteList> ip = Zam::makePtr<Routing::RouteList>();
   Zam::Ptr<Routing::RouteList> ip6 = Zam::makePtr<Routing::RouteList>();

   // By value: of the routes, with all that a snapshot says of them.
   KIV_STATE_EXPORT bool operator==(StaticRoutes const& other) const;
   bool isEmpty() const { return ip->route().empty() && ip6->route().empty(); }
   Routing::RouteList& of(Lumen::AddressFamily family) { return family == Lumen::AddressFamily::ipv6 ? *ip6 : *ip; }
};

// Whether a text can be one word of a configuration command: UTF-8 without blanks and control characters, not empty.
// None that a command line takes for something of its own: "?", a pipe or an option.
KIV_STATE_EXPORT bool isConfigWord(std::string_view text);

// Whether a word is the name of an interface in a command that configures a static route: it begins with a letter and
// is none of the words that such a command has.
KIV_STATE_EXPORT bool isInterfaceWord(std::string_view word);

}  // namespace state
