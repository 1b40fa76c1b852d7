#include "FlexAlgo/Config.h"
#include "Interface/AllIntfConfigDir.h"
#include "Interface/IntfStatus.h"
#include "Ip/Status.h"
#include "Ip6/Status.h"
#include "L3/Config.h"
#include "NexthopGroup/EntryStatus.h"
#include "Routing/AttachedRouteStatus.h"
#include "Routing/ConfigGen.h"
#include "Routing/Hardware/Status.h"
#include "Routing/Rib/RouteCache/Evpn/ViaConfig.h"
#include "Routing/Rib/RouteConfig.h"
#include "Routing/RouteList.h"
#include "Routing6/Hardware/Status.h"
#include "SrTePolicy/CbfFecOverrideMap.h"
#include "SrTePolicy/PolicyStatus.h"
#include "Tunnel/TunnelFib/TunnelFib.h"
#include "Tunnel/TunnelTable/ProtocolTunnelNameStatus.h"
#include "Tunnel/TunnelTable/TunnelTables.h"
#include "Vrf/VrfIdMap/Status.h"

#include <cxxabi.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <typeinfo>

namespace {

template <class T>
std::string qualifiedName() {
   std::unique_ptr<char, void (*)(void*)> const name(abi::__cxa_demangle(typeid(T).name(), nullptr, nullptr, nullptr),
                                                     std::free);
   return name.get();
}

template <class T>
Zam::Ptr<Zam::PtrInterface> made() {
   if constexpr (std::same_as<T, Routing::Route>) {
      return Zam::makePtr<T>(Routing::RouteKey(), Routing::RouteType::forward);
   } else if constexpr (std::same_as<T, Interface::IntfStatus>) {
      return Zam::makePtr<T>(Lumen::IntfId::named("Ethernet1"));
   } else {
      return Zam::makePtr<T>();
   }
}

template <class T>
struct EntityNames : testing::Test {};

using namespace Tunnel::TunnelTable;  // NOLINT(google-build-using-namespace): eight tables
using Entities = testing::Types<
    Routing::ConfigGen, Routing::Route, Routing::RouteList, Routing::AttachedRouteStatus, Routing::Hardware::Status,
    Routing6::Hardware::Status, Routing::Rib::RouteConfig, Routing::Rib::RouteCache::Evpn::ViaConfig,
    Vrf::VrfIdMap::Status, Interface::AllIntfConfigDir, Interface::IntfStatus, Ip::Status, Ip6::Status, L3::Config,
    NexthopGroup::EntryStatus, Tunnel::TunnelFib::TunnelFib, EvpnVxlanTunnelTable, IsisSrTunnelTable, StaticTunnelTable,
    LdpTunnelTable, BgpLuTunnelTable, NexthopGroupTunnelTable, RsvpLerTunnelTable, IsisFlexAlgoTunnelTable,
    ProtocolTunnelNameStatus, SrTePolicy::PolicyStatus, SrTePolicy::CbfFecOverrideMap, FlexAlgo::Config>;
TYPED_TEST_SUITE(EntityNames, Entities);

// The runtime constructs entities by the name that they answer, and mounts find them by it.
TYPED_TEST(EntityNames, AnswerTheirQualifiedName) {
   auto const entity = made<TypeParam>();
   EXPECT_EQ(entity->fwkType(), qualifiedName<TypeParam>());
   EXPECT_TRUE(Zam::ptrCast<TypeParam const>(entity));
}

}  // namespace
