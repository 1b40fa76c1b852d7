#include "SorterTesting.h"

#include <pthread.h>

// Selection while another process writes, and of FECs that lead to each other without end.
namespace Kiv::Testing {

namespace {

using Vault::Fib::FecId;
using Vault::Testing::Random;

template <class Family>
class SelectionConcurrencyTest : public ::testing::Test {
 public:
   using Prefix = typename Family::Prefix;
   using Route = typename Family::Route;
   using Fec = typename Family::Fec;
   using Pattern = std::conditional_t<Prefix::maxLength == 32, Vault::Testing::Ip4Routes, Vault::Testing::Ip6Routes>;

   // The routes and FECs with low numbers change and never go; as many routes and ten FECs come and go.
   static constexpr U32 staying = 200;
   static constexpr U32 stayingFecs = 40;

   SelectionConcurrencyTest() { Hive::EntityManager::stateDirIs(dir_ / "state"); }
   Hive::EntityManager state() const { return Hive::EntityManager(dir_ / "state"); }
   static std::string fecsOf(U8 adjType) { return "fecs" + std::to_string(adjType); }

   // All that there is of a route or FEC follows from its stamp, which every via carries.
   static Route route(Prefix const& prefix, U32 stamp) {
      Route made;
      made.prefix = prefix;
      made.routeType = Family::ospf;
      made.metric = stamp;
      made.preference = static_cast<U8>(stamp);
      made.fecId = Box<Family>::fecIdOf(1 + stamp % (stayingFecs + 10));
      return made;
   }
   static Fec fec(U32 id, U32 stamp) {
      Fec made{Box<Family>::fecIdOf(id), 0, std::vector<Vault::Fib::Via>(1 + stamp % 64)};
      for (std::size_t i = 0; i < made.vias.size(); ++i) {
         made.vias[i].intfId = Lumen::IntfId::named("Ethernet" + std::to_string(stamp));
         made.vias[i].hop = Lumen::Ip6Addr(stamp, i);
      }
      return made;
   }
   static bool isWhole(FecCache const& fecs, FecRecord const& cached) {
      if (cached.viaCount == 0) {
         return cached.fecId.id() > stayingFecs;
      }
      auto const stamp = static_cast<U32>(cached.firstVia->hop().ip6().hi());
      auto const vias = fec(1, stamp).vias;
      return std::ranges::equal(cached.vias(), vias, [&](auto const& each, auto const& via) {
         return fecs.store().arena().leg(each).intfId == via.intfId && each.hop() == via.hop;
      });
   }

   void tablesAre() const {
      auto const routes = state().template create<typename Family::RouteWriter>("routes", 2 * staying);
      auto const fecs = state().template create<typename Family::FecWriter>(
          fecsOf(Family::fecType), {.capacity = stayingFecs + 10, .arenaCapacity = 16000});
      for (U32 i = 0; i < staying; ++i) {
         routes->routeIs(route(Pattern::distinctPrefix(i), i));
      }
      for (U32 id = 1; id <= stayingFecs; ++id) {
         fecs->fecIs(fec(id, id));
      }
   }
   void writeForEver() const {
      auto const routes = state().template open<typename Family::RouteWriter>("routes");
      auto const fecs = state().template open<typename Family::FecWriter>(fecsOf(Family::fecType));
      for (Random random(3);;) {
         Vault::Testing::changeOne(
             random, staying, 2 * staying,
             [&](U32 i) { routes->routeIs(route(Pattern::distinctPrefix(i), random.number())); },
             [&](U32 i) { routes->routeDel(Pattern::distinctPrefix(i)); });
         Vault::Testing::changeOne(
             random, stayingFecs, stayingFecs + 10, [&](U32 i) { fecs->fecIs(fec(1 + i, random.number() % 0xfffff)); },
             [&](U32 i) { fecs->fecDel(Box<Family>::fecIdOf(1 + i)); });
      }
   }
   typename Family::Sorter::Inputs inputs() const {
      typename Family::Sorter::Inputs made;
      made.routingStatus = state().template mount<typename Family::RouteStatus>("routes");
      made.forwardingStatus = state().template mount<Vault::Fib::ForwardingStatus>(fecsOf(V4::fecType));
      made.forwarding6Status = state().template mount<Vault::Fib6::ForwardingStatus>(fecsOf(V6::fecType));
      return made;
   }

 private:
   testsupport::TempDir dir_;
};
TYPED_TEST_SUITE(SelectionConcurrencyTest, Families);

TYPED_TEST(SelectionConcurrencyTest, whatStaysIsShownOnceAndWhole) {
   this->tablesAre();
   Vault::Testing::OtherProcess writing([this] { this->writeForEver(); });
   auto inputs = this->inputs();
   Random random(4);
   constexpr U32 enough = 1000;
   U32 changes = 0;
   std::map<typename TypeParam::Prefix, U32> stamps;
   auto const start = std::chrono::steady_clock::now();
   while (changes <= enough && Vault::Testing::within(start, std::chrono::minutes(1))) {
      U32 const shape = random.below(3);
      U32 const one = random.below(this->staying);
      // Everything, everything inside a prefix that holds all, or the longest match of an address in one.
      using P = typename TypeParam::Prefix;
      P const host(TestFixture::Pattern::distinctPrefix(one).address(), P::maxLength);
      inputs.longerPrefixes = shape == 1;
      inputs.prefix = std::array{P(), P::parse(TypeParam::nested[0]), host}[shape];
      auto const sorter = TypeParam::sorter(inputs);
      sorter->handleInitialized();
      std::map<typename TypeParam::Prefix, U32> seen;
      for (auto const& [prefix, route] : sorter->sortedRoute()) {
         ASSERT_EQ(route, this->route(prefix, route.metric));
         ASSERT_TRUE(sorter->fecHas(route.fecId)) << prefix;
         changes += std::exchange(stamps[prefix], route.metric) != route.metric ? 1 : 0;
         ++seen[prefix];
      }
      sorter->fecs().forEach(
          [&](auto const& fec) { ASSERT_TRUE(this->isWhole(sorter->fecs(), fec)) << fec.fecId.id(); });
      for (U32 i = 0; i < this->staying; ++i) {
         ASSERT_EQ(seen[TestFixture::Pattern::distinctPrefix(i)], shape != 2 || i == one ? 1U : 0U)
             << shape << ": " << i;
      }
   }
   EXPECT_TRUE(writing.stop());
   EXPECT_GT(changes, enough);
   EXPECT_EQ(inputs.routingStatus->corruption(), "");
}

// Ten thousand FECs below each other, in two tables by turns, all with ways back up, on a stack without room for a call
// per level.
TYPED_TEST(SelectionConcurrencyTest, depthOfAHierarchyCostsNoStack) {
   constexpr U32 depth = 10000;
   constexpr std::size_t stackSize = 256 * 1024;
   auto const idOf = [](U32 level) { return FecId::of(static_cast<U8>(1 + level % 2), level); };
   auto const through = [&](U32 level) {
      Vault::Fib::Via via;
      via.intfId = Lumen::IntfId::fromFecId(idOf(level).value());
      return via;
   };
   auto const fecs = this->state().template create<Vault::Fib::ForwardingStatusWriter>(this->fecsOf(2), depth);
   auto const fecs6 = this->state().template create<Vault::Fib6::ForwardingStatusWriter>(this->fecsOf(1), depth);
   for (U32 level = 1; level <= depth; ++level) {
      std::vector const vias{through(level % depth + 1), through(level / 2 + 1), through(level)};
      level % 2 == 0 ? fecs6->fecIs({idOf(level), 0, vias}) : fecs->fecIs({idOf(level), 0, vias});
   }
   auto route = this->route(TestFixture::Prefix::parse(TypeParam::nested[0]), 0);
   route.fecId = idOf(1);
   this->state().template create<typename TypeParam::RouteWriter>("routes", 1)->routeIs(route);
   auto const sorter = TypeParam::sorter(this->inputs());
   auto const initialize = [](void* of) -> void* {
      static_cast<typename TypeParam::Sorter*>(of)->handleInitialized();
      return nullptr;
   };
   pthread_attr_t small;
   pthread_t thread;
   ASSERT_EQ(::pthread_attr_init(&small) + ::pthread_attr_setstacksize(&small, stackSize), 0);
   ASSERT_EQ(::pthread_create(&thread, &small, initialize, sorter.get()), 0);
   ASSERT_EQ(::pthread_join(thread, nullptr) + ::pthread_attr_destroy(&small), 0);
   EXPECT_EQ(sorter->fecs().size(), depth);
   sorter->fecs().forEach(
       [](auto const& fec) { ASSERT_TRUE(fec.hierarchical && fec.viaCount >= 2) << fec.fecId.id(); });
}

}  // namespace

}  // namespace Kiv::Testing
