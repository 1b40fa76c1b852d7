#pragma once

#include "state/State.h"

// The two address families of a state: what each has of its own in it.
namespace state {

struct Ip4 {
   using Prefix = Lumen::Prefix;
   using Route = Vault::Fib::Route;
   using Fec = Vault::Fib::Fec;
   using RouteType = Routing::Fib::RouteType;
   static constexpr auto family = Lumen::AddressFamily::ipv4;
   static constexpr U8 adjType = 0;
   static constexpr auto routes = &VrfState::routes;
   static constexpr auto fecs = &State::fecs;
};

struct Ip6 {
   using Prefix = Lumen::Ip6Prefix;
   using Route = Vault::Fib6::Route;
   using Fec = Vault::Fib6::Fec;
   using RouteType = Routing6::Fib::RouteType;
   static constexpr auto family = Lumen::AddressFamily::ipv6;
   static constexpr U8 adjType = 1;
   static constexpr auto routes = &VrfState::routes6;
   static constexpr auto fecs = &State::fecs6;
};

}  // namespace state
