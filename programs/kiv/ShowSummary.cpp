#include "programs/kiv/ShowSummary.h"

#include "Kiv/CliSupport.h"
#include "Zam/TypeRegistry.h"
#include "cliprint/JsonScope.h"
#include "cliprint/RendererV2.h"
#include "programs/kiv/RouteRequest.h"
#include "programs/kiv/Source.h"
#include "programs/kiv/VrfOutput.h"

#include <unistd.h>

#include <array>
#include <map>

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

struct Ip4 {
   static constexpr char const* summaryType = "Kiv::RouteSummary";
   static constexpr auto loads =
       std::to_array<std::string_view>({"loadInternalStructures", "loadAttachedRoutes", "loadRouteCacheRoutes"});
   static constexpr std::span<SummaryRow const> rows{ipRows};
   static auto const& of(state::Inputs::Vrf const& vrf) { return vrf.ip; }
   static auto routes(state::Inputs& inputs, state::VrfId vrfId) { return inputs.routes(vrfId); }
   static auto attached(state::Inputs const& inputs) { return inputs.attachedRouteStatus; }
};

struct Ip6 {
   static constexpr char const* summaryType = "Kiv::Route6Summary";
   static constexpr auto loads = std::to_array<std::string_view>({"loadInternalStructures", "loadAttachedRoutes"});
   static constexpr std::span<SummaryRow const> rows{ipv6Rows};
   static auto const& of(state::Inputs::Vrf const& vrf) { return vrf.ip6; }
   static auto routes(state::Inputs& inputs, state::VrfId vrfId) { return inputs.routes6(vrfId); }
   static auto attached(state::Inputs const& inputs) { return inputs.attachedRoute6Status; }
};

// The counts of one VRF, read back through the runtime.
struct Counts {
   Zam::HashMap<Zam::String, U32> byType{};
   Zam::OrderedMap<U32, U32> byMask{};
   U32 total = 0;

   U32 of(std::string_view category) const {
      auto const* const count = byType.find(Zam::String(category));
      return count != nullptr ? *count : 0;
   }
};

template <class Family>
Counts countsOf(state::Inputs& inputs, state::Inputs::Vrf const& vrf) {
   auto const& type = *Zam::TypeRegistry::instance().type(Family::summaryType);
   std::any summary = type.construct();
   auto const inputIs = [&](std::string_view name, std::any const& value) { type.attributeIs(summary, name, value); };
   inputIs("routingConfig", Family::of(vrf).routingConfig);
   inputIs("routeList", Family::of(vrf).routeList);
   inputIs("routeListDynamic", Family::of(vrf).routeListDynamic);
   inputIs("routingStatus", Family::routes(inputs, vrf.id));
   inputIs("attachedRtStatus", Family::attached(inputs));
   inputIs("vrfIdMap", inputs.vrfIdMap);
   inputIs("vrfName", vrf.name);
   if constexpr (Family::loads.size() == Ip4::loads.size()) {
      inputIs("routeCacheConfig", inputs.routeCacheConfig);
   }
   for (std::string_view const load : Family::loads) {
      type.call(summary, load);
   }
   return {std::any_cast<Zam::HashMap<Zam::String, U32>>(type.attribute(summary, "routeCountByType")),
           std::any_cast<Zam::OrderedMap<U32, U32>>(type.attribute(summary, "routeCountByMask")),
           static_cast<U32>(std::any_cast<S32>(type.attribute(summary, "totalNumRoutes")))};
}

void addTableHead(cliprint::RendererV2& renderer, std::string_view what) {
   renderer.addFrills("\n%-24s %10s\n------------------------ ----------\n", what, "Routes");
}

bool isPartOfTheRowAbove(SummaryRow const& row) {
   return row.label.starts_with(' ');
}

// The last row has what no other has, types without a category among it, so that the rows add up to the total.
U32 countOf(SummaryRow const& row, std::span<SummaryRow const> rows, Counts const& counts) {
   if (&row != &rows.back()) {
      return counts.of(row.category);
   }
   U32 others = counts.total;
   for (SummaryRow const& other : rows.first(rows.size() - 1)) {
      others -= isPartOfTheRowAbove(other) ? 0 : counts.of(other.category);
   }
   return others;
}

// The text leaves out what there is none of; the model has every category.
void addCategories(cliprint::RendererV2& renderer, std::span<SummaryRow const> rows, Counts const& counts) {
   addTableHead(renderer, "Route Type");
   auto const object = cliprint::JsonScope::object(renderer, "routesByType");
   for (SummaryRow const& row : rows) {
      U32 const count = countOf(row, rows, counts);
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

void addMaskLengths(cliprint::RendererV2& renderer, Counts const& counts) {
   addTableHead(renderer, "Mask Length");
   auto const object = cliprint::JsonScope::object(renderer, "routesByMaskLength");
   for (auto const& [length, count] : counts.byMask) {
      cliprint::Attr32Info const maskLength("maskLength", renderer, length);
      cliprint::Attr32Info const routes("routes", renderer, count);
      renderer.startSimpleDictEntry(maskLength);
      renderer.addFrills("/%-23u ", length);
      renderer.addAttributes("%10u\n", routes.getArg());
      renderer.endSimpleDictEntry();
   }
}

ExitStatus printSummary(std::span<SummaryRow const> rows, Counts const& counts, L3::VrfName const& vrfName,
                        cliprint::OutputFormat format) {
   cliprint::CliPrintBuffer buffer(STDOUT_FILENO);
   constexpr bool ownsDocument = true;
   cliprint::RendererV2 renderer(format, buffer, ownsDocument);
   cliprint::Attr32Info const total("totalRoutes", renderer, counts.total);
   renderer.addFrills("\nVRF: %s\n", std::string_view(vrfName));
   renderer.addAttributes("Total routes: %u\n", total.getArg());
   if (counts.total != 0 || renderer.isModel()) {
      addCategories(renderer, rows, counts);
      addMaskLengths(renderer, counts);
   }
   renderer.endDocument();
   renderer.ioflush();
   return buffer.error() == 0 ? ExitStatus::ok : outputFailed(buffer.error());
}

template <class Family>
ExitStatus showSummary(Request const& request) {
   Kiv::registerTypes();
   state::Inputs inputs = inputsFrom(request.options.source);
   auto const vrfs = requestedVrfs(inputs, request);
   std::map<state::VrfId, Counts> counts;
   for (auto const& vrf : vrfs) {
      counts.emplace(vrf.id, countsOf<Family>(inputs, vrf));
   }
   auto const print = [&](state::Inputs::Vrf const& vrf, cliprint::OutputFormat format) {
      return printSummary(Family::rows, counts.at(vrf.id), vrf.name, format);
   };
   ExitStatus status = printPerVrf(request.options.json, vrfs, print);
   for (auto const& vrf : vrfs) {
      status = checkedTable(Family::routes(inputs, vrf.id), status);
   }
   return status;
}

}  // namespace

std::span<SummaryRow const> ipSummaryRows() {
   return ipRows;
}

std::span<SummaryRow const> ipv6SummaryRows() {
   return ipv6Rows;
}

ExitStatus showIpRouteSummary(Request const& request) {
   return showSummary<Ip4>(request);
}

ExitStatus showIpv6RouteSummary(Request const& request) {
   return showSummary<Ip6>(request);
}

}  // namespace kiv
