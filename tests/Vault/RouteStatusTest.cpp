#include "VaultTesting.h"

namespace Vault::Testing {

template <class Family>
class RouteStatusTest : public TableTest {
 protected:
   using Prefix = decltype(Family::Route::prefix);
   using Oracle = std::map<Prefix, typename Family::Route>;

   template <class Table>
   static void expectSame(Table const& table, Oracle const& oracle) {
      Oracle walked;
      table.walk([&](typename Family::Route const& route) {
         EXPECT_TRUE(walked.emplace(route.prefix, route).second) << "met twice: " << route.prefix;
      });
      EXPECT_EQ(walked, oracle);
      EXPECT_EQ(table.routes(), oracle.size());
      EXPECT_EQ(table.empty(), oracle.empty());
      EXPECT_EQ(table.corruption(), "");
   }
};
TYPED_TEST_SUITE(RouteStatusTest, RouteFamilies);

TYPED_TEST(RouteStatusTest, agreesWithAMapThroughAnyChangesAndWriters) {
   Random random(7);
   typename TestFixture::Oracle oracle;
   constexpr U32 capacity = 700;  // after it has grown a few times
   auto writer = Zam::makePtr<typename TypeParam::Writer>(this->path_, TableFile::Sizes{10});
   typename TypeParam::Reader const reader(this->path_);
   for (U32 step = 0; step < 30000; ++step) {
      auto const prefix = TypeParam::prefix(random.below(2000));
      if (random.below(2) == 0 && (oracle.size() < capacity || oracle.contains(prefix))) {
         auto const route = patternRoute<TypeParam>(prefix, random.number());
         writer->routeIs(route);
         oracle[prefix] = route;
      } else {
         EXPECT_EQ(writer->routeDel(prefix), oracle.erase(prefix) == 1);
      }
      auto const sought = TypeParam::prefix(random.below(2000));
      auto const found = reader.route(sought);
      ASSERT_EQ(found.has_value(), oracle.contains(sought)) << sought;
      ASSERT_TRUE(!found || *found == oracle[sought]);
      if (step % 3000 == 0) {
         this->expectSame(reader, oracle);
         writer = nullptr;  // the lock goes with it
         writer = Zam::makePtr<typename TypeParam::Writer>(this->path_);
         EXPECT_EQ(writer->repaired(), 0U);
         this->expectSame(*writer, oracle);
      }
   }
   this->expectSame(reader, oracle);
}

TYPED_TEST(RouteStatusTest, refusesWhatHasNoRoomAndKeepsTheRest) {
   typename TypeParam::Writer writer(this->path_, {5});
   writer.growingIs(false);
   typename TestFixture::Oracle oracle;
   for (U32 i = 0; i < 5; ++i) {
      auto const route = patternRoute<TypeParam>(TypeParam::distinctPrefix(i), i);
      writer.routeIs(route);
      oracle[route.prefix] = route;
   }
   auto const more = patternRoute<TypeParam>(TypeParam::distinctPrefix(5), 5);
   EXPECT_EQ(complaintOf<TableFull>([&] { writer.routeIs(more); }),
             this->path_ + ": " + std::string(TypeParam::recordName) + " table is full, capacity 5");
   this->expectSame(writer, oracle);
   U32 visits = 0;
   writer.walk([&](auto const&) { return ++visits < 3; });
   EXPECT_EQ(visits, 3U) << "a walk ends when it is told";
   auto const changed = patternRoute<TypeParam>(TypeParam::distinctPrefix(4), 77);
   writer.routeIs(changed);
   EXPECT_EQ(writer.route(changed.prefix), changed);
   EXPECT_TRUE(writer.routeDel(TypeParam::distinctPrefix(0)));
   writer.routeIs(more);
   EXPECT_EQ(writer.routes(), 5U);
   EXPECT_THROW(writer.routeIs({}), Zam::RangeError);
   EXPECT_FALSE(writer.route({}).has_value());
}

// The writer's lock is its own: it keeps out a second writer, by either way, and no reader.
TYPED_TEST(RouteStatusTest, hasOneWriterAndItsReadersDoNotCount) {
   auto writer = Zam::makePtr<typename TypeParam::Writer>(this->path_, TableFile::Sizes{5});
   typename TypeParam::Reader const reader(this->path_);
   auto const refusal = this->path_ + ": has a writer already";
   EXPECT_EQ(complaintOf<MountError>([&] { typename TypeParam::Writer(this->path_); }), refusal);
   EXPECT_EQ(complaintOf<MountError>([&] { typename TypeParam::Writer(this->path_, {5}); }), refusal);
   writer->routeIs(patternRoute<TypeParam>(TypeParam::distinctPrefix(1), 1));
   EXPECT_EQ(reader.routes(), 1U);
   writer = nullptr;
   typename TypeParam::Writer const replacement(this->path_, {5});
   EXPECT_EQ(reader.routes(), 1U) << "a reader keeps the table that it mounted";
   EXPECT_EQ(typename TypeParam::Reader(this->path_).routes(), 0U);
}

}  // namespace Vault::Testing
