#include "VaultTesting.h"

namespace Vault::Testing {

template <class Family>
class DamageTest : public TableTest {
 protected:
   using Record = typename Family::Record;
   static constexpr U32 routes = 40;

   DamageTest() {
      typename Family::Writer writer(path_, {64});
      for (U32 i = 0; i < routes; ++i) {
         writer.routeIs(patternRoute<Family>(Family::distinctPrefix(i), i));
      }
   }
   U64 slot(U32 index) const { return slotOffset<Record>(path_, index); }
   static U32 bucketOf(U32 route) {
      return static_cast<U32>(hashKey(Records::toKey(Family::distinctPrefix(route)))) & 63U;
   }
   U64 bucket(U32 index) const { return shapeOf<Record>(path_).bucketOffset() + U64{index} * sizeof(U32); }
   static std::set<U32> walked(typename Family::Reader const& reader) {
      std::set<U32> metrics;
      reader.walk([&](typename Family::Route const& route) { EXPECT_TRUE(metrics.insert(route.metric).second); });
      return metrics;
   }
   static std::size_t lookups(typename Family::Reader const& reader) {
      std::size_t found = 0;
      for (U32 i = 0; i < routes; ++i) {
         found += reader.route(Family::distinctPrefix(i)).has_value() ? 1U : 0U;
      }
      return found;
   }
   // The next writer makes good what can be made good.
   void expectRepaired(U32 lost) {
      typename Family::Writer const writer(path_);
      typename Family::Reader const reader(path_);
      EXPECT_EQ(reader.routes(), routes - lost);
      EXPECT_EQ(walked(reader).size(), routes - lost);
      EXPECT_EQ(lookups(reader), routes - lost);
      EXPECT_EQ(reader.corruption(), "");
   }
};
TYPED_TEST_SUITE(DamageTest, RouteFamilies);

TYPED_TEST(DamageTest, aBrokenChainIsSaidAndRepaired) {
   U32 const head = this->bucketOf(7);
   // A link beyond the table, a chain that ends in itself, and one that leads into another bucket.
   U32 other = 0;
   while (this->bucketOf(other) == head) {
      ++other;
   }
   using Case = std::tuple<U64, U32, std::string>;
   for (auto const& [place, value, complaint] : {
            Case{this->bucket(head), 65, "slot 64"},
            Case{this->bucket(head), 0xffffffff, "slot 4294967294"},
            Case{this->bucket(head), other + 1, "mixed chain of bucket " + std::to_string(head)},
        }) {
      patch(this->path_, place, value);
      typename TypeParam::Reader const reader(this->path_);
      EXPECT_EQ(complaintOf<CorruptionError>([&] { reader.route(TypeParam::distinctPrefix(7)); }),
                this->path_ + ": " + complaint);
      EXPECT_EQ(this->walked(reader).size(), this->routes) << "a walk needs no chains";
      this->expectRepaired(0);
   }
   for (U32 i = 0; i < this->routes; ++i) {
      patch(this->path_, this->slot(i) + offsetof(Slot<typename TypeParam::Record>, next), i + 1);
   }
   typename TypeParam::Reader const reader(this->path_);
   for (U32 missing = this->routes; missing < 2000; ++missing) {
      if (this->bucketOf(missing) == head) {
         EXPECT_EQ(complaintOf<CorruptionError>([&] { reader.route(TypeParam::distinctPrefix(missing)); }),
                   this->path_ + ": endless chain of bucket " + std::to_string(head));
      }
   }
   this->expectRepaired(0);
}

TYPED_TEST(DamageTest, anImpossiblePrefixIsReportedAndLeftOut) {
   using Key = typename TypeParam::Record::Key;
   U64 const words = this->slot(9) + offsetof(Slot<typename TypeParam::Record>, words);
   patch(this->path_, words + offsetof(Key, length), U8{200});
   patch(this->path_, words + (this->slot(10) - this->slot(9)), U8{0xff});  // host bits, or other high bits
   typename TypeParam::Reader const reader(this->path_);
   std::vector<std::string> reports;
   reader.corruptionHookIs([&](std::string_view message) { reports.emplace_back(message); });
   auto const metrics = this->walked(reader);
   auto const impossible = reports.size();
   ASSERT_NE(impossible, 0U);
   EXPECT_EQ(reports.front(), this->path_ + ": impossible prefix, length 200");
   EXPECT_EQ(metrics.size(), this->routes - impossible);
   EXPECT_FALSE(metrics.contains(9));
   EXPECT_EQ(reader.corruption(), reports.back());
   EXPECT_EQ(reader.corruptions(), reports.size());
   // What a visit complains about costs that record, too; other errors are the caller's.
   U32 visits = 0;
   reader.walk([&](auto const&) {
      ++visits;
      throw CorruptionError("elsewhere");
   });
   EXPECT_EQ(visits, metrics.size());
   EXPECT_EQ(reader.corruption(), "elsewhere");
   EXPECT_THROW(reader.walk([](auto const&) { throw Zam::RangeError("value"); }), Zam::RangeError);
   typename TypeParam::Writer const writer(this->path_);
   EXPECT_EQ(writer.repaired(), impossible);
   EXPECT_EQ(writer.routes(), metrics.size());
}

TYPED_TEST(DamageTest, anEntryThatNobodyFinishesVanishesAloneAndSoon) {
   auto const start = std::chrono::steady_clock::now();
   U32 const sequence = peek<U32>(this->path_, this->slot(5));
   for (auto const state : {SlotState::updating, SlotState::filling}) {
      patch(this->path_, this->slot(5), nextSequence(sequence, state));
      typename TypeParam::Reader const reader(this->path_);
      auto const metrics = this->walked(reader);
      EXPECT_EQ(metrics.size(), this->routes - 1);
      EXPECT_FALSE(metrics.contains(5));
      EXPECT_EQ(reader.corruption(), "");
      if (state == SlotState::updating) {
         EXPECT_EQ(reader.vanished(), 1U);
         EXPECT_EQ(this->lookups(reader), this->routes - 1);
         EXPECT_EQ(reader.vanished(), 2U);
      }
   }
   EXPECT_TRUE(within(start, std::chrono::milliseconds(500)));
   this->expectRepaired(1);
}

TYPED_TEST(DamageTest, allStaysInReachWhileTheIndexIsInPieces) {
   // As a writer leaves it that ends while it rebuilds the index.
   patch(this->path_, offsetof(TableHeader, structure), U32{1});
   for (U32 i = 0; i < 64; i += 2) {
      patch(this->path_, this->bucket(i), U32{0});
   }
   typename TypeParam::Reader const reader(this->path_);
   EXPECT_EQ(this->lookups(reader), this->routes);
   EXPECT_FALSE(reader.route(TypeParam::distinctPrefix(4000)).has_value());
   this->expectRepaired(0);
}

TYPED_TEST(DamageTest, headerCountsAndDoubleKeysAreMadeGood) {
   patch(this->path_, offsetof(TableHeader, highWater), U32{0xffffffff});
   patch(this->path_, offsetof(TableHeader, live), U32{0});
   {
      typename TypeParam::Reader const reader(this->path_);
      EXPECT_EQ(this->walked(reader).size(), this->routes);
      EXPECT_NE(reader.corruption().find("high-water mark"), std::string::npos);
   }
   this->expectRepaired(0);
   auto const copy = peek<Slot<typename TypeParam::Record>>(this->path_, this->slot(3));
   patch(this->path_, this->slot(30), copy);
   typename TypeParam::Writer const writer(this->path_);
   EXPECT_EQ(writer.repaired(), 1U);
   EXPECT_EQ(writer.routes(), this->routes - 1);
   EXPECT_EQ(writer.route(TypeParam::distinctPrefix(3))->metric, 3U);
   EXPECT_FALSE(writer.route(TypeParam::distinctPrefix(30)).has_value());
}

namespace {

// Flips bits anywhere in what is used of the file and lets a reader and then a writer at it. Whatever they say is in
// order; crashing, hanging or reading elsewhere is not (the sanitizers watch).
template <class Open>
void fuzz(std::string const& path, U32 rounds, Open&& open) {
   std::ifstream file(path, std::ios::binary);
   std::string const image(std::istreambuf_iterator<char>(file), {});
   Random random(23);
   U32 refused = 0;
   for (U32 round = 0; round < rounds; ++round) {
      std::string damaged = image;
      for (U32 flips = 1 + random.below(12); flips > 0; --flips) {
         // Not often in what mounting checks, which refuses most of it.
         U32 const from = random.below(20) == 0 ? 0 : offsetof(TableHeader, highWater);
         damaged[from + random.below(static_cast<U32>(damaged.size()) - from)] ^=
             static_cast<char>(1U << random.below(8));
      }
      std::ofstream(path, std::ios::binary) << damaged;
      try {
         open();
      } catch (MountError const&) {
         ++refused;
      }
   }
   EXPECT_LT(refused, rounds / 2);
}

template <class Act>
void survive(Act&& act) {
   try {
      act();
   } catch (CorruptionError const&) {
   } catch (Zam::RangeError const&) {
   }
}

}  // namespace

TYPED_TEST(DamageTest, anyDamageToRoutesIsSurvived) {
   fuzz(this->path_, 400, [&] {
      {
         typename TypeParam::Reader const reader(this->path_);
         reader.walk([](auto const& route) { EXPECT_LE(route.prefix.length(), route.prefix.maxLength); });
         for (U32 i = 0; i < this->routes; ++i) {
            survive([&] { reader.route(TypeParam::distinctPrefix(i)); });
         }
      }
      typename TypeParam::Writer writer(this->path_);
      for (U32 i = 0; i < 60; ++i) {
         writer.routeIs(patternRoute<TypeParam>(TypeParam::distinctPrefix(i), i));
         writer.routeDel(TypeParam::distinctPrefix(i * 3));
      }
      U32 live = 0;
      writer.walk([&](auto const& route) {
         ++live;
         EXPECT_EQ(writer.route(route.prefix), route);
      });
      EXPECT_EQ(writer.routes(), live);
   });
}

using DamageFecTest = TableTest;

TEST_F(DamageFecTest, anyDamageToFecsIsSurvived) {
   using Fec = Fib::Fec;
   {
      Fib::ForwardingStatusWriter writer(path_, {32, 700});
      for (U32 i = 1; i < 30; ++i) {
         writer.fecIs(patternFec<Fec>(Fib::FecId(i), i, i % 7));
      }
   }
   fuzz(path_, 600, [&] {
      {
         Fib::ForwardingStatus const reader(path_);
         survive([&] { reader.walk([](Fec const& fec) { EXPECT_LE(fec.vias.size(), 600U); }); });
         Fec fec;
         for (U32 i = 0; i < 30; ++i) {
            survive([&] { reader.fec(Fib::FecId(i), fec); });
         }
      }
      Fib::ForwardingStatusWriter writer(path_);
      Fec read;
      for (U32 i = 1; i < 12; ++i) {
         auto const fec = patternFec<Fec>(Fib::FecId(i), i + 100, i % 5);
         survive([&] { writer.fecDel(Fib::FecId(i + 15)); });
         try {
            writer.fecIs(fec);
            EXPECT_TRUE(writer.fec(fec.fecId, read));
            EXPECT_EQ(read, fec);
         } catch (TableFull const&) {
         }
      }
   });
}

}  // namespace Vault::Testing
