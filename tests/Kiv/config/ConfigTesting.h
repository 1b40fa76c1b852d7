#pragma once

#include "Kiv/CliSupport.h"
#include "tests/support/Cases.h"
#include "tests/support/Testing.h"

// What tests of static routes share: commands in short, and a configuration as text.
namespace Kiv::Testing {

using Routing::RouteType;

inline Zam::Ptr<Routing::RouteList> routeList() {
   return Zam::makePtr<Routing::RouteList>();
}
inline Routing::RouteKey key(std::string_view prefix, U8 preference = 1) {
   return {{}, Lumen::IpGenPrefix::parse(prefix), preference};
}

inline auto casesOf(std::string_view section) {
   return testsupport::casesOf("Kiv/config/cases.txt", section);
}
// The parts of a case; "-" stands for an empty one.
inline std::vector<std::string> partsOf(std::string const& text) {
   std::vector<std::string> parts;
   std::istringstream in(text);
   for (std::string part; in >> part;) {
      parts.push_back(part == "-" ? "" : part);
   }
   return parts;
}
// A route of a case that begins with its type, preference, tag, and name.
inline Zam::Ptr<Routing::Route> routeOf(Zam::Ptr<Routing::RouteList> const& list,
                                        std::vector<std::string> const& parts) {
   constexpr std::array<std::string_view, 5> types{"forward", "drop", "nexthopGroup", "l2NexthopGroup",
                                                   "routeCacheConnected"};
   auto const route = list->routeIs(key("10.0.0.0/8", static_cast<U8>(std::stoul(parts[1]))),
                                    static_cast<RouteType>(std::ranges::find(types, parts[0]) - types.begin()));
   route->tagIs(static_cast<U32>(std::stoul(parts[2])));
   route->dropNextHopNameIs(parts[3]);
   route->nexthopGroupNameIs(parts[3]);
   return route;
}
inline std::string onOneLine(std::string text) {
   std::ranges::replace(text, '\n', ';');
   return text;
}

inline Routing::Via through(std::string_view hop, std::string_view intf = "") {
   Routing::Via via;
   via.hop = Lumen::IpGenAddr::parse(hop);
   via.intfId = Lumen::IntfId::parse(intf);
   return via;
}

// One call of manageRoute(); what a test does not mention is left out of the command.
struct Command {
   std::string prefix = "10.0.0.0/8";
   RouteType type = RouteType::forward;
   std::string hop{};
   std::string intf{};
   U16 preference = 1;
   U32 tag = 0;
   U32 metric = 0;
   std::string vrf = "default";
   std::string leakToVrf{};
   std::string egressVrf{};
   std::optional<U32> label{};
   std::string vtep{};
   U32 vni = 0;
   std::optional<std::string> mac{};
   std::string localIntf{};
   bool ribBypass = false;
   bool validation = false;
   std::string name{};
   bool bfd = false;
   std::string group{};

   bool addTo(Zam::Ptr<Routing::RouteList> const& list, IpRouteCliPluginHelper& helper) const {
      return helper.manageRoute(list, vrf, prefix, preference, type, leakToVrf, intf, label.has_value(),
                                label.value_or(0), mac.has_value(), vni, mac.value_or(""), ribBypass, vtep, validation,
                                tag, egressVrf, hop, name, bfd, group, Lumen::IntfId::parse(localIntf), metric);
   }
};

inline Zam::Ptr<IpRouteCliPluginHelper> helperWithLimit(U32 maxVias) {
   auto const status = Zam::makePtr<Routing::Hardware::Status>();
   status->maxViasIs(maxVias);
   return ipRouteCliPluginHelperFactory(status);
}

inline std::string textOf(Routing::Via const& via) {
   return via.hop.stringValue() + "|" + via.intfId.stringValue() + "|" + via.mplsLabel.stringValue() + "|" +
          via.egressVrf.bytes() + "|" + via.vtepAddr.stringValue() + "|" + via.vni.stringValue() + "|" +
          via.routerMac.stringValue() + "|" + via.localIntf.stringValue() + "|" + (via.vtepSipValidation ? "v" : "");
}

}  // namespace Kiv::Testing
