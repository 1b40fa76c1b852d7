#include "SorterTesting.h"

#include "Zam/Strep.h"

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
