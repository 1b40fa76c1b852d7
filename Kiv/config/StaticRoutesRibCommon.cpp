#include "Kiv/config/StaticRoutesRibCommon.h"

#include "Kiv/KivCliPrint.h"
#include "Kiv/common/Legend.h"
#include "Kiv/common/PrintDocument.h"
#include "Kiv/common/Trace.h"
#include "Kiv/common/Watchdog.h"
#include "Zam/Error.h"
#include "cliprint/JsonScope.h"
#include "cliprint/PlainText.h"

namespace Kiv {

namespace {

using cliprint::JsonScope;
using cliprint::RendererV2;
using cliprint::StringAttrInfo;
using Routing::Route;

// Number of characters written.
template <class... Args>
std::size_t emit(RendererV2& renderer, cliprint::AttrFormat<std::type_identity_t<Args>...> const& format,
                 Args const&... args) {
   int const n = renderer.addAttributes<Args...>(format, args...);
   Zam::assertThat(n >= 0, "n >= 0", traceSource, "void StaticRoutesRibCommon::dump(RoutingConsts)");
   return static_cast<std::size_t>(n);
}

class Dump {
 public:
   Dump(StaticRoutesRibCommon const& request, RoutingConsts const& defaults, RendererV2& renderer)
       : request_(request),
         defaults_(defaults),
         renderer_(renderer) {}

   void printAll() {
      auto const routes = JsonScope::object(renderer_, "routes");
      renderer_.addFrills("%s\n", cliprint::OwnText{request_.legend()});
      auto const& sorted = request_.sortedRoute;
      auto at = shown(sorted.begin());
      while (at != sorted.end() && renderer_.error() == 0) {
         at = printPrefix(at);
      }
   }

 private:
   using Iterator = decltype(StaticRoutesRibCommon::sortedRoute)::const_iterator;

   // The first one from here on that is asked for.
   Iterator shown(Iterator at) const {
      while (at != request_.sortedRoute.end() && !isShown(*at->value)) {
         ++at;
      }
      return at;
   }
   bool isShown(Route const& route) const {
      return route.nonPersistent() == request_.dynamic && (request_.tag == 0 || route.tag() == request_.tag);
   }

   // Prints all routes to one prefix. Returns the next route.
   Iterator printPrefix(Iterator at) {
      auto const prefix = at->key.prefix;
      auto const entry = JsonScope::dictEntry(renderer_, prefix);
      auto const preferences = JsonScope::object(renderer_, "preference");
      for (; at != request_.sortedRoute.end() && at->key.prefix == prefix; at = shown(++at)) {
         printRoute(*at->value);
         allowWatchdog(count_);
      }
      return at;
   }

   void printRoute(Route const& route) {
      cliprint::S32AttrInfo const preference("preference", renderer_, S32{route.key().preference});
      auto const entry = JsonScope::dictEntry(renderer_, preference);
      cliprint::RibRouteTypeAttrInfo type("routeType", renderer_);
      type.setValue(route.routeType());
      indent_ = emit(renderer_, "%-5s", type.getArg());
      renderer_.addFrills("%s", route.key().prefix);
      emit(renderer_, " [%d]", preference.getArg());
      if (route.tag() != defaults_.defaultStaticRouteTag) {
         cliprint::Attr32Info const tag("tag", renderer_, route.tag());
         emit(renderer_, " tag %u", tag.getArg());
      }
      if (route.routeType() == Routing::RouteType::nexthopGroup) {
         renderer_.startLine(indent_);
         StringAttrInfo const group("nexthopGroupName", renderer_, route.nexthopGroupName());
         emit(renderer_, " nexthop-group %s", group.getArg());
      } else if (route.routeType() == Routing::RouteType::drop) {
         renderer_.startLine(indent_);
         renderer_.addFrills(" Null0");
         StringAttrInfo const name("dropNextHopName", renderer_, route.dropNextHopName());
         printName(route.dropNextHopName(), name);
      }
      printVias(route);
      renderer_.addFrills("\n");
   }

   // The list is there in the model of every route, also where there cannot be vias.
   void printVias(Route const& route) {
      auto const vias = JsonScope::list(renderer_, "vias");
      if (route.routeType() == Routing::RouteType::nexthopGroup || route.routeType() == Routing::RouteType::drop) {
         return;
      }
      for (auto const& [via, metric] : route.via()) {
         if (renderer_.isFullerThan(flushThreshold)) {
            renderer_.ioflush();
         }
         auto const entry = JsonScope::listEntry(renderer_);
         printVia(route, via);
      }
   }

   void printVia(Route const& route, Routing::Via const& via) {
      renderer_.startLine(indent_);
      bool const hasHop = !via.hop.isEmpty();
      if (hasHop) {
         StringAttrInfo const hop("nexthopAddr", renderer_, via.hop);
         emit(renderer_, " via %s", hop.getArg());
         if (via.mplsLabel.value() != Lumen::MplsLabel::noLabel) {
            cliprint::Attr32Info const label("mplsLabel", renderer_, via.mplsLabel.value());
            emit(renderer_, ", label %u", label.getArg());
         }
      }
      if (via.intfId.isValid()) {
         renderer_.addFrills("%s", hasHop ? ", " : " ");
         StringAttrInfo const interface("interface", renderer_, via.intfId);
         emit(renderer_, "%s", interface.getArg());
      }
      if (!via.egressVrf.isDefaultVrf()) {
         renderer_.addFrills(" (egress VRF ");
         StringAttrInfo const egressVrf("egressVrf", renderer_, via.egressVrf.bytes());
         emit(renderer_, "%s", egressVrf.getArg());
         renderer_.addFrills(")");
      }
      printDescription(via.intfId);
      if (auto const* const configured = route.viaNextHopName().find(via); configured != nullptr) {
         StringAttrInfo const name("nexthopName", renderer_, *configured);
         printName(*configured, name);
      }
   }

   void printDescription(Lumen::IntfId const& intfId) {
      auto const description =
          request_.allIntfConfig ? request_.allIntfConfig->description(intfId) : std::string_view();
      if (!description.empty()) {
         bool const isText = request_.fmt == cliprint::textFormat;
         renderer_.add(" (", "interfaceDescription",
                       isText ? cliprint::plainText(description) : std::string(description));
         renderer_.addFrills(")");
      }
   }

   void printName(Zam::String const& name, StringAttrInfo const& attribute) {
      if (name != defaults_.defaultStaticRouteName) {
         emit(renderer_, ", name: %s", attribute.getArg());
      }
   }

   StaticRoutesRibCommon const& request_;
   RoutingConsts const& defaults_;
   RendererV2& renderer_;
   std::size_t indent_ = 0;  // of the lines below a route's first
   U32 count_ = 0;
};

}  // namespace

Zam::String StaticRoutesRibCommon::legend() const {
   return ribLegend;
}

int StaticRoutesRibCommon::dump(RoutingConsts const& routingConsts) {
   for (auto const& input : routeInputConf) {
      if (input) {
         for (auto const& [key, route] : input->route()) {
            sortedRouteIs(key, route);
         }
      }
   }
   return printDocument(fd, fmt, [&](RendererV2& renderer) {
      Dump(*this, routingConsts, renderer).printAll();
      renderer.addFrills("\n");
   });
}

}  // namespace Kiv
