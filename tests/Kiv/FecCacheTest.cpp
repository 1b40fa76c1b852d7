#include "SorterTesting.h"

#include "Zam/Strep.h"

namespace Kiv::Testing {

namespace {

template <class Family>
class FecCacheTest : public ::testing::Test {
 public:
   Box<Family> box_;

   Vault::Fib::Via via(char const* intf, U16 weight = 1) const {
      auto made = Box<Family>::via(Family::hop, intf);
      made.weight = Vault::Fib::ViaWeight::fromRaw(weight);
      return made;
   }
   // The cached copy of FEC 1, used by a route.
   Zam::Ptr<CachedFec> cached() {
      box_.routeIs(Family::nested[0], Family::ospf, Box<Family>::fecIdOf(1));
      sorter_ = box_.sorter();
      return sorter_->fec(Box<Family>::fecIdOf(1));
   }
   std::string shape(CachedFec const& fec) const {
      std::string text;
      for (auto const& [via, present] : fec.via()) {
         text += via.intfId.stringValue() + (via.isBackup ? " backup" : "") + " " + via.viaWeight.bytes() + ";";
      }
      return text;
   }

 private:
   Zam::Ptr<typename Family::Sorter> sorter_;
};
TYPED_TEST_SUITE(FecCacheTest, Families);

TYPED_TEST(FecCacheTest, ordersViasAndTheirWeights) {
   this->box_.fecIs(1, {this->via("Ethernet10"), this->via("Ethernet2")});
   auto const equal = this->cached();
   EXPECT_EQ(this->shape(*equal), "Ethernet2 ;Ethernet10 ;") << "equal costs carry no weight";
   EXPECT_FALSE(equal->hasBackup || equal->hierarchical);
   this->box_.fecIs(1, {this->via("Ethernet2"), this->via("Ethernet1", 3)});
   auto const unequal = this->cached();
   EXPECT_EQ(this->shape(*unequal), "Ethernet1 3;Ethernet2 1;");
   EXPECT_EQ(unequal->weightSum, 4U);
   EXPECT_EQ(unequal->viaWeight.find(0)->bytes(), "1") << "by place in the FEC's own table";
   this->box_.fecIs(1, {this->via("Ethernet9"), this->via("Ethernet8"), this->via("Ethernet1", 1)}, 2);
   auto const backedUp = this->cached();
   EXPECT_TRUE(backedUp->hasBackup);
   EXPECT_EQ(backedUp->weightSum, 2U);
   EXPECT_EQ(this->shape(*backedUp), "Ethernet8 ;Ethernet9 ;Ethernet1 backup ;");
}

// Numbers that no via can have end the command with the range error of their type; their neighbours do not.
TYPED_TEST(FecCacheTest, valuesOutOfRange) {
   auto const message = [this](Vault::Fib::Via const& via) {
      this->box_.fecIs(1, {via});
      return testsupport::complaintOf<Zam::RangeError>([this] { this->cached(); });
   };
   auto labelled = this->via("Ethernet1");
   labelled.label = Vault::Fib::ViaLabel::fromRaw(0x800000);
   EXPECT_EQ(message(labelled), "");
   labelled.label = Vault::Fib::ViaLabel::fromRaw(0x800001);
   EXPECT_EQ(message(labelled),
             "Lumen::MplsLabel::value < Lumen::MplsLabel::min or > Lumen::MplsLabel::luWithdraw not allowed");
   EXPECT_EQ(message(this->via("Ethernet1", 0)), "Vault::Fib::Via::weight < minWeight() not allowed");
   this->box_.routeIs(TypeParam::nested[1], TypeParam::ospf, Vault::Fib::FecId(U64{33} << 56U | 1));
   EXPECT_NE(message(this->via("Ethernet1")).find("adjType"), std::string::npos);
}

TYPED_TEST(FecCacheTest, takesTheMostViasThereAre) {
   std::vector<Vault::Fib::Via> vias;
   for (U32 i = 0; i < 600; ++i) {
      vias.push_back(this->via(("Ethernet" + std::to_string(i)).c_str()));
   }
   this->box_.fecIs(1, vias);
   EXPECT_EQ(this->cached()->vias(), 600U);
   vias.push_back(this->via("Ethernet600"));
   EXPECT_THROW(this->box_.fecIs(1, vias), Zam::RangeError);
}

TYPED_TEST(FecCacheTest, whatViasResolveThroughIsCachedOnce) {
   auto& box = this->box_;
   auto const through = [&](U64 id) {
      Vault::Fib::Via via;
      via.intfId = Lumen::IntfId::fromFecId(box.fecIdOf(id).value());
      return via;
   };
   for (U64 id = 1; id < 1000; ++id) {
      box.fecIs(id, {through(id + 1), through(id / 2 + 1)});
   }
   auto const fec = this->cached();
   EXPECT_TRUE(fec->hierarchical);
   EXPECT_EQ(box.sorter()->fecs().size(), 1000U) << "the last of them has vanished, and is an empty FEC";
}

TYPED_TEST(FecCacheTest, tunnelsAndForwardingVrfsReplaceTheInterface) {
   auto tunnelled = this->via("Ethernet1");
   tunnelled.tunnelId = U64{8} << 44U | 5;
   auto plain = this->via("Ethernet2");
   plain.tunnelId = U64{9} << 44U | 5;
   auto intoVrf = this->via("Ethernet3");
   intoVrf.forwardingAction = Vault::Fib::ForwardingAction::forwardVrf;
   intoVrf.forwardingVrf = 8;
   this->box_.fecIs(1, {tunnelled, plain, intoVrf});
   auto const fec = this->cached();
   std::vector<Lumen::IntfId> shown;
   for (auto const& [via, present] : fec->via()) {
      shown.push_back(via.intfId);
   }
   EXPECT_EQ(std::count(shown.begin(), shown.end(), Lumen::IntfId::fromTunnelId(tunnelled.tunnelId)), 1);
   EXPECT_EQ(std::count(shown.begin(), shown.end(), Lumen::IntfId::named("Ethernet2")), 1);
   EXPECT_EQ(std::count_if(shown.begin(), shown.end(), [](auto const& id) { return id.isFecId(); }), 1);
}

// The order of vias, as ascending rows: each differs from the one before in the field that decides.
TEST(CachedViaTest, ordersByOneFieldAfterTheOther) {
   auto const with = [](auto change) {
      CachedVia via;
      via.intfId = Lumen::IntfId::named("Ethernet2");
      via.hop = Lumen::IpGenAddr::parse("10.0.0.2");
      via.viaWeight = "5";
      change(via);
      return via;
   };
   std::vector<CachedVia> const ascending{
       with([](auto& v) {
          v.intfId = Lumen::IntfId::named("Ethernet1");
          v.hop = Lumen::IpGenAddr::parse("10.0.0.9");
       }),
       with([](auto& v) {
          v.hop = Lumen::IpGenAddr::parse("10.0.0.1");
          v.viaWeight = "9";
       }),
       with([](auto& v) {
          v.viaLabel = Lumen::MplsLabel(16);
          v.viaWeight = "9";
       }),
       with([](auto& v) { v.viaWeight = "10"; }),
       with([](auto&) {}),
       with([](auto& v) { v.viaIndex = 1; }),
       with([](auto& v) {
          v.viaIndex = 1;
          v.forwardingAction = Vault::Fib::ForwardingAction::decap;
          v.vrfId = 0;
       }),
       with([](auto& v) { v.viaWeight = "9"; }),
       with([](auto& v) {
          v.isBackup = true;
          v.intfId = Lumen::IntfId();
       }),
   };
   for (std::size_t i = 1; i < ascending.size(); ++i) {
      EXPECT_LT(ascending[i - 1], ascending[i]) << i;
   }
}

TEST(CachedViaTest, textRoundTrip) {
   CachedVia via;
   EXPECT_FALSE(Zam::isSet(via));
   via.hop = Lumen::IpGenAddr::parse("fe80::1");
   via.intfId = Lumen::IntfId::named("it's");
   via.vrfName = "red";
   via.viaIndex = 599;
   EXPECT_TRUE(Zam::isSet(via));
   auto const text = Zam::valueToStrep(via);
   EXPECT_EQ(
       text.rfind(
           "Value('Kiv::CachedVia', ** {'hop': 'fe80::1', 'intfId': 'it\\'s', 'vrfId': 16777215, 'vrfName': 'red', "
           "'isBackup': False, 'viaLabel': 1048576, 'viaWeight': '', 'viaIndex': 599, 'forwardingAction': ",
           0),
       0U)
       << text;
   EXPECT_EQ(Zam::strepToValue<CachedVia>(text), via);
   EXPECT_THROW(Zam::strepToValue<CachedVia>(text + " "), Zam::ParseError);
}

}  // namespace

}  // namespace Kiv::Testing
