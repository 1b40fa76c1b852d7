#include "SorterTesting.h"

#include "Zam/Strep.h"
#include "Zam/TypeRegistry.h"

namespace Kiv::Testing {

namespace {

template <class Family>
class FecCacheTest : public ::testing::Test {
 public:
   Box<Family> box_;
};
TYPED_TEST_SUITE(FecCacheTest, Families);

// Numbers that no via can have end the command with the range error of their type; their neighbours do not.
TYPED_TEST(FecCacheTest, valuesOutOfRange) {
   auto& box = this->box_;
   auto via = box.via(TypeParam::hop, "Ethernet1");
   auto const message = [&] {
      box.routeIs(TypeParam::nested[0], TypeParam::ospf, box.fecIs(1, {via}));
      return testsupport::complaintOf<Zam::RangeError>([&] { box.sorter(); });
   };
   via.label = Vault::Fib::ViaLabel::fromRaw(0x800000);
   EXPECT_EQ(message(), "");
   via.label = Vault::Fib::ViaLabel::fromRaw(0x800001);
   EXPECT_EQ(message(),
             "Lumen::MplsLabel::value < Lumen::MplsLabel::min or > Lumen::MplsLabel::luWithdraw not allowed");
   via.label = {};
   via.weight = Vault::Fib::ViaWeight::fromRaw(0);
   EXPECT_EQ(message(), "Vault::Fib::Via::weight < minWeight() not allowed");
   via.weight = 1;
   box.routeIs(TypeParam::nested[1], TypeParam::ospf, Vault::Fib::FecId(U64{33} << 56U | 1));
   EXPECT_NE(message().find("adjType"), std::string::npos);
}

// Whatever the order in the table, and of backup vias too; equal ones are one.
TYPED_TEST(FecCacheTest, viasAreInOrder) {
   auto& box = this->box_;
   Vault::Testing::Random random(5);
   for (U32 fec = 0; fec < 300; ++fec) {
      std::vector<Vault::Fib::Via> vias(random.below(9));
      for (auto& via : vias) {
         via = box.via(random.below(2) == 0 ? "" : TypeParam::hop, random.below(2) == 0 ? "Ethernet2" : "Ethernet10");
         via.label = Lumen::MplsLabel(16 + random.below(3));
         via.weight = static_cast<U16>(1 + random.below(11));
      }
      auto const primary = static_cast<U16>(random.below(4));
      box.routeIs(TypeParam::nested[0], TypeParam::ospf, box.fecIs(1, vias, primary));
      auto const sorter = box.sorter();
      auto const cached = sorter->fec(box.fecIdOf(1));
      auto const inOrder = cached->via();
      ASSERT_TRUE(std::ranges::equal(cached->record().vias(), inOrder, [&](auto const& via, auto const& entry) {
         return cached->store()->arena().cached(via) == entry.key;
      }));
      bool const hasBackup = primary != 0 && vias.size() > primary;
      std::set<std::string> distinct;
      for (U32 i = 0; i < vias.size(); ++i) {
         auto const weight = cached->weightSum() > vias.size() ? std::to_string(U16{vias[i].weight}) : "";
         distinct.insert(vias[i].hop.stringValue() + "@" + vias[i].intfId.stringValue() + " " +
                         std::to_string(vias[i].label.raw()) + " " + weight + (hasBackup && i >= primary ? "b" : ""));
      }
      ASSERT_EQ(inOrder.size(), distinct.size());
   }
}

// What scripts change through one handle, every other shows; what they read by column is what is printed.
TYPED_TEST(FecCacheTest, columnsFollowTheVias) {
   registerTypes();
   auto& box = this->box_;
   box.routeIs(TypeParam::nested[0], TypeParam::ospf,
               box.fecIs(1, {box.via(TypeParam::hop, "Ethernet2"), box.via("", "Ethernet1")}, 1));
   auto const sorter = box.sorter();
   std::any fec = sorter->fec(box.fecIdOf(1));
   auto const& type = *Zam::TypeRegistry::instance().typeOf(fec);
   auto const text = [&](char const* column, U32 at) {
      auto const value = type.call(fec, column, {{at}});
      return value.has_value() ? std::any_cast<Zam::String>(value).bytes() : "none";
   };
   EXPECT_EQ(text("nexthopAddr", 0) + text("interface", 1) + text("viaTypeString", 1) + text("viaTypeString", 0),
             std::string(TypeParam::hop) + "Ethernet1" + "backup" + "none");
   EXPECT_EQ(text("nexthopAddr", 1), typename TypeParam::Addr().stringValue());
   EXPECT_EQ(type.collection(fec, "nexthopAddr").size(), 2U);
   CachedVia first;
   first.hop = Lumen::IpGenAddr::parse("192.0.2.9");
   first.intfId = Lumen::IntfId::named("Ethernet0");
   first.viaLabel = Lumen::MplsLabel(17);
   type.call(fec, "viaIs", {{first, true}});
   EXPECT_EQ(text("interface", 0) + text("interface", 1) + text("interface", 2) + text("interface", 3),
             "Ethernet0Ethernet2Ethernet1none");
   EXPECT_EQ(std::any_cast<Lumen::MplsLabel>(type.call(fec, "label", {{U32{0}}})), first.viaLabel);
   EXPECT_EQ(sorter->fec(box.fecIdOf(1))->vias(), 3U);
}

// A FEC made by itself goes over to the sorter that gets it, and is changed there through its handle.
TYPED_TEST(FecCacheTest, handlesOutliveTheirSorter) {
   auto sorter = this->box_.sorter();
   auto const fec = cachedFecFactory(Vault::Fib::FecId::of(4, 9));
   CachedVia via;
   for (U32 i = 0; i < 40; ++i) {
      via.viaLabel = Lumen::MplsLabel(16 + i);
      fec->viaIs(via, i % 2 == 0);
      if (i == 20) {
         sorter->fecIs(fec);
      }
   }
   EXPECT_EQ(sorter->fec(fec->fecId())->vias(), 40U);
   EXPECT_TRUE(fec->viaDel(via) && !fec->viaDel(via));
   EXPECT_TRUE(sorter->fecDel(fec->fecId()) && !sorter->fecHas(fec->fecId()));
   sorter = nullptr;
   EXPECT_EQ(fec->vias(), 39U);
   EXPECT_EQ(fec->via().begin()->value, true);
   fec->viaDelAll();
   EXPECT_EQ(fec->vias(), 0U);
}

// The order of vias, as ascending rows: each differs from the one before in the field that decides.
TEST(CachedViaTest, ordersByOneFieldAfterTheOther) {
   using enum Vault::Fib::ForwardingAction;
   auto const via = [](char const* hop, char const* intf, U32 label, char const* weight, U16 viaIndex,
                       bool isBackup = false, Vault::Fib::ForwardingAction action = forward) {
      auto const address = Lumen::IpGenAddr::parse(hop);
      auto const intfId = Lumen::IntfId::parse(intf);
      return CachedVia{{}, address, intfId, 8, {}, isBackup, Lumen::MplsLabel(label), weight, viaIndex, action};
   };
   CachedVia const ascending[] = {
       via("10.0.0.9", "Ethernet1", 17, "5", 0),
       via("10.0.0.1", "Ethernet2", 17, "9", 0),
       via("10.0.0.2", "Ethernet2", 16, "9", 0),
       via("10.0.0.2", "Ethernet2", 17, "10", 0),
       via("10.0.0.2", "Ethernet2", 17, "5", 0),
       via("10.0.0.2", "Ethernet2", 17, "5", 1),
       via("10.0.0.2", "Ethernet2", 17, "5", 1, false, decap),
       via("10.0.0.2", "Ethernet2", 17, "9", 0),
       via("10.0.0.2", "", 17, "5", 0, true),
   };
   for (std::size_t i = 1; i < std::size(ascending); ++i) {
      EXPECT_LT(ascending[i - 1], ascending[i]) << i;
   }
}

TEST(CachedViaTest, textRoundTrip) {
   CachedVia via;
   via.hop = Lumen::IpGenAddr::parse("fe80::1");
   via.vrfName = "red";
   via.viaIndex = 599;
   EXPECT_TRUE(!Zam::isSet(CachedVia()) && Zam::isSet(via));
   auto const text = Zam::valueToStrep(via);
   EXPECT_TRUE(text.starts_with(
       "Value('Kiv::CachedVia', ** {'hop': 'fe80::1', 'intfId': '', 'vrfId': 16777215, 'vrfName': 'red', "
       "'isBackup': False, 'viaLabel': 1048576, 'viaWeight': '', 'viaIndex': 599, 'forwardingAction': "))
       << text;
   EXPECT_EQ(Zam::strepToValue<CachedVia>(text), via);
}

}  // namespace

}  // namespace Kiv::Testing
