#pragma once

#include "Kiv/CliSupport.h"
#include "Lumen/Ip6AddrWithMask.h"
#include "Lumen/Ip6Prefix.h"
#include "Lumen/IpAddrWithMask.h"
#include "Lumen/Prefix.h"
#include "state/Inputs.h"

// What commands that both address families have are templates over.
namespace kiv {

struct Ip4 {
   static constexpr auto family = Lumen::AddressFamily::ipv4;
   using Prefix = Lumen::Prefix;
   static constexpr char const* everything = "0.0.0.0/0";
   using AddrWithMask = Lumen::IpAddrWithMask;
   using Sorter = Kiv::RouteSorter;
   using Summary = Kiv::RouteSummary;
   static constexpr bool isInterfaceSwitch = false;  // the family's own switch of a sorter
   static auto sorter(Sorter::Inputs inputs) { return Kiv::routeSorterFactory(std::move(inputs)); }
   static auto const& of(state::Inputs::Vrf const& vrf) { return vrf.ip; }
   static auto routes(state::Inputs& inputs, state::VrfId vrfId) { return inputs.routes(vrfId); }
   static auto const& attached(state::Inputs const& inputs) { return inputs.attachedRouteStatus; }
   static Prefix hostOf(Lumen::IpGenAddr const& address) { return {address.ip(), Prefix::maxLength}; }
   static auto const& status(state::Inputs const& inputs) { return inputs.ipStatus; }
   static auto const& hardware(state::Inputs const& inputs) { return inputs.routingHardwareStatus; }
};

struct Ip6 {
   static constexpr auto family = Lumen::AddressFamily::ipv6;
   using Prefix = Lumen::Ip6Prefix;
   static constexpr char const* everything = "::/0";
   using AddrWithMask = Lumen::Ip6AddrWithMask;
   using Sorter = Kiv::Route6Sorter;
   using Summary = Kiv::Route6Summary;
   static constexpr bool isInterfaceSwitch = true;
   static auto sorter(Sorter::Inputs inputs) { return Kiv::route6SorterFactory(std::move(inputs)); }
   static auto const& of(state::Inputs::Vrf const& vrf) { return vrf.ip6; }
   static auto routes(state::Inputs& inputs, state::VrfId vrfId) { return inputs.routes6(vrfId); }
   static auto const& attached(state::Inputs const& inputs) { return inputs.attachedRoute6Status; }
   static Prefix hostOf(Lumen::IpGenAddr const& address) { return {address.ip6(), Prefix::maxLength}; }
   static auto const& status(state::Inputs const& inputs) { return inputs.ip6Status; }
   static auto const& hardware(state::Inputs const& inputs) { return inputs.routing6HardwareStatus; }
};

}  // namespace kiv
