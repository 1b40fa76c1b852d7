#include "programs/kernel/Topology.h"

#include "L3/VrfName.h"
#include "Zam/Error.h"

#include <linux/if.h>
#include <linux/rtnetlink.h>
#include <algorithm>
#include <unordered_set>

namespace kernel {

namespace {

bool isVrf(Link const& link) {
   return link.kind == "vrf";
}

// Linux allows bytes in a name that an interface's name cannot have, such as control characters.
Lumen::IntfId nameOf(Link const& link) {
   try {
      return Lumen::IntfId::named(link.name);
   } catch (Zam::ParseError const&) {
      return Lumen::IntfId::named("if" + std::to_string(link.index));
   }
}

state::VrfState vrfOf(Link const& device) {
   bool const isTaken = device.name == L3::VrfName().bytes();
   return {.id = device.vrfTable,
           .name = std::string_view(isTaken ? device.name + "-" + std::to_string(device.vrfTable) : device.name)};
}

}  // namespace

Topology::Topology(Model const& model) {
   auto const& links = model.links();
   addVrfs(links);
   std::unordered_map<U32, U32> tableOfVrfDevice;
   for (auto const& [index, link] : links) {
      if (isVrf(link)) {
         tableOfVrfDevice[index] = link.vrfTable;
      }
   }
   std::unordered_set<Lumen::IntfId> names;
   for (auto const& [index, link] : links) {
      auto const device = tableOfVrfDevice.find(isVrf(link) ? index : link.master);
      auto const vrf = device != tableOfVrfDevice.end() ? vrfOfTable(device->second) : std::nullopt;
      addInterface(link, vrfs_[vrf.value_or(0)].id);
      if (!names.insert(interfaces_.back().intfId).second) {
         throw RtnlError("rtnetlink: two links named " + link.name);
      }
   }
   for (auto const& [link, addresses] : model.addresses().byLink()) {
      std::ranges::for_each(addresses, [&](Address const& address) { addAddress(address); });
   }
}

void Topology::addVrfs(std::map<U32, Link> const& links) {
   vrfs_.emplace_back();
   for (auto const& [index, link] : links) {
      bool const isOwnTable = link.vrfTable != RT_TABLE_UNSPEC && link.vrfTable != RT_TABLE_MAIN &&
                              link.vrfTable != RT_TABLE_LOCAL && link.vrfTable != Vrf::VrfIdMap::noVrf;
      if (isVrf(link) && isOwnTable && std::ranges::find(vrfs_, link.vrfTable, &state::VrfState::id) == vrfs_.end()) {
         vrfs_.push_back(vrfOf(link));
      }
   }
   std::ranges::sort(vrfs_, {}, &state::VrfState::id);
   for (std::size_t position = 0; position < vrfs_.size(); ++position) {
      vrfByTable_.emplace(vrfs_[position].id, position);
   }
   vrfByTable_.erase(Vrf::VrfIdMap::defaultVrf);
   vrfByTable_.emplace(RT_TABLE_MAIN, 0);
   vrfByTable_.emplace(RT_TABLE_LOCAL, 0);
   tables_.resize(vrfs_.size());
   for (auto const& [table, vrf] : vrfByTable_) {
      tables_[vrf].push_back(table);
   }
}

void Topology::addInterface(Link const& link, state::VrfId vrfId) {
   interfaceByIndex_.emplace(link.index, interfaces_.size());
   interfaces_.push_back({.intfId = nameOf(link),
                          .description = link.alias,
                          .vrfId = vrfId,
                          .loopback = (link.flags & IFF_LOOPBACK) != 0 || isVrf(link),
                          .linkUp = (link.flags & IFF_RUNNING) != 0,
                          .tunnel = link.tunnel.destination.isEmpty() ? Tunnel::IpTunnelEncap{} : link.tunnel});
   if (link.tunnel) {
      tunnelTypes_.emplace(link.index, link.tunnel.type);
   }
}

// The kernel lists an interface's primary address first. Addresses of host scope (127.0.0.1, ::1) are nothing that a
// routing table is asked about.
void Topology::addAddress(Address const& address) {
   auto const found = interfaceByIndex_.find(address.link);
   if (found == interfaceByIndex_.end() || address.scope == RT_SCOPE_HOST) {
      return;
   }
   state::Interface& interface = interfaces_[found->second];
   if (address.local.family() == Lumen::AddressFamily::ipv4) {
      interface.addresses.emplace_back(address.local.ip(), address.length);
      subnets_.emplace(address.link, interface.addresses.back().subnet());
   } else {
      interface.addresses6.emplace_back(address.local.ip6(), address.length);
      subnets_.emplace(address.link, interface.addresses6.back().subnet());
   }
}

std::optional<std::size_t> Topology::vrfOfTable(U32 table) const {
   auto const found = vrfByTable_.find(table);
   return found != vrfByTable_.end() ? std::optional(found->second) : std::nullopt;
}

bool Topology::mapsLike(Topology const& other) const {
   bool const haveSameLinks = interfaceByIndex_.size() == other.interfaceByIndex_.size() &&
                              std::ranges::all_of(interfaceByIndex_, [&](auto const& at) {
                                 return other.interface(at.first) == interface(at.first);
                              });
   return haveSameLinks && vrfByTable_ == other.vrfByTable_ && tunnelTypes_ == other.tunnelTypes_ &&
          std::ranges::equal(vrfs_, other.vrfs_, {}, &state::VrfState::id, &state::VrfState::id);
}

Tunnel::IpEncapType Topology::tunnelType(U32 link) const {
   auto const found = tunnelTypes_.find(link);
   return found != tunnelTypes_.end() ? found->second : Tunnel::IpEncapType::none;
}

Lumen::IntfId Topology::interface(U32 link) const {
   auto const found = interfaceByIndex_.find(link);
   return found != interfaceByIndex_.end() ? interfaces_[found->second].intfId : Lumen::IntfId();
}

}  // namespace kernel
