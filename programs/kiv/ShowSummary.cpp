#include "programs/kiv/ShowSummary.h"

#include "Interface/Management.h"
#include "Kiv/common/SafeLookup.h"
#include "cliprint/JsonScope.h"
#include "cliprint/RendererV2.h"
#include "programs/kiv/Families.h"
#include "programs/kiv/Vrfs.h"

#include <array>
#include <map>
#include <set>

namespace kiv {
namespace {

constexpr auto ipRows = std::to_array<SummaryRow>({
    {"connected", "connected"},
    {"attached", "attached"},
    {"internal", "internal"},
    {"static", "static"},
    {"  persistent", "staticPersistent"},
    {"  not persistent", "staticNonPersistent"},
    {"static nexthop group", "staticNexthopGroup"},
    {"BGP", "bgpTotal"},
    {"  external", "bgpExternal"},
    {"  internal", "bgpInternal"},
    {"  local", "bgpLocal"},
    {"aggregate", "aggregate"},
    {"OSPF", "ospfTotal"},
    {"  intra area", "ospfIntraArea"},
    {"  inter area", "ospfInterArea"},
    {"  external type 1", "ospfExternal1"},
    {"  external type 2", "ospfExternal2"},
    {"  NSSA external type 1", "nssaExternal1"},
    {"  NSSA external type 2", "nssaExternal2"},
    {"OSPFv3", "ospfv3Total"},
    {"IS-IS", "isisTotal"},
    {"  level 1", "isisLevel1"},
    {"  level 2", "isisLevel2"},
    {"RIP", "rip"},
    {"VXLAN control service", "vcs"},
    {"DHCP default route", "DhcpDefaultRoute"},
    {"dynamic policy", "dynamicPolicy"},
    {"layer 2 nexthop group", "l2NexthopGroup"},
    {"route cache, connected", "routeCacheConnected"},
    {"route cache, forward", "routeCacheForward"},
    {"gRIBI", "gribi"},
    {"other", ""},
});

// OSPFv3 has one type in IPv6, and RIP is among what has no category.
constexpr auto ipv6Rows = std::to_array<SummaryRow>({
    {"connected", "connected"},
    {"attached", "attached"},
    {"internal", "internal"},
    {"static", "static"},
    {"  persistent", "staticPersistent"},
    {"  not persistent", "staticNonPersistent"},
    {"static nexthop group", "staticNexthopGroup"},
    {"BGP", "bgpTotal"},
    {"  external", "bgpExternal"},
    {"  internal", "bgpInternal"},
    {"  local", "bgpLocal"},
    {"aggregate", "aggregate"},
    {"OSPFv3", "ospfTotal"},
    {"IS-IS", "isisTotal"},
    {"  level 1", "isisLevel1"},
    {"  level 2", "isisLevel2"},
    {"DHCP", "dhcp"},
    {"dynamic policy", "dynamicPolicy"},
    {"layer 2 nexthop group", "l2NexthopGroup"},
    {"route cache, connected", "routeCacheConnected"},
    {"route cache, forward", "routeCacheForward"},
    {"gRIBI", "gribi"},
    {"RIP and other", ""},
});

template <class Family>
constexpr std::span<SummaryRow const> rowsOf{ipRows};
template <>
constexpr std::span<SummaryRow const> rowsOf<Ip6>{ipv6Rows};

// The VRF's neighbours as host routes show them: one on two interfaces once, and none that the FIB has a route for,
// which is counted there.
template <class Family>
Zam::Ptr<Routing::AttachedRouteStatus const> hostsBesideTheFib(state::Inputs& inputs, state::VrfId vrfId) {
   auto hosts = Zam::makePtr<Routing::AttachedRouteStatus>();
   auto const fib = Family::routes(inputs, vrfId);
   std::set<Lumen::IpGenAddr> met;
   for (auto const& [key, neighbor] : Family::attached(inputs)->route()) {
      bool const counts = neighbor.active && neighbor.vrfId == vrfId && !Interface::isManagement(key.intfId);
      auto const lookup = [host = Family::hostOf(key.address)](auto const& table) { return table.route(host); };
      if (counts && !Kiv::safeLookup(fib.get(), lookup) && met.insert(key.address).second) {
         hosts->routeIs(key, neighbor);
      }
   }
   return hosts;
}

template <class Family>
typename Family::Summary countsOf(state::Inputs& inputs, state::Inputs::Vrf const& vrf) {
   typename Family::Summary summary;
   summary.routingConfig = Family::of(vrf).routingConfig;
   summary.routeList = Family::of(vrf).routeList;
   summary.routeListDynamic = Family::of(vrf).routeListDynamic;
   summary.routingStatus = Family::routes(inputs, vrf.id);
   summary.attachedRtStatus = hostsBesideTheFib<Family>(inputs, vrf.id);
   summary.vrfIdMap = inputs.vrfIdMap;
   summary.vrfName = vrf.name;
   summary.loadInternalStructures();
   summary.loadAttachedRoutes();
   if constexpr (requires { summary.loadRouteCacheRoutes(); }) {
      summary.routeCacheConfig = inputs.routeCacheConfig;
      summary.loadRouteCacheRoutes();
   }
   return summary;
}

template <class Summary>
U32 countOf(Summary const& summary, std::string_view category) {
   auto const* const count = summary.routeCountByType.find(Zam::String(category));
   return count != nullptr ? *count : 0;
}

template <class Summary>
U32 totalOf(Summary const& summary) {
   return static_cast<U32>(summary.totalNumRoutes);
}

void addTableHead(cliprint::RendererV2& renderer, std::string_view what) {
   renderer.addFrills("\n%-24s %10s\n------------------------ ----------\n", what, "Routes");
}

bool isPartOfTheRowAbove(SummaryRow const& row) {
   return row.label.starts_with(' ');
}

// The last row has what no other has, types without a category among it, so that the rows add up to the total.
template <class Family>
U32 countOf(SummaryRow const& row, typename Family::Summary const& counts) {
   constexpr auto rows = rowsOf<Family>;
   if (&row != &rows.back()) {
      return countOf(counts, row.category);
   }
   U32 others = totalOf(counts);
   for (SummaryRow const& other : rows.first(rows.size() - 1)) {
      others -= isPartOfTheRowAbove(other) ? 0 : countOf(counts, other.category);
   }
   return others;
}

// The text leaves out what there is none of; the model has every category.
template <class Family>
void addCategories(cliprint::RendererV2& renderer, typename Family::Summary const& counts) {
   addTableHead(renderer, "Route Type");
   auto const object = cliprint::JsonScope::object(renderer, "routesByType");
   for (SummaryRow const& row : rowsOf<Family>) {
      U32 const count = countOf<Family>(row, counts);
      if (count == 0 && renderer.isText()) {
         continue;
      }
      cliprint::StringAttrInfo const category("category", renderer, row.category.empty() ? "other" : row.category);
      cliprint::Attr32Info const routes("routes", renderer, count);
      renderer.startSimpleDictEntry(category);
      renderer.addFrills("%-24s ", row.label);
      renderer.addAttributes("%10u\n", routes.getArg());
      renderer.endSimpleDictEntry();
   }
}

template <class Summary>
void addMaskLengths(cliprint::RendererV2& renderer, Summary const& counts) {
   addTableHead(renderer, "Mask Length");
   auto const object = cliprint::JsonScope::object(renderer, "routesByMaskLength");
   for (auto const& [length, count] : counts.routeCountByMask) {
      cliprint::Attr32Info const maskLength("maskLength", renderer, length);
      cliprint::Attr32Info const routes("routes", renderer, count);
      renderer.startSimpleDictEntry(maskLength);
      renderer.addFrills("/%-23u ", length);
      renderer.addAttributes("%10u\n", routes.getArg());
      renderer.endSimpleDictEntry();
   }
}

template <class Family>
ExitStatus printSummary(Session const& session, typename Family::Summary const& counts) {
   cliprint::CliPrintBuffer buffer(session.output());
   constexpr bool ownsDocument = true;
   cliprint::RendererV2 renderer(session.format(), buffer, ownsDocument);
   cliprint::Attr32Info const total("totalRoutes", renderer, totalOf(counts));
   renderer.addFrills("\nVRF: %s\n", std::string_view(counts.vrfName));
   renderer.addAttributes("Total routes: %u\n", total.getArg());
   if (totalOf(counts) != 0 || renderer.isModel()) {
      addCategories<Family>(renderer, counts);
      addMaskLengths(renderer, counts);
   }
   renderer.endDocument();
   renderer.ioflush();
   return session.ended(buffer.error());
}

struct SummaryArguments {
   std::string vrf{L3::VrfName::defaultVrf};  // or all
};

template <class Family>
ExitStatus showSummary(Session& session, SummaryArguments const& asked) {
   state::Inputs inputs = session.inputs({.family = Family::family});
   auto const vrfs = requestedVrfs(inputs, asked.vrf);
   std::map<state::VrfId, typename Family::Summary> counts;
   for (auto const& vrf : vrfs) {
      counts.emplace(vrf.id, countsOf<Family>(inputs, vrf));
   }
   return printPerVrf(session, vrfs, [&](state::Inputs::Vrf const& vrf) {
      return [&] { return printSummary<Family>(session, counts.at(vrf.id)); };
   });
}

constexpr auto summaryClauses = clauses(vrfOrAllClause<&SummaryArguments::vrf>);

constexpr auto summaryTable = std::to_array<Command>({
    display<showSummary<Ip4>>("show ip route summary", "how many IPv4 routes there are", summaryClauses),
    display<showSummary<Ip6>>("show ipv6 route summary", "how many IPv6 routes there are", summaryClauses),
});

}  // namespace

std::span<SummaryRow const> ipSummaryRows() {
   return ipRows;
}

std::span<SummaryRow const> ipv6SummaryRows() {
   return ipv6Rows;
}

std::span<Command const> summaryCommands() {
   return summaryTable;
}

}  // namespace kiv
