#include "Kiv/CliSupport.h"
#include "Vault/ForwardingStatus.h"
#include "Vault/RouteStatus.h"
#include "Zam/HashMap.h"
#include "Zam/WordSort.h"
#include "bench/Allocations.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

// A whole route command over a full IPv4 table: selecting the routes, and printing them in either format. The prefixes
// come from the file that KIV_BENCH_PREFIXES names, one a line; without it they are made up, with the lengths of an
// Internet table.
namespace {

using Kiv::RouteSorter;
using Vault::Fib::FecId;

constexpr U32 fecs = 10'000;
constexpr U8 ipv4FecType = 2;

std::vector<Lumen::Prefix> readPrefixes(char const* file) {
   std::vector<Lumen::Prefix> prefixes;
   std::ifstream in(file);
   for (std::string line; std::getline(in, line);) {
      prefixes.push_back(Lumen::Prefix::parse(line));
   }
   return prefixes;
}

std::vector<Lumen::Prefix> madeUpPrefixes() {
   // Per mille of the table, by length.
   constexpr std::pair<U8, double> lengths[] = {{24, 596}, {22, 120}, {23, 107}, {21, 56}, {20, 47},
                                                {19, 28},  {16, 15},  {18, 15},  {17, 9},  {12, 7}};
   std::vector<double> weights;
   weights.reserve(std::size(lengths));
   for (auto const& [length, weight] : lengths) {
      weights.push_back(weight);
   }
   std::mt19937 random(1);
   std::discrete_distribution<std::size_t> pick(weights.begin(), weights.end());
   std::vector<Lumen::Prefix> prefixes;
   prefixes.reserve(1'000'000);
   for (int i = 0; i < 1'000'000; ++i) {
      prefixes.push_back(Lumen::Prefix::masked(Lumen::IpAddr(static_cast<U32>(random())), lengths[pick(random)].first));
   }
   std::sort(prefixes.begin(), prefixes.end());
   prefixes.erase(std::unique(prefixes.begin(), prefixes.end()), prefixes.end());
   return prefixes;
}

Vault::Fib::Fec fecOf(U32 id) {
   Vault::Fib::Fec fec;
   fec.fecId = FecId::of(ipv4FecType, id + 1);
   for (U32 i = 0; i <= id % 4 / 2; ++i) {
      Vault::Fib::Via via;
      via.intfId = Lumen::IntfId::named("Ethernet" + std::to_string((id + i) % 64 + 1));
      via.hop = Lumen::IpGenAddr(Lumen::IpAddr(0xc0a80001U + id * 4 + i));
      fec.vias.push_back(via);
   }
   return fec;
}

// Of 8,000 next hops, in groups of 1, 2 or 4.
Vault::Fib::Fec distinctFecOf(U32 id) {
   constexpr U32 nextHops = 8'000;
   Vault::Fib::Fec fec;
   fec.fecId = FecId::of(ipv4FecType, id + 1);
   for (U32 i = 0; i < 1U << id % 3; ++i) {
      U32 const nextHop = (id * 7 + i * 1009) % nextHops;
      Vault::Fib::Via via;
      via.intfId = Lumen::IntfId::named("Ethernet" + std::to_string(nextHop % 64 + 1));
      via.hop = Lumen::IpGenAddr(Lumen::IpAddr(0xc0a80001U + nextHop));
      fec.vias.push_back(via);
   }
   return fec;
}

// The tables of the box, written in no order; their files are gone before the benchmark starts. Routes share the FECs,
// or nearly every one has its own.
template <bool areDistinct>
RouteSorter::Inputs const& tableOf() {
   static RouteSorter::Inputs const inputs = [] {
      auto const place = std::filesystem::exists("/dev/shm") ? std::filesystem::path("/dev/shm")
                                                             : std::filesystem::temp_directory_path();
      auto const base = (place / ("routeTableBench" + std::to_string(::getpid()))).string();
      auto const* const file = std::getenv("KIV_BENCH_PREFIXES");
      auto prefixes = file != nullptr ? readPrefixes(file) : madeUpPrefixes();
      std::shuffle(prefixes.begin(), prefixes.end(), std::mt19937(2));
      Vault::Fib::RouteStatusWriter routes(base + "Routes", {static_cast<U32>(prefixes.size())});
      auto const count = areDistinct ? static_cast<U32>(prefixes.size()) : fecs;
      Vault::Fib::ForwardingStatusWriter forwarding(base + "Fecs", {count});
      for (U32 i = 0; i < count; ++i) {
         forwarding.fecIs(areDistinct ? distinctFecOf(i) : fecOf(i));
      }
      for (U32 i = 0; i < prefixes.size(); ++i) {
         Vault::Fib::Route route;
         route.prefix = prefixes[i];
         route.routeType = Routing::Fib::RouteType::eBgp;
         route.preference = 200;
         route.metric = i % 300;
         route.fecId = FecId::of(ipv4FecType, i * 7919ULL % count + 1);
         routes.routeIs(route);
      }
      RouteSorter::Inputs made;
      made.routingStatus = Zam::makePtr<Vault::Fib::RouteStatus>(base + "Routes");
      made.forwardingStatus = Zam::makePtr<Vault::Fib::ForwardingStatus>(base + "Fecs");
      std::filesystem::remove(base + "Routes");
      std::filesystem::remove(base + "Fecs");
      return made;
   }();
   return inputs;
}

RouteSorter::Inputs const& fullTable() {
   return tableOf<false>();
}

// Of the process's own memory now, the tables that it shares with their writer left out.
double ownBytes() {
   std::ifstream in("/proc/self/status");
   for (std::string word; in >> word;) {
      if (word == "RssAnon:") {
         double kilobytes = 0;
         in >> kilobytes;
         return kilobytes * 1024;
      }
   }
   return 0;
}

double peakMegabytes() {
   rusage usage{};
   ::getrusage(RUSAGE_SELF, &usage);
   return static_cast<double>(usage.ru_maxrss) / 1024;
}

Zam::Ptr<RouteSorter> initializedSorter() {
   auto sorter = Kiv::routeSorterFactory(fullTable());
   sorter->handleInitialized();
   return sorter;
}

void walkTable(benchmark::State& state) {
   auto const& table = *fullTable().routingStatus;
   for (auto _ : state) {
      U64 sum = 0;
      table.walk([&](Vault::Fib::Route const& route) { sum += route.fecId.value(); });
      benchmark::DoNotOptimize(sum);
   }
   state.SetItemsProcessed(state.iterations() * static_cast<S64>(table.routes()));
}
BENCHMARK(walkTable)->Unit(benchmark::kMillisecond);

void selectRoutes(benchmark::State& state) {
   fullTable();
   U32 routes = 0;
   for (auto _ : state) {
      auto const sorter = initializedSorter();
      routes =
          static_cast<U32>(sorter->sortedRoute().begin() != sorter->sortedRoute().end() ? sorter->sortedRoutes() : 0);
   }
   state.SetItemsProcessed(state.iterations() * routes);
   state.counters["peakMB"] = peakMegabytes();
}
BENCHMARK(selectRoutes)->Unit(benchmark::kMillisecond);

// What no selection can do without: reading each slot, one probe of a cache of FECs, appending the route, its share of
// a sort by prefix and its place in the result.
void selectFloor(benchmark::State& state) {
   auto const& table = *fullTable().routingStatus;
   Zam::HashMap<FecId, U64> cache;
   for (U32 i = 0; i < fecs; ++i) {
      cache.insertOrReplace(FecId::of(ipv4FecType, i + 1), i);
   }
   for (auto _ : state) {
      std::vector<Vault::Fib::Route> found;
      std::vector<Zam::WordAndIndex> order;
      U64 sum = 0;
      table.walk([&](Vault::Fib::Route const& route) {
         sum += *cache.find(route.fecId);
         order.push_back({route.prefix.sortWord(), static_cast<U32>(found.size())});
         found.push_back(route);
      });
      Zam::sortByWord(order);
      std::vector<Vault::Fib::Route> sorted;
      sorted.reserve(found.size());
      for (auto const& item : order) {
         sorted.push_back(found[item.index]);
      }
      benchmark::DoNotOptimize(sorted.data());
      benchmark::DoNotOptimize(sum);
   }
   state.SetItemsProcessed(state.iterations() * static_cast<S64>(table.routes()));
}
BENCHMARK(selectFloor)->Unit(benchmark::kMillisecond);

// Counting every route by type and length; walkTable is its floor.
void summarizeRoutes(benchmark::State& state) {
   Kiv::RouteSummary summary;
   summary.routingStatus = fullTable().routingStatus;
   for (auto _ : state) {
      summary.loadInternalStructures();
   }
   benchmark::DoNotOptimize(summary.totalNumRoutes);
   state.SetItemsProcessed(state.iterations() * static_cast<S64>(summary.routingStatus->routes()));
}
BENCHMARK(summarizeRoutes)->Unit(benchmark::kMillisecond);

void longestMatch(benchmark::State& state) {
   auto inputs = fullTable();
   inputs.prefix = Lumen::Prefix::parse("203.0.113.7/32");
   for (auto _ : state) {
      auto const sorter = Kiv::routeSorterFactory(inputs);
      sorter->handleInitialized();
      benchmark::DoNotOptimize(sorter->sortedRoutes());
   }
}
BENCHMARK(longestMatch)->Unit(benchmark::kMicrosecond);

// Everything inside a prefix that few routes are inside of, and one that a walk over the table must answer.
void longerPrefixes(benchmark::State& state) {
   auto inputs = fullTable();
   inputs.prefix = Lumen::Prefix::masked(Lumen::IpAddr(0xcb007100U), static_cast<U8>(state.range(0)));
   inputs.longerPrefixes = true;
   for (auto _ : state) {
      auto const sorter = Kiv::routeSorterFactory(inputs);
      sorter->handleInitialized();
      benchmark::DoNotOptimize(sorter->sortedRoutes());
   }
}
BENCHMARK(longerPrefixes)->Arg(24)->Arg(20)->Arg(16)->Arg(8)->ArgName("length")->Unit(benchmark::kMicrosecond);

// Into a file in memory first, which tells the size, then over and over into nothing.
void printRoutes(benchmark::State& state) {
   auto const format = static_cast<U32>(state.range(0));
   fullTable();
   double const before = ownBytes();
   auto const sorter = initializedSorter();
   int const file = ::memfd_create("output", 0);
   U64 const allocationsBefore = allocations();
   sorter->printRoutes(static_cast<U32>(file), format, false);
   U64 const allocated = allocations() - allocationsBefore;
   struct stat output {};
   ::fstat(file, &output);
   ::close(file);
   int const null = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
   for (auto _ : state) {
      sorter->printRoutes(static_cast<U32>(null), format, false);
   }
   ::close(null);
   auto const routes = static_cast<double>(sorter->sortedRoutes());
   state.SetItemsProcessed(state.iterations() * sorter->sortedRoutes());
   state.SetBytesProcessed(state.iterations() * output.st_size);
   state.counters["allocationsPerFec"] = static_cast<double>(allocated) / fecs;
   state.counters["ownBytesPerRoute"] = (ownBytes() - before) / routes;
   state.counters["peakMB"] = peakMegabytes();
}
BENCHMARK(printRoutes)->Arg(1)->Arg(2)->ArgName("format")->Unit(benchmark::kMillisecond);

// A whole command over a table in which nearly every route has its own FEC.
void showDistinctFecs(benchmark::State& state) {
   auto const format = static_cast<U32>(state.range(0));
   auto const& inputs = tableOf<true>();
   double const before = ownBytes();
   double own = 0;
   U32 routes = 0;
   int const null = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
   for (auto _ : state) {
      auto const sorter = Kiv::routeSorterFactory(inputs);
      sorter->handleInitialized();
      sorter->printRoutes(static_cast<U32>(null), format, false);
      own = ownBytes() - before;
      routes = sorter->sortedRoutes();
   }
   ::close(null);
   state.SetItemsProcessed(state.iterations() * routes);
   state.counters["ownBytesPerRoute"] = own / routes;
}
BENCHMARK(showDistinctFecs)->Arg(1)->Arg(2)->ArgName("format")->Unit(benchmark::kMillisecond);

// What no output can do without: as many lines, written by hand from an array into a buffer of the same size.
void printFloor(benchmark::State& state) {
   struct Line {
      Lumen::Prefix prefix;
      U32 metric;
      U32 fec;
   };
   std::vector<Line> lines;
   fullTable().routingStatus->walk([&](Vault::Fib::Route const& route) {
      lines.push_back({route.prefix, route.metric, static_cast<U32>(route.fecId.id() - 1)});
   });
   std::sort(lines.begin(), lines.end(), [](auto const& a, auto const& b) { return a.prefix < b.prefix; });
   std::vector<std::vector<std::string>> vias;
   for (U32 i = 0; i < fecs; ++i) {
      vias.emplace_back();
      for (auto const& via : fecOf(i).vias) {
         vias.back().push_back("via " + via.hop.stringValue() + ", " + via.intfId.stringValue() + "\n");
      }
   }
   int const null = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
   std::vector<char> buffer(cliprint::globalBufsize);
   for (auto _ : state) {
      char* at = buffer.data();
      for (auto const& line : lines) {
         char const* const begin = at;
         at += std::string_view(" B E      ").copy(at, 10);
         at += line.prefix.formatTo(at);
         at += std::string_view(" [200/").copy(at, 6);
         at = std::to_chars(at, at + 10, line.metric).ptr;
         at += std::string_view("] ").copy(at, 2);
         auto const width = static_cast<std::size_t>(at - begin);
         auto const& texts = vias[line.fec];
         at += texts.front().copy(at, texts.front().size());
         for (std::size_t i = 1; i < texts.size(); ++i) {
            std::memset(at, ' ', width);
            at += width;
            at += texts[i].copy(at, texts[i].size());
         }
         if (static_cast<std::size_t>(at - buffer.data()) > buffer.size() * 2 / 3) {
            benchmark::DoNotOptimize(::write(null, buffer.data(), static_cast<std::size_t>(at - buffer.data())));
            at = buffer.data();
         }
      }
      benchmark::DoNotOptimize(::write(null, buffer.data(), static_cast<std::size_t>(at - buffer.data())));
   }
   ::close(null);
   state.SetItemsProcessed(state.iterations() * static_cast<S64>(lines.size()));
}
BENCHMARK(printFloor)->Unit(benchmark::kMillisecond);

}  // namespace
