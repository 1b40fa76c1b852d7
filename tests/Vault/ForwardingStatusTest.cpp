#include "VaultTesting.h"

namespace Vault::Testing {

template <class Tables>
class ForwardingStatusTest : public TableTest {};

template <class ReaderType, class WriterType>
struct FecTables {
   using Reader = ReaderType;
   using Writer = WriterType;
   using Fec = typename Reader::Fec;
   using Record = typename Reader::Record;
};
using AllFecTables = ::testing::Types<FecTables<Fib::ForwardingStatus, Fib::ForwardingStatusWriter>,
                                      FecTables<Fib6::ForwardingStatus, Fib6::ForwardingStatusWriter>,
                                      FecTables<FibGen::ForwardingStatus, FibGen::ForwardingStatusWriter>>;
TYPED_TEST_SUITE(ForwardingStatusTest, AllFecTables);

TYPED_TEST(ForwardingStatusTest, agreesWithAMapWhileTheArenaIsScarce) {
   using Fec = typename TypeParam::Fec;
   Random random(11);
   std::map<U64, Fec> oracle;
   auto writer = Zam::makePtr<typename TypeParam::Writer>(this->path_, TableFile::Sizes{80, 4000});
   writer->growingIs(false);
   typename TypeParam::Reader const reader(this->path_);
   Fec read;
   U32 refusals = 0;
   for (U32 step = 0; step < 6000; ++step) {
      auto const fecId = Fib::FecId::of(static_cast<U8>(random.below(33)), random.below(4) + 1);
      if (random.below(3) != 0) {
         auto const fec =
             patternFec<Fec>(fecId, random.number(), random.below(4) != 0 ? random.below(9) : random.below(601));
         try {
            writer->fecIs(fec);
            oracle[fecId.value()] = fec;
         } catch (TableFull const&) {
            ++refusals;
         }
      } else {
         EXPECT_EQ(writer->fecDel(fecId), oracle.erase(fecId.value()) == 1);
      }
      ASSERT_EQ(reader.fec(fecId, read), oracle.contains(fecId.value()));
      ASSERT_TRUE(!oracle.contains(fecId.value()) || read == oracle[fecId.value()]) << step;
      if (step % 1000 == 999) {
         writer = nullptr;
         writer = Zam::makePtr<typename TypeParam::Writer>(this->path_);
         writer->growingIs(step > 4000);  // the second half of the time has room for all
         EXPECT_EQ(writer->repaired(), 0U);
         std::map<U64, Fec> walked;
         reader.walk([&](Fec const& fec) { EXPECT_TRUE(walked.emplace(fec.fecId.value(), fec).second); });
         ASSERT_EQ(walked, oracle);
      }
   }
   EXPECT_EQ(reader.fecs(), oracle.size());
   EXPECT_GT(refusals, 10U) << "both kinds of scarcity are meant to happen";
   EXPECT_EQ(reader.vanished(), 0U);
}

TYPED_TEST(ForwardingStatusTest, holdsFecsOfAnySizeUpToTheLimit) {
   using Fec = typename TypeParam::Fec;
   typename TypeParam::Writer writer(this->path_, {10});
   typename TypeParam::Reader const reader(this->path_);
   Fec read;
   for (U32 const vias : {0U, 1U, 5U, 599U, 600U, 13U}) {
      auto const fec = patternFec<Fec>(Fib::FecId(9), vias, vias);
      writer.fecIs(fec);
      ASSERT_TRUE(reader.fec(Fib::FecId(9), read));
      EXPECT_EQ(read, fec);
   }
   auto const* const memory = read.vias.data();
   ASSERT_TRUE(reader.fec(Fib::FecId(9), read));
   EXPECT_EQ(read.vias.data(), memory) << "memory is used again";
   EXPECT_FALSE(reader.fec(Fib::FecId(10), read));
   EXPECT_FALSE(reader.fec(Fib::FecId(), read));
   EXPECT_EQ(read.vias.size(), 13U) << "a miss leaves the record alone";
   EXPECT_EQ(complaintOf<Zam::RangeError>([&] { writer.fecIs(patternFec<Fec>(Fib::FecId(9), 1, 601)); }),
             "Vault::Fib::ViaIndex::value < Vault::Fib::ViaIndex::min or > Vault::Fib::ViaIndex::max not allowed");
   EXPECT_THROW(writer.fecIs({}), Zam::RangeError);
   EXPECT_EQ(writer.fecs(), 1U);
}

TYPED_TEST(ForwardingStatusTest, carriesBadValuesToWhoeverAsksForThem) {
   using Fec = typename TypeParam::Fec;
   typename TypeParam::Writer writer(this->path_, {10});
   auto fec = patternFec<Fec>(Fib::FecId(9), 1, 2);
   fec.vias[0].label = Fib::ViaLabel::fromRaw(0x800001);
   fec.vias[1].weight = Fib::ViaWeight::fromRaw(0);
   fec.vias[1].fecId = Fib::FecId(U64{33} << 56U);
   fec.vias[1].forwardingAction = static_cast<Fib::ForwardingAction>(200);
   writer.fecIs(fec);
   Fec read;
   ASSERT_TRUE(typename TypeParam::Reader(this->path_).fec(fec.fecId, read));
   EXPECT_EQ(read, fec);
   EXPECT_EQ(complaintOf<Zam::RangeError>([&] { (void)read.vias[0].label.label(); }),
             "Lumen::MplsLabel::value < Lumen::MplsLabel::min or > Lumen::MplsLabel::luWithdraw not allowed");
   EXPECT_EQ(complaintOf<Zam::RangeError>([&] { (void)static_cast<U16>(read.vias[1].weight); }),
             "Vault::Fib::Via::weight < minWeight() not allowed");
   EXPECT_THROW((void)read.vias[1].fecId.adjType(), Zam::RangeError);
   EXPECT_THROW((void)Fib::FecId::of(33, 1), Zam::RangeError);
   EXPECT_EQ(Fib::FecId::of(32, ~U64{0}).adjType(), 32);
}

// What a writer that means harm may leave in a record, with a sum that is right.
TYPED_TEST(ForwardingStatusTest, raisesWhatIsWrongWithARecordAndItsVias) {
   using Fec = typename TypeParam::Fec;
   using Record = typename TypeParam::Record;
   using Via = Records::ViaRecord;
   constexpr char const* index = "ViaIndex::value";
   constexpr char const* place = "vias out of place in FEC 9";
   constexpr char const* via = "impossible via in FEC 9";
   using Case = std::tuple<std::size_t, U64, std::size_t, char const*>;
   for (auto const& [offset, value, bytes, complaint] :
        {Case{offsetof(Record, viaCount), 601, 2, index}, Case{offsetof(Record, viaCount), 0xffff, 2, index},
         Case{offsetof(Record, viaCount), 600, 2, place}, Case{offsetof(Record, firstVia), 99, 4, place},
         Case{offsetof(Record, firstVia), 0xffffffff, 4, place}, Case{offsetof(Via, hopFamily), 3, 1, via},
         Case{offsetof(Via, intfId), 5, 1, via}, Case{offsetof(Via, intfId), 0, 1, via},
         Case{offsetof(Via, intfId) + 3, 0x1b, 1, via}}) {
      { typename TypeParam::Writer(this->path_, {4, 100}).fecIs(patternFec<Fec>(Fib::FecId(9), 1, 2)); }
      U64 const arena = shapeOf<Record>(this->path_).arenaOffset();
      U64 const words = slotOffset<Record>(this->path_, 0) + offsetof(Slot<Record>, words);
      patch(this->path_, (complaint == via ? arena : words) + offset, value, bytes);
      auto const vias = peek<std::array<WordsOf<Via>, 2>>(this->path_, arena);
      if (complaint == via) {
         patch(this->path_, words + offsetof(Record, sum), peek<Record>(this->path_, words).sumWith(vias.data()));
      }
      typename TypeParam::Reader const reader(this->path_);
      Fec read;
      auto const said = complaintOf<std::runtime_error>([&] { reader.fec(Fib::FecId(9), read); });
      EXPECT_NE(said.find(complaint), std::string::npos) << said << " for " << complaint << " at " << offset;
   }
}

}  // namespace Vault::Testing
