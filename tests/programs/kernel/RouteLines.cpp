#include "tests/programs/kernel/RouteLines.h"

#include <simdjson.h>
#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <tuple>

namespace kernelTest {

namespace {

using simdjson::dom::array;
using simdjson::dom::element;
using simdjson::dom::object;

std::string text(object const& json, char const* key, std::string const& otherwise = "") {
   std::string_view value;
   return json[key].get(value) == simdjson::SUCCESS ? std::string(value) : otherwise;
}

U64 number(object const& json, char const* key, U64 otherwise) {
   U64 value = 0;
   return json[key].get(value) == simdjson::SUCCESS ? value : otherwise;
}

bool has(object const& json, char const* key) {
   return json[key].error() == simdjson::SUCCESS;
}

std::vector<object> objects(array const& json) {
   return {json.begin(), json.end()};
}

bool hasFlag(object const& json, std::string_view flag) {
   array flags;
   return json["flags"].get(flags) == simdjson::SUCCESS &&
          std::ranges::any_of(flags, [&](element each) { return std::string_view(each) == flag; });
}

array parse(simdjson::dom::parser& parser, std::string const& json) {
   return parser.parse(json.empty() ? "[]" : json).get_array();
}

// The top label: "dst" is told twice, and the second one, after "encap", is the label stack.
std::string labelOf(object const& hop) {
   bool afterEncap = false;
   for (auto const& field : hop) {
      if (afterEncap && field.key == "dst") {
         std::string const stack(std::string_view(field.value));
         return " label " + stack.substr(0, stack.find('/'));
      }
      afterEncap |= field.key == "encap" && std::string_view(field.value) == "mpls";
   }
   return "";
}

std::string hopOf(object const& hop, U64 weight) {
   object via;
   std::string const gateway = hop["via"].get(via) == simdjson::SUCCESS ? text(via, "host") : text(hop, "gateway");
   return " via " + gateway + " " + text(hop, "dev") + " weight " + std::to_string(weight) + labelOf(hop);
}

std::string hopsOf(object const& route) {
   array nextHops;
   std::vector<object> hops{route};
   if (route["nexthops"].get(nextHops) == simdjson::SUCCESS) {
      hops = objects(nextHops);
   }
   std::erase_if(hops, [](object const& hop) { return hasFlag(hop, "dead"); });
   std::string all;
   for (object const& hop : hops) {
      all += hopOf(hop, hops.size() == 1 ? 1 : number(hop, "weight", 1));
   }
   return all;
}

// Route type in IPv4 and IPv6, and preference.
using Kind = std::tuple<int, int, int>;

std::string kindOf(object const& route, bool isIp6) {
   static std::map<std::string, Kind> const kinds{
       {"local", {1, 1, 0}},   {"anycast", {1, 1, 0}},  {"broadcast", {3, 1, 0}},  {"connected", {11, 7, 0}},
       {"boot", {7, 4, 1}},    {"static", {7, 4, 1}},   {"keepalived", {7, 4, 1}}, {"dhcp", {35, 22, 254}},
       {"bgp", {25, 12, 200}}, {"ospf", {15, 11, 110}}, {"isis", {27, 19, 115}},   {"rip", {10, 6, 120}},
       {"other", {9, 5, 254}},
   };
   std::string const type = text(route, "type");
   bool const isOnLink = !has(route, "gateway") && !has(route, "via") && !has(route, "nexthops");
   std::string name = text(route, "protocol");
   if (type == "unicast" && name == "kernel" && isOnLink) {
      name = "connected";
   } else if (type == "local" || type == "anycast" || type == "broadcast") {
      name = type;
   }
   auto const& [type4, type6, preference] = kinds.contains(name) ? kinds.at(name) : kinds.at("other");
   bool const isDrop = type == "blackhole" || type == "unreachable" || type == "prohibit";
   int const drop = isIp6 ? 21 : 29;
   return " type " + std::to_string(isDrop ? drop : (isIp6 ? type6 : type4)) + " [" + std::to_string(preference) + "/";
}

std::string prefixOf(object const& route, bool isIp6) {
   std::string const destination = text(route, "dst");
   if (destination == "default") {
      return isIp6 ? "::/0" : "0.0.0.0/0";
   }
   return destination.find('/') != std::string::npos ? destination : destination + (isIp6 ? "/128" : "/32");
}

std::map<std::string, std::string> vrfByTable(array const& links) {
   std::map<std::string, std::string> vrfs{{"main", "default"}, {"local", "default"}};
   for (object const& link : objects(links)) {
      std::string_view kind;
      U64 table = 0;
      if (link["linkinfo"]["info_kind"].get(kind) == simdjson::SUCCESS && kind == "vrf" &&
          link["linkinfo"]["info_data"]["table"].get(table) == simdjson::SUCCESS) {
         vrfs[std::to_string(table)] = text(link, "ifname");
      }
   }
   return vrfs;
}

// What `ip route` prints of one prefix, best first, with the rest of its line.
using Ranked = std::multimap<std::tuple<bool, std::string, U64>, std::pair<std::string, std::string>>;

void addRoutes(Lines& lines, std::string const& json, bool isIp6, std::map<std::string, std::string> const& vrfs) {
   simdjson::dom::parser parser;
   std::map<std::string, Ranked> byPlace;
   for (object const& route : objects(parse(parser, json))) {
      std::string const type = text(route, "type");
      std::string const table = text(route, "table");
      bool const isDrop = type == "blackhole" || type == "unreachable" || type == "prohibit";
      std::string const hops = isDrop ? "" : hopsOf(route);
      if (!vrfs.contains(table) || type == "throw" || type == "multicast" || has(route, "from") ||
          (hops.empty() && !isDrop)) {
         continue;
      }
      U64 const metric = number(route, "metric", 0);
      byPlace[vrfs.at(table) + " " + prefixOf(route, isIp6)].emplace(
          std::tuple(table != "local", text(route, "tos"), metric),
          std::pair(kindOf(route, isIp6) + std::to_string(metric) + "]", hops));
   }
   for (auto const& [place, ranked] : byPlace) {
      auto const& [rank, best] = *ranked.begin();
      std::string line = place + best.first + best.second;
      auto const [first, last] = ranked.equal_range(rank);
      for (auto other = std::next(first); isIp6 && other != last; ++other) {
         line += other->second.first == best.first ? other->second.second : "";
      }
      lines.insert(line);
   }
}

template <class Fec, class Route>
void addRoutes(Lines& lines, std::string const& vrf, std::vector<Route> const& routes, std::vector<Fec> const& fecs) {
   for (Route const& route : routes) {
      std::ostringstream line;
      line << vrf << " " << route.prefix.stringValue() << " type " << int(route.routeType) << " ["
           << int(route.preference) << "/" << route.metric << "]";
      auto const fec = std::ranges::find(fecs, route.fecId, &Fec::fecId);
      if (fec == fecs.end() || fec->primaryVias != fec->vias.size()) {
         line << " with a broken FEC";
      } else {
         for (Vault::Fib::Via const& via : fec->vias) {
            line << " via " << via.hop.stringValue() << " " << via.intfId.name() << " weight " << via.weight;
            if (via.label.label().isLabel()) {
               line << " label " << via.label.raw();
            }
         }
      }
      bool const isNew = lines.insert(line.str()).second;
      if (!isNew) {
         lines.insert(line.str() + " twice");
      }
   }
}

std::string read(std::filesystem::path const& path) {
   std::ifstream file(path, std::ios::binary);
   if (!file) {
      throw std::runtime_error("cannot read " + path.string());
   }
   return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

Lines routeLines(state::State const& state) {
   Lines lines;
   for (state::VrfState const& vrf : state.vrfs) {
      addRoutes(lines, vrf.name.bytes(), vrf.routes, state.fecs);
      addRoutes(lines, vrf.name.bytes(), vrf.routes6, state.fecs6);
   }
   return lines;
}

Lines routeLines(IpJson const& json) {
   simdjson::dom::parser parser;
   auto const vrfs = vrfByTable(parse(parser, json.addresses));
   Lines lines;
   addRoutes(lines, json.routes4, false, vrfs);
   addRoutes(lines, json.routes6, true, vrfs);
   return lines;
}

Lines interfaceLines(state::State const& state) {
   Lines lines;
   for (state::Interface const& interface : state.interfaces) {
      auto const vrf = std::ranges::find(state.vrfs, interface.vrfId, &state::VrfState::id);
      std::string line = std::string(interface.intfId.name()) + " vrf " + std::string(vrf->name) +
                         (interface.loopback ? " loopback" : "") + (interface.linkUp ? " up" : "");
      for (auto const& address : interface.addresses) {
         line += " " + address.stringValue();
      }
      for (auto const& address : interface.addresses6) {
         line += " " + address.stringValue();
      }
      lines.insert(line);
   }
   return lines;
}

Lines interfaceLines(IpJson const& json) {
   simdjson::dom::parser parser;
   array const links = parse(parser, json.addresses);
   std::set<std::string> vrfs;
   for (auto const& [table, name] : vrfByTable(links)) {
      vrfs.insert(name);
   }
   Lines lines;
   for (object const& link : objects(links)) {
      std::string const name = text(link, "ifname");
      std::string const operState = text(link, "operstate");
      std::string const own = vrfs.contains(name) ? name : text(link, "master");
      std::string line = name + " vrf " + (vrfs.contains(own) ? own : "default");
      line += hasFlag(link, "LOOPBACK") || vrfs.contains(name) ? " loopback" : "";
      line += hasFlag(link, "UP") && (operState == "UP" || operState == "UNKNOWN") ? " up" : "";
      for (object const& address : objects(link["addr_info"].get_array())) {
         if (text(address, "scope") != "host") {
            line += " " + text(address, "local") + "/" + std::to_string(number(address, "prefixlen", 0));
         }
      }
      lines.insert(line);
   }
   return lines;
}

std::string difference(Lines const& actual, Lines const& expected) {
   std::string lines;
   for (std::string const& line : actual) {
      lines += expected.contains(line) ? "" : "unexpected: " + line + "\n";
   }
   for (std::string const& line : expected) {
      lines += actual.contains(line) ? "" : "missing: " + line + "\n";
   }
   return lines;
}

std::filesystem::path dataOf(std::string const& name) {
   return std::filesystem::path(KIV_SOURCE_DIR) / "tests/programs/kernel/data" / name;
}

kernel::Dumps recordedDumps(std::string const& name) {
   auto const bytes = [&](char const* file) {
      std::string const content = read(dataOf(name) / file);
      auto const* const first = reinterpret_cast<std::byte const*>(content.data());
      return std::vector(first, first + content.size());
   };
   return {bytes("nl_link.bin"), bytes("nl_addr.bin"), bytes("nl_nexthop.bin"), bytes("nl_route_inet.bin"),
           bytes("nl_route_inet6.bin")};
}

IpJson recordedJson(std::string const& name) {
   std::filesystem::path const folder = dataOf(name);
   return {read(folder / "addr.json"), read(folder / "routes4.json"), read(folder / "routes6.json")};
}

}  // namespace kernelTest
