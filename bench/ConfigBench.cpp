#include "Kiv/KivIpRouteCliHelper.h"
#include "Kiv/config/AddressAssignmentChecker.h"
#include "Kiv/config/StaticRoutesCliSaver.h"

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

// Configuration support at the size of a full table: saving it, adding to it, and one new address among many.
namespace {

// Neighbouring numbers far apart.
Lumen::Prefix prefix(U32 i) {
   return {Lumen::IpAddr((i * 2654435761U) << 8), 24};
}

bool add(Kiv::IpRouteCliPluginHelper& helper, Zam::Ptr<Routing::RouteList> const& list, std::string const& prefix,
         std::string const& hop) {
   return helper.manageRoute(list, "default", prefix, 1, Routing::RouteType::forward, "", "", false, 0, false, 0, "",
                             false, "", false, 0, "", hop, "", false, "", {}, 0);
}

Zam::Ptr<Kiv::IpRouteCliPluginHelper> helper() {
   auto const status = Zam::makePtr<Routing::Hardware::Status>();
   status->maxViasIs(600);
   return Kiv::ipRouteCliPluginHelperFactory(status);
}

// Made in the order of a saved configuration, or in any.
void savingRoutes(benchmark::State& state) {
   auto const routes = static_cast<U32>(state.range(0));
   auto const list = Zam::makePtr<Routing::RouteList>();
   auto const adder = helper();
   bool const isShuffled = state.range(1) != 0;
   for (U32 i = 0; i < routes; ++i) {
      auto const at = isShuffled ? prefix(i) : Lumen::Prefix(Lumen::IpAddr(i << 8), 24);
      add(*adder, list, at.stringValue(), Lumen::IpAddr(0xc0000200 + i % 4096).stringValue());
   }
   std::size_t bytes = 0;
   for (auto _ : state) {
      Kiv::StaticRoutesCliSaver saver;
      bytes = saver.save(list, false, "ip route ", {}).length();
   }
   state.counters["bytes"] = static_cast<double>(bytes);
   state.counters["perRoute"] = benchmark::Counter(
       static_cast<double>(routes), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(savingRoutes)
    ->ArgNames({"routes", "shuffled"})
    ->Args({1000, 0})
    ->Args({1000000, 0})
    ->Args({1000000, 1})
    ->Unit(benchmark::kMillisecond);

// A thousand routes more in a configuration of the given size.
void addingRoutes(benchmark::State& state) {
   constexpr U32 added = 1000;
   auto const present = static_cast<U32>(state.range(0));
   auto const list = Zam::makePtr<Routing::RouteList>();
   auto const adder = helper();
   for (U32 i = 0; i < present; ++i) {
      add(*adder, list, prefix(i).stringValue(), "192.0.2.1");
   }
   std::vector<std::string> prefixes;
   for (U32 i = 0; i < added; ++i) {
      prefixes.push_back(prefix(present + i).stringValue());
   }
   for (auto _ : state) {
      for (auto const& text : prefixes) {
         add(*adder, list, text, "192.0.2.1");
      }
      state.PauseTiming();
      for (U32 i = 0; i < added; ++i) {
         list->routeDel({{}, prefix(present + i), 1});
      }
      state.ResumeTiming();
   }
   state.SetItemsProcessed(state.iterations() * added);
}
BENCHMARK(addingRoutes)->Arg(0)->Arg(1000)->Arg(1000000)->Unit(benchmark::kMicrosecond);

// A hundred thousand addresses without a conflict; a third of them are secondary ones.
void checkingAnAddress(benchmark::State& state) {
   auto const interfaces = static_cast<U32>(state.range(0));
   auto const config = Zam::makePtr<Ip::Config>();
   std::vector<Zam::Ptr<L3::VrfNameRef>> red;
   for (int i = 0; i < 100; ++i) {
      red.push_back(Zam::makePtr<L3::VrfNameRef>("red"));
   }
   for (U32 i = 0; i < interfaces; ++i) {
      Ip::IpIntfConfig intf;
      intf.vrf = red[i % red.size()];
      intf.addrWithMask = {Lumen::IpAddr(0x0b000000 + i * 256), 24};
      if (i % 2 == 0) {
         intf.secondaryWithMask.insert({Lumen::IpAddr(0x40000000 + i * 256), 24});
      }
      config->intfConfigIs(Lumen::IntfId::named("Vlan" + std::to_string(i)), std::move(intf));
   }
   auto const params =
       Kiv::addressQueryParamsFactory(config, "Vlan1", "Management", Kiv::AddrMatchType::allowNoMatch,
                                      Kiv::AddrMatchType::allowNoMatch, Lumen::IpAddrWithMask::parse("10.0.0.1/24"));
   for (auto _ : state) {
      benchmark::DoNotOptimize(Kiv::AddressAssignmentChecker().check(params));
   }
}
BENCHMARK(checkingAnAddress)->Arg(67000)->Unit(benchmark::kMillisecond);

}  // namespace
