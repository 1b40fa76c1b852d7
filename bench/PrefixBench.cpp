#include "Lumen/Ip6Prefix.h"
#include "Lumen/Prefix.h"

#include <arpa/inet.h>
#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

// Text and order of prefixes as a route table has them; what the C library offers for the texts is the reference.
namespace {

using Lumen::Ip6Addr;
using Lumen::Ip6Prefix;
using Lumen::IpAddr;
using Lumen::Prefix;

constexpr std::size_t tableSize = 4096;

template <class P>
std::vector<P> randomPrefixes(std::size_t count) {
   std::mt19937_64 random(1);
   std::vector<P> prefixes;
   while (prefixes.size() < count) {
      if constexpr (P::maxLength == 32) {
         prefixes.push_back(P::masked(IpAddr(static_cast<U32>(random())), static_cast<U8>(8 + random() % 25)));
      } else {
         U64 const hi = 0x2001000000000000U | (random() & 0xfff0fff0ffffU);
         prefixes.push_back(
             P::masked(Ip6Addr(hi, random() % 4 == 0 ? random() : 0), static_cast<U8>(32 + random() % 97)));
      }
   }
   return prefixes;
}

template <class P>
std::vector<std::string> texts(std::vector<P> const& prefixes) {
   std::vector<std::string> texts(prefixes.size());
   std::ranges::transform(prefixes, texts.begin(), [](P const& prefix) { return prefix.stringValue(); });
   return texts;
}

// The addresses in network order, as the C library takes them.
auto networkBytes(Prefix const& prefix) {
   return htonl(prefix.address().value());
}
auto networkBytes(Ip6Prefix const& prefix) {
   return prefix.address().bytes();
}

template <class P>
constexpr int family = P::maxLength == 32 ? AF_INET : AF_INET6;

template <class P>
void format(benchmark::State& state) {
   auto const prefixes = randomPrefixes<P>(tableSize);
   char text[P::maxTextLength];
   std::size_t at = 0;
   for (auto _ : state) {
      benchmark::DoNotOptimize(prefixes[at++ % tableSize].formatTo(text));
      benchmark::ClobberMemory();
   }
}
BENCHMARK(format<Prefix>);
BENCHMARK(format<Ip6Prefix>);

template <class P>
void formatReference(benchmark::State& state) {
   auto const prefixes = randomPrefixes<P>(tableSize);
   std::vector<decltype(networkBytes(P()))> bytes(tableSize);
   std::ranges::transform(prefixes, bytes.begin(), [](P const& prefix) { return networkBytes(prefix); });
   char text[INET6_ADDRSTRLEN];
   std::size_t at = 0;
   for (auto _ : state) {
      benchmark::DoNotOptimize(inet_ntop(family<P>, &bytes[at++ % tableSize], text, sizeof(text)));
      benchmark::ClobberMemory();
   }
}
BENCHMARK(formatReference<Prefix>);  // the address only
BENCHMARK(formatReference<Ip6Prefix>);

template <class P>
void parse(benchmark::State& state) {
   auto const lines = texts(randomPrefixes<P>(tableSize));
   std::size_t at = 0;
   for (auto _ : state) {
      benchmark::DoNotOptimize(P::parse(lines[at++ % tableSize]));
   }
}
BENCHMARK(parse<Prefix>);
BENCHMARK(parse<Ip6Prefix>);

template <class P>
void parseReference(benchmark::State& state) {
   auto lines = texts(randomPrefixes<P>(tableSize));
   std::ranges::for_each(lines, [](std::string& line) { line.resize(line.find('/')); });
   decltype(networkBytes(P())) bytes{};
   std::size_t at = 0;
   for (auto _ : state) {
      benchmark::DoNotOptimize(inet_pton(family<P>, lines[at++ % tableSize].c_str(), &bytes));
      benchmark::ClobberMemory();
   }
}
BENCHMARK(parseReference<Prefix>);  // the address only
BENCHMARK(parseReference<Ip6Prefix>);

template <class P>
void sortPrefixes(benchmark::State& state) {
   auto const prefixes = randomPrefixes<P>(static_cast<std::size_t>(state.range(0)));
   for (auto _ : state) {
      state.PauseTiming();
      auto sorted = prefixes;
      state.ResumeTiming();
      std::ranges::sort(sorted);
      benchmark::DoNotOptimize(sorted.data());
   }
   state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(sortPrefixes<Prefix>)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(sortPrefixes<Ip6Prefix>)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

}  // namespace
