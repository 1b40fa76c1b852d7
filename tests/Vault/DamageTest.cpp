#include "VaultTesting.h"

#include <fcntl.h>
#include <sys/mman.h>

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
   U32 bucketOf(U32 route) const {
      U64 const seed = peek<U64>(path_, offsetof(TableHeader, seed));
      return static_cast<U32>(hashKey(Records::toKey(Family::distinctPrefix(route)), seed)) & 63U;
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
   U32 other = 0;
   while (this->bucketOf(other) == head) {
      ++other;
   }
   // Beyond the table, with a wrong check, into another chain.
   for (U32 const link : {linkTo(64, head), linkTo(7, head) ^ (1U << 30U), linkTo(other, head)}) {
      patch(this->path_, this->bucket(head), link);
      typename TypeParam::Reader const reader(this->path_);
      EXPECT_EQ(complaintOf<CorruptionError>([&] { reader.route(TypeParam::distinctPrefix(7)); }),
                this->path_ + ": damaged chain of bucket " + std::to_string(head));
      EXPECT_FALSE(reader.route(TypeParam::distinctPrefix(7)).has_value()) << "it is asked no more";
      EXPECT_EQ(this->walked(reader).size(), this->routes) << "a walk needs no chains";
      this->expectRepaired(0);
   }
}

TYPED_TEST(DamageTest, damagedRoutesAreReportedAndLeftOut) {
   U64 const words = this->slot(9) + offsetof(Slot<typename TypeParam::Record>, words);
   patch(this->path_, words + offsetof(typename TypeParam::Record::Key, length), U8{200});
   patch(this->path_, words + (this->slot(10) - this->slot(9)) + offsetof(typename TypeParam::Record::Key, length),
         U8{201});
   typename TypeParam::Reader const reader(this->path_);
   std::vector<std::string> reports;
   reader.corruptionHookIs([&](std::string_view message) { reports.emplace_back(message); });
   auto const metrics = this->walked(reader);
   ASSERT_EQ(reports.size(), 2U);
   EXPECT_TRUE(reports.front().starts_with(this->path_ + ": damaged route, prefix length ")) << reports.front();
   EXPECT_EQ(metrics.size(), this->routes - 2);
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
   static std::string last;
   TableFile::damageReporterIs([](std::string_view message) { last = message; });
   this->walked(typename TypeParam::Reader(this->path_));
   TableFile::damageReporterIs(nullptr);
   EXPECT_EQ(last, reports[1]) << "who has no hook of its own";
   EXPECT_THROW(reader.walk([](auto const&) { throw Zam::RangeError("value"); }), Zam::RangeError);
   this->expectRepaired(2);
}

// Of a writer that has gone, of one that stands still, and of one that comes back in time.
TYPED_TEST(DamageTest, anEntryThatIsBeingWrittenIsWaitedForButNotForLong) {
   using std::chrono::milliseconds;
   U32 const sequence = peek<U32>(this->path_, this->slot(5));
   patch(this->path_, this->slot(5), nextSequence(sequence, SlotState::updating));
   auto const expectLost = [&](milliseconds atLeast, milliseconds atMost) {
      typename TypeParam::Reader const reader(this->path_);
      auto const start = std::chrono::steady_clock::now();
      EXPECT_FALSE(reader.route(TypeParam::distinctPrefix(5)).has_value());
      EXPECT_FALSE(within(start, atLeast));
      for (U32 i = 0; i < 200; ++i) {
         EXPECT_FALSE(reader.route(TypeParam::distinctPrefix(5)).has_value());
      }
      EXPECT_EQ(this->walked(reader).size(), this->routes - 1);
      EXPECT_TRUE(within(start, atMost));
      EXPECT_EQ(reader.vanished(), 202U);
      EXPECT_EQ(reader.corruption(), this->path_ + ": an entry was left half written");
   };
   expectLost(milliseconds(0), milliseconds(500));
   {
      TableFile const held = TableFile::openWriter(this->path_, recordLayout<typename TypeParam::Record>());
      expectLost(milliseconds(50), milliseconds(2000));
      TableFile::interruptedIs([]() noexcept { return true; });
      expectLost(milliseconds(0), milliseconds(40));
      TableFile::interruptedIs(nullptr);
      typename TypeParam::Reader const reader(this->path_);
      auto const back = std::async(std::launch::async, [&] {
         std::this_thread::sleep_for(milliseconds(20));
         patch(this->path_, this->slot(5), sequence);
      });
      EXPECT_TRUE(reader.route(TypeParam::distinctPrefix(5)).has_value());
      EXPECT_EQ(reader.corruption(), "");
   }
   // One that was new is in the table only when it is whole.
   patch(this->path_, this->slot(5), nextSequence(sequence, SlotState::filling));
   EXPECT_EQ(this->walked(typename TypeParam::Reader(this->path_)).size(), this->routes - 1);
   this->expectRepaired(1);
}

TYPED_TEST(DamageTest, aLinkedSlotThatIsFreeIsSaid) {
   patch(this->path_, this->slot(5), nextSequence(peek<U32>(this->path_, this->slot(5)), SlotState::free));
   typename TypeParam::Reader const reader(this->path_);
   EXPECT_THROW((void)reader.route(TypeParam::distinctPrefix(5)), CorruptionError);
   this->expectRepaired(1);
}

TYPED_TEST(DamageTest, allStaysInReachWhileTheIndexIsInPieces) {
   // As a writer leaves it that ends while it rebuilds the index.
   patch(this->path_, offsetof(TableHeader, structure), Twice::of(1));
   for (U32 i = 0; i < 64; i += 2) {
      patch(this->path_, this->bucket(i), U32{0});
   }
   typename TypeParam::Reader const reader(this->path_);
   EXPECT_EQ(this->lookups(reader), this->routes);
   EXPECT_FALSE(reader.route(TypeParam::distinctPrefix(4000)).has_value());
   EXPECT_EQ(reader.corruption(), this->path_ + ": the index was left in pieces");
   EXPECT_EQ(reader.corruptions(), 1U);
   this->expectRepaired(0);
}

TYPED_TEST(DamageTest, headerNumbersAndDoubleKeysAreMadeGood) {
   using Case = std::tuple<U64, U64, std::string>;
   std::string const damaged = ": damaged numbers in the header";
   for (auto const& [offset, value, complaint] :
        {Case{offsetof(TableHeader, highWater), 20, damaged}, Case{offsetof(TableHeader, live), 0, damaged},
         Case{offsetof(TableHeader, highWater), Twice::of(65), ": has 40 of 41 entries"},
         Case{offsetof(TableHeader, live), Twice::of(41), ": has 40 of 41 entries"},
         Case{offsetof(TableHeader, population), Twice::of(1), ": a change was left unfinished"}}) {
      patch(this->path_, offset, value);
      typename TypeParam::Reader const reader(this->path_);
      EXPECT_FALSE(reader.empty());
      EXPECT_EQ(this->walked(reader).size(), this->routes);
      if (value == Twice::of(65)) {
         EXPECT_NE(reader.corruption().find("high-water mark 65 exceeds"), std::string::npos);
      } else {
         EXPECT_EQ(reader.corruption(), this->path_ + complaint);
      }
      this->expectRepaired(0);
   }
   auto const copy = peek<Slot<typename TypeParam::Record>>(this->path_, this->slot(3));
   patch(this->path_, this->slot(30), copy);
   typename TypeParam::Writer const writer(this->path_);
   EXPECT_EQ(writer.repaired(), 1U);
   EXPECT_EQ(writer.routes(), this->routes - 1);
   EXPECT_EQ(writer.route(TypeParam::distinctPrefix(3))->metric, 3U);
   EXPECT_FALSE(writer.route(TypeParam::distinctPrefix(30)).has_value());
}

// A file that is cut off under those who have it mapped.
TYPED_TEST(DamageTest, aFileThatIsCutShortIsToldAndEndsNobody) {
   for (U64 const left : {this->slot(0), U64{0}}) {
      std::filesystem::copy_file(this->path_, this->dir_ / "copy", std::filesystem::copy_options::overwrite_existing);
      typename TypeParam::Reader const walking(this->dir_ / "copy");
      typename TypeParam::Reader const searching(this->dir_ / "copy");
      typename TypeParam::Writer writer(this->dir_ / "copy");
      std::filesystem::resize_file(this->dir_ / "copy", left);
      std::string const said = this->dir_ / "copy: was cut short while it was in use";
      EXPECT_TRUE(this->walked(walking).empty());
      EXPECT_EQ(walking.corruption(), said);
      EXPECT_EQ(complaintOf<CorruptionError>([&] { searching.route(TypeParam::distinctPrefix(1)); }), said);
      auto const write = [&] { writer.routeIs(patternRoute<TypeParam>(TypeParam::distinctPrefix(1), 1)); };
      EXPECT_EQ(complaintOf<CorruptionError>([&] { write(), write(); }), said);
   }
}

TEST(GuardDeathTest, whatIsNoTableFaultsAsWithoutTheGuard) {
   GTEST_FLAG_SET(death_test_style, "threadsafe");
   auto const fault = [] {
      TempDir const dir;
      { std::ofstream(dir / "file") << std::string(pageSize, 'x'); }
      int const fd = ::open((dir / "file").c_str(), O_RDWR);
      GuardedMapping const guarded(fd, pageSize, false);
      auto const* const bare = static_cast<char*>(::mmap(nullptr, pageSize, PROT_READ, MAP_SHARED, fd, 0));
      std::filesystem::resize_file(dir / "file", 0);
      bool const isZero = guarded.base()[0] == std::byte{0} && guarded.torn();
      std::filesystem::remove(dir / "file");
      ::rmdir((dir / "").c_str());
      ::_exit(isZero && *static_cast<char const volatile*>(bare) == 0 ? 1 : 2);
   };
   EXPECT_EXIT(
       {
          ::signal(SIGBUS, [](int) { ::_exit(7); });
          fault();
       },
       ::testing::ExitedWithCode(7), "");
   EXPECT_EXIT(
       {
          ::signal(SIGBUS, SIG_DFL);
          fault();
       },
       ::testing::KilledBySignal(SIGBUS), "");
}

// Work is bounded by the table's size whatever is damaged, and what is damaged is told.
class LargeDamageTest : public TableTest {
 protected:
   static constexpr U32 routes = 50'000;
   using Routes = Ip4Routes;
   using SlotType = Slot<Routes::Record>;

   LargeDamageTest() {
      Routes::Writer writer(path_, {routes});
      for (U32 i = 0; i < routes; ++i) {
         writer.routeIs({.prefix = Routes::distinctPrefix(i), .metric = i});
      }
   }
   // Changes the file through a mapping of its own; `next(slot)` is a slot's link.
   template <class Change>
   void damage(Change&& change) {
      TableFile file = TableFile::openWriter(path_, recordLayout<Routes::Record>());
      change(file);
   }
   static U32& head(TableFile& file, U32 bucket) { return const_cast<U32&>(file.bucketAt(bucket)); }
   static SlotType& slot(TableFile& file, U32 i) {
      return *reinterpret_cast<SlotType*>(const_cast<std::byte*>(file.slotAt(i)));
   }
   static U32 bucketOf(TableFile const& file, U32 i) {
      return static_cast<U32>(hashKey(Records::toKey(Routes::distinctPrefix(i)), file.seed())) &
             (file.shape().bucketCount - 1);
   }
};

// A million steps take some ten milliseconds.
TEST_F(LargeDamageTest, isToldInStepsThatTheTableBounds) {
   constexpr U64 most = 8'000'000;
   using Damage = void (*)(TableFile&);
   for (Damage const change :
        std::initializer_list<Damage>{[](TableFile& file) { file.numberIs(&TableHeader::structure, 1); },
                                      [](TableFile& file) { store(file.header().structure, U64{2}); },
                                      [](TableFile& file) {  // every chain ends in itself
                                         file.numberIs(&TableHeader::structure, 2);
                                         for (U32 i = 0; i < routes; ++i) {
                                            slot(file, i).next = linkTo(i, bucketOf(file, i));
                                         }
                                      },
                                      [](TableFile& file) {  // all of them are one
                                         for (U32 i = 0; i < file.shape().bucketCount; ++i) {
                                            head(file, i) = linkTo(0, i);
                                         }
                                         for (U32 i = 0; i + 1 < routes; ++i) {
                                            slot(file, i).next = linkTo(i + 1, bucketOf(file, 0));
                                         }
                                      },
                                      [](TableFile& file) {  // nothing was ever finished
                                         for (U32 i = 0; i < routes; ++i) {
                                            slot(file, i).sequence |= 3U;
                                         }
                                      }}) {
      damage(change);
      Routes::Reader const reader(path_);
      U32 met = 0;
      reader.walk([&](auto const&) { ++met; });
      U32 told = 0;
      for (U32 i = 0; i < 2 * routes; ++i) {
         try {
            (void)reader.route(Routes::distinctPrefix(i));
         } catch (CorruptionError const&) {
            ++told;
         }
      }
      EXPECT_LE(reader.stepsInVain(), most);
      EXPECT_TRUE(told != 0 || reader.corruptions() != 0);
      EXPECT_TRUE(met == routes || reader.vanished() >= routes);
   }
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

namespace {

// One flipped bit, anywhere in what is used of the file: a reader sees what was there before, or is told of damage.
template <class Read>
void flipEachBit(std::string const& path, U32 every, Read&& read) {
   std::ifstream file(path, std::ios::binary);
   std::string const image(std::istreambuf_iterator<char>(file), {});
   auto const content = read();
   for (U64 bit = 0; bit < image.size() * 8; bit += every) {
      U64 const at = bit / 8;
      if (image[at] == 0 && at >= pageSize && bit % 31 != 0) {
         continue;  // most of the file is unused
      }
      std::fstream damaged(path, std::ios::in | std::ios::out | std::ios::binary);
      damaged.seekp(static_cast<std::streamoff>(at)).put(static_cast<char>(image[at] ^ (1U << (bit % 8))));
      damaged.flush();
      try {
         auto const met = read();
         ASSERT_TRUE(met == content || !met.second.empty()) << "bit " << bit % 8 << " of byte " << at;
      } catch (MountError const&) {
      } catch (CorruptionError const&) {
      } catch (Zam::RangeError const&) {
      }
      damaged.seekp(static_cast<std::streamoff>(at)).put(image[at]);
   }
}

}  // namespace

TYPED_TEST(DamageTest, oneBitIsToldOrChangesNothing) {
   flipEachBit(this->path_, 11, [&] {
      typename TypeParam::Reader const reader(this->path_);
      U32 found = 0;
      reader.walk([&](auto const&) { ++found; });
      for (U32 i = 0; i < this->routes; ++i) {
         auto const prefix = TypeParam::distinctPrefix(i);
         auto const route = reader.route(prefix);
         EXPECT_TRUE(!route || *route == patternRoute<TypeParam>(prefix, i)) << i;
      }
      return std::pair(found, reader.corruption());
   });
}

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

TEST_F(DamageFecTest, oneBitIsToldOrChangesNothing) {
   using Fec = Fib::Fec;
   {
      Fib::ForwardingStatusWriter writer(path_, {16, 60});
      for (U32 i = 1; i < 10; ++i) {
         writer.fecIs(patternFec<Fec>(Fib::FecId(i), i, i % 4));
      }
   }
   flipEachBit(path_, 17, [&] {
      Fib::ForwardingStatus const reader(path_);
      std::vector<Fec> found;
      reader.walk([&](Fec const& fec) { found.push_back(fec); });
      for (U32 i = 1; i < 10; ++i) {
         reader.fec(Fib::FecId(i), found.emplace_back());
      }
      return std::pair(found, reader.corruption());
   });
}

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
