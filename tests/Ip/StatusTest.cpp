#include "Ip/Status.h"

#include "Ip6/Status.h"

#include <gtest/gtest.h>

#include <tuple>

using Lumen::IntfId;

namespace {

struct V4 {
   using Status = Ip::Status;
   using Addr = Lumen::IpAddrWithMask;
   static Addr addr(std::string_view last) { return Addr::parse(std::string("10.0.0.").append(last) + "/24"); }
};
struct V6 {
   using Status = Ip6::Status;
   using Addr = Lumen::Ip6AddrWithMask;
   static Addr addr(std::string_view last) { return Addr::parse(std::string("2001:db8::").append(last) + "/64"); }
};

template <class Family>
struct IpStatus : testing::Test {
   using IntfStatus = typename Family::Status::IntfStatus;
   using Addrs = std::vector<typename Family::Addr>;

   Zam::Ptr<typename Family::Status> status = Zam::makePtr<typename Family::Status>();
};
using Families = testing::Types<V4, V6>;
TYPED_TEST_SUITE(IpStatus, Families);

TYPED_TEST(IpStatus, InterfaceWithoutVrfRecordHasNoVrfIdButTheDefaultName) {
   auto const intfId = IntfId::named("Ethernet1");
   this->status->intfStatusIs(intfId, {});
   auto const* const found = this->status->intfStatus(intfId);
   ASSERT_NE(found, nullptr);
   EXPECT_EQ(found->vrfId, 0xffffffU);
   EXPECT_EQ(found->vrfName, L3::VrfName("default"));
   EXPECT_FALSE(found->loopback);
}

TYPED_TEST(IpStatus, WalksThePrimaryAddressWhenThereIsOneThenTheSecondaryOnes) {
   using Addresses = typename TestFixture::Addrs;
   auto const one = TypeParam::addr("1");
   auto const two = TypeParam::addr("2");
   auto const none = typename TypeParam::Addr();
   using Case = std::tuple<typename TypeParam::Addr, Addresses, Addresses>;
   for (auto const& [primary, secondary, expected] :
        {Case{none, {}, {}}, Case{one, {}, {one}}, Case{none, {two}, {two}}, Case{two, {one, two}, {two, one, two}}}) {
      typename TestFixture::IntfStatus intf;
      intf.primaryAddr = primary;
      intf.secondaryAddr = secondary;
      Addresses walked;
      intf.forEachAddr([&walked](auto const& addr) { walked.push_back(addr); });
      EXPECT_EQ(walked, expected);
   }
}

TYPED_TEST(IpStatus, LookupStaysRightThroughReplacementAndDeletion) {
   constexpr U32 count = 1000;
   auto const intf = [](U32 i) { return IntfId::named("Ethernet" + std::to_string(i)); };
   for (U32 pass = 0; pass < 2; ++pass) {
      for (U32 i = 0; i < count; ++i) {
         typename TestFixture::IntfStatus each;
         each.vrfId = i + pass;
         this->status->intfStatusIs(intf(i), each);
      }
   }
   for (U32 i = 0; i < count; i += 2) {
      this->status->intfStatusDel(intf(i));
   }
   EXPECT_EQ(this->status->intfStatus().size(), count / 2);
   for (U32 i = 0; i < count; ++i) {
      auto const* const found = this->status->intfStatus(intf(i));
      ASSERT_EQ(found != nullptr, i % 2 == 1) << i;
      EXPECT_TRUE(found == nullptr || found->vrfId == i + 1) << i;
   }
   // Vias name these too; they are no interfaces.
   for (auto const& other : {IntfId(), IntfId::fromFecId(1), IntfId::fromTunnelId(1), IntfId::fromNexthopGroup(1)}) {
      EXPECT_EQ(this->status->intfStatus(other), nullptr) << other;
   }
}

}  // namespace
