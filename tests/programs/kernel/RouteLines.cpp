#include "tests/programs/kernel/RouteLines.h"

namespace kernelTest {

namespace {

std::filesystem::path const here = std::filesystem::path(KIV_SOURCE_DIR) / "tests/programs/kernel";

std::string headerText(Tunnel::IpTunnelEncap const& header) {
   constexpr char const* types[]{"none", "ipInIp", "gre", "vxlan"};
   std::ostringstream text;
   text << " " << types[int(header.type)] << " " << header.source.stringValue() << " > "
        << header.destination.stringValue() << " key " << header.key << " ttl " << int(header.ttl) << " tos "
        << int(header.tos);
   return text.str();
}

// What the via's tunnel adds; it takes the same way as the via, whose next hop may be the tunnel's far end.
std::string tunnelText(state::State const& state, Vault::Fib::Via const& via) {
   if (via.tunnelId == 0) {
      return "";
   }
   using Ways = state::OfTunnel<Tunnel::TunnelFib::Entry>;
   auto const& [tunnelId, tunnel] = *std::ranges::find(state.tunnels, via.tunnelId, &Ways::tunnelId);
   auto const& way = tunnel.vias.at(0);
   auto const stack = std::ranges::find(state.labelStacks, way.encapId, &state::LabelStack::id);
   bool const isToNexthop = way.hop == via.hop || (way.hop.isEmpty() && via.hop == tunnel.ipEncap.destination);
   bool const isSameWay = isToNexthop && way.intfId == via.intfId && tunnel.vias.size() == 1;
   return (stack != state.labelStacks.end() ? " " + stack->labels.stringValue() : headerText(tunnel.ipEncap)) +
          (isSameWay ? "" : " another way");
}

template <class Fec, class Route>
void addRoutes(Lines& lines, state::State const& state, std::string const& vrf, std::vector<Route> const& routes,
               std::vector<Fec> const& fecs) {
   for (Route const& route : routes) {
      std::ostringstream line;
      line << vrf << " " << route.prefix.stringValue() << " type " << int(route.routeType) << " ["
           << int(route.preference) << "/" << route.metric << "]";
      auto const fec = std::ranges::find(fecs, route.fecId, &Fec::fecId);
      if (fec == fecs.end() || fec->primaryVias != fec->vias.size()) {
         lines.insert(line.str() + " with a broken FEC");
         continue;
      }
      for (Vault::Fib::Via const& via : fec->vias) {
         line << " via " << via.hop.stringValue() << " " << via.intfId.name() << " weight " << via.weight;
         if (via.label.label().isLabel()) {
            line << " label " << via.label.raw();
         }
         line << tunnelText(state, via);
      }
      lines.insert(lines.contains(line.str()) ? line.str() + " twice" : line.str());
   }
}

std::vector<std::byte> bytesOf(std::filesystem::path const& path) {
   std::vector<std::byte> bytes(std::filesystem::file_size(path));
   std::ifstream(path, std::ios::binary)
       .read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
   return bytes;
}

}  // namespace

Lines routeLines(state::State const& state) {
   Lines lines;
   for (state::VrfState const& vrf : state.vrfs) {
      addRoutes(lines, state, vrf.name.bytes(), vrf.routes, state.fecs);
      addRoutes(lines, state, vrf.name.bytes(), vrf.routes6, state.fecs6);
   }
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
      lines.insert(line + (interface.tunnel ? " tunnel" + headerText(interface.tunnel) : ""));
   }
   return lines;
}

Lines allLines(state::State const& state) {
   Lines lines = routeLines(state);
   lines.merge(interfaceLines(state));
   return lines;
}

Lines shownLines(std::filesystem::path const& folder) {
   std::string const command = "cd '" + folder.string() + "' && cat addr.json routes4.json routes6.json |" +
                               R"sh(sed -E 's/("encap":[^{}]*)"dst"/\1"to"/g')sh" + "| jq -srf '" +
                               (here / "lines.jq'").string();
   std::istringstream output(outputOf(command));
   Lines lines;
   for (std::string line; std::getline(output, line);) {
      lines.insert(line);
   }
   return lines;
}

Lines difference(Lines const& one, Lines const& other) {
   Lines lines;
   std::ranges::set_symmetric_difference(one, other, std::inserter(lines, lines.end()));
   return lines;
}

std::string outputOf(std::string const& command) {
   auto const close = [](std::FILE* pipe) { pclose(pipe); };
   std::unique_ptr<std::FILE, decltype(close)> const pipe(popen(("{ " + command + "\n} 2>&1").c_str(), "r"), close);
   std::string output;
   std::array<char, 4096> buffer;
   while (std::size_t const count = pipe ? std::fread(buffer.data(), 1, buffer.size(), pipe.get()) : 0) {
      output.append(buffer.data(), count);
   }
   return output;
}

std::filesystem::path dataOf(std::string const& name) {
   return here / "data" / name;
}

kernel::Dumps recordedDumps(std::string const& name) {
   auto const bytes = [&](char const* file) { return bytesOf(dataOf(name) / file); };
   return {bytes("nl_link.bin"), bytes("nl_addr.bin"), bytes("nl_nexthop.bin"), bytes("nl_route_inet.bin"),
           bytes("nl_route_inet6.bin")};
}

}  // namespace kernelTest
