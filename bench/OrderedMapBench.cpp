#include "Zam/OrderedMap.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <map>
#include <random>
#include <vector>

namespace {

struct Value {
   std::array<U64, 4> words;
};

struct Ordered {
   Zam::OrderedMap<U64, Value> map;
   void insert(U64 key) { map.insertOrReplace(key, Value{{key}}); }
   U64 sum() const {
      U64 sum = 0;
      for (auto const& [key, value] : map) {
         sum += value.words[0];
      }
      return sum;
   }
   bool contains(U64 key) const { return map.contains(key); }
   void erase(U64 key) { map.erase(key); }
};

struct Reference {
   std::map<U64, Value> map;
   void insert(U64 key) { map.insert_or_assign(key, Value{{key}}); }
   U64 sum() const {
      U64 sum = 0;
      for (auto const& [key, value] : map) {
         sum += value.words[0];
      }
      return sum;
   }
   bool contains(U64 key) const { return map.contains(key); }
   void erase(U64 key) { map.erase(key); }
};

std::vector<U64> keys(benchmark::State const& state) {
   std::vector<U64> keys(static_cast<std::size_t>(state.range(0)));
   for (std::size_t i = 0; i != keys.size(); ++i) {
      keys[i] = i * 37;
   }
   if (state.range(1) != 0) {
      std::shuffle(keys.begin(), keys.end(), std::mt19937_64(7));
   }
   return keys;
}

template <class Map>
void fillThenWalk(benchmark::State& state) {
   auto const order = keys(state);
   for (auto _ : state) {
      Map map;
      for (auto const key : order) {
         map.insert(key);
      }
      benchmark::DoNotOptimize(map.sum());
   }
   state.SetItemsProcessed(state.iterations() * state.range(0));
}

// Every insertion is followed by a read and by an erasure elsewhere, so nothing can be put off.
template <class Map>
void interleaved(benchmark::State& state) {
   auto const order = keys(state);
   Map map;
   for (auto const key : order) {
      map.insert(key);
   }
   std::size_t at = 0;
   for (auto _ : state) {
      auto const key = order[at++ % order.size()];
      map.erase(key);
      map.insert(key + 1);
      benchmark::DoNotOptimize(map.contains(key));
      map.erase(key + 1);
      map.insert(key);
   }
}

template <class Map>
void find(benchmark::State& state) {
   auto const order = keys(state);
   Map map;
   for (auto const key : order) {
      map.insert(key);
   }
   std::size_t at = 0;
   for (auto _ : state) {
      at = (at + 7919) % order.size();
      benchmark::DoNotOptimize(map.contains(order[at]));
   }
}

void sizesAndOrders(benchmark::internal::Benchmark* bench) {
   bench->ArgNames({"size", "shuffled"})->ArgsProduct({{1000, 1000000}, {0, 1}});
}

BENCHMARK(fillThenWalk<Ordered>)->Apply(sizesAndOrders)->Unit(benchmark::kMillisecond);
BENCHMARK(fillThenWalk<Reference>)->Apply(sizesAndOrders)->Unit(benchmark::kMillisecond);
BENCHMARK(interleaved<Ordered>)->Apply(sizesAndOrders);
BENCHMARK(interleaved<Reference>)->Apply(sizesAndOrders);
BENCHMARK(find<Ordered>)->Apply(sizesAndOrders);
BENCHMARK(find<Reference>)->Apply(sizesAndOrders);

}  // namespace
