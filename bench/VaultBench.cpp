#include "Vault/ForwardingStatus.h"
#include "Vault/RouteStatus.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>

#include <unistd.h>

// What readers of the shared tables pay: per route in a walk and a lookup, per FEC for its copy.
namespace {

constexpr U32 million = 1'000'000;

std::string fileName(char const* table) {
   auto const place =
       std::filesystem::exists("/dev/shm") ? std::filesystem::path("/dev/shm") : std::filesystem::temp_directory_path();
   return place / ("vaultBench" + std::to_string(::getpid()) + table);
}

Lumen::Prefix prefix4(U32 i) {
   return Lumen::Prefix(Lumen::IpAddr(i << 8U), 24);
}
Lumen::Ip6Prefix prefix6(U32 i) {
   return Lumen::Ip6Prefix(Lumen::Ip6Addr(0x20010db8ULL << 32U | i, 0), 64);
}

// A table of a million routes, whose file is gone before the benchmark starts.
template <class Writer, class Reader>
Reader const& millionRoutes(auto prefixOf) {
   static auto const reader = [&] {
      std::string const name = fileName("Routes");
      Writer writer(name, {million});
      for (U32 i = 0; i < million; ++i) {
         writer.routeIs({.prefix = prefixOf(i), .metric = i, .fecId = Vault::Fib::FecId(i)});
      }
      auto opened = Zam::makePtr<Reader>(name);
      std::filesystem::remove(name);
      return opened;
   }();
   return *reader;
}

template <class Writer, class Reader>
void walkRoutes(benchmark::State& state, auto prefixOf) {
   Reader const& reader = millionRoutes<Writer, Reader>(prefixOf);
   for (auto _ : state) {
      U64 sum = 0;
      reader.walk([&](auto const& route) { sum += route.metric + route.fecId.value() + route.prefix.length(); });
      benchmark::DoNotOptimize(sum);
   }
   state.SetItemsProcessed(static_cast<S64>(state.iterations()) * million);
}

template <class Writer, class Reader>
void lookUpRoutes(benchmark::State& state, auto prefixOf, U32 first) {
   Reader const& reader = millionRoutes<Writer, Reader>(prefixOf);
   U32 i = 0;
   for (auto _ : state) {
      i = (i + 0x9e3779b1U) % million;
      benchmark::DoNotOptimize(reader.route(prefixOf(first + i)));
   }
   state.SetItemsProcessed(state.iterations());
}

void walkRoutes4(benchmark::State& state) {
   walkRoutes<Vault::Fib::RouteStatusWriter, Vault::Fib::RouteStatus>(state, prefix4);
}
void walkRoutes6(benchmark::State& state) {
   walkRoutes<Vault::Fib6::RouteStatusWriter, Vault::Fib6::RouteStatus>(state, prefix6);
}
void routeHit4(benchmark::State& state) {
   lookUpRoutes<Vault::Fib::RouteStatusWriter, Vault::Fib::RouteStatus>(state, prefix4, 0);
}
void routeMiss4(benchmark::State& state) {
   lookUpRoutes<Vault::Fib::RouteStatusWriter, Vault::Fib::RouteStatus>(state, prefix4, million);
}
void routeHit6(benchmark::State& state) {
   lookUpRoutes<Vault::Fib6::RouteStatusWriter, Vault::Fib6::RouteStatus>(state, prefix6, 0);
}
void routeMiss6(benchmark::State& state) {
   lookUpRoutes<Vault::Fib6::RouteStatusWriter, Vault::Fib6::RouteStatus>(state, prefix6, million);
}
BENCHMARK(walkRoutes4)->Unit(benchmark::kMillisecond);
BENCHMARK(walkRoutes6)->Unit(benchmark::kMillisecond);
BENCHMARK(routeHit4);
BENCHMARK(routeMiss4);
BENCHMARK(routeHit6);
BENCHMARK(routeMiss6);

// A table small enough to stay in the cache: what the slot read itself costs.
void walkHotRoutes(benchmark::State& state) {
   std::string const name = fileName("Hot");
   Vault::Fib::RouteStatusWriter writer(name, {256});
   std::filesystem::remove(name);
   for (U32 i = 0; i < 256; ++i) {
      writer.routeIs({.prefix = prefix4(i), .metric = i});
   }
   for (auto _ : state) {
      U64 sum = 0;
      writer.walk([&](Vault::Fib::Route const& route) { sum += route.metric + route.prefix.length(); });
      benchmark::DoNotOptimize(sum);
   }
   state.SetItemsProcessed(static_cast<S64>(state.iterations()) * 256);
}
BENCHMARK(walkHotRoutes);

void addRoutes(benchmark::State& state) {
   std::string const name = fileName("Add");
   for (auto _ : state) {
      Vault::Fib::RouteStatusWriter writer(name, {100'000});
      for (U32 i = 0; i < 100'000; ++i) {
         writer.routeIs({.prefix = prefix4(i), .metric = i});
      }
   }
   std::filesystem::remove(name);
   state.SetItemsProcessed(static_cast<S64>(state.iterations()) * 100'000);
}
BENCHMARK(addRoutes)->Unit(benchmark::kMillisecond);

void copyFec(benchmark::State& state) {
   std::string const name = fileName("Fecs");
   Vault::Fib::ForwardingStatusWriter writer(name, {64});
   std::filesystem::remove(name);
   auto const vias = static_cast<U32>(state.range(0));
   Vault::Fib::Fec fec{.fecId = Vault::Fib::FecId(7), .primaryVias = static_cast<U16>(vias), .vias = {}};
   for (U32 i = 0; i < vias; ++i) {
      fec.vias.push_back(
          {.intfId = Lumen::IntfId::named("Ethernet" + std::to_string(i)), .hop = Lumen::IpAddr(0x0a000001U + i)});
   }
   writer.fecIs(fec);
   for (auto _ : state) {
      benchmark::DoNotOptimize(writer.fec(fec.fecId, fec));
   }
   state.SetItemsProcessed(static_cast<S64>(state.iterations()) * vias);
}
BENCHMARK(copyFec)->Arg(1)->Arg(4)->Arg(64)->Arg(600);

}  // namespace
