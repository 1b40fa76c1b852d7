#include "VaultTesting.h"

// Readers against a writer in another process that changes the tables as fast as it can.
namespace Vault::Testing {

namespace {

constexpr U32 staying = 300;
constexpr U32 coming = 1500;
constexpr std::chrono::milliseconds duration(600);

template <class Family>
bool isWhole(typename Family::Route const& route) {
   return route == patternRoute<Family>(route.prefix, route.metric);
}

}  // namespace

template <class Family>
class ConcurrentRouteTest : public TableTest {
 protected:
   static void write(typename Family::Writer& writer, Random& random) {
      changeOne(
          random, staying, staying + coming,
          [&](U32 i) { writer.routeIs(patternRoute<Family>(Family::distinctPrefix(i), random.number())); },
          [&](U32 i) { writer.routeDel(Family::distinctPrefix(i)); });
   }
};
TYPED_TEST_SUITE(ConcurrentRouteTest, RouteFamilies);

// The table grows twice, under the readers' feet.
TYPED_TEST(ConcurrentRouteTest, whatStaysIsAlwaysThereOnceAndWhole) {
   {
      typename TypeParam::Writer writer(this->path_, {staying});
      for (U32 i = 0; i < staying; ++i) {
         writer.routeIs(patternRoute<TypeParam>(TypeParam::distinctPrefix(i), i));
      }
   }
   typename TypeParam::Reader const reader(this->path_);
   OtherProcess writing([&] {
      typename TypeParam::Writer writer(this->path_);
      for (Random random(5);;) {
         this->write(writer, random);
      }
   });
   Random random(6);
   U32 changes = 0;
   U32 last = 0;
   for (auto const start = std::chrono::steady_clock::now(); within(start, duration);) {
      std::map<decltype(TypeParam::Route::prefix), U32> seen;
      reader.walk([&](typename TypeParam::Route const& route) {
         EXPECT_TRUE(isWhole<TypeParam>(route)) << route.prefix;
         ++seen[route.prefix];
      });
      for (U32 i = 0; i < staying; ++i) {
         ASSERT_EQ(seen[TypeParam::distinctPrefix(i)], 1U) << i;
      }
      for (U32 lookups = 0; lookups < 2000; ++lookups) {
         U32 const i = random.below(staying + coming);
         auto const route = reader.route(TypeParam::distinctPrefix(i));
         ASSERT_TRUE(route.has_value() || i >= staying) << i;
         ASSERT_TRUE(!route || (isWhole<TypeParam>(*route) && route->prefix == TypeParam::distinctPrefix(i)));
         changes += route && route->metric != last ? 1 : 0;
         last = route ? route->metric : last;
      }
   }
   EXPECT_TRUE(writing.stop());
   EXPECT_GT(changes, 1000U);
   EXPECT_GT(reader.routes(), staying) << "the reader went over to the larger table";
   EXPECT_EQ(reader.corruption(), "");
}

// Two long chains that exchange slots all the while: whoever stands on one that has gone over must notice.
TYPED_TEST(ConcurrentRouteTest, aSlotThatChangesChainsLeadsNobodyAstray) {
   constexpr U32 capacity = 64;
   constexpr std::size_t perChain = 20;
   Zam::makePtr<typename TypeParam::Writer>(this->path_, TableFile::Sizes{capacity});
   auto const seed = peek<U64>(this->path_, offsetof(TableHeader, seed));
   std::array<std::vector<decltype(TypeParam::Route::prefix)>, 2> chains;
   for (U32 i = 0; chains[0].size() < perChain || chains[1].size() < perChain; ++i) {
      auto const prefix = TypeParam::distinctPrefix(i);
      U64 const bucket = hashKey(Records::toKey(prefix), seed) % capacity;
      if (bucket < chains.size() && chains[bucket].size() < perChain) {
         chains[bucket].push_back(prefix);
      }
   }
   // The two that stay are the ends of their chains: everybody who looks for them passes all the others.
   {
      typename TypeParam::Writer writer(this->path_);
      writer.routeIs(patternRoute<TypeParam>(chains[0][0], 0));
      writer.routeIs(patternRoute<TypeParam>(chains[1][0], 1));
   }
   OtherProcess writing([&] {
      typename TypeParam::Writer writer(this->path_);
      for (Random random(8);;) {
         auto const& chain = chains[random.below(2)];
         auto const& prefix = chain[1 + random.below(perChain - 1)];
         if (!writer.routeDel(prefix)) {
            writer.routeIs(patternRoute<TypeParam>(prefix, random.number()));
         }
      }
   });
   typename TypeParam::Reader const reader(this->path_);
   for (auto const start = std::chrono::steady_clock::now(); within(start, duration);) {
      for (U32 lookups = 0; lookups < 500; ++lookups) {
         ASSERT_TRUE(reader.route(chains[lookups % 2][0]).has_value());
      }
   }
   EXPECT_TRUE(writing.stop());
   EXPECT_EQ(reader.corruption(), "");
}

// The writer is killed wherever it happens to be, over and over. Each next one finds a table that it can go on with,
// and readers lose at most the entry that was being written.
TYPED_TEST(ConcurrentRouteTest, aWriterMayEndAnywhere) {
   Zam::makePtr<typename TypeParam::Writer>(this->path_, TableFile::Sizes{20});
   typename TypeParam::Reader const reader(this->path_);
   U32 repaired = 0;
   for (U32 round = 0; round < 40; ++round) {
      {
         OtherProcess writing([&] {
            typename TypeParam::Writer writer(this->path_);
            for (Random random(round);;) {
               this->write(writer, random);
            }
         });
         ::usleep(2000 + round * 37);
         EXPECT_TRUE(writing.stop());
      }
      U32 met = 0;
      reader.walk([&](typename TypeParam::Route const& route) {
         EXPECT_TRUE(isWhole<TypeParam>(route));
         ++met;
      });
      typename TypeParam::Writer writer(this->path_);
      repaired += writer.repaired();
      U32 left = 0;
      writer.walk([&](typename TypeParam::Route const& route) {
         EXPECT_EQ(writer.route(route.prefix), route);
         ++left;
      });
      EXPECT_EQ(left, writer.routes());
      EXPECT_EQ(left, met);
   }
   EXPECT_EQ(std::distance(std::filesystem::directory_iterator(this->dir_ / ""), {}), 1) << "left beside it";
   this->RecordProperty("repaired", static_cast<int>(repaired));
}

using ConcurrentFecTest = TableTest;

TEST_F(ConcurrentFecTest, aFecIsReadAsItWasWrittenOrNotAtAll) {
   using Fec = Fib6::Fec;
   constexpr U32 fecs = 40;
   // Sizes change all the while, in an arena so small that it grows, and that places are soon used again by other FECs.
   auto const write = [](Fib6::ForwardingStatusWriter& writer, Random& random) {
      U32 const version = random.number() & 0xffffffU;
      U32 const vias = version % 8 == 0 ? version % 601 : version % 7;
      changeOne(
          random, fecs, fecs + 10, [&](U32 i) { writer.fecIs(patternFec<Fec>(Fib::FecId(1 + i), version, vias)); },
          [&](U32 i) { writer.fecDel(Fib::FecId(1 + i)); });
   };
   {
      Fib6::ForwardingStatusWriter writer(path_, {fecs + 10, 200});
      for (U32 id = 1; id <= fecs; ++id) {
         writer.fecIs(patternFec<Fec>(Fib::FecId(id), 0, 0));
      }
   }
   Fib6::ForwardingStatus const reader(path_);
   OtherProcess writing([&] {
      Fib6::ForwardingStatusWriter writer(path_);
      for (Random random(1);;) {
         write(writer, random);
      }
   });
   auto const isWhole = [](Fec const& fec) {
      U32 const version = fec.vias.empty() ? fec.primaryVias : fec.vias.front().forwardingVrf;
      return fec == patternFec<Fec>(fec.fecId, version, static_cast<U32>(fec.vias.size()));
   };
   Fec fec;
   U32 large = 0;
   Random random(2);
   for (auto const start = std::chrono::steady_clock::now(); within(start, duration);) {
      for (U32 lookups = 0; lookups < 300; ++lookups) {
         Fib::FecId const fecId(1 + random.below(fecs));
         ASSERT_TRUE(reader.fec(fecId, fec));
         ASSERT_TRUE(fec.fecId == fecId && isWhole(fec)) << fecId.value();
         large += fec.vias.size() > 100 ? 1 : 0;
      }
      std::vector<U32> seen(fecs + 11);
      reader.walk([&](Fec const& met) {
         EXPECT_TRUE(isWhole(met));
         ++seen[met.fecId.value()];
      });
      for (U32 id = 1; id <= fecs; ++id) {
         ASSERT_EQ(seen[id], 1U) << id;
      }
   }
   EXPECT_TRUE(writing.stop());
   EXPECT_GT(large, 10U);
   EXPECT_EQ(reader.corruption(), "");
   Fib6::ForwardingStatusWriter const next(path_);
   U32 left = 0;
   next.walk([&](Fec const& met) {
      EXPECT_TRUE(isWhole(met));
      ++left;
   });
   EXPECT_EQ(next.fecs(), left);
   EXPECT_GE(left + next.repaired(), fecs);
}

}  // namespace Vault::Testing
