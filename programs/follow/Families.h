#pragma once

#include "Vault/ForwardingStatus.h"
#include "Vault/RouteStatus.h"
#include "programs/kernel/RouteChoice.h"

// What the tables of the two families are.
namespace follow {

struct Ip4 : kernel::Ip4 {
   using RouteWriter = Vault::Fib::RouteStatusWriter;
   using FecWriter = Vault::Fib::ForwardingStatusWriter;
   static constexpr char const* routePath = "fib/route/";
   static constexpr char const* fecPath = "fib/forwarding";
};

struct Ip6 : kernel::Ip6 {
   using RouteWriter = Vault::Fib6::RouteStatusWriter;
   using FecWriter = Vault::Fib6::ForwardingStatusWriter;
   static constexpr char const* routePath = "fib6/route/";
   static constexpr char const* fecPath = "fib6/forwarding";
};

}  // namespace follow
