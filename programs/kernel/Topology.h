#pragma once

#include "Lumen/IntfId.h"
#include "Lumen/IpGenPrefix.h"
#include "programs/kernel/Model.h"
#include "state/State.h"

#include <map>
#include <optional>
#include <set>
#include <unordered_map>
#include <utility>
#include <vector>

namespace kernel {

// The machine's links and VRFs: what routes refer to by link index and table number. The tables main and local make up
// the VRF "default"; each VRF device makes a VRF of its name with its table's number as id. Throws RtnlError for two
// links of one name.
class Topology {
 public:
   Topology() = default;
   explicit Topology(Model const& model);

   // Position of the VRF to which the table belongs; none for a table of policy routing.
   std::optional<std::size_t> vrfOfTable(U32 table) const;
   // The tables of the VRF at a position.
   std::vector<U32> const& tablesOf(std::size_t vrf) const { return tables_[vrf]; }
   // The link's interface; an invalid one when there is no such link.
   Lumen::IntfId interface(U32 link) const;
   // The kind of outer header that the link adds.
   Tunnel::IpEncapType tunnelType(U32 link) const;
   // Whether the prefix is the subnet of one of the link's own addresses.
   using Subnets = std::set<std::pair<U32, Lumen::IpGenPrefix>>;
   Subnets const& subnets() const { return subnets_; }
   // Whether routes are the same in both but for those of subnets.
   bool mapsLike(Topology const& other) const;
   bool isSubnet(U32 link, Lumen::IpGenPrefix const& prefix) const { return subnets_.contains({link, prefix}); }

   std::vector<state::Interface> const& interfaces() const { return interfaces_; }
   std::vector<state::VrfState> const& vrfs() const { return vrfs_; }  // without routes, in the order of their ids

 private:
   void addVrfs(std::map<U32, Link> const& links);
   void addInterface(Link const& link, state::VrfId vrfId);
   void addAddress(Address const& address);

   std::vector<state::Interface> interfaces_;
   std::vector<state::VrfState> vrfs_;
   std::vector<std::vector<U32>> tables_;  // by position of the VRF
   std::unordered_map<U32, std::size_t> interfaceByIndex_;
   std::unordered_map<U32, std::size_t> vrfByTable_;
   std::unordered_map<U32, Tunnel::IpEncapType> tunnelTypes_;  // by link
   Subnets subnets_;
};

}  // namespace kernel
