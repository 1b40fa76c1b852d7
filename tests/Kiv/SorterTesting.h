#pragma once

#include "Hive/EntityManager.h"
#include "Kiv/CliSupport.h"
#include "Zam/ActivityLock.h"
#include "tests/Vault/VaultTesting.h"
#include "tests/cliprint/Capture.h"
#include "tests/support/StrictJson.h"

#include <thread>

// A box of one VRF whose tables a test fills, and the sorter that shows them.
namespace Kiv::Testing {

// Runs it again and again, until another activity has been let in and made its change; run(changed) sees whether it
// has.
template <class Change, class Run>
void changedDuringAYield(Change const& change, Run const& run) {
   std::jthread other;
   bool changed = false;
   Zam::ScopedActivity const activity;
   other = std::jthread([&] {
      Zam::ScopedActivity const theirs;
      change();
      changed = true;
   });
   for (int runs = 0; !changed && runs < 5000; ++runs) {
      run(std::as_const(changed));
   }
   EXPECT_TRUE(changed);
}

// The names and values that a test typed over the families needs of each.
struct V4 : Ipv4 {
   using Base = Ipv4;
   using Sorter = RouteSorter;
   using RouteWriter = Vault::Fib::RouteStatusWriter;
   using FecWriter = Vault::Fib::ForwardingStatusWriter;
   using Fec = Vault::Fib::Fec;
   static constexpr U8 fecType = 2;
   static constexpr std::array<char const*, 3> nested{"10.0.0.0/8", "10.1.0.0/16", "10.1.1.0/24"};
   static constexpr char const* everything = "0.0.0.0/0";
   static constexpr char const* inNested = "10.1.1.1/32";
   static constexpr char const* hop = "192.0.2.1";
   static constexpr auto ospf = RouteType::ospfIntraArea;
   static Zam::Ptr<Sorter> sorter(Sorter::Inputs inputs) { return routeSorterFactory(std::move(inputs)); }
};

struct V6 : Ipv6 {
   using Base = Ipv6;
   using Sorter = Route6Sorter;
   using RouteWriter = Vault::Fib6::RouteStatusWriter;
   using FecWriter = Vault::Fib6::ForwardingStatusWriter;
   using Fec = Vault::Fib6::Fec;
   static constexpr U8 fecType = 1;
   static constexpr std::array<char const*, 3> nested{"2001:db8::/32", "2001:db8:1::/48", "2001:db8:1:1::/64"};
   static constexpr char const* everything = "::/0";
   static constexpr char const* inNested = "2001:db8:1:1::1/128";
   static constexpr char const* hop = "fe80::1";
   static constexpr auto ospf = RouteType::ospf;
   static Zam::Ptr<Sorter> sorter(Sorter::Inputs inputs) { return route6SorterFactory(std::move(inputs)); }
};

template <class Family>
class Box {
 public:
   using Sorter = typename Family::Sorter;
   using Prefix = typename Family::Prefix;
   using RouteType = typename Family::RouteType;
   using Route = typename Family::Route;
   using FecId = Vault::Fib::FecId;
   using IpStatus = typename Family::IpStatus;

   static constexpr U32 vrfId = 7;

   Box() {
      Hive::EntityManager::stateDirIs(dir_ / "state");
      manager_.emplace(dir_ / "state");
      routes_ = manager_->template create<typename Family::RouteWriter>("routes", 4096);
      fecs_ = manager_->template create<typename Family::FecWriter>("fecs", {.capacity = 1024, .arenaCapacity = 4096});
      hardware_ = manager_->template create<Vault::Fib::UnprogrammedRouteStatusWriter>("hardware", 64);
      kernel_ = manager_->template create<Vault::KernelUnprogrammedRoute::UnprogrammedRouteWriter>("kernel", 64);

      groups_ = manager_->template create<NexthopGroup::EntryStatusWriter>("groups", 64);

      inputs.nexthopGroupEntryStatus = manager_->template mount<NexthopGroup::EntryStatus>("groups");
      inputs.vrfId = vrfId;
      inputs.routingConfig = config;
      config->routingIs(true);
      inputs.routeList = Zam::makePtr<Routing::RouteList>();
      inputs.ipStatus = ipStatus;
      inputs.vrfIdMap = vrfs;
      inputs.allIntfConfig = Zam::makePtr<Interface::AllIntfConfigDir>();
      vrfs->vrfNameIs(vrfId, "default");
      inputs.routingStatus = manager_->template mount<typename Family::RouteStatus>("routes");
      inputs.unprogrammedRouteStatus = manager_->template mount<Vault::Fib::UnprogrammedRouteStatus>("hardware");
      inputs.kernelUnprogrammedRoute =
          manager_->template mount<Vault::KernelUnprogrammedRoute::UnprogrammedRoute>("kernel");
      if constexpr (Family::fecType == V6::fecType) {
         inputs.forwarding6Status = manager_->template mount<Vault::Fib6::ForwardingStatus>("fecs");
      } else {
         inputs.forwardingStatus = manager_->template mount<Vault::Fib::ForwardingStatus>("fecs");
      }
   }

   static Vault::Fib::Via via(char const* hop, char const* intf) {
      Vault::Fib::Via via;
      via.intfId = *intf != '\0' ? Lumen::IntfId::named(intf) : Lumen::IntfId();
      via.hop = *hop != '\0' ? Lumen::IpGenAddr::parse(hop) : Lumen::IpGenAddr();
      return via;
   }
   static FecId fecIdOf(U64 id) { return FecId::of(Family::fecType, id); }
   FecId fecIs(U64 id, std::vector<Vault::Fib::Via> vias, U16 primaryVias = 0) {
      return fecIs(fecIdOf(id), std::move(vias), primaryVias);
   }
   FecId fecIs(FecId fecId, std::vector<Vault::Fib::Via> vias, U16 primaryVias = 0) {
      typename Family::Fec fec;
      fec.fecId = fecId;
      fec.primaryVias = primaryVias;
      fec.vias = std::move(vias);
      fecs_->fecIs(fec);
      return fec.fecId;
   }

   static Prefix prefix(char const* text) { return Prefix::parse(text); }
   Route routeIs(char const* prefix, RouteType type, FecId fecId, U8 preference = 110, U32 metric = 20,
                 U32 srcVrfId = Vrf::VrfIdMap::noVrf) {
      Route route;
      route.prefix = Prefix::parse(prefix);
      route.routeType = type;
      route.preference = preference;
      route.metric = metric;
      route.srcVrfId = srcVrfId;
      route.fecId = fecId;
      routes_->routeIs(route);
      return route;
   }
   // With a FEC of one via.
   Route routeIs(char const* prefix, RouteType type) {
      return routeIs(prefix, type, fecIs(1, {via(Family::hop, "Ethernet1")}));
   }
   void manyRoutesAre(U32 count) {
      for (U32 i = 0; i < count; ++i) {
         auto const text = Family::viasShareRouteLine
                               ? "10." + std::to_string(i / 256) + "." + std::to_string(i % 256) + ".0/24"
                               : "2001:db8:" + std::to_string(1000 + i) + "::/48";
         routeIs(text.c_str(), Family::ospf);
      }
   }
   void hardwareUnprogrammedIs(char const* prefix) {
      hardware_->unprogrammedIs(vrfId, Lumen::IpGenPrefix(Prefix::parse(prefix)));
   }
   void kernelUnprogrammedIs(char const* prefix) {
      kernel_->errorIs(vrfId, Lumen::IpGenPrefix(Prefix::parse(prefix)), {12});
   }

   void nexthopGroupIs(char const* name, U32 id) { groups_->nexthopGroupIdIs(name, id); }

   Zam::Ptr<Sorter> sorter() const {
      auto const made = Family::sorter(inputs);
      made->handleInitialized();
      return made;
   }
   std::string output(U32 format) const {
      testing_cliprint::CapturedFile file;
      EXPECT_TRUE(sorter()->printRoutes(static_cast<U32>(file.fd()), format, false));
      return file.text();
   }
   std::string text() const { return output(1); }
   // The text from the blank line behind the legend on.
   std::string textAfterLegend() const {
      auto const all = text();
      return all.substr(all.find("\n\n") + 2);
   }
   testsupport::JsonValue model() const {
      auto const json = output(2);
      auto const document = testsupport::StrictJson::parse(json);
      EXPECT_TRUE(document.has_value()) << json;
      return document.value_or(testsupport::JsonValue());
   }
   // Fills a table's index with what no index holds.
   void damage(char const* table) const {
      auto const path = dir_ / ("state/" + std::string(table));
      std::string const junk(std::filesystem::file_size(path) - 4096, '\xee');
      std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
      file.seekp(4096);
      file << junk;
   }
   typename Sorter::Inputs inputs;
   Zam::Ptr<Routing::ConfigGen> const config = Zam::makePtr<Routing::ConfigGen>();
   Zam::Ptr<IpStatus> const ipStatus = Zam::makePtr<IpStatus>();
   Zam::Ptr<Vrf::VrfIdMap::Status> const vrfs = Zam::makePtr<Vrf::VrfIdMap::Status>();

 private:
   Vault::Testing::TempDir dir_;  // first: the tables go before it

   std::optional<Hive::EntityManager> manager_;
   Zam::Ptr<typename Family::RouteWriter> routes_;
   Zam::Ptr<typename Family::FecWriter> fecs_;
   Zam::Ptr<Vault::Fib::UnprogrammedRouteStatusWriter> hardware_;
   Zam::Ptr<Vault::KernelUnprogrammedRoute::UnprogrammedRouteWriter> kernel_;
   Zam::Ptr<NexthopGroup::EntryStatusWriter> groups_;
};

extern template class Box<V4>;  // takes long to compile, and does so once
extern template class Box<V6>;
using Families = ::testing::Types<V4, V6>;

}  // namespace Kiv::Testing
